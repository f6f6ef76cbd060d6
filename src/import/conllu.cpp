// A sentence is a block of lines that ends with an empty one:
//
//   # sent_id = w1                    comments; `text` becomes the reference
//   1  dogs  dog  NOUN  _  Number=Plur  2  nsubj  2:nsubj  _
//
// Each word becomes a concept, each dependency an arc from the head to it. A head may stand behind its dependent, so arcs
// are made at the end of the block.
#include "import/conllu.hpp"

#include <map>

namespace lexon {
namespace {

// The columns in their order; a "_" stands for an empty one.
enum Column { kId, kForm, kLemma, kUpos, kXpos, kFeats, kHead, kDeprel, kDeps, kMisc };

// What stands between the marks; empty parts count.
std::vector<std::string> parts_of(const std::string& text, char mark) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == mark) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

// Collects the lines of one sentence and hands it on at its end. A word that cannot be read is told and left out; its
// dependents then have a head that is no word of the sentence, which is told at their lines.
class Sentences {
 public:
  Sentences(const std::string& name, const RoleTable& table, bool enhanced, const MeaningSink& sink)
      : name_(name), table_(table), enhanced_(enhanced), sink_(sink) {}

  void line(std::string text, int number) {
    if (!text.empty() && text.back() == '\r') text.pop_back();
    if (text.empty()) return end();
    if (text[0] == '#') return comment(text);
    const std::vector<std::string> fields = parts_of(text, '\t');
    if (fields.size() != 10) {
      errors_.push_back({{number, 1},
                         "a word has 10 columns with tabs between them, this line has " +
                             std::to_string(fields.size()) + "; it is left out"});
      return;
    }
    if (fields[kId].find('-') != std::string::npos) return;  // the span of a written word; its parts follow
    if (!enhanced_ && fields[kId].find('.') != std::string::npos) return;  // an empty node of the enhanced graph
    // A word has a lemma, a dependency and a few features: so it stays below the most triples of a graph.
    if (places_.size() >= kMaxTriples / 4) {
      errors_.push_back(
          {{number, 1},
           "the sentence has more than " + std::to_string(kMaxTriples / 4) + " words; this one is left out"});
      return;
    }
    add(fields, number);
  }

  void end() {
    if (rows_.empty() && errors_.empty()) return;
    ++count_;
    if (next_.label.empty()) next_.label = name_ + "." + std::to_string(count_);
    for (std::size_t i = 0; i < rows_.size(); ++i) connect(i);
    if (next_.root < 0 && !rows_.empty()) {
      errors_.push_back({{places_[0], 1}, "no word has the head 0; the first one begins the sentence"});
      next_.root = 0;
    }
    sink_(next_, errors_);
    next_ = {};
    rows_.clear();
    places_.clear();
    ids_.clear();
    errors_.clear();
  }

 private:
  std::string name_;
  const RoleTable& table_;
  bool enhanced_;
  const MeaningSink& sink_;
  int count_ = 0;
  Meaning next_;
  std::vector<std::vector<std::string>> rows_;  // the fields of each word; its concept has the same number
  std::vector<int> places_;                     // its line
  std::map<std::string, int> ids_;  // its number by what the first column calls it: 3, or 3.1 for an empty node
  std::vector<SourceError> errors_;

  // "# sent_id = w1" and "# text = ..."; all other comments are for people.
  void comment(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) return;
    const std::size_t value = text.find_first_not_of(" \t", equals + 1);
    if (value == std::string::npos) return;
    if (text.find("sent_id") == 2) next_.label = text.substr(value);
    if (text.find("text ") == 2) next_.text = text.substr(value);
  }

  int triple_add(int line, const std::string& source, std::string role, std::string target) {
    next_.triples.push_back({{line, 1}, source, std::move(role), std::move(target)});
    return static_cast<int>(next_.triples.size()) - 1;
  }

  // A category or feature that the table knows becomes an attribute; the others are listed as left out.
  void feature(Concept& word, const std::string& id, const std::string& feature, int line) {
    const int triple = triple_add(line, id, ":feature", feature);
    if (const std::string* attribute = table_.find(feature)) {
      attribute_add(word, *attribute);
      settle(next_, triple, Fate::attribute, "features");
    } else {
      settle(next_, triple, Fate::left_out, "features: the table has no line for it");
    }
  }

  // A word that stands twice is told, and its second one cannot be a head, as the first has the number.
  void add(const std::vector<std::string>& fields, int number) {
    Concept word;
    word.variable = fields[kId];
    word.name = fields[kLemma] == "_" ? fields[kForm] : fields[kLemma];
    word.triple = triple_add(number, fields[kId], ":lemma", word.name);
    if (fields[kUpos] != "_") feature(word, fields[kId], "UPOS=" + fields[kUpos], number);
    if (fields[kFeats] != "_") {
      for (const std::string& one : parts_of(fields[kFeats], '|')) feature(word, fields[kId], one, number);
    }
    if (!ids_.emplace(fields[kId], static_cast<int>(rows_.size())).second) {
      errors_.push_back({{number, 1}, "the sentence has two words " + fields[kId]});
    }
    if (rows_.empty()) next_.place = {number, 1};
    next_.concepts.push_back(std::move(word));
    rows_.push_back(fields);
    places_.push_back(number);
  }

  // The basic dependency, or all enhanced ones: "2:nsubj|4:conj:and".
  void connect(std::size_t at) {
    const std::vector<std::string>& row = rows_[at];
    if (enhanced_ && row[kDeps] != "_") {
      for (const std::string& one : parts_of(row[kDeps], '|')) {
        const std::size_t colon = one.find(':');
        if (colon != std::string::npos) {
          depend(at, one.substr(0, colon), one.substr(colon + 1));
        } else {
          errors_.push_back({{places_[at], 1},
                             "an enhanced dependency is a head, a colon and a relation; \"" + one + "\" is left out"});
        }
      }
    } else {
      depend(at, row[kHead], row[kDeprel]);
    }
  }

  // The head "0" is that of the word that begins the sentence.
  void depend(std::size_t at, const std::string& head, const std::string& relation) {
    const int self = static_cast<int>(at);
    if (head == "0") {
      next_.root = self;
      return;
    }
    const auto known = ids_.find(head);
    if (known == ids_.end()) {
      errors_.push_back(
          {{places_[at], 1}, "the head " + head + " of " + rows_[at][kForm] + " is no word of the sentence"});
      return;
    }
    if (known->second == self) {
      errors_.push_back({{places_[at], 1}, rows_[at][kForm] + " is its own head; this dependency is left out"});
      return;
    }
    Arc arc;
    arc.from.read(known->second);
    arc.to.read(self);
    arc.role = relation;
    // An enhanced relation carries its preposition, nmod:of, as a subtype; the table may know the first part alone.
    while (table_.find(arc.role) == nullptr && arc.role.find(':') != std::string::npos) {
      arc.role.resize(arc.role.rfind(':'));
    }
    arc.triple = triple_add(places_[at], head, relation, row_id(at));
    next_.arcs.push_back(std::move(arc));
  }

  const std::string& row_id(std::size_t at) const { return rows_[at][kId]; }
};

}  // namespace

void conllu_read(std::istream& in, const std::string& name, const RoleTable& table, bool enhanced,
                 const MeaningSink& sink) {
  Sentences sentences(name, table, enhanced, sink);
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (number == 1 && line.starts_with(kByteOrderMark)) line.erase(0, kByteOrderMark.size());
    sentences.line(std::move(line), number);
  }
  sentences.end();
}

}  // namespace lexon
