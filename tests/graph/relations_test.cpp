#include "graph/relations.hpp"

#include "data/chain.hpp"
#include "support/graph_text.hpp"
#include "support/session.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

// The labels on the list of a node.
std::string list_of(const std::string& name) {
  std::string all;
  for (const Relation& arc : chain<&Relation::next>(graph_node(name)->relations)) all += std::string(arc.label) + " ";
  return all;
}

TEST(RelationLists, RunTogetherAtASharedArc) {
  (void)graph_of_lines("r1(a.@entry,b)\nr2(b,c)\nr3(a,d)\nr4(e,f)\nr5(f,f)\n");
  EXPECT_EQ(list_of("a"), "r1 r2 r3 ");
  EXPECT_EQ(list_of("b"), "r1 r2 r3 ");
  EXPECT_EQ(list_of("c"), "r2 r3 ");
  EXPECT_EQ(list_of("d"), "r3 ");
  EXPECT_EQ(list_of("e"), "r4 r5 ");
  EXPECT_EQ(list_of("f"), "r4 r5 ");
}

struct RoleRow {
  const char* name;
  const char* lines;
  const char* blocks;  // of the word "a"
};

TEST(Roles, StandInTheBlockOfTheScope) {
  const RoleRow rows[] = {
      {"of_both_ends", "r1(a,b)\nr2(b,a)\n", "{0:>r1,<r2}"},
      {"behind_attributes", "r(a.@x.@y,b)\n", "{0:@x,@y,>r}"},
      {"of_an_arc_to_itself", "r(a,a)\n", "{0:>r,<r}"},
      {"by_scope", "r1(a,b)\nr2:01(c,a)\n", "{1:<r2}{0:>r1}"},
      {"repeated_arcs_repeat_them", "r(a,b)\nr(a,b)\n", "{0:>r,>r}"},
  };
  for (const RoleRow& row : rows) {
    SCOPED_TRACE(row.name);

    (void)graph_of_lines(row.lines);
    EXPECT_EQ(blocks_of("a"), row.blocks);
  }
}

// A word whose attributes are `length` characters long, as one end of a relation.
std::size_t text_length_with_role(std::size_t length) {
  const std::string first = "@" + std::string(499, 'x');
  const std::string second = "@" + std::string(length - first.size() - 2, 'y');
  (void)graph_of_lines("[W]\na." + first + "\na." + second + "\n[/W]\nabcde(a,b)\n");
  return std::string(graph_node("a")->scope_attrs->text).size();
}

TEST(Roles, StopWhenTheTextIsFull) {
  EXPECT_EQ(text_length_with_role(1018), 1025U);
  EXPECT_EQ(text_length_with_role(1019), 1019U);
}

struct ScopeRows {
  const char* name;
  const char* lines;
  const char* scopes;
};

TEST(Scopes, AreNotedByFirstMention) {
  const ScopeRows rows[] = {
      {"none", "r(a.@entry,b)\n", ""},
      {"to_is_asked_first", "r:01(a.@entry,b.@entry)\n", "1=b"},
      {"then_from", "r:01(a.@entry,b)\n", "1=a"},
      {"the_first_entry_stays", "r:02(a.@entry,b)\nr:02(c,d.@entry)\nr:01(:03.@entry,e)\n", "2=a; 1=#3"},
      {"an_entry_of_another_scope_is_none", "r(a.@entry,b)\nr:01(a,b)\n", "1=-"},
      {"each_arc_of_a_scope_without_entry_takes_a_count", "r:01(a,b)\nr:01(b,c)\nr:01(c,d)\n", "1=-; 0=-; 0=-"},
      {"the_next_scope_takes_its_row", "r:01(a,b)\nr:01(b,c)\nr:02(d.@entry,e)\n", "2=d; 0=-; 0=-"},
      {"an_entry_that_comes_late", "r:01(a,b)\nr:01(b,c.@entry)\nr:02(d.@entry,e)\n", "1=c; 2=d; 0=-"},
  };
  for (const ScopeRows& row : rows) {
    SCOPED_TRACE(row.name);

    (void)graph_of_lines(row.lines);
    EXPECT_EQ(scopes_text(), row.scopes);
  }
}

TEST(Scopes, MoreThanTheTableHoldsAreNotNoted) {
  sentence_clear(session);
  ScopeAttrs block{0, "@entry", nullptr};
  Node entry{};
  entry.scope_attrs = &block;
  Relation arc{0, 7, "r", &entry, &entry, nullptr};
  session.sentence.semlst_count = 254;
  for (ScopeRow& row : session.sentence.semlst) row = {1, &entry};
  session.sentence.semlst[254] = {0, nullptr};
  scope_note(session, arc);
  EXPECT_EQ(session.sentence.semlst_count, 255);
  EXPECT_EQ(session.sentence.semlst[254].number, 7);
  arc.scope = 8;
  scope_note(session, arc);
  EXPECT_EQ(session.sentence.semlst_count, 255);
  sentence_clear(session);
}

}  // namespace
}  // namespace lexon::test
