// Which rules the index lets through for a window.

#include "rules/candidates.hpp"

#include "data/nodes.hpp"
#include "rules/compiled.hpp"
#include "rules/rule_search.hpp"
#include "support/grammar.hpp"
#include "support/rule_build.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

// The numbers of the rules in the list; "none" for the null list.
std::string numbers(const RuleCandidate* list) {
  std::string text;
  for_each_rule_from(session, list, [&](const Rule& found) {
    int number = 0;
    for (const Rule* rule = grammar.index.matrix.rules; rule != &found; rule = rule->next) ++number;
    text += (text.empty() ? "" : " ") + std::to_string(number);
  });
  return text.empty() ? "none" : text;
}

class Candidates : public ::testing::Test {
 protected:
  Candidates() { sentence_clear(session); }
  ~Candidates() override {
    rule_matrix_clear(grammar.index);
    sentence_clear(session);
    session.pool.release_all();
  }

  // As the sentence's scopes 1, 2 and so on.
  static void add_scope(Node* entry) {
    const auto row = static_cast<std::size_t>(session.sentence.semlst_count++);
    session.sentence.semlst[row] = {static_cast<std::uint8_t>(row), entry};
  }
};

struct Case {
  const char* name;
  std::initializer_list<std::string_view> rules;
  const char* left;
  const char* right;
  const char* expected;
};

TEST_F(Candidates, FollowTheAttributesOfTheWindow) {
  const Case cases[] = {
      {"no rules", {}, "N", "N", "none"},
      {"no nodes", {"{}{}"}, "-", "-", "none"},
      {"ten rules, V alone", {"{N}{}", "{}{}", "{}{}", "{^V}{}", "{}{}", "{}{}", "{}{}", "{}{}", "{}{}", "{N}{}"}, "V*", "X*", "1 2 4 5 6 7 8"},
      {"rules without conditions fit all", {"{}{}", "{A}{}"}, "?*", "?*", "0"},
      {"no left node lets all through on the left", {"{A}{B}", "{A}{C}"}, "-", "B*", "0"},
      {"no right node lets all through on the right", {"{A}{B}", "{C}{B}"}, "A*", "-", "0"},
      {"both sides must pass", {"{A}{B}", "{A}{C}", "{C}{B}"}, "A*", "B*", "0"},
      {"all required attributes must be there", {"{A B}{}", "{A C}{}"}, "A,B*", "?*", "0"},
      {"what is inserted on the left is not tested", {"'X'{B}", "'X'{C}"}, "A*", "B*", "0"},
      {"what is inserted on the right is not tested", {"{A}'X'", "{C}'X'"}, "A*", "B*", "0"},
      {"+ and - do not count", {"{+X}{}", "{-X}{}"}, "A*", "?*", "0 1"},
      {"of a fresh node every word counts, one at a time", {"{A}{}", "{B}{}", "{A B}{}"}, "A|B", "?", "0 1"},
      {"of a used node the first word alone counts", {"{A}{}", "{B}{}"}, "A|B*", "?*", "0"},
      {"a forbidden attribute of one word leaves the other", {"{^A}{}", "{^A ^B}{}"}, "A|B", "?", "0"},
      {"also for a rule that the other side finds", {"{^A}{B}"}, "A|C", "B*", "0"},
      {"the block satisfies", {"{A}{}", "{A B}{}"}, "B{A}*", "?*", "0 1"},
      {"the block forbids nothing", {"{^A}{}"}, "B{A}*", "?*", "0"},
      {"a node without words and records lets nothing through", {"{}{}", "{}'X'"}, "#", "A*", "none"},
      {"but for what is inserted on its side", {"'X'{A}", "{}{A}"}, "#", "A*", "0"},
      {"a used node without words lets all through", {"{A}{}"}, "#*", "A*", "0"},
      {"an attribute is more than its beginning or end", {"{ab}{}", "{^ab}{}"}, "abc,cab,a,b*", "?*", "1"},
      {"an empty piece is a piece", {"{=}{}", "{^}{}"}, "A,,B*", "?*", "0"},
      {"so is the empty text", {"{=}{}", "{^}{}"}, "*", "?*", "0"},
      {"no attributes have no pieces", {"{=}{}", "{^}{}"}, "?*", "?*", "1"},
      {"a name with commas is present as neighbouring pieces", {"{a,b}{}", "{b,a}{}"}, "x,a,b*", "?*", "0"},
      {"but forbids nothing", {"{^a,b}{}"}, "a,b*", "?*", "0"},
      {"the last of a block is hidden by what begins like it", {"{ab}{}"}, "?{x,abc,ab}*", "?*", "none"},
      {"the last of a word is not", {"{ab}{}"}, "x,abc,ab*", "?*", "0"},
      {"the first of a block is not hidden", {"{ab}{}"}, "?{ab,abc}*", "?*", "0"},
      {"a separator is a piece of its own", {"{;}{}", "{A B}{}"}, "A,;,B*", "?*", "0 1"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    RuleList rules(c.rules);
    ASSERT_EQ(index_build(rules.head()), Status::ok);
    EXPECT_EQ(numbers(rule_candidates(session, node_of_attrs(c.left), node_of_attrs(c.right))), c.expected);
  }
}

struct ScopeCase {
  const char* name;
  std::vector<const char*> entries;  // of the scopes 1, 2, ...; "-" is a scope without entry
  std::initializer_list<std::string_view> rules;
  const char* left;
  const char* expected;
};

TEST_F(Candidates, SeeThroughReferences) {
  const ScopeCase cases[] = {
      {"both words count", {"N"}, {"{N}{}", "{SCOPE}{}", "{N SCOPE}{}", "{V}{}"}, ":1SCOPE", "0 1 2"},
      {"both words forbid", {"N"}, {"{^N}{}", "{^SCOPE}{}", "{}{}"}, ":1SCOPE", "2"},
      {"both blocks satisfy", {"N{A}"}, {"{A B}{}", "{^A ^B}{}"}, ":1SCOPE{B}", "0 1"},
      {"every word of a fresh entry counts", {"A|B"}, {"{A}{}", "{B}{}", "{A B}{}"}, ":1SCOPE", "0 1"},
      {"of a used one too, if the reference is fresh", {"A|B*"}, {"{A}{}", "{B}{}"}, ":1SCOPE", "0 1"},
      {"of a fresh one too, if the reference is used", {"A|B"}, {"{A}{}", "{B}{}"}, ":1SCOPE*", "0 1"},
      {"if both are used only the first", {"A|B*"}, {"{A}{}", "{B}{}"}, ":1SCOPE*", "0"},
      {"of the reference the first word alone", {"N"}, {"{A}{}", "{B}{}"}, ":1A|B", "0"},
      {"what the reference forbids holds for the first word alone", {"N"}, {"{^SCOPE}{}"}, ":1SCOPE", "none"},
      {"and is forgotten with the second", {"N|V"}, {"{^SCOPE}{}"}, ":1SCOPE", "0"},
      {"an entry without words", {"#"}, {"{SCOPE}{}", "{N}{}"}, ":1SCOPE", "0"},
      {"a reference without words", {"N"}, {"{}{}"}, ":1#", "none"},
      {"from one reference to the next", {":2X", ":3Y", "N"}, {"{N SCOPE}{}", "{X}{}", "{Y}{}"}, ":1SCOPE", "0"},
      {"no such scope", {}, {"{}{}"}, ":1SCOPE", "none"},
      {"a reference on the way that leads nowhere", {":7X"}, {"{}{}"}, ":1SCOPE", "none"},
      {"references in a circle", {":2X", ":1Y"}, {"{}{}"}, ":1SCOPE", "none"},
      {"a scope without entry counts as built", {"-"}, {"{SCOPE}{}", "{N}{}"}, ":1SCOPE*", "0"},
  };
  for (const ScopeCase& c : cases) {
    SCOPED_TRACE(c.name);
    sentence_clear(session);
    for (const char* entry : c.entries) add_scope(node_of_attrs(entry));
    RuleList rules(c.rules);
    ASSERT_EQ(index_build(rules.head()), Status::ok);
    EXPECT_EQ(numbers(rule_candidates(session, node_of_attrs(c.left), nullptr)), c.expected);
  }
}

TEST_F(Candidates, TakeABuiltReferenceByItsOwnWord) {
  RuleList rules{"{N}{}", "{SCOPE}{}"};
  ASSERT_EQ(index_build(rules.head()), Status::ok);
  Node* entry = node_of_attrs("N*");
  add_scope(entry);
  Node* reference = node_of_attrs(":1SCOPE*");
  EXPECT_EQ(numbers(rule_candidates(session, reference, nullptr)), "0 1");
  entry->left = entry->right = entry;
  EXPECT_EQ(numbers(rule_candidates(session, reference, nullptr)), "1");
}

TEST_F(Candidates, TurnEveryEntryOnTheWayToTheScopeOfTheFirstReference) {
  RuleList rules{"{A}{}", "{B}{}"};
  ASSERT_EQ(index_build(rules.head()), Status::ok);
  add_scope(node_of_attrs(":2X"));
  Node* entry = node_of_attrs("N{B}");
  entry->scope_attrs->scope = 2;
  ScopeAttrs* second = node_of_attrs("N{A}")->scope_attrs;
  second->scope = 1;
  entry->scope_attrs->next = second;
  add_scope(entry);
  EXPECT_EQ(numbers(rule_candidates(session, nullptr, node_of_attrs(":1SCOPE"))), "0 1");
  EXPECT_EQ(entry->scope_attrs, second);
  EXPECT_EQ(numbers(rule_candidates(session, node_of_attrs(":1SCOPE"), nullptr)), "0");
}

TEST_F(Candidates, ShareOneListRecord) {
  RuleList rules{"{}{}", "{}{}", "{}{}"};
  ASSERT_EQ(index_build(rules.head()), Status::ok);
  RuleCandidate* first = rule_candidates(session, node_of_attrs("A"), nullptr);
  ASSERT_NE(first->list, nullptr);
  EXPECT_EQ(first->list->elements, 1);
  RuleCandidate* second = candidate_next(session, *first);
  EXPECT_EQ(candidate_next(session, *first), second) << "made once";
  EXPECT_EQ(first->list, second->list);
  EXPECT_EQ(first->list->records, 0);
  EXPECT_EQ(first->list->elements, 2);
  EXPECT_EQ(first->lnode, nullptr);
  ++first->list->records;
  EXPECT_EQ(numbers(candidate_pass(session, *second)), "2");
  EXPECT_EQ(numbers(first), "0 1 2") << "a record leads to what was passed over behind it";
  EXPECT_NE(rule_candidates(session, node_of_attrs("A"), nullptr)->list, first->list);
}

TEST_F(Candidates, ArePassedOverForTheNextOfGenerationAlone) {
  RuleList rules{"{}{}", "{}{}", "{}{}", "{}{}", "{}{}"};
  for (Rule* rule : {rules.head()->next, rules.head()->next->next->next}) rule->type = rule_type::post_left;
  ASSERT_EQ(index_build(rules.head()), Status::ok);
  Node* node = node_of_attrs("A");
  EXPECT_EQ(post_edit_rules(session, node, nullptr).size(), 1U);
  RuleCandidate* passed = rule_candidates(session, node, nullptr);
  passed->lnode = node_of_attrs("A");
  passed = candidate_pass(session, *passed);
  EXPECT_EQ(passed->lnode, nullptr) << "the place of another rule";
  EXPECT_EQ(numbers(passed), "2 3 4") << "backtracking comes to those of post-edit behind it";
  passed = candidate_pass(session, *candidate_next(session, *passed));
  EXPECT_EQ(numbers(passed), "4");
  EXPECT_EQ(candidate_pass(session, *passed), nullptr);
}

// So many rules that require nothing are looked at in every window.
TEST_F(Candidates, AreFoundAmongManyEasyRules) {
  RuleList rules;
  std::string with_a;
  std::string with_b;
  for (int i = 0; i < 600; ++i) {
    rules.add(i == 300 ? "{=A}{}" : i % 2 == 0 ? "{^A}{}" : "{^B}'C'");
    std::string& fits = i == 300 || i % 2 != 0 ? with_a : with_b;
    fits += (fits.empty() ? "" : " ") + std::to_string(i);
  }
  ASSERT_EQ(index_build(rules.head()), Status::ok);
  EXPECT_EQ(numbers(rule_candidates(session, node_of_attrs("A"), node_of_attrs("B"))), with_a);
  EXPECT_EQ(numbers(rule_candidates(session, node_of_attrs("B"), node_of_attrs("B"))), with_b);
}

TEST_F(Candidates, DoNotComeFromAnExhaustedPool) {
  RuleList rules{"{}{}", "{}{}"};
  ASSERT_EQ(index_build(rules.head()), Status::ok);
  Node* node = node_of_attrs("A");
  while (temp_alloc(session, 4096) != nullptr) continue;
  while (temp_alloc(session, 8) != nullptr) continue;
  EXPECT_EQ(rule_candidates(session, node, node), nullptr);
}

TEST_F(Candidates, DoNotComeFromAMissingIndex) {
  Node* node = node_of_attrs("A");
  EXPECT_EQ(rule_candidates(session, node, node), nullptr);
}

// The index as it comes back from a file.
void reload() {
  std::FILE* stream = std::tmpfile();
  ASSERT_EQ(rule_matrix_save(session, grammar.index, stream), Status::ok);
  std::rewind(stream);
  EXPECT_EQ(rule_matrix_load(session, grammar.index, stream, grammar.index.matrix.rules), Status::ok);
  std::fclose(stream);
}

// Random tables and windows, over names and texts that are easily mistaken for each other.
class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}

  int below(int end) { return static_cast<int>(engine_() % static_cast<unsigned>(end)); }
  bool one_in(int n) { return below(n) == 0; }

  std::string piece() {
    static constexpr const char* kPieces[] = {"a",    "ab", "abc", "b",  "a(b", "a(b)", "(b)", ";",   "#a",
                                              ">agn", "@9", "A",   "aa", "a.b", "",     "N",   "NUM", "\xC3\xA4"};
    return kPieces[below(std::size(kPieces))];
  }
  std::string text(int most_pieces) {
    std::string made = piece();
    for (int more = below(most_pieces); more > 0; --more) made += (one_in(6) ? ",," : one_in(8) ? ",;," : ",") + piece();
    return made;
  }
  std::string name() { return one_in(5) ? text(3) : piece(); }

  std::string pattern() {
    std::string made = one_in(5) ? "'" : "{";
    const char close = made == "'" ? '\'' : '}';
    for (int more = below(4); more > 0; --more) made += (made.size() > 1 ? " " : "") + std::string(1, "^==="[below(4)]) + name();
    if (one_in(9)) made += (made.size() > 1 ? " +" : "+") + name();
    return made + close;
  }
  std::string node() {
    std::string made = one_in(3) ? ":" + std::to_string(below(5)) : "";
    made += one_in(12) ? "#" : one_in(9) ? "?" : text(5);
    if (!made.ends_with('#')) {
      for (int more = below(3); more > 0; --more) made += "|" + text(5);
    }
    if (one_in(2)) made += "{" + text(6) + "}";
    return made + (one_in(2) ? "*" : "");
  }

 private:
  std::mt19937 engine_;
};

// What has been found before for a side or a pair gives the same as a search that remembers nothing.
TEST_F(Candidates, AreTheSameWhetherRememberedOrNot) {
  Random random(20240229);
  int found = 0;
  for (int table = 0; table < 120; ++table) {
    RuleList rules;
    for (int more = random.below(random.one_in(4) ? 200 : 20); more >= 0; --more) rules.add(random.pattern() + random.pattern());
    ASSERT_EQ(index_build(rules.head()), Status::ok);
    if (random.one_in(4)) reload();
    sentence_clear(session);
    // Sides that differ in one thing alone: the block of the entry that they lead to, or whether they have been used.
    for (const char* entry : {"N,a", "N,a{b}", "N,a*"}) add_scope(node_of_attrs(entry));
    std::vector<std::pair<Node*, std::string>> nodes = {{nullptr, "-"}};
    for (const char* text : {":1a", ":2a", ":3a", "a|b", "a|b*", "a|b{N}*"}) nodes.emplace_back(node_of_attrs(text), text);
    for (int more = 0; more < 5; ++more) {
      const std::string text = random.node();
      nodes.emplace_back(node_of_attrs(text), text);
    }
    std::vector<std::string> remembered;
    const auto for_each_window = [&](auto visit) {
      for (const auto& [lnode, left] : nodes) {
        for (const auto& [rnode, right] : nodes) visit(numbers(rule_candidates(session, lnode, rnode)), left + " and " + right);
      }
    };
    for_each_window([&](const std::string& rules_found, const std::string&) {
      remembered.push_back(rules_found);
      found += rules_found != "none" ? 1 : 0;
    });
    std::size_t next = 0;
    for_each_window([&](const std::string& rules_found, const std::string& window) {
      EXPECT_EQ(rules_found, remembered[next++]) << window << ", table " << table;
      session.search.is_full = true;  // the next search begins by forgetting all
    });
    session.pool.release_all();
    if (HasFailure()) return;
  }
  EXPECT_GT(found, 3000);
}

}  // namespace
}  // namespace lexon::test
