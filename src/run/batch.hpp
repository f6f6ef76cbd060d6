// The sentences of a run, one after the other or on several threads at once; the output is the same.
//
// On several threads each takes the next sentence of the input as text, renders it with a session of its own and keeps
// the output, until all sentences before it have been committed: written, counted and closed by their banners. What one
// sentence leaves to the next is a single bit, a forced target that was not reached. Each begins with the bit that was
// committed last; one that turns out to have begun with another than its predecessor has left is rendered again.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "graph/line_kind.hpp"
#include "run/context.hpp"
#include "run/report.hpp"
#include "run/settings.hpp"
#include "run/step.hpp"

namespace lexon {

class Batch final : public StepWork {
 public:
  // The grammar of `context` must be in place. Throws `std::bad_alloc`.
  Batch(const RunSettings& settings, RunContext& context);
  ~Batch() override;

  // Renders all sentences that are wanted, as `host` lets it. Throws `std::bad_alloc` when memory was exhausted outside
  // of a sentence.
  StepResult run(Host& host);

  void work(StepWorker& worker) override;
  void wake() override;

 private:
  enum class End { done, failed, over_time, cancelled, end_of_input };

  // What came of a sentence besides its output.
  struct Outcome {
    End end = End::cancelled;
    bool is_starved = false;     // failed for want of memory
    bool leaves_target = false;  // the bit
    SentenceReport report{};     // empty unless the host wants it
  };

  // A sentence on its way from the input to the output, if there are several threads.
  struct Job {
    std::int32_t number = 0;
    std::string text;  // as it stands in the input
    TextWatch lines_before;
    bool is_cut = false;                 // the text is longer than what is kept
    std::unique_lock<std::mutex> input;  // of one that is cut: it reads on there, and nobody else does
    bool begins_with_target = false;     // the bit that it assumes
    bool is_done = false;
    Outcome outcome;
    std::string output;  // or what of it has not been written
    InputNotes notes;
    LookupDamage damage{};

    [[nodiscard]] std::size_t size() const { return text.size() + output.size(); }
  };
  class Desk;

  void take_range(const InputRange& range, std::int64_t wanted_of_run);
  void work_alone(StepWorker& worker);
  void work_together(StepWorker& worker);
  Outcome render(StepWorker& worker, TextSource source, std::int32_t number, InputNotes& notes);

  [[nodiscard]] Job* take();
  bool read_text(Job& job);
  [[nodiscard]] bool has_room() const;
  void finish(Desk& desk, Job& job);
  bool commit(Job& job);
  void end();
  [[nodiscard]] std::string room_take();
  // False when the run ends with this sentence.
  bool close_sentence(Outcome& outcome);

  RunContext& context_;
  std::int64_t first_;   // its number
  std::int64_t wanted_;  // sentences; 0: all
  std::int32_t limit_;
  std::vector<std::unique_ptr<Session>> sessions_;  // of several threads
  Step* step_ = nullptr;
  Host* host_ = nullptr;
  bool wants_reports_ = false;
  bool memory_is_exhausted_ = false;

  // ---- Of several threads. Who takes a sentence holds the first mutex, and the second only for a moment.
  std::mutex input_mutex_;
  std::int64_t taken_ = 0;
  bool all_taken_ = false;
  TextWatch lines_;  // in front of the next sentence: number of lines, and whether the last of them goes on

  std::mutex mutex_;
  std::condition_variable moved_;
  std::deque<Job> jobs_;            // that are not committed, in the order of the input
  std::size_t kept_ = 0;            // bytes of texts and finished outputs in there
  std::vector<std::string> rooms_;  // outputs that have been written: room for those to come
  bool is_committing_ = false;
  bool target_left_ = false;  // the bit of the sentence that was committed last
  bool has_ended_ = false;
};

}  // namespace lexon
