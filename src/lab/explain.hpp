// One sentence explained: for the command and for the shell.
#pragma once

#include <iosfwd>
#include <string>

#include "lab/bench.hpp"
#include "lab/derivation.hpp"
#include "lab/project.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

struct ExplainOptions {
  std::string word;  // not empty: the rules that touched it instead of all steps
  bool all = false;  // what was taken back too
};

// False if the sentence came to nothing.
bool explain_sentence(std::ostream& out, const Project& project, Bench& bench, const GraphText& graph,
                      const RenderOptions& limits, const ExplainOptions& options);

// The dictionary's entries with this surface form or concept word, one a line as `lexon-dict list` writes them.
[[nodiscard]] std::vector<std::string> words_found(const Project& project, const std::string& word);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
