// Giving rules back to the permanent pool.
#include <cstring>
#include <utility>

#include "data/pool.hpp"
#include "rules/parser.hpp"

namespace lexon {
namespace {

void text_free(char* text) {
  if (text != nullptr) perm_free(text, static_cast<std::int64_t>(std::strlen(text)) + 1);
}

}  // namespace

void item_list_free(CondItem* item) {
  while (item != nullptr) {
    CondItem* gone = std::exchange(item, item->next);
    text_free(gone->text);
    perm_delete(gone);
  }
}

void pattern_free(NodePattern* pattern) {
  if (pattern == nullptr) return;
  item_list_free(pattern->attr_conds);
  item_list_free(pattern->actions);
  perm_delete(pattern->relations);
  perm_delete(pattern);
}

void group_list_free(ContextGroup*& group) {
  while (group != nullptr) {
    ContextGroup* gone = std::exchange(group, group->next);
    item_list_free(gone->attr_conds);
    perm_delete(gone);
  }
}

void rule_list_free(Rule*& rule) {
  while (rule != nullptr) {
    Rule* gone = std::exchange(rule, rule->next);
    group_list_free(gone->pre);
    pattern_free(gone->lnode);
    group_list_free(gone->mid);
    pattern_free(gone->rnode);
    group_list_free(gone->suf);
    perm_delete(gone);
  }
}

}  // namespace lexon
