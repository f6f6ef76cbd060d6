// lexon-lab profile: where the search spends its steps and its time, by rule and by sentence.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <memory>
#include <unordered_map>

#include "front/process.hpp"
#include "lab/bench.hpp"
#include "lab/commands.hpp"
#include "lab/project.hpp"
#include "lab/show.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

using Clock = std::chrono::steady_clock;

// What a rule has cost over all sentences.
struct RuleCost {
  std::int64_t tried = 0;   // held against a window
  std::int64_t done = 0;    // carried out, or words narrowed
  std::int64_t asked = 0;   // for a step back
  std::int64_t undone = 0;  // its applications that were taken back
  std::int64_t caused = 0;  // steps that were taken back on its account, as a word test
  Clock::duration time{};   // of its tries, of carrying it out and of taking it back
};

// The engine tells events, not durations: what goes by between two events is taken as the time of the second. The cost of
// being watched is in it, too, so times compare rules with each other and not with a run of lexon.
class Costs final : public Observer {
 public:
  [[nodiscard]] const std::unordered_map<const Rule*, RuleCost>& rules() const { return rules_; }
  [[nodiscard]] std::int64_t undone() const { return undone_; }        // of the sentence
  [[nodiscard]] Clock::duration searching() const { return search_; }  // time that is no rule's

  void sentence_begins(Session&) override {
    undone_ = 0;
    asking_ = nullptr;
    last_ = Clock::now();
  }
  void offered(Session&, const Window&, const RuleCandidate*) override {
    asking_ = nullptr;
    search_ += lap();
  }
  void offered_in_post_edit(Session&, const Window&, std::span<const RuleBlock>) override {
    asking_ = nullptr;
    search_ += lap();
  }
  void tried(Session&, const RuleCandidate& candidate, const Window&, const Window&, Fit fit) override {
    RuleCost& cost = rules_[candidate.rule];
    cost.time += lap();
    ++cost.tried;
    const bool is_test = is_word_test_type(candidate.rule->type);
    // References into the map stay good while it grows.
    asking_ = is_test && fit == Fit::refused ? &cost : nullptr;
    if (asking_ != nullptr) ++cost.asked;
    if (is_test && fit == Fit::yes) ++cost.done;
  }
  void applied(Session&, const RuleCandidate& candidate, const Window&) override {
    RuleCost& cost = rules_[candidate.rule];
    cost.time += lap();
    ++cost.done;
  }
  void undone(Session&, const RuleCandidate& candidate) override {
    RuleCost& cost = rules_[candidate.rule];
    cost.time += lap();
    ++cost.undone;
    ++undone_;
    if (asking_ != nullptr) ++asking_->caused;
  }

 private:
  Clock::duration lap() {
    const Clock::time_point now = Clock::now();
    return now - std::exchange(last_, now);
  }

  std::unordered_map<const Rule*, RuleCost> rules_;
  std::int64_t undone_ = 0;
  RuleCost* asking_ = nullptr;  // the word test on whose account steps are being taken back; null: none
  Clock::duration search_{};
  Clock::time_point last_;
};

struct SentenceCost {
  std::string place;  // "input.txt:12"
  std::string label;
  std::string status;
  double seconds = 0;
  std::int64_t steps = 0;   // passes of the search
  std::int64_t undone = 0;  // applications taken back
};

double milliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

struct Arguments : RunArguments {
  std::size_t top = 15;  // rules, and sentences, that are shown
};

void print_rules(const Project& project, const Costs& costs, std::size_t top) {
  std::vector<std::pair<const Rule*, RuleCost>> rules(costs.rules().begin(), costs.rules().end());
  // The most time first, and by line where two are alike, so that runs can be compared.
  const auto key = [&project](const auto& each) {
    return std::make_tuple(-each.second.time.count(), project.line_of(*each.first).line);
  };
  std::sort(rules.begin(), rules.end(), [&key](const auto& a, const auto& b) { return key(a) < key(b); });
  std::printf("%10s %9s %9s %9s %9s %9s  rule\n", "ms", "tried", "done", "undone", "asked", "caused");
  for (std::size_t at = 0; at < std::min(top, rules.size()); ++at) {
    const RuleCost& cost = rules[at].second;
    std::printf("%10.3f %9lld %9lld %9lld %9lld %9lld  %s\n", milliseconds(cost.time),
                static_cast<long long>(cost.tried), static_cast<long long>(cost.done),
                static_cast<long long>(cost.undone), static_cast<long long>(cost.asked),
                static_cast<long long>(cost.caused),
                escaped(project.place_of(*rules[at].first) + ": " + project.text_of(*rules[at].first)).c_str());
  }
  // The width is that of the columns above.
  if (rules.size() > top) std::printf("%65s and %zu rules more\n", "", rules.size() - top);
}

constexpr std::size_t kSpare = 1000;  // sentences that wait for the next `keep_costliest`

// The `top` that took longest, the longest first.
void keep_costliest(std::vector<SentenceCost>& sentences, std::size_t top) {
  std::ranges::stable_sort(sentences, std::ranges::greater(), &SentenceCost::seconds);
  if (sentences.size() > top) sentences.resize(top);
}

// Those that were kept of `count`.
void print_sentences(const std::vector<SentenceCost>& sentences, std::int64_t count) {
  std::printf("\n%10s %9s %9s  sentence\n", "ms", "steps", "undone");
  for (const SentenceCost& cost : sentences) {
    std::printf("%10.3f %9lld %9lld  %s\n", cost.seconds * 1000, static_cast<long long>(cost.steps),
                static_cast<long long>(cost.undone),
                escaped(cost.place + ": " + cost.label + ' ' + cost.status).c_str());
  }
  if (const std::int64_t more = count - static_cast<std::int64_t>(sentences.size()); more > 0)
    std::printf("%31s and %s more\n", "", count_text(more, "sentence").c_str());
}

int profile(const Arguments& arguments) {
  const Project project(arguments.grammar);
  Bench bench(project);
  Costs costs;
  bench.watchers().add(costs);
  std::vector<SentenceCost> sentences;
  SentenceCost all;
  std::int64_t count = 0;
  std::int64_t failed = 0;
  for_each_rendered(bench, arguments.render, [&](const GraphText& graph, const Rendered& rendered) {
    const Sentence& sentence = rendered.sentence;
    ++count;
    failed += rendered.is_done() ? 0 : 1;
    sentences.push_back(
        {graph.place(), sentence.label, rendered.status(), sentence.seconds, sentence.steps, costs.undone()});
    all.seconds += sentence.seconds;
    all.steps += sentence.steps;
    all.undone += costs.undone();
    // Of any number of sentences only those are kept that can be shown.
    if (sentences.size() / 2 >= arguments.top + kSpare) keep_costliest(sentences, arguments.top);
  });
  const std::string not_done = failed == 0 ? "" : " (" + std::to_string(failed) + " not done)";
  std::printf("%s%s, %.3f ms, %s, %s; %.3f ms asking for rules\n\n", count_text(count, "sentence").c_str(),
              not_done.c_str(), all.seconds * 1000, count_text(all.steps, "pass").c_str(),
              (count_text(all.undone, "step") + " taken back").c_str(), milliseconds(costs.searching()));
  print_rules(project, costs, arguments.top);
  keep_costliest(sentences, arguments.top);
  print_sentences(sentences, count);
  return failed == 0 ? kDone : kFailed;
}

}  // namespace

Command add_profile(CLI::App& app) {
  CLI::App& command = add_command(app, "profile", "Show which rules and sentences cost most");
  const auto arguments = std::make_shared<Arguments>();
  add_run_options(command, *arguments);
  add_option(command, "-n,--top", arguments->top, "Rules and sentences that are shown", {.shows_default = true});
  return {&command, [arguments] { return profile(*arguments); }};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
