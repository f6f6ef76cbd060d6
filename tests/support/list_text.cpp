#include "support/list_text.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "data/nodes.hpp"
#include "data/pool.hpp"
#include "data/words.hpp"
#include "support/session.hpp"

namespace lexon::test {

namespace {

// Cuts `text` at the first of `marks`; the rest, mark included, is the result.
std::string_view cut_at(std::string_view& text, const char* marks) {
  const std::size_t at = std::min(text.find_first_of(marks), text.size());
  const std::string_view rest = text.substr(at);
  text = text.substr(0, at);
  return rest;
}

char* kept(std::string_view text, std::int32_t& length) {
  length = static_cast<std::int32_t>(text.size());
  return text.empty() ? nullptr : temp_text(session, text);
}

// A part of a word that begins with `mark`; taken off the end of `text`.
std::string_view part_behind(std::string_view& text, char mark) {
  const std::size_t at = text.find(mark);
  if (at == std::string_view::npos) return {};
  const std::string_view part = text.substr(at + 1);
  text = text.substr(0, at);
  return part;
}

WordEntry* word_of(std::string_view text) {
  auto* word = temp_new<WordEntry>(session);
  word->language[0] = word->language[1] = '.';
  word->attrs = kept(part_behind(text, '/'), word->attr_len);
  word->id = kept(part_behind(text, '~'), word->id_len);
  word->cw = kept(part_behind(text, '='), word->cw_len);
  word->hw = kept(text, word->hw_len);
  word->attr_block_size = word->attr_len + 12;
  word->total_size = word->cw_len + word->hw_len + word->attr_block_size + 10;
  return word;
}

// The text of the first "{...}" or "(...)" of `text`, which then begins behind it.
std::string_view bracketed(std::string_view& text, char close) {
  const std::size_t end = text.find(close);
  const std::string_view inner = text.substr(1, end - 1);
  text.remove_prefix(end + 1);
  return inner;
}

ScopeAttrs* block_of(std::string_view text) {
  auto* block = temp_new<ScopeAttrs>(session);
  const std::size_t digits = text.find_first_not_of("0123456789");
  if (digits != 0 && digits != std::string_view::npos && text[digits] == ':') {
    block->scope = static_cast<std::uint8_t>(std::atoi(std::string(text.substr(0, digits)).c_str()));
    text.remove_prefix(digits + 1);
  }
  text.copy(block->text, kAttrLimit);
  return block;
}

void add_blocks(Node& node, std::string_view& text) {
  ScopeAttrs** link = &node.scope_attrs;
  for (; text.starts_with('{'); link = &(*link)->next) *link = block_of(bracketed(text, '}'));
  const bool has_several = node.scope_attrs != nullptr && node.scope_attrs->next != nullptr;
  session.sentence.has_scopes_mixed = session.sentence.has_scopes_mixed || has_several;
}

// Read from the back, so that the first one stands on top.
void push_records(Node& node, std::string_view states) {
  for (std::size_t at = states.size(); at-- > 0;) {
    RuleCandidate* candidate = states[at] == 'm' ? nullptr : temp_new<RuleCandidate>(session);
    const int record_state = states[at] == 'm' ? 0 : states[at] - '0';
    (void)match_record_push(session, node, static_cast<std::uint8_t>(record_state), candidate);
  }
}

void kind_from_word(Node& node) {
  const std::string_view hw = text_or_empty(node.candidates->hw);
  node.kind = kKindWord;
  if (hw == "<<" || hw == ">>") {
    node.kind = kKindBoundary;
    const char* attrs = hw == "<<" ? "SHEAD" : "STAIL";
    if (node.candidates->attrs == nullptr) (void)entry_attrs_set(session, *node.candidates, attrs);
  } else if (hw.starts_with("SCOPE:")) {
    node.kind = kKindScope;
    node.scope = std::atoi(node.candidates->hw + 6);
  }
}

std::string text_of_word(const WordEntry& word) {
  std::string text = text_or_empty(word.hw);
  if (word.cw != nullptr) text.append("=").append(word.cw);
  if (word.id != nullptr) text.append("~").append(word.id);
  const std::string_view attrs = text_or_empty(word.attrs);
  const bool usual = (text == "<<" && attrs == "SHEAD") || (text == ">>" && attrs == "STAIL");
  if (!attrs.empty() && !usual) text.append("/").append(attrs);
  return text;
}

std::string text_of_record(const MatchRecord& record) {
  std::string text = record.state == 0 && record.candidate == nullptr ? "m" : std::to_string(record.state);
  if (record.cooccurrence == nullptr) return text;
  for (const WordEntry* word = record.cooccurrence; word != nullptr; word = word->next) {
    text.append(word == record.cooccurrence ? "<" : ",").append(text_or_empty(word->id));
  }
  return text + ">";
}

std::string text_of_kind(const Node& node) {
  const int kind = kind_bits(node);
  const bool usual = kind == kKindWord || kind == kKindBoundary || kind == kKindScope;
  return usual ? "" : "^" + std::to_string(kind);
}

}  // namespace

WordEntry* words_of(std::string_view text) {
  WordEntry* words = nullptr;
  WordEntry** link = &words;
  for (;;) {
    const std::string_view rest = cut_at(text, "|");
    *link = word_of(text);
    link = &(*link)->next;
    if (rest.empty()) return words;
    text = rest.substr(1);
  }
}

Node* node_of_text(std::string_view text) {
  auto* node = temp_new<Node>(session);
  const bool marked = text.starts_with('!');
  if (marked) text.remove_prefix(1);
  std::string_view rest = cut_at(text, "^{(");
  node->candidates = words_of(text);
  kind_from_word(*node);
  if (rest.starts_with('^')) {
    node->kind = static_cast<std::int8_t>(rest[1] - '0');
    rest.remove_prefix(2);
  }
  add_blocks(*node, rest);
  if (rest.starts_with('(')) push_records(*node, bracketed(rest, ')'));
  if (std::strcmp(text_or_empty(node->candidates->hw), "<<") != 0) {
    (void)entry_list_copy(session, node->candidates, node->entries);
  }
  if (marked) mark(*node);
  return node;
}

List::List(std::string_view text) {
  while (!text.empty()) {
    std::string_view rest = cut_at(text, " ");
    if (!rest.empty()) rest.remove_prefix(1);
    const bool in_window = text.starts_with('[');
    if (in_window) text = text.substr(1, text.size() - 2);
    Node* node = node_of_text(text);
    if (!nodes.empty()) node_insert_after(session, *nodes.back(), *node);
    nodes.push_back(node);
    if (in_window) (lnode == nullptr ? lnode : rnode) = node;
    text = rest;
  }
}

Relation* arc_between(Node& from, Node& to, const char* label, int scope) {
  auto* arc = temp_new<Relation>(session);
  arc->from = &from;
  arc->to = &to;
  arc->scope = static_cast<std::uint8_t>(scope);
  std::strncpy(arc->label, label, sizeof arc->label - 1);
  for (Node* node : {&from, &to}) {
    Relation** link = &node->relations;
    while (*link != nullptr && *link != arc) link = &(*link)->next;
    *link = arc;
  }
  return arc;
}

std::string text_of_words(const WordEntry* words) {
  std::string text;
  for (const WordEntry* word = words; word != nullptr; word = word->next) {
    if (word != words) text += "|";
    text += text_of_word(*word);
  }
  return text;
}

std::string text_of_node(const Node* node) {
  if (node == nullptr) return "null";
  std::string text = (is_marked(*node) ? "!" : "") + text_of_words(node->candidates) + text_of_kind(*node);
  for (const ScopeAttrs* block = node->scope_attrs; block != nullptr; block = block->next) {
    text.append("{").append(block->scope == 0 ? "" : std::to_string(block->scope) + ":");
    text.append(block->text).append("}");
  }
  if (is_fresh(*node)) return text;
  text += "(";
  for (const MatchRecord* record = node->matches; record != nullptr; record = record->next) {
    text += text_of_record(*record);
  }
  return text + ")";
}

std::string text_of_list(const Node* any, const Node* lnode, const Node* rnode) {
  int walked = 0;
  while (any != nullptr && any->left != nullptr && ++walked < 1000) any = any->left;
  std::string text;
  walked = 0;
  for (const Node* node = any; node != nullptr; node = node->right) {
    if (++walked > 1000) return text + " ...";
    const bool in_window = node == lnode || node == rnode;
    if (!text.empty()) text += " ";
    text += in_window ? "[" + text_of_node(node) + "]" : text_of_node(node);
  }
  return text;
}

}  // namespace lexon::test
