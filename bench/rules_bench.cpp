// How long rules take to load, and how long the index takes to answer.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "data/nodes.hpp"
#include "ratios.hpp"
#include "row_search.hpp"
#include "rules/candidates.hpp"
#include "rules/compiled.hpp"
#include "rules/parser.hpp"
#include "support/grammar.hpp"
#include "support/rule_build.hpp"

namespace lexon {

using lexon::test::grammar;
using lexon::test::index_build;
using lexon::test::session;
namespace {

std::string joined(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (const std::string_view part : parts) text += part;
  return text;
}

// Attribute names of which the first are used far more often than the last.
class Names {
 public:
  explicit Names(int count) : count_(count) {}

  int below(int end) { return static_cast<int>(engine_() % static_cast<unsigned>(end)); }
  std::string name() {
    const double u = std::uniform_real_distribution<>()(engine_);
    return joined({"A", std::to_string(static_cast<int>(u * u * count_))});
  }
  // `least` to `most` names.
  std::string names(int least, int most, char separator) {
    std::string text;
    for (int more = least + below(most - least + 1); more > 0; --more) {
      if (!text.empty()) text += separator;
      text += name();
    }
    return text;
  }

 private:
  std::mt19937 engine_{7};
  const int count_;
};

// ---- Loading

std::string rule_text(int count) {
  Names names(300);
  std::string text;
  for (int i = 0; i < count; ++i) {
    text += i % 3 == 0 ? joined({"R(", names.name(), ")"}) : "L";
    text += joined({"{", names.names(1, 3, ','), ",^", names.name(), ":+", names.name(), "}"});
    text += joined({"{", names.names(0, 2, ','), "}P", std::to_string(1 + i * 7 % 250), ";\n"});
  }
  return text;
}

template <typename Write>
bool written(Write write) {
  std::FILE* stream = std::tmpfile();
  if (stream == nullptr) return false;
  const bool done = write(stream) == Status::ok;
  return std::fclose(stream) == 0 && done;
}

bool convert(std::FILE* text, Rule*& rules) {
  return parse_rule_file(session, grammar.pool, text, rules) == Status::ok &&
         written([&](std::FILE* stream) { return rule_list_write(session, rules, stream); }) &&
         index_build(rules) == Status::ok &&
         written([](std::FILE* stream) { return rule_matrix_save(session, grammar.index, stream); });
}

// Text to rules, rule file, index, index file.
void convert_rules(benchmark::State& run) {
  const std::string text = rule_text(static_cast<int>(run.range(0)));
  std::FILE* stream = fmemopen(const_cast<char*>(text.data()), text.size(), "r");
  for ([[maybe_unused]] auto _ : run) {
    Rule* rules = nullptr;
    std::rewind(stream);
    if (!convert(stream, rules)) run.SkipWithError("the rules could not be converted");
    run.PauseTiming();
    rule_matrix_clear(grammar.index);
    rule_list_free(grammar.pool, rules);
    run.ResumeTiming();
  }
  std::fclose(stream);
}
BENCHMARK(convert_rules)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->Repetitions(5);

// ---- Searching

constexpr int kRules = 10000;
constexpr int kNames = 2000;

std::string pattern(Names& names) {
  const bool is_inserted = names.below(10) == 0;
  std::string conditions = names.names(0, 3, ' ');
  if (names.below(2) == 0) conditions += (conditions.empty() ? "^" : " ^") + names.name();
  return is_inserted ? joined({"'", conditions, "'"}) : joined({"{", conditions, "}"});
}

std::string node(Names& names) {
  std::string text = names.names(3, 8, ',');
  for (int more = names.below(3); more > 0; --more) text += joined({"|", names.names(3, 8, ',')});
  if (names.below(2) == 0) text += joined({"{", names.names(1, 4, ','), "}"});
  return text + (names.below(2) == 0 ? "*" : "");
}

// Rules that use every name on each side, and windows to ask about.
struct Setting {
  Setting() {
    Names names(kNames);
    for (int i = 0; i < kNames; ++i) {
      const std::string number = std::to_string(i);
      rules.add(joined({"{A", number, "}{A", number, "}"}));
    }
    for (int i = kNames; i < kRules; ++i) rules.add(pattern(names) + pattern(names));
    built = index_build(rules.head()) == Status::ok && grammar.index.matrix.left.attr_count == kNames &&
            grammar.index.matrix.right.attr_count == kNames;
    sentence_clear(session);
    for (int i = 0; i < 64; ++i) {
      const std::string left = node(names);
      windows.emplace_back(test::node_of_attrs(left), test::node_of_attrs(node(names)));
    }
  }
  ~Setting() {
    rule_matrix_clear(grammar.index);
    session.pool.release_all();
  }
  Setting(const Setting&) = delete;
  Setting& operator=(const Setting&) = delete;

  test::RuleList rules;
  bool built = false;
  std::vector<std::pair<Node*, Node*>> windows;
};

// Gives a list back to the pool; the number of its elements.
int release(RuleCandidate* list) {
  int count = 0;
  for_each_rule_from(session, list, [&](const Rule&) { ++count; });
  candidates_passed_over(session, list);
  return count;
}

// One iteration asks about all windows. `prepare` gives what answers, once the index is built.
template <typename Prepare>
void search(benchmark::State& run, Prepare prepare) {
  Setting setting;
  if (!setting.built) return run.SkipWithError("the index could not be built");
  const auto candidates = prepare();
  std::int64_t found = 0;
  for ([[maybe_unused]] auto _ : run) {
    for (const auto& [left, right] : setting.windows) found += release(candidates(session, left, right));
  }
  const auto searches = static_cast<double>(run.iterations()) * static_cast<double>(setting.windows.size());
  run.counters["candidates"] = static_cast<double>(found) / searches;
  run.counters["searches/s"] = benchmark::Counter(searches, benchmark::Counter::kIsRate);
}

void search_index(benchmark::State& run) {
  search(run, [] { return rule_candidates; });
}
void search_row_by_row(benchmark::State& run) {
  search(run, [] {
    return [saved = test::saved_matrix()](Session&, Node* lnode, Node* rnode) {
      return test::candidates_row_by_row(saved, lnode, rnode);
    };
  });
}
BENCHMARK(search_index)->Unit(benchmark::kMicrosecond)->Repetitions(3);
BENCHMARK(search_row_by_row)->Unit(benchmark::kMicrosecond)->Repetitions(3);

}  // namespace
}  // namespace lexon

int main(int argc, char** argv) {
  lexon::session.output.redirect(stdout);
  return lexon::bench::run(
      argc, argv,
      {{"converting 10,000 rules against 1,000", "convert_rules/10000", "convert_rules/1000", 0.0, 13.0},
       {"rule candidates row by row against the index", "search_row_by_row", "search_index", 10.0}});
}
