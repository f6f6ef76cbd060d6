// Giving rules back to the permanent pool.
#include <cstring>
#include <utility>

#include "data/pool.hpp"
#include "rules/parser.hpp"

namespace lexon {
namespace {

// The pool is told how large a cell is: a text takes its present length, and texts of rules do not change.
void text_free(Pool& pool, char* text) {
  if (text != nullptr) pool.free(text, static_cast<std::int64_t>(std::strlen(text)) + 1);
}

}  // namespace

void item_list_free(Pool& pool, CondItem* item) {
  while (item != nullptr) {
    CondItem* gone = std::exchange(item, item->next);
    text_free(pool, gone->text);
    perm_delete(pool, gone);
  }
}

// wanted: surface forms, concept words and roles of a pattern stay behind, and of its relations all but the first
// record. A rule is dropped once in a while, and the pool ends with the grammar. `hw_action` and `cw_action` belong to
// `actions`.
void pattern_free(Pool& pool, NodePattern* pattern) {
  if (pattern == nullptr) return;
  item_list_free(pool, pattern->attr_conds);
  item_list_free(pool, pattern->actions);
  perm_delete(pool, pattern->relations);
  perm_delete(pool, pattern);
}

// wanted: of a group likewise the attribute conditions alone go back.
void group_list_free(Pool& pool, ContextGroup*& group) {
  while (group != nullptr) {
    ContextGroup* gone = std::exchange(group, group->next);
    item_list_free(pool, gone->attr_conds);
    perm_delete(pool, gone);
  }
}

// For a single rule its `next` must be null.
void rule_list_free(Pool& pool, Rule*& rule) {
  while (rule != nullptr) {
    Rule* gone = std::exchange(rule, rule->next);
    group_list_free(pool, gone->pre);
    pattern_free(pool, gone->lnode);
    group_list_free(pool, gone->mid);
    pattern_free(pool, gone->rnode);
    group_list_free(pool, gone->suf);
    perm_delete(pool, gone);
  }
}

}  // namespace lexon
