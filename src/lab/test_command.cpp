// lexon-lab test: sentences against what is expected of them, and what changed.

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <mutex>
#include <thread>

#include "front/process.hpp"
#include "lab/commands.hpp"
#include "lab/gold.hpp"
#include "lab/project.hpp"
#include "lab/text_file.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

struct Arguments {
  std::string gold;
  GrammarFiles grammar;
  RenderOptions render;
  std::string against;
  std::string junit;
  std::string saved;
  unsigned jobs = 1;
  bool is_update = false;
};

// What came of one sentence.
struct Outcome {
  std::string file;
  std::int64_t line = 0;
  std::string label;
  Status status = Status::failed;
  std::string text;
  std::string why;  // messages of a sentence that is not done, one a line
  double seconds = 0;
};

// --- rendering

std::string label_of(const Sentence& sentence) {
  const std::string& line = sentence.label;
  const std::size_t close = line.find(']');
  return line.empty() ? line : line.substr(1, close == std::string::npos ? close : close - 1);
}

// Shows on a terminal how far long work has come.
class Progress {
 public:
  explicit Progress(std::size_t all) : all_(all), is_shown_(isatty(STDERR_FILENO) != 0) {}
  ~Progress() {
    if (has_shown_) std::fputs(kClearLine, stderr);
  }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void step() {
    const std::lock_guard lock(mutex_);
    ++done_;
    const auto now = std::chrono::steady_clock::now();
    if (!is_shown_ || now - last_ < std::chrono::milliseconds(200)) return;
    last_ = now;
    has_shown_ = true;
    const double seconds = std::chrono::duration<double>(now - begin_).count();
    const double rate = static_cast<double>(done_) / seconds;
    std::fprintf(stderr, "%s%zu of %zu, %.0f/s, %.0f s left", kClearLine, done_, all_, rate,
                 static_cast<double>(all_ - done_) / rate);
  }

 private:
  static constexpr const char* kClearLine = "\r\x1b[K";

  std::mutex mutex_;
  std::size_t all_;
  std::size_t done_ = 0;
  bool is_shown_;
  bool has_shown_ = false;
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point last_ = begin_;
};

void render_one(Generator& generator, const Settings& settings, const GraphText& graph,
                std::vector<Outcome>& outcomes) {
  for (const Sentence& sentence : generator.render(graph.text, settings)) {
    // The text of a sentence begins behind the one before it.
    const std::size_t begin = sentence.label.empty() ? 0 : std::min(graph.text.find(sentence.label), graph.text.size());
    const auto above = std::count(graph.text.begin(), graph.text.begin() + static_cast<std::ptrdiff_t>(begin), '\n');
    Outcome outcome{graph.file, graph.line + above, label_of(sentence), sentence.status, sentence.text,
                    {},         sentence.seconds};
    for (const Message& message : sentence.messages) outcome.why += to_string(message) + '\n';
    outcomes.push_back(std::move(outcome));
  }
}

std::vector<Outcome> render_all(const Grammar& grammar, const Arguments& arguments,
                                const std::vector<GraphText>& graphs) {
  std::vector<std::vector<Outcome>> outcomes(graphs.size());
  std::atomic<std::size_t> next{0};
  Progress progress(graphs.size());
  Settings settings;
  settings.post_edit = arguments.render.post_edit;
  settings.time_limit = arguments.render.seconds;
  const auto work = [&] {
    Generator generator(grammar);
    for (std::size_t i = next++; i < graphs.size(); i = next++) {
      render_one(generator, settings, graphs[i], outcomes[i]);
      progress.step();
    }
  };
  std::vector<std::thread> threads;
  for (unsigned i = 1; i < arguments.jobs && i < graphs.size(); ++i) threads.emplace_back(work);
  work();
  for (std::thread& thread : threads) thread.join();
  std::vector<Outcome> result;
  for (std::vector<Outcome>& some : outcomes) std::ranges::move(some, std::back_inserter(result));
  return result;
}

// --- what to compare with

// Does most of a text read as rules?
bool looks_like_rules(const std::string& text) {
  const auto session = std::make_unique<Session>();
  Pool pool;
  pool.limit_blocks(65535);
  RuleNotes notes;
  std::string_view rest = text;
  Rule* rules = nullptr;
  (void)parse_rule_file(*session, pool, rest, rules, &notes);
  std::int64_t read = 0;
  for (; rules != nullptr; rules = rules->next) ++read;
  return read > notes.refused;
}

enum class Kind { rules, dictionary, saved };

Kind kind_of(const std::string& path, const std::string& text) {
  const std::string extension = path_split(path).extension;
  if (extension == ".rul" || extension == ".lxr") return Kind::rules;
  if (text.find('\0') != std::string::npos) return Kind::dictionary;
  return looks_like_rules(text) ? Kind::rules : Kind::saved;
}

std::vector<Outcome> outcomes_of(Gold saved, const std::vector<Outcome>& like) {
  std::vector<Outcome> result;
  for (const Outcome& now : like) {
    const Expected* expected = saved.next(now.label);
    Outcome before{now.file, now.line, now.label, Status::failed, {}, {}, 0};
    if (expected != nullptr && !expected->texts.empty()) {
      before.status = Status::done;
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
  if (kind == Kind::saved) return outcomes_of(Gold(text), now);
  GrammarFiles files = arguments.grammar;
  (kind == Kind::rules ? files.rules : files.dictionary) = arguments.against;
  return render_all(Project(files).grammar, arguments, graphs);
}

// --- what is told

class Report {
 public:
  Report() : in_colours_(isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr) {}

  static std::string place(const Outcome& outcome) {
    return escaped(outcome.file) + ':' + std::to_string(outcome.line) + ": " +
           (outcome.label.empty() ? "" : escaped(outcome.label) + ": ");
  }

  // Text found, or what stands for it.
  static std::string shown(const Outcome& outcome) {
    return outcome.status == Status::done ? escaped(outcome.text) : std::string("(") + to_string(outcome.status) + ')';
  }

  void difference(std::string_view first, const std::string& before, std::string_view second,
                  const std::string& now) const {
    std::cout << "  " << first << before << "\n  " << second << word_diff(before, now, in_colours_) << '\n';
  }

  static void why(const Outcome& outcome) {
    if (outcome.status == Status::done) return;
    std::string_view rest = outcome.why;
    while (!rest.empty()) {
      const std::size_t end = rest.find('\n');
      std::cout << "    " << escaped(rest.substr(0, end)) << '\n';
      rest.remove_prefix(end + 1);
    }
  }

 private:
  bool in_colours_;
};

bool is_as_expected(const Outcome& outcome, const Expected* expected) {
  if (expected == nullptr) return false;
  if (outcome.status != Status::done) return expected->texts.empty();
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
    std::cout << (outcome.status == Status::done ? "differs\n" : "has failed\n");
    const std::string& wanted = nearest_text(*expected, outcome.text);
    if (outcome.status == Status::done) {
      report.difference("expected: ", escaped(wanted), "found:    ", escaped(outcome.text));
    } else {
      std::cout << "  expected: " << escaped(wanted) << "\n  found:    " << Report::shown(outcome) << '\n';
    }
    if (expected->texts.size() > 1) std::cout << "  or one of " << expected->texts.size() - 1 << " other texts\n";
  }
  Report::why(outcome);
}

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

struct Case {
  const Outcome* outcome;
  const Expected* expected;
  bool is_good;
};

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
    fail("differs from what is expected", outcome.file + ':' + std::to_string(outcome.line) + '\n' + wanted +
                                              "found: " + Report::shown(outcome) + '\n' + outcome.why);
  }
  for (const Expected* expected : missing) {
    open(expected->label.empty() ? "?" : expected->label, arguments.gold, 0);
    fail("no graph has this label", expected->texts.empty() ? "" : expected->texts.front());
  }
  return xml + "</testsuite>\n</testsuites>\n";
}

std::string saved_of(const std::vector<Outcome>& outcomes) {
  std::string text;
  for (const Outcome& outcome : outcomes) {
    text += '[' + (outcome.label.empty() ? "S" : outcome.label) + "]\n";
    if (outcome.status != Status::done) {
      text += ";;" + std::string(to_string(outcome.status)) + '\n';
      continue;
    }
    const bool needs_escape =
        outcome.text.empty() || std::string_view(";[\\").find(outcome.text.front()) != std::string_view::npos;
    text += (needs_escape ? "\\" : "") + outcome.text + '\n';
  }
  return text;
}

// How many changed.
std::size_t tell_changes(const Report& report, Gold gold, const std::vector<Outcome>& before,
                         const std::vector<Outcome>& now) {
  std::size_t changed = 0;
  for (std::size_t i = 0; i < now.size(); ++i) {
    const Expected* expected = gold.next(now[i].label);
    if (i >= before.size()) break;
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

int run_test(const Arguments& arguments) {
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
  const std::vector<Outcome> now = render_all(project.grammar, arguments, graphs);

  const Report report;
  std::size_t changed = 0;
  if (!arguments.against.empty()) {
    changed = tell_changes(report, gold, outcomes_against(arguments, graphs, now), now);
  }
  Gold updated = gold;
  std::vector<Case> cases;
  for (const Outcome& outcome : now) {
    const Expected* expected = gold.next(outcome.label);
    const Expected* same = updated.next(outcome.label);
    const bool is_good = is_as_expected(outcome, expected);
    cases.push_back({&outcome, expected, is_good});
    if (is_good) continue;
    if (arguments.against.empty()) tell_unexpected(report, outcome, expected);
    if (outcome.status == Status::done) updated.update(same, outcome.label, outcome.text);
  }
  const std::vector<const Expected*> missing = is_selection ? std::vector<const Expected*>() : gold.rest();
  for (const Expected* expected : missing) {
    std::cout << escaped(arguments.gold) << ':' << expected->first_line + (gold.is_by_label() ? 0 : 1)
              << ": no graph for " << (gold.is_by_label() ? '[' + escaped(expected->label) + ']' : "this line") << '\n';
  }
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
  add_grammar_options(command, arguments->grammar);
  add_render_options(command, arguments->render);
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
