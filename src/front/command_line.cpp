#include "front/command_line.hpp"

#include <charconv>
#include <filesystem>
#include <limits>
#include <vector>

#include "data/chars.hpp"

namespace lexon {

namespace {

constexpr const char* kSwitches =
    "  -C PATH   co-occurrence dictionary        -L N      trace level, 0 to 4 (1)\n"
    "  -S N      first sentence to render (1)    -N N      how many; 0 for all (1)\n"
    "  -T N      seconds for a sentence; 0 for no limit (0)\n"
    "  -J N, --jobs N       render N sentences at the same time; 0 for as many as processors\n"
    "  -R        convert the rules and stop      ^P        no post-edit\n"
    "  -G        start at once                   -W        show the progress window\n"
    "  -M, ^A    accepted, without effect\n"
    "  -Q, --quiet          no progress          --progress=plain   progress as plain lines\n"
    "  --rebuild            make the compiled rules anew   --in-memory   write no compiled rules\n"
    "  --report FILE        write a row for each sentence: status, time, steps, what was left over; as JSON lines if\n"
    "                       FILE ends in .json or .jsonl, else as TSV\n"
    "  --yes                yes to every question\n"
    "  --check-dictionary   compare the dictionaries with what was built, byte by byte\n"
    "  --strict             status 3 also for what was left out: lines, rules, sentences without an end\n"
    "  --blocks N           memory of rules and a sentence together, in blocks of 64 KiB (200)\n"
    "  --shard I/N          render the I-th of N parts, into OUTPUT.I-of-N; \"lexon join OUTPUT\" joins them\n"
    "  --forced-target      the part begins with a forced target, as \"lexon join\" may ask for\n"
    "  --index-input        write where the sentences begin, into INPUT.offsets, and stop\n"
    "  --help, --version\n"
    "\n"
    "Exit status: 0 every sentence done, 1 the run could not start, 2 wrong command line, 3 a sentence failed or ran\n"
    "out of time, 4 the output could not be written whole, 130 cancelled.\n";

// Walks over the words of the command line, character by character where a word holds more than one switch.
class Words {
 public:
  explicit Words(std::span<const char* const> words) : words_(words) {}

  [[nodiscard]] bool at_end() const { return words_.empty(); }
  // False while a switch of several letters is being read.
  [[nodiscard]] bool at_word_start() const { return offset_ == 0; }
  // What is left of the word under the cursor.
  [[nodiscard]] std::string_view rest() const { return std::string_view(words_.front()).substr(offset_); }

  // Moves on to the next word where one is used up. An empty word stays until `skip_blanks`.
  void advance(std::size_t characters) {
    offset_ += characters;
    if (!rest().empty()) return;
    words_ = words_.subspan(1);
    offset_ = 0;
  }

  // The texts that are taken point into the words, and stand as long as these.
  std::string_view take_rest() {
    const std::string_view taken = rest();
    advance(taken.size());
    return taken;
  }

  // What is left of the word up to a blank.
  std::string_view take_to_blank() {
    const std::string_view taken = rest().substr(0, rest().find_first_of(" \t"));
    advance(taken.size());
    return taken;
  }

  // Steps over blanks, and over words and ends of words that hold nothing else.
  void skip_blanks() {
    while (!at_end() && (rest().empty() || is_blank(rest().front()))) advance(rest().empty() ? 0 : 1);
  }

 private:
  std::span<const char* const> words_;
  // In the first of the words.
  std::size_t offset_ = 0;
};

// A path that was read.
struct PathRead {
  std::string path;   // empty: none, or one that cannot be used
  std::string fault;  // what is wrong with it, for the user; empty if nothing is
};

// Continues a message that names the path.
std::string too_long(std::size_t length) {
  return "has " + std::to_string(length) + " characters, and " + std::to_string(kPathLimit) + " is the limit";
}

// The text behind an opening quote up to the closing one, which may stand in a later word.
PathRead take_quoted(Words& words) {
  std::string text;
  words.advance(1);
  while (!words.at_end()) {
    const std::string_view rest = words.rest();
    const std::size_t quote = rest.find('"');
    text += rest.substr(0, quote);
    if (quote != std::string_view::npos) {
      words.advance(quote + 1);
      while (!words.at_end() && !words.at_word_start() && is_blank(words.rest().front())) words.advance(1);
      break;
    }
    words.advance(rest.size());
    if (!words.at_end()) text += ' ';
  }
  // A quoted path is cut at the limit and used; one without quotes is whole or none.
  if (text.size() <= kPathLimit) return {text, {}};
  return {text.substr(0, kPathLimit), too_long(text.size()) + ": the rest is left away"};
}

// Against the current folder; the path is empty if that cannot be had or makes it too long.
PathRead absolute_path(const PathRead& read) {
  if (read.path.empty()) return read;
  std::error_code error;
  const std::string whole = std::filesystem::absolute(read.path, error).lexically_normal().string();
  if (error) return {{}, "cannot be made absolute: " + error.message()};
  if (whole.size() > kPathLimit) return {{}, "made absolute " + too_long(whole.size())};
  return {whole, read.fault};
}

// A path without quotes ends with its word, blanks and all.
PathRead take_path(Words& words) {
  if (words.at_end()) return {};
  return absolute_path(words.rest().starts_with('"') ? take_quoted(words)
                                                     : PathRead{std::string(words.take_rest()), {}});
}

// Switches take numbers as they have always done: what is no number counts as 0, and a note says so.
struct NumberRead {
  std::int32_t value = 0;
  bool is_whole = false;  // the text is a number and nothing else, and has room in 32 bits
};

// The number at the start of `text`, as atoi reads it: 0 without a digit. What goes beyond 32 bits stays at their end.
NumberRead number_at_start(std::string_view text) {
  const bool has_plus = text.size() > 1 && text.front() == '+' && is_digit(text[1]);
  if (has_plus) text.remove_prefix(1);
  NumberRead read;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read.value);
  if (error == std::errc::result_out_of_range) {
    using Limits = std::numeric_limits<std::int32_t>;
    read.value = text.front() == '-' ? Limits::min() : Limits::max();
  }
  read.is_whole = error == std::errc() && end == text.data() + text.size();
  return read;
}

// Reads the value of a switch. Without a word behind the switch the default stays.
void take_number(Words& words, char letter, std::int32_t& value, CommandLine& line) {
  words.skip_blanks();
  if (words.at_end()) return;
  const std::string text(words.take_to_blank());
  const NumberRead read = number_at_start(text);
  value = read.value;
  if (read.is_whole) return;
  line.notes.push_back(std::string("-") + letter + ": \"" + text + "\" is read as " + std::to_string(value));
}

// Some switches have a second letter that says nothing, and may lack it.
// Directly behind the letter alone: the next word is another argument.
void skip_letter(Words& words, char upper_case) {
  if (!words.at_end() && !words.at_word_start() && (words.rest().front() & ~0x20) == upper_case) words.advance(1);
}

// What stands behind the letter of such a switch up to a blank says nothing.
void skip_word(Words& words) {
  if (!words.at_end() && !words.at_word_start()) words.take_to_blank();
}

// The value of an option that takes nothing but a number from `least` to `most`.
// None if it is not; `line.error` says why then.
std::optional<std::int32_t> number_within(const char* option, std::string_view text, std::int32_t least,
                                          std::int32_t most, CommandLine& line) {
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool is_number = error == std::errc() && end == text.data() + text.size();
  if (is_number && value >= least && value <= most) return value;
  line.error = std::string(option) + " wants a number from " + std::to_string(least) + " to " + std::to_string(most) +
               ", not \"" + std::string(text) + '"';
  return std::nullopt;
}

// A wrong value leaves the default and an error, with which no run starts.
void take_blocks(std::string_view text, CommandLine& line) {
  line.settings.blocks = number_within("--blocks", text, 1, kMostBlocks, line).value_or(line.settings.blocks);
}

// The same for `-J` and `--jobs`; `option` is what the message calls it.
void take_jobs(const char* option, std::string_view text, CommandLine& line) {
  line.jobs = number_within(option, text, 0, kMostJobs, line);
}

// "I/N": both are whole numbers and nothing else.
void take_shard(std::string_view text, CommandLine& line) {
  ShardNumber shard;
  const std::size_t slash = text.find('/');
  const auto read = [](std::string_view number, std::int32_t& value) {
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    return error == std::errc() && end == number.data() + number.size();
  };
  const bool is_shard = slash != std::string_view::npos && read(text.substr(0, slash), shard.number) &&
                        read(text.substr(slash + 1), shard.of) && shard.number >= 1 && shard.number <= shard.of &&
                        shard.of <= kMostShards;
  if (is_shard) {
    line.shard = shard;
  } else {
    line.error = "--shard wants a part and the number of parts, such as 3/10, not \"" + std::string(text) + '"';
  }
}

// The switches that begin with "^" turn something off.
bool take_caret_switch(Words& words, char letter, CommandLine& line) {
  switch (letter) {
      // Accepted, and of no effect.
    case 'A':
      line.settings.reserved_a = false;
      skip_letter(words, 'C');
      return true;
    case 'P':
      line.settings.post_edit = false;
      skip_letter(words, 'E');
      return true;
    default: return false;
  }
}

// The run goes on without the dictionary.
void take_cr_dictionary(Words& words, CommandLine& line) {
  const PathRead read = take_path(words);
  line.settings.cr_dictionary_file = read.path;
  const std::string fault = read.path.empty() && read.fault.empty() ? "no path behind it" : read.fault;
  if (fault.empty()) return;
  line.path_faults.push_back("-C: " + fault + (read.path.empty() ? ": no co-occurrence dictionary is used" : ""));
}

// The letter comes in upper case, whatever was written. False if there is no such switch.
bool take_dash_switch(Words& words, char letter, CommandLine& line) {
  RunSettings& settings = line.settings;
  switch (letter) {
    case 'C':
      words.skip_blanks();
      take_cr_dictionary(words, line);
      return true;
    case 'G':
      settings.run_at_once = true;
      skip_letter(words, 'O');
      return true;
    case 'J':
      words.skip_blanks();
      take_jobs("-J", words.at_end() ? "" : words.take_to_blank(), line);
      return true;
    case 'L':
      take_number(words, letter, settings.trace_level, line);
      return true;
      // Accepted, and of no effect.
    case 'M': settings.reserved_b = true; return true;
    case 'N': take_number(words, letter, settings.sentence_count, line); return true;
    case 'Q': line.progress = ProgressStyle::none; return true;
    case 'R':
      settings.rules_conversion_only = true;
      skip_word(words);
      return true;
    case 'S': take_number(words, letter, settings.start_sentence, line); return true;
    case 'T': take_number(words, letter, settings.max_time_per_sentence, line); return true;
    case 'W':
      settings.show_progress = true;
      skip_word(words);
      return true;
    default: return false;
  }
}

// A word that is no switch ends the reading: a path too many is not passed over in silence.
void take_switch(Words& words, CommandLine& line) {
  const std::string_view text = words.rest();
  const bool has_sign = text.front() == '-' || text.front() == '^';
  if (!has_sign || text.size() < 2) {
    line.error = "not a switch: " + std::string(text);
    return;
  }
  const char sign = text.front();
  // One bit apart: the letter in upper case.
  const char letter = is_letter(text[1]) ? static_cast<char>(text[1] & ~0x20) : text[1];
  words.advance(2);
  const bool known = sign == '^' ? take_caret_switch(words, letter, line) : take_dash_switch(words, letter, line);
  if (!known) line.error = "unknown switch: " + std::string(text);
}

// The value of a long option, joined to it by "=" or the next word; none if `word` is another option.
std::optional<std::string_view> value_of(std::string_view option, std::string_view word,
                                         std::span<const char* const>& words) {
  if (!word.starts_with(option)) return std::nullopt;
  word.remove_prefix(option.size());
  if (word.starts_with('=')) return word.substr(1);
  if (!word.empty()) return std::nullopt;
  const std::string_view value = words.empty() ? "" : words.front();
  if (!words.empty()) words = words.subspan(1);
  return value;
}

// The long options may stand anywhere. Takes the one in front, with its value, off `words`; false if there is none.
bool take_long_option(std::span<const char* const>& words, CommandLine& line) {
  const std::string_view word = words.front();
  if (!word.starts_with("--")) return false;
  words = words.subspan(1);
  if (word == "--help") {
    line.help = true;
  } else if (word == "--version") {
    line.version = true;
  } else if (word == "--yes") {
    line.yes = true;
  } else if (word == "--check-dictionary") {
    line.settings.check_dictionaries = true;
  } else if (word == "--rebuild") {
    line.settings.rebuild = true;
  } else if (word == "--in-memory") {
    line.settings.in_memory = true;
  } else if (word == "--quiet") {
    line.progress = ProgressStyle::none;
  } else if (word == "--progress=plain") {
    line.progress = ProgressStyle::plain;
  } else if (word == "--forced-target") {
    line.forced_target = true;
  } else if (word == "--index-input") {
    line.index_input = true;
  } else if (const auto shard = value_of("--shard", word, words)) {
    take_shard(*shard, line);
  } else if (word == "--strict") {
    line.settings.strict = true;
  } else if (const auto blocks = value_of("--blocks", word, words)) {
    take_blocks(*blocks, line);
  } else if (const auto jobs = value_of("--jobs", word, words)) {
    take_jobs("--jobs", *jobs, line);
  } else if (const auto report = value_of("--report", word, words)) {
    line.report_file = *report;
    if (report->empty()) line.error = "--report wants a file";
  } else {
    line.error = "unknown option: " + std::string(word);
  }
  return true;
}

}  // namespace

// Errors end the start; notes and faults of paths are told, and the run goes on.
CommandLine command_line_read(std::span<const char* const> given) {
  CommandLine line;
  // Long options go first, wherever they stand; what is left are paths and switches as they have always been.
  std::vector<const char*> bare;
  while (!given.empty()) {
    if (take_long_option(given, line)) continue;
    bare.push_back(given.front());
    given = given.subspan(1);
  }
  Words words(bare);
  RunSettings& settings = line.settings;
  // Missing ones stay empty, and the run says which file it cannot open.
  // The four paths come first and in this order.
  const std::pair<const char*, std::string*> paths[] = {{"DICTIONARY", &settings.dictionary_file},
                                                        {"RULES", &settings.rule_file},
                                                        {"INPUT", &settings.input_file},
                                                        {"OUTPUT", &settings.output_file}};
  for (const auto& [name, path] : paths) {
    const PathRead read = take_path(words);
    *path = read.path;
    if (!read.fault.empty()) line.path_faults.push_back(std::string("the path of ") + name + ' ' + read.fault);
  }
  for (words.skip_blanks(); !words.at_end() && line.error.empty(); words.skip_blanks()) take_switch(words, line);
  if (line.error.empty() && line.shard && settings.rules_conversion_only) {
    line.error = "--shard and -R do not go together: convert the rules first, in a run without --shard";
  }
  if (line.error.empty() && line.forced_target && !line.shard) line.error = "--forced-target is for --shard";
  // Elsewhere a fault of a path is a note, and the run goes on with what there is.
  if (settings.strict && line.error.empty() && !line.path_faults.empty()) line.error = line.path_faults.front();
  return line;
}

// The two programs differ in how they are called, not in their switches.
std::string usage_text(std::string_view call) {
  return "usage: " + std::string(call) + " [switches]\n\n" + kSwitches;
}

}  // namespace lexon
