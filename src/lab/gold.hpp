// Files of expected sentences, and how two sentences differ.
//
// Two forms. Plain: a line a sentence, in the order of the graphs; several texts that will do stand side by side with
// tabs between. By label: the line "[S:3]" of the graph, and below it each text that will do on a line of its own; none
// there: the sentence is expected to fail. Lines that begin with ";" and empty ones are passed over, so that what
// `lexon` writes is such a file; "\" in front of a text takes away what its first character means.
#pragma once

#include <string>
#include <string_view>
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
  bool has_last_line_end_ = true;
  std::vector<std::string> lines_;
  std::vector<std::string> inserted_;  // by line of `lines_`: what stands behind it now, with line ends
  std::vector<Expected> sentences_;
  std::vector<bool> is_used_;
  std::size_t at_ = 0;
  std::size_t last_line_ = 0;  // behind which a new sentence stands
};

// The words of both, those of one alone marked: [-old-] {+new+}; in colours too, if wanted.
[[nodiscard]] std::string word_diff(std::string_view before, std::string_view now, bool in_colours);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
