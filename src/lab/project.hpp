// Grammar and input as the commands of the workbench want them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "api/inside.hpp"
#include "lab/options.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// The rules of a text are read as text even where compiled files stand beside it, since these do not tell lines. No
// file is written.
struct Project {
  GrammarFiles files;
  Grammar grammar;

  // Throws Fault when it is not usable; tells the messages on standard error otherwise.
  explicit Project(GrammarFiles of);
  [[nodiscard]] const LoadedGrammar& loaded() const { return *Inside::loaded(grammar); }
  // "rules.txt:12", for a rule of this grammar; without a line for one from a compiled file.
  [[nodiscard]] std::string place_of(const Rule& rule) const;
};

// One sentence of an input, as it stands there.
struct GraphText {
  std::string file;
  std::int64_t line = 0;    // its first, from 1
  std::int64_t number = 0;  // from 1, over all inputs
  std::string label;        // "[S:3]" without brackets; may be empty
  std::string text;
};

// Reads the inputs sentence by sentence, whatever their size, and hands on those that are asked for. Throws Fault for a
// file that cannot be read, and for a sentence that was asked for and is in none.
void for_each_sentence(const RenderOptions& options, const std::function<void(const GraphText&)>& use);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
