// The state of the engine's step.
#pragma once

#include <cstdint>

#include "data/records.hpp"
#include "data/status.hpp"

namespace lexon {

class PlaceWatch;

struct EngineState {
  Status engine_status;      // of the parser, the reader, generation and post-edit, and of an index; no caller reads it
  std::int32_t semlst_cur;   // index of the scope being generated
  std::int8_t trace_level;   // 0 to 4 in use
  std::uint8_t trace_depth;  // scopes entered and not left
  char trace_indent[256];    // one tab for each
  Node* forced_node;         // target of a forced backtracking, or null; survives the sentence
  const Node* turned;        // the list of this node shows the attributes of `turned_scope` in front; null: unknown
  int turned_scope;
  PlaceWatch* watches;      // innermost first; see data/nodes.hpp
  std::int64_t steps;       // passes of the search since the session began
  std::int64_t undone;      // steps that were taken back since then
  Status abort;             // ok, or what every loop returns at once: a failure of the rule base, or of the stack
  const char* stack_limit;  // the worker's stack must not grow below this; null: not guarded
};

}  // namespace lexon
