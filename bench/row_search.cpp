#include "row_search.hpp"

#include <cstring>
#include <string>
#include <vector>

#include "data/attr_string.hpp"
#include "data/chain.hpp"
#include "data/nodes.hpp"
#include "data/pool.hpp"
#include "rules/matrix.hpp"
#include "support/grammar.hpp"

namespace lexon::test {

namespace {

using Vector = std::vector<std::uint8_t>;

std::size_t row_bytes() {
  return static_cast<std::size_t>(grammar.index.matrix.row_bytes);
}

void row_and(Vector& vector, const std::uint8_t* matrix, std::int32_t r) {
  const std::uint8_t* row = matrix + static_cast<std::size_t>(r) * row_bytes();
  for (std::size_t i = 0; i < row_bytes(); ++i) vector[i] &= row[i];
}

void row_or(Vector& vector, const std::uint8_t* matrix, std::int32_t r) {
  const std::uint8_t* row = matrix + static_cast<std::size_t>(r) * row_bytes();
  for (std::size_t i = 0; i < row_bytes(); ++i) vector[i] |= row[i];
}

struct Side {
  const MatrixSide& matrix;
  const SavedMatrix::Side& saved;
  Node* node;
  Node* entry = nullptr;
  Vector result = Vector(row_bytes(), 0xFF);
  Vector missing = Vector(row_bytes(), 0);
  Vector joined{};  // empty until it is made
};

bool find_entry(Side& side) {
  if (side.node == nullptr || side.node->kind != kKindScope || scope_is_built(session, side.node->scope) != 0)
    return true;
  int scope = side.node->scope;
  for (int hops = 0; hops < 1000; ++hops) {
    side.entry = scope_entry_node(session, scope);
    if (side.entry == nullptr) return false;
    scope_attrs_to_front(*side.entry, side.node->scope);
    if (side.entry->kind != kKindScope) return true;
    scope = side.entry->scope;
  }
  return false;
}

void negative_step(Side& side, const WordEntry* word) {
  if (word == nullptr || word->attrs == nullptr) return;
  const std::string attrs = word->attrs;
  for (std::size_t begin = 0;;) {
    const std::size_t comma = attrs.find(',', begin);
    const std::string piece = attrs.substr(begin, comma == std::string::npos ? comma : comma - begin);
    const std::int32_t r = attr_table_find(piece.c_str(), side.matrix.attr_table, side.matrix.attr_count);
    if (r >= 0) row_and(side.result, side.saved.neg.data(), r);
    if (comma == std::string::npos) return;
    begin = comma + 1;
  }
}

bool block_has(const Node* node, const char* name) {
  return node != nullptr && node->scope_attrs != nullptr && attr_find(node->scope_attrs->text, name) != nullptr;
}

void positive_step(Side& side, const WordEntry* w, const WordEntry* v) {
  for (std::int32_t r = 0; r < side.matrix.attr_count; ++r) {
    const char* name = side.matrix.attr_table[r];
    const bool present =
        attr_has(w, name) || block_has(side.node, name) || attr_has(v, name) || block_has(side.entry, name);
    if (!present) row_or(side.missing, side.saved.pos.data(), r);
  }
}

bool settled(const Side& side) {
  return (side.entry == nullptr || side.entry->matches != nullptr) && side.node->matches != nullptr;
}

// The end of the work on one word. False if no other word is to be tried.
bool word_done(Side& side) {
  for (std::size_t i = 0; i < row_bytes(); ++i) side.result[i] &= static_cast<std::uint8_t>(~side.missing[i]);
  if (settled(side)) return false;
  side.joined.resize(row_bytes());
  for (std::size_t i = 0; i < row_bytes(); ++i) side.joined[i] |= side.result[i];
  side.result.assign(row_bytes(), 0xFF);
  side.missing.assign(row_bytes(), 0);
  return true;
}

void search_words(Side& side) {
  for (const WordEntry& w : chain<&WordEntry::next>(side.node->candidates)) {
    negative_step(side, &w);
    positive_step(side, &w, nullptr);
    if (!word_done(side)) return;
  }
}

void search_entry(Side& side) {
  const WordEntry* w = side.node->candidates;
  negative_step(side, w);
  const WordEntry* v = side.entry->candidates;
  do {
    negative_step(side, v);
    positive_step(side, w, v);
    if (!word_done(side)) return;
    v = v == nullptr ? v : v->next;
  } while (v != nullptr);
}

Vector searched(Side& side) {
  if (side.node == nullptr) return side.result;
  if (side.node->candidates != nullptr && side.entry == nullptr) search_words(side);
  if (side.node->candidates != nullptr && side.entry != nullptr) search_entry(side);
  if (settled(side)) return side.result;
  return side.joined.empty() ? Vector(row_bytes(), 0) : side.joined;
}

}  // namespace

RuleCandidate* candidates_row_by_row(const SavedMatrix& saved, Node* lnode, Node* rnode) {
  if (lnode == nullptr && rnode == nullptr) return nullptr;
  Side left{grammar.index.matrix.left, saved.left, lnode};
  Side right{grammar.index.matrix.right, saved.right, rnode};
  if (!find_entry(left) || !find_entry(right)) return nullptr;
  const Vector left_bits = searched(left);
  const Vector right_bits = searched(right);
  RuleCandidate* head = nullptr;
  RuleCandidate** link = &head;
  CandidateList* list = nullptr;
  std::size_t i = 0;
  for (const Rule& rule : chain<&Rule::next>(grammar.index.matrix.rules)) {
    const auto mask = static_cast<std::uint8_t>(0x80 >> (i % 8));
    const bool l = (left_bits[i / 8] & mask) != 0;
    const bool r = (right_bits[i / 8] & mask) != 0;
    ++i;
    if (!(l && r) && !(l && rule.rnode->inserted != 0) && !(r && rule.lnode->inserted != 0)) continue;
    if (list == nullptr) list = temp_new<CandidateList>(session);
    *link = temp_new<RuleCandidate>(session);
    (*link)->rule = &rule;
    (*link)->list = list;
    link = &(*link)->next;
  }
  return head;
}

}  // namespace lexon::test
