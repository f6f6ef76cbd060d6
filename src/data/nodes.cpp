#include "data/nodes.hpp"

#include <cstring>
#include <string_view>
#include <utility>

#include "data/attr_string.hpp"
#include "data/pool.hpp"
#include "data/scratch.hpp"
#include "data/sentence.hpp"
#include "data/state.hpp"
#include "data/words.hpp"

namespace lexon {

namespace {

bool is_entry_of_current_scope(const Node& node) {
  return current_scope().entry == &node;
}

// Puts `prefix` in front of the word's attributes, and lets its sizes grow by as much.
Status prefix_attrs(WordEntry& word, std::string_view prefix) {
  if (const Status s = entry_attrs_prefix(word, prefix); s != Status::ok) return s;
  const auto growth = static_cast<std::int32_t>(prefix.size());
  word.attr_len += growth;
  word.attr_block_size += growth;
  word.total_size += growth;
  return Status::ok;
}

// The source keeps its word as it was behind a copy that says it is the original.
Status mark_as_original(Node& src) {
  if (src.matches != nullptr && src.matches->state == kStateStep) {
    WordEntry* pushed = nullptr;
    if (const Status s = entry_copy(*src.candidates, pushed); s != Status::ok) return s;
    pushed->next = src.candidates;
    src.candidates = pushed;
  }
  if (const Status s = prefix_attrs(*src.candidates, "#ORIG,"); s != Status::ok) return s;
  if (src.matches != nullptr) src.matches->state = kStateChanged;
  return Status::ok;
}

// One word: for mode 0 in front of the source's own list, for mode 1 alone and marked.
Status copy_word_in_force(Node& copy, Node& src, int mode) {
  if (src.candidates == nullptr) return rule_base_failure("a node without words is to be copied");
  if (const Status s = entry_copy(*src.candidates, copy.candidates); s != Status::ok) return s;
  if (mode == 0) {
    copy.candidates->next = src.candidates;
    return Status::ok;
  }
  if (const Status s = prefix_attrs(*copy.candidates, "#COPY,"); s != Status::ok) return s;
  return mark_as_original(src);
}

// Appends the attributes that `src` has gathered to the head block, each marked with "#".
void append_marked_attrs(ScopeAttrs& block, const Node& src) {
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

// All words afresh, with the attribute blocks of the source.
Status copy_word_list(Node& copy, Node& src, Relation* relation) {
  const bool stands_for_built_scope = is_scope_reference(src) && scope_is_built(src.scope) != 0;
  const WordEntry* words = stands_for_built_scope ? src.candidates : src.entries;
  if (const Status s = entry_list_copy(words, copy.candidates); s != Status::ok) return s;
  copy.scope_attrs = src.scope_attrs;
  if (relation != nullptr) {
    scope_attrs_to_front(copy, relation->scope);
    if (relation->to == &src) {
      relation->to = &copy;
    } else if (relation->from == &src) {
      relation->from = &copy;
    }
  }
  if (!is_fresh(src) && copy.scope_attrs != nullptr) append_marked_attrs(*copy.scope_attrs, src);
  return Status::ok;
}

}  // namespace

Status node_copy(Node*& copy, Node& src, Relation* relation, int mode) {
  copy = temp_new<Node>();
  if (copy == nullptr) return Status::memory;
  copy->kind = src.kind;
  copy->scope = src.scope;
  copy->relations = src.relations;
  copy->origin = copy->source = &src;
  const bool takes_one_word = relation == nullptr && (!is_entry_of_current_scope(src) || mode == 1);
  const Status status = takes_one_word ? copy_word_in_force(*copy, src, mode) : copy_word_list(*copy, src, relation);
  if (status != Status::ok) copy = nullptr;
  return status;
}

PlaceWatch::PlaceWatch(Node*& first, Node*& second) : places_{&first, &second}, outer_(state.watches) {
  state.watches = this;
}

PlaceWatch::~PlaceWatch() {
  state.watches = outer_;
}

void PlaceWatch::forget(const Node* node) {
  for (PlaceWatch* watch = state.watches; watch != nullptr; watch = watch->outer_) {
    for (Node** place : watch->places_) {
      if (*place == node) *place = nullptr;
    }
  }
}

void node_empty(Node& node) {
  if (state.forced_node == &node) state.forced_node = gone_node();
  entry_list_free(node.candidates);
  if (!is_fresh(node)) match_record_pop(node);
}

void node_free(Node*& node) {
  if (node == nullptr) return;
  const bool shares_its_name = node->source != nullptr && node->source->name == node->name;
  if (!shares_its_name) temp_free_string(node->name);
  node_empty(*node);
  Node* const released = node;
  temp_delete(node);
  node = nullptr;
  PlaceWatch::forget(released);
}

void node_unlink_free(Node*& node) {
  if (node == nullptr) return;
  node_take_out(*node);
  node_free(node);
}

Status node_words_reload(Node& node) {
  entry_list_free(node.candidates);
  return entry_list_copy(node.entries, node.candidates);
}

void node_kind_recompute(Node& node) {
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

Status match_record_push(Node& node, std::uint8_t record_state, RuleCandidate* candidate, WordEntry* cooccurrence) {
  auto* record = temp_new<MatchRecord>();
  if (record == nullptr) return Status::memory;
  *record = {record_state, candidate, cooccurrence, node.matches};
  node.matches = record;
  if (candidate != nullptr && candidate->list != nullptr) ++candidate->list->records;
  return Status::ok;
}

void match_record_pop(Node& node) {
  MatchRecord* record = node.matches;
  node.matches = record->next;
  if (record->candidate != nullptr && record->candidate->list != nullptr) --record->candidate->list->records;
  temp_delete(record);
}

void candidate_passed_over(RuleCandidate* element) {
  CandidateList* list = element->list;
  if (list == nullptr || list->records != 0) return;
  temp_delete(element);
  if (--list->elements == 0) temp_delete(list);
}

void candidates_passed_over(RuleCandidate* first, const RuleCandidate* end) {
  while (first != nullptr && first != end) candidate_passed_over(std::exchange(first, first->next));
}

void candidates_left_behind(RuleCandidate* before, const RuleCandidate* now) {
  if (before == nullptr || before->list == nullptr || before->list->records != 0) return;
  const RuleCandidate* found = before;
  while (found != nullptr && found != now) found = found->next;
  // An element of the same list that stands in front of `before` leads to it.
  const bool leads_to_before = found == nullptr && now != nullptr && now->list == before->list;
  if (!leads_to_before) candidates_passed_over(before, now);
}

void node_insert_after(Node& at, Node& node) {
  node.left = &at;
  node.right = at.right;
  if (at.right != nullptr) at.right->left = &node;
  at.right = &node;
}

void node_insert_before(Node& at, Node& node) {
  node.right = &at;
  node.left = at.left;
  if (at.left != nullptr) at.left->right = &node;
  at.left = &node;
}

void node_take_out(Node& node) {
  if (node.left != nullptr) node.left->right = node.right;
  if (node.right != nullptr) node.right->left = node.left;
}

Node* list_first(Node* node) {
  while (node != nullptr && node->left != nullptr && node->left != node) node = node->left;
  return node;
}

}  // namespace lexon
