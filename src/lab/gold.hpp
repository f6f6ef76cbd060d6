// Files of expected sentences, and how two sentences differ.
//
// Two forms. Plain: a line a sentence, in the order of the graphs; several texts that will do stand side by side with
// tabs between. By label: the line "[S:3]" of the graph, and below it each text that will do on a line of its own; none
// there: the sentence is expected to fail. Lines there that begin with ";" and empty ones are passed over, so that what
// `lexon` writes is such a file; "\" in front of a text takes away what its first character means. A file with one label
// is by label; in a plain one every line is a sentence, empty ones too. Line ends may be CR LF, and a byte order mark may
// stand in front.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace lexon {
inline namespace v1 {
namespace lab {

struct Expected {
  std::string label;               // without brackets; empty in the plain form
  std::vector<std::string> texts;  // any of these will do; empty: the sentence fails
  std::size_t first_line = 0;      // of `Gold::lines`, where the texts stand
  std::size_t line_count = 0;
};

class Gold {
 public:
  explicit Gold(std::string_view text);

  [[nodiscard]] bool is_by_label() const { return is_by_label_; }
  [[nodiscard]] const std::vector<Expected>& sentences() const { return sentences_; }
  // What is expected of the sentence; null: nothing is. Sentences are asked for in order: of a label that stands twice
  // the second comes the second time.
  [[nodiscard]] const Expected* next(std::string_view label);
  // Those that were not asked for.
  [[nodiscard]] std::vector<const Expected*> rest() const;

  // Enters what was found: in the place of a text that stood alone, in front of several. Null: a new sentence, behind
  // the one that `next` gave last.
  void update(const Expected* expected, std::string_view label, std::string_view found);
  // The file with what was updated.
  [[nodiscard]] std::string text() const;

 private:
  bool is_by_label_ = false;
  bool has_mark_ = false;           // of UTF-8, in front
  bool has_last_line_end_ = true;   // the last line is closed
  std::string line_end_ = "\n";     // of the first line, for those that `text` writes
  std::vector<std::string> lines_;  // without their ends
  // What stands in front of each of `lines_` now, line by line, and behind the last.
  std::vector<std::vector<std::string>> inserted_;
  std::vector<Expected> sentences_;
  std::vector<bool> is_used_;  // `next` has given the sentence
  // By label: the sentences that have it, the next one to be given in front.
  std::unordered_map<std::string, std::deque<std::size_t>> by_label_;
  std::size_t at_ = 0;         // the next sentence of the plain form
  std::size_t last_line_ = 0;  // a new sentence stands in front of this line
};

// A text as a line below a label.
[[nodiscard]] std::string gold_line(std::string_view text);

// The words of both, those of one alone marked: [-old-] {+new+}; in colours too, if wanted.
[[nodiscard]] std::string word_diff(std::string_view before, std::string_view now, bool in_colours);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
