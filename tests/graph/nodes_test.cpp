#include "graph/graph_nodes.hpp"

#include "data/pool.hpp"
#include "support/built_dictionary.hpp"
#include "support/graph_text.hpp"
#include "support/session.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

struct NodesRow {
  const char* name;
  const char* lines;
  const char* nodes;
};

TEST(Nodes, HaveTheirWords) {
  const NodesRow rows[] = {
      {"unknown_word", "[W]\ndog.@x\n[/W]\n", "dog k0 L0 dog=dog/TEMP {0:@x}"},
      {"number", "[W]\n123\n[/W]\n", "123 k0 L0 123=123/NUM,ANUM {0:}"},
      {"not_only_digits", "[W]\n12a\n[/W]\n", "12a k0 L0 12a=12a/TEMP {0:}"},
      {"quoted_number", "[W]\n\"123\"\n[/W]\n", "123 k0 L0 123=123/NUM,ANUM {0:}"},
      {"surface_ends_at_a_restriction", "[W]\na(b)(<c)(>d)\n[/W]\n", "a(b)(<c)(>d) k0 L0 a(b)=a(b)(<c)(>d)/TEMP {0:}"},
      {"empty_word", "[W]\n\n[/W]\n", " k0 L0 =/NUM,ANUM {0:}"},
      {"scope_references", "r(:01,:2R)\n", "#1 k10 L0 SCOPE:01=/SCOPE {0:>r}; #99 k10 L1 SCOPE:99=/SCOPE {0:<r}"},
      {"no_scope_reference_above_99", "[W]\n:2S\n[/W]\n", "#100 k0 L0 =/NUM,ANUM {0:}"},
      {"no_scope_reference_in_quotes", "[W]\n\"\":01\n[/W]\n", "#1 k0 L0 =/NUM,ANUM {0:}"},
      {"dots_of_the_newest_block_turn", "r(a.@x.@y,b:01.@z)\n", "a k0 L0 a=a/TEMP {0:@x,@y,>r}; b#1 k0 L1 b=b/TEMP {0:,@z,<r}"},
      {"one_name_and_number_is_one_node", "r(a,b)\nq:01(b,a)\n", "a k0 L0 a=a/TEMP {1:<q}{0:>r}; b k0 L1 b=b/TEMP {1:>q}{0:<r}"},
      {"lists_are_shared_with_a_higher_number", "r(a:02,b)\nr(a:01,\"a\":00)\n",
       "a k0 L0 a=a/TEMP {0:<r}; a#1 k0 L0 a=a/TEMP {0:>r}; a#2 k0 L0 a=a/TEMP {0:>r}; b k0 L1 b=b/TEMP {0:<r}"},
      {"but_not_with_a_lower_one", "r(a:01,b)\nr(a:02,b)\n", "a#1 k0 L0 a=a/TEMP {0:>r}; a#2 k0 L2 a=a/TEMP {0:>r}; b k0 L1 b=b/TEMP {0:<r,<r}"},
      {"scope_references_share_nothing", "r(:02,b)\nr(:01,b)\n",
       "#1 k10 L2 SCOPE:01=/SCOPE {0:>r}; #2 k10 L0 SCOPE:02=/SCOPE {0:>r}; b k0 L1 b=b/TEMP {0:<r,<r}"},
      {"a_word_without_node_shifts_the_blocks", "[W]\na.@x\n[/W]\nr1(b.@y,c.@entry)\nr2(b,d)\n",
       "b k0 L0 b=b/TEMP {0:@x,>r2}; c k0 L1 c=c/TEMP {0:@entry,<r1}; d k0 L2 d=d/TEMP {0:<r2}"},
      {"no_role_where_the_shifted_block_is_of_another_scope", "[W]\na.@x\n[/W]\nr1:01(b.@y,c)\nr2:01(b,d)\nr(y.@entry,z)\n",
       "b k0 L0 b=b/TEMP {0:@x}; c k0 L1 c=c/TEMP {1:<r1}; d k0 L2 d=d/TEMP {1:}; y k0 L3 y=y/TEMP {0:@entry,>r}; z k0 L4 z=z/TEMP {0:<r}"},
  };
  for (const NodesRow& row : rows) {
    SCOPED_TRACE(row.name);

    (void)graph_of_lines(row.lines);
    EXPECT_EQ(nodes_text(), row.nodes);
  }
}

constexpr const char* kEntries =
    "[dog]{} \"dog\" (N) <.,0,3>;\n"
    "[hound]{} \"dog\" (N,OLD) <.,0,9>;\n"
    "[go]{} \"go\" (V);\n"
    "[walk]{} \"go(>move)\" (V);\n"
    "[eleven]{} \"11\" (N);\n";

TEST(NodesOfDictionary, HaveTheirWords) {
  const NodesRow rows[] = {
      {"words_by_priority", "[W]\ndog\n[/W]\n", "dog k1 L0 hound=dog/N,OLD|dog=dog/N {0:}"},
      {"numbers_are_asked_too", "[W]\n11\n[/W]\n", "11 k1 L0 eleven=11/N {0:}"},
      {"quoted_words_are_not", "[W]\n\"go\"\n[/W]\n", "go k0 L0 go=go/TEMP {0:}"},
      {"the_whole_word_first", "[W]\ngo(>move)\n[/W]\n", "go(>move) k1 L0 walk=go(>move)/V {0:}"},
      {"then_its_part", "[W]\ngo(>fly)(x)\n[/W]\n", "go(>fly)(x) k1 L0 go=go/V {0:}"},
      {"neither", "[W]\nfly(>move)\n[/W]\n", "fly(>move) k0 L0 fly=fly(>move)/TEMP {0:}"},
      {"a_scope_reference_is_asked_in_vain", "[W]\n:01\n[/W]\n", "#1 k10 L0 SCOPE:01=/SCOPE {0:}"},
      {"a_shared_list_leaves_the_kind_open", "r(go:02,x)\nr(\"go\":01,x)\n",
       "go#1 k0 L0 go=go/V {0:>r}; go#2 k1 L0 go=go/V {0:>r}; x k0 L1 x=x/TEMP {0:<r,<r}"},
      {"the_list_of_a_longer_word_is_shared", "r(go(b),go!)\nr(go,go!)\n",
       "go k0 L0 go=go/V {0:>r}; go! k0 L1 go!=go!/TEMP {0:<r,<r}; go(b) k1 L0 go=go/V {0:>r}"},
  };
  for (const NodesRow& row : rows) {
    SCOPED_TRACE(row.name);

    const TestDictionary dictionary(kEntries);
    (void)graph_of_lines(row.lines);
    EXPECT_EQ(nodes_text(), row.nodes);
  }
}

TEST(FailedLookups, DropTheRelationSilently) {
  const TestDictionary dictionary(kEntries);
  const DictionaryFiles files = session.sentence.dictionary;
  IndexDescriptor* no_slots[kKeyFields] = {};
  session.sentence.dictionary.slots = no_slots;
  const GraphRead read = graph_of_lines("r(dog,\"x\")\n");
  session.sentence.dictionary = files;
  EXPECT_EQ(read.status, Status::ok);
  EXPECT_EQ(read.output, "");
  EXPECT_EQ(read.root, nullptr);
  EXPECT_EQ(arcs_text(), "r:0");
  EXPECT_EQ(nodes_text(), "x k0 L0 x=x/TEMP {0:}");
}

TEST(LiteralEntry, ReplacesTheList) {
  WordEntry* words = nullptr;
  ASSERT_EQ(literal_entry(session, "12", words), Status::ok);
  ASSERT_EQ(literal_entry(session, "dog(>x)", words), Status::ok);
  EXPECT_STREQ(words->hw, "dog");
  EXPECT_STREQ(words->cw, "dog(>x)");
  EXPECT_EQ(words->hw_len, 3);
  EXPECT_EQ(words->cw_len, 7);
  EXPECT_EQ(words->total_size, 36);  // 3 + 7, the attribute block of 16, and 10
  EXPECT_EQ(words->next, nullptr);
  session.pool.release_all();
}

}  // namespace
}  // namespace lexon::test
