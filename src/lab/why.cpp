// lexon-lab why: what kept a rule from working in a sentence, window by window.

#include "lab/why.hpp"

#include <algorithm>
#include <iostream>
#include <memory>
#include <utility>

#include "front/process.hpp"
#include "lab/commands.hpp"
#include "lab/options.hpp"
#include "lab/show.hpp"
#include "rules/candidates.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

constexpr std::size_t kMostFindings = 2000;  // that are kept of a search; later ones of another kind are lost
constexpr std::size_t kMostShown = 12;       // the nearest of them

// How many of them are about this part of the rule.
std::int64_t misses_of_side(const std::vector<Miss>& misses, RulePart part) {
  return std::count_if(misses.begin(), misses.end(), [part](const Miss& miss) { return miss.part == part; });
}

}  // namespace

void RuleWatch::sentence_begins(Session&) {
  findings_.clear();
  // Each sentence has an account of its own.
  windows_ = left_fits_ = right_fits_ = 0;
  left_fit_.clear();
  right_fit_.clear();
  is_post_edit_ = waits_ = false;
}

void RuleWatch::generated(Session&, core::Status) {
  is_post_edit_ = true;
  waits_ = false;
}

// Counts an answer; of equal ones the first window and list are kept, to be shown.
void RuleWatch::note(Answer answer, std::vector<Miss>&& misses, const Rule* other, const std::string& window,
                     const std::string& list) {
  // Answers are equal if the same rule or the same conditions were to blame, wherever that was.
  std::string key =
      std::to_string(static_cast<int>(answer)) + ' ' + (other == nullptr ? "" : project_.place_of(*other));
  for (const Miss& miss : misses) key.append("\n").append(miss_text(project_, miss));
  // A finding that is known is counted, even where no new one finds room.
  const auto found = findings_.find(key);
  if (found == findings_.end() && findings_.size() >= kMostFindings) return;
  Finding& finding = findings_[key];
  if (finding.count++ != 0) return;
  finding.answer = answer;
  finding.misses = std::move(misses);
  finding.other = other;
  finding.window = window;
  finding.list = list;
}

void RuleWatch::offered(Session& session, const Window& window, const RuleCandidate* list) {
  waits_ = false;
  // At the end of a list rules are asked for, and never tried.
  if (window.lnode == nullptr || window.rnode == nullptr) return;
  // A rule of post-edit is not asked for here, so this says nothing about it.
  if (is_post_edit_type(rule_.type)) return;
  bool is_offered = false;
  for_each_rule_from(session, list, [&](const Rule& rule) { is_offered = is_offered || &rule == &rule_; });
  look(session, window, is_offered);
}

void RuleWatch::offered_in_post_edit(Session& session, const Window& window, std::span<const RuleBlock> rules) {
  waits_ = false;
  if (!is_post_edit_type(rule_.type)) return;
  bool is_offered = false;
  for (const RuleBlock& block : rules) {
    for_each_rule(block, [&](std::int32_t number) {
      is_offered = is_offered || session.grammar->index.search.rules[static_cast<std::size_t>(number)] == &rule_;
    });
  }
  look(session, window, is_offered);
}

// A window where rules were asked for. If the index has the rule, the answer comes when the rule is tried, or when another
// one fits before: what the rule would have missed is noted now, since then the window may have changed.
void RuleWatch::look(Session& session, const Window& window, bool is_offered) {
  ++windows_;
  window_ = window_text(window);
  list_ = list_text(session, window);
  if (is_offered) {
    // A candidate that the search does not know, made to ask what the rule would miss here.
    const RuleCandidate candidate{&rule_, nullptr, nullptr, nullptr, nullptr};
    would_miss_ = rule_misses(session, candidate, window, false);
    waits_ = true;
    // The index asks both sides, so what it offers fits on either.
    if (rule_.lnode->inserted == 0 && left_fits_++ == 0) left_fit_ = window_;
    if (rule_.rnode->inserted == 0 && right_fits_++ == 0) right_fit_ = window_;
    return;
  }
  std::vector<Miss> misses = index_misses(session, rule_, window);
  if (rule_.lnode->inserted == 0 && misses_of_side(misses, RulePart::lnode) == 0 && left_fits_++ == 0)
    left_fit_ = window_;
  if (rule_.rnode->inserted == 0 && misses_of_side(misses, RulePart::rnode) == 0 && right_fits_++ == 0)
    right_fit_ = window_;
  note(Answer::not_offered, std::move(misses), nullptr, window_, list_);
}

// The rule itself was tried, with what it lacked if it was refused; or another one, which is the answer if it fits while
// this one waits for its turn.
void RuleWatch::tried(Session& session, const RuleCandidate& candidate, const Window& before, const Window&, Fit fit) {
  if (candidate.rule != &rule_) {
    // No event says that a rule was not reached: it is inferred from another one that fits while this one waits.
    if (fit == Fit::no || !std::exchange(waits_, false)) return;
    note(Answer::other_came_first, std::move(would_miss_), candidate.rule, window_, list_);
    return;
  }
  waits_ = false;
  const std::string window = window_text(before);
  const std::string list = list_text(session, before);
  if (fit == Fit::yes) return note(Answer::worked, {}, nullptr, window, list);
  std::vector<Miss> misses;
  if (fit == Fit::no) {
    misses = rule_misses(session, candidate, before, true);
  } else {
    // A node that was put back for another try has none left, or a word test asks for a step back.
    misses.push_back({.reason = Reason::asks_for_step_back});  // unless the loop finds the other reason
    for (const Side side : {Side::left, Side::right}) {
      const Node* node = node_of(before, side);
      const bool was_put_back = pattern_of(rule_, side).inserted != 0 && node != nullptr && is_marked(*node);
      if (was_put_back && node->candidates == nullptr) misses.back().reason = Reason::words_used_up;
    }
  }
  // A word test that asks for a step back has worked.
  const bool has_worked = fit == Fit::refused && is_word_test_type(rule_.type);
  note(has_worked ? Answer::worked : Answer::refused, std::move(misses), nullptr, window, list);
}

std::vector<RuleWatch::Finding> RuleWatch::findings() const {
  std::vector<Finding> sorted;
  for (const auto& [key, finding] : findings_) sorted.push_back(finding);
  // What was not offered misses more than what was offered and misses as much: the index asks attributes alone.
  const auto rank = [](const Finding& finding) {
    const std::size_t more = finding.answer == Answer::not_offered ? 1 : 0;
    return std::make_tuple(finding.answer == Answer::worked ? 0 : 1, finding.misses.size() + more, -finding.count);
  };
  std::stable_sort(sorted.begin(), sorted.end(),
                   [&rank](const Finding& a, const Finding& b) { return rank(a) < rank(b); });
  return sorted;
}

namespace {

// A line, with what would steer a terminal made visible.
void print(std::ostream& out, const std::string& text) {
  out << escaped(text) << '\n';
}

// A check of co-occurrence is not repeated for a rule that was not reached, so whether its pair would do is left open.
std::string answer_text(const Project& project, const Rule& rule, const RuleWatch::Finding& finding) {
  const bool asks_pairs = rule.lnode->roles != nullptr || rule.rnode->roles != nullptr;
  switch (finding.answer) {
    case RuleWatch::Answer::worked: return finding.misses.empty() ? "it worked" : "it worked: it asked for a step back";
    case RuleWatch::Answer::refused: return "it was tried, and refused";
    case RuleWatch::Answer::other_came_first:
      return "another rule came first, " + project.place_of(*finding.other) +
             (!finding.misses.empty() ? "; this one would not have fitted,"
              : asks_pairs            ? "; this one fits too, if the pair of words does,"
                                      : "; this one fits too,");
    case RuleWatch::Answer::not_offered: return "it was not offered";
  }
  return {};
}

void print_finding(std::ostream& out, const Project& project, const Rule& rule, const RuleWatch::Finding& finding) {
  print(out, "  " + answer_text(project, rule, finding) + " at " + finding.window +
                 (finding.count > 1 ? ", and at " + count_text(finding.count - 1, "window") + " more in the same way"
                                    : std::string()));
  print(out, "      in " + finding.list);
  // What worked has missed nothing.
  if (finding.answer == RuleWatch::Answer::worked) return;
  for (const Miss& miss : finding.misses) print(out, "      - " + miss_text(project, miss));
}

// For a rule that was never offered: the window that it needs never arose, and where one half of it did.
void print_summary(std::ostream& out, const RuleWatch& watch, const std::vector<RuleWatch::Finding>& findings) {
  const auto is_offered = [](const RuleWatch::Finding& finding) {
    return finding.answer != RuleWatch::Answer::not_offered;
  };
  // Post-edit rules want post-edit, and generation rules a search.
  if (watch.windows() == 0) return print(out, "  there was no window for a rule of this type");
  if (std::any_of(findings.begin(), findings.end(), is_offered)) return;
  print(out, "  the window never arose: of " + count_text(watch.windows(), "window") + " none offered the rule");
  for (const Side side : {Side::left, Side::right}) {
    const std::string pattern = side == Side::left ? "LNODE" : "RNODE";
    if (watch.fits(side) == 0) continue;
    print(out, "  the attributes of " + pattern + " alone were there at " + count_text(watch.fits(side), "window") +
                   ", the first " + watch.first_fit(side));
  }
}

struct Arguments : RunArguments {
  std::string rule;  // its line, with its file or without
};

int why(const Arguments& arguments) {
  const Project project(arguments.grammar);
  Bench bench(project);
  static_cast<void>(project.rules_at(arguments.rule));  // what names no rule is told even without a sentence
  int status = kDone;
  for_each_sentence(arguments.render, [&](const GraphText& graph) {
    if (!why_sentence(std::cout, project, bench, graph, arguments.render, arguments.rule)) status = kFailed;
  });
  return status;
}

}  // namespace

bool why_sentence(std::ostream& out, const Project& project, Bench& bench, const GraphText& graph,
                  const RenderOptions& limits, const std::string& place) {
  bool is_done = true;
  for (const Rule* rule : project.rules_at(place)) {
    RuleWatch watch(project, *rule);
    bench.watchers().add(watch);
    const std::vector<Rendered> results = bench.render(graph.text, limits);
    // The watch ends with this turn, and the bench is used again.
    bench.watchers().remove(watch);
    print(out, project.place_of(*rule) + ": " + project.text_of(*rule));
    for (const Rendered& result : results) {
      is_done = is_done && result.is_done();
      print(out, graph.place() + ": " + result.sentence.label + "  " + result.status());
      for (const Message& message : result.sentence.messages) print(out, "  " + to_string(graph.placed(message)));
    }
    const std::vector<RuleWatch::Finding> findings = watch.findings();
    print_summary(out, watch, findings);
    for (std::size_t at = 0; at < std::min(findings.size(), kMostShown); ++at)
      print_finding(out, project, *rule, findings[at]);
    if (findings.size() > kMostShown)
      print(out, "  and " + count_text(static_cast<std::int64_t>(findings.size() - kMostShown), "more distant miss"));
  }
  return is_done;
}

Command add_why(CLI::App& app) {
  CLI::App& command = add_command(app, "why", "Tell what kept a rule from working in a sentence");
  const auto arguments = std::make_shared<Arguments>();
  add_option(command, "RULE", arguments->rule, "The rule, by its line: 203, or rules.txt:203", {.required = true});
  add_run_options(command, *arguments);
  return {&command, [arguments] { return why(*arguments); }};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
