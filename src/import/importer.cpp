// One meaning at a time runs through all of it: read, attributes of roles, attributes of the user, the steps, written,
// accounted for. Nothing of it is kept, so memory does not grow with the source.
#include "import/importer.hpp"

#include <sstream>
#include <string_view>

#include "import/conllu.hpp"
#include "import/penman.hpp"
#include "import/steps.hpp"

namespace lexon {
namespace {

// The name that labels begin with where the source gives none: without folder and extension.
std::string base_name(const std::string& path) {
  const std::size_t slash = path.find_last_of("/\\");
  std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  const std::size_t dot = name.rfind('.');
  if (dot != std::string::npos && dot > 0) name.resize(dot);
  return name;
}

// A step without procedure belongs to the writer, which asks for its name itself.
void rewrite(Meaning& meaning, const ImportOptions& options) {
  for (const RewriteStep& step : rewrite_steps()) {
    if (step.run != nullptr && !options.left_steps.contains(step.name)) step.run(meaning);
  }
}

// A text between tabs: those that it has itself, and what else would end a line, become blanks.
std::string column_safe(std::string text) {
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < ' ') c = ' ';
  }
  return text;
}

// Adds the fates of a sentence's triples to the figures and writes those that were left out: label, place, triple, reason.
void account(const Meaning& meaning, const std::string& file, const ImportOutputs& outputs, ImportFigures& figures) {
  for (const Triple& triple : meaning.triples) {
    ++figures.triples;
    figures.relations += triple.fate == Fate::relation;
    figures.attributes += triple.fate == Fate::attribute;
    figures.words += triple.fate == Fate::word;
    if (triple.fate != Fate::left_out) continue;
    ++figures.left_out;
    ++figures.reasons[triple.why];
    if (outputs.left_out == nullptr) continue;
    *outputs.left_out << meaning.label << '\t' << file << ':' << triple.place.line << ':' << triple.place.column << '\t'
                      << column_safe(triple.source + ' ' + triple.role + ' ' + triple.target) << '\t' << triple.why
                      << '\n';
  }
}

// Does a graph stand there only to say that there is none? Banks that leave a sentence out keep its number so.
bool is_placeholder(const Meaning& meaning) {
  const std::string& name = meaning.concepts[static_cast<std::size_t>(meaning.root)].name;
  return meaning.arcs.empty() && (name == "umr-empty" || name == "amr-empty");
}

}  // namespace

// A line with a mistake is left out whole: half of what the user knows of a word would be a third guess.
std::vector<SourceError> AttributeTable::read(std::istream& in) {
  std::vector<SourceError> errors;
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (line.empty() || line[0] == '#' || line == "\r") continue;
    std::istringstream fields(line);
    std::string label;
    Line read{number, "", {}};
    fields >> label >> read.node;
    std::string fault;
    for (std::string attribute; fields >> attribute;) {
      if (attribute[0] != '@' || attribute.find_first_of(".,():\"") != std::string::npos) fault = attribute;
      read.attributes.push_back(attribute);
    }
    if (read.attributes.empty()) {
      errors.push_back({{number, 1}, "a line is the label of a sentence, a node and its attributes: lpp.3 b2 @pl"});
    } else if (!fault.empty()) {
      errors.push_back(
          {{number, 1}, "\"" + fault + "\" is no attribute: it begins with @ and has none of . , ( ) : \""});
    } else {
      sentences_[label].lines.push_back(std::move(read));
    }
  }
  return errors;
}

// A node that the sentence lacks is told at the place of the sentence, as nobody can know which file has the mistake.
void AttributeTable::apply(Meaning& meaning, std::vector<SourceError>& errors) {
  const auto found = sentences_.find(meaning.label);
  if (found == sentences_.end()) return;
  found->second.is_used = true;
  for (const Line& line : found->second.lines) {
    bool is_known = false;
    for (Concept& word : meaning.concepts) {
      if (word.variable != line.node) continue;
      is_known = true;
      for (const std::string& attribute : line.attributes) attribute_add(word, attribute);
    }
    if (!is_known) {
      errors.push_back({meaning.place, "the table of attributes names the node " + line.node + " (line " +
                                           std::to_string(line.number) + "), which " + meaning.label + " lacks"});
    }
  }
}

// A label that no sentence has is most often one of another file, or one that was renamed.
std::vector<std::string> AttributeTable::unused() const {
  std::vector<std::string> labels;
  for (const auto& [label, lines] : sentences_) {
    if (!lines.is_used) labels.push_back(label);
  }
  return labels;
}

void import_stream(std::istream& in, const std::string& name, const ImportOptions& options, AttributeTable& attributes,
                   const ImportOutputs& outputs, ImportFigures& figures) {
  const bool is_penman = options.format == SourceFormat::penman;
  // The dependencies of a tree have no colon and no inverse, and no step is made for them.
  const WriterOptions writing{&options.table, is_penman ? ":" : "", !options.left_steps.contains(kRelativesStep)};
  int reports = 0;
  int quotations = 0;
  const MeaningSink sink = [&](Meaning& meaning, const std::vector<SourceError>& read_errors) {
    // A quarter of what people say in this file has a form that only their own words have: a story, and no report.
    meaning.is_dialogue = reports >= 3 && 4 * quotations >= reports;
    // One label for all outputs, or a graph and its reference would not find each other.
    meaning.label = line_safe(std::move(meaning.label));
    std::vector<SourceError> errors = read_errors;
    if (meaning.root >= 0 && is_penman && is_placeholder(meaning)) {
      ++figures.placeholders;
    } else if (meaning.root >= 0) {
      // The user's attributes come before the steps, which mind them: a tense that is known is not guessed.
      attributes_apply(meaning, writing);
      attributes.apply(meaning, errors);
      if (is_penman) rewrite(meaning, options);
      reports += meaning.reports;
      quotations += meaning.quotations;
      graph_write(meaning, writing, *outputs.graphs, figures.unknown);
      if (outputs.gold != nullptr && !meaning.text.empty()) {
        // As `lexon-lab test` reads it: what would be a label or a comment gets a sign in front.
        const bool is_plain = std::string_view("[;\\").find(meaning.text[0]) == std::string_view::npos;
        *outputs.gold << "[S:" << meaning.label << "]\n" << (is_plain ? "" : "\\") << meaning.text << "\n\n";
      }
      account(meaning, name, outputs, figures);
      ++figures.graphs;
    }
    figures.errors += errors.size();
    for (const SourceError& error : errors) {
      *outputs.messages << name << ':' << error.place.line << ':' << error.place.column << ": error: " << error.text
                        << '\n';
    }
  };
  if (is_penman) {
    penman_read(in, base_name(name), sink);
  } else {
    conllu_read(in, base_name(name), options.table, options.enhanced, sink);
  }
}

}  // namespace lexon
