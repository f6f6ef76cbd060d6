// The inner grammar of a rule line: node patterns, groups and their items.
//
// All of these move the cursor behind what they read, print the head of an error message without a line end (the
// section's name follows it), and give ok, `no_effect` for a syntax error, or `memory`; the result also stands in the
// parse.
#pragma once

#include "data/pool.hpp"
#include "data/status.hpp"
#include "rules/rule.hpp"
#include "rules/rule_notes.hpp"

namespace lexon {

struct Session;

// Where the parser stands; travels through the parse of one file.
struct RuleParse {
  int line = 0;                 // counted from 1
  const char* start = nullptr;  // of the line; columns count from here
  Status status = Status::ok;   // of the line so far
  RuleNotes* notes = nullptr;   // null: nobody wants to know
  const Pool* pool = nullptr;   // of the rules; never null once a line is read
};

// Prints what is wrong at `position`: the line from there on, column and line number, then `behind`.
void rule_error_print(Session& session, const RuleParse& parse, const char* position, const char* behind);

// Notes what is wrong at `position`, for who wants to know. Nothing that comes of exhausted memory is a fault.
void rule_fault_note(Session& session, const RuleParse& parse, const char* position, RuleFault fault);

// Reads one "(" .. ")" and a "*" behind it. `group` is null on failure.
[[nodiscard]] Status parse_context_group(Session& session, Pool& pool, RuleParse& parse, const char*& cursor,
                                         ContextGroup*& group);

// Reads the pattern of one side. On failure `pattern` is what has been built, for the caller to release.
[[nodiscard]] Status parse_node_pattern(Session& session, Pool& pool, RuleParse& parse, Side side, const char*& cursor,
                                        NodePattern*& pattern);

// The places an item can stand in, and the forms it can have.
enum class ItemPlace { group, cond, action };
enum class ItemKind { attribute, hw, cw };

// Reads one item and the commas and blanks behind it. `item` is null on failure.
[[nodiscard]] Status parse_cond_item(Session& session, Pool& pool, RuleParse& parse, ItemPlace place,
                                     const char*& cursor, CondItem*& item, ItemKind& kind);

}  // namespace lexon
