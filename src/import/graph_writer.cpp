// A graph file has a block for each sentence:
//
//   [S:lpp.3]
//   ; The boy wants to go.
//   a0(want(>01).@entry.@v, boy:01)
//   a1(want(>01), go(>02).@v)
//   [/S]
//
// Attributes stand with a word where it is written first; words of one text have numbers, `boy:01`. A graph of a single
// concept has its word between [W] and [/W].
#include "import/graph_writer.hpp"

#include <algorithm>
#include <deque>
#include <set>
#include <string_view>
#include <vector>

namespace lexon {
namespace {

// Cuts a text to at most `room` bytes, not inside a letter.
void cut_to(std::string& text, std::size_t room) {
  if (text.size() <= room) return;
  while (room > 0 && (static_cast<unsigned char>(text[room]) & 0xC0U) == 0x80U) --room;
  text.resize(room);
}

// True for a word that needs no quotes in a graph file.
bool is_plain(const std::string& text) {
  if (text.empty() || text.front() == ' ' || text.back() == ' ') return false;
  if (text.find_first_of(",():\"\\@") != std::string::npos) return false;
  return text.find_first_of(".;[{<") != 0;
}

// A word as a graph file writes it. In quotes a backslash has no safe form, nor has ".@": they become "/" and ". @".
std::string word_text(const Concept& word) {
  std::string name = word.name;
  for (char& c : name) {
    if (static_cast<unsigned char>(c) < ' ') c = ' ';
  }
  cut_to(name, kMaxWordText);
  if (is_plain(name)) return word.sense.empty() ? name : name + "(>" + word.sense + ')';
  std::string quoted = "\"";
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (name[i] == '"') {
      quoted += "\\\"";
    } else if (name[i] == '\\') {
      quoted += '/';
    } else {
      quoted += name[i];
    }
    if (name[i] == '.' && i + 1 < name.size() && name[i + 1] == '@') quoted += ' ';
  }
  return quoted + '"';
}

// A number as two characters, as a graph file tells two words of one concept apart.
std::string number_code(int number) {
  constexpr const char* kDigits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  return {kDigits[number / 36 % 36], kDigits[number % 36]};
}

// Writes one meaning. What has been chosen is settled on the list of triples as it is written; what is never reached is
// settled by the caller.
class Writer {
 public:
  Writer(Meaning& meaning, const WriterOptions& options, std::ostream& out, RoleCounts& unknown)
      : meaning_(meaning), options_(options), out_(out), unknown_(unknown) {}

  void write() {
    choose();
    number();
    out_ << "[S:" << meaning_.label << "]\n";
    if (!meaning_.text.empty()) out_ << "; " << line_safe(meaning_.text) << '\n';
    bool any = false;
    for (const int led : chosen_) {
      const Arc& one = meaning_.arcs[static_cast<std::size_t>(led)];
      relation(one);
      settle(meaning_, one.triple, Fate::relation, "");
      any = true;
    }
    if (!any) {
      out_ << "[W]\n" << mention(meaning_.root) << "\n[/W]\n";
    }
    out_ << "[/S]\n\n";
    for (std::size_t i = 0; i < meaning_.triples.size(); ++i)
      settle(meaning_, static_cast<int>(i), Fate::left_out, kNoRoad);
    lost_tell();
  }

 private:
  static constexpr const char* kNoRoad = "no road leads there from the word that begins the sentence";
  static constexpr const char* kTooMany = "limits: a sentence has at most 128 relations";

  Meaning& meaning_;
  const WriterOptions& options_;
  std::ostream& out_;
  RoleCounts& unknown_;
  std::vector<int> chosen_;         // the arcs that are written
  std::vector<bool> is_used_;       // the concepts that they touch
  std::vector<std::string> texts_;  // of concepts, with their numbers
  std::vector<bool> is_shown_;      // its attributes have been written

  // The relations of the sentence: all of them, or as many as fit, from the beginning of the sentence outwards.
  void choose() {
    is_used_.assign(meaning_.concepts.size(), false);
    is_used_[static_cast<std::size_t>(meaning_.root)] = true;
    std::vector<std::vector<int>> touching(meaning_.concepts.size());
    for (std::size_t i = 0; i < meaning_.arcs.size(); ++i) {
      const Arc& one = meaning_.arcs[i];
      if (one.gone) continue;
      touching[static_cast<std::size_t>(one.from)].push_back(static_cast<int>(i));
      touching[static_cast<std::size_t>(one.to)].push_back(static_cast<int>(i));
    }
    std::vector<bool> is_taken(meaning_.arcs.size());
    std::deque<int> open{meaning_.root};
    while (!open.empty()) {
      const int at = open.front();
      open.pop_front();
      for (const int led : touching[static_cast<std::size_t>(at)]) {
        const Arc& one = meaning_.arcs[static_cast<std::size_t>(led)];
        if (is_taken[static_cast<std::size_t>(led)]) continue;
        is_taken[static_cast<std::size_t>(led)] = true;
        if (chosen_.size() == kMaxRelations) {
          settle(meaning_, one.triple, Fate::left_out, kTooMany);
          continue;
        }
        chosen_.push_back(led);
        const int far = one.from == at ? one.to : one.from;
        if (!is_used_[static_cast<std::size_t>(far)]) open.push_back(far);
        is_used_[static_cast<std::size_t>(far)] = true;
      }
    }
    // The walk has gone outwards; the file has the order of the source.
    std::sort(chosen_.begin(), chosen_.end());
  }

  // Gives words of one text their numbers, in the order of the concepts. A word that stands alone has none, so that a graph
  // is read as it would be written by hand.
  void number() {
    std::map<std::string, int> counts;
    texts_.resize(meaning_.concepts.size());
    is_shown_.assign(meaning_.concepts.size(), false);
    for (std::size_t i = 0; i < texts_.size(); ++i) {
      if (!is_used_[i]) continue;
      texts_[i] = word_text(meaning_.concepts[i]);
      ++counts[texts_[i]];
      settle(meaning_, meaning_.concepts[i].triple, Fate::word, "");
    }
    std::map<std::string, int> given;
    for (std::size_t i = 0; i < texts_.size(); ++i) {
      if (!is_used_[i] || counts[texts_[i]] < 2) continue;
      texts_[i] += ':' + number_code(++given[texts_[i]]);
    }
  }

  // What a step has put into another word is lost with that word. An arc that is gone tells which one that is.
  void lost_tell() {
    std::vector<std::vector<int>> joined(meaning_.concepts.size());
    for (const Arc& one : meaning_.arcs) {
      const bool is_expressed =
          one.gone && one.triple >= 0 && meaning_.triples[static_cast<std::size_t>(one.triple)].fate != Fate::left_out;
      if (!is_expressed) continue;
      joined[static_cast<std::size_t>(one.from)].push_back(one.to);
      joined[static_cast<std::size_t>(one.to)].push_back(one.from);
    }
    std::vector<int> open;
    for (std::size_t i = 0; i < is_used_.size(); ++i) {
      if (is_used_[i]) open.push_back(static_cast<int>(i));
    }
    std::vector<bool> is_told = is_used_;
    while (!open.empty()) {
      const int at = open.back();
      open.pop_back();
      for (const int next : joined[static_cast<std::size_t>(at)]) {
        if (!is_told[static_cast<std::size_t>(next)]) open.push_back(next);
        is_told[static_cast<std::size_t>(next)] = true;
      }
    }
    std::set<std::string_view> lost;
    for (std::size_t i = 0; i < is_told.size(); ++i) {
      if (!is_told[i]) lost.insert(meaning_.concepts[i].variable);
    }
    for (Triple& triple : meaning_.triples) {
      const bool is_of_step = triple.fate != Fate::left_out && *triple.why != '\0';
      if (!is_of_step || !lost.contains(triple.source)) continue;
      triple.fate = Fate::left_out;
      triple.why = chosen_.size() == kMaxRelations ? kTooMany : kNoRoad;
    }
  }

  // A word with its attributes where it is written first.
  std::string mention(int at) {
    const auto place = static_cast<std::size_t>(at);
    if (is_shown_[place]) return texts_[place];
    is_shown_[place] = true;
    std::string text = texts_[place];
    if (at == meaning_.root) text += ".@entry";
    std::size_t room = kMaxAttributesText;
    for (const std::string& attribute : meaning_.concepts[place].attributes) {
      const bool is_writable = attribute.find_first_of(" \t.,():\"") == std::string::npos;
      if (!is_writable || attribute.size() >= room) continue;
      room -= attribute.size() + 1;
      text += '.' + attribute;
    }
    return text;
  }

  // An inverse role is written with its own label if the table has one, so that rules know a relative clause; else it is
  // turned round.
  void relation(const Arc& one) {
    const std::string& prefix = options_.role_prefix;
    int from = one.from;
    int to = one.to;
    const std::string* label = nullptr;
    if (one.inverse && options_.keep_inverse) label = options_.table->find(prefix + one.role + "-of");
    if (label == nullptr) {
      label = options_.table->find(prefix + one.role);
      if (one.inverse) std::swap(from, to);
    }
    std::string cut;
    // A role that the table only knows with certain values has no label either.
    if (label == nullptr || label->starts_with('@')) {
      ++unknown_[prefix + one.role];
      cut = RoleTable::cut(one.role);
      label = &cut;
    }
    const std::string first = mention(from);
    out_ << *label << '(' << first << ", " << mention(to) << ")\n";
  }
};

}  // namespace

std::string line_safe(std::string text) {
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < ' ' || c == ']') c = ' ';
  }
  cut_to(text, 900);
  return text;
}

void graph_write(Meaning& meaning, const WriterOptions& options, std::ostream& out, RoleCounts& unknown) {
  Writer(meaning, options, out, unknown).write();
}

// `:polarity -` and the like: the triple becomes an attribute of the concept where it is written.
void attributes_apply(Meaning& meaning, const WriterOptions& options) {
  for (Arc& one : meaning.arcs) {
    const Concept& value = meaning.concepts[static_cast<std::size_t>(one.to)];
    if (one.inverse || one.gone || !value.variable.empty()) continue;
    const std::string* attribute = options.table->find(options.role_prefix + one.role + '=' + value.name);
    if (attribute == nullptr) continue;
    attribute_add(meaning.concepts[static_cast<std::size_t>(one.from)], *attribute);
    one.gone = true;
    settle(meaning, one.triple, Fate::attribute, "attributes");
  }
}

}  // namespace lexon
