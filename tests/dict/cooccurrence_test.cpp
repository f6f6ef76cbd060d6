#include "dict/cooccurrence.hpp"

#include "data/pool.hpp"
#include "data/words.hpp"
#include "support/built_dictionary.hpp"
#include "support/capture.hpp"
#include "support/list_text.hpp"
#include "support/rules.hpp"
#include "support/session.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

// Entry lines of a co-occurrence dictionary: "pair 7", or "relation>member 7" for a member of a "sup" list.
std::string entries_of(const std::string& text) {
  std::istringstream items(text);
  std::string all;
  std::string key;
  for (std::string priority; items >> key >> priority;) {
    const std::size_t arrow = key.find('>');
    const bool is_pair = arrow == std::string::npos;
    all += is_pair ? "[" + key + "]{} \"\"" : "[x]{" + key.substr(arrow + 1) + "} \"sup" + key.substr(0, arrow) + "\"";
    all += " (A) <E,0," + priority + ">;\n";
  }
  return all;
}

std::string ids_of(const WordEntry* chain) {
  std::string text;
  for (; chain != nullptr; chain = chain->next) text += std::string(" ") + text_or_empty(chain->id);
  return text;
}

struct Question {
  const char* name;
  const char* dictionary;
  const char* rule;
  const char* left;
  const char* right;
  Side side;
  const char* chosen;  // as words, or ""
  const char* result;  // "score: left | right; chosen"
};

// The score, the two lists, and the ids of the chain that is left.
std::string checked(const Question& asked, bool stop = false) {
  session.pool.release_all();
  sentence_clear(session);
  const Rule* rule = rules_of(asked.rule);
  const TestDictionary pairs(entries_of(asked.dictionary), session.sentence.cr_dictionary);
  WordEntry* left = words_of(asked.left);
  WordEntry* right = words_of(asked.right);
  WordEntry* chosen = *asked.chosen == '\0' ? nullptr : words_of(asked.chosen);
  session.stop_requested = stop;
  const int score = cooccurrence_check(session, left, right, *rule, chosen, asked.side);
  session.stop_requested = false;
  return std::to_string(score) + ": " + text_of_words(left) + " & " + text_of_words(right) + ";" + ids_of(chosen);
}

constexpr const char* kLeft = ":\"[x]:::att\"{N}P1;";   // first text of the right word, second of the left one
constexpr const char* kRight = ":{N}\"[x]:::att\"P1;";  // the other way round

const Question kChecks[] = {
    {"the best word goes to the front, a tie keeps the first", "dogatta 5 dogattb 9 dogattc 9", kLeft, "a|b|c", "dog", Side::left, "", "9: b|a|c & dog;"},
    {"on the right side", "dogatta 5 dogattb 9", kRight, "dog", "a|b", Side::right, "", "9: dog & b|a;"},
    {"a role on the other pattern turns the texts", "aattdog 5 battdog 9", ":\"[x]\"{N:::att}P1;", "a|b", "dog", Side::left, "", "9: b|a & dog;"},
    {"a role on both patterns counts on the left", "dogatta 5 aattdog 9", ":\"[x]:::att\"{N:::att}P1;", "a", "dog", Side::left, "", "5: a & dog;"},
    {"an id stands for its word", "d1atta1 5", kLeft, "b|a~a1", "dog~d1", Side::left, "", "5: a~a1|b & dog~d1;"},
    {"nothing scores: the lists stay", "catatta 5", kLeft, "a|b", "dog", Side::left, "", "0: a|b & dog;"},
    {"a pair that is missing takes the default of its relation", "att 3", kLeft, "a|b", "dog", Side::left, "", "3: a|b & dog;"},
    {"a strong pair counts as it is", "dogatta 200", kLeft, "a", "dog", Side::left, "", "200: a & dog;"},
    {"a default above 127 fails", "att 128", kLeft, "a", "dog", Side::left, "", "-1: a & dog;"},
    {"the best of equal keys counts", "dogatta 2 dogatta 6 dogatta 4", kLeft, "a", "dog", Side::left, "", "6: a & dog;"},
    {"the first member with a value, by falling priority", "att>m1 1 att>m2 9 att>m3 5 dogm3a 7 dogm1a 8", kLeft, "a", "dog", Side::left, "",
     "7: a & dog; m3 m1"},
    {"members of members", "att>m1 1 m1>m2 1 m2>m3 1 dogm3a 4", kLeft, "a", "dog", Side::left, "", "4: a & dog; m1"},
    {"the default of a member", "att>m1 1 m1 6 att 9", kLeft, "a", "dog", Side::left, "", "6: a & dog; m1"},
    {"no member has a value", "att>m1 1 att>m2 2 att 9", kLeft, "a", "dog", Side::left, "", "0: a & dog;"},
    {"a failed lookup below", "att>m1 2 m1 200 att>m2 1 dogm2a 5", kLeft, "a", "dog", Side::left, "", "-1: a & dog;"},
    {"the chain of the last word stays", "att>m1 2 att>m2 1 dogm2a 9 dogm1b 5", kLeft, "a|b", "dog", Side::left, "", "9: a|b & dog; m1 m2"},
    {"a retry asks the head words from the chain on", "dogatta 9 dogm3a 5 dogm3b 7", kLeft, "a|b", "dog", Side::left, "x~m2|x~m3|x~m4", "5: a|b & dog; m3 m4"},
    {"a retry that finds nothing", "dogatta 9", kLeft, "a", "dog", Side::left, "x~m2|x~m3", "0: a & dog;"},
    {"a retry that fails keeps what it has not tried", "m3 200", kLeft, "a", "dog", Side::left, "x~m2|x~m3|x~m4", "-1: a & dog; m3 m4"},
    {"a retry whose chain leads to the relation itself", "m3>att 1 dogatta 9", kLeft, "a", "dog", Side::left, "x~m3", "9: a & dog; m3"},
    {"nothing inserted: no check", "dogatta 9", ":{N:-N::att}{N}P1;", "b|a", "dog", Side::left, "", "1: b|a & dog;"},
    {"no role: no check", "dogatta 9", ":\"[x]\"{N}P1;", "b|a", "dog", Side::left, "", "1: b|a & dog;"},
};

TEST(Cooccurrence, Check) {
  for (const Question& asked : kChecks) {
    SCOPED_TRACE(asked.name);
    Capture output;
    EXPECT_EQ(checked(asked), asked.result);
    EXPECT_EQ(output.text(), "");
  }
}

TEST(Cooccurrence, WithoutDictionaryEveryRulePasses) {
  const Rule* rule = rules_of(kLeft);
  WordEntry* left = words_of("a");
  WordEntry* right = words_of("dog");
  WordEntry* chosen = nullptr;
  session.state.trace_level = 4;
  Capture output;
  EXPECT_EQ(cooccurrence_check(session, left, right, *rule, chosen, Side::left), 1);
  EXPECT_EQ(output.text(), "");
  session.state.trace_level = 0;
}

std::string traced(int level, const Question& asked) {
  session.state.trace_level = static_cast<std::int8_t>(level);
  std::strcpy(session.state.trace_indent, "\t");
  Capture output;
  (void)checked(asked);
  session.state.trace_level = 0;
  session.state.trace_indent[0] = '\0';
  return output.text();
}

TEST(Cooccurrence, Trace) {
  const std::string rule_line = "\t:\"[x]:::att\"{N:::}P1;\n";
  const Question by_chain{"", "att>m1 2 att>m2 1 dogm2a 7 dogattb 5", kLeft, "a|b", "dog", Side::left, "", ""};
  const std::string start = "\t;;checking CR for rule:\n" + rule_line;
  EXPECT_EQ(traced(1, by_chain), "");
  EXPECT_EQ(traced(2, by_chain), start + "\t;;CR selected: att(dog,a)=7;\n");
  EXPECT_EQ(traced(3, by_chain), start +
                                     "\t;;CR checked: m2(dog,a)=7\n"
                                     "\t;;CR checked: att(dog,b)=5\n"
                                     "\t;;CR selected: att(dog,a)=7;\n");
  const Question none{"", "att>m1 2", kLeft, "a", "dog", Side::left, "", ""};
  EXPECT_EQ(traced(3, none), start + "\t;;CR checked: att(dog,a)=0\n\t;;CR selected: att(dog,a)=0;\n");
  const Question retry{"", "dogm3a 5", kLeft, "a", "dog", Side::left, "x~m2|x~m3", ""};
  EXPECT_EQ(traced(3, retry), start + "\t;;CR checked: m2(dog,a)=5\n\t;;CR selected: m2(dog,a)=5;\n");
}

TEST(Cooccurrence, CircleOfMembersEndsTheSentence) {
  Capture output;
  EXPECT_EQ(checked({"", "att>m1 1 m1>m2 1 m2>m1 1", kLeft, "a", "dog", Side::left, "", ""}), "-1: a & dog;");
  EXPECT_EQ(session.state.abort, Status::rule_base);
  EXPECT_NE(output.text().find("the \"sup\" chain of \"m1\" runs in a circle\n"), std::string::npos) << output.text();
  EXPECT_EQ(output.text().find('\n'), output.text().size() - 1);
  sentence_clear(session);
}

TEST(Cooccurrence, LongChainOfMembersIsFollowed) {
  std::string chain = "att>m0 1 dogm1500a 5 ";
  for (int i = 0; i < 1500; ++i) chain += "m" + std::to_string(i) + ">m" + std::to_string(i + 1) + " 1 ";
  EXPECT_EQ(checked({"", chain.c_str(), kLeft, "a", "dog", Side::left, "", ""}), "5: a & dog; m0");
}

TEST(Cooccurrence, StopLeavesAtOnce) {
  EXPECT_EQ(checked({"", "dogatta 5", kLeft, "a", "dog", Side::left, "", ""}, true), "-1: a & dog;");
}

struct Class {
  const char* name;
  const char* rule;
  Side side;
  const char* words;
};

const Class kClasses[] = {
    {"members by falling priority, all words of each, made up where the dictionary has none", ":\"[#pet],X,^Y\"{N}P1;", Side::left,
     "dog=canis/N|dog=follow/V|unicorn/X,Y|cat=felis/N"},
    {"made up words have the attributes of the left pattern on the right too", ":{Z}\"[#pet],X\"P1;", Side::right,
     "dog=canis/N|dog=follow/V|unicorn/Z|cat=felis/N"},
    {"a class without members", ":\"[#tree],X\"{N}P1;", Side::left, ""},
    {"a pattern without a name", ":\"X\"{N}P1;", Side::left, ""},
};

TEST(WordClass, Entries) {
  for (const Class& row : kClasses) {
    SCOPED_TRACE(row.name);
    session.pool.release_all();
    sentence_clear(session);
    const Rule* rule = rules_of(row.rule);
    const TestDictionary members(entries_of("#pet>cat 1 #pet>dog 9 #pet>unicorn 5"), session.sentence.cr_dictionary);
    const TestDictionary words("[cat]{} \"felis\" (N) <E,0,1>;\n[dog]{} \"canis\" (N) <E,0,1>;\n[dog]{} \"follow\" (V) <E,0,9>;\n");
    EXPECT_EQ(text_of_words(word_class_entries(session, *rule, row.side)), row.words);
  }
}

}  // namespace
}  // namespace lexon::test
