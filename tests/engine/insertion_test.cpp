#include "data/words.hpp"
#include "engine/literal.hpp"
#include "engine/match.hpp"
#include "support/built_dictionary.hpp"
#include "support/session.hpp"
#include "support/step.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

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

// No dictionary is open: the rule itself names the word.
const Case kLiterals[] = {
    {"to the right of the left node", ":{A}\"[x],ART,^DEF\"P1;", "<< [a/A(0)] [>>]", "1 << [a/A(00)] [x/ART,DEF(0)] >>"},
    {"to the left of the right node", ":\"[x],ART\"{A}P1;", "[<<] [a/A] >>", "1 << [x/ART(0)] [a/A(0)] >>"},
    {"on the left if both are inserted", ":\"[x]\"\"[y]\"P1;", "[<<] [a/A(0)] >>", "1 << [x(0)] [a/A(00)] >>"},
    {"a concept word serves as surface form", ":{A}\"[[go]],V\"P1;", "<< [a/A(0)] [>>]", "1 << [a/A(00)] [go/V(0)] >>"},
    {"a negated text names no word", ":{A}\"^[x]\"P1;", "<< [a/A(0)] [>>]", "0 << [a/A(0)] [>>]"},
    {"no text names a word", ":{A}\"ART\"P1;", "<< [a/A(0)] [>>]", "0 << [a/A(0)] [>>]"},
    {"the other node must fit", ":{B}\"[x]\"P1;", "<< [a/A(0)] [>>]", "0 << [a/A(0)] [>>]"},
    {"SUF stands behind the new node", ":{A}\"[x]\"(C)P1;", "<< [a/A(0)] [c/C(0)] >>", "1 << [a/A(00)] [x(0)] c/C(0) >>"},
    {"SUF does not fit", ":{A}\"[x]\"(B)P1;", "<< [a/A(0)] [c/C(0)] >>", "0 << [a/A(0)] [c/C(0)] >>"},
    {"PRE does not fit", ":(B)\"[x]\"{A}P1;", "<< [c/C(0)] [a/A] >>", "0 << [c/C(0)] [a/A] >>"},
    {"the node that is there is beyond the list", ":(B)\"[x]\"{A}P1;", "<< c/C(0) [a/A] >>", "100 << c/C(0) [a/A] >>"},
    {"MID to the right", ":{A}(B)\"[x]\"P1;", "<< [a/A(0)] [b/B(0)] c/C(0) >>", "1 << [a/A(00)] b/B(0) [x(0)] c/C(0) >>"},
    {"MID to the left", ":\"[x]\"(B){A}P1;", "<< c/C(0) [b/B(0)] [a/A(0)] >>", "1 << c/C(0) [x(0)] b/B(0) [a/A(00)] >>"},
    {"a MID of one node without a mark slides by one", ":{A}(B)*\"[x]\"P1;", "<< [a/A(0)] [b/B(0)] b/B(0) >>", "1 << [a/A(00)] b/B(0) [x(0)] b/B(0) >>"},
    {"MID does not fit", ":{A}(B)\"[x]\"P1;", "<< [a/A(0)] [c/C(0)] >>", "0 << [a/A(0)] [c/C(0)] >>"},
    {"MID up to where SUF begins", ":{A}(B)*\"[x]\"(C)P1;", "<< [a/A(0)] [b/B(0)] b/B(0) c/C(0) >>", "1 << [a/A(00)] b/B(0) b/B(0) [x(0)] c/C(0) >>"},
    {"MID up to where PRE begins", ":(C)\"[x]\"(B)*{A}P1;", "<< c/C(0) b/B(0) [b/B(0)] [a/A(0)] >>", "1 << c/C(0) [x(0)] b/B(0) b/B(0) [a/A(00)] >>"},
    {"an empty starred MID slides up to SUF", ":{A}()*\"[x]\"(C)*P1;", "<< [a/A(0)] [b/B(0)] b/B(0) c/C(0) >>",
     "1 << [a/A(00)] b/B(0) b/B(0) [x(0)] c/C(0) >>"},
    {"an inserted node that waits is tried in its place", ":\"[x],X\"{A}P1;", "[!y/Y|x/X] [a/A] >>", "1 [x/X|y/Y(0)] [a/A(0)] >>"},
    {"one that MID has brought in waits for its own candidate", ":{A}(B)\"[x]\"P1;", "<< [a/A(0)] b/B(0) [!x] >>", "0 << [a/A(0)] b/B(0) [!x] >>"},
    {"the right place is empty", ":\"[x]\"\"[y]\"P1;", "[<<] >>", "0 [<<] >>"},
};

TEST(Insertion, Literals) {
  for (const Case& row : kLiterals) {
    SCOPED_TRACE(row.name);
    Step step(row.rule, row.list);
    EXPECT_EQ(matched(step), row.result);
  }
}

TEST(Insertion, WaitingNodeWithoutFittingWord) {
  Step step(":\"[x]\"{A}P1;", "[!y/Y] [a/A]");
  session.state.trace_level = 2;
  Capture output;
  EXPECT_EQ(matched(step), "-1 [!] [a/A]");
  EXPECT_EQ(output.text(), ";;lnode No Matched Word!\n");
}

// A compiled file can hold such a SUF; from a text it goes.
TEST(Insertion, LoneEmptyStarFitsBeyondTheEndOfTheList) {
  Step step(":{A}\"[x]\"(C)*P1;", "<< [a/A(0)]");
  step.rule->suf->attr_conds = nullptr;
  EXPECT_EQ(matched(step), "1 << [a/A(00)] [x(0)]");
}

// What a rule with MID leaves for the next try: its nodes are the candidate's.
TEST(Insertion, CandidateKnowsTheWindowOfMid) {
  Step step(":{A}(B)\"[x]\"P1;", "<< [a/A(0)] [b/B(0)] >>");
  ASSERT_EQ(code(match_rule(session, *step.candidate, step.window)), 1);
  EXPECT_EQ(text_of_node(step.candidate->lnode), "a/A(00)");
  EXPECT_EQ(text_of_node(step.candidate->rnode), "x(0)");
}

const Case kShifts[] = {
    {"a prefix", "P<<\"[un]\"{}P1;", "[<<] [unable/A]", "1 [<<] [unable/A]"},
    {"no prefix", "P<<\"[able]\"{}P1;", "[<<] [unable/A]", "0 [<<] [unable/A]"},
    {"an empty prefix refuses", "P<<\"[]\"{}P1;", "[<<] [unable/A]", "0 [<<] [unable/A]"},
    {"no text at all passes", "P<<\"\"{}P1;", "[<<] [unable/A]", "1 [<<] [unable/A]"},
    {"an empty word refuses", "P<<\"\"{}P1;", "[<<] [/A]", "0 [<<] [/A]"},
    {"a suffix", "P>>{}\"[able]\"P1;", "[unable/A] [>>]", "1 [unable/A] [>>]"},
    {"no suffix", "P>>{}\"[un]\"P1;", "[unable/A] [>>]", "0 [unable/A] [>>]"},
    {"an empty suffix passes", "P>>{}\"[]\"P1;", "[unable/A] [>>]", "1 [unable/A] [>>]"},
    {"the whole word", "P>>{}\"[unable]\"P1;", "[unable/A] [>>]", "1 [unable/A] [>>]"},
    {"more than the word", "P>>{}\"[unable]\"P1;", "[able/A] [>>]", "0 [able/A] [>>]"},
    {"PRE in front of the new node", "P<<(B)\"[un]\"{}P1;", "b/C(0) [b/B(0)] [unable/A]", "1 b/C(0) [b/B(0)] [unable/A]"},
    {"PRE that does not fit", "P<<(B)\"[un]\"{}P1;", "[b/C(0)] [unable/A]", "0 [b/C(0)] [unable/A]"},
};

TEST(Insertion, ShiftsChangeNothingInMatching) {
  for (const Case& row : kShifts) {
    SCOPED_TRACE(row.name);
    Step step(row.rule, row.list);
    EXPECT_EQ(matched(step), row.result);
  }
}

// An arc joins the node of the graph to the verb in the window, the left or the right place of it.
struct Arc {
  const char* name;
  const char* rule;
  const char* list;    // the verb stands in the window as "v"
  const char* node;    // of the graph
  const char* label;   // with a ">" behind it if it leads to the verb
  const char* result;  // code, list
  const char* arc;     // "used" or "free", and what stands at the node's end of it: "node", "copy"
};

const Arc kArcs[] = {
    {"a label on the inserted pattern leads away from the node", ":{V}\"N::agn\"P1;", "<< [v/V(0)] [>>]", "n/N{<agn}", "agn",
     "1 << [v/V(00)] [n/<agn,N{<agn}(0)] >>", "used node"},
    {"and does not lead to it", ":{V}\"N::agn\"P1;", "<< [v/V(0)] [>>]", "n/N", "agn>", "0 << [v/V(0)] [>>]", "free node"},
    {"a label on the other pattern leads to the node", ":{V::agn}\"N\"P1;", "<< [v/V(0)] [>>]", "n/N", "agn>", "1 << [v/V(00)] [n/N(0)] >>", "used node"},
    {"to the left", ":\"N::agn\"{V}P1;", "[<<] [v/V(0)] >>", "n/N", "agn", "1 << [n/N(0)] [v/V(00)] >>", "used node"},
    {"to the left from the other pattern", ":\"N\"{V::agn}P1;", "[<<] [v/V(0)] >>", "n/N", "agn>", "1 << [n/N(0)] [v/V(00)] >>", "used node"},
    {"another label", ":{V}\"N::pat\"P1;", "<< [v/V(0)] [>>]", "n/N", "agn", "0 << [v/V(0)] [>>]", "free node"},
    {"no word of the node fits", ":{V}\"Q::agn\"P1;", "<< [v/V(0)] [>>]", "n/N", "agn", "0 << [v/V(0)] [>>]", "free node"},
    {"words that fit come first", ":{V}\"Q::agn\"P1;", "<< [v/V(0)] [>>]", "n/N|q/Q", "agn", "1 << [v/V(00)] [q/Q|n/N(0)] >>", "used node"},
    {"a used node comes in as a copy", ":{V}\"N::agn\"P1;", "<< [v/V(0)] [>>]", "n/N,SG{<agn}(0)", "agn",
     "1 << [v/V(00)] [n/<agn,#N,#SG,N,SG{<agn,#N,#SG}(0)] >>", "used copy"},
    {"a copy that does not fit leaves no trace", ":{V}\"Q::agn\"P1;", "<< [v/V(0)] [>>]", "n/N,SG{<agn}(0)", "agn", "0 << [v/V(0)] [>>]", "free node"},
    {"a text that names a mark is given back whole", ":{V}\"Q::agn\"P1;", "<< [v/V(0)] [>>]", "n/N{#x}(0)", "agn", "0 << [v/V(0)] [>>]", "free node"},
    {"a reference without an entry", ":{V}\"::agn\"P1;", "<< [v/V(0)] [>>]", "SCOPE:07/SCOPE", "agn", "0 << [v/V(0)] [>>]", "free node"},
    {"behind MID", ":{V}(A)\"N::agn\"P1;", "<< [v/V(0)] [a/A(0)] >>", "n/N", "agn", "1 << [v/V(00)] a/A(0) [n/N(0)] >>", "used node"},
};

std::string arc_text(const Relation& arc, const Node* verb, const Node* node) {
  const Node* end = arc.from == verb ? arc.to : arc.from;
  const bool is_copy = end != node && end->origin == node;
  return std::string(arc.used != 0 ? "used " : "free ") + (is_copy ? "copy" : end == node ? "node" : "?");
}

Relation* tie(Node& verb, Node& node, std::string label, int scope = 0) {
  const bool leads_to_verb = label.back() == '>';
  if (leads_to_verb) label.pop_back();
  return leads_to_verb ? arc_between(node, verb, label.c_str(), scope) : arc_between(verb, node, label.c_str(), scope);
}

Node* verb_of(const Step& step) {
  return step.list.lnode->candidates->hw[0] == 'v' ? step.list.lnode : step.list.rnode;
}

TEST(Insertion, OverAnArc) {
  for (const Arc& row : kArcs) {
    SCOPED_TRACE(row.name);
    Step step(row.rule, row.list);
    Node* verb = verb_of(step);
    Node* node = node_of_text(row.node);
    const std::string text = text_of_node(node);
    const Relation* arc = tie(*verb, *node, row.label);
    EXPECT_EQ(matched(step), row.result);
    EXPECT_EQ(arc_text(*arc, verb, node), row.arc);
    const bool refused = row.result[0] == '0';
    EXPECT_EQ(refused ? text_of_node(node) : text, text);
  }
}

TEST(Insertion, TheFirstArcThatIsFreeOfTheScopeAndFits) {
  Step step(":{V}\"N::agn\"P1;", "<< [v/V(0)] [>>]");
  Node& verb = *step.list.lnode;
  tie(verb, *node_of_text("a/N"), "agn")->used = 1;
  tie(verb, *node_of_text("b/N"), "agn", 1);
  tie(verb, *node_of_text("c/Q"), "agn");
  tie(verb, *node_of_text("d/N"), "agn");
  tie(verb, *node_of_text("e/N"), "agn");
  EXPECT_EQ(matched(step), "1 << [v/V(00)] [d/N(0)] >>");
}

TEST(Insertion, ArcsOfACopyAreThoseOfItsOrigin) {
  Step step(":{V}\"N::agn\"P1;", "<< [v/V(0)] [>>]");
  Node* origin = node_of_text("v/V(0)");
  const Relation* arc = tie(*origin, *node_of_text("n/N"), "agn");
  step.list.lnode->origin = origin;
  EXPECT_EQ(matched(step), "1 << [v/V(00)] [n/N(0)] >>");
  EXPECT_EQ(arc->used, 1);
}

// The window is handed back with the left node alone, which is the inserted one of the two as the rule sees it.
TEST(Insertion, EmptyRightPlaceBesideAWaitingNode) {
  Step step(":\"N::agn\"\"Q\"P1;", "<< [!n/N] >>");
  const Relation* arc = arc_between(*node_of_text("q/Q"), *step.list.lnode, "agn");
  EXPECT_EQ(matched(step), "1 << [n/N(0)] q/Q(0) >>");
  EXPECT_EQ(arc->used, 0);
}

// Such a node would be its own neighbour.
// An arc from a node to itself: the list shows it, and no rule is matched on such a list any more.
TEST(Insertion, NodePutBesideItselfEndsTheSentenceAtTheNextMatch) {
  Step step(":\"::agn\"{V}P1;", "[<<] [v/V] >>");
  arc_between(*step.list.rnode, *step.list.rnode, "agn");
  ASSERT_EQ(match_rule(session, *step.candidate, step.window), Fit::yes);
  EXPECT_EQ(step.window.lnode, step.window.rnode);
  EXPECT_EQ(step.window.lnode->left, step.window.lnode);
  Capture output;
  EXPECT_EQ(match_rule(session, *step.candidate, step.window), Fit::failed);
  EXPECT_EQ(output.text(), ";;the rule base has failed: put a node beside itself\n");
}

constexpr const char* kWords =
    "[bank]{b1} \"river\" (N,A) <E,0,1>;\n"
    "[bank]{b2} \"money\" (N,B) <E,0,9>;\n"
    "[bank]{b3} \"blood\" (N,C) <E,0,5>;\n"
    "[cash]{c1} \"money\" (N,D) <E,0,3>;\n";

struct Select {
  const char* hw;
  const char* cw;
  const char* words;
};

TEST(Insertion, DictionarySelection) {
  const Select rows[] = {
      {"bank", nullptr, "bank=money~b2/N,B|bank=blood~b3/N,C|bank=river~b1/N,A"},
      {"bank", "blood", "bank=blood~b3/N,C|bank=river~b1/N,A"},
      {"bank", "tree", ""},
      {nullptr, "money", "bank=money~b2/N,B|cash=money~c1/N,D"},
      {"cheque", nullptr, ""},
      {nullptr, nullptr, ""},
  };
  fresh_sentence();
  const TestDictionary dictionary(kWords);
  for (const Select& row : rows) {
    WordEntry* words = nullptr;
    EXPECT_EQ(dict_select(session, row.hw, row.cw, words), Status::ok);
    EXPECT_EQ(text_of_words(words), row.words);
  }
}

// Words of the dictionary must fit; nothing is made up in their place.
TEST(Insertion, WordsOfTheDictionary) {
  Step fits(":{A}\"[bank],N,C\"P1;", "<< [a/A(0)] [>>]");
  const TestDictionary dictionary(kWords);
  EXPECT_EQ(matched(fits), "1 << [a/A(00)] [bank=blood~b3/N,C|bank=money~b2/N,B|bank=river~b1/N,A(0)] >>");
  Step fits_not(":{A}\"[bank],V\"P1;", "<< [a/A(0)] [>>]");
  EXPECT_EQ(matched(fits_not), "0 << [a/A(0)] [>>]");
}

TEST(Insertion, DamagedDictionaryRefusesTheRule) {
  Step step(":{A}\"[bank]\"P1;", "<< [a/A(0)] [>>]");
  const TestDictionary dictionary(kWords);
  const std::array<const IndexDescriptor*, kKeyFields> no_slots{};
  const auto* slots = std::exchange(session.sentence.dictionary.slots, no_slots.data());
  EXPECT_EQ(matched(step), "0 << [a/A(0)] [>>]");
  EXPECT_EQ(session.state.engine_status, Status::index_unreadable);
  session.sentence.dictionary.slots = slots;
}

// Members fit by their attributes; the name of the class is not held against them.
TEST(Insertion, WordsOfAClass) {
  Step step(":\"[#money],B\"{A}P1;", "[<<] [a/A(0)] >>");
  const TestDictionary dictionary(kWords);
  const TestDictionary classes("[x]{cash} \"sup#money\" (A) <E,0,9>;\n[x]{coin} \"sup#money\" (A) <E,0,1>;\n", session.sentence.cr_dictionary);
  EXPECT_EQ(matched(step), "1 << [coin/B|cash=money~c1/N,D^5(0)] [a/A(00)] >>");
}

// The best word is put first, its mark goes in front of its attributes, and the records keep the chain.
TEST(Insertion, WordsByCooccurrence) {
  Step step(":{A}\"[bank]:::for\"P1;", "<< [a/A(0)] [>>]");
  const TestDictionary dictionary(kWords);
  const TestDictionary pairs(
      "[x]{m1} \"supfor\" (A) <E,0,9>;\n[x]{m2} \"supfor\" (A) <E,0,1>;\n[am1b3]{} \"\" (A) <E,0,7>;\n"
      "[am1b1]{} \"\" (A) <E,0,2>;\n",
      session.sentence.cr_dictionary);
  EXPECT_EQ(matched(step),
            "1 << [a/A(0<m1,m2>0)] "
            "[bank=blood~b3/<m1,N,C|bank=money~b2/N,B|bank=river~b1/N,A(0<m1,m2>)] >>");
}

TEST(Insertion, CooccurrenceRefusesOrFails) {
  Step refused(":{A}\"[bank]:::for\"P1;", "<< [a/A(0)] [>>]");
  const TestDictionary dictionary(kWords);
  const TestDictionary pairs("[with]{} \"\" (A) <E,0,200>;\n", session.sentence.cr_dictionary);
  EXPECT_EQ(matched(refused), "0 << [a/A(0)] [>>]");
  Step failed(":{A}\"[bank],C:::with\"P1;", "<< [a/A(0)] [>>]");
  EXPECT_EQ(matched(failed), "1 << [a/A(00)] [bank=money~b2/N,B|bank=blood~b3/N,C|bank=river~b1/N,A(0)] >>");
}

}  // namespace
}  // namespace lexon::test
