// Joining the surface forms of a finished list into one line.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <utility>

#include "data/chain.hpp"
#include "data/session.hpp"
#include "run/render.hpp"

namespace lexon {

namespace {

constexpr std::ptrdiff_t kMarkStep = 4;  // wanted: the cursor moves on by 4 whatever the length of the label

// Shows at the word those of its relations that generation has not used.
bool append_unused_relations(const Node& node, char*& cursor, const char* end, int scope) {
  for (const Relation& relation : chain<&Relation::next>(node.relations)) {
    const bool touches = relation.to == &node || relation.from == &node;
    if (relation.scope != scope || relation.used != 0 || !touches) continue;
    const std::ptrdiff_t room = end - cursor;
    const char sign = relation.to == &node ? '<' : '>';
    const int length = std::snprintf(cursor, static_cast<std::size_t>(room), "%c%s", sign, relation.label);
    if (length >= room || kMarkStep > room) return false;
    cursor += kMarkStep;
  }
  return true;
}

// The surface form of the word in force. `hw_len` moves the cursor on, whatever the text's length.
bool append_word(Session& session, const Node& node, char*& cursor, const char* end, int scope) {
  const WordEntry* word = node.candidates;
  if (word != nullptr && word->hw != nullptr) {
    const std::size_t length = std::strlen(word->hw);
    const std::ptrdiff_t room = end - cursor;
    if (static_cast<std::ptrdiff_t>(length) >= room || word->hw_len >= room || word->hw_len < 0) return false;
    std::memcpy(cursor, word->hw, length + 1);
    cursor += word->hw_len;
  }
  return session.state.trace_level <= 0 || append_unused_relations(node, cursor, end, scope);
}

// The scope's own list stands in for the reference; without a row it adds nothing, which is no failure.
bool append_scope(Session& session, const Node& reference, char*& cursor, const char* end) {
  const int row = scope_row_find(session, reference.scope);
  if (row == 0) return true;
  const ScopeRow& scope = session.sentence.semlst[static_cast<std::size_t>(row)];
  return collect_sentence(session, scope.entry, cursor, end, scope.number);
}

bool append_node(Session& session, const Node& node, char*& cursor, const char* end, int scope) {
  if (is_scope_reference(node)) return append_scope(session, node, cursor, end);
  return node.kind >= kKindBoundary || append_word(session, node, cursor, end, scope);
}

// Collects what lies beyond `link`, with the neighbour's link back (`back`) cut meanwhile, so that the walk does not
// turn round.
bool collect_beyond(Session& session, Node* neighbour, Node* Node::*back, char*& cursor, const char* end, int scope) {
  if (neighbour == nullptr) return true;
  Node* kept = std::exchange(neighbour->*back, nullptr);
  const bool fits = collect_sentence(session, neighbour, cursor, end, scope);
  neighbour->*back = kept;
  return fits;
}

}  // namespace

// From left to right, beginning anywhere in the list: all that is left of the node, the node, all that is right of it.
bool collect_sentence(Session& session, Node* node, char*& cursor, const char* end, int scope) {
  if (node == nullptr) return true;
  if (stack_nearly_used(session) || must_leave(session) != Status::ok) return false;
  return collect_beyond(session, node->left, &Node::right, cursor, end, scope) &&
         append_node(session, *node, cursor, end, scope) &&
         collect_beyond(session, node->right, &Node::left, cursor, end, scope);
}

}  // namespace lexon
