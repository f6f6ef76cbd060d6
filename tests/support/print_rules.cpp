// Prints the rules of a rule text in their canonical form: what a trace line gives back to a rule file.
#include <cstdio>

#include "data/state.hpp"
#include "rules/parser.hpp"
#include "rules/print.hpp"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  std::FILE* text = std::fopen(argv[1], "r");
  std::FILE* printed = std::fopen(argv[2], "w");
  if (text == nullptr || printed == nullptr) return 1;
  lexon::state.output = stderr;
  lexon::Rule* rules = nullptr;
  const lexon::Status status = lexon::parse_rule_file(text, rules);
  lexon::state.output = printed;
  for (const lexon::Rule* rule = rules; rule != nullptr; rule = rule->next) lexon::rule_print(rule, true);
  return std::fclose(printed) == 0 && status == lexon::Status::ok ? 0 : 1;
}
