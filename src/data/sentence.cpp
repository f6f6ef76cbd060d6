#include "data/sentence.hpp"

#include "data/output.hpp"
#include "data/state.hpp"

namespace lexon {

constinit Sentence sentence{};

void sentence_clear() {
  for (GraphWord& word : sentence.graph_words) {
    // Not the rest of the name: it is most of the tables.
    word.look_up = 1;
    word.number = 0;
    word.name[0] = '\0';
    word.blocks = nullptr;
  }
  sentence.graph_word_count = 0;
  sentence.graph_nodes.fill(nullptr);
  sentence.graph_node_count = 0;
  sentence.word_lists.fill(nullptr);
  sentence.word_list_count = 0;
  sentence.semlst.fill(ScopeRow{0, nullptr});
  sentence.semlst_count = 1;
  sentence.graph_relations.fill(nullptr);
  sentence.graph_relation_count = 0;
  sentence.root = nullptr;
  sentence.refused = false;
  state.semlst_cur = 0;
  state.abort = Status::ok;
  if (state.forced_node != nullptr) state.forced_node = gone_node();
}

void sentence_refuse(const char* what) {
  if (!sentence.refused) out_print(";;%s\n", what);
  sentence.refused = true;
}

int scope_is_built(int scope) {
  for (std::int32_t i = 1; i < sentence.semlst_count && i < kMaxScopes; ++i) {
    const ScopeRow& row = sentence.semlst[static_cast<std::size_t>(i)];
    if (row.entry == nullptr) return i;
    if (row.number != scope) continue;
    const bool stands = row.entry->left != nullptr && row.entry->right != nullptr && !is_untouched(*row.entry);
    return stands ? i : 0;
  }
  return 0;
}

Node* scope_entry_node(int scope) {
  for (std::int32_t i = 1; i < sentence.semlst_count && i < kMaxScopes; ++i) {
    const ScopeRow& row = sentence.semlst[static_cast<std::size_t>(i)];
    if (row.number == scope) return row.entry;
  }
  return nullptr;
}

Node* scope_final_node(int scope) {
  Node* node = scope_entry_node(scope);
  for (int steps = 0; node != nullptr && is_scope_reference(*node); ++steps) {
    if (steps > kMaxScopes) return nullptr;
    node = scope_entry_node(node->scope);
  }
  return node;
}

Node* scope_unbuilt_target(int scope) {
  Node* node = scope_entry_node(scope);
  for (int steps = 0; node != nullptr && is_scope_reference(*node) && scope_is_built(node->scope) == 0; ++steps) {
    if (steps > kMaxScopes) return nullptr;
    node = scope_entry_node(node->scope);
  }
  return node;
}

}  // namespace lexon
