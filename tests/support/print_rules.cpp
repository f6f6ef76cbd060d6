// Prints the rules of a rule text in their canonical form: what a trace line gives back to a rule file.
#include <cstdio>
#include <memory>

#include "data/session.hpp"
#include "rules/parser.hpp"
#include "rules/print.hpp"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  std::FILE* text = std::fopen(argv[1], "r");
  std::FILE* printed = std::fopen(argv[2], "w");
  if (text == nullptr || printed == nullptr) return 1;
  const auto session = std::make_unique<lexon::Session>();
  lexon::Pool pool;
  session->output.redirect(stderr);
  lexon::Rule* rules = nullptr;
  const lexon::Status status = lexon::parse_rule_file(*session, pool, text, rules);
  session->output.redirect(printed);
  for (const lexon::Rule* rule = rules; rule != nullptr; rule = rule->next) lexon::rule_print(*session, rule, true);
  session->output.redirect(nullptr);
  return std::fclose(printed) == 0 && status == lexon::Status::ok ? 0 : 1;
}
