// Groups are taken from the window outwards. A group with a star is given up as soon as the rest of the chain fits
// from the present node; so its run of nodes is as short as the rest allows.
#include "engine/context_match.hpp"

#include "data/attr_string.hpp"
#include "data/chain.hpp"
#include "data/session.hpp"
#include "engine/surface.hpp"

namespace lexon {

namespace {

// A walk over the nodes of one side, and what its caller wants to know of it.
struct Walk {
  Side side;
  GroupMark& mark;
};

// Does the word in force satisfy the group?
bool group_fits(Side side, const ContextGroup& group, const WordEntry& word) {
  // wanted: to the left only attributes are tested
  const bool tests_surface = side == Side::right;
  if (tests_surface && !test_surface(nullptr, &word, group.hw_conds, group.cw_conds)) return false;
  for (const CondItem& condition : chain<&CondItem::next>(group.attr_conds)) {
    if (attr_has(&word, condition.text) != (condition.op != kOpNot)) return false;
  }
  return true;
}

// `before`: the node from which the walk came, or null.
Node* match_groups(Session& session, const Walk& walk, GroupCursor groups, Node* node, Node* before) {
  Node* result = nullptr;
  Node* last = before;
  while (groups.group != nullptr) {
    const ContextGroup& group = *groups.group;
    if (must_leave(session) != Status::ok || stack_nearly_used(session)) return nullptr;
    const bool is_usable = node != nullptr && node->candidates != nullptr && (is_boundary(*node) || !is_fresh(*node));
    if (!is_usable) return nullptr;
    if (!group_fits(walk.side, group, *node->candidates)) {
      if (group.star == 0) return nullptr;
      // A star may take no node at all.
      groups = groups.next();
      continue;
    }
    // wanted: a walk to the right confirms the link to its first node from the node before it. A list can be lopsided.
    if (walk.side == Side::right && before != nullptr && walk.mark.confirms_links) {
      session.state.turned = nullptr;
      before->right = node;
      node->left = before;
      if (node == before) session.sentence.has_loop = true;
    }
    before = nullptr;
    if (result == nullptr || walk.side == Side::left) result = node;
    if (group.star != 0) {
      // As few nodes as possible: the rest of the chain is tried from the node on that the star has just taken.
      Node* rest = match_groups(session, walk, groups.next(), node, last);
      if (rest != nullptr) return walk.side == Side::left ? rest : result;
      before = node;
    } else {
      groups = groups.next();
    }
    // The node is noted at the group that the caller has marked.
    // wanted: to the right a group with a star is not noted
    GroupMark& mark = walk.mark;
    if (mark.group != nullptr && (walk.side == Side::left || group.star == 0)) {
      const bool follows_starred_mark = mark.group->star != 0 && mark.hit == nullptr && mark.group->next == &group;
      if (&group == mark.group || follows_starred_mark) mark.hit = node;
    }
    last = node;
    node = neighbour(*node, walk.side);
  }
  return result;
}

}  // namespace

Node* match_context(Session& session, Side side, GroupCursor groups, Node* node, GroupMark& mark) {
  return match_groups(session, {side, mark}, groups, node, nullptr);
}

Node* match_context(Session& session, Side side, const ContextGroup* groups, Node* node) {
  GroupMark no_mark;
  return match_context(session, side, {groups}, node, no_mark);
}

}  // namespace lexon
