#include "engine/trace.hpp"

#include "support/session.hpp"
#include "support/step.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

struct LineCase {
  const char* what;
  const char* list;
  const char* line;
};

TEST(ListLine, ShowsEveryNodeInItsForm) {
  const LineCase rows[] = {
      {"Start", "[<<] [a=x/N] >>", "/[<<]/[a|cw=x]/>>/"},
      {"Middle", "<< a=x [b=y] [c] d >>", "/<</a|cw=x/[b|cw=y]/[c]/d/>>/"},
      {"End", "<< a [>>]", "/<</a/[>>]/"},
      {"BoundaryShowsNoConcept", "[<<] [>>=x]", "/[<<]/[>>]/"},
      {"ScopeInTheWindow", "[<<] [SCOPE:01] >>", "/[<<]/[SCOPE:01]/>>/"},
      {"ScopeOutside", "<< SCOPE:12 [a] [b] SCOPE:01 >>", "/<</SCOPE:12/[a]/[b]/SCOPE:01/>>/"},
      {"WordInForce", "<< [a|x] [b|y] >>", "/<</[a]/[b]/>>/"},
      {"NodesBetweenThePlaces", "[<<] a [b] >>", "/[<<]/a/[b]/>>/"},
      {"NoText", "<< [/A] [b] >>", "/<</[]/[b]/>>/"},
  };
  for (const LineCase& row : rows) {
    SCOPED_TRACE(row.what);

    fresh_sentence();
    const List list(row.list);
    Capture output;
    print_list_line(session, {list.lnode, list.rnode});
    EXPECT_EQ(output.text(), std::string(row.line) + "\n");
  }
}

TEST(NodeWithoutWords, IsTakenOutOfTheList) {
  fresh_sentence();
  const List list("<< a b [c] d e [f] g h >>");
  for (const std::size_t empty : {1U, 4U}) list.at(empty).candidates = nullptr;
  list.at(7).candidates = nullptr;
  Capture output;
  print_list_line(session, {list.lnode, list.rnode});
  EXPECT_EQ(output.text(), "/<</[c]/[f]/\n");
  EXPECT_EQ(text_of_list(list.lnode), "<< b c e f  h >>");
}

TEST(BrokenList, IsReported) {
  fresh_sentence();
  const List list("a/N [b] [c]");
  list.at(0).left = &list.at(0);
  Capture output;
  print_list_line(session, {list.lnode, list.rnode});
  EXPECT_EQ(output.text(), "[a]{}  \"\" (N) <.,0,0>;\n;;lnode loop\n");
}

std::string dumped(const Node* node, bool one) {
  Capture output;
  dump_node(session, node, one);
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

}  // namespace
}  // namespace lexon::test
