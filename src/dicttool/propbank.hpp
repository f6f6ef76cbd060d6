// Frame files of PropBank: what each sense of a word is called as a verb, noun and adjective, and how a sentence is
// built around it, by the descriptions of its roles and its examples.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace lexon {

// One name of a sense.
struct FrameName {
  std::string form;  // with spaces between its words
  const char* part;  // "verb", "noun" or "adj"
};

struct FrameSense {
  std::string lemma;   // as the file has it, with "-" for "_": give-up
  std::string number;  // of the sense, two digits: 07
  std::vector<FrameName> names;
  // What `lexon-dict import` looks up in its table, with ";" in front of each: ";arg1.subject", ";arg2.to",
  // ";arg2.object" (a plain noun), ";arg1.infinitive", ";arg1.gerund", ";arg1.clause",
  // ";light.make" (the verb in front of the noun: "make a mistake").
  std::string features;
};

// The verbs of a language in their basic form, as the names of the frame files tell them.
using VerbSet = std::set<std::string, std::less<>>;

// What is wrong with a file; `line` is 0 for none.
struct FrameFault {
  std::int64_t line = 0;
  std::string text;
};

// Reads the text of one file and hands each sense to `sink`, in order. `verbs` tells infinitives from
// noun phrases behind "to". A text that is not well-formed gives no sense.
[[nodiscard]] FrameFault frames_read(std::string_view text, const VerbSet& verbs,
                                     const std::function<void(const FrameSense&)>& sink);

}  // namespace lexon
