// A rule at work on a list, for tests of single steps of the engine.
#pragma once

#include <string>
#include <string_view>

#include "data/nodes.hpp"
#include "data/pool.hpp"
#include "engine/loop.hpp"
#include "rules/matrix.hpp"
#include "support/grammar.hpp"
#include "support/list_text.hpp"
#include "support/rules.hpp"

namespace lexon::test {

// Everything of the last sentence and its steps is gone; nothing is traced.
inline void fresh_sentence() {
  session_use(session, grammar);
  session.pool.release_all();
  sentence_clear(session);
  session.state.forced_node = nullptr;
  session.state.engine_status = Status::ok;
  session.state.trace_level = 0;
  session.state.trace_depth = 0;
  session.state.trace_indent[0] = '\0';
  session.state.stack_limit = nullptr;
  session.stop_requested = false;
}

// Makes these the rules of the run, and clears the sentence.
inline void use_rules(const std::string& text) {
  fresh_sentence();
  EXPECT_EQ(index_build(rules_of(text)), Status::ok);
}

// A scope of the table: its number and its entry node.
inline void add_scope(int number, Node* entry) {
  session.sentence.semlst[static_cast<std::size_t>(session.sentence.semlst_count++)] = {static_cast<std::uint8_t>(number), entry};
}

// Parses the rule and clears the sentence, in the order that the pools ask for; then the list stands, and its window
// as the list text marks it.
struct Step {
  Rule* rule;
  List list;
  Window window;
  RuleCandidate* candidate;

  Step(const std::string& rule_text, std::string_view list_text)
      : rule(parsed(rule_text)), list(list_text), window{list.lnode, list.rnode}, candidate(candidate_of(rule)) {}

  // What a match leaves: a record of the rule on both nodes.
  Step& matched() {
    for (Node* node : {window.lnode, window.rnode}) {
      if (node != nullptr) (void)match_record_push(session, *node, kStateStep, candidate);
    }
    return *this;
  }

  // The list as it stands, with the window as it stands.
  [[nodiscard]] std::string text() const { return text_of_list(list.nodes.at(0), window.lnode, window.rnode); }

  static RuleCandidate* candidate_of(const Rule* rule, RuleCandidate* next = nullptr) {
    auto* element = temp_new<RuleCandidate>(session);
    element->rule = rule;
    element->next = next;
    element->list = temp_new<CandidateList>(session);
    element->list->elements = 1;
    return element;
  }

 private:
  static Rule* parsed(const std::string& text) {
    fresh_sentence();
    return rules_of(text);
  }
};

}  // namespace lexon::test
