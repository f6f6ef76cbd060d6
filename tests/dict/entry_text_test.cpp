// Entry lines: what each field becomes, what is refused, and what is printed.

#include "dict/entry_text.hpp"

#include "data/pool.hpp"
#include "data/words.hpp"
#include "support/capture.hpp"
#include "support/session.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

std::string field(const char* text, std::int32_t length) {
  if (text == nullptr) return length == 0 ? "-" : "null with a length";
  return std::string(text).size() == static_cast<std::size_t>(length) ? text : "text of another length";
}

std::string number(const std::uint8_t (&bytes)[4]) {
  return std::to_string((bytes[0] * 256L + bytes[1]) * 65536L + bytes[2] * 256L + bytes[3]);
}

// hw|id|gloss|cw|attrs|language frequency priority|extra1|extra2; null is "-".
std::string dump(const WordEntry& word) {
  return field(word.hw, word.hw_len) + "|" + field(word.id, word.id_len) + "|" + field(word.gloss, word.gloss_len) + "|" + field(word.cw, word.cw_len) + "|" +
         field(word.attrs, word.attr_len) + "|" + std::string(word.language, 2) + " " + number(word.frequency) + " " + std::to_string(word.priority) + "|" +
         field(word.extra1, word.extra1_len) + "|" + field(word.extra2, word.extra2_len);
}

// The dump of a line's word, or the status; both storages must agree.
std::string parsed(const std::string& line) {
  WordEntry* pooled = nullptr;
  WordEntry* on_heap = nullptr;
  const Status s = parse_entry(session, line.c_str(), pooled, EntryStorage::sentence_pool);
  EXPECT_EQ(s, parse_entry(session, line.c_str(), on_heap, EntryStorage::heap));
  EXPECT_EQ(s == Status::ok, pooled != nullptr && on_heap != nullptr);
  std::string result = pooled == nullptr ? std::to_string(code(s)) : dump(*pooled);
  EXPECT_EQ(on_heap == nullptr ? result : dump(*on_heap), result);
  parsed_entry_free(session, pooled, EntryStorage::sentence_pool);
  parsed_entry_free(session, on_heap, EntryStorage::heap);
  EXPECT_EQ(on_heap, nullptr);
  return result;
}

struct LineRow {
  const char* name;
  const char* line;
  const char* word;  // its dump, or a status
};

const LineRow kLines[] = {
    {"every_field", "[go]{v1} to move \"go(>do)\" (V,INT) <E,7,3>;X[one]{two}\n", "go|v1|to move|go(>do)|V,INT|EX 7 3|one|two"},
    {"built_in_unknown_word", "[]{}  \"\" (TEMP);", "|-|-|-|TEMP|.. 0 0|-|-"},
    {"built_in_blank", "[ ]{} \"\" (BLK);", " |-|-|-|BLK|.. 0 0|-|-"},
    {"built_in_number", "[0]{} \"\" (NUM,ANUM);", "0|-|-|-|NUM,ANUM|.. 0 0|-|-"},
    {"text_before_the_bracket", "a b [c]{} \"x\" (y);", "c|-|-|x|y|.. 0 0|-|-"},

    {"hw_with_bracket", "[a]b]{} \"x\" (y);", "a]b|-|-|x|y|.. 0 0|-|-"},
    {"hw_with_escaped_bracket", "[a\\]]{} \"x\" (y);", "a]|-|-|x|y|.. 0 0|-|-"},
    {"hw_escape_of_others_is_text", "[a\\b]{} \"x\" (y);", "a\\b|-|-|x|y|.. 0 0|-|-"},
    {"hw_ends_behind_escaped_backslash", "[a\\\\]{} \"x\" (y);", "a\\|-|-|x|y|.. 0 0|-|-"},
    {"hw_no_escape_right_behind_escape", "[\\[\\]{} \"x\" (y);", "[\\|-|-|x|y|.. 0 0|-|-"},
    {"hw_two_pairs_apart", "[\\[x\\]]{} \"x\" (y);", "[x]|-|-|x|y|.. 0 0|-|-"},
    {"hw_blanks_before_brace", "[a] \t{i} \"x\" (y);", "a|i|-|x|y|.. 0 0|-|-"},
    {"hw_8_bit", "[\xC3\xA9t\xC3\xA9]{} \"x\" (y);", "\xC3\xA9t\xC3\xA9|-|-|x|y|.. 0 0|-|-"},
    {"hw_no_opening", "a]{} \"x\" (y);", "91"},
    {"hw_no_brace", "[a] \"x\" (y) <E,1,2>;", "91"},
    {"hw_ends_in_escape", "[a\\]{} \"x\" (y);", "91"},
    {"hw_empty_line", "", "91"},

    {"id_unclosed", "[a]{i \"x\" (y);", "95"},
    {"id_empty", "[a]{} \"x\" (y);", "a|-|-|x|y|.. 0 0|-|-"},

    {"gloss_up_to_quote", "[a]{} the gloss \t \"x\" (y);", "a|-|the gloss|x|y|.. 0 0|-|-"},
    {"gloss_up_to_list", "[a]{} the gloss (y);", "a|-|the gloss|-|y|.. 0 0|-|-"},
    {"gloss_takes_parentheses_before_quote", "[a]{} of (b) \"x\" (y);", "a|-|of (b)|x|y|.. 0 0|-|-"},
    {"gloss_not_ended", "[a]{} gloss\"x\"(y);", "92"},
    {"gloss_line_ends", "[a]{}\n", "92"},

    {"cw_absent", "[a]{}(y);", "a|-|-|-|y|.. 0 0|-|-"},
    {"cw_with_quotes", "[a]{} \"x\"y\"\t(y);", "a|-|-|x\"y|y|.. 0 0|-|-"},
    {"cw_definition_dropped", "[a]{} \"x{y}z\" (c);", "a|-|-|xz|c|.. 0 0|-|-"},
    {"cw_many_definitions", "[a]{} \"{k}x{y}{(\"}z{}\" (c);", "a|-|-|xz|c|.. 0 0|-|-"},
    {"cw_lone_closing_brace", "[a]{} \"x}z\" (c);", "a|-|-|x}z|c|.. 0 0|-|-"},
    {"cw_unclosed_definition", "[a]{} \"x{y\" (c);", "93"},
    {"cw_trailing_spaces_cut", "[a]{} \"x  \" (c);", "a|-|-|x|c|.. 0 0|-|-"},
    {"cw_trailing_tab_stays", "[a]{} \"x\t\" (c);", "a|-|-|x\t|c|.. 0 0|-|-"},
    {"cw_of_spaces", "[a]{} \"   \" (c);", "a|-|-|-|c|.. 0 0|-|-"},
    {"cw_unclosed", "[a]{} \"x (c);", "93"},

    {"attrs_parenthesised", "[a]{} \"b\" (c(d,e),f);", "a|-|-|b|c(d,e),f|.. 0 0|-|-"},
    {"attrs_blank_inside_parentheses", "[a]{} \"b\" (c(d e) f);", "a|-|-|b|c(d e),f|.. 0 0|-|-"},
    {"attrs_inner_closing_in_front_of_semicolon", "[a]{} \"b\" (c(d);e),f);", "a|-|-|b|c(d);e),f|.. 0 0|-|-"},
    {"attrs_separators", "[a]{} \"b\" (, \tc , d,,e f );", "a|-|-|b|c,d,e,f|.. 0 0|-|-"},
    {"attrs_empty", "[a]{} \"b\" ();", "a|-|-|b|-|.. 0 0|-|-"},
    {"attrs_separators_only", "[a]{} \"b\" ( , );", "a|-|-|b|-|.. 0 0|-|-"},
    {"attrs_close_by_newline", "[a]{} \"b\" (c) \t\n", "a|-|-|b|c|.. 0 0|-|-"},
    {"attrs_close_by_numbers", "[a]{} \"b\" (c)<E,1,2>", "a|-|-|b|c|E. 1 2|-|-"},
    {"attrs_closing_at_the_end_is_text", "[a]{} \"b\" (c)", "a|-|-|b|c)|.. 0 0|-|-"},
    {"attrs_closing_before_text_is_text", "[a]{} \"b\" (c)d,e);", "a|-|-|b|c)d,e|.. 0 0|-|-"},
    {"attrs_closing_at_start_of_token_closes", "[a]{} \"b\" (c, )d);", "a|-|-|b|c|.d 0 0|-|-"},
    {"attrs_not_closed", "[a]{} \"b\" (c, d <E,1,2>;\n", "93"},
    {"attrs_parenthesis_not_closed", "[a]{} \"b\" (c(d);\n", "93"},
    {"attrs_missing", "[a]{} \"b\"\n", "93"},

    {"language_code", "[a]{} \"b\" (c) <ES,7,300>;", "a|-|-|b|c|0. 7 44|-|-"},
    {"language_last_code", "[a]{} \"b\" (c) <SW,7,3>;", "a|-|-|b|c|3. 7 3|-|-"},
    {"language_unknown_code", "[a]{} \"b\" (c) <XX,7,3>;", "a|-|-|b|c|X. 7 3|-|-"},
    {"language_long", "[a]{} \"b\" (c) < English tongue ,7,3>;", "a|-|-|b|c|E. 7 3|-|-"},
    {"language_dot", "[a]{} \"b\" (c) <. ,7,3>;", "a|-|-|b|c|.. 7 3|-|-"},
    {"language_absent", "[a]{} \"b\" (c) <,7,3>;", "a|-|-|b|c|.. 7 3|-|-"},
    {"numbers_absent", "[a]{} \"b\" (c) <E>;", "a|-|-|b|c|E. 0 0|-|-"},
    {"priority_absent", "[a]{} \"b\" (c) <E, 7 >;", "a|-|-|b|c|E. 7 0|-|-"},
    {"numbers_with_blanks", "[a]{} \"b\" (c) < E , 7 ,\t3 >;", "a|-|-|b|c|E. 7 3|-|-"},
    {"numbers_end_with_line", "[a]{} \"b\" (c) <E,7,3\n", "a|-|-|b|c|E. 7 3|-|-"},
    {"numbers_end_with_semicolon", "[a]{} \"b\" (c) <E,7,3;Q", "a|-|-|b|c|EQ 7 3|-|-"},
    {"frequency_of_32_bits", "[a]{} \"b\" (c) <E,4294967295,255>;", "a|-|-|b|c|E. 4294967295 255|-|-"},
    {"numbers_bad_frequency", "[a]{} \"b\" (c) <E,x,3>;", "99"},
    {"numbers_behind_priority", "[a]{} \"b\" (c) <E,7,3,4>;", "99"},

    {"second_mark", "[a]{} \"b\" (c) ; ;\t;Z", "a|-|-|b|c|.Z 0 0|-|-"},
    {"second_mark_dot", "[a]{} \"b\" (c);.[e]", "a|-|-|b|c|.. 0 0|e|-"},
    {"extra1", "[a]{} \"b\" (c);[e 1] {f}", "a|-|-|b|c|.. 0 0|e 1|-"},
    {"extra1_empty_then_extra2", "[a]{} \"b\" (c);[]{f 2} rest", "a|-|-|b|c|.. 0 0|-|f 2"},
    {"extra1_unclosed", "[a]{} \"b\" (c);[e", "96"},
    {"extra2_unclosed", "[a]{} \"b\" (c);[e]{f", "97"},
    {"extra2_alone_is_not_seen", "[a]{} \"b\" (c);{f}", "a|-|-|b|c|.. 0 0|-|-"},
    {"extra2_right_behind_the_list", "[a]{} \"b\" (c,){f};", "a|-|-|b|c|.. 0 0|-|f"},
};

TEST(EntryLines, Parse) {
  const Capture capture;
  for (const LineRow& row : kLines) EXPECT_EQ(parsed(row.line), row.word) << row.name;
  session.pool.release_all();
}

TEST(EntryLimits, LongestTexts) {
  const auto filled = [](const char* before, std::size_t length, const char* behind) { return before + std::string(length, 'x') + behind; };
  EXPECT_EQ(parsed(filled("[", 1024, "]{} \"b\" (c);")), std::string(1024, 'x') + "|-|-|b|c|.. 0 0|-|-");
  EXPECT_EQ(parsed(filled("[", 1025, "]{} \"b\" (c);")), "91");
  EXPECT_EQ(parsed(filled("[a]{} \"b\" (", 1024, ");")), "a|-|-|b|" + std::string(1024, 'x') + "|.. 0 0|-|-");
  EXPECT_EQ(parsed(filled("[a]{} \"b\" (", 1025, ");")), "93");
  EXPECT_EQ(parsed(filled("[a]{} \"", 1027, "\" (c);")), "a|-|-|" + std::string(1027, 'x') + "|c|.. 0 0|-|-");
  EXPECT_EQ(parsed(filled("[a]{} \"", 1028, "\" (c);")), "93");
  EXPECT_EQ(parsed(filled("[a]{", 5000, "} \"b\" (c);")), "a|" + std::string(5000, 'x') + "|-|b|c|.. 0 0|-|-");
  session.pool.release_all();
}

struct MessageRow {
  const char* line;
  const char* printed;
};

TEST(EntryMessages, StandInTheTrace) {
  const MessageRow rows[] = {
      {"[a]{} \"x{y\" (c);\n", ";;close-braces for the master definition may be missing\n"},
      {"[a]{} \"x  \" (c);\n", ";;the spaces in the end of CW is deleted\n[a]{} \"x  \" (c);\n"},
      {"[a]{} \" \" (c);\n", ";;the spaces in the end of CW is deleted\n[a]{} \" \" (c);\n"},
      {"[a]{} \"x{ }\" (c);\n", ""},
  };
  for (const MessageRow& row : rows) {
    Capture capture;
    WordEntry* word = nullptr;
    (void)parse_entry(session, row.line, word, EntryStorage::sentence_pool);
    EXPECT_EQ(capture.text(), row.printed) << row.line;
  }
  session.pool.release_all();
}

TEST(EntrySizes, CountOptionalFieldsUpToTheLast) {
  const std::pair<const char*, std::int32_t> rows[] = {
      {"[ab]{} \"x\" ();", 2 + 1 + 12 + 10},
      {"[ab]{i} g \"x\" (c);", 2 + 1 + 1 + 13 + 10 + (1 + 2)},
      {"[ab]{} \"x\" (c);[eee]", 2 + 1 + 13 + 10 + 2 + (3 + 2)},
      {"[ab]{} \"x\" (c);[]{ffff}", 2 + 1 + 13 + 10 + 2 + 2 + (4 + 2)},
  };
  for (const auto& [line, size] : rows) {
    WordEntry* word = nullptr;
    ASSERT_EQ(parse_entry(session, line, word, EntryStorage::sentence_pool), Status::ok);
    EXPECT_EQ(word->total_size, size) << line;
    EXPECT_EQ(word->attr_block_size, word->attr_len + 12) << line;
  }
  session.pool.release_all();
}

// ---- printing

std::string printed(const WordEntry* list, const char* prefix) {
  Capture capture;
  entry_list_print(session.output, list, prefix);
  return capture.text();
}

TEST(EntryPrint, WhatIsPrintedParsesToTheSame) {
  const std::pair<const char*, const char*> rows[] = {
      {"[go]{v1}  to move\t \"go(>do)\" (V, INT)<IDx,7,253>;", "[go]{v1} to move \"go(>do)\" (V,INT) <ID,7,253>;\n"},
      {"[a]b]{} \"\" ();Z[e]{f}", "[a]b]{}  \"\" () <.,0,0>;\n"},
      {"[x]{}g (c) <Q,12>;", "[x]{} g \"\" (c) <Q,12,0>;\n"},
      {"[x]{} \"y\" (c) <E,2147483647,1>;", "[x]{}  \"y\" (c) <E,2147483647,1>;\n"},
  };
  for (const auto& [line, text] : rows) {
    WordEntry* word = nullptr;
    ASSERT_EQ(parse_entry(session, line, word, EntryStorage::sentence_pool), Status::ok) << line;
    EXPECT_EQ(printed(word, ""), text);
    ASSERT_EQ(parse_entry(session, text, word, EntryStorage::sentence_pool), Status::ok) << text;
    EXPECT_EQ(printed(word, ""), text);
  }
  session.pool.release_all();
}

TEST(EntryPrint, NullTextsAreEmptyAndNumbersAreUnsigned) {
  WordEntry second{};
  second.frequency[0] = second.frequency[1] = second.frequency[2] = second.frequency[3] = 255;
  second.priority = 200;
  second.language[0] = '3';
  char hw[] = "w";
  WordEntry first{};
  first.hw = hw;
  first.language[0] = '7';
  first.next = &second;
  EXPECT_EQ(printed(&first, "\t>"), "\t>[w]{}  \"\" () <7,0,0>;\n\t>[]{}  \"\" () <SW,4294967295,200>;\n");
  EXPECT_EQ(printed(&second, nullptr), "[]{}  \"\" () <SW,4294967295,200>;\n");
  EXPECT_EQ(printed(nullptr, "x"), "");
}

TEST(Languages, CodesAndMarks) {
  EXPECT_STREQ(language_to_mark("ES,1"), "0");
  EXPECT_STREQ(language_to_mark("IT"), "2");
  EXPECT_STREQ(language_to_mark("I"), "I");
  EXPECT_STREQ(language_to_mark(""), "");
  EXPECT_EQ(std::string(language_to_code("3.")).substr(0, 2), "SW");
  EXPECT_EQ(std::string(language_to_code("1")).substr(0, 2), "ID");
  EXPECT_STREQ(language_to_code("x."), "x.");
}

}  // namespace
}  // namespace lexon::test
