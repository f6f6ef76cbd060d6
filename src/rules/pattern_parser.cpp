#include "rules/pattern_parser.hpp"

#include <cstring>
#include <string_view>

#include "data/chain.hpp"
#include "data/output.hpp"
#include "data/pool.hpp"
#include "data/session.hpp"
#include "rules/parser.hpp"
#include "rules/scanners.hpp"

namespace lexon {
namespace {

// Messages count columns from 0, in bytes.
int column_of(const RuleParse& parse, const char* position) {
  return static_cast<int>(position - parse.start);
}

// Prints the message of a fault at `position` and notes it for front ends. Always `no_effect`, for the caller to return.
Status syntax_error(Session& session, const RuleParse& parse, const char* position, const char* behind,
                    RuleFault fault) {
  rule_error_print(session, parse, position, behind);
  rule_fault_note(session, parse, position, fault);
  return Status::no_effect;
}

// ---- Items ----

// The operator, by the prefix under the cursor, which is stepped over.
// wanted: in front of a bracket in a section of actions the prefix counts for nothing; `item_body_read` sets the code.
std::uint8_t prefix_op(ItemPlace place, const char*& cursor) {
  switch (*cursor) {
      // Not met in a section of actions: the caller has refused it.
    case '^': ++cursor; return kOpNot;
    case '-': ++cursor; return kOpDelete;
    case '+': ++cursor; return kOpAdd;
    default: return place == ItemPlace::action ? kOpAdd : kOpHas;
  }
}

// The item behind its prefix. A second "[" opens a concept word, unless a "]" that can close stands behind it: then
// it is itself the surface form.
Status item_body_read(Pool& pool, ItemPlace place, const char*& cursor, CondItem& item, ItemKind& kind) {
  kind = ItemKind::attribute;
  if (*cursor != '[') return scan_attr_token(pool, cursor, item, kAttrTokenLimit);
  ++cursor;
  // `[[]` is the form "[", and `[[]]` an empty concept word.
  const bool is_cw = *cursor == '[' && !is_hw_text_end(cursor + 1);
  kind = is_cw ? ItemKind::cw : ItemKind::hw;
  if (place == ItemPlace::action) item.op = is_cw ? kOpSetCw : kOpSetHw;
  if (is_cw) ++cursor;
  item.text = is_cw ? scan_cw_text(pool, cursor) : scan_hw_text(pool, cursor);
  return item.text == nullptr ? Status::no_effect : Status::ok;
}

// May `c` not stand behind an item in this place? A section of actions looks for itself.
bool is_out_of_place(ItemPlace place, char c) {
  if (place == ItemPlace::group) return c == ':' || c == '}' || c == '"';
  return place == ItemPlace::cond && c == ')';
}

// Reads prefix, text and what separates the item from the next. A failure has been told when it comes back as `no_effect`.
Status item_read(Session& session, Pool& pool, const RuleParse& parse, ItemPlace place, const char*& cursor,
                 CondItem& item, ItemKind& kind) {
  // A message names the section with a blank in front and no line end: the caller goes on with " in LNODE" or the like.
  const char* const section = place == ItemPlace::action ? " in ACTION" : " in COND";
  if (place == ItemPlace::action && *cursor == '^') {
    return syntax_error(session, parse, cursor, section, RuleFault::not_in_action);
  }
  item.op = prefix_op(place, cursor);
  const char* const start = cursor;
  const Status status = item_body_read(pool, place, cursor, item, kind);
  if (status == Status::no_effect) {
    return syntax_error(session, parse, start, section, *start == '[' ? RuleFault::bracket_open : RuleFault::item_open);
  }
  cursor = skip_commas(cursor);
  if (is_out_of_place(place, *cursor)) {
    const bool in_group = place == ItemPlace::group;
    return syntax_error(session, parse, cursor, section,
                        in_group ? RuleFault::group_character : RuleFault::paren_in_cond);
  }
  return status;
}

// The list of conditions that an item of `kind` belongs to, in a pattern or a group.
template <typename Owner>
CondItem*& conditions_of(Owner& owner, ItemKind kind) {
  switch (kind) {
    case ItemKind::hw: return owner.hw_conds;
    case ItemKind::cw: return owner.cw_conds;
    case ItemKind::attribute: break;
  }
  return owner.attr_conds;
}

// ---- The sections of a pattern ----

struct PatternReading {
  RuleParse& parse;
  const char*& cursor;   // the caller's, who goes on where the pattern ends
  NodePattern& pattern;  // belongs to the rule already, which releases it if it is refused
  Side side;
};

// Negated conditions may be as many as one likes: a word can lack any number of forms, but have only one.
bool has_affirmative(const CondItem* conditions) {
  for (const CondItem& condition : chain<&CondItem::next>(conditions)) {
    if (condition.op == kOpHas) return true;
  }
  return false;
}

// wanted: the spelling.
const char* limit_message(ItemKind kind) {
  return kind == ItemKind::hw ? " more than 2 affirmative condtions of HW are not allowed in COND"
                              : " more than 2 affirmative condtions of CW are not allowed in COND";
}

Status cond_section(Session& session, Pool& pool, PatternReading& reading) {
  // Where the message of a second demand points: it is about the section, not about an item.
  const char* const start = reading.cursor;
  while (!is_section_end(*reading.cursor)) {
    CondItem* item = nullptr;
    ItemKind kind{};
    const Status status = parse_cond_item(session, pool, reading.parse, ItemPlace::cond, reading.cursor, item, kind);
    if (status != Status::ok) return status;
    CondItem*& list = conditions_of(reading.pattern, kind);
    // wanted: the second affirmative one is refused, whatever the message says of "more than 2".
    if (kind != ItemKind::attribute && item->op == kOpHas && has_affirmative(list)) {
      item_list_free(pool, item);
      return syntax_error(session, reading.parse, start, limit_message(kind),
                          kind == ItemKind::hw ? RuleFault::second_form : RuleFault::second_concept);
    }
    chain_append<&CondItem::next>(list, item);
  }
  return Status::ok;
}

// The texts of the last surface form and the last concept word stand in fields of their own, for the engine to find at once.
// They share the string of their item, which owns it.
Status action_section(Session& session, Pool& pool, PatternReading& reading) {
  while (!is_section_end(*reading.cursor)) {
    CondItem* item = nullptr;
    ItemKind kind{};
    const Status status = parse_cond_item(session, pool, reading.parse, ItemPlace::action, reading.cursor, item, kind);
    if (status != Status::ok) return status;
    if (kind == ItemKind::hw) reading.pattern.hw_action = item->text;
    if (kind == ItemKind::cw) reading.pattern.cw_action = item->text;
    chain_append<&CondItem::next>(reading.pattern.actions, item);
    if (*reading.cursor == ')') {
      return syntax_error(session, reading.parse, reading.cursor, " in ACTION", RuleFault::paren_in_action);
    }
  }
  return Status::ok;
}

// What a scanner made of an item: it joins the list, or goes with a message at `start`.
Status scanned_item_keep(Session& session, Pool& pool, const PatternReading& reading, Status scanned, const char* start,
                         CondItem* item, CondItem*& list, const char* section, RuleFault fault) {
  if (scanned == Status::ok) {
    chain_append<&CondItem::next>(list, item);
    return Status::ok;
  }
  item_list_free(pool, item);
  return scanned == Status::no_effect ? syntax_error(session, reading.parse, start, section, fault) : scanned;
}

// A label that is written in a pattern says on which side it stands.
Status relation_section(Session& session, Pool& pool, PatternReading& reading) {
  while (!is_section_end(*reading.cursor)) {
    const char* const start = reading.cursor;
    auto* item = perm_new<CondItem>(pool);
    if (item == nullptr) return Status::memory;
    item->op = reading.side == Side::left ? 'l' : 'r';
    const Status scanned = scan_relation_label(pool, reading.cursor, *item, kRelationLabelLimit);
    const Status status = scanned_item_keep(session, pool, reading, scanned, start, item, reading.pattern.relations,
                                            " in RELATION", RuleFault::relation);
    if (status != Status::ok) return status;
    reading.cursor = skip_commas(reading.cursor);
    if (*reading.cursor == ')') {
      return syntax_error(session, reading.parse, reading.cursor, " in RELATION", RuleFault::relation);
    }
  }
  return Status::ok;
}

// Kept with the name, and written out; nothing reads it.
bool is_role_sign(char c) {
  return c == '<' || c == '>';
}

// A name without a sign goes with "<".
Status role_read(Session& session, Pool& pool, PatternReading& reading) {
  auto* item = perm_new<CondItem>(pool);
  if (item == nullptr) return Status::memory;
  item->op = static_cast<std::uint8_t>(is_role_sign(*reading.cursor) ? *reading.cursor++ : '<');
  const char* const start = reading.cursor;
  const Status scanned = scan_attr_token(pool, reading.cursor, *item, kRoleTokenLimit);
  const Status status = scanned_item_keep(session, pool, reading, scanned, start, item, reading.pattern.roles,
                                          " in ROLE", RuleFault::role_open);
  reading.cursor = skip_commas(reading.cursor);
  return status;
}

Status role_section(Session& session, Pool& pool, PatternReading& reading) {
  while (!is_section_end(*reading.cursor) && *reading.cursor != ')') {
    if (const Status status = role_read(session, pool, reading); status != Status::ok) return status;
  }
  // wanted: this message has a form of its own.
  const bool is_fifth_section = *reading.cursor == ':';
  if (!is_fifth_section && *reading.cursor != ')') return Status::ok;
  out_print(session, ";;%s;;ROLE ERR(%d,%d)", reading.cursor, column_of(reading.parse, reading.cursor),
            reading.parse.line);
  rule_fault_note(session, reading.parse, reading.cursor,
                  is_fifth_section ? RuleFault::section_too_many : RuleFault::role);
  return Status::no_effect;
}

// Notes why a pattern has no closer. Only a bracket that nothing closes takes all the rest of its line.
void closer_fault_note(Session& session, const PatternReading& reading) {
  const char* const bracket = *reading.cursor == '\0' ? std::strrchr(reading.parse.start, '[') : nullptr;
  if (bracket == nullptr) return rule_fault_note(session, reading.parse, reading.cursor, RuleFault::pattern_open);
  rule_fault_note(session, reading.parse, bracket, RuleFault::bracket_open);
}

// The closer is not tied to the opener.
Status closer_read(Session& session, PatternReading& reading) {
  reading.cursor = skip_blanks(reading.cursor);
  if (*reading.cursor == '}' || *reading.cursor == '"') {
    ++reading.cursor;
    return Status::ok;
  }
  rule_error_print(session, reading.parse, reading.cursor, "");
  closer_fault_note(session, reading);
  return Status::no_effect;
}

// COND is always there, if empty. Each other section stands behind a colon, and a pattern may end in front of any.
Status sections_read(Session& session, Pool& pool, PatternReading& reading) {
  if (const Status status = cond_section(session, pool, reading); status != Status::ok) return status;
  for (auto* const section : {action_section, relation_section, role_section}) {
    if (*reading.cursor != ':') break;
    reading.cursor = skip_blanks(reading.cursor + 1);
    if (const Status status = section(session, pool, reading); status != Status::ok) return status;
  }
  return closer_read(session, reading);
}

// ---- Groups ----

// The conditions behind the "(", the ")" and a star. What has been read of a group that fails is released by the caller.
Status group_read(Session& session, Pool& pool, RuleParse& parse, const char* opener, const char*& cursor,
                  ContextGroup& group) {
  while (*cursor != ')' && *cursor != '\0') {
    CondItem* item = nullptr;
    ItemKind kind{};
    const Status status = parse_cond_item(session, pool, parse, ItemPlace::group, cursor, item, kind);
    if (status != Status::ok) return status;
    chain_append<&CondItem::next>(conditions_of(group, kind), item);
  }
  // wanted: a line that ends between two items has no message here.
  if (*cursor == '\0') {
    rule_fault_note(session, parse, opener, RuleFault::group_open);
    return Status::no_effect;
  }
  ++cursor;
  if (*cursor == '*') {
    group.star = 1;
    ++cursor;
  }
  return Status::ok;
}

}  // namespace

// The line from `position` on, with its line end, so that what follows stands on a line of its own.
void rule_error_print(Session& session, const RuleParse& parse, const char* position, const char* behind) {
  out_print(session, ";;%s;;ERR(%d,%d)%s", position, column_of(parse, position), parse.line, behind);
}

// Nothing is noted once the parse is to be left: what half a line lacks is no fault of the text.
void rule_fault_note(Session& session, const RuleParse& parse, const char* position, RuleFault fault) {
  if (parse.notes == nullptr || must_leave(session, *parse.pool) != Status::ok) return;
  std::string_view text = parse.start;
  if (text.ends_with('\n')) text.remove_suffix(1);
  const auto column = static_cast<std::size_t>(position - parse.start);
  parse.notes->notes.push_back({parse.notes->text.line, column, fault, std::string(text)});
}

// The status is kept in `parse` as well: that of the last line decides over the whole file.
Status parse_cond_item(Session& session, Pool& pool, RuleParse& parse, ItemPlace place, const char*& cursor,
                       CondItem*& item, ItemKind& kind) {
  item = perm_new<CondItem>(pool);
  parse.status = item == nullptr ? Status::memory : item_read(session, pool, parse, place, cursor, *item, kind);
  if (parse.status != Status::ok) {
    item_list_free(pool, item);
    item = nullptr;
  }
  return parse.status;
}

Status parse_context_group(Session& session, Pool& pool, RuleParse& parse, const char*& cursor, ContextGroup*& group) {
  const char* const opener = cursor;
  cursor = skip_blanks(cursor + 1);
  group = perm_new<ContextGroup>(pool);
  parse.status = group == nullptr ? Status::memory : group_read(session, pool, parse, opener, cursor, *group);
  if (parse.status != Status::ok) group_list_free(pool, group);
  return parse.status;
}

// `pattern` belongs to the caller even when the parse fails; it goes with the rule.
Status parse_node_pattern(Session& session, Pool& pool, RuleParse& parse, Side side, const char*& cursor,
                          NodePattern*& pattern) {
  pattern = perm_new<NodePattern>(pool);
  if (pattern == nullptr) return parse.status = Status::memory;
  pattern->inserted = *cursor == '"' ? 1 : 0;
  cursor = skip_blanks(cursor + 1);
  PatternReading reading{parse, cursor, *pattern, side};
  return parse.status = sections_read(session, pool, reading);
}

}  // namespace lexon
