// Rules from their text, and back. For tests whose program links the rules room or one above it.
#pragma once

#include "data/status.hpp"
#include "rules/parser.hpp"
#include "rules/print.hpp"
#include "rules/rule.hpp"
#include "support/capture.hpp"
#include "support/grammar.hpp"
#include "support/test.hpp"

namespace lexon::test {

// What the rule parser makes of a text.
struct ParsedRules {
  Rule* rules = nullptr;
  Status status = Status::ok;
  std::string messages;
};

[[nodiscard]] inline ParsedRules rules_parsed(const std::string& text) {
  ParsedRules result;
  std::FILE* stream = stream_of(text);
  {
    Capture output;
    result.status = parse_rule_file(session, grammar.pool, stream, result.rules);
    result.messages = output.text();
  }
  std::fclose(stream);
  return result;
}

// The list of the rules in `text`, one a line, by falling priority. A rule that draws a message fails the test. Rules
// lie in the permanent pool: make them before anything of a sentence.
[[nodiscard]] inline Rule* rules_of(const std::string& text) {
  const ParsedRules parsed = rules_parsed(text);
  EXPECT_EQ(parsed.status, Status::ok) << text;
  EXPECT_EQ(parsed.messages, "") << text;
  return parsed.rules;
}

// The canonical text of a rule list, one rule a line. The trace indent stands in front.
[[nodiscard]] inline std::string printed(const Rule* rules) {
  Capture output;
  rule_print(session, rules, false);
  return output.text();
}

}  // namespace lexon::test
