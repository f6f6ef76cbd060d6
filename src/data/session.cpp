#include "data/session.hpp"

#include <algorithm>
#include <array>
#include <cstring>

namespace lexon {

namespace {

template <typename Row, std::size_t Size>
void rows_clear(std::array<Row, Size>& table, std::int32_t& count) {
  std::fill_n(table.begin(), count, Row{});
  count = 0;
}

}  // namespace

bool stack_nearly_used(Session& session) {
  // Stacks grow downwards on what this runs on.
  const auto* here = static_cast<const char*>(__builtin_frame_address(0));
  const bool used = session.state.stack_limit != nullptr && here < session.state.stack_limit;
  if (used) session.state.abort = Status::memory;
  return used;
}

Status rule_base_failure(Session& session, const char* what) {
  // After a cell was refused, the rule base met what was half done.
  if (must_leave(session, session.pool) == Status::memory) return Status::memory;
  // The first failure of a sentence is told; what follows from it on the way out is not.
  if (session.state.abort == Status::ok) out_print(session, ";;the rule base has failed: %s\n", what);
  if (session.state.abort == Status::ok) remark(session, 0, std::string("the rule base has failed: ") + what);
  session.state.abort = Status::rule_base;
  return Status::rule_base;
}

void remark(Session& session, std::int64_t line, std::string_view text) {
  if (session.remarks != nullptr) session.remarks->push_back({line, std::string(text)});
}

// False at the greatest depth, and the indent stays.
bool trace_indent_grow(Session& session) {
  EngineState& state = session.state;
  if (state.trace_depth == sizeof state.trace_indent - 1) return false;
  state.trace_indent[state.trace_depth++] = '\t';
  state.trace_indent[state.trace_depth] = '\0';
  return true;
}

void trace_indent_shrink(Session& session) {
  EngineState& state = session.state;
  if (state.trace_depth != 0) state.trace_indent[--state.trace_depth] = '\0';
}

void temp_free_string(Session& session, char* text) {
  if (text == nullptr || session.lookups.holds(text) || *text == '\0') return;
  temp_free(session, text, static_cast<std::int64_t>(std::strlen(text)) + 1);
}

void sentence_clear(Session& session) {
  Sentence& sentence = session.sentence;
  // A row of this table is written whole when it is put in.
  sentence.graph_word_count = 0;
  // Only what the last sentence has used: the tables are large, and most sentences small.
  std::ranges::fill(scope_rows(sentence), ScopeRow{0, nullptr});
  rows_clear(sentence.graph_nodes, sentence.graph_node_count);
  rows_clear(sentence.word_lists, sentence.word_list_count);
  rows_clear(sentence.graph_relations, sentence.graph_relation_count);
  // Row 0 is the sentence itself, and stays.
  sentence.semlst_count = 1;
  sentence.root = nullptr;
  sentence.refused = false;
  sentence.has_scopes_mixed = false;
  sentence.has_loop = false;
  session.label.clear();
  session.state.semlst_cur = 0;
  session.state.abort = Status::ok;
  // The one thing that a sentence leaves to the next: that a forced target was not reached.
  if (session.state.forced_node != nullptr) session.state.forced_node = &session.gone;
}

void sentence_refuse(Session& session, const char* what) {
  if (!session.sentence.refused) {
    out_print(session, ";;%s\n", what);
    remark(session, 0, what);
  }
  session.sentence.refused = true;
}

int scope_row_find(const Session& session, int scope) {
  int index = 1;
  for (const ScopeRow& row : scope_rows(session.sentence, 1)) {
    if (row.number == scope) return index;
    ++index;
  }
  return 0;
}

int scope_is_built(const Session& session, int scope) {
  int index = 1;
  for (const ScopeRow& row : scope_rows(session.sentence, 1)) {
    // A row without an entry ends the search, as if the scope were built.
    if (row.entry == nullptr) return index;
    if (row.number == scope) {
      const bool stands = row.entry->left != nullptr && row.entry->right != nullptr && !is_untouched(*row.entry);
      return stands ? index : 0;
    }
    ++index;
  }
  return 0;
}

Node* scope_entry_node(const Session& session, int scope) {
  const int row = scope_row_find(session, scope);
  return row == 0 ? nullptr : session.sentence.semlst[static_cast<std::size_t>(row)].entry;
}

Node* scope_final_node(const Session& session, int scope) {
  Node* node = scope_entry_node(session, scope);
  // Scopes whose entries stand for each other lead in a circle; no way is longer than there are scopes.
  for (int steps = 0; node != nullptr && is_scope_reference(*node); ++steps) {
    if (steps > kMaxScopes) return nullptr;
    node = scope_entry_node(session, node->scope);
  }
  return node;
}

Node* scope_unbuilt_target(const Session& session, int scope) {
  Node* node = scope_entry_node(session, scope);
  for (int steps = 0; node != nullptr && is_scope_reference(*node) && scope_is_built(session, node->scope) == 0;
       ++steps) {
    if (steps > kMaxScopes) return nullptr;
    node = scope_entry_node(session, node->scope);
  }
  return node;
}

}  // namespace lexon
