// A rule line is TYPE, PRE, LNODE, MID, RNODE, SUF, the priority, and anything. Each part is read by a step of its own;
// a step that fails has said why, and the rule is dropped.
#include "rules/parser.hpp"

#include <array>

#include "data/chain.hpp"
#include "data/chars.hpp"
#include "data/output.hpp"
#include "data/pool.hpp"
#include "data/session.hpp"
#include "data/text_line.hpp"
#include "rules/pattern_parser.hpp"

namespace lexon {
namespace {

// Each step returns false when the rule is refused; it has printed why, and noted it for front ends.
//
// One rule in the making.
struct LineReading {
  RuleParse& parse;
  const char* cursor;  // what is read next, in the line of `parse`
  Rule& rule;          // all zero at first; goes back to the pool if it is refused
};

// The types whose patterns may both bring a word in.
bool is_insertion_type(std::uint8_t type) {
  return type == rule_type::insertion || type == rule_type::insertion_a || type == rule_type::post_insertion;
}

// Ends the message that the failing step has begun.
bool section_failed(Session& session, const char* section) {
  out_print(session, " in %s\n", section);
  return false;
}

// Stands at the first character that is no blank. The message shows the line from there on.
bool type_read(Session& session, LineReading& line) {
  line.rule.type = parse_rule_type(line.cursor);
  if (line.rule.type == 0) {
    rule_error_print(session, line.parse, line.cursor, " in TYPE\n");
    rule_fault_note(session, line.parse, line.cursor, RuleFault::type);
    return false;
  }
  line.cursor = skip_blanks(line.cursor);
  return true;
}

// The engine walks context away from the pattern it belongs to; PRE is written towards it.
enum class GroupOrder { of_text, reversed };

bool groups_read(Session& session, Pool& pool, LineReading& line, ContextGroup*& list, GroupOrder order,
                 const char* section) {
  while (*line.cursor == '(') {
    ContextGroup* group = nullptr;
    if (parse_context_group(session, pool, line.parse, line.cursor, group) != Status::ok)
      return section_failed(session, section);
    if (order == GroupOrder::reversed) {
      group->next = list;
      list = group;
    } else {
      chain_append<&ContextGroup::next>(list, group);
    }
    line.cursor = skip_blanks(line.cursor);
  }
  return true;
}

// A lone starred group without attributes says nothing.
// wanted: surface forms and concept words that it holds go with it.
void lone_group_drop(Pool& pool, ContextGroup*& list) {
  const bool is_lone = list != nullptr && list->next == nullptr;
  if (is_lone && list->star != 0 && list->attr_conds == nullptr) group_list_free(pool, list);
}

bool pre_read(Session& session, Pool& pool, LineReading& line) {
  if (!groups_read(session, pool, line, line.rule.pre, GroupOrder::reversed, "PRE")) return false;
  lone_group_drop(pool, line.rule.pre);
  return true;
}

// Why the opener under the cursor is not allowed.
RuleFault opener_fault(const LineReading& line, bool is_left) {
  switch (*line.cursor) {
    case '"': return is_left ? RuleFault::left_quote : RuleFault::right_quote;
    case '{':
      if (is_left) return RuleFault::left_brace;
      return line.rule.mid != nullptr ? RuleFault::right_brace_behind_mid : RuleFault::right_brace;
    default: return is_left ? RuleFault::left_missing : RuleFault::right_missing;
  }
}

// `allowed`: does the type, and what has been read of the rule, allow the opener under the cursor?
bool pattern_read(Session& session, Pool& pool, LineReading& line, Side side, bool allowed, NodePattern*& pattern) {
  const bool is_left = side == Side::left;
  if (!allowed) {
    rule_error_print(session, line.parse, line.cursor, is_left ? " in LNODE\n" : " in RNODE\n");
    rule_fault_note(session, line.parse, line.cursor, opener_fault(line, is_left));
    return false;
  }
  if (parse_node_pattern(session, pool, line.parse, side, line.cursor, pattern) != Status::ok) {
    return section_failed(session, is_left ? "LNODE" : "RNODE");
  }
  line.cursor = skip_blanks(line.cursor);
  return true;
}

// wanted: no blanks are passed in front of the left pattern but those behind the groups and the type.
bool lnode_read(Session& session, Pool& pool, LineReading& line) {
  const std::uint8_t type = line.rule.type;
  const bool braces = *line.cursor == '{' && type != rule_type::shift_left;
  const bool quotes = *line.cursor == '"' && (is_insertion_type(type) || type == rule_type::shift_left);
  return pattern_read(session, pool, line, Side::left, braces || quotes, line.rule.lnode);
}

bool mid_read(Session& session, Pool& pool, LineReading& line) {
  const std::uint8_t type = line.rule.type;
  const bool may_have_mid = type == rule_type::insertion || type == rule_type::post_insertion;
  if (!may_have_mid && *line.cursor == '(') {
    rule_error_print(session, line.parse, line.cursor, ", MID is not allowed\n");
    rule_fault_note(session, line.parse, line.cursor, RuleFault::mid);
    return false;
  }
  // MID is read from the node that stands there towards the one that is brought in.
  const auto order = line.rule.lnode->inserted == 0 ? GroupOrder::of_text : GroupOrder::reversed;
  return groups_read(session, pool, line, line.rule.mid, order, "MID");
}

bool rnode_read(Session& session, Pool& pool, LineReading& line) {
  const std::uint8_t type = line.rule.type;
  // MID stands between two nodes one of which is brought in.
  const bool may_stand = line.rule.mid == nullptr || line.rule.lnode->inserted != 0;
  const bool braces = *line.cursor == '{' && type != rule_type::shift_right && may_stand;
  const bool quotes = *line.cursor == '"' && (is_insertion_type(type) || type == rule_type::shift_right);
  return pattern_read(session, pool, line, Side::right, braces || quotes, line.rule.rnode);
}

// Refuses a rule that would apply again after itself. A rule of type "<" or ">" changes nothing, so it is not looked at:
// it draws a warning, if it is of no use, and stays.
bool ends_sometime(Session& session, LineReading& line) {
  const Rule& rule = line.rule;
  const bool wants_relation = rule.type == rule_type::less || rule.type == rule_type::greater;
  if (wants_relation && rule.lnode->relations == nullptr && rule.rnode->relations == nullptr) {
    out_print(session,
              ";;%s;;WARNING(0,%d), no relation is found in LNODE and RNODE of above rule of type '>' or '<'\n",
              line.parse.start, line.parse.line);
    rule_fault_note(session, line.parse, line.parse.start, RuleFault::no_relation);
    return true;
  }
  if (!is_endless_rule(line.rule)) return true;
  out_print(session, ";;%s;;ERR(0,%d), an endless loop rule\n", line.parse.start, line.parse.line);
  rule_fault_note(session, line.parse, line.parse.start, RuleFault::endless);
  return false;
}

bool suf_read(Session& session, Pool& pool, LineReading& line) {
  if (!groups_read(session, pool, line, line.rule.suf, GroupOrder::of_text, "SUF")) return false;
  lone_group_drop(pool, line.rule.suf);
  return true;
}

// wanted: the number wraps at 256 without a word, and 0 draws the warning however it came about.
bool priority_read(Session& session, LineReading& line) {
  std::uint8_t& priority = line.rule.priority;
  if (*line.cursor == 'P') {
    for (++line.cursor; is_digit(*line.cursor); ++line.cursor) {
      priority = static_cast<std::uint8_t>(priority * 10 + (*line.cursor - '0'));
    }
  }
  if (priority == 0) {
    out_print(session, ";;%s;;WARNING(0,%d), no priority in above rule, to be treated as 0\n", line.parse.start,
              line.parse.line);
    rule_fault_note(session, line.parse, line.cursor, RuleFault::no_priority);
  }
  return true;
}

// In the order of the line. The test for endless rules stands where both patterns are known, so that a fault in SUF
// of such a rule is never told.
bool rule_read(Session& session, Pool& pool, LineReading& line) {
  return type_read(session, line) && pre_read(session, pool, line) && lnode_read(session, pool, line) &&
         mid_read(session, pool, line) && rnode_read(session, pool, line) && ends_sometime(session, line) &&
         suf_read(session, pool, line) && priority_read(session, line);
}

// A list for each priority, so that a rule finds its place at once.
struct PriorityLists {
  std::array<Rule*, 256> first{};
  std::array<Rule*, 256> last{};
};

void rule_enter(PriorityLists& lists, Rule& rule) {
  Rule*& first = lists.first[rule.priority];
  Rule*& last = lists.last[rule.priority];
  (first == nullptr ? first : last->next) = &rule;
  last = &rule;
}

// The lists joined, the highest priority first.
Rule* rules_joined(const PriorityLists& lists) {
  Rule* head = nullptr;
  for (std::size_t priority = 0; priority < lists.first.size(); ++priority) {
    if (lists.first[priority] == nullptr) continue;
    lists.last[priority]->next = head;
    head = lists.first[priority];
  }
  return head;
}

// Comments and empty lines hold no rule, but they count as lines.
bool is_rule_line(const char* text) {
  const char first = *skip_blanks(text);
  return first != ';' && first != '\n';
}

// Reads the rule of a line and enters it. A refused rule is no failure: what it has left in `parse.status` decides over the
// file only if it stands last.
Status line_parse(Session& session, Pool& pool, RuleParse& parse, PriorityLists& lists) {
  auto* rule = perm_new<Rule>(pool);
  if (rule == nullptr) return Status::memory;
  rule->line = static_cast<std::uint32_t>(parse.notes == nullptr ? parse.line : parse.notes->text.line);
  LineReading line{parse, skip_blanks(parse.start), *rule};
  rule->column = static_cast<std::uint16_t>(line.cursor - parse.start + 1);
  if (rule_read(session, pool, line)) {
    rule_enter(lists, *rule);
  } else {
    if (parse.notes != nullptr) ++parse.notes->refused;
    rule_list_free(pool, rule);
  }
  return Status::ok;
}

}  // namespace

Status parse_rule_file(Session& session, Pool& pool, TextSource source, Rule*& rules, RuleNotes* notes) {
  rules = nullptr;
  char text[kLineSize];
  RuleParse parse{.start = text, .status = session.state.engine_status, .notes = notes, .pool = &pool};
  PriorityLists lists;
  while (text_line_read(source, text, kLineSize, notes == nullptr ? nullptr : &notes->text)) {
    if (const Status leave = must_leave(session, pool); leave != Status::ok) return leave;
    ++parse.line;
    parse.status = Status::ok;
    if (!is_rule_line(text)) continue;
    const Status status = line_parse(session, pool, parse, lists);
    if (notes != nullptr && must_leave(session, pool) == Status::memory) notes->memory_line = notes->text.line;
    if (status != Status::ok) return status;
  }
  if (const Status leave = must_leave(session, pool); leave != Status::ok) return leave;
  // Half a rule base would say other things than the linguist wrote.
  if (source.has_failed()) {
    out_print(session, ";;the rule text cannot be read behind line %d\n", parse.line);
    return Status::no_effect;
  }
  rules = rules_joined(lists);
  session.state.engine_status = parse.status;
  if (notes != nullptr) notes->last_line_fails = parse.status != Status::ok;
  return parse.status;
}

}  // namespace lexon
