#include "data/state.hpp"

#include "data/output.hpp"

namespace lexon {

constinit EngineState state{};
constinit std::atomic<bool> stop_requested{false};

namespace {
constinit Node gone{};
}  // namespace

bool stack_nearly_used() {
  const auto* here = static_cast<const char*>(__builtin_frame_address(0));
  const bool used = state.stack_limit != nullptr && here < state.stack_limit;
  if (used) state.abort = Status::memory;
  return used;
}

Status rule_base_failure(const char* what) {
  if (state.abort == Status::ok) out_print(";;the rule base has failed: %s\n", what);
  state.abort = Status::rule_base;
  return Status::rule_base;
}

Node* gone_node() {
  return &gone;
}

bool trace_indent_grow() {
  if (state.trace_depth == sizeof state.trace_indent - 1) return false;
  state.trace_indent[state.trace_depth++] = '\t';
  state.trace_indent[state.trace_depth] = '\0';
  return true;
}

void trace_indent_shrink() {
  if (state.trace_depth != 0) state.trace_indent[--state.trace_depth] = '\0';
}

}  // namespace lexon
