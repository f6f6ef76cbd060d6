// The front end of a terminal: a run to its end, with progress on standard error.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "front/command_line.hpp"
#include "run/host.hpp"
#include "run/step.hpp"

namespace lexon {

// What came of the sentences of a run.
struct Tally {
  std::int64_t done = 0;
  std::int64_t failed = 0;
  std::int64_t over_time = 0;
  std::int64_t cancelled = 0;
};

class ConsoleHost final : public Host {
 public:
  explicit ConsoleHost(const CommandLine& line);

  void report_stop(const std::string& text) override;
  bool ask_yes_no(const std::string& text) override;
  void minimise() override {}
  StepResult run_step(RunContext& context, const char* caption, std::int32_t number) override;
  void finish() override;

  // The status that the program ends with.
  [[nodiscard]] int exit_status() const;

 private:
  bool wait_for_step();
  void count_step(bool is_rule_step, bool cancelled);
  void show_progress(bool last);
  void show_summary();

  ProgressState progress_;
  Tally tally_;
  std::int64_t wanted_;  // sentences; 0: not known
  bool answers_yes_;
  bool shows_line_;   // a line that is written over
  bool shows_plain_;  // plain lines
  bool shows_summary_;
  bool could_not_start_ = false;
  bool rules_failed_ = false;
  bool output_failed_ = false;
  std::chrono::steady_clock::time_point start_;
  std::chrono::steady_clock::time_point last_shown_;
};

// Makes SIGINT and SIGTERM cancel the run; a second one ends the program at once.
void cancel_on_signals();

}  // namespace lexon
