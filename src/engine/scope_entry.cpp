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
#include "engine/trace.hpp"
#include "rules/rule.hpp"

namespace lexon {

namespace {

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
  const std::size_t taken = std::min(text.size(), kBlockLimit - std::min(length, kBlockLimit));
  std::memcpy(block->text + length, text.data(), taken);
  block->text[length + taken] = '\0';
}

void block_cut(ScopeAttrs* block) {
  if (block == nullptr) return;
  if (char* handed_in = std::strstr(block->text, kHandedIn.data()); handed_in != nullptr) *handed_in = '\0';
}

[[nodiscard]] bool is_handed_in(const ScopeEntry& scope, const CondItem& item) {
  if (item.op == kOpNot || item.op == kOpDelete) return false;
  // wanted: from the left place an attribute is handed in even if the reference has it.
  return scope.side == Side::left || attr_find(scope.ref.candidates->attrs, item.text) == nullptr;
}

// Hands over what earlier rules added to the reference: it stands in front of ",;" in the word, or, if the word has
// none, behind it in the block.
void earlier_additions_hand_in(const ScopeEntry& scope, std::string_view attrs, std::size_t separator) {
  ScopeAttrs* block = scope.row.entry->scope_attrs;
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

void attrs_hand_in(const ScopeEntry& scope) {
  Node& entry = *scope.row.entry;
  scope_attrs_to_front(entry, scope.row.number);
  ScopeAttrs* block = entry.scope_attrs;
  block_cut(block);
  const std::string_view attrs = text_or_empty(scope.ref.candidates->attrs);
  const std::size_t separator = attrs.find(kHandedIn);
  if (scope.pattern.actions != nullptr || separator != std::string_view::npos) block_append(block, kHandedIn);
  for (const CondItem& item : chain<&CondItem::next>(scope.pattern.actions)) {
    if (!is_handed_in(scope, item)) continue;
    block_append(block, ",");
    block_append(block, item.text);
  }
  earlier_additions_hand_in(scope, attrs, separator);
}

void entry_trace(Session& session, const ScopeEntry& scope, const RuleCandidate& candidate) {
  trace_rule_applied(session, candidate);
  trace_rule_end(session);
  trace_scope_entered(session, scope.side, scope.row.number);
}

// wanted: what stands in the current row when the scope ends counts. A return into deeper scopes can have left one of
// theirs in force.
[[nodiscard]] Status scope_finished(Session& session, const Node* ref) {
  const ScopeRow& row = current_scope(session);
  const bool have_words =
      ref != nullptr && ref->candidates != nullptr && row.entry != nullptr && row.entry->candidates != nullptr;
  if (!have_words) return rule_base_failure(session, "finished a scope without a word");
  WordEntry& word = *ref->candidates;
  std::string_view own = text_or_empty(word.attrs);
  if (const std::size_t at = own.find(kOwnBehind); at != std::string_view::npos) {
    own.remove_prefix(at + kOwnBehind.size());
  }
  if (const Status status = reference_attrs_join(session, word, own, *row.entry->candidates); status != Status::ok)
    return status;
  trace_indent_shrink(session);
  trace_scope_finished(session, row.number);
  return Status::ok;
}

[[nodiscard]] Status scope_failed(Session& session, Side side, Status generated) {
  const ScopeRow& row = current_scope(session);
  trace_indent_shrink(session);
  trace_scope_failed(session, side, row.number);
  if (row.entry != nullptr) block_cut(row.entry->scope_attrs);
  return generated;
}

// A scope that the table does not know can lead back into the list of the window itself, and undo what stands there.
[[nodiscard]] Status scope_generate(Session& session, Node* entry, Window& window, const RuleCandidate& candidate) {
  const PlaceWatch watch(session, window.lnode, window.rnode);
  const CandidatePin pin(&candidate);
  return generate_scope(session, entry, true);
}

// Does this side of the rule enter the scope of its node?
[[nodiscard]] bool enters_scope(Session& session, Side side, const Window& window, const Rule& rule) {
  const Node* node = node_of(window, side);
  const bool is_own_reference = node != nullptr && is_scope_reference(*node) && node->origin == nullptr;
  if (!is_own_reference || rule.type != rule_type::insertion) return false;
  if (pattern_of(rule, side).inserted != 0) return true;
  return pattern_of(rule, other(side)).inserted == 0 && scope_is_built(session, node->scope) == 0;
}

}  // namespace

std::optional<Side> scope_to_enter(Session& session, const Window& window, const Rule& rule) {
  for (const Side side : {Side::right, Side::left}) {
    if (enters_scope(session, side, window, rule)) return side;
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
  entry_trace(session, scope, candidate);
  if (!trace_indent_grow(session)) return {session.state.abort = Status::memory, false};
  attrs_hand_in(scope);
  const Status generated = scope_generate(session, row.entry, window, candidate);
  // A stopped or lost sentence prints nothing more.
  if (const Status status = must_leave(session); status != Status::ok) return {status, false};
  const bool has_failed = generated != Status::ok;
  const Status status =
      has_failed ? scope_failed(session, side, generated) : scope_finished(session, node_of(window, side));
  session.state.semlst_cur = home_scope;
  return {status, has_failed};
}

Status reference_attrs_join(Session& session, WordEntry& word, std::string_view own, const WordEntry& entry_word) {
  Scratch<kAttrLimit + 1> inner;
  inner.append(text_or_empty(entry_word.attrs));
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
