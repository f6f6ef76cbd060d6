// Options that several commands share.
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>
#include <vector>

#include "api/core.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// -d DICT -r RULES [-c COOCCURRENCE].
void add_grammar_options(CLI::App& command, GrammarFiles& files);

// Which sentences of an input: by label ("S:3", "[S:3]" or "3"), or by number where no label fits; and limits.
struct RenderOptions {
  std::vector<std::string> inputs;
  std::vector<std::string> sentences;  // empty: all
  double seconds = 10;                 // for each sentence; 0: none
  std::int64_t steps = 0;              // for each sentence; 0: none
  bool post_edit = true;
};
void add_render_options(CLI::App& command, RenderOptions& options);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
