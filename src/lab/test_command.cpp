// lexon-lab test: sentences against what is expected of them, and what changed.

#include <algorithm>
#include <iostream>
#include <memory>

#include "front/process.hpp"
#include "lab/bench.hpp"
#include "lab/commands.hpp"
#include "lab/gold.hpp"
#include "lab/project.hpp"
#include "lab/show.hpp"
#include "lab/text_file.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

struct Arguments : RunArguments {
  std::string gold;     // the file of what is expected
  std::string against;  // rules, a dictionary, or a saved run to compare with; empty: what is expected counts
  std::string junit;    // files to write; empty: none
  std::string saved;
  unsigned jobs = 1;       // threads
  bool is_update = false;  // what was found goes into `gold`
};

// What came of one sentence, in this run or in the one that it is compared with.
struct Outcome {
  std::string file;
  std::int64_t line = 0;  // that opens the sentence, from 1
  std::string label;      // without brackets; may be empty
  std::string status;     // as `Rendered::status` tells it
  std::string text;
  std::string why;  // messages of a sentence that is not done, one a line
  double seconds = 0;

  [[nodiscard]] bool is_done() const { return status == to_string(Status::done); }
};

// --- rendering

void render_one(Bench& bench, const RenderOptions& options, const GraphText& graph, std::vector<Outcome>& outcomes) {
  for (const Rendered& rendered : bench.render(graph.text, options)) {
    const Sentence& sentence = rendered.sentence;
    // A text can hold several sentences, so the line is that of this one's label.
    const std::size_t begin = sentence.label.empty() ? 0 : std::min(graph.text.find(sentence.label), graph.text.size());
    const auto above = std::count(graph.text.begin(), graph.text.begin() + static_cast<std::ptrdiff_t>(begin), '\n');
    Outcome outcome{graph.file, graph.line + above, label_in(sentence.label), rendered.status(), sentence.text,
                    {},         sentence.seconds};
    for (const Message& message : sentence.messages) outcome.why += to_string(graph.placed(message)) + '\n';
    outcomes.push_back(std::move(outcome));
  }
}

std::vector<Outcome> render_all(const Project& project, const Arguments& arguments,
                                const std::vector<GraphText>& graphs) {
  // More threads than sentences would only cost memory.
  const auto threads = static_cast<unsigned>(std::clamp<std::size_t>(graphs.size(), 1, arguments.jobs));
  std::vector<std::unique_ptr<Bench>> benches;
  for (unsigned i = 0; i < threads; ++i) benches.push_back(std::make_unique<Bench>(project));
  // A place for each text, so that the order does not depend on the threads.
  std::vector<std::vector<Outcome>> outcomes(graphs.size());
  for_each_on(threads, graphs.size(), [&](unsigned thread, std::size_t i) {
    render_one(*benches[thread], arguments.render, graphs[i], outcomes[i]);
  });
  std::vector<Outcome> result;
  for (std::vector<Outcome>& some : outcomes) std::ranges::move(some, std::back_inserter(result));
  return result;
}

// --- what to compare with

// Does most of a text read as rules? Sentences are refused line by line.
bool looks_like_rules(const std::string& text) {
  const auto session = std::make_unique<Session>();
  Pool pool;
  // Rules that are too many for a run are rules all the same.
  pool.limit_blocks(65535);
  RuleNotes notes;
  std::string_view rest = text;
  Rule* rules = nullptr;
  (void)parse_rule_file(*session, pool, rest, rules, &notes);
  std::int64_t read = 0;
  for (; rules != nullptr; rules = rules->next) ++read;
  return read > notes.refused;
}

// What `--against` names.
enum class Kind { rules, dictionary, saved };

Kind kind_of(const std::string& path, const std::string& text) {
  const std::string extension = path_split(path).extension;
  // The ending decides before the content: a source need not look like rules.
  if (extension == ".rul" || extension == ".lxr") return Kind::rules;
  if (text.find('\0') != std::string::npos) return Kind::dictionary;
  return looks_like_rules(text) ? Kind::rules : Kind::saved;
}

// The sentences of a saved run, each beside the one of this run that has its label, or its place in the order.
std::vector<Outcome> outcomes_of(Gold saved, const std::vector<Outcome>& like) {
  std::vector<Outcome> result;
  for (const Outcome& now : like) {
    const Expected* expected = saved.next(now.label);
    // What the saved run has nothing for is as if it had failed.
    Outcome before{now.file, now.line, now.label, to_string(Status::failed), {}, {}, 0};
    if (expected != nullptr && !expected->texts.empty()) {
      before.status = to_string(Status::done);
      before.text = expected->texts.front();
    }
    result.push_back(std::move(before));
  }
  return result;
}

std::vector<Outcome> outcomes_against(const Arguments& arguments, const std::vector<GraphText>& graphs,
                                      const std::vector<Outcome>& now) {
  const std::string text = text_file_read(arguments.against);
  const Kind kind = kind_of(arguments.against, text);
  // Nothing is rendered for it.
  if (kind == Kind::saved) return outcomes_of(Gold(text), now);
  GrammarFiles files = arguments.grammar;
  (kind == Kind::rules ? files.rules : files.dictionary) = arguments.against;
  return render_all(Project(files), arguments, graphs);
}

// --- what is told

// How outcomes are written for people.
class Report {
 public:
  Report() : in_colours_(wants_colours()) {}

  static std::string place(const Outcome& outcome) {
    return escaped(outcome.file) + ':' + std::to_string(outcome.line) + ": " +
           (outcome.label.empty() ? "" : escaped(outcome.label) + ": ");
  }

  // Text found, or what stands for it.
  static std::string shown(const Outcome& outcome) {
    return outcome.is_done() ? escaped(outcome.text) : '(' + outcome.status + ')';
  }

  void difference(std::string_view first, const std::string& before, std::string_view second,
                  const std::string& now) const {
    std::cout << "  " << first << before << "\n  " << second << word_diff(before, now, in_colours_) << '\n';
  }

  static void why(const Outcome& outcome) {
    if (outcome.is_done()) return;
    for (const std::string_view line : lines_of(outcome.why)) std::cout << "    " << escaped(line) << '\n';
  }

 private:
  bool in_colours_;
};

bool is_as_expected(const Outcome& outcome, const Expected* expected) {
  // What came to nothing for whatever reason, a limit included, is as expected if nothing was to come of it.
  if (expected == nullptr) return false;
  if (!outcome.is_done()) return expected->texts.empty();
  return std::ranges::find(expected->texts, outcome.text) != expected->texts.end();
}

// The nearest of several: the one with the fewest marks.
const std::string& nearest_text(const Expected& expected, const std::string& found) {
  return *std::ranges::min_element(expected.texts, {},
                                   [&found](const std::string& text) { return word_diff(text, found, false).size(); });
}

void tell_unexpected(const Report& report, const Outcome& outcome, const Expected* expected) {
  std::cout << Report::place(outcome);
  if (expected == nullptr) {
    std::cout << "nothing is expected\n  found:    " << Report::shown(outcome) << '\n';
  } else if (expected->texts.empty()) {
    std::cout << "was expected to fail\n  found:    " << Report::shown(outcome) << '\n';
  } else {
    std::cout << (outcome.is_done() ? "differs\n" : "has failed\n");
    const std::string& wanted = nearest_text(*expected, outcome.text);
    if (outcome.is_done()) {
      report.difference("expected: ", escaped(wanted), "found:    ", escaped(outcome.text));
    } else {
      std::cout << "  expected: " << escaped(wanted) << "\n  found:    " << Report::shown(outcome) << '\n';
    }
    // Only the nearest is shown in full.
    if (expected->texts.size() > 1) std::cout << "  or one of " << expected->texts.size() - 1 << " other texts\n";
  }
  Report::why(outcome);
}

// Text as it may stand in an attribute. XML has no way to write most control characters.
std::string xml_text(std::string_view text) {
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '&')
      result += "&amp;";
    else if (c == '<')
      result += "&lt;";
    else if (c == '>')
      result += "&gt;";
    else if (c == '"')
      result += "&quot;";
    else if (c == '\n')
      result += "&#10;";
    else if (byte < 0x20 && c != '\t')
      result += '?';
    else
      result += c;
  }
  return result;
}

// A sentence beside what was expected of it.
struct Case {
  const Outcome* outcome;
  const Expected* expected;  // null: nothing is
  bool is_good;
};

// One suite, a case for each sentence and for each expected one without a graph; the form that build servers read.
std::string junit_of(const Arguments& arguments, const std::vector<Case>& cases,
                     const std::vector<const Expected*>& missing) {
  const auto failures = static_cast<std::size_t>(std::ranges::count(cases, false, &Case::is_good)) + missing.size();
  double seconds = 0;
  for (const Case& one : cases) seconds += one.outcome->seconds;
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n<testsuite name=\"" +
                    xml_text(arguments.gold) + "\" tests=\"" + std::to_string(cases.size() + missing.size()) +
                    "\" failures=\"" + std::to_string(failures) + "\" time=\"" + std::to_string(seconds) + "\">\n";
  const auto open = [&xml](const std::string& name, const std::string& file, double time) {
    xml += "<testcase classname=\"" + xml_text(file) + "\" name=\"" + xml_text(name) + "\" time=\"" +
           std::to_string(time) + "\"";
  };
  const auto fail = [&xml](const std::string& message, const std::string& text) {
    xml += "><failure message=\"" + xml_text(message) + "\">" + xml_text(text) + "</failure></testcase>\n";
  };
  std::size_t number = 0;
  for (const Case& one : cases) {
    ++number;
    const Outcome& outcome = *one.outcome;
    open(outcome.label.empty() ? std::to_string(number) : outcome.label, outcome.file, outcome.seconds);
    if (one.is_good) {
      xml += "/>\n";
      continue;
    }
    std::string wanted;
    if (one.expected != nullptr) {
      for (const std::string& text : one.expected->texts) wanted += "expected: " + text + '\n';
    }
    // One message for all, so that build servers group them; the details stand below.
    fail("differs from what is expected", outcome.file + ':' + std::to_string(outcome.line) + '\n' + wanted +
                                              "found: " + Report::shown(outcome) + '\n' + outcome.why);
  }
  for (const Expected* expected : missing) {
    // Those that were expected and are in no graph fail, too.
    open(expected->label.empty() ? "?" : expected->label, arguments.gold, 0);
    fail("no graph has this label", expected->texts.empty() ? "" : expected->texts.front());
  }
  return xml + "</testsuite>\n</testsuites>\n";
}

// The run by label, as `Gold` reads it: what failed has a comment for its text, and so is expected to fail.
std::string saved_of(const std::vector<Outcome>& outcomes) {
  std::string text;
  for (const Outcome& outcome : outcomes) {
    text += '[' + (outcome.label.empty() ? "S" : outcome.label) + "]\n";
    if (!outcome.is_done()) {
      text += ";;" + outcome.status + '\n';
      continue;
    }
    text += gold_line(outcome.text) + '\n';
  }
  return text;
}

// Tells what differs between two runs, and which of the two was as it should be. How many changed.
std::size_t tell_changes(const Report& report, Gold gold, const std::vector<Outcome>& before,
                         const std::vector<Outcome>& now) {
  std::size_t changed = 0;
  for (std::size_t i = 0; i < now.size(); ++i) {
    // A copy of the expected sentences, since asking for one uses it up.
    const Expected* expected = gold.next(now[i].label);
    if (i >= before.size()) break;  // the other run has come to fewer sentences
    if (before[i].status == now[i].status && before[i].text == now[i].text) continue;
    ++changed;
    const bool was_good = is_as_expected(before[i], expected);
    const bool is_good = is_as_expected(now[i], expected);
    const char* turn = was_good == is_good ? "changed" : is_good ? "mended" : "broken";
    std::cout << Report::place(now[i]) << turn << '\n';
    report.difference("before: ", Report::shown(before[i]), "now:    ", Report::shown(now[i]));
    Report::why(now[i]);
  }
  return changed;
}

// In this order: render; compare with the other run, if one is wanted; compare with what is expected; tell the sum; write
// files. What was compared with another run is told as a change, and else as a difference.
int run_test(const Arguments& arguments) {
  refuse_own_files(arguments, arguments.gold, "GOLD");
  refuse_own_files(arguments, arguments.saved, "--save");
  refuse_own_files(arguments, arguments.junit, "--junit");
  Gold gold(text_file_read(arguments.gold));
  const Project project(arguments.grammar);
  std::vector<GraphText> graphs;
  for_each_sentence(arguments.render, [&graphs](const GraphText& graph) { graphs.push_back(graph); });
  const bool is_selection = !arguments.render.sentences.empty();
  if (is_selection && !gold.is_by_label()) {
    throw Fault(arguments.gold +
                ": tells sentences by their order, so that all must be rendered: leave -s out, or "
                "write the label of each in front of it");
  }
  const std::vector<Outcome> now = render_all(project, arguments, graphs);

  const Report report;
  std::size_t changed = 0;
  if (!arguments.against.empty()) {
    changed = tell_changes(report, gold, outcomes_against(arguments, graphs, now), now);
  }
  // Two readers over the same text: one to compare with while the other is changed.
  Gold updated = gold;
  std::vector<Case> cases;  // in the order of the graphs
  for (const Outcome& outcome : now) {
    const Expected* expected = gold.next(outcome.label);
    const Expected* same = updated.next(outcome.label);
    const bool is_good = is_as_expected(outcome, expected);
    cases.push_back({&outcome, expected, is_good});
    if (is_good) continue;
    if (arguments.against.empty()) tell_unexpected(report, outcome, expected);
    // What failed stays expected: an update is not to hide it.
    if (outcome.is_done()) updated.update(same, outcome.label, outcome.text);
  }
  // With a selection most of what is expected has no sentence, and that is no fault.
  const std::vector<const Expected*> missing = is_selection ? std::vector<const Expected*>() : gold.rest();
  for (const Expected* expected : missing) {
    std::cout << escaped(arguments.gold) << ':' << expected->first_line + (gold.is_by_label() ? 0 : 1)
              << ": no graph for " << (gold.is_by_label() ? '[' + escaped(expected->label) + ']' : "this line") << '\n';
  }
  // The differences stand in front of the sum, which goes to the other stream.
  std::cout.flush();

  const auto differing = static_cast<std::size_t>(std::ranges::count(cases, false, &Case::is_good));
  std::string summary = std::to_string(cases.size()) + " sentences: " + std::to_string(cases.size() - differing) +
                        " as expected, " + std::to_string(differing) + " not";
  if (!missing.empty()) summary += ", " + std::to_string(missing.size()) + " without a graph";
  if (!arguments.against.empty()) summary += "; " + std::to_string(changed) + " changed";
  tell_line(summary);
  if (!arguments.junit.empty()) text_file_write(arguments.junit, junit_of(arguments, cases, missing));
  if (!arguments.saved.empty()) text_file_write(arguments.saved, saved_of(now));
  if (arguments.is_update && differing != 0) {
    text_file_write(arguments.gold, updated.text());
    tell_line(arguments.gold + ": updated");
  }
  return differing != 0 || !missing.empty() || changed != 0 ? kFailed : kDone;
}

}  // namespace

Command add_test(CLI::App& app) {
  CLI::App& command = add_command(app, "test", "Compare sentences with what is expected of them");
  const auto arguments = std::make_shared<Arguments>();
  add_option(command, "GOLD", arguments->gold,
             "What is expected: a line a sentence, or below the label of each the texts that will do",
             {.required = true});
  add_run_options(command, *arguments);
  add_option(command, "--against", arguments->against,
             "Tell what changed against other rules, another dictionary, or a saved run");
  add_option(command, "--save", arguments->saved, "Save the run, for --against");
  add_flag(command, "--update", arguments->is_update, "Show what differs, and write what was found into GOLD");
  add_option(command, "--junit", arguments->junit, "Write the results as JUnit XML");
  add_option(command, "-j,--jobs", arguments->jobs, "Sentences to be rendered at once",
             {.shows_default = true, .range = {{1, 256}}});
  return {&command, [arguments] { return run_test(*arguments); }};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
