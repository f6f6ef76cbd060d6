#include "engine/trace.hpp"

#include <gtest/gtest.h>

#include <string>

#include "support/step.hpp"

namespace lexon::test {
namespace {

struct LineCase {
  const char* what;
  const char* list;
  const char* line;
};

class ListLine : public ::testing::TestWithParam<LineCase> {};

TEST_P(ListLine, ShowsEveryNodeInItsForm) {
  fresh_sentence();
  const List list(GetParam().list);
  Capture output;
  print_list_line({list.lnode, list.rnode});
  EXPECT_EQ(output.text(), std::string(GetParam().line) + "\n");
}

INSTANTIATE_TEST_SUITE_P(Table, ListLine,
                         ::testing::Values(LineCase{"Start", "[<<] [a=x/N] >>", "/[<<]/[a|cw=x]/>>/"},
                                           LineCase{"Middle", "<< a=x [b=y] [c] d >>", "/<</a|cw=x/[b|cw=y]/[c]/d/>>/"},
                                           LineCase{"End", "<< a [>>]", "/<</a/[>>]/"},
                                           LineCase{"BoundaryShowsNoConcept", "[<<] [>>=x]", "/[<<]/[>>]/"},
                                           LineCase{"ScopeInTheWindow", "[<<] [SCOPE:01] >>", "/[<<]/[SCOPE:01]/>>/"},
                                           LineCase{"ScopeOutside", "<< SCOPE:12 [a] [b] SCOPE:01 >>",
                                                    "/<</SCOPE:12/[a]/[b]/SCOPE:01/>>/"},
                                           LineCase{"WordInForce", "<< [a|x] [b|y] >>", "/<</[a]/[b]/>>/"},
                                           LineCase{"NodesBetweenThePlaces", "[<<] a [b] >>", "/[<<]/a/[b]/>>/"},
                                           LineCase{"NoText", "<< [/A] [b] >>", "/<</[]/[b]/>>/"}),
                         [](const auto& row) { return row.param.what; });

TEST(ListLineWithoutMasterList, ShowsNoConcept) {
  fresh_sentence();
  const List list("<< [a=x] [b=y] >>");
  list.lnode->entries = nullptr;
  Capture output;
  print_list_line({list.lnode, list.rnode});
  EXPECT_EQ(output.text(), "/<</[a]/[b|cw=y]/>>/\n");
}

TEST(ListLineWithOnePlace, BeginsOrEndsThere) {
  fresh_sentence();
  const List list("<< a [b] [c] d >>");
  Capture output;
  print_list_line({nullptr, list.rnode});
  print_list_line({list.lnode, nullptr});
  print_list_line({nullptr, nullptr});
  EXPECT_EQ(output.text(), "/[c]/d/>>/\n/<</a/[b]/c/d/>>/\n/\n");
}

// The line goes on with its next part where it meets the node.
TEST(NodeWithoutWords, IsTakenOutOfTheList) {
  fresh_sentence();
  const List list("<< a b [c] d e [f] g h >>");
  for (const std::size_t empty : {1U, 4U}) list.at(empty).candidates = nullptr;
  list.at(7).candidates = nullptr;
  Capture output;
  print_list_line({list.lnode, list.rnode});
  EXPECT_EQ(output.text(), "/<</[c]/[f]/\n");
  EXPECT_EQ(text_of_list(list.lnode), "<< b c e f  h >>");
}

TEST(BrokenList, IsReported) {
  fresh_sentence();
  const List list("a/N [b] [c]");
  list.at(0).left = &list.at(0);
  Capture output;
  print_list_line({list.lnode, list.rnode});
  EXPECT_EQ(output.text(), "[a]{}  \"\" (N) <.,0,0>;\n;;lnode loop\n");
}

std::string dumped(const Node* node, bool one) {
  Capture output;
  dump_node(node, one);
  return output.text();
}

std::string word_line(const std::string& hw) {
  return "[" + hw + "]{}  \"\" () <.,0,0>;\n";
}

TEST(NodeDump, ShowsTheWordInForceOrTheOpenWords) {
  fresh_sentence();
  EXPECT_EQ(dumped(nullptr, true), "");
  EXPECT_EQ(dumped(node_of_text("a|b|c"), true), word_line("a"));
  EXPECT_EQ(dumped(node_of_text("a|b|c"), false), word_line("a") + word_line("b") + word_line("c"));
  EXPECT_EQ(dumped(node_of_text("a|b|c(0m0)"), false), word_line("a"));
  EXPECT_EQ(dumped(node_of_text("a|b|c(1)"), false), word_line("a") + word_line("b"));
  EXPECT_EQ(dumped(node_of_text("a|b|c(101)"), false), word_line("a") + word_line("b") + word_line("c"));
  EXPECT_EQ(dumped(node_of_text("a(11)"), false), word_line("a"));
}

TEST(NodeDump, OfAScopeFollowsItsEntryNodes) {
  fresh_sentence();
  state.trace_level = 2;
  add_scope(1, node_of_text("SCOPE:02(0)"));
  add_scope(2, node_of_text("a|b"));
  add_scope(3, nullptr);
  add_scope(4, node_of_text("SCOPE:05"));
  add_scope(5, node_of_text("SCOPE:04"));
  const std::string candidates = "-- candidates of scope entry-node --\n";
  EXPECT_EQ(dumped(node_of_text("SCOPE:01"), true), word_line("SCOPE:01") + "-- entry of scope entry-node --\n" +
                                                        word_line("SCOPE:02") + candidates + word_line("a") +
                                                        word_line("b"));
  EXPECT_EQ(dumped(node_of_text("SCOPE:03"), true), word_line("SCOPE:03") + "No @entry in Scope\n");
  EXPECT_EQ(dumped(node_of_text("SCOPE:07"), true), word_line("SCOPE:07") + "No @entry in Scope\n");
  // References in a circle end too.
  const std::string circle = dumped(node_of_text("SCOPE:04"), true);
  EXPECT_EQ(circle.substr(circle.size() - 19), "No @entry in Scope\n");
}

std::string listed(const char* text, bool with_words) {
  fresh_sentence();
  sentence.semlst[0].number = 7;
  const List list(text);
  Capture output;
  dump_list({list.lnode, list.rnode}, with_words);
  const std::string all = output.text();
  const std::string frame = "====================================================\n";
  EXPECT_EQ(all.substr(0, all.find('\n') + 1), "=================== NODE LIST:07 ===================\n");
  return all.substr(all.find(frame) + frame.size());
}

TEST(ListDump, ShowsOpenWordsOnlyWhereTheyAreWanted) {
  const std::string head = "[<<]{}  \"\" (SHEAD) <.,0,0>;\n";
  EXPECT_EQ(listed("[<<] [a|b{@entry}] >>", true), "lnode >>>>>\n-- word candidates for lnode --\n" + head +
                                                       "rnode >>>>>\n@entry\n-- word candidates for rnode --\n" +
                                                       word_line("a") + word_line("b"));
  EXPECT_EQ(listed("[<<] [a|b{@entry}] >>", false), "lnode >>>>>\n" + head + "rnode >>>>>\n" + word_line("a"));
  // Graph attributes of a touched node show only at the very beginning.
  EXPECT_EQ(listed("[<<] [a|b{@entry}(0)] >>", true),
            "lnode >>>>>\n-- word candidates for lnode --\n" + head + "rnode >>>>>\n@entry\n" + word_line("a"));
  EXPECT_EQ(listed("[<<(0)] [a|b{@entry}(0)] >>", true), "lnode >>>>>\n" + head + "rnode >>>>>\n" + word_line("a"));
  EXPECT_EQ(listed("<< [a(0)] b", true),
            "lnode >>>>>\n" + word_line("a") + "rnode >>>>>\n-- word candidates for rnode --\n");
  EXPECT_EQ(listed("<< [a(0)] b", false), "lnode >>>>>\n" + word_line("a") + "rnode >>>>>\n");
}

TEST(OtherRules, LeaveOutThoseOfPostEdit) {
  const Step step("L{A}{}P3;\nPL{B}{}P2;\nR{C}{}P1;", "[a] [b]");
  RuleCandidate* last = Step::candidate_of(step.rule->next->next);
  RuleCandidate* list = Step::candidate_of(step.rule, Step::candidate_of(step.rule->next, last));
  Capture output;
  print_other_rules(list);
  print_other_rules(nullptr);
  EXPECT_EQ(output.text(),
            "-- other applicable rules --\nL{A:::}{:::}P3;\nR{C:::}{:::}P1;\n-- other applicable rules --\n");
}

// Every line that is not part of a list or a rule, at a level and one scope deep.
std::string all_lines(int level) {
  const Step step("L{}{}P1;", "[a] [b]");
  state.trace_level = static_cast<std::int8_t>(level);
  EXPECT_TRUE(trace_indent_grow());
  Capture output;
  trace_to_backtrack(true);
  trace_to_backtrack(false);
  trace_rule_end();
  trace_rule_end_flushed();
  for (const Side side : {Side::left, Side::right}) {
    trace_result_node(side, side == Side::left, nullptr);
    trace_shifted_node(side, nullptr);
    trace_no_matched_word(side);
    trace_scope_entered(side, 3);
    trace_scope_failed(side, 3);
  }
  trace_copied_node(nullptr);
  trace_scope_finished(3);
  trace_return_into_scope(3);
  trace_return_finished(3);
  trace_return_failed(3);
  trace_post_edit_entered(3);
  trace_post_edit_finished(3);
  trace_return_to_inner_scope();
  trace_search_taken_as_finished();
  for (const Side side : {Side::left, Side::right}) {
    trace_next_entry(side, 1);
    trace_next_entry_flushed(side, 2);
    trace_clear_entries(side, 3);
    trace_no_entry(side);
    trace_no_next_entry(side);
    trace_forced_ends_in_window(side);
  }
  trace_next_rule(31);
  trace_ignore_rules();
  trace_ignore_rules(3);
  trace_forced_ends();
  trace_forced_ends_at_choice();
  trace_forced_ends_at_right_entry();
  trace_backtrack_0(*step.candidate, {nullptr, nullptr});
  trace_backtrack_1(*step.candidate, {nullptr, nullptr});
  trace_backtrack_pair(*step.candidate, {nullptr, nullptr});
  trace_attrs_too_long(*step.rule);
  return output.text();
}

const std::string kAlways =
    "\t020906 to BackIntoScope\n"
    ";;semlst_cur:NULL -> Failed!\n";

const std::string kLevelTwo =
    "\t;;to backtrack!\n"
    "\t;;No Rule!\n"
    "\t====================================================\n"
    "\t====================================================\n"
    "\t>>>>> lnode  INSERTED\n"
    "\t>>>>> lnode  SHIFTED\n"
    "\t;;lnode No Matched Word!\n"
    "\t;;==>> SCOPE:03 - lnode:scope\n"
    "\t;;#2 Scope:03 failed\n"
    "\t>>>>> rnode\n"
    "\t>>>>> rnode  SHIFTED\n"
    "\t;;rnode No Matched Word!\n"
    "\t;;==>> SCOPE:03 - rnode:scope\n"
    "\t;;#1 Scope:03 failed\n"
    "\t>>>>> copied node\n"
    "\t;;<<== SCOPE:03\n"
    "\t;;backtrack into SCOPE:03\n"
    "\t;;backtrack <<== SCOPE:03\n"
    "\t;;#3 Scope:03 failed\n"
    "\t;;==>> PostEdit SCOPE:03\n"
    "\t;;<<== PostEdit SCOPE:03\n";

const std::string kLevelThree =
    "\t;;next entry for lnode #1\n"
    "\t;;next entry for lnode #2\n"
    "\t;;clear all entries for lnode #3\n"
    "\t#2;;no entry for lnode\n"
    "\t;;no next entry for lnode #1\n"
    "\t;;next rule #2\n"
    "\t;;forced backtracking ends -- at lnode\n"
    "\t;;next entry for rnode #1\n"
    "\t;;next entry for rnode #2\n"
    "\t;;clear all entries for rnode #3\n"
    "\t;;no entry for rnode\n"
    "\t;;no next entry for rnode #1\n"
    "\t;;next rule #1\n"
    "\t;;forced breaktracking ends -- at rnode\n"
    "\t;;next rule #31\n"
    "\t;;ignore all left possible rules for forced BT\n"
    "\t;;ignore all left possible rules for forced BT #3\n"
    "\t;;forced backtracking ends\n"
    "\t;;forced backtrackng ends\n"
    "\t;;forced backtracking ends at changing an entry in rnode\n"
    "\t==================== BACKTRACK-0 =====================\n"
    "\tL{:::}{:::}P1;\n"
    "\t<<<<< lnode\n"
    "\t<<<<< rnode\n"
    "\t==================== BACKTRACK-1 =====================\n"
    "\tL{:::}{:::}P1;\n"
    "\t<<<<< lnode\n"
    "\t<<<<< rnode\n"
    "\t==================== BACKTRACK ====================\n"
    "\tL{:::}{:::}P1;\n"
    "\t<<<<< lnode\n"
    "\t<<<<< rnode\n"
    "\t;;attributes will be longer the 1024\n"
    ";;the following rule will be not applied\n"
    "\tL{:::}{:::}P1;\n";

TEST(FixedTexts, AppearFromTheirLevelOn) {
  EXPECT_EQ(all_lines(0), kAlways);
  EXPECT_EQ(all_lines(1), kAlways);
  EXPECT_EQ(all_lines(2), kLevelTwo + kAlways);
  EXPECT_EQ(all_lines(3), kLevelTwo + kAlways + kLevelThree);
}

TEST(AppliedRule, ShowsTheRulesBehindItFromLevelFourOn) {
  const Step step("L{}{}P9;\nPL{}{}P8;\nR{}{}P7;", "[a] [b]");
  RuleCandidate* last = Step::candidate_of(step.rule->next->next);
  RuleCandidate* post_edit = Step::candidate_of(step.rule->next, last);
  RuleCandidate* first = Step::candidate_of(step.rule, post_edit);
  const std::string banner = "==================== APPLIED RULE ==================\n";
  Capture output;
  state.trace_level = 3;
  trace_rule_applied(*first);
  state.trace_level = 4;
  trace_rule_applied(*first);
  trace_rule_applied(*post_edit);
  EXPECT_EQ(output.text(), banner + "L{:::}{:::}P9;\n" + banner +
                               "L{:::}{:::}P9;\n-- other applicable rules --\nR{:::}{:::}P7;\n" + banner +
                               "PL{:::}{:::}P8;\n");
}

TEST(ListAfterUndo, IsLeftOutWhileABacktrackingIsForced) {
  fresh_sentence();
  const List list("[<<] [a] >>");
  state.trace_level = 3;
  Capture output;
  state.forced_node = list.rnode;
  trace_list_after_undo({list.lnode, list.rnode});
  EXPECT_EQ(output.text(), "");
  state.forced_node = nullptr;
  trace_list_after_undo({list.lnode, list.rnode});
  EXPECT_NE(output.text(), "");
}

}  // namespace
}  // namespace lexon::test
