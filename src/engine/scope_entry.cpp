// Entering a scope. What the rule adds, and what rules have added to the reference before, is handed in through the
// attribute block of the scope's entry node, behind ",;". What was handed in stays there while the scope stands.

#include "engine/scope_entry.hpp"

#include <algorithm>
#include <cstring>

#include "data/attr_string.hpp"
#include "data/chain.hpp"
#include "data/nodes.hpp"
#include "data/scratch.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "engine/candidate_pin.hpp"
#include "engine/observer.hpp"
#include "engine/trace.hpp"
#include "rules/rule.hpp"

namespace lexon {

namespace {

// Behind the first stands, in a block, what was handed in; behind the second, in a reference's word, what it had before
// rules added to it.
constexpr std::string_view kHandedIn = ",;";
constexpr std::string_view kOwnBehind = ",;,";
constexpr std::size_t kBlockLimit = 1024;  // characters of a block that are used

// A scope being entered.
struct ScopeEntry {
  Side side;
  Node& ref;
  const NodePattern& pattern;  // the rule's side of the reference
  ScopeRow& row;
};

// A block may be missing; then there is nothing to hand in to.
void block_append(ScopeAttrs* block, std::string_view text) {
  if (block == nullptr) return;
  const std::size_t length = std::strlen(block->text);
  // What does not fit is cut off without a word.
  const std::size_t taken = std::min(text.size(), kBlockLimit - std::min(length, kBlockLimit));
  std::memcpy(block->text + length, text.data(), taken);
  block->text[length + taken] = '\0';
}

// Takes back what was handed in.
void block_cut(ScopeAttrs* block) {
  if (block == nullptr) return;
  if (char* handed_in = std::strstr(block->text, kHandedIn.data()); handed_in != nullptr) *handed_in = '\0';
}

// Fills the scope's block behind ",;" with what the rule adds, and with what earlier rules have added to the reference.
void attrs_hand_in(const ScopeEntry& scope) {
  Node& entry = *scope.row.entry;
  scope_attrs_to_front(entry, scope.row.number);
  // What an earlier entry has handed in goes first.
  ScopeAttrs* block = entry.scope_attrs;
  block_cut(block);
  const std::string_view attrs = text_or_empty(scope.ref.candidates->attrs);
  const std::size_t separator = attrs.find(kHandedIn);
  if (scope.pattern.actions != nullptr || separator != std::string_view::npos) block_append(block, kHandedIn);
  for (const CondItem& item : chain<&CondItem::next>(scope.pattern.actions)) {
    if (item.op == kOpNot || item.op == kOpDelete) continue;
    // wanted: from the left place an attribute is handed in even if the reference has it.
    if (scope.side == Side::right && attr_find(scope.ref.candidates->attrs, item.text) != nullptr) continue;
    block_append(block, ",");
    block_append(block, item.text);
  }
  // Earlier additions stand in front of ",;" in the word, or, if the word has none, behind it in the block.
  ScopeAttrs* ref_block = scope.ref.scope_attrs;
  if (separator != std::string_view::npos) {
    const std::string_view additions = attrs.substr(0, separator);
    block_append(block, ",");
    block_append(block, additions);
    block_append(ref_block, kOwnBehind);
    block_append(ref_block, additions);
  } else if (ref_block != nullptr) {
    const std::string_view text = ref_block->text;
    const std::size_t begin = std::min(text.find(kHandedIn), text.size());
    block_append(block, text.substr(begin));
  }
}

// wanted: what stands in the current row when the scope ends counts. A return into deeper scopes can have left one of
// theirs in force.
// The reference has the attributes of the word at the scope's head from now on, behind its own.
[[nodiscard]] Status scope_finished(Session& session, const Node* ref) {
  const ScopeRow& row = current_scope(session);
  const bool have_words =
      ref != nullptr && ref->candidates != nullptr && row.entry != nullptr && row.entry->candidates != nullptr;
  if (!have_words) return rule_base_failure(session, "finished a scope without a word");
  WordEntry& word = *ref->candidates;
  std::string_view own = text_or_empty(word.attrs);
  // What rules have added before is in the scope by now.
  if (const std::size_t at = own.find(kOwnBehind); at != std::string_view::npos) {
    own.remove_prefix(at + kOwnBehind.size());
  }
  if (const Status status = reference_attrs_join(session, word, own, *row.entry->candidates); status != Status::ok)
    return status;
  trace_indent_shrink(session);
  trace_scope(session, ScopeStep::finished, row.number);
  return Status::ok;
}

}  // namespace

std::optional<Side> scope_to_enter(const Session& session, const Window& window, const Rule& rule) {
  if (rule.type != rule_type::insertion) return std::nullopt;
  for (const Side side : {Side::right, Side::left}) {
    const Node* node = node_of(window, side);
    // A copy stands for a scope that its origin has entered.
    const bool is_own_reference = node != nullptr && is_scope_reference(*node) && node->origin == nullptr;
    if (!is_own_reference) continue;
    // A reference that the rule brings in is entered at once; one that stands there, by a rule with two brace patterns.
    if (pattern_of(rule, side).inserted != 0) return side;
    if (pattern_of(rule, other(side)).inserted == 0 && scope_is_built(session, node->scope) == 0) return side;
  }
  return std::nullopt;
}

ScopeResult scope_enter(Session& session, Side side, Window& window, const RuleCandidate& candidate,
                        std::int32_t& home_scope) {
  Node& ref = *node_of(window, side);
  home_scope = session.state.semlst_cur;
  // A scope that the table does not know leaves the current one in force.
  if (const int found = scope_row_find(session, ref.scope); found != 0) session.state.semlst_cur = found;
  ScopeRow& row = current_scope(session);
  const bool can_enter = row.entry != nullptr && ref.candidates != nullptr;
  if (!can_enter) return {rule_base_failure(session, "entered a scope without an entry"), false};
  const ScopeEntry scope{side, ref, pattern_of(*candidate.rule, side), row};
  trace_rule_applied(session, candidate);
  trace_rule_end(session);
  trace_scope(session, side == Side::left ? ScopeStep::entered_left : ScopeStep::entered_right, row.number);
  if (session.observer != nullptr) session.observer->scope_entered(session, candidate, row.number);
  if (!trace_indent_grow(session)) return {session.state.abort = Status::memory, false};
  attrs_hand_in(scope);
  Status status = Status::ok;
  {
    // A scope that the table does not know can lead back into the list of the window itself, and undo what stands there.
    const PlaceWatch watch(session, window.lnode, window.rnode);
    const CandidatePin pin(&candidate);
    status = generate_scope(session, row.entry, true);
  }
  // A stopped or lost sentence prints nothing more.
  if (must_leave(session) != Status::ok) return {must_leave(session), false};
  // wanted: a failure of whatever kind is one of the scope, and the outer search goes on
  const bool has_failed = status != Status::ok;
  if (has_failed) {
    // The row is asked for again: the search inside may have made another scope the current one.
    const ScopeRow& failed = current_scope(session);
    trace_indent_shrink(session);
    trace_scope_failed(session, side == Side::right ? 1 : 2, failed.number);
    if (failed.entry != nullptr) block_cut(failed.entry->scope_attrs);
  } else {
    status = scope_finished(session, node_of(window, side));
  }
  if (session.observer != nullptr) session.observer->scope_left(session, current_scope(session).number, has_failed);
  session.state.semlst_cur = home_scope;
  return {status, has_failed};
}

Status reference_attrs_join(Session& session, WordEntry& word, std::string_view own, const WordEntry& entry_word) {
  Scratch<kAttrLimit + 1> inner;
  inner.append(text_or_empty(entry_word.attrs));
  // The reference is no entry because its scope has one.
  attr_erase(inner.c_str(), "@entry");
  Scratch<kAttrLimit + 1> text;
  text.append(own).append(',').append(inner.c_str());
  const std::int32_t old_length = word.attr_len;
  if (const Status status = entry_attrs_set(session, word, text.view()); status != Status::ok) return status;
  word.attr_block_size += word.attr_len - old_length;
  word.total_size += word.attr_len - old_length;
  return Status::ok;
}

}  // namespace lexon
