// The words of a graph in the order that stands in for a sentence.

#include "run/fallback.hpp"

#include <gtest/gtest.h>

namespace lexon::test {
namespace {

struct Row {
  const char* name;
  const char* graph;
  const char* words;
};

const Row kRows[] = {
    {"entry_first_then_branches", "[S:1]\natt(dog, old)\nagn(see(>do).@entry, dog.@def)\npat(see(>do), cat)\n[/S]\n", "see dog old cat"},
    {"scope_in_its_place", "agn(know.@entry, she)\npat(know, :01)\nagn:01(sleep.@entry, cat)\ntim(know, now)\n", "know she sleep cat now"},
    {"quoted_and_numbered", "agn(see.@entry, \"a, (b) \\\"c\\\"\")\npat(see, dog:02.@pl)\nben(see, dog:01)\n", "see a, (b) \"c\" dog dog"},
    {"circle", "agn(a.@entry, b)\nagn(b, a)\n", "a b"},
    {"no_entry", "agn(a, b)\n", "a b"},
    {"unreached", "agn(a.@entry, b)\nagn(c, d)\n", "a b c d"},
    {"word_block", "[W]\nrain(>weather).@entry\n[/W]\n", "rain"},
    {"bad_lines", "agn(a.@entry\nnothing\nagn(a.@entry, b)\n", "a b"},
    {"words_before_the_sentence", "agn(x, y)\n[S:1]\nagn(a.@entry, b)\n[/S]\n", "a b"},
    {"empty", "", ""},
};

TEST(Fallback, Words) {
  for (const Row& row : kRows) EXPECT_EQ(fallback_words(row.graph), row.words) << row.name;
}

}  // namespace
}  // namespace lexon::test
