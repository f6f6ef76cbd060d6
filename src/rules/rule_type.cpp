// The TYPE at the head of a rule line.
#include "rules/parser.hpp"

namespace lexon {
namespace {

// The code for a letter and a side behind it; without one, the letter alone.
std::uint8_t sided_type(const char*& cursor, std::uint8_t alone, std::uint8_t left, std::uint8_t right) {
  const char side = *++cursor;
  if (side != 'L' && side != 'R') return alone;
  ++cursor;
  return side == 'L' ? left : right;
}

// "PS": the third character decides.
std::uint8_t post_scope_type(const char*& cursor) {
  const char third = *cursor;
  if (third == '\0') return 0;
  ++cursor;
  if (third == 'L') return rule_type::post_scope_left;
  if (third == 'R') return rule_type::post_scope_right;
  // wanted: any other character is itself the code.
  return static_cast<std::uint8_t>(third);
}

// The sign may be doubled: "P<" and "P<<" are one type.
std::uint8_t shift_type(const char*& cursor, std::uint8_t type) {
  if (*cursor == cursor[-1]) ++cursor;
  return type;
}

// "P" and what stands behind it; any other character there is left for the pattern, and "P" is a type without a step.
std::uint8_t post_edit_type(const char*& cursor) {
  switch (*++cursor) {
    case ':': ++cursor; return rule_type::post_insertion;
    case '<': return shift_type(++cursor, rule_type::shift_left);
    case '>': return shift_type(++cursor, rule_type::shift_right);
    case 'L': ++cursor; return rule_type::post_left;
    case 'R': ++cursor; return rule_type::post_right;
    case 'S': return post_scope_type(++cursor);
    default: return 'P';
  }
}

}  // namespace

// Digits but "1" and "2" are codes, and no texts: the codes of post-edit are written with "P".
std::uint8_t parse_rule_type(const char*& cursor) {
  switch (*cursor) {
    case '+':
    case '-':
    case '1':
    case '2':
    case ':':
    case '<':
    case '>':
    case 'L':
    case 'R':
    case 'X': return static_cast<std::uint8_t>(*cursor++);
    case '?': return sided_type(cursor, rule_type::test, rule_type::test_left, rule_type::test_right);
    case 'C': return sided_type(cursor, rule_type::copy_left, rule_type::copy_left, rule_type::copy_right);
    case 'D': return sided_type(cursor, 'D', rule_type::merge_left, rule_type::merge_right);
    case 'P': return post_edit_type(cursor);
    default: return 0;
  }
}

}  // namespace lexon
