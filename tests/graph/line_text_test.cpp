#include "graph/line_text.hpp"

#include "support/test.hpp"

namespace lexon {
namespace {

struct CodeRow {
  const char* name;
  const char* text;
  int number;
};

TEST(NodeCodeRead, Gives) {
  const CodeRow rows[] = {
      {"lowest", "00", 0},
      {"digits", "12", 38},
      {"letter_second", "0A", 10},
      {"letter_first", "A0", 360},
      {"highest", "ZZ", 1295},
      {"more_is_not_read", "012", 1},
      {"lower_case_is_unchecked", "0a", 42},
      {"below_the_digits", "0 ", -23},
      {"bytes_are_unsigned", "0\xFF", 200},
      {"second_missing_reads_the_terminator", "1", -19},
      {"both_missing", "", -2035},
  };
  for (const CodeRow& row : rows) {
    SCOPED_TRACE(row.name);

    EXPECT_EQ(node_code_read(row.text), row.number);
  }
}

TEST(NodeCodeWrite, DigitsThenLetters) {
  struct Row {
    int number;
    const char* code;
  };
  for (const Row& row :
       {Row{0, "00"}, Row{9, "09"}, Row{10, "0A"}, Row{35, "0Z"}, Row{36, "10"}, Row{99, "2R"}, Row{100, "2S"}, Row{1295, "ZZ"}, Row{-19, "0$"}}) {
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

TEST(SplitRelation, Cuts) {
  const RelationRow rows[] = {
      {"plain", "rel(a,b)\n", 1, "rel|a|b|\n"},
      {"blanks_everywhere", " \trel \t( a \t, b\t )\t x\n", 1, "rel|a|b|x\n"},
      {"inner_blanks_stay", "r l(a a,b b)\n", 1, "r l|a a|b b|\n"},
      {"attributes", "rel:01(walk(>move):0A.@entry.@one, dog(>animal).@two)\n", 1, "rel:01|walk(>move):0A.@entry.@one|dog(>animal).@two|\n"},
      {"parts_can_be_empty", "(,)\n", 1, "|||\n"},
      {"no_parenthesis", "rel a,b\n", -1, "rel a,b\n"},
      {"from_begins_with_parenthesis", "rel( (a),b)\n", -1, "rel"},
      {"to_begins_with_parenthesis", "rel(a, (b))\n", -1, "rel|a"},
      {"no_comma", "rel(a)\n", -1, "rel"},
      {"no_end", "rel(a,b\n", -1, "rel|a"},
      {"nothing_behind", "rel(a,b)", -1, "rel|a|b"},
      {"a_blank_behind_will_do", "rel(a,b) ", 1, "rel|a|b|"},
      {"comma_in_parentheses", "rel(a(x,y),b)\n", 1, "rel|a(x,y)|b|\n"},
      {"comma_in_quotes", "rel(\"a,(\",\"b)\")\n", 1, "rel|\"a,(\"|\"b)\"|\n"},
      {"hidden_quote", "rel(\\\"a,b)\n", 1, "rel|\\\"a|b|\n"},
      {"hidden_backslash", "rel(\"a\\\\\",b)\n", 1, "rel|\"a\\\\\"|b|\n"},
      {"other_backslashes_hide_nothing", "rel(a\\,b)\n", 1, "rel|a\\|b|\n"},
      {"depth_below_zero_hides_the_comma", "rel(a),b)\n", -1, "rel"},
      {"depth_starts_anew_for_the_second", "rel(a(b),c(d))\n", 1, "rel|a(b)|c(d)|\n"},
      {"open_quote_swallows_the_line", "rel(\"a,b)\n", -1, "rel"},
      {"backslash_at_the_end", "rel(a,b\\", -1, "rel|a"},
      {"rest_is_ignored", "rel(a,b)anything\n", 1, "rel|a|b|anything\n"},
      {"number", "rel(a,b)=7\n", 7, "rel|a|b|=7\n"},
      {"digits_are_added_up", "rel(a,b) = \t12\n", 3, "rel|a|b|= \t12\n"},
      {"zero", "rel(a,b)=0\n", 0, "rel|a|b|=0\n"},
      {"no_digit", "rel(a,b)=\n", 0, "rel|a|b|=\n"},
      {"number_cut_short", "rel(a,b)=", 0, "rel|a|b|="},
  };
  for (const RelationRow& row : rows) {
    SCOPED_TRACE(row.name);

    std::string line = row.line;
    line.shrink_to_fit();
    RelationText text;
    EXPECT_EQ(split_relation(line.data(), text), row.result);
    std::string parts = text.label;
    for (const char* part : {text.from, text.to, text.rest}) {
      if (part != nullptr) parts += std::string("|") + part;
    }
    EXPECT_EQ(parts, row.parts);
  }
}

struct LabelRow {
  const char* name;
  const char* text;
  int number;
  const char* label;
};

TEST(LabelScope, TakesTheNumberOut) {
  const LabelRow rows[] = {
      {"none", "rel", 0, "rel"},
      {"plain", "rel:01", 1, "rel"},
      {"blank_in_front", "rel\t :0A", 10, "rel"},
      {"blanks_behind_the_colon", "rel: \t02", 2, "rel"},
      {"rest_moves_up", "rel:01 x ", 1, "rel x"},
      {"second_colon_stays", "rel:01:02", 1, "rel:02"},
      {"one_character", "rel:1", -19, "rel"},
      {"no_character", "rel: ", -2035, "rel"},
  };
  for (const LabelRow& row : rows) {
    SCOPED_TRACE(row.name);

    std::string label = row.text;
    label.shrink_to_fit();
    EXPECT_EQ(label_scope(label.data()), row.number);
    EXPECT_STREQ(label.c_str(), row.label);
  }
}

struct WordRow {
  const char* name;
  const char* text;
  const char* parts;  // name|number|attributes, in double quotes if quoted
};

TEST(SplitWord, Cuts) {
  const WordRow rows[] = {
      {"plain", "dog", "dog|0|"},
      {"empty", "", "|0|"},
      {"blanks_only", " \t ", "|0|"},
      {"blanks_around", "\t dog  ", "dog|0|"},
      {"a_tab_behind_stays", "dog\t", "dog\t|0|"},
      {"attributes", "dog.@one.@two", "dog|0|@one.@two"},
      {"a_dot_in_a_plain_word_stays", "e.g.x", "e.g.x|0|"},
      {"a_dot_behind_parentheses_ends_it", "dog(>animal).x", "dog(>animal)|0|x"},
      {"a_dot_inside_parentheses_stays", "dog(a.b)", "dog(a.b)|0|"},
      {"a_dot_before_at_ends_it_anywhere", "dog(a.@b)", "dog(a|0|@b)"},
      {"even_inside_quotes", "\"a.@b\"", "\"a\"|0|@b\""},
      {"number", "dog:01", "dog|1|"},
      {"number_and_attributes", "dog:0A.@one", "dog|10|.@one"},
      {"blanks_around_the_colon", "dog : \t01", "dog|1|"},
      {"number_of_a_scope", ":01", "|1|"},
      {"colon_inside_parentheses", "dog(a:01)", "dog(a:01)|0|"},
      {"colon_at_a_depth_below_zero", "dog):01", "dog):01|0|"},
      {"one_character_of_a_number", "dog:1", "dog|-19|"},
      {"no_number", "dog:", "dog|-2035|"},
      {"quoted", "\"dog:01\"", "\"dog:01\"|0|"},
      {"quoted_with_number", "\"a b\" :02.@x", "\"a b\"|2|.@x"},
      {"blanks_inside_quotes_stay", "\"a \"", "\"a \"|0|"},
      {"quotation_never_closed", "\"dog :01 ", "\"dog :01\"|0|"},
      {"text_behind_the_quotes_is_lost", "\"dog\"cat", "\"dog\"|0|"},
      {"quote_in_the_middle_stays_and_opens", "a\"b:01\"c", "a\"b:01|0|"},
      {"hidden_quote_inside_quotes", "\"a\\\"b\"", "\"a\"b\"|0|"},
      {"hidden_quote_outside", "a\\\"b:01", "a\"b|1|"},
      {"backslash_pair_outside", "a\\\\b", "a\\b|0|"},
      {"backslash_pair_inside_quotes_stays", "\"a\\\\b\"", "\"a\\\\b\"|0|"},
      {"backslash_at_the_end", "a\\", "a\\|0|"},
      {"dot_at_the_end", "a.", "a.|0|"},
  };
  for (const WordRow& row : rows) {
    SCOPED_TRACE(row.name);

    std::string text = row.text;
    text.shrink_to_fit();
    const WordText word = split_word(text.data());
    const std::string name = word.quoted ? '"' + std::string(word.name) + '"' : word.name;
    EXPECT_EQ(name + "|" + std::to_string(word.number) + "|" + word.attrs, row.parts);
  }
}

}  // namespace
}  // namespace lexon
