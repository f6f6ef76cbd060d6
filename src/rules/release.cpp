// Giving rules back to the permanent pool.
#include <cstring>
#include <utility>

#include "data/pool.hpp"
#include "rules/parser.hpp"

namespace lexon {
namespace {

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

void pattern_free(Pool& pool, NodePattern* pattern) {
  if (pattern == nullptr) return;
  item_list_free(pool, pattern->attr_conds);
  item_list_free(pool, pattern->actions);
  perm_delete(pool, pattern->relations);
  perm_delete(pool, pattern);
}

void group_list_free(Pool& pool, ContextGroup*& group) {
  while (group != nullptr) {
    ContextGroup* gone = std::exchange(group, group->next);
    item_list_free(pool, gone->attr_conds);
    perm_delete(pool, gone);
  }
}

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
