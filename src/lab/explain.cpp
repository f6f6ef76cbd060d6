// lexon-lab explain: the steps that stand in the end; and of a sentence that failed, how far it came and what took it
// back.

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <memory>
#include <vector>

#include "front/process.hpp"
#include "lab/commands.hpp"
#include "lab/explain.hpp"
#include "lab/project.hpp"
#include "lab/show.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

constexpr std::size_t kMostNamed = 8;  // relations and marks that are shown of a list

std::string seconds_text(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, seconds < 1 ? "%.1f ms" : "%.2f s", seconds < 1 ? seconds * 1000 : seconds);
  return text;
}

// Lines in columns: mark, place of the rule, and, two blanks further in for each scope, what happened. Places are filled
// up to the width of the longest that was announced by `place_seen`.
class Printer {
 public:
  Printer(std::ostream& out, const Project& project) : out_(out), project_(project) {}

  // Before the first line: this rule will be named.
  void place_seen(const Rule& rule) { width_ = std::max(width_, project_.place_of(rule).size()); }
  void step(const Step& step, std::string_view mark) {
    line(project_.place_of(*step.rule), mark, step.depth,
         step.before + "  -> " + step.after + (step.changes.empty() ? "" : "  (" + step.changes + ")"));
  }
  void note(std::string_view mark, int depth, const std::string& text) { line({}, mark, depth, text); }
  void plain(const std::string& text) { out_ << escaped(text) << '\n'; }
  void line(const std::string& place, std::string_view mark, int depth, const std::string& text) {
    std::string all(mark);
    all += place;
    all.resize(std::max(all.size(), mark.size() + width_), ' ');
    all += "  ";
    all.append(2 * static_cast<std::size_t>(depth), ' ');
    out_ << escaped(all + text) << '\n';
  }

 private:
  std::ostream& out_;
  const Project& project_;
  std::size_t width_ = 0;
};

// The steps that stand. What was taken back between two that are shown is counted in a line of its own; counts of plain
// moves, which are left out, go to the next step that is shown.
void print_standing(Printer& printer, const Derivation& derivation) {
  bool is_post_edit = false;
  std::int64_t taken_back = 0;
  if (derivation.forgotten() > 0)
    printer.note("", 0, "(" + count_text(derivation.forgotten(), "step") + " before, not kept)");
  for (const Step& step : derivation.standing()) {
    taken_back += step.undone_before;
    if (step.is_post_edit && !is_post_edit) printer.plain("post-edit:");
    is_post_edit = step.is_post_edit;
    // It moves the window and changes nothing; there is one between most others.
    if (step.is_plain_move()) continue;
    if (taken_back > 0) printer.note("", step.depth, "(" + count_text(taken_back, "step") + " taken back)");
    taken_back = 0;
    printer.step(step, "");
  }
  taken_back += derivation.undone_at_end();
  if (taken_back > 0) printer.note("", 0, "(" + count_text(taken_back, "step") + " taken back)");
}

// All that happened, in the order of time: "x" in front of steps that were taken back later.
void print_log(Printer& printer, const Derivation& derivation) {
  if (derivation.log_forgotten() > 0)
    printer.note("  ", 0, "(" + count_text(derivation.log_forgotten(), "line") + " before, not kept)");
  for (const LogLine& line : derivation.log()) {
    // Two signs wide, so that the columns stay.
    const std::string_view mark = line.is_undone ? "x " : "  ";
    if (line.text.empty()) {
      printer.step(line.step, mark);
    } else {
      printer.note(mark, line.step.depth, line.text);
    }
  }
}

// A title and the first lines below it; nothing for an empty list.
void print_list(Printer& printer, const std::string& title, const std::vector<std::string>& lines) {
  if (lines.empty()) return;
  printer.plain(title);
  for (std::size_t at = 0; at < std::min(lines.size(), kMostNamed); ++at) printer.plain("  " + lines[at]);
  if (lines.size() > kMostNamed) printer.plain("  and " + std::to_string(lines.size() - kMostNamed) + " more");
}

// The three of `map` that cost the most steps; `name` gives what a key is called.
template <typename Map, typename Name>
void print_taken_back(Printer& printer, const std::string& title, const Map& map, Name name) {
  std::vector<std::pair<std::string, Derivation::TakenBack>> most;
  for (const auto& [key, taken] : map) {
    if (taken.steps > 0) most.emplace_back(name(key), taken);
  }
  if (most.empty()) return;
  std::stable_sort(most.begin(), most.end(),
                   [](const auto& a, const auto& b) { return a.second.steps > b.second.steps; });
  printer.plain(title);
  for (std::size_t at = 0; at < std::min<std::size_t>(most.size(), 3); ++at) {
    const Derivation::TakenBack& taken = most[at].second;
    printer.plain("  " + most[at].first + "  " + count_text(taken.asked, "time") + ", " +
                  count_text(taken.steps, "step") + "; first in " + taken.where);
  }
}

// What helps with a sentence that came to nothing. Its end tells little, for a search that has tried everything ends where
// it began. `ran_long`: a limit ended it, so that the last steps show what goes round.
void print_trouble(Printer& printer, const Project& project, const Derivation& derivation, bool ran_long) {
  // The list that was farthest from the beginning, where most had gone right.
  const Deepest& deepest = derivation.deepest();
  if (!deepest.list.empty()) {
    printer.plain("The deepest list, " + count_text(static_cast<std::int64_t>(deepest.steps), "step") + " in:");
    printer.plain("  " + deepest.list);
    print_list(printer, "Relations that nobody had followed there:", deepest.unfollowed);
    print_list(printer, "Marks there that a word test asks about:", deepest.debts);
  }
  print_taken_back(printer, "The tests that took back most:", derivation.taken_back(),
                   [&project](const Rule* rule) { return project.place_of(*rule); });
  print_taken_back(printer, "The windows in which no rule was left:", derivation.dead_ends(),
                   [](const std::string& window) { return window; });
  if (!ran_long || derivation.last().empty()) return;
  printer.plain("The last steps:");
  for (const Step& step : derivation.last()) printer.step(step, "  ");
}

// Everything that was done with a word, on ways too that were given up.
void print_word(Printer& printer, const Derivation& derivation, const std::string& word) {
  printer.plain("Rules that touched \"" + word + "\":");
  for (const Derivation::Touch& touch : derivation.touches()) {
    printer.plain("  " + touch.text + (touch.count > 1 ? "  (" + std::to_string(touch.count) + " times)" : ""));
  }
  if (derivation.touches().empty()) printer.plain("  none");
}

struct Arguments : RunArguments {
  ExplainOptions explain;  // what is shown
};

int explain(const Arguments& arguments) {
  const Project project(arguments.grammar);
  Bench bench(project);
  int status = kDone;
  for_each_sentence(arguments.render, [&](const GraphText& graph) {
    if (!explain_sentence(std::cout, project, bench, graph, arguments.render, arguments.explain)) status = kFailed;
  });
  return status;
}

}  // namespace

bool explain_sentence(std::ostream& out, const Project& project, Bench& bench, const GraphText& graph,
                      const RenderOptions& limits, const ExplainOptions& options) {
  Derivation derivation(project);
  // Set before the sentence begins, as the derivation notes things on the way.
  derivation.follow_word(options.word);
  derivation.keep_all(options.all);
  bench.watchers().add(derivation);
  const std::vector<Rendered> results = bench.render(graph.text, limits);
  bench.watchers().remove(derivation);
  bool is_done = true;
  // A text is one sentence as a rule. Of several the derivation knows the last.
  for (const Rendered& result : results) {
    is_done = is_done && result.is_done();
    Printer printer(out, project);
    // Columns are as wide as the longest place, so all are looked at before the first line.
    for (const Step& step : derivation.standing()) printer.place_seen(*step.rule);
    for (const LogLine& line : derivation.log()) {
      if (options.all && line.step.rule != nullptr) printer.place_seen(*line.step.rule);
    }
    printer.plain(graph.place() + ": " + result.sentence.label + "  " + result.status() + ", " +
                  seconds_text(result.sentence.seconds) + ", " + count_text(result.sentence.steps, "pass") + ", " +
                  count_text(derivation.undone(), "step") + " taken back");
    for (const Message& message : result.sentence.messages) printer.plain("  " + to_string(graph.placed(message)));
    if (!options.word.empty()) {
      // Those of the graph's own word first; the dictionary may have others of this form or concept.
      std::vector<std::string> entries = derivation.word_entries();
      for (const std::string& entry : words_found(project, options.word)) {
        if (std::find(entries.begin(), entries.end(), entry) == entries.end()) entries.push_back(entry);
      }
      for (const std::string& entry : entries) printer.plain("  " + entry);
      if (entries.empty()) printer.plain("  no entry, and not in this graph");
      print_word(printer, derivation, options.word);
    } else if (options.all) {
      print_log(printer, derivation);
    } else {
      print_standing(printer, derivation);
    }
    if (!result.is_done()) {
      print_trouble(printer, project, derivation, result.sentence.status != Status::failed);
    } else {
      printer.plain("= " + result.sentence.text);
    }
  }
  return is_done;
}

Command add_explain(CLI::App& app) {
  CLI::App& command = add_command(app, "explain", "Show the steps by which a sentence came about, or failed");
  const auto arguments = std::make_shared<Arguments>();
  add_run_options(command, *arguments);
  add_option(command, "-w,--word", arguments->explain.word,
             "Only the entries of this word, or concept, and every rule that touched it");
  add_flag(command, "-a,--all", arguments->explain.all, "Show what was taken back too, in the order of time");
  return {&command, [arguments] { return explain(*arguments); }};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
