// Letter changes: what becomes of the letters of a stem and its endings where they meet.
//
//   letters V a e i o u                      a name for a set of letters
//   pass                                     the changes below go through the word together, after those above
//   change FROM -> TO                        everywhere
//   change FROM -> TO / LEFT _ RIGHT         where LEFT stands before and RIGHT behind
//
// A pass goes through the word from left to right. At each place its changes are tried in their order, and the first that
// fits is carried out. LEFT looks at what the pass has written, RIGHT at what is still to come.
//
// FROM and TO are letters without blanks between them, or sets in parentheses of which the first letter becomes the
// first, and so on; "0" is nothing. A context is a row of letters, sets in parentheses and names of sets, each with "?" or
// "*" behind it if need be; "#" is the edge of the word. "+" is the boundary in front of an ending: a context that does
// not name it looks through it. Boundaries are taken out at the end.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace lexon {

using Letters = std::u32string;

[[nodiscard]] Letters letters_of(std::string_view text);
void letters_append(std::u32string_view letters, std::string& text);

class LetterChanges {
 public:
  // Reads a line of those above. Empty, or what is wrong with it.
  [[nodiscard]] std::string read(std::string_view line);

  // Makes the word of a stem with endings, boundaries between them.
  void apply(Letters& word) const;

 private:
  struct Element {
    Letters set;  // sorted; a single letter is a set of one
    bool is_edge = false;
    bool may_miss = false;
    bool may_repeat = false;
  };
  struct Context {
    std::vector<Element> elements;  // from the place outwards
    bool names_boundary = false;
  };
  struct Change {
    std::vector<Letters> from;  // in parallel with `to`
    std::vector<Letters> to;
    Context left;
    Context right;
  };

  [[nodiscard]] std::string read_change(std::string_view text);
  [[nodiscard]] std::string read_context(std::string_view text, bool is_left, Context& context) const;
  [[nodiscard]] std::string read_letters(std::string_view text, std::vector<Letters>& letters) const;
  [[nodiscard]] static bool fits(const Context& context, std::size_t element, std::u32string_view text, bool is_left);

  std::map<std::string, Letters, std::less<>> sets_;
  struct Pass {
    std::vector<Change> changes;
    Letters begins;  // the letters that changes begin with, sorted; most letters of a word are none
    bool inserts = false;
  };
  std::vector<Pass> passes_;
};

}  // namespace lexon
