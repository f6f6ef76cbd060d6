// The meaning of one sentence as a meaning bank holds it: concepts, arcs between them, and the list of source triples
// with what became of each. Plain data; every step of the import works on one Meaning in place.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lexon {

// A place in a source file; both count from 1.
struct SourcePlace {
  int line = 0;
  int column = 0;
};

// What became of a triple of the source.
enum class Fate { open, relation, attribute, word, left_out };

// One triple as the source states it. `why` is set when its fate is known; it says which step settled it.
struct Triple {
  SourcePlace place;
  std::string source;
  std::string role;
  std::string target;
  Fate fate = Fate::open;
  const char* why = "";
};

// A node of the graph. A constant has no variable.
struct Concept {
  std::string variable;
  std::string name;
  std::string sense;                    // the number of its frame, empty for none
  std::vector<std::string> attributes;  // each begins with "@"
  int triple = -1;                      // the one that states the concept; -1 for what a step has made
  bool is_text = false;                 // a text in quotes
};

// Where an arc begins or ends. Only Rewriter::lead_from and lead_to change it in a finished graph: they keep the chains
// of arcs true, by which all steps find their way.
class ArcEnd {
 public:
  ArcEnd() = default;
  explicit ArcEnd(int at) : at_(at) {}
  ArcEnd(const ArcEnd&) = default;
  ArcEnd& operator=(const ArcEnd&) = delete;
  operator int() const { return at_; }
  // For who reads a graph, as long as nobody has asked for its chains.
  void read(int at) { at_ = at; }

 private:
  friend class Rewriter;
  int at_ = 0;
};

// A role between two concepts, written at `from` in the source. With `inverse` the role is that of `from` to `to`:
// (boy :ARG0-of want) has from boy, to want, role ARG0.
struct Arc {
  ArcEnd from;
  ArcEnd to;
  std::string role;  // without the colon and without "-of"
  bool inverse = false;
  int triple = -1;
  bool gone = false;  // expressed in another way or left out
};

// For each concept the arcs that touch it with one of their ends, in the order of the source: chains through all arcs of a
// graph, which cost no memory of their own for each concept. Arcs that are gone keep their place in them.
struct ArcChains {
  std::vector<int> first;  // of a concept; -1 for none
  std::vector<int> last;
  std::vector<int> next;  // behind an arc
};

struct Meaning {
  std::string label;  // of the sentence
  std::string text;   // the reference, empty for none
  SourcePlace place;
  int root = -1;
  std::vector<Concept> concepts;
  std::vector<Arc> arcs;  // in the order of the source
  std::vector<Triple> triples;
  ArcChains leaving;   // by `from`; made and kept by Rewriter
  ArcChains arriving;  // by `to`
  // Of a file in which people speak in their own words, so far: what a sentence says somebody said is then direct speech.
  bool is_dialogue = false;
  int reports = 0;     // how many clauses this sentence says somebody said
  int quotations = 0;  // how many of them have a form that only direct speech has
};

// A mistake in a source; the reader goes on behind it.
struct SourceError {
  SourcePlace place;
  std::string text;
};

// What some editors write in front of a UTF-8 file; it belongs to no line.
inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// As ==. Most texts of one length differ in their last letter, so that hardly any is compared as a whole.
inline bool is_same(std::string_view one, std::string_view other) {
  return one.size() == other.size() && (one.empty() || (one.back() == other.back() && one == other));
}

inline bool has_attribute(const Concept& word, std::string_view attribute) {
  for (const std::string& one : word.attributes) {
    if (is_same(one, attribute)) return true;
  }
  return false;
}
// Adds it unless it is there.
void attribute_add(Concept& word, std::string_view attribute);
// Settles the fate of a triple that is still open; -1 is no triple.
void settle(Meaning& meaning, int triple, Fate fate, const char* why);

}  // namespace lexon
