// Taking back the last step. The window tells where it was taken and the records on the two nodes which rule took it;
// the rule tells what is to be undone. Then the next thing to try is sought, nearest first: the next co-occurrence
// choice, the next word of the node that the rule brought in, the next rule of the window.
//
//  1  the word test that asked for this is shown
//  2  nothing has failed, no word is pending
//  3  a window beyond the right boundary has come there by a step to the right: on at 7
//  4  a window that has come from both sides: both markers go
//  5  a node was put back for another try, and that try has failed in matching: on at 8
//  6  a window in which nothing has been done yet: the right node's next word, or the next rule
//  7  the newest application of the window is undone (undo.cpp undoes what changed the list)
//  8  the next word of the node that was brought in; without one it leaves the list
//  9  the next rule of the window
// 10  the list is shown
//
// Steps 6 to 9 stand below in this order, and last the driver with steps 1 to 5 and 10. The numbers in the trace name
// the branches.

#include "engine/backtrack.hpp"

#include <utility>

#include "data/nodes.hpp"
#include "data/output.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "dict/cooccurrence.hpp"
#include "engine/apply.hpp"
#include "engine/observer.hpp"
#include "engine/trace.hpp"
#include "engine/undo.hpp"
#include "rules/candidates.hpp"

namespace lexon {

namespace {

// What the steps hand on.
struct Undo {
  Window& caller;             // set only where a step says so: an early end leaves it as it was
  RuleCandidate*& candidate;  // the rule that failed, then the one that is undone, then the next to try; may be null
  std::int32_t& home_scope;
  Window window;          // the working copy
  RuleCandidate* undone;  // of the application that step 7 has found; null before
  bool word_is_pending;   // the right node's next word is due before the rule list moves on
  Status result;          // what the call returns: ok until a step says otherwise
};

// "Go on at ...": what a step returns.
enum class Stage : std::uint8_t { fresh_window, pop, alternatives, next_rule, end, leave };

// The result is `status`, at once: nothing is printed any more.
[[nodiscard]] Stage leave(Undo& undo, Status status) {
  undo.result = status;
  return Stage::leave;
}

// The branch of this number: the rule is given up for the next one of its window.
void to_next_rule(Session& session, Undo& undo, int number) {
  trace_next_rule(session, number);
  RuleCandidate* given_up = std::exchange(undo.candidate, candidate_next(session, *undo.candidate));
  // Its records are gone. An element that came from a caller may still be held by that caller.
  if (given_up == undo.undone) candidate_passed_over(session, given_up);
}

// The branch of this number in a forced backtracking: all rules of the window are given up.
void give_up_rules(Session& session, Undo& undo, int number) {
  trace_ignore_rules(session, number);
  RuleCandidate* given_up = std::exchange(undo.candidate, nullptr);
  if (given_up == undo.undone) candidates_passed_over(session, given_up);
}

// ---- Step 6: the window is fresh. Nothing has been done here but what rules tried on the words of the right node.

[[nodiscard]] Stage fresh_window(Session& session, Undo& undo) {
  if (undo.window.rnode == nullptr)
    return leave(undo, rule_base_failure(session, "searched on beyond the end of the list"));
  Node& rnode = *undo.window.rnode;
  Node* final_node = is_scope_reference(rnode) ? scope_final_node(session, rnode.scope) : nullptr;
  // 6.1: an untouched scope reference gives up its word in force, but is never left without words.
  if (is_scope_reference(rnode) && is_fresh(rnode)) {
    entry_drop_head(session, rnode.candidates);
    if (rnode.candidates == nullptr) {
      if (const Status status = node_words_reload(session, rnode); status != Status::ok) {
        // wanted: this one failure stands in the engine's status alone.
        session.state.engine_status = status;
        return Stage::leave;
      }
    }
  }
  // 6.2 and 6.3
  const bool is_at_list_beginning = is_boundary(*undo.window.lnode) && is_fresh(*undo.window.lnode);
  const bool is_word_held = is_held(rnode) || (final_node != nullptr && is_held(*final_node));
  if (is_at_list_beginning && is_word_held) {
    // The word is fixed from outside, by a hold.
    if (session.state.forced_node != nullptr) {
      undo.candidate = nullptr;
      trace_ignore_rules(session);
    }
    return leave(undo, Status::nothing_left);
  }
  if (undo.candidate == nullptr) return leave(undo, Status::nothing_left);
  // 6.4 and 6.5: the word in force is given up.
  Node& target = final_node != nullptr ? *final_node : rnode;
  if (session.observer != nullptr) session.observer->word_given_up(session, target);
  entry_drop_head(session, target.candidates);
  trace_word_change(session, WordChange::next, Side::right, 2);
  if (session.state.trace_level > 2) out_flush(session);
  if (session.state.forced_node == &rnode) {
    session.state.forced_node = nullptr;
    trace_forced_ends(session, ForcedEnd::word);
  }
  if (target.candidates != nullptr && rnode.candidates != nullptr) return Stage::end;
  // 6.6: the words are used up. The next rule sees them all again, from the second on: being called again, the next
  // call drops the head.
  trace_no_entry(session, Side::right);
  if (const Status status = node_words_reload(session, target); status != Status::ok) return leave(undo, status);
  const std::uint8_t type = undo.candidate->rule->type;
  if (session.state.forced_node != nullptr) {
    trace_ignore_rules(session);
    undo.candidate = nullptr;
  } else if (type == rule_type::test_right || type == rule_type::test) {
    return leave(undo, Status::nothing_left);
  } else {
    to_next_rule(session, undo, 32);
  }
  return leave(undo, undo.candidate != nullptr ? Status::no_effect : Status::nothing_left);
}

// ---- Steps 7.10 and 7.11: the same rule on the same nodes with the next word that the co-occurrence step chose. What
// the actions of the application have done stays.

// `pop`: no choice is left.
[[nodiscard]] Stage next_choice(Session& session, Undo& undo) {
  const Rule& rule = *undo.candidate->rule;
  Window& window = undo.window;
  for (const Side side : {Side::left, Side::right}) {
    Node& node = *node_of(window, side);
    // Did the rule bring in this side's node by a choice that has a successor?
    const WordEntry* choices = is_fresh(node) ? nullptr : node.matches->cooccurrence;
    if (pattern_of(rule, side).inserted == 0 || choices == nullptr || choices->next == nullptr) continue;
    if (session.state.forced_node == &node) {
      session.state.forced_node = nullptr;
      trace_forced_ends(session, side == Side::left ? ForcedEnd::left_choice : ForcedEnd::word);
    }
    // The choice in force goes off the node's word and off the records; `rest` is what comes behind it.
    WordEntry* choice = node.matches->cooccurrence;
    const Status removed = role_mark_remove(session, rule, side, &node, *choice);
    if (removed != Status::ok) return leave(undo, removed);
    WordEntry* rest = std::exchange(choice->next, nullptr);
    node.matches->cooccurrence = nullptr;
    // The other record of the application shares the choice, until it has been taken off once. Of another record nothing
    // is known, and the choice stays in the pool.
    MatchRecord* twin = node_of(window, other(side))->matches;
    const bool is_twin = twin != nullptr && twin->candidate == node.matches->candidate;
    if (is_twin && (twin->cooccurrence == nullptr || twin->cooccurrence == choice)) {
      twin->cooccurrence = nullptr;
      entry_list_free(session, choice);
    }
    const int score = cooccurrence_check(session, window.lnode->candidates, window.rnode->candidates, rule, rest, side);
    if (score == 0) {
      // wanted: what the left side has not used stays.
      if (side == Side::right) entry_list_free(session, rest);
      continue;
    }
    if (rest == nullptr) return leave(undo, rule_base_failure(session, "lost its co-occurrence choices"));
    node.matches->cooccurrence = rest;
    Status status = role_mark_add(session, rule, window.lnode, window.rnode, *rest);
    if (status == Status::ok) status = apply_rule(session, window, undo.candidate, &undo.home_scope);
    if (status != Status::ok) return leave(undo, status);
    undo.candidate = window_rules(session, window);
    undo.caller = window;
    return Stage::end;
  }
  return Stage::pop;
}

// ---- Step 7: the newest application of the window is undone. First the window moves back to where the rule worked,
// then nodes that the rule made leave the list, then the changed words and the records go.

[[nodiscard]] RuleCandidate* newest_candidate(const Node* node) {
  return node == nullptr || is_fresh(*node) ? nullptr : node->matches->candidate;
}

// 7.3, 7.6 and 7.7: the window and the list as they were when the rule was applied.
[[nodiscard]] Status place_restore(Session& session, Undo& undo) {
  Node*& lnode = undo.window.lnode;
  Node*& rnode = undo.window.rnode;
  const Rule& rule = *undo.candidate->rule;
  if (rule.type == rule_type::right) {
    // One place back to the left, past the marker of the step.
    if (rnode != nullptr && !is_fresh(*rnode)) match_record_pop(session, *rnode);
    if (lnode == nullptr) return rule_base_failure(session, "undid a step to the right at an empty place");
    undo.caller = undo.window = {lnode->left, lnode};
  }
  if (lnode == nullptr) return rule_base_failure(session, "undid a rule at an empty place");
  if (!is_fresh(*lnode) && lnode->matches->candidate == nullptr) {
    // A marker says that the window has moved here from where the rule worked.
    match_record_pop(session, *lnode);
    if (rule.mid != nullptr) {
      if (const Status status = to_noted_places(session, undo.window, *undo.candidate); status != Status::ok)
        return status;
    } else {
      if (rnode == nullptr) return rule_base_failure(session, "undid a step to the left at an empty place");
      undo.window = {rnode, rnode->right};
    }
  }
  if (rule.type == rule_type::copy_left || rule.type == rule_type::copy_right) {
    // The copy stands to the right of the node that was copied.
    Node* copied = rule.type == rule_type::copy_left ? lnode : rnode;
    Node* copy = copied == nullptr ? nullptr : copied->right;
    if (copy == nullptr || copy->merged_with != nullptr)
      return rule_base_failure(session, "undid a copy that is not there");
    if (rule.type == rule_type::copy_left) rnode = copy->right;
    node_unlink_release(session, *copy);
  }
  const bool has_both = lnode != nullptr && rnode != nullptr;
  return has_both ? Status::ok : rule_base_failure(session, "undid a rule at an empty place");
}

// 7.8 to 7.15, for the types that are undone in place.
[[nodiscard]] Stage application_undo(Session& session, Undo& undo) {
  Window& window = undo.window;
  const Rule& rule = *undo.candidate->rule;
  if (const Status status = place_restore(session, undo); status != Status::ok) return leave(undo, status);
  trace_backtrack(session, Undoing::application, *undo.candidate, window);
  if (rule.mid != nullptr) {
    if (const Status status = to_noted_places(session, window, *undo.candidate); status != Status::ok)
      return leave(undo, status);
  }
  if (const Stage stage = next_choice(session, undo); stage != Stage::pop) return stage;
  // The choices that the two records of the application share, or that one of them has kept. Null if there are none, or
  // if the records are not a pair.
  WordEntry* choices = nullptr;
  const MatchRecord* left = window.lnode->matches;
  const MatchRecord* right = window.rnode->matches;
  const bool are_both_there = left != nullptr && right != nullptr;
  if (are_both_there && left->candidate == undo.candidate && right->candidate == undo.candidate) {
    const bool are_one = right->cooccurrence == nullptr || right->cooccurrence == left->cooccurrence;
    if (left->cooccurrence == nullptr) {
      choices = right->cooccurrence;
    } else if (are_one) {
      choices = left->cooccurrence;
    }
  }
  for (Node* node : {window.lnode, window.rnode}) {
    if (!is_fresh(*node) && node->matches->state == kStateChanged) entry_drop_head(session, node->candidates);
    if (const Status status = record_pop(session, node); status != Status::ok) return leave(undo, status);
  }
  entry_list_free(session, choices);
  undo.caller = window;
  if (rule.type == rule_type::right && is_boundary(*window.rnode)) return Stage::next_rule;
  // 7.14: was a scope brought in or entered by the rule? If it stands finished, the search goes on inside it.
  Node& lnode = *window.lnode;
  Node& rnode = *window.rnode;
  if (!may_re_enter_scope(session, &rnode, *rule.rnode, rule) &&
      !may_re_enter_scope(session, &lnode, *rule.lnode, rule))
    return Stage::alternatives;
  if (is_scope_reference(lnode)) hold_release(session, lnode);
  if (is_scope_reference(rnode)) hold_release(session, rnode);
  for (const Node* node : {&lnode, &rnode}) {
    if (!is_scope_reference(*node) || !is_fresh(*node) || scope_is_built(session, node->scope) == 0) continue;
    undo.result = Status::nothing_left;
    return Stage::end;
  }
  return Stage::alternatives;
}

// 7.2, 7.4 and 7.5: `status` of what has set the window; the next stage if that has not failed.
[[nodiscard]] Stage window_was_set(Undo& undo, Status status, Stage next) {
  if (is_failure(status)) return leave(undo, status);
  undo.result = status;
  undo.caller = undo.window;
  return next;
}

[[nodiscard]] Stage pop(Session& session, Undo& undo) {
  RuleCandidate* newest = newest_candidate(undo.window.rnode);
  undo.candidate = undo.undone = newest != nullptr ? newest : newest_candidate(undo.window.lnode);
  if (undo.candidate == nullptr) return leave(undo, rule_base_failure(session, "undid a step that no rule has made"));
  ++session.state.undone;
  if (session.observer != nullptr) session.observer->undone(session, *undo.candidate);
  const Rule& rule = *undo.candidate->rule;
  switch (rule.type) {
    case rule_type::merge_left:
    case rule_type::merge_right:
      return window_was_set(undo, merge_undo(session, undo.window, undo.candidate), Stage::end);
    case rule_type::exchange:
      return window_was_set(undo, exchange_undo(session, undo.window, *undo.candidate), Stage::alternatives);
    case rule_type::plus:
    case rule_type::minus:
    case rule_type::less:
    case rule_type::greater:
      return window_was_set(undo, stepless_undo(session, undo.window, rule), Stage::alternatives);
    case rule_type::right:
    case rule_type::insertion_a:
    case rule_type::insertion:
    case rule_type::left:
    case rule_type::copy_left:
    case rule_type::copy_right:
    case rule_type::test_left:
    case rule_type::test_right:
    case rule_type::test: return application_undo(session, undo);
    default: return leave(undo, Status::no_effect);
  }
}

// ---- Step 8: the next word of the node that the rule brought in, tried in its place by the same rule. For a scope
// reference it is the word of the scope's entry node, as long as a hold fixes it from outside. When the words are used
// up the node leaves the list, and the next rule is due.

// What is tried in another way, as it stood before anything was changed.
struct Retry {
  const Rule& rule;
  Side side;        // of the node that the rule brought in
  Node* mid_start;  // the node from which the rule's MID was counted; null without MID
};

// The node whose words are tried for `node`.
[[nodiscard]] Node* word_node(Session& session, Node& node) {
  return is_scope_reference(node) ? scope_unbuilt_target(session, node.scope) : &node;
}

// Item 3 of both sides: the word in force goes; all words go if a forced backtracking aims elsewhere.
void word_change(Session& session, Node& target, Side side, int number, bool may_go_on) {
  if (target.candidates == nullptr) return;
  if (session.observer != nullptr) session.observer->word_given_up(session, target);
  if (may_go_on) {
    trace_word_change(session, WordChange::next, side, number);
    entry_drop_head(session, target.candidates);
  } else {
    trace_word_change(session, WordChange::clear_all, side, number);
    entry_list_free(session, target.candidates);
  }
}

// What the entry node of a scope reference at the other place still offers.
enum class Held : std::uint8_t { none, has_words, used_up, failed };

// Its next word, if a hold has fixed the last one. With `of`, only a hold of this rule. Used-up words are reloaded.
[[nodiscard]] Held held_word_change(Session& session, const Node& reference, const Rule* of) {
  Node* entry = scope_unbuilt_target(session, reference.scope);
  if (!hold_take(session, entry, of)) return Held::none;
  entry_drop_head(session, entry->candidates);
  if (entry->candidates != nullptr) return Held::has_words;
  return node_words_reload(session, *entry) == Status::ok ? Held::used_up : Held::failed;
}

// Item 7 of both sides: the node leaves the list.
[[nodiscard]] Stage inserted_take_out(Session& session, Undo& undo, const Retry& retry) {
  if (const Status status = inserted_undo(session, retry.rule, undo.window); status != Status::ok)
    return leave(undo, status);
  if (retry.rule.mid != nullptr) {
    // The window is given by the candidate as it now stands, on the side of the node that stays; by the rule that is
    // taken back if the next one, still untried, has noted no place.
    const Side staying_side = other(retry.side);
    Node* noted = undo.candidate == nullptr ? nullptr : noted_place(*undo.candidate, staying_side);
    Node* staying = noted != nullptr ? noted : retry.mid_start;
    const bool has_place = staying != nullptr && stands_in_list(session, node_of(undo.window, staying_side), staying);
    if (!has_place) return leave(undo, rule_base_failure(session, "lost the place of a rule with MID"));
    undo.window = staying_side == Side::left ? Window{staying, staying->right} : Window{staying->left, staying};
  }
  undo.caller = undo.window;
  return Stage::end;
}

[[nodiscard]] Stage right_side(Session& session, Undo& undo, const Retry& retry) {
  Node& rnode = *undo.window.rnode;
  const bool is_reference = is_scope_reference(rnode);
  if (!is_reference && retry.rule.rnode->inserted != 0) mark(rnode);
  Node* target = word_node(session, rnode);
  if (is_reference && !hold_take(session, target, &retry.rule)) {
    to_next_rule(session, undo, 11);
  } else {
    const Node* forced = session.state.forced_node;
    word_change(session, *target, Side::right, 3, forced == nullptr || forced == &rnode || forced == target);
    if (forced == target) {
      session.state.forced_node = nullptr;
      trace_forced_ends(session, ForcedEnd::right_entry);
    }
    if (target->candidates == nullptr) {
      // Item 5: the left node's scope may have another word for the same rule.
      trace_no_entry(session, Side::right);
      if (const Node& lnode = *undo.window.lnode; is_unbuilt_reference(session, lnode)) {
        const Held held = held_word_change(session, lnode, nullptr);
        if (held == Held::has_words) return Stage::end;
        if (held == Held::failed) return leave(undo, Status::memory);
      }
      if (session.state.forced_node == nullptr) {
        to_next_rule(session, undo, 12);
      } else {
        give_up_rules(session, undo, 1);
      }
    }
  }
  if (!is_reference && target->candidates != nullptr) return Stage::end;
  return inserted_take_out(session, undo, retry);
}

// Item 5 of the left side.
[[nodiscard]] Stage left_words_used_up(Session& session, Undo& undo, const Rule& rule) {
  trace_no_entry(session, Side::left);
  const Node& rnode = *undo.window.rnode;
  // 5.1: the entry node of the right node's scope, which was not asked so far.
  if (is_fresh(rnode) && is_unbuilt_reference(session, rnode)) {
    switch (held_word_change(session, rnode, &rule)) {
      case Held::has_words: return Stage::end;
      case Held::failed: return leave(undo, Status::memory);
      case Held::used_up: to_next_rule(session, undo, 23); break;
      case Held::none: to_next_rule(session, undo, 24); break;
    }
  }
  if (session.state.forced_node == nullptr) {
    const bool word_waits = is_held(rnode) || (is_fresh(rnode) && !is_boundary(rnode));
    if (word_waits) {
      undo.word_is_pending = true;
    } else {
      to_next_rule(session, undo, 22);
    }
  } else if (session.state.forced_node != &rnode || !is_untouched(rnode)) {
    give_up_rules(session, undo, 2);
  }
  return Stage::alternatives;
}

[[nodiscard]] Stage left_side(Session& session, Undo& undo, const Retry& retry) {
  Node& lnode = *undo.window.lnode;
  const bool is_reference = is_scope_reference(lnode);
  if (!is_reference) mark(lnode);
  Node* target = word_node(session, lnode);
  // wanted: unlike on the right side, the hold of any rule will do.
  if (is_reference && !hold_take(session, target)) {
    to_next_rule(session, undo, 21);
  } else {
    const Node* forced = session.state.forced_node;
    // wanted: unlike on the right side, a forced reference is not its target.
    word_change(session, *target, Side::left, 2, forced == nullptr || forced == target);
    if (forced == target) {
      session.state.forced_node = nullptr;
      trace_forced_ends(session, ForcedEnd::word);
    }
    if (target->candidates == nullptr) {
      if (const Stage stage = left_words_used_up(session, undo, retry.rule); stage != Stage::alternatives) return stage;
    }
  }
  if (!is_reference && target->candidates != nullptr) return Stage::end;
  return inserted_take_out(session, undo, retry);
}

[[nodiscard]] Stage alternatives(Session& session, Undo& undo) {
  const Window& window = undo.window;
  if (undo.candidate == nullptr) return leave(undo, rule_base_failure(session, "tried a node again without its rule"));
  if (window.lnode == nullptr || window.rnode == nullptr)
    return leave(undo, rule_base_failure(session, "tried a node again beside an empty place"));
  const Rule& rule = *undo.candidate->rule;
  const bool right_word_is_due = has_brace_patterns(rule) && is_fresh(*window.rnode);
  if (rule.rnode->inserted != 0 || right_word_is_due) {
    return right_side(session, undo, {rule, Side::right, noted_place(*undo.candidate, Side::left)});
  }
  if (rule.lnode->inserted == 0) return Stage::next_rule;
  return left_side(session, undo, {rule, Side::left, noted_place(*undo.candidate, Side::right)});
}

// ---- Step 9: no node has words to change.

[[nodiscard]] Stage next_rule(Session& session, Undo& undo) {
  if (session.state.forced_node == nullptr) {
    to_next_rule(session, undo, 31);
  } else {
    give_up_rules(session, undo, 3);
  }
  return Stage::end;
}

// ---- Steps 3 to 6: where to begin.

[[nodiscard]] bool is_put_back(const Node* node) {
  return node != nullptr && is_fresh(*node) && is_marked(*node);
}

[[nodiscard]] Stage first_stage(Session& session, Undo& undo) {
  Node* lnode = undo.window.lnode;
  Node* rnode = undo.window.rnode;
  const bool is_beyond_right_boundary =
      rnode == nullptr && undo.candidate != nullptr && undo.candidate->rule->type == rule_type::right;
  if (is_beyond_right_boundary) return Stage::pop;
  const bool has_both = lnode != nullptr && rnode != nullptr;
  if (has_both && is_window_marker(lnode->matches) && is_window_marker(rnode->matches)) {
    match_record_pop(session, *lnode);
    match_record_pop(session, *rnode);
  }
  if (is_put_back(lnode) || is_put_back(rnode)) return Stage::alternatives;
  if (lnode == nullptr) return leave(undo, rule_base_failure(session, "left the list to the left and searched on"));
  const bool has_application = !is_fresh(*lnode) || (rnode != nullptr && !is_untouched(*rnode));
  return has_application ? Stage::pop : Stage::fresh_window;
}

}  // namespace

Status backtrack(Session& session, Window& window, RuleCandidate*& candidate, std::int32_t& home_scope) {
  if (const Status status = must_leave(session); status != Status::ok) return status;
  Undo undo{window, candidate, home_scope, window, nullptr, false, Status::ok};
  if (candidate != nullptr && is_word_test_type(candidate->rule->type))
    trace_backtrack(session, Undoing::word_test, *candidate, window);
  for (Stage stage = first_stage(session, undo); stage != Stage::end;) {
    switch (stage) {
      case Stage::fresh_window: stage = fresh_window(session, undo); break;
      case Stage::pop: stage = pop(session, undo); break;
      case Stage::alternatives: stage = alternatives(session, undo); break;
      case Stage::next_rule: stage = next_rule(session, undo); break;
      case Stage::leave: return undo.result;
      case Stage::end: break;
    }
  }
  // A forced backtracking shows the list at its end alone.
  if (session.state.trace_level > 2 && session.state.forced_node == nullptr) dump_list(session, undo.window, true);
  return undo.word_is_pending && undo.result == Status::ok ? Status::no_effect : undo.result;
}

}  // namespace lexon
