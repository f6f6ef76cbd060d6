// What came of a run, as every front end counts it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "run/host.hpp"

namespace lexon {

inline constexpr int kCancelledStatus = 130;

struct Outcome {
  // sentences
  std::int64_t done = 0;
  std::int64_t failed = 0;
  std::int64_t over_time = 0;

  std::int64_t left_out = 0;  // lines of graphs
  bool target_left = false;   // a forced target that was not reached, behind the last sentence

  bool cancelled = false;
  bool could_not_start = false;
  bool rules_failed = false;
  bool output_failed = false;
  bool has_losses = false;  // the run did less than its files say
  bool strict = false;      // then it has failed

  // Takes over what has been counted, behind every step.
  void count_step(const RunContext& context, StepResult result);

  // Behind the last step: writes out what is still buffered. What the user ought to know beside the output.
  [[nodiscard]] std::vector<std::string> finish(RunContext& context);

  // The status that the program ends with.
  [[nodiscard]] int exit_status() const;
};

}  // namespace lexon
