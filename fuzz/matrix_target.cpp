// Matrix files: loading damaged ones beside rule lists of several lengths, and searching what could be loaded. The
// first byte chooses the list, the rest is the file.
#include <algorithm>

#include "data/nodes.hpp"
#include "data/words.hpp"
#include "matrix_rules.hpp"
#include "rule_text.hpp"
#include "rules/candidates.hpp"
#include "rules/compiled.hpp"
#include "rules/matrix.hpp"
#include "support/grammar.hpp"

namespace {

using lexon::test::grammar;
using lexon::test::session;

using namespace lexon;

Node* node_of(const std::string& attrs) {
  auto* node = temp_new<Node>(session);
  fuzz::require(node != nullptr, "memory for a node");
  node->kind = kKindWord;
  node->candidates = entry_new(session, "w", attrs.c_str());
  return node;
}

// The first names of a side, joined.
std::string names_of(const MatrixSide& side, std::int32_t count) {
  constexpr std::size_t kEnough = 900;
  std::string attrs;
  for (std::int32_t i = 0; i < std::min(count, side.attr_count) && attrs.size() < kEnough; ++i) {
    if (i != 0) attrs += ',';
    attrs += std::string(side.attr_table[i]).substr(0, kEnough);
  }
  return attrs;
}

void search(const std::string& left, const std::string& right) {
  Node* lnode = node_of(left);
  Node* rnode = node_of(right);
  int found = 0;
  for_each_rule_from(session, rule_candidates(session, lnode, rnode), [&](const Rule&) { ++found; });
  fuzz::require(found <= grammar.index.matrix.rule_count, "no more candidates than rules");
  session.pool.release_all();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  fuzz::fresh_start();
  Rule* rules = fuzz::rules_parsed(fuzz::matrix_rules(data[0])).rules;
  const std::string_view bytes = fuzz::bytes_of(data + 1, size - 1);
  const fuzz::Source file(bytes);
  const Status status = rule_matrix_load(session, grammar.index, file.get(), rules);
  if (status != Status::ok) {
    fuzz::require(grammar.index.matrix.rules == nullptr, "no matrix comes from a damaged file");
    return 0;
  }
  session_use(session, grammar);
  const fuzz::Sink sink;
  fuzz::require(rule_matrix_save(session, grammar.index, sink.get()) == Status::ok, "a matrix can be saved");
  fuzz::require(bytes.starts_with(sink.text()), "a loaded matrix saves the same bytes");
  for (const std::int32_t names : {0, 1, 3, 20}) {
    search(names_of(grammar.index.matrix.left, names), names_of(grammar.index.matrix.right, names));
    search("N,V,,A", names_of(grammar.index.matrix.left, names));
  }
  return 0;
}
