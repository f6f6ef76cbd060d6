// The rules of a text with the place of everything that they say, for checks. What the parser refuses is no rule here.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "data/text_line.hpp"
#include "lab/check.hpp"
#include "lab/check_names.hpp"
#include "rules/pattern_parser.hpp"
#include "rules/rule.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// Where in a rule an item stands: in the groups in front, between and behind, or in a section of one of the two patterns.
enum class Place : std::uint8_t { pre, cond, action, relation, role, mid, suf };

struct RuleItem {
  Place place;
  Side side;            // of cond, action, relation and role
  ItemKind kind;        // labels and roles count as attributes
  std::uint8_t op;      // as CondItem
  std::uint16_t group;  // of pre, mid and suf, in order of the text
  std::uint32_t begin;  // bytes of the line
  std::uint32_t end;
  NameId name;
};

// A rule as its line says it; nothing of it points into the text.
struct RuleView {
  std::int64_t line = 0;
  std::uint8_t type = 0;      // see rule_type
  std::uint8_t priority = 0;  // that counts
  std::string number;         // of the priority, as written
  std::uint32_t number_begin = 0;
  std::array<bool, 2> is_quote{};                // by side: left, right
  std::array<std::uint32_t, 2> pattern_begin{};  // bytes of the line, with the braces
  std::array<std::uint32_t, 2> pattern_end{};
  std::uint16_t pre_groups = 0;  // how many
  std::uint16_t mid_groups = 0;
  std::uint16_t suf_groups = 0;
  std::string pre;  // the groups as written
  std::string suf;
  std::string text;             // the line
  std::vector<RuleItem> items;  // in the order of the text

  [[nodiscard]] bool is_post_edit() const { return is_post_edit_type(type); }
  [[nodiscard]] bool quote(Side side) const { return is_quote[side == Side::left ? 0 : 1]; }
  [[nodiscard]] bool inserts() const {
    return type == rule_type::insertion || type == rule_type::insertion_a || type == rule_type::post_insertion;
  }
  // Of the two words' patterns, the first item of that place; null if there is none.
  [[nodiscard]] const RuleItem* first(Place place, Side side) const {
    for (const RuleItem& item : items) {
      if (item.place == place && item.side == side) return &item;
    }
    return nullptr;
  }
  [[nodiscard]] const RuleItem* first(Place place) const {
    const RuleItem* left = first(place, Side::left);
    return left != nullptr ? left : first(place, Side::right);
  }
};

struct RuleBase {
  std::vector<RuleView> rules;  // in the order of trial
  std::int64_t bytes = 0;       // of memory that they take
};

// Is it what `lexon` makes of rules, and no text? UTF-16 is full of NULs too, but is a finding.
[[nodiscard]] bool is_compiled(std::string_view text);

// Reads the rules and appends what the parser found wrong.
[[nodiscard]] RuleBase read_rules(const CheckInput& input, Names& names, std::vector<Finding>& findings);

// The finding at bytes of a line; its columns are counted in characters.
[[nodiscard]] Finding finding_at(const std::string& file, std::int64_t line, std::string_view text, std::size_t begin,
                                 std::size_t end, Level level, const char* code, std::string what, std::string remedy);

// What texts call another line of the rules: "line 12", or with its file if it comes from another one.
[[nodiscard]] std::string rule_line_name(const CheckInput& input, std::int64_t line);

// Moves findings about rules to where these were expanded from. What all turns of a loop show is told once.
void findings_to_sources(const CheckInput& input, std::vector<Finding>& findings);

// What is wrong with a text as a text: its encoding, its long lines.
void check_encoding(const std::string& file, const TextWatch& watch, std::vector<Finding>& findings);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
