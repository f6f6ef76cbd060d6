#include "rules/rule_notes.hpp"

#include <array>

namespace lexon {

namespace {

// What is told of a fault: first what is wrong, then how the rule is written right. Shown as it stands here, behind the
// place, so that it is one line without an end.
struct FaultText {
  RuleFault fault;
  const char* text;
};

// In the order of the enumerators: the fault itself is the place in the table.
constexpr FaultText kTexts[] = {
    {RuleFault::type,
     "no rule type: a rule begins with : L R ? ?L ?R X CL CR DL DR P: PL PR P<< P>> PSL or PSR, a comment with ;"},
    {RuleFault::left_missing, "no left pattern: write {conditions:actions} here, {} for any word"},
    {RuleFault::left_quote, "no inserted word here: only the types : P: and P<< take \"...\" on the left; write {...}"},
    {RuleFault::left_brace, "the type P<< puts in text on the left: write \"[text]\" instead of {...}"},
    {RuleFault::right_missing, "no right pattern: write {conditions:actions} here, {} for any word"},
    {RuleFault::right_quote,
     "no inserted word here: only the types : P: and P>> take \"...\" on the right; write {...}"},
    {RuleFault::right_brace, "the type P>> puts in text on the right: write \"[text]\" instead of {...}"},
    {RuleFault::right_brace_behind_mid,
     "groups between the patterns need an inserted word on one side: write \"...\" here, or on the left"},
    {RuleFault::mid, "no group between the patterns: only the types : and P: take one; put it before or behind both"},
    {RuleFault::item_open, "the line ends in this word: close the pattern with } or \", the group with )"},
    {RuleFault::bracket_open,
     "this bracket is not closed: behind its ] stands a comma, ) : } or \", and the text is not empty"},
    {RuleFault::group_open, "this group is not closed: write ) behind its conditions, * behind that if need be"},
    {RuleFault::group_character, "a group has conditions alone: write ) in front of this"},
    {RuleFault::paren_in_cond, "this ) closes nothing: strike it out, or write its ( in front"},
    {RuleFault::not_in_action, "an action adds (mark) or deletes (-mark): ^ is for conditions"},
    {RuleFault::paren_in_action, "this ) closes nothing: strike it out, or write its ( in front"},
    {RuleFault::second_form,
     "two surface forms are demanded of one word: keep one [form]; ^[form] may stand beside it"},
    {RuleFault::second_concept,
     "two concept words are demanded of one word: keep one [[concept]]; ^[[concept]] may stand beside it"},
    {RuleFault::relation, "no relation label: a comma, : } or \" stands behind a label, and no )"},
    {RuleFault::role, "this ) closes nothing: strike it out, or write its ( in front"},
    {RuleFault::role_open, "the line ends in this name: close the pattern with } or \""},
    {RuleFault::section_too_many, "a pattern has four sections at most, conditions:actions:relations:roles"},
    {RuleFault::pattern_open, "this pattern is not closed: write } or \" in front of this"},
    {RuleFault::endless,
     "the rule would fit again after its own actions, for ever: let one strike out a condition of its own side, as in "
     "{new:-new} or {^done:done}"},
    {RuleFault::no_priority, "no priority, or one that comes to 0: write P and a number from 1 to 255 behind the rule"},
    {RuleFault::no_relation, "a rule of type < or > without a relation; rules of these types change nothing"},
};
// A fault without a text would be read from behind the table.
static_assert(std::size(kTexts) == static_cast<std::size_t>(RuleFault::no_relation) + 1);

}  // namespace

const char* rule_fault_text(RuleFault fault) {
  return kTexts[static_cast<std::size_t>(fault)].text;
}

}  // namespace lexon
