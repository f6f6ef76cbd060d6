#include "engine/match.hpp"

#include <gtest/gtest.h>

#include "support/session.hpp"
#include "support/step.hpp"

namespace lexon::test {
namespace {

// The result of a match, and the list with its window as they stand then.
std::string matched(Step& step) {
  const Fit fit = match_rule(session, *step.candidate, step.window);
  return std::to_string(code(fit)) + " " + step.text();
}

struct Case {
  const char* name;
  const char* rule;
  const char* list;
  const char* result;
};

void check(const Case& row) {
  SCOPED_TRACE(row.name);
  Step step(row.rule, row.list);
  EXPECT_EQ(matched(step), row.result);
}

const Case kWords[] = {
    {"words that fit come first, the others wait", "R{}{C}P1;", "[<<] [a/A|b/B|c/C] >>", "1 [<<(0)] [c/C|a/A|b/B(0)] >>"},
    {"fitting words keep their order", "R{}{^A}P1;", "[<<] [a/A|b/B|c/C] >>", "1 [<<(0)] [b/B|c/C|a/A(0)] >>"},
    {"no word fits", "R{}{D}P1;", "[<<] [a/A|b/B] >>", "0 [<<] [a/A|b/B] >>"},
    {"a surface form and a concept word", "R{}{[b],[[y]]}P1;", "[<<] [b=x/B|a=y/A|b=y/C] >>", "1 [<<(0)] [b=y/C|b=x/B|a=y/A(0)] >>"},
    {"negated texts", "R{}{^[a],^[[x]]}P1;", "[<<] [a/A|b=x/B|c/C] >>", "1 [<<(0)] [c/C|a/A|b=x/B(0)] >>"},
    {"empty texts are those of words without any", "R{}{[[]],[b]}P1;", "[<<] [b=y/A|b/B] >>", "1 [<<(0)] [b/B|b=y/A(0)] >>"},
    {"a signed condition is affirmative", "R{}{+B}P1;", "[<<] [a/A|b/B] >>", "1 [<<(0)] [b/B|a/A(0)] >>"},
    {"a settled word alone is asked", "R{A}{}P1;", "[b/B|a/A(0)] [>>]", "0 [b/B|a/A(0)] [>>]"},
    {"a settled word that fits", "R{B,^A,[b]}{}P1;", "[b/B|a/A(0)] [>>]", "1 [b/B|a/A(00)] [>>(0)]"},
    {"a test of the left node releases what does not fit", "?{C}{Q}P1;", "[a/A|b/B|c/C] [x/X]", "1 [c/C(0)] [x/X(0)]"},
    {"and of the right node what fits", "?{}{A}P1;", "[x/X] [a/A|b/B|c/C]", "1 [x/X(0)] [b/B|c/C(0)]"},
    {"a test on the right releases what fits", "?R{}{B}P1;", "[x/X] [a/A|b/B|c/C]", "1 [x/X(0)] [a/A|c/C(0)]"},
    {"a test on the right leaves the left words alone", "?R{Y}{B}P1;", "[x/X|y/Y] [a/A]", "1 [y/Y|x/X(0)] [a/A(0)]"},
    {"a test on the left releases what fits", "?L{B}{}P1;", "[a/A|b/B|c/C] [x/X]", "1 [a/A|c/C(0)] [x/X(0)]"},
    {"all words fit an inverted test", "?R{}{}P1;", "[x/X] [a/A|b/B]", "0 [x/X] [a/A|b/B]"},
    {"a failed surface form rejects in an inverted test too", "?R{}{[b],B}P1;", "[x/X] [a/A|b/C|b/B]", "1 [x/X(0)] [b/C(0)]"},
};

const Case kGraphAttrs[] = {
    {"attributes of the graph count and go into the word", "R{}{>agn}P1;", "[<<] [a/A{>agn,@x}] >>", "1 [<<(0)] [a/>agn,@x,A{>agn,@x}(0)] >>"},
    {"those of another scope do not", "R{}{>agn}P1;", "[<<] [a/A{>pat}{1:>agn}] >>", "0 [<<] [a/A{>pat}{1:>agn}] >>"},
    {"negated conditions see them", "R{}{^>agn}P1;", "[<<] [a/A{>agn}] >>", "0 [<<] [a/A{>agn}] >>"},
    {"a settled word has them in itself alone", "R{}{>agn}P1;", "[<<] [a/A{>agn}(0)] >>", "0 [<<] [a/A{>agn}(0)] >>"},
    {"a held node still shows them", "R{}{>agn}P1;", "[<<] [a/A{>agn}(2)] >>", "1 [<<(0)] [a/>agn,A{>agn}(02)] >>"},
    {"a held node shows them to negated conditions", "R{}{^>agn}P1;", "[<<] [a/A{>agn}(2)] >>", "0 [<<] [a/A{>agn}(2)] >>"},
    {"a text that is in the word stays out", "R{}{}P1;", "[<<] [a/A,>agn{>agn}] >>", "1 [<<(0)] [a/A,>agn{>agn}(0)] >>"},
    {"what a reference brought goes first", "R{}{}P1;", "[<<] [a/A{own,;,past}] >>", "1 [<<(0)] [a/past,;,own,A{own,;,past}(0)] >>"},
    {"a separator with nothing behind it is text", "R{}{}P1;", "[<<] [a/A{own,;}] >>", "1 [<<(0)] [a/own,;,A{own,;}(0)] >>"},
    {"the kind follows from the word", "R{}{}P1;", "[<<] [a/TEMP{x}] >>", "1 [<<(0)] [a/x,TEMP^0{x}(0)] >>"},
    {"a word of the kind nine", "R{}{}P1;", "[<<] [a/@9^5] >>", "1 [<<(0)] [a/@9^2(0)] >>"},
    {"a word of a class fits any surface form", "R{}{[b]}P1;", "[<<] [a/A^5] >>", "1 [<<(0)] [a/A^5(0)] >>"},
    {"but not a negated one", "R{}{^[b]}P1;", "[<<] [a/A^5] >>", "0 [<<] [a/A^5] >>"},
};

const Case kPlaces[] = {
    {"PRE", "R(B)(A){}{}P1;", "<< b/B(0) a/A(0) [x/X(0)] [y/Y] >>", "1 << b/B(0) a/A(0) [x/X(00)] [y/Y(0)] >>"},
    {"PRE does not fit", "R(B)(A){}{}P1;", "<< a/A(0) [x/X(0)] [y/Y] >>", "0 << a/A(0) [x/X(0)] [y/Y] >>"},
    {"SUF", "L{}{}(A)P1;", "[x/X] [y/Y] a/A(0)", "1 [x/X(0)] [y/Y(0)] a/A(0)"},
    {"SUF does not fit", "L{}{}(A)P1;", "[x/X] [y/Y] a/A", "0 [x/X] [y/Y] a/A"},
    {"relations without an inserted node", "R{::agn}{}P1;", "[x/X] [y/Y]", "0 [x/X] [y/Y]"},
    {"a test of a boundary, left", "?L{Q}{}P1;", "[<<] [y/Y]", "0 [<<] [y/Y]"},
    {"a test of a boundary, right", "?R{}{Q}P1;", "[x/X] [>>]", "0 [x/X] [>>]"},
    {"a boundary does not drop out", "DL{}{}P1;", "[<<] [y/Y]", "0 [<<] [y/Y]"},
    {"nor on the right", "DR{}{}P1;", "[x/X] [>>]", "0 [x/X] [>>]"},
    {"other nodes do", "DL{}{}P1;", "[x/X] [y/Y]", "1 [x/X(0)] [y/Y(0)]"},
    {"a word test of a touched pair leads to backtracking", "?{A}{X}P1;", "[a/A] [x/X(0)]", "-1 [a/A] [x/X(0)]"},
    {"and its settled word must fit the other way round", "?{A}{Q}P1;", "[a/A] [x/X(0)]", "0 [a/A] [x/X(0)]"},
    {"and of a reference on the right", "?{A}{Q}P1;", "[a/A] [SCOPE:01/SCOPE]", "-1 [a/A] [SCOPE:01/SCOPE]"},
    {"a type without a step, touched", "+{A}{}P1;", "[a/A(0)] [x/X]", "-1 [a/A(0)] [x/X]"},
    {"a type without a step, fresh", "+{A}{}P1;", "[a/A] [x/X]", "1 [a/A(0)] [x/X(0)]"},
    {"post-edit rules apply to any pair, and replace its records", "PL{A}{}P1;", "[a/A(0)] [x/X(10)]", "1 [a/A(0)] [x/X(00)]"},
    {"the left place is beyond the list", "R{}{}P1;", "<< x/X >>", "100 << x/X >>"},
};

TEST(Match, WordsOfTheNodes) {
  for (const Case& row : kWords) check(row);
}

TEST(Match, AttributesOfTheGraph) {
  for (const Case& row : kGraphAttrs) check(row);
}

TEST(Match, PlacesAndVerdict) {
  for (const Case& row : kPlaces) check(row);
}

TEST(Match, EntryNodeDoesNotDropOut) {
  Step step("DR{}{}P1;", "[x/X] [y/Y]");
  session.sentence.semlst[0].entry = step.list.rnode;
  EXPECT_EQ(matched(step), "0 [x/X] [y/Y]");
}

// A reference to scope 1 on the right, and the entry node that it leads to.
struct Target {
  const char* name;
  const char* rule;
  const char* reference;
  const char* entry;
  const char* result;  // code, reference, entry
};

const Target kTargets[] = {
    {"words of the entry node are moved, and held", ":{}{B,^Q:+Q}P1;", "SCOPE:01/SCOPE", "a/A|b/B|c/B|d/A", "1 SCOPE:01/SCOPE(0); b/B|c/B|a/A|d/A(2)"},
    {"only the first run of fitting words", ":{}{B,^Q:+Q}P1;", "SCOPE:01/SCOPE", "a/A|b/B|c/A|d/B", "1 SCOPE:01/SCOPE(0); b/B|a/A|c/A|d/B(2)"},
    {"attributes of the entry node hold nothing", ":{}{past,^Q:+Q}P1;", "SCOPE:01/SCOPE", "a/A{1:past}", "1 SCOPE:01/SCOPE(0); a/A{1:past}"},
    {"its roles are its own", ":{}{>agn,^Q:+Q}P1;", "SCOPE:01/SCOPE", "a/A{1:>agn}", "0 SCOPE:01/SCOPE; a/A{1:>agn}"},
    {"negated conditions see its attributes", ":{}{^past:+past}P1;", "SCOPE:01/SCOPE", "a/A{1:past}", "0 SCOPE:01/SCOPE; a/A{1:past}"},
    {"but not its roles", ":{}{^>agn:+>agn}P1;", "SCOPE:01/SCOPE", "a/A{1:>agn}", "1 SCOPE:01/SCOPE(0); a/A{1:>agn}"},
    {"surface forms are those of the entry node", ":{}{[b],^Q:+Q}P1;", "SCOPE:01/SCOPE", "a/A|b/B", "1 SCOPE:01/SCOPE(0); a/A|b/B"},
    {"an entry node that was used is reset first", ":{}{A,^Q:+Q}P1;", "SCOPE:01/SCOPE", "a/A(0)", "1 SCOPE:01/SCOPE(0); a/A(2)"},
    {"a held word is asked alone", ":{}{B,^Q:+Q}P1;", "SCOPE:01/SCOPE", "a/A|b/B(2)", "0 SCOPE:01/SCOPE; a/A|b/B(2)"},
    {"a held word fits without another hold", ":{}{A,^Q:+Q}P1;", "SCOPE:01/SCOPE", "a/A|b/B(2)", "1 SCOPE:01/SCOPE(0); a/A|b/B(2)"},
    {"a settled reference shows the entry node's word", ":{}{A,past,^Q:+Q}P1;", "SCOPE:01/SCOPE(0)", "a/A{1:past}(2)", "1 SCOPE:01/SCOPE(00); a/A{1:past}(2)"},
    {"a touched reference shows its own attributes of the graph to negated conditions alone", ":{}{past,^Q:+Q}P1;", "SCOPE:01/SCOPE{past}(0)", "a/A",
     "0 SCOPE:01/SCOPE{past}(0); a/A"},
    {"other types see the reference alone", "R{}{A}P1;", "SCOPE:01/SCOPE", "a/A", "0 SCOPE:01/SCOPE; a/A"},
    {"a test releases words of the entry node", "?L{A}{Q}P1;", "SCOPE:01/SCOPE", "a/A|b/B", "0 SCOPE:01/SCOPE; a/A|b/B"},
    {"an inverted test ends at the first word that fits", "?R{}{A}P1;", "SCOPE:01/SCOPE", "a/A|b/B", "0 SCOPE:01/SCOPE; a/A|b/B"},
};

TEST(Match, ReferenceIsSeenThrough) {
  for (const Target& row : kTargets) {
    SCOPED_TRACE(row.name);
    Step step(row.rule, std::string("<< [x/X(0)] [") + row.reference + "] >>");
    Node* entry = node_of_text(row.entry);
    add_scope(1, entry);
    const Fit fit = match_rule(session, *step.candidate, step.window);
    EXPECT_EQ(std::to_string(code(fit)) + " " + text_of_node(step.list.rnode) + "; " + text_of_node(entry), row.result);
  }
}

TEST(Match, ReferenceIsSeenThroughReferences) {
  Step step(":{}{B,^Q:+Q}P1;", "<< [x/X(0)] [SCOPE:01/SCOPE] >>");
  Node* entry = node_of_text("a/A|b/B");
  add_scope(1, node_of_text("SCOPE:02/SCOPE"));
  add_scope(2, entry);
  EXPECT_EQ(code(match_rule(session, *step.candidate, step.window)), 1);
  EXPECT_EQ(text_of_node(entry), "b/B|a/A(2)");
}

struct Room {
  const char* name;
  const char* rule;
  int length;  // of the left word's attributes
  bool fits;
};

// The right word has the attributes "xyz".
const Room kRooms[] = {
    {"1023 characters", "R{:+abc,-def,ghij}{}P1;", 1023 - 9, true},
    {"1024 characters", "R{:+abc,-def,ghij}{}P1;", 1023 - 8, false},
    {"actions of the other side do not count", "R{}{:+abcdefgh}P1;", 1023, true},
    {"but for a type with a sign", "-{}{:+abc}P1;", 1023 - 3, false},
    {"the other word's attributes", "+{:+@}{}P1;", 1023 - 3, false},
    {"and not", "+{:+@}{}P1;", 1023 - 4, true},
    {"in other types the text itself", "R{:+@}{}P1;", 1023 - 2, true},
};

TEST(Match, RoomForAdditions) {
  for (const Room& row : kRooms) {
    SCOPED_TRACE(row.name);
    Step step(row.rule, "[x/" + std::string(static_cast<std::size_t>(row.length), 'a') + "] [y/xyz]");
    session.state.trace_level = 3;
    Capture output;
    EXPECT_EQ(code(match_rule(session, *step.candidate, step.window)), row.fits ? 1 : 0);
    const bool told = output.text().starts_with(";;attributes will be longer the 1024\n;;the following rule will be not applied\n");
    EXPECT_EQ(told, !row.fits) << output.text();
  }
}

// Attributes of the word and of the graph; what the word has then, and its computed length.
struct Merge {
  const char* name;
  int word;
  std::string text;
  std::string front;  // what stands in front of ",aaa..."
  int length;
};

const std::string kOwn(300, 'o');
const std::string kBrought(500, 'b');
const Merge kMerges[] = {
    {"all fits", 10, "abc", "abc", 14},
    {"the limit exactly", 1019, "abc", "abc", 1023},
    {"the text is cut", 1020, "abc", "ab", 1023},
    {"nothing fits", 1023, "abc", "", 1023},
    {"what was brought and the own text", 10, kOwn + ",;," + kBrought, kBrought + ",;," + kOwn, 814},
    {"no room for the own text", 300, kOwn + ",;," + kBrought, kBrought + ",;", 1023},
    {"room for the separator exactly", 520, kOwn + ",;," + kBrought, kBrought + ",;", 1023},
    {"no room for the separator", 521, kOwn + ",;," + kBrought, kBrought, 1023},
    {"no room for what was brought", 523, kOwn + ",;," + kBrought, kBrought.substr(1), 1023},
};

TEST(Match, AttributesOfTheGraphWithinTheLimit) {
  for (const Merge& row : kMerges) {
    SCOPED_TRACE(row.name);
    const std::string old(static_cast<std::size_t>(row.word), 'a');
    Step step("R{}{}P1;", "[<<] [y/" + old + "{" + row.text + "}]");
    EXPECT_EQ(code(match_rule(session, *step.candidate, step.window)), 1);
    const WordEntry& word = *step.list.rnode->candidates;
    EXPECT_EQ(word.attrs, row.front + "," + old);
    EXPECT_EQ(word.attr_len, row.length);
    EXPECT_EQ(word.attr_block_size, row.length + 12);
  }
}

TEST(Match, WordWithoutAttributesTakesTheGraphs) {
  Step step("R{}{}P1;", "[<<] [y{abc}]");
  EXPECT_EQ(matched(step), "1 [<<(0)] [y/abc{abc}(0)]");
  EXPECT_EQ(step.list.rnode->candidates->attr_len, 4);
}

TEST(Match, ListTurnsToTheCurrentScope) {
  Step step("R{Q}{}P1;", "<<{0:a}{2:b} [x/X] [y/Y{0:a}{2:b}] z/Z{0:a}{2:b}");
  add_scope(2, step.list.lnode);
  session.state.semlst_cur = 1;
  EXPECT_EQ(matched(step), "0 <<{2:b}{a} [x/X] [y/Y{2:b}{a}] z/Z{2:b}{a}");
  session.state.semlst_cur = 0;
}

TEST(Match, StopIsObeyed) {
  Step step("R{}{}P1;", "[<<] [a/A] >>");
  session.stop_requested = true;
  EXPECT_EQ(match_rule(session, *step.candidate, step.window), Fit::failed);
  session.stop_requested = false;
}

}  // namespace
}  // namespace lexon::test
