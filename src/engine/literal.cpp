#include "engine/literal.hpp"

#include <cstring>

#include "data/nodes.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "dict/cooccurrence.hpp"
#include "dict/word_lookup.hpp"
#include "engine/context_match.hpp"
#include "engine/filter.hpp"

namespace lexon {

namespace {

// Only the first condition on a text names a word.
const char* first_text(const CondItem* items) {
  return items == nullptr ? nullptr : items->text;
}

const char* first_affirmative_text(const CondItem* items) {
  return items != nullptr && items->op == kOpHas ? items->text : nullptr;
}

// The words of a node that stands in no list yet, asked as if it stood in the window.
Fit filter_words(Session& session, Match& match, Side side, const Rule& rule, Node& node) {
  return filter_candidates(session, side, rule, match.candidate, window_with(match.window, side, &node), match.chosen);
}

// The node's words: from the dictionary, or those of a word class, or one that the pattern itself describes.
Fit find_words(Session& session, Match& match, Side side, Node& node) {
  const NodePattern& pattern = pattern_of(match.rule, side);
  const char* hw = first_text(pattern.hw_conds);
  const Status looked_up = dict_select(session, hw, first_text(pattern.cw_conds), node.candidates);
  // A dictionary that cannot be read refuses the rule; its status stands in the engine's state.
  if (looked_up != Status::ok) return looked_up == Status::memory ? Fit::failed : Fit::no;
  if (node.candidates != nullptr) return filter_words(session, match, side, match.rule, node);
  // wanted: only to the left are the groups beyond tested once more
  const bool is_tested_again = side == Side::left && match.mid_mark.hit == nullptr && match.rule.pre != nullptr;
  if (is_tested_again && match_context(session, side, match.rule.pre, match.window.rnode->left) == nullptr)
    return Fit::no;
  const bool names_class = hw != nullptr && hw[0] == '#';
  if (names_class) node.candidates = word_class_entries(session, match.rule, side);
  if (node.candidates == nullptr) {
    // A word from the pattern's first texts and all its attribute conditions, if either text is affirmative.
    const char* affirmed = first_affirmative_text(pattern.hw_conds);
    if (affirmed == nullptr) affirmed = first_affirmative_text(pattern.cw_conds);
    if (affirmed != nullptr) node.candidates = entry_from_class_member(session, pattern, affirmed);
    return node.candidates == nullptr ? Fit::no : Fit::yes;
  }
  // The conditions on texts name the class, and are not held against its members.
  Rule rule = match.rule;
  NodePattern rest = pattern;
  rest.hw_conds = nullptr;
  rest.cw_conds = nullptr;
  of_side(side, rule.lnode, rule.rnode) = &rest;
  const Fit fit = filter_words(session, match, side, rule, node);
  if (fit != Fit::no) node.kind = kKindClassWord;
  return fit;
}

}  // namespace

Status dict_select(Session& session, const char* hw, const char* cw, WordEntry*& words) {
  words = nullptr;
  if (hw == nullptr && cw == nullptr) return Status::ok;
  const int key_field = hw != nullptr ? kKeyHw : kKeyCw;
  const char* key = hw != nullptr ? hw : cw;
  if (const Status s = words_by_key(session, session.sentence.dictionary, key_field, key, words); s != Status::ok)
    return s;
  // The order in which words are tried.
  entry_list_sort(words);
  if (hw == nullptr || cw == nullptr) return Status::ok;
  // Words go from the head on until one has the concept word. What stands behind it stays, whatever it is.
  while (words != nullptr && std::strcmp(text_or_empty(words->cw), cw) != 0) entry_drop_head(session, words);
  return Status::ok;
}

Fit make_literal(Session& session, Match& match, Side side, Node*& node) {
  const NodePattern& pattern = pattern_of(match.rule, side);
  node = nullptr;
  if (pattern.hw_conds == nullptr && pattern.cw_conds == nullptr) return Fit::no;
  node = temp_new<Node>(session);
  if (node == nullptr) return Fit::failed;
  // A node without fitting words goes back at once.
  const Fit fit = find_words(session, match, side, *node);
  if (fit == Fit::no) node_free(session, node);
  return fit;
}

}  // namespace lexon
