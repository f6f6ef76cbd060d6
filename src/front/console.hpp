// The front end of a terminal: a run to its end, with progress on standard error.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "front/command_line.hpp"
#include "front/outcome.hpp"
#include "front/report_file.hpp"
#include "run/host.hpp"
#include "run/step.hpp"

namespace lexon {

// One host serves one run, and is asked for its status behind it.
class ConsoleHost final : public Host {
 public:
  explicit ConsoleHost(const CommandLine& line);

  void report_stop(const std::string& text, const std::string& reason) override;
  bool ask_yes_no(const std::string& text, const std::string& reason) override;
  void note(const Note& note) override;
  void minimise() override {}
  [[nodiscard]] bool wants_reports() const override { return report_ != nullptr; }
  void report(const SentenceReport& sentence) override { report_->write(sentence); }
  StepResult run_step(RunContext& context, Step& step) override;
  void finish(RunContext& context) override;

  // Reports go there from now on. False, with a message, if the file cannot be made or is one that the run uses.
  [[nodiscard]] bool open_report(const std::string& path, const RunSettings& settings);

  // The status that the program ends with.
  [[nodiscard]] int exit_status() const { return outcome_.exit_status(); }
  [[nodiscard]] const Outcome& outcome() const { return outcome_; }

 private:
  void show_progress(const Step& step);
  void clear_progress() const;
  void show_summary() const;

  Outcome outcome_;
  std::unique_ptr<ReportFile> report_;
  const RunContext* context_ = nullptr;  // of the run, once a step of it has begun
  std::int64_t wanted_;                  // sentences; 0: not known
  bool answers_yes_;                     // --yes
  bool shows_line_;                      // a line that is written over
  bool shows_plain_;                     // plain lines
  bool shows_summary_;
  std::chrono::steady_clock::time_point start_;
  std::chrono::steady_clock::time_point last_shown_;  // of the progress
};

}  // namespace lexon
