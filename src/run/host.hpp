// What a run needs of a front end.
#pragma once

#include <cstdint>
#include <string>

namespace lexon {

struct RunContext;
class Step;
struct SentenceReport;  // run/report.hpp

// What the user ought to know and the output has no place for.
struct Note {
  std::string text;        // a line; more of them show where in a file something is wrong
  bool is_loss = false;    // the run did less than its files say
  bool has_place = false;  // begins with a file's name, and needs no other name in front
};

enum class StepResult { finished, cancelled };

class Host {
 public:
  virtual ~Host() = default;

  // Shows the text as an error, before any step has started; the run then ends. `reason` is what the system says of
  // it, and may be empty.
  virtual void report_stop(const std::string& text, const std::string& reason) = 0;
  // Asked once at most, for a co-occurrence dictionary that cannot be opened.
  virtual bool ask_yes_no(const std::string& text, const std::string& reason) = 0;
  // Between the steps, and before the first.
  virtual void note(const Note& note) = 0;
  // First of all, if the run starts at once. May do nothing.
  virtual void minimise() = 0;
  // Begins the step, looks after it until it is over, and returns its result. Called for the rule step and then, if the
  // run has sentences, once for all of them.
  virtual StepResult run_step(RunContext& context, Step& step) = 0;
  // Does it want to hear of each sentence?
  [[nodiscard]] virtual bool wants_reports() const { return false; }
  // A sentence was closed; in their order, on a thread of the step, never two at the same time. Must not throw.
  virtual void report(const SentenceReport&) {}
  // Last of all, on every way out.
  virtual void finish(RunContext& context) = 0;
};

}  // namespace lexon
