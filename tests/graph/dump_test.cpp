#include <gtest/gtest.h>

#include <string>

#include "data/sentence.hpp"
#include "data/state.hpp"
#include "graph/graph_dump.hpp"
#include "support/capture.hpp"
#include "support/graph_text.hpp"

namespace lexon::test {
namespace {

// The marks that stand on arcs and nodes.
int marks() {
  int count = 0;
  for (int i = 0; i < sentence.graph_relation_count; ++i) {
    count += sentence.graph_relations[static_cast<std::size_t>(i)]->used;
  }
  for (int i = 0; i < sentence.graph_node_count; ++i) {
    count += is_marked(*sentence.graph_nodes[static_cast<std::size_t>(i)]);
  }
  return count;
}

// The dumps of all scopes that have an entry.
std::string dump() {
  Capture capture;
  for (int i = 0; i < sentence.semlst_count; ++i) {
    const ScopeRow& row = sentence.semlst[static_cast<std::size_t>(i)];
    if (row.entry == nullptr) break;
    graph_dump(*row.entry, 0, row.number, "");
    graph_marks_clear(row.entry, row.number);
  }
  return capture.text();
}

struct DumpRow {
  const char* name;
  const char* lines;
  const char* dump;
};

class Dump : public ::testing::TestWithParam<DumpRow> {};

TEST_P(Dump, IsATreeAndLeavesNoMarks) {
  ASSERT_EQ(graph_of_lines(GetParam().lines).output, "");
  EXPECT_EQ(dump(), GetParam().dump);
  EXPECT_EQ(marks(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Dump,
    ::testing::Values(
        DumpRow{"one_node", "[W]\na.@entry\n[/W]\n", "a(@entry)\n"},
        DumpRow{"children_behind_their_node", "r1(a.@entry,b)\nr2(c,a)\nr3(b,d)\nr4(d,e)\n",
                "a(@entry,>r1,<r2)\n"
                "  -r1>b(<r1,>r3)\n"
                "         -r3>d(<r3,>r4)\n"
                "                -r4>e(<r4)\n"
                "  <r2-c(>r2)\n"},
        DumpRow{"numbers_and_references", "r1(a:0A.@entry,:01)\n", "a:0A(,@entry,>r1)\n  -r1>:01(<r1)\n"},
        DumpRow{"a_circle_of_two", "r1(a.@entry,b)\nr2(b,a)\n",
                "a(@entry,>r1,<r2)\n"
                "  -r1>b(<r1,>r2)\n"
                "  <r2-[b(<r1,>r2)]\n"},
        DumpRow{"a_circle_of_three", "r1(a.@entry,b:01)\nr2(b:01,c)\nr3(c,a)\n",
                "a(@entry,>r1,<r3)\n"
                "  -r1>b:01(<r1,>r2)\n"
                "         -r2>c(<r2,>r3)\n"
                "  <r3-[c(<r2,>r3)]\n"},
        DumpRow{"an_arc_to_itself", "r1(a.@entry,a)\n", "a(@entry,>r1,<r1)\n  <r1-[a(@entry,>r1,<r1)]\n"},
        DumpRow{"arcs_hang_as_near_as_they_can", "r1(a.@entry,b)\nr2(b,c:02)\nr3(a,c:02)\nr4(c:02,d)\n",
                "a(@entry,>r1,>r3)\n"
                "  -r1>b(<r1,>r2)\n"
                "         -r2>c:02(<r2,<r3,>r4)\n"
                "  -r3>[c:02(<r2,<r3,>r4)]\n"
                "         -r4>d(<r4)\n"},
        DumpRow{"a_reference_in_brackets", "r1(a.@entry,:01)\nr2(:01,a)\n",
                "a(@entry,>r1,<r2)\n  -r1>:01(<r1,>r2)\n  <r2-[:01(<r1,>r2)]\n"},
        DumpRow{"what_cannot_be_reached_is_left_out", "r1(a.@entry,b)\nr2(c,d)\n", "a(@entry,>r1)\n  -r1>b(<r1)\n"},
        DumpRow{"each_scope_with_its_own_arcs_and_blocks", "r1(a.@entry,:01)\nr2:01(b.@entry,a.@x)\nr3:01(a,c)\n",
                "a(@entry,>r1)\n"
                "  -r1>:01(<r1)\n"
                "b(@entry,>r2)\n"
                "  -r2>a(@x,<r2,>r3)\n"
                "         -r3>c(<r3)\n"},
        DumpRow{"a_scope_that_starts_with_itself", "r1(a.@entry,:01)\nr2:01(:01.@entry,b)\n",
                "a(@entry,>r1)\n  -r1>:01(<r1)\n:01(,@entry,>r2)\n  -r2>b(<r2)\n"},
        DumpRow{"scopes_in_a_circle", "r1(a.@entry,:01)\nr2:01(:02.@entry,b)\nr3:02(:01.@entry,c)\nr4:02(c,:02)\n",
                "a(@entry,>r1)\n  -r1>:01(<r1)\n"
                ":02(,@entry,>r2)\n  -r2>b(<r2)\n"
                ":01(,@entry,>r3)\n  -r3>c(<r3,>r4)\n         -r4>:02(<r4)\n"}),
    [](const auto& row) { return row.param.name; });

TEST(Dump, PrefixAndIndent) {
  (void)graph_of_lines("r1(a.@entry,b)\nr2(b,c)\n");
  Capture capture;
  graph_dump(*graph_node("a"), 0, 0, "> ");
  graph_marks_clear(graph_node("a"), 0);
  graph_dump(*graph_node("c"), 3, 0, "> ");
  EXPECT_EQ(capture.text(),
            "> a(@entry,>r1)\n>   -r1>b(<r1,>r2)\n>          -r2>c(<r2)\n"
            "c(<r2)\n>      <r2-b(<r1,>r2)\n>             <r1-a(@entry,>r1)\n");
}

// The marks of a scope that was dumped before fall with those of the scope that refers to it.
TEST(MarksClear, FollowsReferences) {
  (void)graph_of_lines("r1(a.@entry,:01)\nr2:01(b.@entry,c)\nr3:01(c,:02)\nr4:02(d,:01.@entry)\n");
  Capture capture;
  graph_dump(*graph_node("a"), 0, 0, "");
  graph_dump(*graph_node("b"), 0, 1, "");
  graph_dump(*graph_node("", 1), 0, 2, "");
  EXPECT_EQ(marks(), 10);
  graph_marks_clear(graph_node("a"), 0);
  EXPECT_EQ(marks(), 0);
  graph_marks_clear(nullptr, 0);
}

TEST(Dump, PrintsNothingWhenAskedToStop) {
  (void)graph_of_lines("r1(a.@entry,b)\n");
  stop_requested = true;
  EXPECT_EQ(dump(), "");
  stop_requested = false;
}

TEST(ScopeAttrsPrint, OnOneLine) {
  ScopeAttrs older{12, "@x,@y", nullptr};
  const ScopeAttrs newer{0, "", &older};
  Capture capture;
  scope_attrs_print(&newer, false);
  scope_attrs_print(&newer, true);
  scope_attrs_print(nullptr, false);
  EXPECT_EQ(capture.text(), "  00:  12:@x,@y\n  00:\n\n");
}

}  // namespace
}  // namespace lexon::test
