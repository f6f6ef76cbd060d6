#include "front/command_line.hpp"

#include <charconv>
#include <filesystem>
#include <optional>
#include <vector>

#include "data/chars.hpp"

namespace lexon {

namespace {

constexpr const char* kSwitches =
    "  -C PATH   co-occurrence dictionary        -L N      trace level, 0 to 4 (1)\n"
    "  -S N      first sentence to render (1)    -N N      how many; 0 for all (1)\n"
    "  -T N      seconds for a sentence; 0 for no limit (0)\n"
    "  -R        convert the rules and stop      ^P        no post-edit\n"
    "  -G        start at once                   -W        show the progress window\n"
    "  -M, ^A    accepted, without effect\n"
    "  -Q, --quiet          no progress          --progress=plain   progress as plain lines\n"
    "  --rebuild            make the compiled rules anew   --in-memory   write no compiled rules\n"
    "  --yes                yes to every question\n"
    "  --help, --version\n"
    "\n"
    "Exit status: 0 every sentence done, 1 the run could not start, 2 wrong command line, 3 a sentence failed or ran\n"
    "out of time, 4 the output could not be written whole, 130 cancelled.\n";

// Walks over the words of the command line, character by character where a word holds more than one switch.
class Words {
 public:
  explicit Words(std::span<const char* const> words) : words_(words) {}

  [[nodiscard]] bool at_end() const { return words_.empty(); }
  [[nodiscard]] bool at_word_start() const { return offset_ == 0; }
  // What is left of the word under the cursor.
  [[nodiscard]] std::string_view rest() const { return std::string_view(words_.front()).substr(offset_); }

  void advance(std::size_t characters) {
    offset_ += characters;
    if (!rest().empty()) return;
    words_ = words_.subspan(1);
    offset_ = 0;
  }

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
  std::size_t offset_ = 0;
};

// The text behind an opening quote up to the closing one, which may stand in a later word.
std::string take_quoted(Words& words) {
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
  if (text.size() > kPathLimit) text.resize(kPathLimit);
  return text;
}

// Against the current folder; empty if it cannot be had or is too long.
std::string absolute_path(const std::string& path) {
  if (path.empty()) return {};
  std::error_code error;
  const std::string whole = std::filesystem::absolute(path, error).lexically_normal().string();
  return error || whole.size() > kPathLimit ? std::string() : whole;
}

std::string take_path(Words& words) {
  if (words.at_end()) return {};
  const std::string text = words.rest().starts_with('"') ? take_quoted(words) : std::string(words.take_rest());
  return absolute_path(text);
}

std::optional<std::int32_t> number_of(std::string_view text) {
  if (text.size() > 1 && text.front() == '+' && is_digit(text[1])) text.remove_prefix(1);
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool is_number = error == std::errc() && end == text.data() + text.size();
  return is_number ? std::optional(number) : std::nullopt;
}

// Reads the value of a switch. Without a word behind the switch the default stays.
void take_number(Words& words, char letter, std::int32_t& value, std::string& error) {
  words.skip_blanks();
  if (words.at_end()) return;
  const std::string_view text = words.take_to_blank();
  if (const std::optional<std::int32_t> number = number_of(text)) {
    value = *number;
  } else {
    error = std::string("the value of -") + letter + " is no number: " + std::string(text);
  }
}

void skip_letter(Words& words, char upper_case) {
  if (!words.at_end() && !words.at_word_start() && (words.rest().front() & ~0x20) == upper_case) words.advance(1);
}

void skip_word(Words& words) {
  if (!words.at_end() && !words.at_word_start()) words.take_to_blank();
}

// The switches that begin with "^" turn something off.
bool take_caret_switch(Words& words, char letter, CommandLine& line) {
  switch (letter) {
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

bool take_dash_switch(Words& words, char letter, CommandLine& line) {
  RunSettings& settings = line.settings;
  switch (letter) {
    case 'C':
      words.skip_blanks();
      settings.cr_dictionary_file = take_path(words);
      return true;
    case 'G':
      settings.run_at_once = true;
      skip_letter(words, 'O');
      return true;
    case 'L': take_number(words, letter, settings.trace_level, line.error); return true;
    case 'M': settings.reserved_b = true; return true;
    case 'N': take_number(words, letter, settings.sentence_count, line.error); return true;
    case 'Q': line.progress = ProgressStyle::none; return true;
    case 'R':
      settings.rules_conversion_only = true;
      skip_word(words);
      return true;
    case 'S': take_number(words, letter, settings.start_sentence, line.error); return true;
    case 'T': take_number(words, letter, settings.max_time_per_sentence, line.error); return true;
    case 'W':
      settings.show_progress = true;
      skip_word(words);
      return true;
    default: return false;
  }
}

void take_switch(Words& words, CommandLine& line) {
  const std::string_view text = words.rest();
  const bool has_sign = text.front() == '-' || text.front() == '^';
  if (!has_sign || text.size() < 2) {
    line.error = "not a switch: " + std::string(text);
    return;
  }
  const char sign = text.front();
  const char letter = is_letter(text[1]) ? static_cast<char>(text[1] & ~0x20) : text[1];
  words.advance(2);
  const bool known = sign == '^' ? take_caret_switch(words, letter, line) : take_dash_switch(words, letter, line);
  if (!known) line.error = "unknown switch: " + std::string(text);
}

// The long options may stand anywhere. True if `word` is one.
bool take_long_option(std::string_view word, CommandLine& line) {
  if (!word.starts_with("--")) return false;
  if (word == "--help") {
    line.help = true;
  } else if (word == "--version") {
    line.version = true;
  } else if (word == "--yes") {
    line.yes = true;
  } else if (word == "--rebuild") {
    line.settings.rebuild = true;
  } else if (word == "--in-memory") {
    line.settings.in_memory = true;
  } else if (word == "--quiet") {
    line.progress = ProgressStyle::none;
  } else if (word == "--progress=plain") {
    line.progress = ProgressStyle::plain;
  } else {
    line.error = "unknown option: " + std::string(word);
  }
  return true;
}

}  // namespace

CommandLine command_line_read(std::span<const char* const> given) {
  CommandLine line;
  std::vector<const char*> bare;
  for (const char* word : given) {
    if (!take_long_option(word, line)) bare.push_back(word);
  }
  Words words(bare);
  for (std::string* path : {&line.settings.dictionary_file, &line.settings.rule_file, &line.settings.input_file,
                            &line.settings.output_file}) {
    *path = take_path(words);
  }
  for (words.skip_blanks(); !words.at_end() && line.error.empty(); words.skip_blanks()) take_switch(words, line);
  return line;
}

std::string usage_text(std::string_view call) {
  return "usage: " + std::string(call) + " [switches]\n\n" + kSwitches;
}

}  // namespace lexon
