// Mistakes in rules, words and graphs that no single file shows: names that one asks for and none gives, rules that can
// never fire, and the like. A library without output of its own, for programs that check texts in memory too.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "data/pool.hpp"
#include "source/source_map.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// A text and the name that findings call it by.
struct CheckText {
  std::string file;
  std::string text;
};

class CheckCache;  // word_index.hpp
class Overlay;

struct CheckInput {
  CheckText rules;
  // Where the rules were expanded from; null: from nothing. Findings then lie in the sources.
  const SourceMap* source = nullptr;
  // Words: files that count as one, of entry text or what `lexon-dict build` makes of it. Without any, names that a
  // dictionary may give are not judged.
  std::vector<std::string> words_files{};
  // The co-occurrence dictionary, text or built; empty: none.
  std::string cooccurrence_file{};
  // Graphs. Without any, names that graphs may give are not judged.
  std::vector<CheckText> graphs{};
  int blocks = kMaxBlocks;  // the memory that runs will have, as `lexon --blocks`
  // Texts that stand for the files above and for those of the sources; null: none. Not owned.
  const Overlay* unsaved = nullptr;
  // Where words are kept for the next check; null: nowhere. Not owned, and for one thread at a time.
  CheckCache* cache = nullptr;
};

enum class Level : std::uint8_t {
  error,    // something is lost, or can never work
  warning,  // most likely not as it was meant
  note,     // worth knowing
};

struct Finding {
  std::string file;
  std::int64_t line = 0;       // from 1; 0: it is about no line
  std::size_t column = 0;      // characters, from 1; 0: it is about the whole line
  std::size_t end_column = 0;  // behind the last character; 0 with a column of 0
  Level level = Level::error;
  const char* code = "";  // one of `check_codes()`
  std::string text;       // what is wrong
  std::string remedy;     // how to put it right; may be empty
};

struct CheckCode {
  const char* code;
  const char* text;  // what findings of this code have in common
};

// All codes, in the order of the manual.
[[nodiscard]] std::span<const CheckCode> check_codes();

// All findings, in the order of the files (rules, words, graphs) and of their lines. Throws Fault for a file that
// cannot be read.
[[nodiscard]] std::vector<Finding> check(const CheckInput& input);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
