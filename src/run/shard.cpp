#include "run/shard.hpp"

#include <algorithm>
#include <utility>

#include "data/platform.hpp"
#include "dict/dictionary.hpp"
#include "source/expand.hpp"

namespace lexon {

namespace {

// Size and hash. The date is left out: a copy on another machine is the same file.
std::optional<FileMark> content_of(std::FILE* stream) {
  std::optional<FileMark> mark = stream != nullptr ? file_mark(stream) : std::nullopt;
  if (mark) mark->time = {0, 0};
  return mark;
}

// The run itself tells what is wrong with a dictionary.
void put_dictionary(Stamp& stamp, const std::string& name, const std::string& path) {
  if (path.empty()) return;
  Dictionary dictionary;
  static_cast<void>(dictionary_open(path, PairCheck::none, dictionary));
  stamp.put(name, content_of(dictionary.dictionary.get()).value_or(FileMark{}));
  stamp.put(name + " index", content_of(dictionary.index.get()).value_or(FileMark{}));
}

// Of a source all that it expands to counts.
FileMark rules_mark(const std::string& path) {
  const Expansion expansion = path.ends_with(kSourceExtension) ? expand_source(path) : Expansion{};
  if (!expansion.is_source) return content_mark(path).value_or(FileMark{});
  ByteHash hash;
  hash.add(expansion.text.data(), expansion.text.size());
  return {static_cast<std::int64_t>(expansion.text.size()), hash.value(), {0, 0}};
}

// The switches that change the output, in an order of their own; the number of threads is none of them.
std::string settings_text(const RunSettings& settings) {
  const std::pair<const char*, std::int64_t> all[] = {
      {"-S", settings.start_sentence},        {"-N", settings.sentence_count},           {"-L", settings.trace_level},
      {"-T", settings.max_time_per_sentence}, {"post-edit", settings.post_edit ? 1 : 0}, {"--blocks", settings.blocks}};
  std::string text;
  for (const auto& [name, value] : all)
    text += std::string(text.empty() ? "" : " ") + name + ' ' + std::to_string(value);
  return text;
}

// What the output of a part is made of. Parts with the same lines belong to one run, and one that is done stays done as
// long as these lines are the same.
Stamp made_of(const RunSettings& settings, const char* version, const Borders& borders) {
  Stamp stamp;
  stamp.put("program", version);
  FileMark input = borders.input;
  input.time = {0, 0};
  stamp.put("input", input);
  stamp.put("rules", rules_mark(settings.rule_file));
  put_dictionary(stamp, "dictionary", settings.dictionary_file);
  put_dictionary(stamp, "co-occurrence dictionary", settings.cr_dictionary_file);
  stamp.put("switches", settings_text(settings));
  return stamp;
}

// Sentences that the run would try.
std::int64_t sentences_of(const RunSettings& settings, const Borders& borders) {
  if (settings.sentence_count == 0) return borders.sentences;
  return std::min<std::int64_t>(borders.sentences, std::max(settings.sentence_count, 1));
}

// Shards have the same number of sentences, or one less; the first has some if there are any.
InputRange range_of(ShardNumber shard, std::int64_t sentences, const Borders& borders) {
  // Sentences in front of part `number` + 1, rounded up so that early parts are the longer ones; no product overflows.
  const auto border = [&](std::int64_t number) {
    const std::int64_t whole = sentences / shard.of * number;
    return whole + (sentences % shard.of * number + shard.of - 1) / shard.of;
  };
  InputRange range;
  range.is_first = shard.number == 1;
  range.before = border(shard.number - 1);
  const std::int64_t end = border(shard.number);
  range.count = end - range.before;
  // What stands behind the last sentence belongs to the part that has it; of an input without any to the first part.
  range.to_end = end == sentences && (range.count != 0 || (range.is_first && sentences == 0));
  if (range.count == 0) return range;
  const auto place = static_cast<std::size_t>(range.before / borders.every);
  range.from = borders.places[place];
  range.passed_over = range.before % borders.every;
  return range;
}

// ---- The marker

constexpr const char* kMadeOf = "of ";  // in front of the keys of what it is made of

// One line of a marker as a number, a count of parts or a flag. False if it is missing or out of its range.
bool take(const Stamp& stamp, const char* key, std::int64_t& value) {
  const auto number = stamp.number(key);
  value = number.value_or(0);
  return number.has_value();
}

bool take(const Stamp& stamp, const char* key, std::int32_t& value) {
  std::int64_t number = 0;
  const bool is_there = take(stamp, key, number) && number >= 0 && number <= kMostShards;
  value = static_cast<std::int32_t>(is_there ? number : 0);
  return is_there;
}

bool take(const Stamp& stamp, const char* key, bool& value) {
  std::int64_t number = 0;
  const bool is_there = take(stamp, key, number);
  value = number != 0;
  return is_there;
}

// Visits the lines of a marker that are numbers.
template <typename Marker, typename Visit>
bool for_numbers(Marker& marker, Visit visit) {
  return visit("shard", marker.shard.number) && visit("shards", marker.shard.of) && visit("first", marker.first) &&
         visit("sentences", marker.sentences) && visit("begins-with-target", marker.begins_with_target) &&
         visit("leaves-target", marker.result.target_left) && visit("done", marker.result.done) &&
         visit("failed", marker.result.failed) && visit("over time", marker.result.over_time) &&
         visit("left out", marker.result.left_out) && visit("losses", marker.result.has_losses);
}

}  // namespace

std::optional<FileMark> content_mark(const std::string& path) {
  return content_of(File(regular_file_open(path, "rb")).get());
}

std::string shard_path(const std::string& output, ShardNumber shard) {
  const std::string of = std::to_string(shard.of);
  // Zeros in front, so that a listing of the folder shows the parts in their order.
  std::string number = std::to_string(shard.number);
  number.insert(0, of.size() - std::min(of.size(), number.size()), '0');
  return output + '.' + number + "-of-" + of;
}

std::string shard_marker_path(const std::string& shard_output) {
  return shard_output + ".done";
}

int ShardResult::exit_status(bool strict) const {
  return failed != 0 || over_time != 0 || (strict && has_losses) ? 3 : 0;
}

StampState shard_marker_read(const std::string& path, ShardMarker& marker) {
  Stamp stamp;
  if (const StampState state = stamp_read(path, stamp); state != StampState::whole) return state;
  marker = {};
  const auto mark = stamp.mark("output");
  const bool is_whole =
      mark && for_numbers(marker, [&stamp](const char* key, auto& value) { return take(stamp, key, value); });
  if (!is_whole || marker.shard.number < 1 || marker.shard.number > marker.shard.of) return StampState::damaged;
  marker.result.output = *mark;
  for (const auto& [key, value] : stamp.lines) {
    if (key.starts_with(kMadeOf)) marker.made_of.put(key.substr(std::string_view(kMadeOf).size()), value);
  }
  return StampState::whole;
}

// The marker is the last thing that a part writes: with it the part is done, and without it the output is unfinished.
bool shard_marker_write(const std::string& path, const ShardMarker& marker) {
  Stamp stamp;
  const auto put = [&stamp](const char* key, auto value) {
    stamp.put(key, static_cast<std::int64_t>(value));
    return true;
  };
  static_cast<void>(for_numbers(marker, put));
  stamp.put("output", marker.result.output);
  for (const auto& [key, value] : marker.made_of.lines) stamp.put(kMadeOf + key, value);
  return stamp_write(path, stamp, true);
}

std::string shard_plan(RunSettings& settings, ShardNumber shard, bool begins_with_target, const char* version,
                       const std::atomic<bool>& stop, ShardPlan& plan) {
  std::string fault =
      borders_of(settings.input_file, settings.start_sentence, false, stop, plan.borders, plan.borders_are_kept);
  if (!fault.empty()) return fault;
  InputRange range = range_of(shard, sentences_of(settings, plan.borders), plan.borders);
  range.begins_with_target = begins_with_target;
  ShardMarker& marker = plan.marker;
  marker.shard = shard;
  marker.first = range.before;
  marker.sentences = range.count;
  marker.begins_with_target = begins_with_target;
  marker.made_of = made_of(settings, version, plan.borders);
  settings.output_file = shard_path(settings.output_file, shard);
  settings.range = range;
  return {};
}

std::optional<ShardResult> shard_done(const RunSettings& settings, const ShardPlan& plan) {
  ShardMarker found;
  if (shard_marker_read(shard_marker_path(settings.output_file), found) != StampState::whole) return std::nullopt;
  const ShardMarker& wanted = plan.marker;
  const bool is_same = found.shard.number == wanted.shard.number && found.shard.of == wanted.shard.of &&
                       found.begins_with_target == wanted.begins_with_target && found.made_of == wanted.made_of;
  // The size alone: to read the whole output again would take longer than many a part.
  const File output(regular_file_open(settings.output_file, "rb"));
  if (!is_same || output == nullptr || file_size(output.get()) != found.result.output.size) return std::nullopt;
  return found.result;
}

}  // namespace lexon
