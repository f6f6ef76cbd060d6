// What a run needs of its front end, by windows.
#pragma once

#include <QElapsedTimer>

#include "front/gui/progress_dialog.hpp"
#include "front/gui/summary_dialog.hpp"
#include "front/outcome.hpp"

namespace lexon {

class MainDialog;

class DialogHost final : public Host {
 public:
  // `yes`: the answer to every question, which is not shown then.
  DialogHost(MainDialog& main, bool yes);

  void report_stop(const std::string& text, const std::string& reason) override;
  bool ask_yes_no(const std::string& text, const std::string& reason) override;
  void note(const Note& note) override;
  void minimise() override;
  [[nodiscard]] bool wants_reports() const override;
  void report(const SentenceReport& sentence) override;
  StepResult run_step(RunContext& context, Step& step) override;
  void finish(RunContext& context) override;

  [[nodiscard]] const Outcome& outcome() const { return outcome_; }

 private:
  [[nodiscard]] QWidget* window_to_stand_on() const;
  [[nodiscard]] bool show_summary(const RunContext& context);

  MainDialog& main_;  // outlives the host
  bool yes_;
  ProgressDialog progress_;
  Outcome outcome_;
  std::vector<std::string> notes_;  // in the order of their coming
  QElapsedTimer time_;              // since the host was made, the opening of files included
  std::int64_t reported_ = 0;       // sentences
  std::vector<LostSentence> lost_;  // the first of them
};

}  // namespace lexon
