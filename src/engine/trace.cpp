#include "engine/trace.hpp"

#include "data/output.hpp"
#include "data/state.hpp"
#include "rules/print.hpp"

namespace lexon {

namespace {

[[nodiscard]] bool traces(int level) {
  return state.trace_level >= level;
}

[[nodiscard]] const char* place_name(Side side) {
  return side == Side::left ? "lnode" : "rnode";
}

void print_undone_node(Side side, const Node* node) {
  out_print("%s<<<<< %s\n", state.trace_indent, place_name(side));
  dump_node(node, false);
}

// The part of a backtracking banner behind its first line.
void print_undone_step(const RuleCandidate& candidate, const Window& window) {
  rule_stack_print(&candidate, true);
  print_undone_node(Side::left, window.lnode);
  print_undone_node(Side::right, window.rnode);
}

}  // namespace

void trace_list(const Window& window, bool with_words) {
  if (traces(2)) dump_list(window, with_words);
}

void trace_rule_applied(const RuleCandidate& candidate) {
  if (!traces(2)) return;
  out_print("%s==================== APPLIED RULE ==================\n", state.trace_indent);
  rule_stack_print(&candidate, true);
  if (traces(4) && !is_post_edit_type(candidate.rule->type)) print_other_rules(candidate.next);
}

void trace_rule_end() {
  if (traces(2)) out_print("%s====================================================\n", state.trace_indent);
}

void trace_rule_end_flushed() {
  if (!traces(2)) return;
  trace_rule_end();
  out_flush();
}

void trace_result_node(Side side, bool inserted, const Node* node) {
  if (!traces(2)) return;
  out_print("%s>>>>> %s%s", state.trace_indent, place_name(side), inserted ? "  INSERTED\n" : "\n");
  dump_node(node, true);
}

void trace_copied_node(const Node* copy) {
  if (!traces(2)) return;
  out_print("%s>>>>> copied node\n", state.trace_indent);
  dump_node(copy, true);
}

void trace_shifted_node(Side side, const Node* node) {
  if (!traces(2)) return;
  out_print("%s>>>>> %s  SHIFTED\n", state.trace_indent, place_name(side));
  dump_node(node, true);
}

void trace_to_backtrack(bool has_candidate) {
  if (!traces(2)) return;
  out_print(has_candidate ? "%s;;to backtrack!\n" : "%s;;No Rule!\n", state.trace_indent);
  out_flush();
}

void trace_no_matched_word(Side side) {
  if (traces(2)) out_print("%s;;%s No Matched Word!\n", state.trace_indent, place_name(side));
}

void trace_scope_entered(Side side, int scope) {
  if (!traces(2)) return;
  out_print("%s;;==>> SCOPE:%02d - %s:scope\n", state.trace_indent, scope, place_name(side));
  out_flush();
}

void trace_scope_failed(Side side, int scope) {
  if (traces(2)) out_print("%s;;#%d Scope:%02d failed\n", state.trace_indent, side == Side::right ? 1 : 2, scope);
}

void trace_scope_finished(int scope) {
  if (traces(2)) out_print("%s;;<<== SCOPE:%02d\n", state.trace_indent, scope);
}

void trace_return_into_scope(int scope) {
  if (!traces(2)) return;
  out_print("%s;;backtrack into SCOPE:%02d\n", state.trace_indent, scope);
  out_flush();
}

void trace_return_finished(int scope) {
  if (traces(2)) out_print("%s;;backtrack <<== SCOPE:%02d\n", state.trace_indent, scope);
}

void trace_return_failed(int scope) {
  if (traces(2)) out_print("%s;;#3 Scope:%02d failed\n", state.trace_indent, scope);
}

void trace_post_edit_entered(int scope) {
  if (traces(2)) out_print("%s;;==>> PostEdit SCOPE:%02d\n", state.trace_indent, scope);
}

void trace_post_edit_finished(int scope) {
  if (traces(2)) out_print("%s;;<<== PostEdit SCOPE:%02d\n", state.trace_indent, scope);
}

void trace_return_to_inner_scope() {
  out_print("%s020906 to BackIntoScope\n", state.trace_indent);
  out_flush();
}

void trace_search_taken_as_finished() {
  out_print(";;semlst_cur:NULL -> Failed!\n");
}

void trace_attrs_too_long(const Rule& rule) {
  if (!traces(3)) return;
  out_print("%s;;attributes will be longer the %d\n;;the following rule will be not applied\n", state.trace_indent,
            kAttrLimit);
  out_flush();
  rule_print(&rule, true);
}

void trace_backtrack_0(const RuleCandidate& candidate, const Window& window) {
  if (!traces(3)) return;
  out_print("%s==================== BACKTRACK-0 =====================\n", state.trace_indent);
  print_undone_step(candidate, window);
  out_flush();
}

void trace_backtrack_1(const RuleCandidate& candidate, const Window& window) {
  if (!traces(3)) return;
  out_print("%s==================== BACKTRACK-1 =====================\n", state.trace_indent);
  out_flush();
  rule_stack_print(&candidate, true);
  out_flush();
  print_undone_node(Side::left, window.lnode);
  out_flush();
  print_undone_node(Side::right, window.rnode);
  out_flush();
}

void trace_backtrack_pair(const RuleCandidate& candidate, const Window& window) {
  if (!traces(3)) return;
  out_print("%s==================== BACKTRACK ====================\n", state.trace_indent);
  print_undone_step(candidate, window);
  out_flush();
}

void trace_list_after_undo(const Window& window) {
  if (traces(3) && state.forced_node == nullptr) dump_list(window, true);
}

void trace_next_rule(int number) {
  if (traces(3)) out_print("%s;;next rule #%d\n", state.trace_indent, number);
}

void trace_next_entry(Side side, int number) {
  if (traces(3)) out_print("%s;;next entry for %s #%d\n", state.trace_indent, place_name(side), number);
}

void trace_next_entry_flushed(Side side, int number) {
  if (!traces(3)) return;
  trace_next_entry(side, number);
  out_flush();
}

void trace_clear_entries(Side side, int number) {
  if (traces(3)) out_print("%s;;clear all entries for %s #%d\n", state.trace_indent, place_name(side), number);
}

void trace_no_entry(Side side) {
  if (!traces(3)) return;
  out_print(side == Side::right ? "%s;;no entry for rnode\n" : "%s#2;;no entry for lnode\n", state.trace_indent);
}

void trace_no_next_entry(Side side) {
  if (!traces(3)) return;
  out_print("%s;;no next entry for %s #1\n", state.trace_indent, place_name(side));
  trace_next_rule(side == Side::right ? 1 : 2);
}

void trace_ignore_rules() {
  if (traces(3)) out_print("%s;;ignore all left possible rules for forced BT\n", state.trace_indent);
}

void trace_ignore_rules(int number) {
  if (traces(3)) out_print("%s;;ignore all left possible rules for forced BT #%d\n", state.trace_indent, number);
}

void trace_forced_ends() {
  if (traces(3)) out_print("%s;;forced backtracking ends\n", state.trace_indent);
}

void trace_forced_ends_at_choice() {
  if (traces(3)) out_print("%s;;forced backtrackng ends\n", state.trace_indent);
}

void trace_forced_ends_at_right_entry() {
  if (traces(3)) out_print("%s;;forced backtracking ends at changing an entry in rnode\n", state.trace_indent);
}

void trace_forced_ends_in_window(Side side) {
  if (!traces(3)) return;
  out_print(side == Side::right ? "%s;;forced breaktracking ends -- at rnode\n"
                                : "%s;;forced backtracking ends -- at lnode\n",
            state.trace_indent);
}

}  // namespace lexon
