#include "data/nodes.hpp"

#include <bit>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include "data/attr_string.hpp"
#include "data/scratch.hpp"
#include "data/session.hpp"
#include "data/words.hpp"

namespace lexon {

namespace {

std::int64_t list_size(std::size_t blocks) {
  return static_cast<std::int64_t>(sizeof(CandidateList) + blocks * sizeof(RuleBlock));
}

std::int64_t rules_in(std::span<const RuleBlock> blocks) {
  std::int64_t count = 0;
  for (const RuleBlock& block : blocks) count += std::popcount(block.rules);
  return count;
}

bool is_entry_of_current_scope(Session& session, const Node& node) {
  return current_scope(session).entry == &node;
}

// Puts `prefix` in front of the word's attributes, and lets its sizes grow by as much.
Status prefix_attrs(Session& session, WordEntry& word, std::string_view prefix) {
  if (const Status s = entry_attrs_prefix(session, word, prefix); s != Status::ok) return s;
  const auto growth = static_cast<std::int32_t>(prefix.size());
  word.attr_len += growth;
  word.attr_block_size += growth;
  word.total_size += growth;
  return Status::ok;
}

// The source keeps its word as it was behind a copy that says it is the original.
// Only a word that a step has chosen is kept so; any other is changed where it stands. Either way the record on the
// source says from now on that its words are no longer those of the step.
Status mark_as_original(Session& session, Node& src) {
  if (src.matches != nullptr && src.matches->state == kStateStep) {
    WordEntry* pushed = nullptr;
    if (const Status s = entry_copy(session, *src.candidates, pushed); s != Status::ok) return s;
    pushed->next = src.candidates;
    src.candidates = pushed;
  }
  if (const Status s = prefix_attrs(session, *src.candidates, "#ORIG,"); s != Status::ok) return s;
  if (src.matches != nullptr) src.matches->state = kStateChanged;
  return Status::ok;
}

// One word: for mode 0 in front of the source's own list, for mode 1 alone and marked.
// In mode 0 the rest of the list is that of the source, shared.
Status copy_word_in_force(Session& session, Node& copy, Node& src, int mode) {
  if (src.candidates == nullptr) return rule_base_failure(session, "a node without words is to be copied");
  if (const Status s = entry_copy(session, *src.candidates, copy.candidates); s != Status::ok) return s;
  if (mode == 0) {
    copy.candidates->next = src.candidates;
    return Status::ok;
  }
  if (const Status s = prefix_attrs(session, *copy.candidates, "#COPY,"); s != Status::ok) return s;
  return mark_as_original(session, src);
}

// All words afresh, with the attribute blocks of the source.
// A scope that is built stands for itself with the words that its generation has left, anything else with those that it
// began with. Only one end of the relation moves to the copy, `to` before `from`.
Status copy_word_list(Session& session, Node& copy, Node& src, Relation* relation) {
  const bool stands_for_built_scope = is_scope_reference(src) && scope_is_built(session, src.scope) != 0;
  const WordEntry* words = stands_for_built_scope ? src.candidates : src.entries;
  if (const Status s = entry_list_copy(session, words, copy.candidates); s != Status::ok) return s;
  copy.scope_attrs = src.scope_attrs;
  if (relation != nullptr) {
    scope_attrs_to_front(copy, relation->scope);
    if (relation->to == &src) {
      relation->to = &copy;
    } else if (relation->from == &src) {
      relation->from = &copy;
    }
  }
  if (!is_fresh(src) && copy.scope_attrs != nullptr) marked_attrs_append(*copy.scope_attrs, src);
  return Status::ok;
}

// The sentence learns when a node has come to stand beside itself.
void note_listed(Session& session, Node& at, Node& node) {
  at.was_listed = node.was_listed = true;
  if (&at == &node || node.left == &node || node.right == &node) session.sentence.has_loop = true;
}

// Links `node` between `at` and its neighbour in the direction of `onward`; `back` leads the other way.
void link_beside(Session& session, Node& at, Node& node, Node* Node::*onward, Node* Node::*back) {
  node.*back = &at;
  node.*onward = at.*onward;
  if (at.*onward != nullptr) (at.*onward)->*back = &node;
  at.*onward = &node;
  note_listed(session, at, node);
}

}  // namespace

// The text is written where it stands: its cell has room for the longest text that attributes may have.
void marked_attrs_append(ScopeAttrs& block, const Node& src) {
  if (block.text[0] == '\0' || std::strchr(block.text, '#') != nullptr) return;
  Scratch<kAttrLimit + 1> text;
  text.append(block.text).append(',');
  std::string_view rest = text_or_empty(src.candidates == nullptr ? nullptr : src.candidates->attrs);
  const char* separator = "#";
  while (!rest.empty()) {
    const std::size_t comma = rest.find(',');
    const std::string_view attr = rest.substr(0, comma);
    rest.remove_prefix(comma == std::string_view::npos ? rest.size() : comma + 1);
    if (attr.empty() || attr.front() == '#') continue;
    text.append(separator).append(attr);
    separator = ",#";
  }
  std::memcpy(block.text, text.c_str(), text.size() + 1);
}

Status node_copy(Session& session, Node*& copy, Node& src, Relation* relation, int mode) {
  copy = temp_new<Node>(session);
  if (copy == nullptr) return Status::memory;
  copy->kind = src.kind;
  copy->scope = src.scope;
  copy->relations = src.relations;
  // The relations are shared with the source, and the name is not copied: it is looked up by way of `source`.
  copy->origin = copy->source = &src;
  const bool takes_one_word = relation == nullptr && (!is_entry_of_current_scope(session, src) || mode == 1);
  const Status status =
      takes_one_word ? copy_word_in_force(session, *copy, src, mode) : copy_word_list(session, *copy, src, relation);
  if (status != Status::ok) copy = nullptr;
  return status;
}

PlaceWatch::PlaceWatch(Session& session, Node*& first, Node*& second)
    : session_(session), places_{&first, &second}, outer_(session.state.watches) {
  session.state.watches = this;
}

PlaceWatch::~PlaceWatch() {
  session_.state.watches = outer_;
}

void PlaceWatch::forget(const Session& session, const Node* node) {
  for (PlaceWatch* watch = session.state.watches; watch != nullptr; watch = watch->outer_) {
    for (Node** place : watch->places_) {
      if (*place == node) *place = nullptr;
    }
  }
}

// A forced target that goes with its node is neither reached nor given up: `gone` stands for it, which no node is.
void node_empty(Session& session, Node& node) {
  if (session.state.forced_node == &node) session.state.forced_node = &session.gone;
  entry_list_free(session, node.candidates);
  if (!is_fresh(node)) match_record_pop(session, node);
}

void node_free(Session& session, Node*& node) {
  if (node == nullptr) return;
  // The name belongs to the node it was read for.
  const bool shares_its_name = node->source != nullptr && node->source->name == node->name;
  if (!shares_its_name) temp_free_string(session, node->name);
  node_empty(session, *node);
  // Whoever watches a place that led here sees null from now on, and not the memory of some other record.
  Node* const released = node;
  temp_delete(session, node);
  node = nullptr;
  PlaceWatch::forget(session, released);
}

void node_unlink_free(Session& session, Node*& node) {
  if (node == nullptr) return;
  node_take_out(session, *node);
  node_free(session, node);
}

Status node_words_reload(Session& session, Node& node) {
  entry_list_free(session, node.candidates);
  return entry_list_copy(session, node.entries, node.candidates);
}

void node_kind_recompute(Node& node) {
  // Attributes may have come and gone since; what the node was read as is kept only where no attribute decides.
  const bool is_class_word = kind_bits(node) == kKindClassWord;
  if (attr_has(node.candidates, "@9")) {
    node.kind = kKindNine;
  } else if (attr_has(node.candidates, "TEMP")) {
    node.kind = kKindLiteral;
  } else {
    node.kind = is_class_word ? kKindClassWord : kKindWord;
  }
}

ScopeAttrs* scope_attrs_find(const Node& node, int scope) {
  ScopeAttrs* block = node.scope_attrs;
  while (block != nullptr && block->scope != scope) block = block->next;
  return block;
}

void scope_attrs_to_front(Node& node, int scope) {
  if (node.scope_attrs == nullptr || node.scope_attrs->scope == scope) return;
  // The others keep their order. A scope of which the node has nothing changes nothing.
  for (ScopeAttrs** link = &node.scope_attrs->next; *link != nullptr; link = &(*link)->next) {
    ScopeAttrs* block = *link;
    if (block->scope != scope) continue;
    *link = block->next;
    block->next = node.scope_attrs;
    node.scope_attrs = block;
    return;
  }
}

const char* head_text(const Node& node) {
  return node.scope_attrs == nullptr ? nullptr : node.scope_attrs->text;
}

Status match_record_push(Session& session, Node& node, std::uint8_t record_state, RuleCandidate* candidate,
                         WordEntry* cooccurrence) {
  auto* record = temp_new<MatchRecord>(session);
  if (record == nullptr) return Status::memory;
  *record = {record_state, candidate, cooccurrence, node.matches};
  node.matches = record;
  // As long as records lead to a list, none of its elements may go: going back reads on from them.
  if (candidate != nullptr && candidate->list != nullptr) ++candidate->list->records;
  return Status::ok;
}

void match_record_pop(Session& session, Node& node) {
  MatchRecord* record = node.matches;
  node.matches = record->next;
  if (record->candidate != nullptr && record->candidate->list != nullptr) --record->candidate->list->records;
  temp_delete(session, record);
}

// Each rule of a list costs a cell, whether it is asked for or not: so a search without an end is over when as much has been
// listed as fits, and not much later.
RuleCandidate* candidates_new(Session& session, const Rule* first, std::span<const RuleBlock> rest) {
  if (!session.pool.promise(sizeof(RuleCandidate), rules_in(rest))) return nullptr;
  void* cell = temp_alloc(session, list_size(rest.size()));
  auto* element = cell == nullptr ? nullptr : temp_new<RuleCandidate>(session);
  if (element == nullptr) return nullptr;
  element->rule = first;
  element->list = new (cell) CandidateList{0, 1, static_cast<std::int32_t>(rest.size()), 0};
  std::uninitialized_copy(rest.begin(), rest.end(), blocks_of(*element->list));
  return element;
}

RuleCandidate* candidate_append(Session& session, RuleCandidate& last, const Rule* rule) {
  auto* element = temp_new<RuleCandidate>(session);
  if (element == nullptr) return nullptr;
  element->rule = rule;
  element->list = last.list;
  ++last.list->elements;
  return last.next = element;
}

void candidate_passed_over(Session& session, RuleCandidate* element) {
  CandidateList* list = element->list;
  if (list == nullptr || list->records != 0) return;
  temp_delete(session, element);
  if (--list->elements != 0) return;
  const std::span<const RuleBlock> rest(blocks_of(*list) + list->at, blocks_of(*list) + list->blocks);
  session.pool.promise_take_back(sizeof(RuleCandidate), rules_in(rest));
  temp_free(session, list, list_size(static_cast<std::size_t>(list->blocks)));
}

void candidates_passed_over(Session& session, RuleCandidate* first, const RuleCandidate* end) {
  while (first != nullptr && first != end) candidate_passed_over(session, std::exchange(first, first->next));
}

void candidates_left_behind(Session& session, RuleCandidate* before, const RuleCandidate* now) {
  if (before == nullptr || before->list == nullptr || before->list->records != 0) return;
  const RuleCandidate* found = before;
  while (found != nullptr && found != now) found = found->next;
  // An element of the same list that stands in front of `before` leads to it.
  const bool leads_to_before = found == nullptr && now != nullptr && now->list == before->list;
  if (!leads_to_before) candidates_passed_over(session, before, now);
}

void node_insert_after(Session& session, Node& at, Node& node) {
  link_beside(session, at, node, &Node::right, &Node::left);
}

void node_insert_before(Session& session, Node& at, Node& node) {
  link_beside(session, at, node, &Node::left, &Node::right);
}

void node_take_out(Session& session, Node& node) {
  if (node.left != nullptr) node.left->right = node.right;
  if (node.right != nullptr) node.right->left = node.left;
  // The node keeps its own links: undoing a step puts it back by them.
  if (node.right != nullptr && node.right == node.left) session.sentence.has_loop = true;
}

Node* list_first(Node* node) {
  while (node != nullptr && node->left != nullptr && node->left != node) node = node->left;
  return node;
}

}  // namespace lexon
