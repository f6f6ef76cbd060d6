#include "engine/loop.hpp"

#include "data/words.hpp"
#include "engine/scope_entry.hpp"
#include "support/grammar.hpp"
#include "support/step.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

struct WalkCase {
  const char* what;
  const char* rules;
  const char* entry;
  Status status;
  const char* list;
};

TEST(Walk, EndsWithItsListAndStatus) {
  const WalkCase rows[] = {
      {"WithoutARule", "L{Q}{}P1;", "a/A", Status::nothing_left, "<< a/A >>"},
      {"WithRulesOfPostEditAlone", "PR{}{}P1;", "a/A", Status::nothing_left, "<< a/A >>"},
      {"ToTheEnd", "R{SHEAD}{A}P2;\nR{A}{STAIL}P1;", "a/A", Status::ok, "<<(0) a/A(00) >>(0)"},
      // The test takes the first word away, and the rules are asked again for the same window.
      {"BehindAWordTest", "?R{SHEAD}{B}P3;\nR{SHEAD}{A}P2;\nR{A}{STAIL}P1;", "b/B|a/A", Status::ok, "<<(00) a/A(000) >>(0)"},
      // A window with B on its left is refused, and the search goes back until the word is another one.
      {"ForcedBackToAnotherWord", "?L{B}{STAIL}P9;\nR{SHEAD}{W}P5;\nR{W}{STAIL}P1;", "b/B,W|a/W", Status::ok, "<<(0) a/W(00) >>(0)"},
      {"ForcedBackWithoutAnotherWord", "?L{B}{STAIL}P9;\nR{SHEAD}{W}P5;\nR{W}{STAIL}P1;", "b/B,W", Status::nothing_left, "<< b/B,W >>"},
  };
  for (const WalkCase& row : rows) {
    SCOPED_TRACE(row.what);

    use_rules(row.rules);
    Node* entry = node_of_text(row.entry);
    session.sentence.semlst[0].entry = entry;
    EXPECT_EQ(generate_scope(session, entry, false), row.status);
    EXPECT_EQ(text_of_list(entry), row.list);
  }
}

// It stays the target and equals no node: no word and no rule is tried on the way back. The window is not at the
// beginning, so the search counts as finished.
TEST(Walk, WithATargetThatIsGoneCountsAsFinished) {
  use_rules("?L{B}{STAIL}P9;\nR{SHEAD}{W}P5;\nR{W}{STAIL}P1;");
  session.state.forced_node = &session.gone;
  Capture output;
  EXPECT_EQ(generate_scope(session, node_of_text("b/B,W|a/W"), false), Status::ok);
  EXPECT_EQ(output.text(), ";;semlst_cur:NULL -> Failed!\n");
  EXPECT_EQ(session.state.forced_node, &session.gone);
}

// The way back to a target that is gone takes the inserted word out of the list, and its place in the window with it.
TEST(Walk, WithATargetThatIsGoneForgetsAnInsertedWord) {
  use_rules("?R{SHEAD}{D}P2;\n:\"[x],D:::\"{W}P1;");
  session.state.forced_node = &session.gone;
  Capture output;
  Node* entry = node_of_text("a/W");
  EXPECT_EQ(generate_scope(session, entry, false), Status::nothing_left);
  EXPECT_EQ(text_of_list(entry), "<< a/W >>");
}

// The search tries one word after the other: every try takes its rules, its records and a changed word from the pool.
TEST(Walk, GivesBackWhatATryTakes) {
  const auto bytes_of_search = [](int tries) {
    use_rules("R{SHEAD}{W:+S:}P5;\n?{W}{STAIL}(NEVER)P4;\nR(NEVER){W}{STAIL}P3;\nR{A}{STAIL}P1;");
    std::string words;
    for (int i = 0; i < tries; ++i) words += "b/W|";
    Node* entry = node_of_text(words + "a/A,W");
    const std::int64_t before = session.pool.bytes_used();
    EXPECT_EQ(generate_scope(session, entry, false), Status::ok);
    EXPECT_EQ(text_of_list(entry), "<<(0) a/S,A,W|a/A,W(01) >>(0)");
    return session.pool.bytes_used() - before;
  };
  EXPECT_EQ(bytes_of_search(100), bytes_of_search(10));
}

TEST(Walk, LeavesAtOnceWhenAsked) {
  use_rules("R{SHEAD}{A}P2;\nR{A}{STAIL}P1;");
  const List list("[<<] [a/A] >>");
  session.state.trace_level = 4;
  Capture output;
  std::int32_t home_scope = 0;
  session.stop_requested = true;
  EXPECT_EQ(engine_loop(session, nullptr, {list.lnode, list.rnode}, home_scope), Status::stopped);
  session.stop_requested = false;
  session.state.stack_limit = static_cast<const char*>(__builtin_frame_address(0));
  EXPECT_EQ(generate_scope(session, list.rnode, false), Status::memory);
  // Every loop around it leaves as well.
  session.state.stack_limit = nullptr;
  EXPECT_EQ(engine_loop(session, nullptr, {list.lnode, list.rnode}, home_scope), Status::memory);
  EXPECT_EQ(output.text(), "");
}

TEST(Beginning, IsAnUntouchedWindowAtTheLeftEnd) {
  const auto at_beginning = [](const char* text) {
    fresh_sentence();
    const List list(text);
    return is_at_beginning({list.lnode, list.rnode});
  };
  EXPECT_TRUE(at_beginning("[<<] [a]"));
  EXPECT_TRUE(at_beginning("[<<] [a(2)]"));
  EXPECT_TRUE(at_beginning("[<<]"));
  EXPECT_FALSE(at_beginning("[<<] [a(0)]"));
  EXPECT_FALSE(at_beginning("[<<(m)] [a]"));
  EXPECT_FALSE(at_beginning("[a] [b]"));
  EXPECT_FALSE(is_at_beginning({nullptr, nullptr}));
}

// ---- Scopes

// The rules of every scope below: they walk over an entry word with the attribute E. The rule that enters the scope
// asks for an attribute that nothing in the scope has.
constexpr const char* kScopeRules = "\nR{CHEAD}{E}P9;\nR{E}{CTAIL}P8;";

// A window with a reference to scope 1, and the scope's entry.
struct Scene {
  List list;
  Node* entry;
  Window window;
  RuleCandidate* candidate;
  Side side;
  std::int32_t home_scope = -1;

  Scene(const char* text, const char* entry_text)
      : list(text),
        entry(node_of_text(entry_text)),
        window{list.lnode, list.rnode},
        candidate(Step::candidate_of(grammar.index.matrix.rules)),
        side(is_scope_reference(*window.rnode) ? Side::right : Side::left) {
    add_scope(1, entry);
  }

  ScopeResult enter() { return scope_enter(session, side, window, *candidate, home_scope); }
  [[nodiscard]] const Node& ref() const { return *(side == Side::right ? window.rnode : window.lnode); }
};

struct HandCase {
  const char* what;
  const char* rule;
  const char* list;
  const char* entry;
  const char* ref_after;
  const char* entry_block_after;
};

TEST(HandedIn, AttributesGoInAndComeOutAgain) {
  const HandCase rows[] = {
      {"NothingAdded", ":{Z}\"[q]\"P99;", "[a] [SCOPE:01/A{R}]", "e/E{1:@entry,V}", "SCOPE:01/A,V,E{R}", "@entry,V"},
      {"AnAddition", ":{Z}\"[q]:+x\"P99;", "[a] [SCOPE:01/A{R}]", "e/E{1:@entry,V}", "SCOPE:01/A,x,;,V,E{R}", "@entry,V,;,x"},
      {"ASurfaceFormIsATextLikeOthers", ":{Z}\"[q]:[it]\"P99;", "[a] [SCOPE:01/A{R}]", "e/E{1:@entry,V}", "SCOPE:01/A,it,;,V,E{R}", "@entry,V,;,it"},
      {"ADeletionIsNotHandedIn", ":{Z}\"[q]:-A\"P99;", "[a] [SCOPE:01/A{R}]", "e/E{1:@entry,V}", "SCOPE:01/A,V,;,E{R}", "@entry,V,;"},
      {"PresentOnTheRight", ":{Z}\"[q]:+A\"P99;", "[a] [SCOPE:01/A{R}]", "e/E{1:@entry,V}", "SCOPE:01/A,V,;,E{R}", "@entry,V,;"},
      {"PresentOnTheLeft", ":\"[q]:+A\"{Z}P99;", "[SCOPE:01/A{R}] [b]", "e/E{1:@entry,V}", "SCOPE:01/A,A,;,V,E{R}", "@entry,V,;,A"},
      {"AddedByEarlierRules", ":{Z}\"[q]\"P99;", "[a] [SCOPE:01/y,;,A{R}]", "e/E{1:@entry,V}", "SCOPE:01/A,y,;,V,E{R,;,y}", "@entry,V,;,y"},
      {"AddedByBoth", ":{Z}\"[q]:+x\"P99;", "[a] [SCOPE:01/y,;,A{R}]", "e/E{1:@entry,V}", "SCOPE:01/A,x,y,;,V,E{R,;,y}", "@entry,V,;,x,y"},
      {"OfAnEarlierEntry", ":{Z}\"[q]\"P99;", "[a] [SCOPE:01/A{R,;,y}]", "e/E{1:@entry,V}", "SCOPE:01/A,y,;,V,E{R,;,y}", "@entry,V,;,y"},
      {"LeftBehindIsRemoved", ":{Z}\"[q]\"P99;", "[a] [SCOPE:01/A{R}]", "e/E{1:@entry,V,;,old}", "SCOPE:01/A,V,E{R}", "@entry,V"},
      {"TheScopesBlockComesToTheFront", ":{Z}\"[q]:+x\"P99;", "[a] [SCOPE:01/A]", "e/E{top}{1:@entry}", "SCOPE:01/A,x,;,E", "@entry,;,x"},
  };
  for (const HandCase& row : rows) {
    SCOPED_TRACE(row.what);

    use_rules(std::string(row.rule) + kScopeRules);
    Scene scene(row.list, row.entry);
    const ScopeResult result = scene.enter();
    EXPECT_EQ(result.status, Status::ok);
    EXPECT_EQ(text_of_node(&scene.ref()), row.ref_after);
    EXPECT_STREQ(head_text(*scene.entry), row.entry_block_after);
    EXPECT_EQ(text_of_words(scene.entry->left->candidates), "<</CHEAD");
    EXPECT_EQ(session.state.semlst_cur, 0);
    EXPECT_EQ(scene.home_scope, 0);
    EXPECT_EQ(session.state.trace_depth, 0);
  }
}

TEST(HandedIn, StaysInTheBlock) {
  use_rules(":{Z}\"[q]:+123456,+789\"P99;" + std::string(kScopeRules));
  const std::string block = "e/E{1:" + std::string(1018, 'q') + "}";
  Scene scene("[a] [SCOPE:01/A]", block.c_str());
  EXPECT_EQ(scene.enter().status, Status::ok);
  EXPECT_EQ(head_text(*scene.entry), std::string(1018, 'q') + ",;,123");
}

TEST(ScopeEntry, FollowsTheSizesOfTheReference) {
  use_rules(":{Z}\"[q]\"P99;" + std::string(kScopeRules));
  Scene scene("[a] [SCOPE:01/A]", "e/E{1:@entry}");
  EXPECT_EQ(scene.enter().status, Status::ok);
  const WordEntry& word = *scene.ref().candidates;
  EXPECT_STREQ(word.attrs, "A,E");
  EXPECT_EQ(word.attr_len, 3);
  EXPECT_EQ(word.attr_block_size, 3 + 12);
  EXPECT_EQ(word.total_size, 8 + 3 + 12 + 10);
}

TEST(ScopeEntry, OfAUsedEntryTakesACopyOfIt) {
  use_rules(":{Z}\"[q]\"P99;" + std::string(kScopeRules));
  Scene scene("[a] [SCOPE:01/A]", "e/E{1:@entry}(0)");
  EXPECT_EQ(scene.enter().status, Status::ok);
  const Node* copy = session.sentence.semlst[1].entry;
  EXPECT_EQ(copy->origin, scene.entry);
  EXPECT_EQ(scene.entry->left, nullptr);
}

TEST(FailedScope, TakesBackWhatWasHandedIn) {
  const auto failed = [](const char* rule, const char* list) {
    use_rules(rule);
    Scene scene(list, "e/E{1:@entry,V}");
    session.state.trace_level = 2;
    Capture output;
    const ScopeResult result = scene.enter();
    EXPECT_EQ(result.status, Status::nothing_left);
    EXPECT_TRUE(result.wants_undo);
    EXPECT_STREQ(head_text(*scene.entry), "@entry,V");
    EXPECT_EQ(session.state.semlst_cur, 0);
    const std::string text = output.text();
    return text.substr(text.rfind("\n\t") + 1);
  };
  EXPECT_EQ(failed(":{Z}\"[q]:+x\"P99;", "[a] [SCOPE:01/y,;,A]"), "\t;;No Rule!\n;;#1 Scope:01 failed\n");
  EXPECT_EQ(failed(":\"[q]:+x\"{Z}P99;", "[SCOPE:01/y,;,A] [b]"), "\t;;No Rule!\n;;#2 Scope:01 failed\n");
}

// Nothing is undone and nothing more is printed.
TEST(FailedScope, OfALostSentenceSaysNothing) {
  use_rules(":{Z}\"[q]\"P99;" + std::string(kScopeRules));
  Scene scene("[a] [SCOPE:01/A]", "e/E{1:@entry}");
  session.state.trace_level = 2;
  Capture output;
  session.stop_requested = true;
  const ScopeResult stopped = scene.enter();
  session.stop_requested = false;
  EXPECT_EQ(stopped.status, Status::stopped);
  EXPECT_FALSE(stopped.wants_undo);
  EXPECT_EQ(output.text().find("failed"), std::string::npos);
}

TEST(FailedScope, BeyondTheDeepestIndentEndsTheSentence) {
  use_rules(":{Z}\"[q]\"P99;" + std::string(kScopeRules));
  Scene scene("[a] [SCOPE:01/A]", "e/E{1:@entry}");
  while (trace_indent_grow(session)) continue;
  EXPECT_EQ(scene.enter().status, Status::memory);
  EXPECT_EQ(must_leave(session), Status::memory);
}

TEST(FailedScope, WithoutAnEntryFailsTheRuleBase) {
  use_rules(":{Z}\"[q]\"P99;" + std::string(kScopeRules));
  Scene scene("[a] [SCOPE:01/A]", "e/E{1:@entry}");
  session.sentence.semlst[1].entry = nullptr;
  Capture output;
  EXPECT_EQ(scene.enter().status, Status::rule_base);
}

struct WhichCase {
  const char* what;
  const char* rule;
  const char* list;
  bool built;
  std::optional<Side> side;
};

TEST(ScopeToEnter, IsThatOfAReferenceThatTheRuleBringsIn) {
  const WhichCase rows[] = {
      {"InsertedRight", ":{}\"[q]\"P1;", "[a] [SCOPE:01]", true, Side::right},
      {"InsertedLeft", ":\"[q]\"{}P1;", "[SCOPE:01] [b]", true, Side::left},
      {"OpenRight", ":{A:-A}{}P1;", "[a] [SCOPE:01]", false, Side::right},
      {"OpenLeft", ":{A:-A}{}P1;", "[SCOPE:01] [b]", false, Side::left},
      {"RightComesFirst", ":{A:-A}{}P1;", "[SCOPE:01] [SCOPE:01]", false, Side::right},
      {"BuiltRight", ":{A:-A}{}P1;", "[a] [SCOPE:01]", true, std::nullopt},
      {"OpenBesideAnInsertedNode", ":\"[q]\"{}P1;", "[a] [SCOPE:01]", false, std::nullopt},
      {"AnotherType", "L{}{}P1;", "[a] [SCOPE:01]", false, std::nullopt},
      {"NoReference", ":{}\"[q]\"P1;", "[a] [b]", false, std::nullopt},
  };
  for (const WhichCase& row : rows) {
    SCOPED_TRACE(row.what);

    const Step step(row.rule, row.list);
    const List scope(row.built ? "<< [e(0)] >>" : "<< [e] >>");
    add_scope(1, scope.lnode);
    EXPECT_EQ(scope_to_enter(session, step.window, *step.rule), row.side);
    for (Node* node : step.list.nodes) node->origin = node;
    EXPECT_EQ(scope_to_enter(session, step.window, *step.rule), std::nullopt) << "copies are never entered";
  }
}

}  // namespace
}  // namespace lexon::test
