// From files of a meaning bank or a treebank to graphs: reading, rewriting, writing, and the account of what became of
// every triple.
#pragma once

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "import/graph_writer.hpp"
#include "import/roles.hpp"

namespace lexon {

enum class SourceFormat { penman, conllu };

struct ImportOptions {
  SourceFormat format = SourceFormat::penman;
  RoleTable table;
  std::set<std::string> left_steps;  // names of steps that are not taken
  bool enhanced = false;             // CoNLL-U: the arcs of the column DEPS
};

// Attributes that a table beside the file gives: sentence label, node, attributes.
class AttributeTable {
 public:
  // Adds the lines `label node @pl @past`, with blanks or tabs between them.
  std::vector<SourceError> read(std::istream& in);
  // Adds what the table says to a sentence; what names no node of it is an error.
  void apply(Meaning& meaning, std::vector<SourceError>& errors);
  // The labels that no sentence has had.
  std::vector<std::string> unused() const;

 private:
  struct Line {
    int number;
    std::string node;
    std::vector<std::string> attributes;
  };
  struct Lines {
    std::vector<Line> lines;
    bool is_used = false;
  };
  std::map<std::string, Lines> sentences_;
};

// Where the parts of the result go; null: nowhere.
struct ImportOutputs {
  std::ostream* graphs = nullptr;
  std::ostream* gold = nullptr;      // the label of each sentence, and its reference below
  std::ostream* left_out = nullptr;  // label, place, triple, reason, with tabs between them
  std::ostream* messages = nullptr;  // errors: file:line:col: error: text
};

struct ImportFigures {
  std::size_t graphs = 0;        // that were written
  std::size_t placeholders = 0;  // umr-empty: the source has no graph of the sentence, and none is written
  std::size_t errors = 0;
  std::size_t triples = 0;
  std::size_t relations = 0;
  std::size_t attributes = 0;
  std::size_t words = 0;
  std::size_t left_out = 0;
  std::map<std::string, std::size_t> reasons;  // of what was left out
  RoleCounts unknown;
};

// Reads one source to its end. `name` stands in messages and, for sentences without a label, in their labels.
void import_stream(std::istream& in, const std::string& name, const ImportOptions& options, AttributeTable& attributes,
                   const ImportOutputs& outputs, ImportFigures& figures);

}  // namespace lexon
