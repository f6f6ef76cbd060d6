#include "lab/project.hpp"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <utility>

#include "front/process.hpp"
#include "lab/commands.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// The label that opens the sentence: "S:3" of "[S:3]"; empty if it has none.
std::string label_of(std::string_view text) {
  BlockTag tag;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    const LineKind kind = line_kind(line, tag);
    if (kind == LineKind::sentence_start) {
      const std::size_t close = line.find(']');
      return std::string(line.substr(1, close == std::string_view::npos ? close : close - 1));
    }
    if (kind == LineKind::block_tag) block_tag_change(tag, line);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return {};
}

bool is_asked_for(const std::string& wanted, const GraphText& sentence) {
  std::string_view label = wanted;
  if (label.starts_with('[') && label.ends_with(']')) label = label.substr(1, label.size() - 2);
  if (label == sentence.label) return true;
  const std::size_t colon = sentence.label.find(':');
  if (colon != std::string::npos && label == std::string_view(sentence.label).substr(colon + 1)) return true;
  return sentence.label.empty() && label == std::to_string(sentence.number);
}

bool is_blank(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isspace(c) != 0; });
}

}  // namespace

Project::Project(GrammarFiles of) : files(std::move(of)), grammar(Grammar::load(files)) {
  std::string all;
  for (const Message& message : grammar.messages()) all += to_string(message) + '\n';
  if (!grammar) throw Fault(all + "the grammar cannot be used");
  tell(all);
}

std::string Project::place_of(const Rule& rule) const {
  if (rule.line == 0) return files.rules;
  const MappedPlace source = loaded().source.place(rule.line, 0);
  return source.file.empty() ? files.rules + ':' + std::to_string(rule.line)
                             : source.file + ':' + std::to_string(source.line);
}

void for_each_sentence(const RenderOptions& options, const std::function<void(const GraphText&)>& use) {
  std::vector<std::string> missing = options.sentences;
  GraphText sentence;
  for (const std::string& path : options.inputs) {
    sentence.file = path;
    sentence.line = 1;
    const File opened(path == "-" ? nullptr : file_open(path, "rb"));
    if (path != "-" && opened == nullptr) throw Fault(path + ": cannot be opened: " + std::strerror(errno));
    const TextSource source(path == "-" ? stdin : opened.get());
    while (sentence_text_read(source, sentence.text)) {
      if (is_blank(sentence.text)) break;
      ++sentence.number;
      sentence.label = label_of(sentence.text);
      const auto fits = [&sentence](const std::string& wanted) { return is_asked_for(wanted, sentence); };
      const bool is_wanted =
          options.sentences.empty() || std::any_of(options.sentences.begin(), options.sentences.end(), fits);
      std::erase_if(missing, fits);
      if (is_wanted) use(sentence);
      sentence.line += std::count(sentence.text.begin(), sentence.text.end(), '\n');
    }
    if (source.has_failed()) throw Fault(path + ": cannot be read to its end: " + std::strerror(errno));
  }
  if (!missing.empty()) {
    throw Fault("no sentence has the label \"" + missing.front() +
                "\": labels stand in the lines [S:LABEL] of the input");
  }
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
