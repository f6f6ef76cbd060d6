#include "engine/trace.hpp"

#include "data/output.hpp"
#include "data/session.hpp"
#include "rules/print.hpp"

namespace lexon {

namespace {

[[nodiscard]] bool traces(Session& session, int level) {
  return session.state.trace_level >= level;
}

[[nodiscard]] const char* place_name(Side side) {
  return side == Side::left ? "lnode" : "rnode";
}

void print_undone_node(Session& session, Side side, const Node* node) {
  trace_line(session, "<<<<< ", place_name(side));
  dump_node(session, node, false);
}

// The part of a backtracking banner behind its first line.
void print_undone_step(Session& session, const RuleCandidate& candidate, const Window& window) {
  rule_stack_print(session, &candidate, true);
  print_undone_node(session, Side::left, window.lnode);
  print_undone_node(session, Side::right, window.rnode);
}

}  // namespace

void trace_list(Session& session, const Window& window, bool with_words) {
  if (traces(session, 2)) dump_list(session, window, with_words);
}

void trace_rule_applied(Session& session, const RuleCandidate& candidate) {
  if (!traces(session, 2)) return;
  trace_line(session, "==================== APPLIED RULE ==================");
  rule_stack_print(session, &candidate, true);
  if (traces(session, 4) && !is_post_edit_type(candidate.rule->type)) print_other_rules(session, candidate.next);
}

void trace_rule_end(Session& session) {
  if (traces(session, 2)) trace_line(session, "====================================================");
}

void trace_rule_end_flushed(Session& session) {
  if (!traces(session, 2)) return;
  trace_rule_end(session);
  out_flush(session);
}

void trace_result_node(Session& session, Side side, bool inserted, const Node* node) {
  if (!traces(session, 2)) return;
  out_text(session, trace_indent(session), ">>>>> ", place_name(side), inserted ? "  INSERTED\n" : "\n");
  dump_node(session, node, true);
}

void trace_copied_node(Session& session, const Node* copy) {
  if (!traces(session, 2)) return;
  trace_line(session, ">>>>> copied node");
  dump_node(session, copy, true);
}

void trace_shifted_node(Session& session, Side side, const Node* node) {
  if (!traces(session, 2)) return;
  trace_line(session, ">>>>> ", place_name(side), "  SHIFTED");
  dump_node(session, node, true);
}

void trace_to_backtrack(Session& session, bool has_candidate) {
  if (!traces(session, 2)) return;
  trace_line(session, has_candidate ? ";;to backtrack!" : ";;No Rule!");
  out_flush(session);
}

void trace_no_matched_word(Session& session, Side side) {
  if (traces(session, 2)) trace_line(session, ";;", place_name(side), " No Matched Word!");
}

void trace_scope_entered(Session& session, Side side, int scope) {
  if (!traces(session, 2)) return;
  trace_line(session, ";;==>> SCOPE:", Decimal(scope, 2), " - ", place_name(side), ":scope");
  out_flush(session);
}

void trace_scope_failed(Session& session, Side side, int scope) {
  if (traces(session, 2))
    trace_line(session, ";;#", Decimal(side == Side::right ? 1 : 2), " Scope:", Decimal(scope, 2), " failed");
}

void trace_scope_finished(Session& session, int scope) {
  if (traces(session, 2)) trace_line(session, ";;<<== SCOPE:", Decimal(scope, 2));
}

void trace_return_into_scope(Session& session, int scope) {
  if (!traces(session, 2)) return;
  trace_line(session, ";;backtrack into SCOPE:", Decimal(scope, 2));
  out_flush(session);
}

void trace_return_finished(Session& session, int scope) {
  if (traces(session, 2)) trace_line(session, ";;backtrack <<== SCOPE:", Decimal(scope, 2));
}

void trace_return_failed(Session& session, int scope) {
  if (traces(session, 2)) trace_line(session, ";;#3 Scope:", Decimal(scope, 2), " failed");
}

void trace_post_edit_entered(Session& session, int scope) {
  if (traces(session, 2)) trace_line(session, ";;==>> PostEdit SCOPE:", Decimal(scope, 2));
}

void trace_post_edit_finished(Session& session, int scope) {
  if (traces(session, 2)) trace_line(session, ";;<<== PostEdit SCOPE:", Decimal(scope, 2));
}

void trace_return_to_inner_scope(Session& session) {
  trace_line(session, "020906 to BackIntoScope");
  out_flush(session);
}

void trace_search_taken_as_finished(Session& session) {
  out_text(session, ";;semlst_cur:NULL -> Failed!\n");
}

void trace_attrs_too_long(Session& session, const Rule& rule) {
  if (!traces(session, 3)) return;
  out_text(session, trace_indent(session), ";;attributes will be longer the ", Decimal(kAttrLimit),
           "\n;;the following rule will be not applied\n");
  out_flush(session);
  rule_print(session, &rule, true);
}

void trace_backtrack_0(Session& session, const RuleCandidate& candidate, const Window& window) {
  if (!traces(session, 3)) return;
  trace_line(session, "==================== BACKTRACK-0 =====================");
  print_undone_step(session, candidate, window);
  out_flush(session);
}

void trace_backtrack_1(Session& session, const RuleCandidate& candidate, const Window& window) {
  if (!traces(session, 3)) return;
  trace_line(session, "==================== BACKTRACK-1 =====================");
  out_flush(session);
  rule_stack_print(session, &candidate, true);
  out_flush(session);
  print_undone_node(session, Side::left, window.lnode);
  out_flush(session);
  print_undone_node(session, Side::right, window.rnode);
  out_flush(session);
}

void trace_backtrack_pair(Session& session, const RuleCandidate& candidate, const Window& window) {
  if (!traces(session, 3)) return;
  trace_line(session, "==================== BACKTRACK ====================");
  print_undone_step(session, candidate, window);
  out_flush(session);
}

void trace_list_after_undo(Session& session, const Window& window) {
  if (traces(session, 3) && session.state.forced_node == nullptr) dump_list(session, window, true);
}

void trace_next_rule(Session& session, int number) {
  if (traces(session, 3)) trace_line(session, ";;next rule #", Decimal(number));
}

void trace_next_entry(Session& session, Side side, int number) {
  if (traces(session, 3)) trace_line(session, ";;next entry for ", place_name(side), " #", Decimal(number));
}

void trace_next_entry_flushed(Session& session, Side side, int number) {
  if (!traces(session, 3)) return;
  trace_next_entry(session, side, number);
  out_flush(session);
}

void trace_clear_entries(Session& session, Side side, int number) {
  if (traces(session, 3)) trace_line(session, ";;clear all entries for ", place_name(side), " #", Decimal(number));
}

void trace_no_entry(Session& session, Side side) {
  if (!traces(session, 3)) return;
  trace_line(session, side == Side::right ? ";;no entry for rnode" : "#2;;no entry for lnode");
}

void trace_no_next_entry(Session& session, Side side) {
  if (!traces(session, 3)) return;
  trace_line(session, ";;no next entry for ", place_name(side), " #1");
  trace_next_rule(session, side == Side::right ? 1 : 2);
}

void trace_ignore_rules(Session& session) {
  if (traces(session, 3)) trace_line(session, ";;ignore all left possible rules for forced BT");
}

void trace_ignore_rules(Session& session, int number) {
  if (traces(session, 3)) trace_line(session, ";;ignore all left possible rules for forced BT #", Decimal(number));
}

void trace_forced_ends(Session& session) {
  if (traces(session, 3)) trace_line(session, ";;forced backtracking ends");
}

void trace_forced_ends_at_choice(Session& session) {
  if (traces(session, 3)) trace_line(session, ";;forced backtrackng ends");
}

void trace_forced_ends_at_right_entry(Session& session) {
  if (traces(session, 3)) trace_line(session, ";;forced backtracking ends at changing an entry in rnode");
}

void trace_forced_ends_in_window(Session& session, Side side) {
  if (!traces(session, 3)) return;
  trace_line(session, side == Side::right ? ";;forced breaktracking ends -- at rnode"
                                          : ";;forced backtracking ends -- at lnode");
}

}  // namespace lexon
