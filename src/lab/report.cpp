// lexon-lab report: a row for each sentence.

#include <memory>

#include "front/report_file.hpp"
#include "lab/bench.hpp"
#include "lab/commands.hpp"
#include "lab/project.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// What a sentence leaves behind (relations that nobody followed, words that are in no dictionary), taken while it is still
// in memory.
class Leftovers final : public Observer {
 public:
  // Of the sentences that have ended since `clear`, in order.
  [[nodiscard]] const std::vector<SentenceReport>& reports() const { return reports_; }
  void clear() { reports_.clear(); }

  void sentence_begins(Session& session) override { undone_ = session.state.undone; }
  void sentence_ends(Session& session, core::Status) override {
    SentenceReport report;
    report_leftovers(session, report);
    report.steps_back = session.state.undone - undone_;
    reports_.push_back(std::move(report));
  }

 private:
  std::vector<SentenceReport> reports_;
  std::int64_t undone_ = 0;  // what the session had taken back when the sentence began: it counts on
};

struct Arguments : RunArguments {
  std::string output = "-";  // "-": standard output
  std::string form;          // "tsv" or "json"; empty: as the name of the output says
};

int report(const Arguments& arguments) {
  refuse_own_files(arguments, arguments.output, "--output");
  const Project project(arguments.grammar);
  Bench bench(project);
  Leftovers leftovers;
  bench.watchers().add(leftovers);
  const ReportForm form = arguments.form.empty() ? report_form_of(arguments.output)
                                                 : (arguments.form == "json" ? ReportForm::json : ReportForm::tsv);
  ReportFile file(arguments.output, form);
  if (!file.is_open()) throw Fault(arguments.output + ": cannot be written");
  int status = kDone;
  for_each_sentence(arguments.render, [&](const GraphText& graph) {
    // Of each text its own: the reports are matched with the results by their order.
    leftovers.clear();
    std::size_t at = 0;
    for (const Rendered& rendered : bench.render(graph.text, arguments.render)) {
      SentenceReport row;
      // A text can come to nothing before a search begins, and leaves nothing then.
      if (at < leftovers.reports().size()) row = leftovers.reports()[at++];
      row.status = rendered.status();
      row.milliseconds = rendered.sentence.seconds * 1000;
      row.steps = rendered.sentence.steps;
      row.text = rendered.sentence.text;
      row.fallback = rendered.sentence.fallback;
      if (!rendered.is_done()) status = kFailed;
      file.write(row);
    }
  });
  if (!file.close()) throw Fault(arguments.output + ": could not be written whole");
  return status;
}

}  // namespace

Command add_report(CLI::App& app) {
  CLI::App& command = add_command(app, "report", "Write a row for each sentence: status, cost, what was left over");
  const auto arguments = std::make_shared<Arguments>();
  add_run_options(command, *arguments);
  add_option(command, "-o,--output", arguments->output, "Where to; - for standard output", {.shows_default = true});
  add_option(command, "-f,--format", arguments->form, "tsv or json; else as the name of the output says",
             {.choices = {"tsv", "json"}});
  return {&command, [arguments] { return report(*arguments); }};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
