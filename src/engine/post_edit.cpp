// The second pass over a finished list: from its end, with the same window and matching as generation, but only the
// rules of post-edit, and nothing is undone.

#include "engine/post_edit.hpp"

#include <cstring>
#include <span>

#include "data/nodes.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "engine/apply.hpp"
#include "engine/candidate_pin.hpp"
#include "engine/match.hpp"
#include "engine/observer.hpp"
#include "engine/post_edit_rule.hpp"
#include "engine/side.hpp"
#include "engine/trace.hpp"
#include "rules/candidates.hpp"
#include "rules/rule.hpp"

namespace lexon {

namespace {

// The surface forms of a window that shifts may be held against before anything else, by the side that gives the text:
// of nodes that are settled, beside a place that holds nothing for another try. Null: rules have to be matched.
struct ShiftedTexts {
  const char* of[2] = {nullptr, nullptr};
  std::size_t size[2] = {0, 0};

  explicit ShiftedTexts(const Window& window) {
    for (const Side side : {Side::left, Side::right}) {
      const Node* node = node_of(window, side);
      const Node* place = node_of(window, other(side));
      if (node == nullptr || node->candidates == nullptr || is_fresh(*node)) continue;
      if (place != nullptr && is_marked(*place)) continue;
      const auto index = static_cast<std::size_t>(side);
      of[index] = text_or_empty(node->candidates->hw);
      size[index] = std::strlen(of[index]);
    }
  }

  // Most texts differ from a rule's in the character that stands at the end.
  [[nodiscard]] bool refuse(ShiftedEnd rule) const {
    if (rule.character == '\0') return false;
    const auto index = static_cast<std::size_t>(rule.shifts_left ? Side::right : Side::left);
    if (of[index] == nullptr) return false;
    return size[index] == 0 || of[index][rule.shifts_left ? 0 : size[index] - 1] != rule.character;
  }
};

// The first of the rules that fits, as a candidate of its own; null if none does. `result` is what the last match gave.
[[nodiscard]] RuleCandidate* rule_choose(Session& session, std::span<const RuleBlock> rules, Window& window,
                                         Status& result) {
  session.state.turned = nullptr;
  ShiftedTexts texts(window);
  const RuleSearch& index = session.grammar->index.search;
  // Who watches wants to hear of each try, and the trace of each word that has no room for what it would get.
  const bool may_pass_over = session.observer == nullptr && session.state.trace_level < 3;
  for (RuleBlock block : rules) {
    while (block.rules != 0) {
      const auto number = static_cast<std::size_t>(rule_take(block));
      if (may_pass_over && session.state.turned != nullptr && texts.refuse(index.shifted_ends[number])) {
        result = Status::ok;
        continue;
      }
      const Rule& rule = *index.rules[number];
      // Rules of generation are passed over, and scope rules at a place that stands for no scope.
      if (!is_post_edit_type(rule.type)) continue;
      if (rule.type == rule_type::post_scope_left || rule.type == rule_type::post_scope_right) {
        const Node* place = rule.type == rule_type::post_scope_left ? window.lnode : window.rnode;
        if (place == nullptr || !is_scope_reference(*place)) continue;
      }
      if (session.observer == nullptr && session.state.turned != nullptr && is_refused_by_text(session, rule, window)) {
        result = Status::ok;
        continue;
      }
      RuleCandidate* candidate = candidates_new(session, &rule);
      if (candidate == nullptr) return nullptr;
      // wanted: a failure is overwritten by what the next rule gives.
      const Fit fit = match_rule(session, *candidate, window);
      if (fit == Fit::failed) {
        result = must_leave(session) != Status::ok ? must_leave(session) : Status::memory;
      } else {
        // wanted: a rule that fits and is refused fails the pass, if it is the last one asked.
        result = fit == Fit::refused ? Status::no_effect : Status::ok;
      }
      if (fit == Fit::yes || must_leave(session) != Status::ok) return candidate;
      candidate_passed_over(session, candidate);
      // A node that waited for another try has let go of its words.
      if (fit != Fit::no) texts = ShiftedTexts(window);
    }
  }
  return nullptr;
}

}  // namespace

Status post_edit(Session& session, Node* start) {
  if (stack_nearly_used(session)) return Status::memory;
  if (start == nullptr) return rule_base_failure(session, "post-edited a scope without an entry");
  Node* last = start;
  while (last->right != nullptr && must_leave(session) == Status::ok) last = last->right;
  Window window{last->left, last};
  trace_list(session, window, false);
  Status result = Status::ok;
  // A rule that fails ends the pass, and with it the sentence.
  while (result == Status::ok) {
    if (const Status status = must_leave(session); status != Status::ok) return status;
    if (window.lnode == nullptr || window.rnode == nullptr) return result;
    const std::span<const RuleBlock> rules = post_edit_rules(session, window.lnode, window.rnode);
    if (session.observer != nullptr) session.observer->offered_in_post_edit(session, window, rules);
    RuleCandidate* candidate = rule_choose(session, rules, window, result);
    if (candidate == nullptr || must_leave(session) != Status::ok) return result;
    // A pass inside a scope must not release it.
    const CandidatePin pin(candidate);
    const std::uint8_t type = candidate->rule->type;
    const bool moves_window =
        type == rule_type::post_left || type == rule_type::post_right || type == rule_type::post_insertion;
    result =
        moves_window ? apply_rule(session, window, candidate, nullptr) : post_edit_rule(session, window, *candidate);
  }
  return result;
}

}  // namespace lexon
