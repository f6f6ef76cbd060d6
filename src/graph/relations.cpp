#include "graph/relations.hpp"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "data/chain.hpp"
#include "data/nodes.hpp"
#include "data/session.hpp"

namespace lexon {

namespace {

// A relation is on the lists of both its ends with one link, so the lists join at it. It stands last on both when it
// is new, and no list can come to run in a circle.
void list_append(Relation*& head, Relation& relation) {
  Relation** link = &head;
  while (*link != nullptr && *link != &relation) link = &(*link)->next;
  *link = &relation;
}

// Appends `mark` and the label, with a comma in front unless the text is empty. A full text stays as it is.
void role_add(ScopeAttrs& block, char mark, std::string_view label) {
  constexpr std::size_t kRoleLength = 5;  // what a role counts for, whatever its label
  std::size_t length = std::strlen(block.text);
  if (length != 0 && length + kRoleLength >= kAttrLimit) return;
  if (length != 0) block.text[length++] = ',';
  block.text[length++] = mark;
  label.copy(block.text + length, label.size());
  block.text[length + label.size()] = '\0';
}

// The longest role, ",>" and five letters, behind the longest text that still gets one.
static_assert(kAttrLimit - 6 + 2 + sizeof(Relation::label) - 1 < sizeof(ScopeAttrs::text));

}  // namespace

bool holds_entry(const Node& node) {
  const char* text = head_text(node);
  return text != nullptr && std::strstr(text, "@entry") != nullptr;
}

void relation_connect(Session& session, Node& from, Node& to, Relation& relation) {
  // A relation between a node and itself is on its list once: the second walk finds it there.
  list_append(from.relations, relation);
  list_append(to.relations, relation);
  relation.from = &from;
  relation.to = &to;
  if (relation.scope != 0) scope_note(session, relation);
  // wanted: without attributes at the start neither end gets a role.
  ScopeAttrs* out = scope_attrs_find(from, relation.scope);
  if (out == nullptr) return;
  role_add(*out, '>', relation.label);
  if (ScopeAttrs* in = scope_attrs_find(to, relation.scope); in != nullptr) role_add(*in, '<', relation.label);
}

void scope_note(Session& session, const Relation& relation) {
  if (session.sentence.semlst_count >= kMaxScopes) return;
  // The row of the scope, or the first one without an entry, or a new one.
  const std::span<ScopeRow> rows = scope_rows(session.sentence, 1);
  ScopeRow& row = *std::find_if(rows.data(), rows.data() + rows.size(), [&](const ScopeRow& known) {
    return known.entry == nullptr || known.number == relation.scope;
  });
  if (row.entry != nullptr) return;
  // The end of the arc is asked first, unlike for the sentence's own entry.
  row.number = relation.scope;
  if (holds_entry(*relation.to)) {
    row.entry = relation.to;
  } else if (holds_entry(*relation.from)) {
    row.entry = relation.from;
  }
  // wanted: a scope without an entry uses up a count for each of its relations, on the same row.
  ++session.sentence.semlst_count;
}

}  // namespace lexon
