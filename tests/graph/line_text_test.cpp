#include "graph/line_text.hpp"

#include <gtest/gtest.h>

#include <string>

namespace lexon {
namespace {

struct CodeRow {
  const char* name;
  const char* text;
  int number;
};

class NodeCodeRead : public ::testing::TestWithParam<CodeRow> {};

TEST_P(NodeCodeRead, Gives) {
  EXPECT_EQ(node_code_read(GetParam().text), GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, NodeCodeRead,
    ::testing::Values(CodeRow{"lowest", "00", 0}, CodeRow{"digits", "12", 38}, CodeRow{"letter_second", "0A", 10},
                      CodeRow{"letter_first", "A0", 360}, CodeRow{"highest", "ZZ", 1295},
                      CodeRow{"more_is_not_read", "012", 1}, CodeRow{"lower_case_is_unchecked", "0a", 42},
                      CodeRow{"below_the_digits", "0 ", -23}, CodeRow{"bytes_are_unsigned", "0\xFF", 200},
                      CodeRow{"second_missing_reads_the_terminator", "1", -19}, CodeRow{"both_missing", "", -2035}),
    [](const auto& row) { return row.param.name; });

TEST(NodeCodeWrite, DigitsThenLetters) {
  struct Row {
    int number;
    const char* code;
  };
  for (const Row& row : {Row{0, "00"}, Row{9, "09"}, Row{10, "0A"}, Row{35, "0Z"}, Row{36, "10"}, Row{99, "2R"},
                         Row{100, "2S"}, Row{1295, "ZZ"}, Row{-19, "0$"}}) {
    char code[3];
    node_code_write(row.number, code);
    EXPECT_STREQ(code, row.code) << row.number;
  }
}

struct RelationRow {
  const char* name;
  const char* line;
  int result;
  const char* parts;  // label|from|to|rest; what was not reached is missing
};

class SplitRelation : public ::testing::TestWithParam<RelationRow> {};

TEST_P(SplitRelation, Cuts) {
  std::string line = GetParam().line;
  line.shrink_to_fit();
  RelationText text;
  EXPECT_EQ(split_relation(line.data(), text), GetParam().result);
  std::string parts = text.label;
  for (const char* part : {text.from, text.to, text.rest}) {
    if (part != nullptr) parts += std::string("|") + part;
  }
  EXPECT_EQ(parts, GetParam().parts);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SplitRelation,
    ::testing::Values(RelationRow{"plain", "rel(a,b)\n", 1, "rel|a|b|\n"},
                      RelationRow{"blanks_everywhere", " \trel \t( a \t, b\t )\t x\n", 1, "rel|a|b|x\n"},
                      RelationRow{"inner_blanks_stay", "r l(a a,b b)\n", 1, "r l|a a|b b|\n"},
                      RelationRow{"attributes", "rel:01(walk(>move):0A.@entry.@one, dog(>animal).@two)\n", 1,
                                  "rel:01|walk(>move):0A.@entry.@one|dog(>animal).@two|\n"},
                      RelationRow{"parts_can_be_empty", "(,)\n", 1, "|||\n"},
                      RelationRow{"no_parenthesis", "rel a,b\n", -1, "rel a,b\n"},
                      RelationRow{"from_begins_with_parenthesis", "rel( (a),b)\n", -1, "rel"},
                      RelationRow{"to_begins_with_parenthesis", "rel(a, (b))\n", -1, "rel|a"},
                      RelationRow{"no_comma", "rel(a)\n", -1, "rel"}, RelationRow{"no_end", "rel(a,b\n", -1, "rel|a"},
                      RelationRow{"nothing_behind", "rel(a,b)", -1, "rel|a|b"},
                      RelationRow{"a_blank_behind_will_do", "rel(a,b) ", 1, "rel|a|b|"},
                      RelationRow{"comma_in_parentheses", "rel(a(x,y),b)\n", 1, "rel|a(x,y)|b|\n"},
                      RelationRow{"comma_in_quotes", "rel(\"a,(\",\"b)\")\n", 1, "rel|\"a,(\"|\"b)\"|\n"},
                      RelationRow{"hidden_quote", "rel(\\\"a,b)\n", 1, "rel|\\\"a|b|\n"},
                      RelationRow{"hidden_backslash", "rel(\"a\\\\\",b)\n", 1, "rel|\"a\\\\\"|b|\n"},
                      RelationRow{"other_backslashes_hide_nothing", "rel(a\\,b)\n", 1, "rel|a\\|b|\n"},
                      RelationRow{"depth_below_zero_hides_the_comma", "rel(a),b)\n", -1, "rel"},
                      RelationRow{"depth_starts_anew_for_the_second", "rel(a(b),c(d))\n", 1, "rel|a(b)|c(d)|\n"},
                      RelationRow{"open_quote_swallows_the_line", "rel(\"a,b)\n", -1, "rel"},
                      RelationRow{"backslash_at_the_end", "rel(a,b\\", -1, "rel|a"},
                      RelationRow{"rest_is_ignored", "rel(a,b)anything\n", 1, "rel|a|b|anything\n"},
                      RelationRow{"number", "rel(a,b)=7\n", 7, "rel|a|b|=7\n"},
                      RelationRow{"digits_are_added_up", "rel(a,b) = \t12\n", 3, "rel|a|b|= \t12\n"},
                      RelationRow{"zero", "rel(a,b)=0\n", 0, "rel|a|b|=0\n"},
                      RelationRow{"no_digit", "rel(a,b)=\n", 0, "rel|a|b|=\n"},
                      RelationRow{"number_cut_short", "rel(a,b)=", 0, "rel|a|b|="}),
    [](const auto& row) { return row.param.name; });

struct LabelRow {
  const char* name;
  const char* text;
  int number;
  const char* label;
};

class LabelScope : public ::testing::TestWithParam<LabelRow> {};

TEST_P(LabelScope, TakesTheNumberOut) {
  std::string label = GetParam().text;
  label.shrink_to_fit();
  EXPECT_EQ(label_scope(label.data()), GetParam().number);
  EXPECT_STREQ(label.c_str(), GetParam().label);
}

INSTANTIATE_TEST_SUITE_P(Rows, LabelScope,
                         ::testing::Values(LabelRow{"none", "rel", 0, "rel"}, LabelRow{"plain", "rel:01", 1, "rel"},
                                           LabelRow{"blank_in_front", "rel\t :0A", 10, "rel"},
                                           LabelRow{"blanks_behind_the_colon", "rel: \t02", 2, "rel"},
                                           LabelRow{"rest_moves_up", "rel:01 x ", 1, "rel x"},
                                           LabelRow{"second_colon_stays", "rel:01:02", 1, "rel:02"},
                                           LabelRow{"one_character", "rel:1", -19, "rel"},
                                           LabelRow{"no_character", "rel: ", -2035, "rel"}),
                         [](const auto& row) { return row.param.name; });

struct WordRow {
  const char* name;
  const char* text;
  const char* parts;  // name|number|attributes, in double quotes if quoted
};

class SplitWord : public ::testing::TestWithParam<WordRow> {};

TEST_P(SplitWord, Cuts) {
  std::string text = GetParam().text;
  text.shrink_to_fit();
  const WordText word = split_word(text.data());
  const std::string name = word.quoted ? '"' + std::string(word.name) + '"' : word.name;
  EXPECT_EQ(name + "|" + std::to_string(word.number) + "|" + word.attrs, GetParam().parts);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SplitWord,
    ::testing::Values(
        WordRow{"plain", "dog", "dog|0|"}, WordRow{"empty", "", "|0|"}, WordRow{"blanks_only", " \t ", "|0|"},
        WordRow{"blanks_around", "\t dog  ", "dog|0|"}, WordRow{"a_tab_behind_stays", "dog\t", "dog\t|0|"},
        WordRow{"attributes", "dog.@one.@two", "dog|0|@one.@two"},
        WordRow{"a_dot_in_a_plain_word_stays", "e.g.x", "e.g.x|0|"},
        WordRow{"a_dot_behind_parentheses_ends_it", "dog(>animal).x", "dog(>animal)|0|x"},
        WordRow{"a_dot_inside_parentheses_stays", "dog(a.b)", "dog(a.b)|0|"},
        WordRow{"a_dot_before_at_ends_it_anywhere", "dog(a.@b)", "dog(a|0|@b)"},
        WordRow{"even_inside_quotes", "\"a.@b\"", "\"a\"|0|@b\""}, WordRow{"number", "dog:01", "dog|1|"},
        WordRow{"number_and_attributes", "dog:0A.@one", "dog|10|.@one"},
        WordRow{"blanks_around_the_colon", "dog : \t01", "dog|1|"}, WordRow{"number_of_a_scope", ":01", "|1|"},
        WordRow{"colon_inside_parentheses", "dog(a:01)", "dog(a:01)|0|"},
        WordRow{"colon_at_a_depth_below_zero", "dog):01", "dog):01|0|"},
        WordRow{"one_character_of_a_number", "dog:1", "dog|-19|"}, WordRow{"no_number", "dog:", "dog|-2035|"},
        WordRow{"quoted", "\"dog:01\"", "\"dog:01\"|0|"},
        WordRow{"quoted_with_number", "\"a b\" :02.@x", "\"a b\"|2|.@x"},
        WordRow{"blanks_inside_quotes_stay", "\"a \"", "\"a \"|0|"},
        WordRow{"quotation_never_closed", "\"dog :01 ", "\"dog :01\"|0|"},
        WordRow{"text_behind_the_quotes_is_lost", "\"dog\"cat", "\"dog\"|0|"},
        WordRow{"quote_in_the_middle_stays_and_opens", "a\"b:01\"c", "a\"b:01|0|"},
        WordRow{"hidden_quote_inside_quotes", "\"a\\\"b\"", "\"a\"b\"|0|"},
        WordRow{"hidden_quote_outside", "a\\\"b:01", "a\"b|1|"}, WordRow{"backslash_pair_outside", "a\\\\b", "a\\b|0|"},
        WordRow{"backslash_pair_inside_quotes_stays", "\"a\\\\b\"", "\"a\\\\b\"|0|"},
        WordRow{"backslash_at_the_end", "a\\", "a\\|0|"}, WordRow{"dot_at_the_end", "a.", "a.|0|"}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace lexon
