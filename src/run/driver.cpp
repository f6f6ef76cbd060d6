// One run, in the order of its steps: open everything, decide about the rule files, run the rule step, render one
// sentence after the other. Every way out ends with `Host::finish`; the output and the dictionaries stay open.
#include "run/driver.hpp"

#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include "data/output.hpp"
#include "data/platform.hpp"
#include "graph/line_kind.hpp"
#include "run/batch.hpp"
#include "run/borders.hpp"
#include "run/context.hpp"
#include "run/files.hpp"
#include "run/notes.hpp"
#include "run/output_check.hpp"
#include "run/rule_files.hpp"
#include "run/rule_step.hpp"

namespace lexon {

namespace {

constexpr const char* kNoMemory = "No memory!";

// What opening reports: nothing, a message that ends the run, or an end without a message.
struct Opening {
  bool succeeded = true;
  std::string message;
  std::string reason;  // what the system says of it; may be empty
};

Opening failure(std::string message, std::string reason = {}) {
  return {false, std::move(message), std::move(reason)};
}

// The system's words for the failure that has just been met.
std::string system_reason() {
  return errno != 0 ? std::strerror(errno) : std::string();
}

Opening failure_to_open(const char* what, const std::string& path) {
  return failure(cannot_open(what, path), path.empty() ? "no path is given" : system_reason());
}

Opening open_output(const RunSettings& settings, RunContext& context) {
  if (std::string conflict = output_conflict(settings); !conflict.empty()) return failure(std::move(conflict));
  std::FILE* stream = file_open(settings.output_file, "w");
  if (stream == nullptr) return failure_to_open("Output File", settings.output_file);
  context.output.reset(stream);
  static_cast<void>(std::setvbuf(stream, nullptr, _IONBF, 0));  // the session's output is the buffer
  context.session.output.redirect(stream);
  return {};
}

// Why a dictionary cannot be opened, for a message that has its path already.
// The message of a dictionary begins with its path, and often with what the message says already.
std::string reason_of(const Dictionary& dictionary) {
  std::string_view reason = dictionary.fault;
  for (const std::string& front : {dictionary.path + ": ", std::string("cannot be opened: ")}) {
    if (reason.starts_with(front)) reason.remove_prefix(front.size());
  }
  return std::string(reason);
}

PairCheck pair_check_of(const RunSettings& settings) {
  return settings.check_dictionaries ? PairCheck::whole : PairCheck::quick;
}

// The order of these tests decides which message a user sees: the file itself, its slot of concept words, its index.
Opening open_dictionary(const RunSettings& settings, RunContext& context) {
  const std::string& path = settings.dictionary_file;
  Dictionary& dictionary = context.dictionary;
  const bool is_open = dictionary_open(path, pair_check_of(settings), dictionary);
  if (dictionary.dictionary == nullptr) return failure(cannot_open("Dictionary File", path), reason_of(dictionary));
  if (dictionary.slots[kKeyCw] == nullptr) {
    return failure("CW : No Index in Dictionary File : " + path + "!", "no dictionary that lexon-dict has built");
  }
  return is_open ? Opening{} : failure(cannot_open("Dictionary Index File", path), reason_of(dictionary));
}

Opening open_input(const RunSettings& settings, RunContext& context) {
  context.input_waits = is_waiting_file(settings.input_file);
  context.input = text_open(settings.input_file, context.session.stop_requested);
  return context.input != nullptr ? Opening{} : failure_to_open("Input File", settings.input_file);
}

// The header that is read last decides for all dictionaries of a run what kind of index names they have.
void share_name_size(RunContext& context, Host& host) {
  Dictionary& words = context.dictionary;
  const Dictionary& pairs = context.cr_dictionary;
  if (pairs.name_size == 0 || pairs.name_size == words.name_size) return;
  host.note({words.path + " and " + pairs.path +
                 ": the names of their indexes are of different kinds, one of at most " +
                 std::to_string(kShortNameStem) +
                 " characters before the dot and one longer; in one run the file opened last, " + pairs.path +
                 ", decides for both, and looking words up in " + words.path +
                 " fails or finds nothing: build one of the two again under a name of the other's kind",
             true, true});
  words.name_size = pairs.name_size;
}

// The only failure that offers a choice. Without the dictionary the run takes no co-occurrence step.
Opening open_cr_dictionary(const RunSettings& settings, RunContext& context, Host& host) {
  const std::string& path = settings.cr_dictionary_file;
  if (path.empty()) return {};
  Dictionary& dictionary = context.cr_dictionary;
  const bool is_open = dictionary_open(path, pair_check_of(settings), dictionary);
  share_name_size(context, host);
  if (is_open) return {};
  dictionary.dictionary.reset();
  const bool goes_on =
      host.ask_yes_no(cannot_open("Cooccurrence Dictionary File", path) + " continue?", reason_of(dictionary));
  return goes_on ? Opening{} : failure({});
}

// A message that says "Can't Open" has the system's reason with it; the others say all that there is.
Opening open_rules(const RunSettings& settings, RunContext& context, Host& host) {
  errno = 0;
  std::string message = rule_files_open(settings, context);
  note_source(context, host);
  if (message.empty()) return {};
  if (!message.starts_with("Can't Open")) return failure(std::move(message));
  std::string reason = settings.rule_file.empty() ? "no path is given" : system_reason();
  return failure(std::move(message), std::move(reason));
}

// The order is part of the behaviour: a run that fails at a later file has already emptied the output.
Opening open_all(const RunSettings& settings, RunContext& context, Host& host) {
  Opening opening = open_output(settings, context);
  if (opening.succeeded) opening = open_dictionary(settings, context);
  if (opening.succeeded) opening = open_input(settings, context);
  if (opening.succeeded) opening = open_cr_dictionary(settings, context, host);
  if (opening.succeeded) opening = open_rules(settings, context, host);
  return opening;
}

// While it lives, what the rule step prints is dropped unless it `is_wanted`.
class RuleOutput {
 public:
  RuleOutput(RunContext& context, bool is_wanted) : output_(context.session.output), stream_(output_.stream()) {
    if (!is_wanted) output_.redirect(nullptr);
  }
  ~RuleOutput() {
    if (output_.stream() != stream_) static_cast<void>(output_.take());
    output_.redirect(stream_);
  }
  RuleOutput(const RuleOutput&) = delete;
  RuleOutput& operator=(const RuleOutput&) = delete;

 private:
  Output& output_;
  std::FILE* stream_;
};

// False when the run was cancelled.
bool rules_make_ready(const RunSettings& settings, RunContext& context, Host& host) {
  // What the rules print comes from the first part of a run alone, so that the joined outputs hold it once.
  const RuleOutput output(context, !settings.range || settings.range->is_first);
  // A failed rule step does not end the run: every sentence then fails with a banner of its own.
  if (run_rule_step(context, host) == StepResult::cancelled) {
    rule_files_cancel(context);
    context.session.output.banner(";;Cancelled!");
    return false;
  }
  rule_files_finish(context, !context.rules_failed);
  return true;
}

void note_short_file(RunContext& context, const std::string& path, const char* what) {
  context.notes.push_back(path + ": " + what);
  context.file_is_short = true;
}

// To where the sentences of the range begin. False when the run ends here: it was cancelled, or nothing is left.
bool go_to_range(const RunSettings& settings, RunContext& context, StepResult& result) {
  TextWatch& lines = context.input_notes.text;
  const auto is_cancelled = [&context] { return must_leave(context.session) == Status::stopped; };
  result = StepResult::finished;
  if (settings.range && !settings.range->is_first) {
    const InputRange& range = *settings.range;
    if (range.is_empty() || context.grammar.rules == nullptr) return false;
    lines.line = range.from.line;
    lines.goes_on = range.from.goes_on;
    // To the last border in front of the range, and from there sentence by sentence.
    bool is_there = fseeko(context.input, static_cast<off_t>(range.from.offset), SEEK_SET) == 0;
    for (std::int64_t i = 0; i < range.passed_over && is_there && !is_cancelled(); ++i) {
      is_there = sentence_pass(context.input, &lines);
    }
    if (is_cancelled()) result = StepResult::cancelled;
    if (!is_there) note_short_file(context, settings.input_file, "does not hold what its offsets say");
    return is_there && !is_cancelled();
  }
  // An input that ends while sentences are skipped ends the run without a banner.
  const std::int64_t before = std::int64_t{settings.start_sentence} - 1;
  context.skipped = skip_sentences(context.input, before, lines, context.session.stop_requested);
  if (context.skipped >= before) return true;
  if (is_cancelled()) {
    result = StepResult::cancelled;
  } else {
    context.input_ended = true;
  }
  return false;
}

void run_steps(const RunSettings& settings, RunContext& context, Host& host) {
  if (!rules_make_ready(settings, context, host)) return;
  note_rules(settings, context, host);
  if (settings.rules_conversion_only) return;
  StepResult result = StepResult::cancelled;
  if (go_to_range(settings, context, result)) result = Batch(settings, context).run(host);
  if (result == StepResult::finished) return;
  std::clearerr(context.input);  // it may have waited for data, which is no fault of the file
  context.session.output.banner(";;Cancelled!");
}

// The name of the damaged file.
std::string damaged_file(const RunContext& context) {
  const std::FILE* stream = context.session.damage.stream;
  const bool is_cr = stream == context.cr_dictionary.dictionary.get() || stream == context.cr_dictionary.index.get();
  const Dictionary& dictionary = is_cr ? context.cr_dictionary : context.dictionary;
  return stream == dictionary.index.get() ? dictionary.index_path : dictionary.path;
}

// The first damaged place that a lookup has met, and how often there were such.
void note_damage(RunContext& context) {
  if (context.session.damage.blocks == 0) return;
  std::string note = damaged_file(context) + ": damaged at offset " + std::to_string(context.session.damage.offset);
  if (context.session.damage.blocks > 1) {
    note += "; damaged blocks were met " + std::to_string(context.session.damage.blocks) + " times in all";
  }
  context.notes.push_back(note + "; \"lexon-dict check\" tells more");
}

// What did not reach a file, or did not come from one. Each of them makes the status that of an output that is not
// whole.
void note_faults(const RunSettings& settings, RunContext& context) {
  note_damage(context);
  const bool input_failed = context.input != nullptr && std::ferror(context.input) != 0;
  if (input_failed) note_short_file(context, settings.input_file, "cannot be read to its end");
  if (context.rules_unwritten) note_short_file(context, context.compiled_rules.path, "could not be written");
  if (context.matrix_unwritten) note_short_file(context, context.compiled_matrix.path, "could not be written");
}

void run(const RunSettings& settings, RunContext& context, Host& host) {
  context.grammar.pool.limit_blocks(settings.blocks);
  context.grammar.pool.set_fault(settings.fault);
  context.session.pool.set_fault(settings.fault);
  note_settings(settings, host);
  if (const Opening opening = open_all(settings, context, host); opening.succeeded) {
    run_steps(settings, context, host);
    note_input(settings, context, host);
  } else if (!opening.message.empty()) {
    host.report_stop(opening.message, opening.reason);
  }
  note_faults(settings, context);
}

// What the standard library throws for exhausted memory ends the run; steps meet it themselves.
void run_guarded(const RunSettings& settings, RunContext& context, Host& host) {
  try {
    run(settings, context, host);
  } catch (const std::bad_alloc&) {
    host.report_stop(kNoMemory, {});
  }
}

}  // namespace

void run_driver(const RunSettings& settings, Host& host) {
  if (settings.run_at_once) host.minimise();
  const auto owned = std::make_unique<RunContext>();
  RunContext& context = *owned;
  context.post_edit = settings.post_edit;
  context.target_left = settings.range && settings.range->begins_with_target;
  context.session.state.trace_level = static_cast<std::int8_t>(settings.trace_level & 0xFF);
  run_guarded(settings, context, host);
  compiled_file_close(context.compiled_rules);
  compiled_file_close(context.compiled_matrix);
  // The host finishes last: it flushes the output and says what came of the run, when nothing can change that any more.
  for (std::FILE* stream : {context.input, context.rule_text}) {
    if (stream != nullptr) std::fclose(stream);
  }
  host.finish(context);
  context.session.output.redirect(nullptr);
}

}  // namespace lexon
