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

// Renders the sentence and writes what stands of its search, or what `options` asks for, to `out`. False if the sentence
// came to nothing; then it also writes how far the search came and what took it back.
bool explain_sentence(std::ostream& out, const Project& project, Bench& bench, const GraphText& graph,
                      const RenderOptions& limits, const ExplainOptions& options);

// The dictionary's entries with this surface form or concept word, one a line as `lexon-dict list` writes them. Throws
// Fault for a dictionary that cannot be read.
[[nodiscard]] std::vector<std::string> words_found(const Project& project, const std::string& word);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
