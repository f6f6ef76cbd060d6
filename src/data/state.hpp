// The state of the engine's step, and the one output stream.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdio>

#include "data/records.hpp"
#include "data/status.hpp"

namespace lexon {

class PlaceWatch;

// Touched by the worker alone while a step runs; the driver sets `output` and `trace_level` before the first step.
struct EngineState {
  std::FILE* output;         // sentences, banners, messages and trace; never null in a run
  Status engine_status;      // of the parser, the reader, generation and post-edit, and of an index; no caller reads it
  std::int32_t semlst_cur;   // index of the scope being generated
  std::int8_t trace_level;   // 0 to 4 in use
  std::uint8_t trace_depth;  // scopes entered and not left
  char trace_indent[256];    // one tab for each
  Node* forced_node;         // target of a forced backtracking, or null; survives the sentence
  PlaceWatch* watches;       // innermost first; see data/nodes.hpp
  bool line_is_open;         // the text that was printed last has not ended its line
  Status abort;              // ok, or what every loop returns at once: a failure of the rule base, or of the stack
  const char* stack_limit;   // the worker's stack must not grow below this; null: not guarded
};

extern EngineState state;

// Set by any thread to ask the worker to stop; every loop that can run long looks at it.
extern std::atomic<bool> stop_requested;

// What a loop must return at once: `stopped`, a failure of the rule base, or exhausted stack; ok to go on.
[[nodiscard]] inline Status must_leave() {
  return stop_requested.load(std::memory_order_relaxed) ? Status::stopped : state.abort;
}

// Is the worker's stack nearly used up? Then the sentence is lost: `abort` becomes `memory`.
[[nodiscard]] bool stack_nearly_used();

// Ends the sentence as a failure of the rule base. Prints ";;" and what the rule base did, at the first call in a
// sentence. Always returns `Status::rule_base`.
Status rule_base_failure(const char* what);

// Equals no node that stands in any list: what `forced_node` becomes when its target is gone.
[[nodiscard]] Node* gone_node();

// Enters and leaves a scope in the trace: depth and indent. Depth beyond 255 is a failure: false, nothing changes.
[[nodiscard]] bool trace_indent_grow();
void trace_indent_shrink();

}  // namespace lexon
