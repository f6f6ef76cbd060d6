// The sentences of a run, one after the other or on several threads at once; the output is the same.
//
// On several threads each takes the next few sentences of the input as text, renders them with a session of its own and
// keeps the output, until all sentences before them have been committed: written and counted. What one sentence leaves
// to the next is a single bit, a forced target that was not reached. Those that are taken together hand it on among
// them; the first of them begins with the bit that was committed last. If it turns out that the sentences in front have
// left the other bit, they are rendered again.
//
// Few locks, few shared bytes: threads meet only where sentences are taken and committed, some hundred times a second,
// and every thread fills buffers that it alone has filled before.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
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

  // One of the sentences that are taken together.
  struct Piece {
    std::size_t text_end = 0;    // behind it, in the text
    std::size_t output_end = 0;  // behind its banner, in the output; of no account once some of that has been written
    Outcome outcome{};
  };

  // Sentences on their way from the input to the output, if there are several threads.
  struct Job {
    std::int32_t number = 0;  // of the first
    std::string text;         // all of them, as they stand in the input
    std::vector<Piece> pieces;
    TextWatch lines_before;
    bool reads_on = false;            // one sentence, of which `text` holds nothing: it is read while it is rendered
    bool is_begun = false;            // a thread has it
    bool is_done = false;             // and has rendered it
    bool begins_with_target = false;  // the bit that it assumes
    std::size_t rendered = 0;         // of its sentences
    std::size_t closed = 0;           // of these: counted and reported, while the next one takes its time
    std::string output;               // or what of it has not been written
    InputNotes notes;
    LookupDamage damage{};
    std::list<Job>* spare = nullptr;  // where it goes when it has been committed: to the thread that rendered it

    [[nodiscard]] std::size_t size() const { return text.size() + output.size(); }
    void clear();  // but for the room of its buffers
  };
  using Jobs = std::list<Job>;
  class Desk;

  void take_range(const InputRange& range, std::int64_t wanted_of_run);
  void work_alone(StepWorker& worker);
  void work_together(StepWorker& worker);
  Outcome render(StepWorker& worker, TextSource source, std::int32_t number, InputNotes& notes);

  [[nodiscard]] bool is_over() const { return has_ended_ || step_->is_cancelled(); }
  [[nodiscard]] bool has_room() const;
  std::optional<std::size_t> sentence_size();
  void read_texts(Job& job);
  Job* take(Jobs& spare);
  void hand_back(Job& job, std::size_t rendered);
  void finish(Desk& desk, Job& job);
  bool commit(Job& job, bool& leaves_target);
  void end();
  static void banner_put(Output& output, End end);
  // Counts and reports. False when the run ends here.
  bool close_sentence(Outcome& outcome);
  // To be asked behind sentences that were closed.
  bool goes_on_behind(bool all_are_done);

  RunContext& context_;
  std::int64_t first_;   // its number
  std::int64_t wanted_;  // sentences; 0: all
  std::int32_t limit_;
  std::vector<std::unique_ptr<Session>> sessions_;  // of several threads
  std::size_t window_ = 0;                          // sentences
  Step* step_ = nullptr;
  Host* host_ = nullptr;
  bool wants_reports_ = false;
  bool memory_is_exhausted_ = false;

  // ---- Of several threads. The first group belongs to the thread that has set `is_reading_`.
  std::int64_t taken_ = 0;
  bool is_at_end_ = false;  // no sentence is left to be taken
  TextWatch lines_;         // in front of the next sentence: number of lines, and whether the last of them goes on
  std::string ahead_;       // what has been read of the input
  std::size_t used_ = 0;    // of these bytes, by sentences that have been taken

  // All else is guarded by the mutex.
  std::mutex mutex_;
  std::condition_variable moved_;
  bool is_reading_ = false;
  bool all_taken_ = false;
  std::vector<Jobs> spares_;     // for each session: jobs that are done with, for the room of their buffers
  Jobs jobs_;                    // that are not committed, in the order of the input
  std::size_t sentences_ = 0;    // in these
  std::size_t kept_ = 0;         // bytes of their texts and finished outputs
  std::size_t handed_back_ = 0;  // jobs that nobody has begun
  std::size_t at_work_ = 0;      // jobs that are being rendered, and may yet be handed back in part
  bool is_committing_ = false;
  bool target_left_ = false;  // the bit of the sentence that was committed last
  bool has_ended_ = false;
};

}  // namespace lexon
