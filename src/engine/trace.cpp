#include "engine/trace.hpp"

#include <array>

#include "data/output.hpp"
#include "data/session.hpp"
#include "rules/candidates.hpp"
#include "rules/print.hpp"

namespace lexon {

namespace {

// Asked before anything is put together: a level that does not print costs a comparison.
[[nodiscard]] bool traces(Session& session, int level) {
  return session.state.trace_level >= level;
}

[[nodiscard]] const char* place_name(Side side) {
  return side == Side::left ? "lnode" : "rnode";
}

}  // namespace

void trace_list(Session& session, const Window& window, bool with_words) {
  if (traces(session, 2)) dump_list(session, window, with_words);
}

void trace_rule_applied(Session& session, const RuleCandidate& candidate) {
  if (!traces(session, 2)) return;
  trace_line(session, "==================== APPLIED RULE ==================");
  rule_stack_print(session, &candidate, true);
  if (!traces(session, 4) || is_post_edit_type(candidate.rule->type)) return;
  // The rules behind the applied one, but for those of post-edit.
  // wanted: the headline stands there without a rule behind it, too
  trace_line(session, "-- other applicable rules --");
  for_each_rule_behind(session, candidate, [&](const Rule& rule) {
    if (is_post_edit_type(rule.type)) return;
    rule_print(session, &rule, true);
    out_flush(session);
  });
}

void trace_rule_end(Session& session) {
  if (traces(session, 2)) trace_line(session, "====================================================");
}

void trace_result_node(Session& session, Side side, Result result, const Node* node) {
  if (!traces(session, 2)) return;
  constexpr std::array<const char*, 3> kTexts = {"", "  INSERTED", "  SHIFTED"};
  trace_line(session, ">>>>> ", place_name(side), kTexts[static_cast<std::size_t>(result)]);
  dump_node(session, node, true);
}

void trace_copied_node(Session& session, const Node* copy) {
  if (!traces(session, 2)) return;
  trace_line(session, ">>>>> copied node");
  dump_node(session, copy, true);
}

void trace_to_backtrack(Session& session, bool has_candidate) {
  if (!traces(session, 2)) return;
  trace_line(session, has_candidate ? ";;to backtrack!" : ";;No Rule!");
  out_flush(session);
}

void trace_no_matched_word(Session& session, Side side) {
  if (traces(session, 2)) trace_line(session, ";;", place_name(side), " No Matched Word!");
}

void trace_scope(Session& session, ScopeStep step, int scope) {
  if (!traces(session, 2)) return;
  struct Line {
    const char* before;
    const char* behind;
    bool is_flushed;
  };
  // In the order of `ScopeStep`.
  constexpr std::array<Line, 7> kLines = {{
      {";;==>> SCOPE:", " - lnode:scope", true},
      {";;==>> SCOPE:", " - rnode:scope", true},
      {";;<<== SCOPE:", "", false},
      {";;backtrack into SCOPE:", "", true},
      {";;backtrack <<== SCOPE:", "", false},
      {";;==>> PostEdit SCOPE:", "", false},
      {";;<<== PostEdit SCOPE:", "", false},
  }};
  const Line& line = kLines[static_cast<std::size_t>(step)];
  trace_line(session, line.before, Decimal(scope, 2), line.behind);
  if (line.is_flushed) out_flush(session);
}

// wanted: "Scope" here, and "SCOPE" in all other lines
void trace_scope_failed(Session& session, int number, int scope) {
  if (traces(session, 2)) trace_line(session, ";;#", Decimal(number), " Scope:", Decimal(scope, 2), " failed");
}

void trace_return_to_inner_scope(Session& session) {
  trace_line(session, "020906 to BackIntoScope");
  out_flush(session);
}

void trace_search_taken_as_finished(Session& session) {
  // wanted: not indented, unlike all other lines of a search
  out_text(session, ";;semlst_cur:NULL -> Failed!\n");
}

void trace_attrs_too_long(Session& session, const Rule& rule) {
  if (!traces(session, 3)) return;
  // wanted: the second line has no indent
  out_text(session, trace_indent(session), ";;attributes will be longer the ", Decimal(kAttrLimit),
           "\n;;the following rule will be not applied\n");
  out_flush(session);
  rule_print(session, &rule, true);
}

void trace_backtrack(Session& session, Undoing what, const RuleCandidate& candidate, const Window& window) {
  if (!traces(session, 3)) return;
  // wanted: the banners are not of one width, and that of an application is flushed line by line.
  constexpr std::array<const char*, 3> kTexts = {
      "==================== BACKTRACK-0 =====================",
      "==================== BACKTRACK-1 =====================", "==================== BACKTRACK ===================="};
  const bool flushes_lines = what == Undoing::application;
  trace_line(session, kTexts[static_cast<std::size_t>(what)]);
  if (flushes_lines) out_flush(session);
  rule_stack_print(session, &candidate, true);
  for (const Side side : {Side::left, Side::right}) {
    if (flushes_lines) out_flush(session);
    trace_line(session, "<<<<< ", place_name(side));
    dump_node(session, node_of(window, side), false);
  }
  out_flush(session);
}

void trace_next_rule(Session& session, int number) {
  if (traces(session, 3)) trace_line(session, ";;next rule #", Decimal(number));
}

void trace_word_change(Session& session, WordChange change, Side side, int number) {
  if (!traces(session, 3)) return;
  const char* what = change == WordChange::next ? ";;next entry for " : ";;clear all entries for ";
  trace_line(session, what, place_name(side), " #", Decimal(number));
}

void trace_no_entry(Session& session, Side side) {
  if (!traces(session, 3)) return;
  // wanted: the left one alone has a number, in front
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

void trace_forced_ends(Session& session, ForcedEnd end) {
  if (!traces(session, 3)) return;
  // wanted: the lines are spelled differently.
  constexpr std::array<const char*, 5> kTexts = {";;forced backtracking ends", ";;forced backtrackng ends",
                                                 ";;forced backtracking ends at changing an entry in rnode",
                                                 ";;forced backtracking ends -- at lnode",
                                                 ";;forced breaktracking ends -- at rnode"};
  trace_line(session, kTexts[static_cast<std::size_t>(end)]);
}

}  // namespace lexon
