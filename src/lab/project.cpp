#include "lab/project.hpp"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <utility>

#include "front/process.hpp"
#include "lab/commands.hpp"
#include "lab/progress.hpp"
#include "lab/text_file.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

bool is_blank(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isspace(c) != 0; });
}

// The line that opens the sentence of a text.
struct Opening {
  std::string_view line{};       // without blanks in front; empty: there is none
  std::int64_t lines_above = 0;  // 0 without a line
};

// A "[S" inside a block ({note} ... {/note}) opens nothing.
Opening opening_of(std::string_view text) {
  BlockTag tag;
  std::int64_t above = 0;
  for (; !text.empty(); ++above) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    const LineKind kind = line_kind(line, tag);
    // Only the first one: a text of one sentence has no other.
    if (kind == LineKind::sentence_start) return {line, above};
    if (kind == LineKind::block_tag) block_tag_change(tag, line);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return {};
}

}  // namespace

std::string GraphText::place() const {
  return file + ':' + std::to_string(line + opening_of(text).lines_above);
}

Message GraphText::placed(Message message) const {
  if (message.line == 0 || !message.file.empty()) return message;
  message.file = file;
  // A text begins in the middle of its file.
  message.line += line - 1;
  return message;
}

std::string label_of(std::string_view text) {
  return label_in(opening_of(text).line);
}

Project::Project(GrammarFiles of) : files(std::move(of)), grammar(Grammar::load(files)) {
  begin();
}

Project::Project(GrammarFiles of, std::string_view text)
    : files(std::move(of)), grammar(Grammar::from_text(text, files)) {
  begin();
}

Project::Project(GrammarFiles of, const Overlay& unsaved)
    : files(std::move(of)), grammar(Inside::load(files, unsaved.lookup())) {
  begin();
}

Project::Project(GrammarFiles of, const std::string_view* text, const Project& before, unsigned kept)
    : files(std::move(of)), grammar(Inside::load_changed(files, text, before.grammar, kept)) {
  // The kept rules are the same objects, so their addresses still find their places.
  if ((kept & Inside::rules) != 0) {
    places_ = before.places_;
    rule_text_ = before.rule_text_;
  }
  begin();
}

// What every way of loading ends with: the messages of the grammar are told, and a grammar that cannot be used ends the
// command with them. A message without a file is about the rules, whose text may not have come from a file.
void Project::begin() {
  std::string all;
  for (Message message : grammar.messages()) {
    if (message.file.empty()) message.file = files.rules;
    all += to_string(message) + '\n';
  }
  if (!grammar) {
    // The header of a dictionary is full of NULs, and entry text, which is named for it by mistake, holds none.
    for (const std::string& path : {files.dictionary, files.cooccurrence}) {
      if (path.empty() || !is_plain_file(path)) continue;
      const std::string text = text_file_read(path);
      if (!text.empty() && text.find('\0') == std::string::npos) {
        all += path + ": is text, and no dictionary: lexon-dict build makes one of it\n";
      }
    }
    throw Fault(all + "the grammar cannot be used");
  }
  tell(all);
  prepare();
}

Project::Project(GrammarFiles of, Grammar made) : files(std::move(of)), grammar(std::move(made)) {
  prepare();
}

void Project::prepare() {
  printer_ = std::make_unique<Session>();  // too large for the stack
  if (!rule_text_.empty()) return;         // the lines are known
  rule_text_ = files.rules;
  if (path_split(files.rules).extension == ".rul") lines_from_text_beside();
}

// Compiled rules know nothing of lines. The text beside them is read once more, without a word, and the two lists are
// walked in step.
void Project::lines_from_text_beside() {
  const PathParts parts = path_split(files.rules);
  // The endings that compiled rules take the place of, ".lxr.txt" being what a source was expanded to.
  for (const char* extension : {".txt", ".lxr.txt", ".rules", ""}) {
    const std::string path = parts.folder + parts.name + extension;
    const File stream(file_open(path, "rb"));
    if (stream == nullptr) continue;
    // The first text that is there is the one; that another would fit would be chance.
    rule_text_ = path;
    Pool pool;
    const auto session = std::make_unique<Session>();
    Rule* text = nullptr;
    RuleNotes notes;
    const bool is_read = parse_rule_file(*session, pool, stream.get(), text, &notes) == core::Status::ok;
    const Rule* rule = loaded().rules.rules;
    for (; is_read && rule != nullptr && text != nullptr; rule = rule->next, text = text->next) {
      // The first difference ends it: lines behind it would be those of other rules.
      if (text_of(*rule) != text_of(*text)) break;
      places_[rule] = {path, text->line, text->column};
    }
    if (is_read && rule == nullptr && text == nullptr) return;
    tell_line(files.rules + ": text and compiled rules differ: " + path +
              " is not what these were made from, so no lines can be told; name the text instead");
    break;
  }
  // Half of the lines would be worse than none.
  rule_text_ = files.rules;
  places_.clear();
}

// Rules of a text know their line there. If that text was expanded from a source, the map says where the line comes from.
RulePlace Project::line_of(const Rule& rule) const {
  if (rule.line == 0) {
    const auto found = places_.find(&rule);
    return found == places_.end() ? RulePlace{.file = rule_text_} : found->second;
  }
  // Empty without a source.
  const MappedPlace source = loaded().source.place(rule.line, 0);
  if (source.file.empty()) return {rule_text_, rule.line, rule.column};
  return {source.file, static_cast<std::uint32_t>(source.line), static_cast<std::uint32_t>(source.column) + 1};
}

std::string Project::place_of(const Rule& rule) const {
  const RulePlace place = line_of(rule);
  return place.line == 0 ? place.file : place.file + ':' + std::to_string(place.line);
}

// A line of a source can stand for many rules, so all are looked at; the nearest lines are noted for the message.
std::vector<const Rule*> Project::rules_at(const std::string& place) const {
  const std::size_t colon = place.rfind(':');
  const std::string file = colon == std::string::npos ? std::string() : place.substr(0, colon);
  const std::string number = colon == std::string::npos ? place : place.substr(colon + 1);
  std::uint32_t line = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), line);
  if (error != std::errc() || end != number.data() + number.size() || line == 0)
    throw Fault(place + ": name a rule by its line, as in \"203\" or \"rules.txt:203\"");
  bool is_known = false;
  std::vector<const Rule*> rules;
  std::uint32_t before = 0;
  std::uint32_t behind = 0;
  for (const Rule& rule : chain<&Rule::next>(loaded().rules.rules)) {
    const RulePlace found = line_of(rule);
    // "rules.txt:12" means "some/folder/rules.txt" too, and a number alone the file that was named.
    if (found.file != file && !found.file.ends_with('/' + file) && !(file.empty() && found.file == rule_text_))
      continue;
    // The file is one of the rules, even if the line is not.
    is_known = true;
    const std::uint32_t at = found.line;
    if (at == line) rules.push_back(&rule);
    if (at < line) before = std::max(before, at);
    if (at > line && (behind == 0 || at < behind)) behind = at;
  }
  if (!rules.empty()) return rules;
  if (!is_known) throw Fault(place + ": the rules are those of " + rule_text_);
  std::string text =
      (file.empty() ? rule_text_ : file) + ':' + std::to_string(line) + ": no rule in force stands there";
  if (before != 0) text += "; the one before it is in line " + std::to_string(before);
  if (behind != 0) text += "; the one behind it is in line " + std::to_string(behind);
  throw Fault(text);
}

// Printed into the output of a session of its own, so that nothing of the grammar is touched.
std::string Project::text_of(const Rule& rule) const {
  rule_print(*printer_, &rule, true);
  std::string text = printer_->output.take();
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

// A number counts for sentences without a label alone: "3" is to mean one sentence, and labels are most often numbers.
bool is_asked_for(const std::string& wanted, const GraphText& sentence) {
  std::string_view label = wanted;
  if (label.starts_with('[') && label.ends_with(']')) label = label.substr(1, label.size() - 2);
  // "S:3" in full, or what stands behind the colon.
  if (label == sentence.label) return true;
  const std::size_t colon = sentence.label.find(':');
  if (colon != std::string::npos && label == std::string_view(sentence.label).substr(colon + 1)) return true;
  const std::string number = std::to_string(sentence.number);
  return label == "#" + number || (sentence.label.empty() && label == number);
}

void for_each_sentence(const RenderOptions& options, const std::function<void(const GraphText&)>& use,
                       const Overlay* unsaved) {
  std::vector<std::string> missing = options.sentences;  // those that no sentence was so far
  GraphText sentence;
  Progress progress(options.inputs);
  for (const std::string& path : options.inputs) {
    sentence.file = path;
    sentence.line = 1;
    const auto text = unsaved != nullptr ? unsaved->find(path) : nullptr;
    // "-" is standard input, and an unsaved text stands for its file.
    const bool is_file = text == nullptr && path != "-";
    const File opened(is_file ? file_open(path, "rb") : nullptr);
    if (is_file && opened == nullptr) throw Fault(path + ": cannot be opened: " + std::strerror(errno));
    std::string_view rest = text != nullptr ? std::string_view(*text) : std::string_view();
    const TextSource source = text != nullptr ? TextSource(rest) : TextSource(is_file ? opened.get() : stdin);
    while (sentence_text_read(source, sentence.text)) {
      if (is_blank(sentence.text)) break;  // what stands behind the last sentence; a file can end so
      // Numbers go on over all inputs.
      ++sentence.number;
      sentence.label = label_of(sentence.text);
      const auto fits = [&sentence](const std::string& wanted) { return is_asked_for(wanted, sentence); };
      const bool is_wanted =
          options.sentences.empty() || std::any_of(options.sentences.begin(), options.sentences.end(), fits);
      // A label counts as found by the first sentence that has it, and all that have it are handed on.
      std::erase_if(missing, fits);
      if (is_wanted) use(sentence);
      // Counted in bytes, since the number of sentences is not known beforehand.
      progress.passed(sentence.text.size());
      sentence.line += std::count(sentence.text.begin(), sentence.text.end(), '\n');
    }
    if (source.has_failed()) throw Fault(path + ": cannot be read to its end: " + std::strerror(errno));
  }
  if (sentence.number == 0) {
    for (const std::string& path : options.inputs)
      tell_line(path + ": holds no sentence: it begins with a line [S] and ends with a line [/S]");
  }
  if (!missing.empty()) {
    throw Fault("no sentence has the label \"" + missing.front() +
                "\": labels stand in the lines [S:LABEL] of the input; #2 is the second, whatever its label");
  }
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
