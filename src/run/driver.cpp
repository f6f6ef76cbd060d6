// One run, in the order of its steps: open everything, decide about the rule files, run the rule step, render one
// sentence after the other. Every way out ends with `Host::finish`; the output and the dictionaries stay open.
#include "run/driver.hpp"

#include <array>
#include <cstring>
#include <new>
#include <utility>

#include "data/output.hpp"
#include "data/pool.hpp"
#include "data/state.hpp"
#include "data/text_line.hpp"
#include "run/context.hpp"
#include "run/files.hpp"
#include "run/output_check.hpp"
#include "run/rule_files.hpp"

namespace lexon {

constinit RunFaults run_faults{};

namespace {

constexpr const char* kNoMemory = "No memory!";
constexpr const char* kRuleStepCaption = "converting/loading rules";
constexpr const char* kSentenceCaption = "sentence no.";

// What opening reports: nothing, a message that ends the run, or an end without a message.
struct Opening {
  bool succeeded = true;
  std::string message;
};

Opening failure(std::string message) {
  return {false, std::move(message)};
}

Opening open_output(const RunSettings& settings) {
  if (std::string conflict = output_conflict(settings); !conflict.empty()) return failure(std::move(conflict));
  state.output = file_open(settings.output_file, "w");
  return state.output != nullptr ? Opening{} : failure(cannot_open("Output File", settings.output_file));
}

// The index lies in the dictionary's folder, under the name in slot 1.
std::FILE* open_index(const std::string& dictionary_file, IndexDescriptor** slots) {
  return index_open(path_split(dictionary_file).folder.c_str(), slots, kKeyHw, true);
}

Opening open_dictionary(const RunSettings& settings, RunContext& context) {
  const std::string& path = settings.dictionary_file;
  context.dictionary = file_open(path, "rb");
  if (context.dictionary == nullptr) return failure(cannot_open("Dictionary File", path));
  for (const int key_field : {kKeyHw, kKeyCw}) {
    const Status s = index_slot_read(context.dictionary, key_field, context.dictionary_slots.data());
    if (s != Status::ok) return failure(kNoMemory);
  }
  if (context.dictionary_slots[kKeyCw] == nullptr) return failure("CW : No Index in Dictionary File : " + path + "!");
  context.dictionary_index = open_index(path, context.dictionary_slots.data());
  if (context.dictionary_index == nullptr) return failure(cannot_open("Dictionary Index File", path));
  return {};
}

Opening open_input(const RunSettings& settings, RunContext& context) {
  context.input = text_open(settings.input_file, stop_requested);
  return context.input != nullptr ? Opening{} : failure(cannot_open("Input File", settings.input_file));
}

Status open_cr_files(const std::string& path, RunContext& context) {
  context.cr_dictionary = file_open(path, "rb");
  if (context.cr_dictionary == nullptr) return Status::ok;
  for (const int key_field : {1, 2, 3, 5, 6, 7}) {
    const Status s = index_slot_read(context.cr_dictionary, key_field, context.cr_slots.data());
    if (s != Status::ok) return s;
  }
  context.cr_index = open_index(path, context.cr_slots.data());
  return Status::ok;
}

Opening open_cr_dictionary(const RunSettings& settings, RunContext& context, Host& host) {
  const std::string& path = settings.cr_dictionary_file;
  if (path.empty()) return {};
  if (open_cr_files(path, context) != Status::ok) return failure(kNoMemory);
  if (context.cr_index != nullptr) return {};
  context.cr_dictionary = nullptr;
  const bool goes_on = host.ask_yes_no(cannot_open("Cooccurrence Dictionary File", path) + " continue?");
  return goes_on ? Opening{} : failure({});
}

Opening open_rules(const RunSettings& settings, RunContext& context) {
  std::string message = rule_files_open(settings, context);
  return message.empty() ? Opening{} : failure(std::move(message));
}

Opening open_all(const RunSettings& settings, RunContext& context, Host& host) {
  Opening opening = open_output(settings);
  if (opening.succeeded) opening = open_dictionary(settings, context);
  if (opening.succeeded) opening = open_input(settings, context);
  if (opening.succeeded) opening = open_cr_dictionary(settings, context, host);
  if (opening.succeeded) opening = open_rules(settings, context);
  return opening;
}

// False when the run was cancelled.
bool run_rule_step(RunContext& context, Host& host) {
  run_status = run_state::running;
  const StepResult result = host.run_step(context, kRuleStepCaption, 0);
  if (result == StepResult::cancelled) {
    rule_files_cancel(context);
    out_print(";;Cancelled!\n");
    return false;
  }
  context.rule_step_done = true;
  rule_files_finish(context, run_status == run_state::finished);
  return true;
}

bool ends_a_sentence(const char* line) {
  return std::strncmp(line, "[/S", 3) == 0 || std::strncmp(line, "[/T", 3) == 0;
}

// Reads whole lines up to the end of the `count`th sentence. False if the input ends before, or the run is cancelled.
// wanted: "[/T" ends a sentence here and nowhere else, and leading blanks do not.
bool skip_sentences(std::FILE* input, std::int64_t count) {
  std::array<char, kLineSize> line;
  while (count > 0) {
    if (must_leave() == Status::stopped || !text_line_read(input, line.data(), kLineSize)) return false;
    if (ends_a_sentence(line.data())) --count;
  }
  return true;
}

const char* banner_of(std::int32_t status) {
  switch (status) {
    case run_state::over_time: return ";;Time Over!\n";
    case run_state::failed: return ";;Failed!\n";
    default: return ";;Done!\n";
  }
}

void run_sentences(const RunSettings& settings, RunContext& context, Host& host) {
  const std::int64_t end = std::int64_t{settings.start_sentence} + settings.sentence_count;
  for (std::int64_t number = settings.start_sentence;;) {
    run_status = run_state::running;
    if (host.run_step(context, kSentenceCaption, static_cast<std::int32_t>(number)) == StepResult::cancelled) {
      out_print(";;Cancelled!\n");
      return;
    }
    const std::int32_t status = run_status;
    if (status == run_state::end_of_input) return;
    out_print("%s", banner_of(status));
    ++number;
    const bool has_no_end = settings.sentence_count == 0;
    // Without rules no sentence reads any input: a run without a count would go on for ever.
    if (has_no_end ? context.rules == nullptr : end <= number) return;
  }
}

void run_steps(const RunSettings& settings, RunContext& context, Host& host) {
  if (!run_rule_step(context, host) || settings.rules_conversion_only) return;
  if (!skip_sentences(context.input, std::int64_t{settings.start_sentence} - 1)) {
    if (must_leave() != Status::stopped) return;
    std::clearerr(context.input);  // it may have waited for data, which is no fault of the file
    out_print(";;Cancelled!\n");
    return;
  }
  run_sentences(settings, context, host);
}

void release_slots(std::array<IndexDescriptor*, kKeyFields>& slots) {
  for (IndexDescriptor*& slot : slots) {
    void* cell = std::exchange(slot, nullptr);
    heap_free_clear(cell);
  }
}

// The name of the damaged file, as far as a run knows it: an index lies beside its dictionary.
std::string damaged_file(const RunSettings& settings, const RunContext& context) {
  const std::FILE* stream = lookup_damage.stream;
  const bool is_cr = stream == context.cr_dictionary || stream == context.cr_index;
  const bool is_index = stream == context.cr_index || stream == context.dictionary_index;
  return (is_index ? "the index of " : "") + (is_cr ? settings.cr_dictionary_file : settings.dictionary_file);
}

void note_damage(const RunSettings& settings, const RunContext& context) {
  if (lookup_damage.blocks == 0) return;
  std::string note = damaged_file(settings, context) + ": damaged at offset " + std::to_string(lookup_damage.offset);
  if (lookup_damage.blocks > 1) {
    note += "; damaged blocks were met " + std::to_string(lookup_damage.blocks) + " times in all";
  }
  run_faults.notes.push_back(note + "; \"lexon-dict check\" tells more");
}

void note_short_file(const std::string& path, const char* what) {
  run_faults.notes.push_back(path + ": " + what);
  run_faults.file_is_short = true;
}

void note_faults(const RunSettings& settings, const RunContext& context) {
  run_faults.notes.insert(run_faults.notes.end(), context.notes.begin(), context.notes.end());
  note_damage(settings, context);
  const bool input_failed = context.input != nullptr && std::ferror(context.input) != 0;
  if (input_failed) note_short_file(settings.input_file, "cannot be read to its end");
  if (context.rules_unwritten) note_short_file(context.compiled_rules.path, "could not be written");
  if (context.matrix_unwritten) note_short_file(context.compiled_matrix.path, "could not be written");
}

void run(const RunSettings& settings, RunContext& context, Host& host) {
  if (const Opening opening = open_all(settings, context, host); opening.succeeded) {
    run_steps(settings, context, host);
  } else if (!opening.message.empty()) {
    host.report_stop(opening.message);
  }
  note_faults(settings, context);
}

// What the standard library throws for exhausted memory ends the run; steps meet it themselves.
void run_guarded(const RunSettings& settings, RunContext& context, Host& host) {
  try {
    run(settings, context, host);
  } catch (const std::bad_alloc&) {
    host.report_stop(kNoMemory);
  }
}

}  // namespace

void run_driver(const RunSettings& settings, Host& host) {
  run_faults = {};
  if (settings.run_at_once) host.minimise();
  RunContext context;
  context.post_edit = settings.post_edit;
  state.trace_level = static_cast<std::int8_t>(settings.trace_level & 0xFF);
  run_guarded(settings, context, host);
  compiled_file_close(context.compiled_rules);
  compiled_file_close(context.compiled_matrix);
  for (std::FILE* stream : {context.input, context.rule_text}) {
    if (stream != nullptr) std::fclose(stream);
  }
  release_slots(context.dictionary_slots);
  release_slots(context.cr_slots);
  host.finish();
}

}  // namespace lexon
