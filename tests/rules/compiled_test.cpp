#include "rules/compiled.hpp"

#include "rules/matrix.hpp"
#include "support/grammar.hpp"
#include "support/rule_dump.hpp"
#include "support/rules.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

// Bytes from hexadecimal pairs; blanks part them.
std::string hex(const std::string& pairs) {
  std::string bytes;
  std::string digits;
  for (const char c : pairs) {
    if (c == ' ') continue;
    digits += c;
    if (digits.size() == 2) bytes += static_cast<char>(std::stoi(std::exchange(digits, ""), nullptr, 16));
  }
  return bytes;
}

std::string all_of(std::FILE* stream) {
  std::rewind(stream);
  std::string bytes;
  for (int c = std::fgetc(stream); c != EOF; c = std::fgetc(stream)) bytes += static_cast<char>(c);
  std::fclose(stream);
  return bytes;
}

struct Result {
  Status status;
  std::string bytes;  // of a file that was written
  Rule* rules;        // of a file that was read
  std::string messages;
};

Result list_written(const Rule* rules) {
  Capture output;
  std::FILE* stream = stream_of("");
  const Status status = rule_list_write(session, rules, stream);
  return {status, all_of(stream), nullptr, output.text()};
}

Result list_read(const std::string& bytes) {
  Capture output;
  std::FILE* stream = stream_of(bytes);
  Rule* rules = nullptr;
  const Status status = rule_list_read(session, grammar.pool, rules, stream);
  std::fclose(stream);
  return {status, "", rules, output.text()};
}

Result matrix_saved() {
  Capture output;
  std::FILE* stream = stream_of("");
  const Status status = rule_matrix_save(session, grammar.index, stream);
  return {status, all_of(stream), nullptr, output.text()};
}

Result matrix_loaded(const std::string& bytes, Rule* rules) {
  Capture output;
  std::FILE* stream = stream_of(bytes);
  const Status status = rule_matrix_load(session, grammar.index, stream, rules);
  std::fclose(stream);
  return {status, "", nullptr, output.text()};
}

const std::string kEmptyPattern = "00 11 00 0000 0000 0000 0000 0000 0000 0000 0000";
const std::string kEmptyRule = "00 2E 4C 0000" + kEmptyPattern + "0000" + kEmptyPattern + "0000 05";
const std::string kFullRule =
    "00 72 3A"
    "00 0B 01 0000 0000 00 04 01 00 01 4E"                       // (N)*
    "00 32 00"                                                   // {
    "00 06 00 00 03 6E 6F 74 00 05 01 00 02 67 6F"               // ^[not],[[go]]
    "00 04 77 65 6E 74 0000 00 04 01 00 01 56"                   // V
    "00 0E 03 00 04 50 41 53 54 08 00 04 77 65 6E 74 0000 0000"  // +PAST,[went]
    "00 00"
    "00 1E 01 00 04 01 00 01 00 0000 0000 0000 0000 0000"  // "[]
    "00 05 72 00 02 61 62 00 04 3E 00 01 72"               // ab:>r"
    "00 0B 00 0000 0000 00 04 00 00 01 50"                 // (^P)
    "14";
const char* const kFullText = ":(N)*{^[not],[[go]],V:+PAST,[went]::}\"[]::ab:>r\"(^P)P20;";

TEST(CompiledRules, BytesOfRecords) {
  EXPECT_EQ(list_written(rules_of("L{}{}P5;")).bytes, hex(kEmptyRule));
  EXPECT_EQ(list_written(rules_of(kFullText)).bytes, hex(kFullRule));
  EXPECT_EQ(list_written(rules_of("L{}{}P5;\n" + std::string(kFullText))).bytes, hex(kFullRule) + hex(kEmptyRule));
  EXPECT_EQ(list_written(nullptr).bytes, "");
}

TEST(CompiledRules, SubtypeStandsBehindAColon) {
  Rule* const rule = rules_of("L{}{}P5;");
  rule->subtype = 7;
  const std::string bytes = hex("00 30 4C 3A 07 0000" + kEmptyPattern + "0000" + kEmptyPattern + "0000 05");
  EXPECT_EQ(list_written(rule).bytes, bytes);
  EXPECT_EQ(dump(list_read(bytes).rules), "L/7  | brace  |  | brace  |  P5\n");
}

TEST(CompiledRules, ReadBackEqual) {
  std::string text;
  for (const char* line : {":(a)(b)*{x,^[y],[]}(c,[d])([[e]])*\"[w]:[v],+q,-r,[[u]]:l,m:>n,<o\"(f)P200;", "P:\"[w]\"(a)(b)*{x:-x}P200;", "PSA{a:-a}{}P1;",
                           "?R{-a,+b,seven77,eight888,c}{}P3;", "<{::rel}{}P2;"}) {
    text += std::string(line) + "\n";
  }
  // Larger than the reader's buffer, so that records lie across its end.
  for (int i = 0; i < 1500; ++i) text += "L{attribute" + std::to_string(i) + "}{:+x}P9;\n";
  Rule* const parsed = rules_of(text);
  const Result written = list_written(parsed);
  ASSERT_GT(written.bytes.size(), 2U * 32767U);
  const Result read = list_read(written.bytes);
  EXPECT_EQ(read.status, Status::ok);
  EXPECT_EQ(dump(read.rules), dump(parsed));
  EXPECT_EQ(printed(read.rules), printed(parsed));
  EXPECT_EQ(list_written(read.rules).bytes, written.bytes);
}

struct RecordRow {
  const char* fact;
  std::string bytes;        // hexadecimal
  std::string fields = {};  // of the rules that are read
};

TEST(CompiledRules, ReaderTakesShortAndLongRecords) {
  const std::string end = "0000" + kEmptyPattern + "0000 05";
  const RecordRow rows[] = {
      {"a pattern may end behind its surface forms", "00 20 4C 0000 00 03 01 0000" + end, "L/0  | quote  |  | brace  |  P5\n"},
      {"a pattern may end behind its attributes", "00 2C 4C 0000 00 0F 00 0000 0000 0000 0000 00 04 01 00 01 4E" + end,
       "L/0  | brace attr<1N> |  | brace  |  P5\n"},
      {"a group may end behind its surface forms", "00 31 4C 00 03 01 0000" + kEmptyPattern + end, "L/0 ()* | brace  |  | brace  |  P5\n"},
      {"a group may end behind its concept words", "00 37 4C 00 09 01 0000 00 04 01 00 01 63" + kEmptyPattern + end,
       "L/0 (cw<1c>)* | brace  |  | brace  |  P5\n"},
      {"bytes behind the priority are passed over", "00 30 4C 0000" + kEmptyPattern + end + "AA BB" + kEmptyRule,
       "L/0  | brace  |  | brace  |  P5\nL/0  | brace  |  | brace  |  P5\n"},
      {"texts of actions stand apart from the items",
       "00 35 4C 0000 00 18 00 0000 0000 00 01 00 00 02 78 79"
       "0000 00 04 02 00 01 7A 0000 0000" +
           end,
       "L/0  | brace act<2z>set_hw<>set_cw<xy> |  | brace  |  P5\n"},
  };
  for (const RecordRow& row : rows) {
    SCOPED_TRACE(row.fact);
    const Result read = list_read(hex(row.bytes));
    EXPECT_EQ(read.status, Status::ok);
    EXPECT_EQ(dump(read.rules), row.fields);
  }
}

TEST(CompiledRules, DamagedRecordsAreRefused) {
  const std::string middle = "0000" + kEmptyPattern;
  const RecordRow rows[] = {
      {"one byte", "00"},
      {"a record of length 0", "00 00"},
      {"a record of length 1", "00 01 4C"},
      {"no left pattern", "00 1D 4C 0000 0000" + middle + "0000 05"},
      {"no right pattern", "00 1D 4C" + middle + "0000 0000 0000 05"},
      {"a pattern of one byte", "00 1E 4C 0000 00 01 00" + middle + "0000 05"},
      {"a group of one byte", "00 2F 4C 00 01 00" + kEmptyPattern + middle + "0000 05"},
      {"an item without text", "00 31 4C 0000 00 14 00 00 03 01 00 00 0000 0000 0000 0000 0000 0000 0000" + middle + "0000 05"},
      {"a NUL inside a text", "00 30 4C 0000 00 13 00 0000 0000 00 02 41 00 0000 0000 0000 0000 0000" + middle + "0000 05"},
      {"a NUL inside an item's text", "00 33 4C 0000 00 16 00 00 05 01 00 02 41 00 0000 0000 0000 0000 0000 0000 0000" + middle + "0000 05"},
      {"a NUL inside a long one", "00 39 4C 0000 00 1C 00 00 0B 01 00 08 4141414100414141 0000 0000 0000 0000 0000 0000 0000" + middle + "0000 05"},
      {"a pattern that goes on", "00 2F 4C 0000 00 12 00 0000 0000 0000 0000 0000 0000 0000 0000 00" + middle + "0000 05"},
      {"no priority", "00 2D 4C 0000" + kEmptyPattern + middle + "0000"},
      {"a length beyond the file", "FF FF 4C 0000" + kEmptyPattern + middle + "0000 05"},
  };
  for (const RecordRow& row : rows) {
    SCOPED_TRACE(row.fact);
    const Result read = list_read(hex(kEmptyRule + row.bytes));
    EXPECT_EQ(read.status, Status::no_effect);
    EXPECT_EQ(read.rules, nullptr);
    EXPECT_EQ(read.messages, ";;the compiled rule file is damaged at rule no. 2, offset 48\n");
  }
}

TEST(CompiledRules, CutAtEveryByte) {
  const std::string whole = hex(kFullRule) + hex(kEmptyRule);
  const std::size_t first = hex(kFullRule).size();
  for (std::size_t length = 1; length < whole.size(); ++length) {
    const Result read = list_read(whole.substr(0, length));
    EXPECT_EQ(read.status, length == first ? Status::ok : Status::no_effect) << length;
    EXPECT_EQ(read.rules != nullptr, length == first) << length;
  }
}

TEST(CompiledRules, LargestRecordThatTheReaderTakes) {
  const std::string tail = hex("4C 0000" + kEmptyPattern + "0000" + kEmptyPattern + "0000 05");
  const std::string rest = list_written(rules_of("R{a}{}P1;")).bytes;
  const std::string largest = hex("7F FD") + tail + std::string(32765 - tail.size(), 'x') + rest;
  EXPECT_EQ(dump(list_read(largest).rules), "L/0  | brace  |  | brace  |  P5\nR/0  | brace attr<1a> |  | brace  |  P1\n");
  const std::string too_large = hex("7F FE") + tail + std::string(32766 - tail.size(), 'x') + rest;
  EXPECT_EQ(list_read(too_large).status, Status::no_effect);
}

TEST(CompiledRules, WriterRefusesWhatTheReaderCannotTake) {
  Rule* const rules = rules_of("L{}{}P9;\nR{}{}P8;\n");
  std::string text(32765 - 46, 'x');
  rules->next->lnode->hw_action = text.data();
  const Result largest = list_written(rules);
  EXPECT_EQ(largest.status, Status::ok);
  EXPECT_EQ(printed(list_read(largest.bytes).rules), printed(rules));

  text += 'x';
  rules->next->lnode->hw_action = text.data();
  const Result too_large = list_written(rules);
  EXPECT_EQ(too_large.status, Status::no_effect);
  EXPECT_EQ(too_large.messages, ";;rule no. 2 cannot be written into the compiled rule file\n");
  EXPECT_EQ(too_large.bytes, "") << "no file that holds some of the rules";
}

TEST(CompiledRules, WriterRefusesWhatWouldReadAsASubtype) {
  Rule* const rule = rules_of("L([x]){}{}P9;");
  std::string text(0x3A00 - 10, 'x');  // so PRE has a length of 3A 00
  rule->pre->hw_conds->text = text.data();
  EXPECT_EQ(list_written(rule).status, Status::no_effect);
  rule->subtype = 1;
  EXPECT_EQ(dump(list_read(list_written(rule).bytes).rules), dump(rule));
}

TEST(CompiledRules, FileThatCannotBeWrittenIsTold) {
  std::FILE* const full = std::fopen("/dev/full", "wb");
  if (full == nullptr) GTEST_SKIP() << "no device that is always full";
  Capture output;
  EXPECT_EQ(rule_list_write(session, rules_of("L{}{}P9;"), full), Status::ok);
  EXPECT_EQ(rule_matrix_save(session, grammar.index, full), Status::ok);
  std::fclose(full);
  EXPECT_EQ(output.text(), ";;the compiled rule file could not be written\n;;the compiled rule matrix could not be written\n");
}

TEST(CompiledRules, StopsWhenAsked) {
  const Rule* const rules = rules_of("L{}{}P9;");
  const std::string bytes = list_written(rules).bytes;
  session.stop_requested = true;
  const Result read = list_read(bytes);
  const Result written = list_written(rules);
  session.stop_requested = false;
  EXPECT_EQ(read.status, Status::stopped);
  EXPECT_EQ(read.rules, nullptr);
  EXPECT_EQ(written.status, Status::stopped);
  EXPECT_EQ(written.bytes, "");
}

// Left: N, V; right: X. Rule 0 wants N and X and forbids V; rule 1 wants V.
const char* const kMatrixRules = "L{N,^V}{X}P9;\nL{V,+N}{}P8;\n";
const char* const kMatrixHeader = "00000002 00000004 00000001 00000002 00000002 00000001 00000002 00000001";
const std::string kMatrixAreas = "4E00 5600  5800  80 40  FF 7F  80  FF";

TEST(CompiledMatrix, BytesOfTheFile) {
  Rule* const rules = rules_of(kMatrixRules);
  const std::string bytes = hex(kMatrixHeader + kMatrixAreas);
  ASSERT_EQ(index_build(rules), Status::ok);
  EXPECT_EQ(matrix_saved().bytes, bytes);

  rule_matrix_clear(grammar.index);
  EXPECT_EQ(matrix_loaded(bytes + "behind the end", rules).status, Status::ok);
  EXPECT_EQ(grammar.index.matrix.rules, rules);
  EXPECT_EQ(attr_table_find("N", grammar.index.matrix.left.attr_table, grammar.index.matrix.left.attr_count), 0);
  EXPECT_EQ(attr_table_find("V", grammar.index.matrix.left.attr_table, grammar.index.matrix.left.attr_count), 1);
  EXPECT_EQ(attr_table_find("X", grammar.index.matrix.right.attr_table, grammar.index.matrix.right.attr_count), 0);
  EXPECT_EQ(matrix_saved().bytes, bytes);
  rule_matrix_clear(grammar.index);
}

// Is there nothing left that a search could run on?
bool is_zeroed() {
  return grammar.index.matrix.rules == nullptr && grammar.index.matrix.rule_count == 0 && grammar.index.matrix.row_bytes == 0 &&
         grammar.index.matrix.left.attr_pool == nullptr && grammar.index.matrix.right.attr_table == nullptr;
}

// A header of these eight numbers.
std::string header(const std::vector<std::uint32_t>& numbers) {
  std::string bytes;
  for (const std::uint32_t number : numbers) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift & 0xFF);
  }
  return bytes;
}

struct MismatchRow {
  std::vector<std::uint32_t> numbers;
  std::string areas;
  std::string message;
};

TEST(CompiledMatrix, SizesThatDisagreeAreRefused) {
  const std::string pool = "attr_count does not agree with pool_size";
  const std::string rows_and_names = "matrix_size does not agree with row_bytes and attr_count";
  const std::string names = "the names do not agree with attr_count";
  const MismatchRow rows[] = {
      {{0x80000002, 4, 1, 2, 2, 1, 2, 1}, kMatrixAreas, "attr_count is negative"},
      {{5, 4, 1, 2, 2, 1, 5, 1}, kMatrixAreas, pool},
      {{2, 4, 0, 2, 2, 1, 2, 0}, kMatrixAreas, pool},
      {{2, 4, 1, 2, 3, 1, 2, 1}, kMatrixAreas, "rule_count is not the number of rules"},
      {{2, 4, 1, 2, 0xFFFFFFFF, 1, 2, 1}, kMatrixAreas, "rule_count is not the number of rules"},
      {{2, 4, 1, 2, 2, 2, 4, 2}, kMatrixAreas, "row_bytes does not agree with rule_count"},
      {{2, 4, 1, 2, 2, 0, 0, 0}, kMatrixAreas, "row_bytes does not agree with rule_count"},
      {{2, 4, 1, 2, 2, 1, 3, 1}, kMatrixAreas, rows_and_names},
      {{2, 4, 1, 2, 2, 1, 2, 0xFFFFFFFF}, kMatrixAreas, rows_and_names},
      {{0x7FFFFFFF, 0x7FFFFFFF, 1, 2, 2, 1, 0x7FFFFFFF, 1}, kMatrixAreas, "the file is cut short"},
      {{2, 4, 1, 2, 2, 1, 2, 1}, "4E00 0056 5800 80 40 FF 7F 80 FF", names},
      {{2, 4, 1, 2, 2, 1, 2, 1}, "4E56 4100 5800 80 40 FF 7F 80 FF", names},
      {{2, 4, 1, 2, 2, 1, 2, 1}, "4E00 0000 5800 80 40 FF 7F 80 FF", names},
  };
  Rule* const rules = rules_of(kMatrixRules);
  for (const MismatchRow& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.numbers) + " " + row.areas);
    const Result loaded = matrix_loaded(header(row.numbers) + hex(row.areas), rules);
    EXPECT_EQ(loaded.status, Status::no_effect);
    EXPECT_EQ(loaded.messages, ";;the compiled rule matrix cannot be used: " + row.message + "\n");
    EXPECT_TRUE(is_zeroed());
  }
}

TEST(CompiledMatrix, CutAtEveryByte) {
  Rule* const rules = rules_of(kMatrixRules);
  const std::string whole = hex(kMatrixHeader + kMatrixAreas);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const Result loaded = matrix_loaded(whole.substr(0, length), rules);
    EXPECT_EQ(loaded.status, Status::no_effect) << length;
    EXPECT_EQ(loaded.messages,
              std::string(";;the compiled rule matrix cannot be used: ") + (length < 32 ? "the file has no header\n" : "the file is cut short\n"));
    EXPECT_TRUE(is_zeroed());
  }
}

}  // namespace
}  // namespace lexon::test
