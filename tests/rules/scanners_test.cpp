#include "rules/scanners.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "rules/parser.hpp"

namespace lexon {
namespace {

struct Row {
  const char* fact;
  std::string line;
  std::optional<std::string> text;  // none: the scanner keeps nothing
  std::string rest;                 // what stands under the cursor then
};

std::optional<std::string> kept(const char* text) {
  return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

template <std::size_t Size, typename Scan>
void check(const Row (&rows)[Size], Scan scan) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.fact);
    const char* cursor = row.line.c_str();
    EXPECT_EQ(kept(scan(cursor)), row.text);
    EXPECT_EQ(cursor, row.rest);
  }
}

using TokenScan = Status (*)(const char*&, CondItem&, std::size_t);

// Keeps a text exactly when the scanner says ok.
template <std::size_t Size>
void check_tokens(const Row (&rows)[Size], TokenScan scan, std::size_t limit) {
  check(rows, [&](const char*& cursor) {
    CondItem item{};
    const Status status = scan(cursor, item, limit);
    EXPECT_EQ(status, item.text == nullptr ? Status::no_effect : Status::ok);
    return item.text;
  });
}

TEST(Scanners, AttrToken) {
  const Row rows[] = {
      {"a comma ends it", "ab,c", "ab", ",c"},
      {"a blank ends it", "ab c", "ab", " c"},
      {"a tab ends it", "ab\tc", "ab", "\tc"},
      {"a colon ends it", "ab:c", "ab", ":c"},
      {"a brace ends it", "ab}c", "ab", "}c"},
      {"a double quote ends it", "ab\"c", "ab", "\"c"},
      {"a parenthesis ends it at depth 0", "ab)c", "ab", ")c"},
      {"its own parentheses belong to it", "a(b(c))d)", "a(b(c))d", ")"},
      {"a comma ends it at any depth", "a(b,c)", "a(b", ",c)"},
      {"a blank ends it at any depth", "a(b c)", "a(b", " c)"},
      {"brackets, braces and signs are ordinary", "[a]{^-+<,", "[a]{^-+<", ","},
      {"bytes above 127 are ordinary", "\xc3\xa9t\xc3\xa9,", "\xc3\xa9t\xc3\xa9", ","},
      {"it may be empty", ",a", "", ",a"},
      {"the line ends in it", "ab", std::nullopt, ""},
      {"a line feed does not end it", "ab\n", std::nullopt, ""},
      {"the line ends in its parentheses", "a(b)", std::nullopt, ""},
      {"exactly the limit", "abcdefgh,i", "abcdefgh", ",i"},
      {"the rest behind the limit is skipped", "abcdefghij,k", "abcdefgh", ",k"},
      {"parentheses count on behind the limit", "abcdefg(ij)k)l", "abcdefg(", ")l"},
      {"the line ends behind the limit", "abcdefghij", std::nullopt, ""},
  };
  check_tokens(rows, scan_attr_token, 8);
}

TEST(Scanners, RelationLabel) {
  const Row rows[] = {
      {"a comma ends it", "ab,c", "ab", ",c"},
      {"a blank ends it", "ab c", "ab", " c"},
      {"a parenthesis ends it", "a)b", "a", ")b"},
      {"parentheses have no depth", "a(b)c,", "a(b", ")c,"},
      {"the rest behind the limit is skipped", "abcdef}", "abc", "}"},
      {"it may be empty", ":", "", ":"},
      {"the line ends in it", "ab\n", std::nullopt, ""},
  };
  check_tokens(rows, scan_relation_label, kRelationLabelLimit);
}

TEST(Scanners, SurfaceForm) {
  const Row rows[] = {
      {"ends before a comma", "a],b", "a", ",b"},
      {"ends before a closer", "a]}", "a", "}"},
      {"ends before a double quote", "a]\"", "a", "\""},
      {"ends before a parenthesis", "a])", "a", ")"},
      {"ends before a colon", "a]:", "a", ":"},
      {"blanks may stand between", "a] \t,b", "a", " \t,b"},
      {"another bracket is ordinary", "a]b],", "a]b", ","},
      {"a bracket before a blank and a letter is ordinary", "a] N],", "a] N", ","},
      {"blanks and reserved characters belong to it", "a, b:c}],", "a, b:c}", ","},
      {"an escaped bracket cannot close", "\\[x\\]],", "[x]", ","},
      {"an escaped closing bracket before a comma", "x\\],y],", "x],y", ","},
      {"a backslash elsewhere is ordinary", "a\\b\\ c],", "a\\b\\ c", ","},
      {"two backslashes and a bracket", "a\\\\]],", "a\\]", ","},
      {"empty", "],", "", ","},
      {"an empty one needs a reserved character behind it", "]x],", "]x", ","},
      {"runs to the end of the line", "ab", "ab", ""},
      {"a bracket at the end of the line is ordinary", "ab]", "ab]", ""},
      {"the line ends at once", "", std::nullopt, ""},
  };
  check(rows, [](const char*& cursor) { return scan_hw_text(cursor); });
}

TEST(Scanners, ConceptWord) {
  const Row rows[] = {
      {"two brackets close it", "a]],b", "a", ",b"},
      {"the second character is passed unseen", "a] ,b", "a", ",b"},
      {"there is no escape", "a\\]]x", "a\\", "x"},
      {"empty", "]],", "", ","},
      {"one bracket at the end of the line", "a]", "a", ""},
      {"runs to the end of the line", "ab", "ab", ""},
      {"the line ends at once", "", std::nullopt, ""},
  };
  check(rows, [](const char*& cursor) { return scan_cw_text(cursor); });
}

struct TypeRow {
  std::string line;
  char code;  // 0: no type
  int taken;
};

TEST(Scanners, RuleType) {
  const TypeRow rows[] = {
      {":{", ':', 1},         {"L{", 'L', 1},   {"R{", 'R', 1},   {"X{", 'X', 1},    {"+{", '+', 1},  {"-{", '-', 1},
      {"<{", '<', 1},         {">{", '>', 1},   {"<<{", '<', 1},  {"1{", '1', 1},    {"2{", '2', 1},  {"?{", '?', 1},
      {"?L{", '1', 2},        {"?R{", '2', 2},  {"?X", '?', 1},   {"C{", 'C', 1},    {"CL{", 'C', 2}, {"CR{", 'U', 2},
      {"D{", 'D', 1},         {"DL{", 'a', 2},  {"DR{", 'b', 2},  {"P:{", '5', 2},   {"PL{", '3', 2}, {"PR{", '4', 2},
      {"P<{", '6', 2},        {"P<<{", '6', 3}, {"P<<<", '6', 3}, {"P<>", '6', 2},   {"P>{", '7', 2}, {"P>>{", '7', 3},
      {"PSL{", '8', 3},       {"PSR{", '9', 3}, {"PS:{", ':', 3}, {"PSA{", 'A', 3},  {"PS{", '{', 3}, {"P{", 'P', 1},
      {"P", 'P', 1},          {"PX", 'P', 1},   {"PS", 0, 2},     {"PS\n", '\n', 3}, {"A{", 0, 0},    {"V{", 0, 0},
      {"GR{", 0, 0},          {"U{", 0, 0},     {"0", 0, 0},      {"3{", 0, 0},      {"9{", 0, 0},    {"l{", 0, 0},
      {"r{", 0, 0},           {"a{", 0, 0},     {"*", 0, 0},      {"Y", 0, 0},       {"=", 0, 0},     {"\xc3", 0, 0},
      {"PS\xc3{", '\xc3', 3}, {"", 0, 0},
  };
  for (const TypeRow& row : rows) {
    SCOPED_TRACE(row.line);
    const char* cursor = row.line.c_str();
    EXPECT_EQ(static_cast<char>(parse_rule_type(cursor)), row.code);
    EXPECT_EQ(cursor - row.line.c_str(), row.taken);
  }
}

}  // namespace
}  // namespace lexon
