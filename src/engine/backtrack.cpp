// Taking back the last step. The window tells where it was taken and the records on the two nodes which rule took it;
// the rule tells what is to be undone. Then the next thing to try is sought, nearest first: the next co-occurrence
// choice, the next word of the node that the rule brought in, the next rule of the window.
//
//  1  the word test that asked for this is shown
//  2  nothing has failed, no word is pending
//  3  a window beyond the right boundary has come there by a step to the right: on at 7
//  4  a window that has come from both sides: both markers go
//  5  a node was put back for another try, and that try has failed in matching: on at 8
//  6  a window in which nothing has been done yet: the right node's next word, or the next rule   (fresh_window.cpp)
//  7  the newest application of the window is undone                            (pop.cpp, and the undo of each type)
//  8  the next word of the node that was brought in; without one it leaves the list             (alternatives.cpp)
//  9  the next rule of the window
// 10  the list is shown

#include "engine/backtrack.hpp"

#include <utility>

#include "data/nodes.hpp"
#include "data/sentence.hpp"
#include "data/state.hpp"
#include "engine/trace.hpp"
#include "engine/undo.hpp"

namespace lexon {

namespace {

// Step 1.
void word_test_trace(const Undo& undo) {
  if (undo.candidate != nullptr && is_word_test_type(undo.candidate->rule->type))
    trace_backtrack_0(*undo.candidate, undo.window);
}

[[nodiscard]] bool is_beyond_right_boundary(const Undo& undo) {
  return undo.window.rnode == nullptr && undo.candidate != nullptr && undo.candidate->rule->type == rule_type::right;
}

// Step 4.
void marker_pair_pop(const Window& window) {
  if (window.lnode == nullptr || window.rnode == nullptr) return;
  if (!is_window_marker(window.lnode->matches) || !is_window_marker(window.rnode->matches)) return;
  match_record_pop(*window.lnode);
  match_record_pop(*window.rnode);
}

[[nodiscard]] bool is_put_back(const Node* node) {
  return node != nullptr && is_fresh(*node) && is_marked(*node);
}

// Steps 3 to 6: where to begin.
[[nodiscard]] Stage first_stage(Undo& undo) {
  if (is_beyond_right_boundary(undo)) return Stage::pop;
  marker_pair_pop(undo.window);
  const Node* lnode = undo.window.lnode;
  const Node* rnode = undo.window.rnode;
  if (is_put_back(lnode) || is_put_back(rnode)) return Stage::alternatives;
  if (lnode == nullptr) return leave(undo, rule_base_failure("left the list to the left and searched on"));
  const bool has_application = !is_fresh(*lnode) || (rnode != nullptr && !is_untouched(*rnode));
  return has_application ? Stage::pop : Stage::fresh_window;
}

// Step 10.
[[nodiscard]] Status finish(const Undo& undo) {
  trace_list_after_undo(undo.window);
  return undo.word_is_pending && undo.result == Status::ok ? Status::no_effect : undo.result;
}

}  // namespace

Status backtrack(Window& window, RuleCandidate*& candidate, std::int32_t& home_scope) {
  if (const Status status = must_leave(); status != Status::ok) return status;
  Undo undo{window, candidate, home_scope, window, nullptr, false, Status::ok};
  word_test_trace(undo);
  for (Stage stage = first_stage(undo); stage != Stage::end;) {
    switch (stage) {
      case Stage::fresh_window: stage = fresh_window(undo); break;
      case Stage::pop: stage = pop(undo); break;
      case Stage::alternatives: stage = alternatives(undo); break;
      case Stage::next_rule: stage = next_rule(undo); break;
      case Stage::leave: return undo.result;
      case Stage::end: break;
    }
  }
  return finish(undo);
}

Stage leave(Undo& undo, Status status) {
  undo.result = status;
  return Stage::leave;
}

void to_next_rule(Undo& undo, int number) {
  trace_next_rule(number);
  RuleCandidate* given_up = std::exchange(undo.candidate, undo.candidate->next);
  // Its records are gone. An element that came from a caller may still be in that caller's hands.
  if (given_up == undo.undone) candidate_passed_over(given_up);
}

void give_up_rules(Undo& undo, int number) {
  trace_ignore_rules(number);
  RuleCandidate* given_up = std::exchange(undo.candidate, nullptr);
  if (given_up == undo.undone) candidates_passed_over(given_up);
}

}  // namespace lexon
