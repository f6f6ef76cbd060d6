#include "data/text_line.hpp"

#include <gtest/gtest.h>

#include <array>

#include "support/capture.hpp"

namespace lexon {
namespace {

// The lines of a text, each in bars.
std::string lines_of(const std::string& text, int size) {
  std::FILE* stream = test::stream_of(text);
  std::array<char, 64> line;
  std::string all = "|";
  while (text_line_read(stream, line.data(), size)) all += std::string(line.data()) + "|";
  std::fclose(stream);
  return all;
}

TEST(TextLine, LineEnds) {
  EXPECT_EQ(lines_of("a\nb\n", 64), "|a\n|b\n|");
  EXPECT_EQ(lines_of("a\r\nb\r\n", 64), "|a\n|b\n|");
  EXPECT_EQ(lines_of("a\rb\r\r\nc", 64), "|a\rb\r\n|c|");
  EXPECT_EQ(lines_of("\r\n\r\n", 64), "|\n|\n|");
  EXPECT_EQ(lines_of("a\r", 64), "|a\r|");
  EXPECT_EQ(lines_of("", 64), "|");
}

TEST(TextLine, LongLinesComeInPieces) {
  EXPECT_EQ(lines_of("abcdef\n", 4), "|abc|def|\n|");
  EXPECT_EQ(lines_of("ab\r\ncd\r\n", 4), "|ab\n|cd\n|");
}

}  // namespace
}  // namespace lexon
