#include "graph/graph_words.hpp"

#include "support/graph_text.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

struct WordsRow {
  const char* name;
  const char* lines;
  const char* words;
};

TEST(Words, StandSortedWithTheirBlocks) {
  const WordsRow rows[] = {
      {"by_name_then_number", "[W]\nb\na:02\nab\na:01\na\n[/W]\n", "a{0:}; a#1{0:}; a#2{0:}; ab{0:}; b{0:}"},
      {"bytes_are_unsigned", "[W]\n\xC3\xA9\nz\n[/W]\n", "z{0:}; \xC3\xA9{0:}"},
      {"numbers_can_be_negative", "[W]\nz.@entry\na\na:1\n[/W]\n", "a#-19{0:}; a{0:}; z{0:@entry}"},
      {"new_attributes_are_merged", "r(a.@x,b)\nr(a.@y.@x,b)\n", "a{0:@x,>r,@y,>r}; b{0:<r,<r}"},
      {"block_and_relation_are_united", "[W]\na.@x\n[/W]\nr(a.@y,b)\n", "a{0:@x,@y,>r}; b{0:<r}"},
      {"an_empty_text_gets_a_comma_too", "[W]\na\na.@x\n[/W]\n", "a{0:,@x}"},
      {"blanks_separate_like_dots", "[W]\na\na.@x @y .@z\n[/W]\n", "a{0:,@x,@y,@z}"},
      {"dots_of_a_word_without_node_make_one", "[W]\nz\nb.@x.@y\nb.@y.@x.@y\n[/W]\n", "b{0:@x,@y,@y,@x}; z{0:}"},
      {"one_block_a_scope_newest_first", "r(a.@x,b)\nr:01(a.@y,b)\nr(a.@z,c)\n", "a{1:@y,>r}{0:@x,>r,@z,>r}; b{1:<r}{0:<r}; c{0:<r}"},
      {"scopes_above_255_are_never_found_again", "r:7Q(a.@x,b)\nr:7Q(a.@y,b)\n", "a{22:@y,>r}{22:@x,>r}; b{22:<r}{22:<r}"},
      {"first_mention_decides_on_quotes", "[W]\n\"a b\":01\na b:01\nc\n\"c\".@x\n[/W]\n", "\"a b#1\"{0:}; c{0:,@x}"},
      {"a_scope_has_no_name", "r(:01,x)\n", "#1{0:>r}; x{0:<r}"},
  };
  for (const WordsRow& row : rows) {
    SCOPED_TRACE(row.name);

    (void)graph_of_lines(row.lines);
    EXPECT_EQ(words_text(), row.words);
  }
}

TEST(ScopeNumber, OfAnEmptyNameUpTo99) {
  EXPECT_EQ(scope_number_of(GraphWord{1, 1, "", nullptr}), 1);
  EXPECT_EQ(scope_number_of(GraphWord{1, 99, "", nullptr}), 99);
  EXPECT_EQ(scope_number_of(GraphWord{1, 100, "", nullptr}), 0);
  EXPECT_EQ(scope_number_of(GraphWord{1, -19, "", nullptr}), 0);
  EXPECT_EQ(scope_number_of(GraphWord{1, 1, "a", nullptr}), 0);
}

}  // namespace
}  // namespace lexon::test
