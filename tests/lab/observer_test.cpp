// What the engine tells of its work, over all examples and cases: it agrees with what stands in the lists, and with what
// the index gives.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "lab/derivation.hpp"
#include "lab/project.hpp"
#include "lab/show.hpp"
#include "rules/candidates.hpp"
#include "support/program.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {
namespace {

namespace fs = std::filesystem;
using Candidates = std::set<const RuleCandidate*>;

// The applications whose records stand on a node of any list, or on a node that one of these has replaced.
class Records {
 public:
  explicit Records(Session& session) {
    for (const ScopeRow& row : scope_rows(session.sentence)) {
      const Node* node = row.entry;
      while (node != nullptr && node->left != nullptr) node = node->left;
      for (; node != nullptr; node = node->right) take(node);
    }
  }
  Candidates candidates;

 private:
  void take(const Node* node) {
    if (node == nullptr || !seen_.insert(node).second) return;
    for (const MatchRecord& record : chain<&MatchRecord::next>(node->matches)) {
      if (record.candidate != nullptr && record.state != kStateHold) candidates.insert(record.candidate);
    }
    if (node->merged_with == nullptr) return;
    take(node->merged_with);
    take(node->source);
  }
  std::set<const Node*> seen_;
};

class Witness final : public Observer {
 public:
  explicit Witness(const Project& project) : project_(project), derivation(project) {}

  void sentence_begins(Session& session) override {
    derivation.sentence_begins(session);
    is_post_edit_ = false;
  }
  void generated(Session& session, core::Status status) override {
    if (status == core::Status::ok) compare_records(session);
    derivation.generated(session, status);
    is_post_edit_ = true;
  }
  void offered(Session& session, const Window& window, const RuleCandidate* list) override {
    derivation.offered(session, window, list);
    std::set<const Rule*> offered;
    for_each_rule_from(session, list, [&](const Rule& rule) { offered.insert(&rule); });
    compare_offer(session, window, offered);
  }
  void offered_in_post_edit(Session& session, const Window& window, std::span<const RuleBlock> rules) override {
    derivation.offered_in_post_edit(session, window, rules);
    std::set<const Rule*> offered;
    for (const RuleBlock& block : rules) {
      for_each_rule(block, [&](std::int32_t number) { offered.insert(session.grammar->index.search.rules[static_cast<std::size_t>(number)]); });
    }
    compare_offer(session, window, offered);
  }
  void compare_offer(Session& session, const Window& window, const std::set<const Rule*>& offered) {
    // Every fifth alone: each is held against all rules, which takes most of the time of this test.
    if (++offers_ % 5 != 0) return;
    for (const Rule& rule : chain<&Rule::next>(project_.loaded().rules.rules)) {
      if (is_post_edit_ && !is_post_edit_type(rule.type)) continue;
      ++asked;
      const std::vector<Miss> misses = index_misses(session, rule, window);
      if (misses.empty() == offered.contains(&rule)) continue;
      note(project_.text_of(rule) + (misses.empty() ? " was not offered" : " was offered, but: " + misses_text(project_, misses)) + " at " +
           window_text(window));
    }
  }
  void tried(Session& session, const RuleCandidate& candidate, const Window& before, const Window& after, Fit fit) override {
    derivation.tried(session, candidate, before, after, fit);
    if (fit != Fit::no) return;
    ++refused;
    const std::vector<Miss> misses = rule_misses(session, candidate, before, true);
    if (misses.empty()) note(project_.text_of(*candidate.rule) + " was refused for no reason at " + window_text(before));
    for (const Miss& miss : misses) EXPECT_NE(miss_text(project_, miss), "");
  }
  void applied(Session& session, const RuleCandidate& candidate, const Window& after) override { derivation.applied(session, candidate, after); }
  void undone(Session& session, const RuleCandidate& candidate) override { derivation.undone(session, candidate); }
  void scope_entered(Session& session, const RuleCandidate& candidate, int scope) override { derivation.scope_entered(session, candidate, scope); }
  void scope_returned_into(Session& session, int scope) override { derivation.scope_returned_into(session, scope); }
  void scope_left(Session& session, int scope, bool has_failed) override { derivation.scope_left(session, scope, has_failed); }

 private:
  void compare_records(Session& session) {
    Candidates told;
    for (const Step& step : derivation.standing()) told.insert(step.candidate);
    const Candidates stand = Records(session).candidates;
    ++compared;
    if (told == stand) return;
    for (const RuleCandidate* each : stand) {
      // A merge or an exchange that was taken back leaves the records of its match on the two nodes.
      const std::uint8_t type = each->rule->type;
      const bool may_be_left = type == rule_type::merge_left || type == rule_type::merge_right || type == rule_type::exchange;
      if (!told.contains(each) && !may_be_left) note("stands and is not told: " + project_.text_of(*each->rule));
    }
    for (const Step& step : derivation.standing()) {
      if (!stand.contains(step.candidate)) note("is told and does not stand: " + project_.text_of(*step.rule));
    }
  }
  void note(const std::string& text) {
    if (++faults <= 5) ADD_FAILURE() << text;
  }

  const Project& project_;
  bool is_post_edit_ = false;
  std::int64_t offers_ = 0;

 public:
  Derivation derivation;
  std::int64_t asked = 0;
  std::int64_t refused = 0;
  std::int64_t compared = 0;
  std::int64_t faults = 0;
};

std::string text_of_file(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

struct Case {
  fs::path folder;
  fs::path input;
};

std::vector<Case> all_cases() {
  const fs::path root = LEXON_ROOT;
  std::vector<Case> cases = {{root / "examples/english", root / "examples/english/input.txt"}};
  for (const char* language : {"english", "german"}) cases.push_back({root / "examples/stories" / language, root / "examples/stories/input.txt"});
  for (const auto& entry : fs::directory_iterator(root / "tests/golden")) cases.push_back({entry.path(), entry.path() / "input.txt"});
  return cases;
}

TEST(Observer, AgreesWithTheRecordsAndWithTheIndex) {
  std::int64_t asked = 0;
  std::int64_t refused = 0;
  std::int64_t compared = 0;
  for (const Case& each : all_cases()) {
    SCOPED_TRACE(each.folder.string());
    const std::string folder = test::fresh_folder("lab-observer");
    GrammarFiles files{.dictionary = folder + "/words.dic", .rules = (each.folder / "rules.txt").string()};
    ASSERT_EQ(test::run_program("lexon-dict", {"build", each.folder / "entries.txt", files.dictionary}).exit_status, 0);
    if (fs::exists(each.folder / "cr.txt")) {
      files.cooccurrence = folder + "/cr.dic";
      ASSERT_EQ(test::run_program("lexon-dict", {"build", each.folder / "cr.txt", files.cooccurrence}).exit_status, 0);
    }
    const Grammar grammar = Grammar::load(files);
    if (!grammar) continue;  // a case of what is refused
    const Project project(files);
    Generator generator(project.grammar);
    Generator unwatched(project.grammar);
    Witness witness(project);
    Inside::session(generator).observer = &witness;
    const std::string graphs = text_of_file(each.input);
    const std::vector<Sentence> watched = generator.render(graphs, {.trace_level = 4, .time_limit = 20});
    const std::vector<Sentence> plain = unwatched.render(graphs, {.trace_level = 4, .time_limit = 20});
    ASSERT_EQ(watched.size(), plain.size());
    for (std::size_t at = 0; at < plain.size(); ++at) {
      // Who watches changes nothing.
      if (plain[at].status == Status::over_time || watched[at].status == Status::over_time) continue;
      EXPECT_EQ(test::mask_times(watched[at].trace), test::mask_times(plain[at].trace));
    }
    asked += witness.asked;
    refused += witness.refused;
    compared += witness.compared;
  }
  EXPECT_GT(asked, 100000);
  EXPECT_GT(refused, 1000);
  EXPECT_GT(compared, 100);
}

}  // namespace
}  // namespace lab
}  // namespace v1
}  // namespace lexon
