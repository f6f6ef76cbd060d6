// Going back into a finished scope. Its list is undone from the right boundary until something new is found to try, and
// generated to its end again. If that succeeds the outer rule is applied to the new result; if the scope has nothing
// left, the rule that brought it in is undone, and the outer search goes on with the next word or the next rule.
//
//  1-2   does the rule bring in a scope, and on which side?
//  3-5   the reference forgets what the scope has brought; the scope becomes the current one
//  6-8   the outer place is kept; the inner window stands beyond the right boundary
//  9-10  the inner list is undone, and generated on
//  11    another solution: the outer rule once more
//  12    none: the outer rule is undone

#include "engine/scope_return.hpp"

#include <optional>

#include "data/nodes.hpp"
#include "data/output.hpp"
#include "data/pool.hpp"
#include "data/scratch.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "engine/apply.hpp"
#include "engine/backtrack.hpp"
#include "engine/candidate_pin.hpp"
#include "engine/observer.hpp"
#include "engine/scope_entry.hpp"
#include "engine/side.hpp"
#include "engine/trace.hpp"
#include "engine/undo.hpp"
#include "rules/candidates.hpp"

namespace lexon {

namespace {

// What the steps hand on. The scope is not among it, wanted: it is the current one each time it is named. Behind a
// return through two scopes and more that is not the one that was entered, since all depths share one home cell.
struct Return {
  Window& caller;            // set only where a step says so
  RuleCandidate& candidate;  // of the rule that brought the scope in
  std::int32_t& home_scope;  // one cell for all depths of one loop
  Side side;                 // of the reference
  Window outer;
  Window inner;
  RuleCandidate* inner_candidate;
};

[[nodiscard]] bool is_lost(const Window& window) {
  return window.lnode == nullptr || window.rnode == nullptr;
}

// Steps 5 to 8: the scope's blocks go to the front, and the inner window stands beyond the right boundary.
[[nodiscard]] Status inner_place_set(Session& session, Return& back) {
  if (!trace_indent_grow(session)) return session.state.abort = Status::memory;
  const ScopeRow& row = current_scope(session);
  trace_scope(session, ScopeStep::returned_into, row.number);
  if (session.observer != nullptr) session.observer->scope_returned_into(session, row.number);
  Node* last = nullptr;
  for (Node* node = list_first(row.entry); node != nullptr && must_leave(session) == Status::ok; node = node->right) {
    if (!is_boundary(*node)) scope_attrs_to_front(*node, row.number);
    last = node;
  }
  if (const Status status = must_leave(session); status != Status::ok) return status;
  const bool was_finished = last != nullptr && is_boundary(*last) && !is_fresh(*last);
  if (!was_finished) return rule_base_failure(session, "went back into a scope that was not finished");
  back.inner = {last, nullptr};
  back.inner_candidate = last->matches->candidate;
  return Status::ok;
}

// Steps 9 and 10: the inner list is undone until there is something new to try, and generated on from there.
[[nodiscard]] Status inner_search(Session& session, Return& back) {
  // What is undone inside can release nodes that either window stands on.
  const PlaceWatch outer_watch(session, back.outer.lnode, back.outer.rnode);
  const PlaceWatch inner_watch(session, back.inner.lnode, back.inner.rnode);
  for (;;) {
    if (const Status status = must_leave(session); status != Status::ok) return status;
    Status status = backtrack(session, back.inner, back.inner_candidate, back.home_scope);
    if (status == Status::nothing_left) {
      if (back.inner_candidate == nullptr || is_lost(back.inner)) return status;
      trace_return_to_inner_scope(session);
      status = back_into_scope(session, back.inner, back.inner_candidate, back.home_scope);
      // The search went on inside and has undone what the window stood on: its result is final.
      if (is_lost(back.inner)) return status;
    }
    if (is_failure(status)) return status;
    if (session.state.forced_node == nullptr && status == Status::ok) break;
  }
  if (is_lost(back.inner)) return Status::ok;
  const CandidatePin pin(back.inner_candidate);
  return engine_loop(session, back.inner_candidate, back.inner, back.home_scope);
}

// Step 11: the reference takes what the new solution has brought, and the outer rule is applied once more.
[[nodiscard]] Status solution_take(Session& session, Return& back) {
  trace_indent_shrink(session);
  trace_scope(session, ScopeStep::return_finished, current_scope(session).number);
  if (session.observer != nullptr) session.observer->scope_left(session, current_scope(session).number, false);
  // 11.2
  const Node* reference = node_of(back.outer, back.side);
  const Node* entry = current_scope(session).entry;
  const bool has_words =
      reference != nullptr && reference->candidates != nullptr && entry != nullptr && entry->candidates != nullptr;
  if (!has_words) return rule_base_failure(session, "finished a scope without a word");
  WordEntry& word = *reference->candidates;
  const Status joined = reference_attrs_join(session, word, text_or_empty(word.attrs), *entry->candidates);
  if (joined != Status::ok) return joined;
  session.state.semlst_cur = back.home_scope;
  // 11.4 and 11.5
  Status applied = Status::ok;
  if (is_lost(back.outer)) applied = rule_base_failure(session, "went back into a scope from an empty place");
  for (Node* node : {back.outer.lnode, back.outer.rnode}) {
    if (applied == Status::ok) applied = match_record_push(session, *node, kStateStep, &back.candidate);
  }
  RuleCandidate* candidate = &back.candidate;
  if (applied == Status::ok) applied = apply_rule(session, back.outer, candidate, &back.home_scope);
  if (applied != Status::ok) {
    back.caller = back.outer;
    return applied;
  }
  return engine_loop(session, window_rules(session, back.outer), back.outer, back.home_scope);
}

// 12.2 to 12.7: the scope and the rule that brought it in are undone.
[[nodiscard]] Status scope_undo(Session& session, Return& back) {
  const PlaceWatch inner_watch(session, back.inner.lnode, back.inner.rnode);
  Node* reference = node_of(back.outer, back.side);
  Node* entry = current_scope(session).entry;
  if (reference == nullptr || entry == nullptr) return rule_base_failure(session, "lost the scope that it undid");
  hold_take(session, entry);
  // 12.3: the reference is left with its first word as it was read.
  entry_list_free(session, reference->candidates);
  if (reference->entries != nullptr) {
    const Status status = entry_copy(session, *reference->entries, reference->candidates);
    if (status != Status::ok) return status;
  }
  // 12.4: a copy that stood for the entry node goes, and the node itself starts the scope again.
  if (entry->origin == nullptr) {
    if (const Status status = node_words_reload(session, *entry); status != Status::ok) return status;
  } else {
    scope_entries_hand_over(session, *entry, entry->origin);
    node_unlink_free(session, entry);
  }
  session.state.semlst_cur = back.home_scope;
  if (const Status status = inserted_undo(session, *back.candidate.rule, back.outer); status != Status::ok)
    return status;
  // 12.7
  if (back.candidate.rule->mid == nullptr) return Status::ok;
  // wanted: the place is that of the inner search.
  const RuleCandidate* inner = back.inner_candidate;
  const bool has_place = inner != nullptr && stands_in_list(session, back.inner.lnode, inner->lnode);
  if (!has_place) return rule_base_failure(session, "lost the place of a rule with MID");
  back.outer = {inner->lnode, back.inner.lnode->right};
  return Status::ok;
}

// Step 12: the scope has nothing left.
[[nodiscard]] Status scope_give_up(Session& session, Return& back) {
  trace_indent_shrink(session);
  trace_scope_failed(session, 3, current_scope(session).number);
  if (session.observer != nullptr) session.observer->scope_left(session, current_scope(session).number, true);
  if (const Status status = scope_undo(session, back); status != Status::ok) return status;
  if (session.state.forced_node != nullptr) {
    back.caller = back.outer;
    return Status::ok;
  }
  // 12.8
  const Side opposite = other(back.side);
  Node* node = node_of(back.outer, opposite);
  if (node == nullptr) return rule_base_failure(session, "undid a scope beside an empty place");
  RuleCandidate* candidate = &back.candidate;
  const bool same_rule_may_go_on = pattern_of(*candidate->rule, back.side).inserted != 0 && is_fresh(*node);
  if (!same_rule_may_go_on) {
    candidate = candidate_next(session, *candidate);
    return engine_loop(session, candidate, back.outer, back.home_scope);
  }
  // 12.9 and 12.10: the other place of the window goes to its next word, for the same rule again. Without one it gets
  // all words back, for the next rule.
  trace_word_change(session, WordChange::next, opposite, 1);
  entry_drop_head(session, node->candidates);
  if (node->candidates == nullptr) {
    trace_no_next_entry(session, opposite);
    candidate = candidate_next(session, *candidate);
    if (const Status status = node_words_reload(session, *node); status != Status::ok) return status;
  }
  return engine_loop(session, candidate, back.outer, back.home_scope);
}

}  // namespace

Status back_into_scope(Session& session, Window& window, RuleCandidate*& candidate, std::int32_t& home_scope) {
  if (stack_nearly_used(session)) return Status::memory;
  // Steps 1 and 2. The left node is asked first.
  std::optional<Side> side;
  for (const Side place : {Side::left, Side::right}) {
    if (side.has_value() || candidate == nullptr || candidate->rule->type != rule_type::insertion) break;
    const Rule& rule = *candidate->rule;
    if (may_re_enter_scope(session, node_of(window, place), pattern_of(rule, place), rule)) side = place;
  }
  if (!side.has_value()) {
    if (session.state.semlst_cur == 0) trace_search_taken_as_finished(session);
    return Status::ok;
  }
  // Steps 3 and 4: the reference forgets what the scope has brought.
  Node& reference = *node_of(window, *side);
  if (reference.candidates == nullptr)
    return rule_base_failure(session, "went back into a scope whose reference has no word");
  WordEntry& word = *reference.candidates;
  Scratch<kAttrLimit + 8> attrs;
  attrs.append(text_or_empty(head_text(reference))).append(",SCOPE");
  const std::int32_t length = word.attr_len;
  const Status reset = entry_attrs_set(session, word, attrs.view());
  word.attr_len = length;  // wanted: no size of the word follows
  if (reset != Status::ok) return reset;
  home_scope = session.state.semlst_cur;
  const int row = scope_row_find(session, reference.scope);
  if (row == 0) return Status::ok;
  // From here on the inner scope is the current one. The rule that brought it in must outlive the search inside.
  session.state.semlst_cur = row;
  const CandidatePin pin(candidate);
  Return back{window, *candidate, home_scope, *side, window, {nullptr, nullptr}, nullptr};
  if (const Status status = inner_place_set(session, back); status != Status::ok) return status;
  const Status searched = inner_search(session, back);
  if (const Status status = must_leave(session); status != Status::ok) return status;
  if (is_failure(searched)) return searched;
  return searched == Status::ok ? solution_take(session, back) : scope_give_up(session, back);
}

}  // namespace lexon
