// Compiled rule files: reading damaged ones, printing what they say, and writing it again.
#include "rule_text.hpp"
#include "rules/compiled.hpp"
#include "support/grammar.hpp"

namespace {

using lexon::test::grammar;
using lexon::test::session;

using namespace lexon;

Rule* rules_read(std::string_view bytes) {
  const fuzz::Source file(bytes);
  Rule* rules = nullptr;
  const Status status = rule_list_read(session, grammar.pool, rules, file.get());
  fuzz::require(status == Status::ok || rules == nullptr, "no rules come from a damaged file");
  return rules;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::fresh_start();
  const Rule* rules = rules_read(fuzz::bytes_of(data, size));
  const std::string printed = fuzz::rules_printed(rules);
  const std::string compiled = fuzz::rules_compiled(rules);
  if (compiled.empty()) return 0;
  const Rule* again = rules_read(compiled);
  fuzz::require(fuzz::rules_printed(again) == printed, "rules that are written and read again print the same");
  fuzz::require(fuzz::rules_compiled(again) == compiled, "rules that are read again compile to the same bytes");
  return 0;
}
