// Building the index: tables and bits.
#include "rules/matrix.hpp"

#include "support/capture.hpp"
#include "support/grammar.hpp"
#include "support/rule_build.hpp"
#include "support/saved_matrix.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

std::string hex(const std::uint8_t* bytes) {
  std::string text;
  for (std::int32_t i = 0; i < grammar.index.matrix.row_bytes; ++i) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", bytes[i]);
    text += digits;
  }
  return text;
}

// "name:pos row/neg row" for each row; names of more than 20 characters as their first one and their length.
std::string dump(const MatrixSide& side, const SavedMatrix::Side& saved) {
  std::string text;
  for (std::int32_t r = 0; r < side.attr_count; ++r) {
    const std::string name = side.attr_table[r];
    const std::int32_t at = r * grammar.index.matrix.row_bytes;
    text += text.empty() ? "" : " ";
    text += name.size() > 20 ? name.substr(0, 1) + "*" + std::to_string(name.size()) : name;
    text += ":" + hex(saved.pos.data() + at) + "/" + hex(saved.neg.data() + at);
  }
  return text;
}

class Matrix : public ::testing::Test {
 protected:
  ~Matrix() override {
    session.stop_requested = false;
    rule_matrix_clear(grammar.index);
    session.pool.release_all();
  }
};

struct BuildCase {
  const char* name;
  std::initializer_list<std::string_view> rules;
  int row_bytes;
  const char* left;
  const char* right;
};

TEST_F(Matrix, HoldsTheConditionsOfBothSides) {
  const std::string long_name(255, 'x');
  const std::string rule_with_long_name = "{" + long_name + " B}{}";
  const BuildCase cases[] = {
      {"no rules", {}, 1, "", ""},
      {"one rule", {"{N}{}"}, 1, "N:80/ff", ""},
      {"eight rules fill one byte", {"{}{}", "{}{}", "{}{}", "{}{}", "{}{}", "{}{}", "{}{}", "{N}{}"}, 1, "N:01/ff", ""},
      {"the ninth begins the next byte", {"{}{}", "{}{}", "{}{}", "{}{}", "{}{}", "{}{}", "{}{}", "{}{}", "{N}{^N}"}, 2, "N:0080/ffff", "N:0000/ff7f"},
      {"ten rules", {"{N}{}", "{}{}", "{}{}", "{^V}{}", "{}{}", "{}{}", "{}{}", "{}{}", "{}{}", "{N}{}"}, 2, "N:8040/ffff V:0000/efff", ""},
      {"the sides have tables of their own", {"{B A}{B}", "{}{C}"}, 1, "A:80/ff B:80/ff", "B:80/ff C:40/ff"},
      {"names with + and - have rows without bits", {"{+X -Y Z}{}"}, 1, "X:00/ff Y:00/ff Z:80/ff", ""},
      {"a name may be required and forbidden", {"{A ^A}{}"}, 1, "A:80/7f", ""},
      {"unsigned byte order", {"{\xC3\xA4 a B}{}"}, 1, "B:80/ff a:80/ff \xC3\xA4:80/ff", ""},
      {"prefixes come first", {"{ab abc a}{}"}, 1, "a:80/ff ab:80/ff abc:80/ff", ""},
      {"the empty name has a row", {"{A =}{^}"}, 1, ":80/ff A:80/ff", ":00/7f"},
      {"quote patterns are indexed too", {"'N'{V}"}, 1, "N:80/ff", "V:80/ff"},
      {"a name may end with a carriage return", {"{B\r A}{}"}, 1, "A:80/ff B\r:80/ff", ""},
      {"a name of 255 characters loses one, is not found, and ends the walk over its list", {rule_with_long_name, "{B}{}"}, 1, "B:40/ff x*254:00/ff", ""},
  };
  for (const BuildCase& c : cases) {
    SCOPED_TRACE(c.name);
    RuleList rules(c.rules);
    ASSERT_EQ(index_build(rules.head()), Status::ok);
    EXPECT_EQ(grammar.index.matrix.rules, rules.head());
    EXPECT_EQ(grammar.index.matrix.rule_count, static_cast<int>(c.rules.size()));
    EXPECT_EQ(grammar.index.matrix.row_bytes, c.row_bytes);
    const SavedMatrix saved = saved_matrix();
    EXPECT_EQ(dump(grammar.index.matrix.left, saved.left), c.left);
    EXPECT_EQ(dump(grammar.index.matrix.right, saved.right), c.right);
  }
}

// The names of the left side, parted by "|", of rules that ask for these texts.
std::string names_of(const std::vector<std::string>& texts) {
  std::string left = "{";
  for (const std::string& text : texts) left += (left.size() > 1 ? " =" : "=") + text;
  RuleList rules{left + "}{}"};
  EXPECT_EQ(index_build(rules.head()), Status::ok);
  std::string names;
  for (std::int32_t row = 0; row < grammar.index.matrix.left.attr_count; ++row) {
    names += (row == 0 ? "" : "|") + std::string(grammar.index.matrix.left.attr_table[row]);
  }
  rule_matrix_clear(grammar.index);
  return names;
}

TEST_F(Matrix, NamesGoThroughLinesOfText) {
  const auto x = [](std::size_t length) { return std::string(length, 'x'); };
  struct Row {
    const char* what;
    std::vector<std::string> texts;
    std::string names;
  };
  const Row rows[] = {
      {"each once, in order of unsigned bytes", {"B", "\xC3", "A", "B", "AB"}, "A|AB|B|\xC3"},
      {"a tab stands before the end", {"a", "a\t"}, "a\t|a"},
      {"an empty name", {"", "a"}, "|a"},
      {"a line feed ends a name", {"a\nb"}, "a|b"},
      {"and a CR in front of it goes", {"a\r\nb\r"}, "a|b\r"},
      {"pieces of 254 characters, as many as there are lines", {x(300), "y"}, x(254) + "|" + x(45)},
      {"a line of 1023 characters ends there without its last one", {x(1030)}, "xxxxxxx|" + x(254)},
  };
  for (const Row& row : rows) EXPECT_EQ(names_of(row.texts), row.names) << row.what;
}

TEST_F(Matrix, IsLeftEmptyWhenTheBuildIsStopped) {
  RuleList rules{"{N ^V}{A}"};
  session.stop_requested = true;
  EXPECT_EQ(index_build(rules.head()), Status::stopped);
  session.stop_requested = false;
  EXPECT_EQ(grammar.index.matrix.rules, nullptr);
}

}  // namespace
}  // namespace lexon::test
