#include "data/nodes.hpp"

#include "data/pool.hpp"
#include "data/words.hpp"
#include "support/session.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

class Nodes : public ::testing::Test {
 protected:
  void SetUp() override { sentence_clear(session); }
  void TearDown() override { session.pool.release_all(); }

  static Node* node_of(const char* hw, const char* attrs) {
    auto* node = temp_new<Node>(session);
    node->kind = kKindWord;
    node->entries = entry_new(session, hw, attrs);
    EXPECT_EQ(node_words_reload(session, *node), Status::ok);
    return node;
  }

  static ScopeAttrs* block_of(int scope, const char* text) {
    auto* block = temp_new<ScopeAttrs>(session);
    block->scope = static_cast<std::uint8_t>(scope);
    std::strcpy(block->text, text);
    return block;
  }

  static std::string scopes(const Node& node) {
    std::string all;
    for (const ScopeAttrs* block = node.scope_attrs; block != nullptr; block = block->next) {
      all += std::to_string(block->scope);
    }
    return all;
  }
};

TEST_F(Nodes, BlocksMoveToTheFront) {
  Node* node = node_of("a", nullptr);
  node->scope_attrs = block_of(1, "");
  node->scope_attrs->next = block_of(2, "");
  node->scope_attrs->next->next = block_of(3, "");
  const std::pair<int, const char*> rows[] = {{3, "312"}, {3, "312"}, {2, "231"}, {9, "231"}};
  for (const auto& [scope, expected] : rows) {
    scope_attrs_to_front(*node, scope);
    EXPECT_EQ(scopes(*node), expected) << scope;
  }
}

TEST_F(Nodes, ACopyForInsertionTakesAllWordsAndMarksWhatTheNodeHasGathered) {
  struct Row {
    const char* block;
    const char* attrs;
    bool used;
    const char* expected;
  };
  const Row rows[] = {
      {"x", "N,#o,,PL", true, "x,#N,#PL"}, {"x", "N", false, "x"},  {"", "N", true, ""},
      {"x,#y", "N", true, "x,#y"},         {"x", "#o", true, "x,"}, {"x", nullptr, true, "x,"},
  };
  for (const Row& row : rows) {
    Node* node = node_of("a", row.attrs);
    node->scope_attrs = block_of(0, row.block);
    if (row.used) {
      ASSERT_EQ(match_record_push(session, *node, kStateStep, nullptr), Status::ok);
    }
    Relation relation{0, 0, "agn", node_of("b", nullptr), node, nullptr};
    Node* copy = nullptr;
    ASSERT_EQ(node_copy(session, copy, *node, &relation, 0), Status::ok);
    EXPECT_STREQ(node->scope_attrs->text, row.expected) << row.block;
    EXPECT_EQ(relation.to, copy);
    EXPECT_EQ(copy->origin, node);
    EXPECT_EQ(copy->source, node);
    EXPECT_NE(copy->candidates, node->candidates);
  }
}

TEST_F(Nodes, MarkedAttributesStopAtTheLimit) {
  Node* node = node_of("a", std::string(900, 'n').c_str());
  node->scope_attrs = block_of(0, std::string(200, 'x').c_str());
  ASSERT_EQ(match_record_push(session, *node, kStateStep, nullptr), Status::ok);
  Relation relation{0, 0, "agn", nullptr, node, nullptr};
  Node* copy = nullptr;
  ASSERT_EQ(node_copy(session, copy, *node, &relation, 0), Status::ok);
  EXPECT_EQ(std::strlen(node->scope_attrs->text), 1024U);
}

TEST_F(Nodes, ACopyRuleMarksTheCopyAndTheOriginal) {
  Node* node = node_of("a", "N");
  ASSERT_EQ(match_record_push(session, *node, kStateStep, nullptr), Status::ok);
  Node* copy = nullptr;
  ASSERT_EQ(node_copy(session, copy, *node, nullptr, 1), Status::ok);
  EXPECT_STREQ(copy->candidates->attrs, "#COPY,N");
  EXPECT_EQ(copy->candidates->next, nullptr);
  EXPECT_EQ(copy->candidates->attr_len, 7);
  EXPECT_STREQ(node->candidates->attrs, "#ORIG,N");
  EXPECT_STREQ(node->candidates->next->attrs, "N") << "undo drops the head";
  EXPECT_EQ(node->matches->state, kStateChanged);
}

TEST_F(Nodes, AMergeCopySharesTheSourcesList) {
  Node* node = node_of("a", nullptr);
  Node* copy = nullptr;
  ASSERT_EQ(node_copy(session, copy, *node, nullptr, 0), Status::ok);
  EXPECT_STREQ(copy->candidates->attrs == nullptr ? "none" : "some", "none");
  EXPECT_EQ(copy->candidates->next, node->candidates);
  session.sentence.semlst[0].entry = node;
  ASSERT_EQ(node_copy(session, copy, *node, nullptr, 0), Status::ok);
  EXPECT_EQ(copy->candidates->next, nullptr) << "the entry node is copied whole";
}

TEST_F(Nodes, AReleasedTargetEqualsNoNode) {
  Node* node = node_of("a", nullptr);
  session.state.forced_node = node;
  Node* released = node;
  node_free(session, released);
  EXPECT_EQ(released, nullptr);
  EXPECT_EQ(session.state.forced_node, &session.gone);
  session.state.forced_node = node_of("b", nullptr);
  sentence_clear(session);
  EXPECT_EQ(session.state.forced_node, &session.gone) << "left over from an earlier sentence";
  session.state.forced_node = nullptr;
}

TEST_F(Nodes, APassedOverElementStaysWhileARecordCanReachItsList) {
  RuleCandidate* element = candidates_new(session, nullptr);
  const CandidateList* list = element->list;
  Node* node = node_of("a", nullptr);
  ASSERT_EQ(match_record_push(session, *node, kStateHold, element), Status::ok);
  candidate_passed_over(session, element);
  EXPECT_EQ(node->matches->candidate->list, list);
  match_record_pop(session, *node);
  const std::int64_t used = session.pool.bytes_used();
  candidate_passed_over(session, element);
  EXPECT_NE(candidates_new(session, nullptr), nullptr);
  EXPECT_EQ(session.pool.bytes_used(), used) << "the cell has been given back";
}

TEST_F(Nodes, WhatIsLeftBehindIsPassedOver) {
  struct Row {
    const char* what;
    int before;  // the elements are counted from 0; -1 is the null element
    int now;
    int records;
    int left;  // elements not given back
  };
  constexpr int kElements = 5;
  constexpr int kOfAnotherList = 4;
  const Row rows[] = {
      {"up to the one that comes next", 1, 3, 0, 2},
      {"all that follow", 1, -1, 0, 1},
      {"all before another list", 0, kOfAnotherList, 0, 0},
      {"nothing if it stays", 1, 1, 0, 4},
      {"nothing behind one in front of it", 2, 1, 0, 4},
      {"nothing that a record can reach", 0, -1, 1, 4},
      {"nothing of no list", -1, 1, 0, 4},
  };
  for (const Row& row : rows) {
    auto* list = temp_new<CandidateList>(session);
    auto* other_list = temp_new<CandidateList>(session);
    *list = {row.records, kElements, 0, 0};  // one more than there are: the list's own cell stays
    *other_list = {0, 1, 0, 0};
    std::array<RuleCandidate*, kElements> elements{};
    for (std::size_t i = kElements; i-- > 0;) {
      elements[i] = temp_new<RuleCandidate>(session);
      elements[i]->list = i == kOfAnotherList ? other_list : list;
      if (i + 1 < kOfAnotherList) elements[i]->next = elements[i + 1];
    }
    const auto element = [&](int index) { return index < 0 ? nullptr : elements.at(static_cast<std::size_t>(index)); };
    candidates_left_behind(session, element(row.before), element(row.now));
    EXPECT_EQ(list->elements, row.left + 1) << row.what;
    EXPECT_EQ(other_list->elements, 1) << row.what;
  }
}

TEST_F(Nodes, WhetherAScopeStands) {
  Node* entry = node_of("a", nullptr);
  session.sentence.semlst[1] = {4, entry};
  session.sentence.semlst[2] = {5, nullptr};
  session.sentence.semlst_count = 4;
  EXPECT_EQ(scope_is_built(session, 4), 0) << "not linked";
  entry->left = entry->right = node_of("b", nullptr);
  ASSERT_EQ(match_record_push(session, *entry, kStateHold, nullptr), Status::ok);
  EXPECT_EQ(scope_is_built(session, 4), 0) << "only held";
  ASSERT_EQ(match_record_push(session, *entry, kStateStep, nullptr), Status::ok);
  EXPECT_EQ(scope_is_built(session, 4), 1);
  EXPECT_EQ(scope_is_built(session, 9), 2) << "a row without entry ends the search";
  session.sentence.semlst_count = 1;
  EXPECT_EQ(scope_is_built(session, 4), 0);
}

TEST_F(Nodes, ReferencesThatRunInACircleLeadNowhere) {
  Node* first = node_of("a", nullptr);
  Node* second = node_of("b", nullptr);
  first->kind = second->kind = kKindScope;
  first->scope = 2;
  second->scope = 1;
  session.sentence.semlst[1] = {1, first};
  session.sentence.semlst[2] = {2, second};
  session.sentence.semlst_count = 3;
  EXPECT_EQ(scope_final_node(session, 1), nullptr);
  EXPECT_EQ(scope_unbuilt_target(session, 1), nullptr);
  second->kind = kKindWord;
  EXPECT_EQ(scope_final_node(session, 1), second);
  EXPECT_EQ(scope_entry_node(session, 7), nullptr);
}

}  // namespace
}  // namespace lexon::test
