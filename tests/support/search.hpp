// A search at one window: the rules of its candidate list, its list, the scopes that references lead to, and what one
// call of `backtrack` makes of them.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "data/chain.hpp"
#include "engine/apply.hpp"
#include "engine/backtrack.hpp"
#include "engine/side.hpp"
#include "support/capture.hpp"
#include "support/session.hpp"
#include "support/step.hpp"

namespace lexon::test {

// What has happened at the window before.
enum class Before {
  failed,   // the first rule has been refused, or has failed in matching
  matched,  // it has left its records on both nodes
  applied,  // and has been applied
};

struct SearchCase {
  const char* what;
  const char* rules;              // one a line; the first is the candidate
  const char* list;               // before; see list_text.hpp
  const char* after;              // the list with the window
  const char* outcome;            // the status, and the priority of the candidate's rule or "-"; "forced" if there is a target
  const char* branches;           // the lines with ";;" of the trace, joined by "|"
  const char* scopes = "";        // lists of the scopes 1, 2, ... joined by ";"; the entry is the first word node
  const char* scopes_after = "";  // the same afterwards
  int forced = -1;                // index in the list of the target of a forced backtracking
  int hold_of = 0;                // the holds on entry nodes belong to this rule, counted from 0
  const char* arc = "";           // label of an arc from the window's left node to the right one, in use
};

// Elements of one list live and die together.
inline void share_one_list(RuleCandidate* head) {
  for (RuleCandidate& element : chain<&RuleCandidate::next>(head->next)) {
    temp_delete(session, element.list);
    element.list = head->list;
    ++head->list->elements;
  }
}

// The lines of a trace that name branches, without ";;" and the line end.
inline std::string branches_of(std::string_view trace) {
  std::string found;
  while (!trace.empty()) {
    const std::size_t end = trace.find('\n');
    std::string_view line = trace.substr(0, end);
    trace.remove_prefix(end == std::string_view::npos ? trace.size() : end + 1);
    const std::size_t at = line.find(";;");
    if (at > 2) continue;
    found.append(found.empty() ? "" : "|").append(line.substr(0, at)).append(line.substr(at + 2));
  }
  return found;
}

class Search {
 public:
  Search(const SearchCase& search, Before before) : step_(search.rules, search.list) {
    chain_rules();
    read_scopes(search);
    if (search.forced >= 0) session.state.forced_node = &step_.list.at(static_cast<std::size_t>(search.forced));
    if (*search.arc != '\0') arc_between(*window().lnode, *window().rnode, search.arc)->used = 1;
    if (before != Before::failed) step_.matched();
    if (before == Before::applied) {
      EXPECT_EQ(apply_rule(session, step_.window, step_.candidate, &home_scope_), Status::ok);
    }
  }

  [[nodiscard]] Window& window() { return step_.window; }
  [[nodiscard]] RuleCandidate*& candidate() { return step_.candidate; }
  [[nodiscard]] Node& at(std::size_t index) const { return step_.list.at(index); }
  [[nodiscard]] std::string text() const { return step_.text(); }

  // One call; what it says, as `SearchCase::outcome`.
  std::string undo() {
    std::string text = std::to_string(code(backtrack(session, step_.window, step_.candidate, home_scope_)));
    const RuleCandidate* left = step_.candidate;
    text += left == nullptr ? " -" : " P" + std::to_string(left->rule->priority);
    return session.state.forced_node == nullptr ? text : text + " forced";
  }

  [[nodiscard]] std::string scopes_text() const {
    std::string text;
    for (const List& scope : scopes_) text.append(text.empty() ? "" : ";").append(text_of_list(scope.nodes.at(0)));
    return text;
  }

 private:
  void chain_rules() {
    for (const Rule* rule = step_.rule->next; rule != nullptr; rule = rule->next) {
      chain_append<&RuleCandidate::next>(step_.candidate, Step::candidate_of(rule));
    }
    share_one_list(step_.candidate);
  }

  void read_scopes(const SearchCase& search) {
    std::string_view rest = search.scopes;
    RuleCandidate* holder = step_.candidate;
    for (int i = 0; i < search.hold_of; ++i) holder = holder->next;
    for (int number = 1; !rest.empty(); ++number) {
      const std::size_t end = std::min(rest.find(';'), rest.size());
      Node* entry = scopes_.emplace_back(rest.substr(0, end)).nodes.at(0);
      while (is_boundary(*entry)) entry = entry->right;
      if (is_held(*entry)) entry->matches->candidate = holder;
      add_scope(number, entry);
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }

  Step step_;
  std::deque<List> scopes_;
  std::int32_t home_scope_ = 0;
};

// At level 0 and at level 3 the step does the same; at level 3 it names its branches.
inline void expect_search(const SearchCase& expected, Before before) {
  for (const int level : {0, 3}) {
    Search search(expected, before);
    Capture output;
    session.state.trace_level = static_cast<std::int8_t>(level);
    EXPECT_EQ(search.undo(), expected.outcome);
    EXPECT_EQ(search.text(), expected.after);
    EXPECT_EQ(search.scopes_text(), expected.scopes_after);
    EXPECT_EQ(branches_of(output.text()), level == 0 ? "" : expected.branches);
  }
}

}  // namespace lexon::test
