// Rule text: parsing, the canonical print, the compiled form, and the index.
#include "rule_text.hpp"
#include "rules/compiled.hpp"
#include "rules/matrix.hpp"
#include "support/grammar.hpp"

namespace {

using lexon::test::grammar;
using lexon::test::index_build;
using lexon::test::session;

using namespace lexon;

void print_and_parse_again(const Rule* rules) {
  if (!fuzz::is_printable(rules)) return;
  const std::string printed = fuzz::rules_printed(rules);
  const fuzz::ParsedRules again = fuzz::rules_parsed(printed);
  fuzz::require(fuzz::rules_printed(again.rules) == printed, "printed rules read and print the same again");
}

void compile_and_read_again(const Rule* rules) {
  const std::string compiled = fuzz::rules_compiled(rules);
  if (compiled.empty()) return;
  const fuzz::Source file(compiled);
  Rule* again = nullptr;
  fuzz::require(rule_list_read(session, grammar.pool, again, file.get()) == Status::ok,
                "a compiled rule file can be read");
  fuzz::require(fuzz::rules_printed(again) == fuzz::rules_printed(rules), "compiled rules print as the text does");
  fuzz::require(fuzz::rules_compiled(again) == compiled, "compiled rules compile to the same bytes");
}

std::string saved_matrix() {
  const fuzz::Sink sink;
  fuzz::require(rule_matrix_save(session, grammar.index, sink.get()) == Status::ok, "a matrix can be saved");
  return sink.text();
}

void index_and_read_again(Rule* rules) {
  if (index_build(rules) != Status::ok) return;
  const std::string saved = saved_matrix();
  const fuzz::Source file(saved);
  fuzz::require(rule_matrix_load(session, grammar.index, file.get(), rules) == Status::ok,
                "a saved matrix can be loaded");
  fuzz::require(saved_matrix() == saved, "a loaded matrix saves the same bytes");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::fresh_start();
  const fuzz::ParsedRules parsed = fuzz::rules_parsed(fuzz::bytes_of(data, size));
  print_and_parse_again(parsed.rules);
  compile_and_read_again(parsed.rules);
  index_and_read_again(parsed.rules);
  return 0;
}
