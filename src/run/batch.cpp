#include "run/batch.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <new>
#include <thread>
#include <utility>

#include "data/output.hpp"
#include "run/fallback.hpp"
#include "run/render.hpp"

namespace lexon {

namespace {

// Sentences between the first that is not committed and the last that has been taken.
constexpr std::size_t kWindow = 256;
// Bytes of their texts and outputs: beyond, no further sentence is taken.
constexpr std::size_t kMostKept = std::size_t{32} << 20;
// Bytes of one output: beyond, a sentence waits until it may write.
constexpr std::size_t kMostOfOne = std::size_t{4} << 20;
// Bytes of one text: a longer one is read from the input while it is rendered.
constexpr std::size_t kMostText = std::size_t{1} << 20;

// What a thread's next output is kept in: rooms for each thread that wait, and how large one may have become.
constexpr std::size_t kRoomsOfOne = 4;
constexpr std::size_t kLargestRoom = std::size_t{1} << 20;

std::size_t thread_count(const RunSettings& settings) {
  if (settings.jobs > 0) return static_cast<std::size_t>(settings.jobs);
  return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kMostJobs);
}

// What the standard library throws for exhausted memory becomes a status here. A sentence that was asked to stop has
// been silent since, so it has not been done, whatever it returns.
Status render_guarded(Session& session, RunContext& context, TextSource source, InputNotes& notes,
                      SentenceReport* report) {
  std::array<char, kSentenceSize> text;
  try {
    std::string graph;
    if (report != nullptr) source.keep(&graph);
    Status status = render_sentence(session, context.dictionary.files(), source, text.data(),
                                    context.cr_dictionary.files(), context.post_edit, &notes);
    if (session.stop_requested) status = Status::stopped;
    if (report == nullptr) return status;
    report_leftovers(session, *report);
    if (status == Status::ok) {
      report->text = plain_sentence(session, text.data());
    } else {
      report->fallback = fallback_words(graph);
    }
    return status;
  } catch (const std::bad_alloc&) {
    return Status::memory;
  }
}

// Goes on with the numbers of lines behind a text that begins where `lines` stands.
void pass_lines(TextWatch& lines, const std::string& text) {
  if (text.empty()) return;
  const bool goes_on = text.back() != '\n';
  lines.line += std::count(text.begin(), text.end(), '\n') + (goes_on ? 1 : 0) - (lines.goes_on ? 1 : 0);
  lines.goes_on = goes_on;
}

void take_first(std::int64_t& place, std::int64_t line) {
  if (place == 0) place = line;
}

// Notes of a sentence behind those of the sentences before it.
void join(InputNotes& all, const InputNotes& notes) {
  all.text.line = notes.text.line;
  all.text.goes_on = notes.text.goes_on;
  all.text.is_utf16 = all.text.is_utf16 || notes.text.is_utf16;
  all.text.has_mark = all.text.has_mark || notes.text.has_mark;
  take_first(all.text.nul, notes.text.nul);
  take_first(all.text.utf8, notes.text.utf8);
  take_first(all.text.other, notes.text.other);
  take_first(all.text.long_line, notes.text.long_line);
  all.has_sentence = all.has_sentence || notes.has_sentence;
  const std::int64_t shown = std::min(notes.left_out, static_cast<std::int64_t>(notes.first.size()));
  for (std::int64_t i = 0; i < shown; ++i) {
    const auto at = static_cast<std::size_t>(all.left_out + i);
    if (at < all.first.size()) all.first[at] = notes.first[static_cast<std::size_t>(i)];
  }
  all.left_out += notes.left_out;
  if (notes.unclosed.number != 0) all.unclosed = notes.unclosed;
}

void join(LookupDamage& all, const LookupDamage& damage) {
  if (all.blocks == 0) {
    all = damage;
  } else {
    all.blocks += damage.blocks;
  }
}

}  // namespace

// Where one of several threads does its sentences, and how their output gets on from there.
class Batch::Desk final : public Output::Collector {
 public:
  Desk(Batch& batch, StepWorker& worker) : batch_(batch), worker_(worker) { session().output.set_collector(this); }
  ~Desk() override { session().output.set_collector(nullptr); }
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;

  void render(Job& job);

  // A sentence whose predecessors have all been committed writes at once what it has. Another keeps it, up to a point.
  void collect(Output& output) override;

 private:
  [[nodiscard]] Session& session() const { return worker_.session(); }
  [[nodiscard]] bool is_first(const Job& job) const { return &batch_.jobs_.front() == &job; }
  bool wait_to_be_first(const Job& job);

  Batch& batch_;
  StepWorker& worker_;
  Job* job_ = nullptr;
  bool may_write_ = false;
};

// False when that will never be.
bool Batch::Desk::wait_to_be_first(const Job& job) {
  worker_.set_waiting(true);
  std::unique_lock lock(batch_.mutex_);
  const auto is_over = [this] { return batch_.has_ended_ || batch_.step_->is_cancelled(); };
  batch_.moved_.wait(lock, [&] { return is_first(job) || is_over(); });
  lock.unlock();
  worker_.set_waiting(false);
  return !is_over();
}

void Batch::Desk::collect(Output& output) {
  if (job_ == nullptr) return;
  if (!may_write_) {
    std::unique_lock lock(batch_.mutex_);
    if (!is_first(*job_)) {
      if (output.kept() < kMostOfOne) return;
      lock.unlock();
      if (!wait_to_be_first(*job_)) return;
      lock.lock();
    }
    // What began with the wrong bit is of no use.
    if (job_->begins_with_target != batch_.target_left_) session().stop_requested = true;
    if (session().stop_requested) return;
    may_write_ = true;
  }
  batch_.context_.session.output.append(output.take());
  out_flush(batch_.context_.session);
}

void Batch::Desk::render(Job& job) {
  const bool reads_on = job.input.owns_lock();
  if (reads_on) {
    if (!wait_to_be_first(job)) return;
    const std::lock_guard lock(batch_.mutex_);
    job.begins_with_target = batch_.target_left_;
  }
  session().damage = {};
  session().state.forced_node = job.begins_with_target ? &session().gone : nullptr;
  job.notes = {};
  job.notes.text = job.lines_before;
  std::string_view rest = job.text;
  const TextSource source = reads_on ? TextSource(rest, batch_.context_.input) : TextSource(rest);
  job_ = &job;
  may_write_ = false;
  job.outcome = batch_.render(worker_, source, job.number, job.notes);
  worker_.end();
  job_ = nullptr;
  job.output = session().output.take(batch_.room_take());
  job.damage = session().damage;
  if (!reads_on) return;
  batch_.lines_.line = job.notes.text.line;
  batch_.lines_.goes_on = job.notes.text.goes_on;
  job.input.unlock();
}

Batch::Batch(const RunSettings& settings, RunContext& context)
    : context_(context),
      first_(settings.start_sentence),
      wanted_(std::max(settings.sentence_count, 1)),
      limit_(settings.max_time_per_sentence) {
  // Without rules no sentence reads any input: a run without a count would go on for ever.
  const bool has_rules = context.grammar.rules != nullptr;
  if (settings.sentence_count == 0 && has_rules) wanted_ = 0;
  if (settings.range && has_rules) take_range(*settings.range, settings.sentence_count);
  context.number = first_;
  target_left_ = context.target_left;
  lines_.line = context.input_notes.text.line;
  lines_.goes_on = context.input_notes.text.goes_on;
  const std::size_t threads = has_rules ? thread_count(settings) : 1;
  if (threads > 1) rooms_.reserve(kRoomsOfOne * threads);
  for (std::size_t i = 0; i < threads && threads > 1; ++i) {
    sessions_.push_back(std::make_unique<Session>());
    sessions_.back()->state.trace_level = context.session.state.trace_level;
    sessions_.back()->has_company = true;
    session_use(*sessions_.back(), context.grammar);
  }
}

Batch::~Batch() = default;

// The last of the parts goes as far as the run would.
void Batch::take_range(const InputRange& range, std::int64_t wanted_of_run) {
  first_ += range.before;
  if (!range.to_end) {
    wanted_ = range.count;
  } else if (wanted_ != 0) {
    wanted_ = std::max<std::int64_t>(wanted_of_run, 1) - range.before;
  }
}

StepResult Batch::run(Host& host) {
  std::vector<Session*> sessions;
  for (const auto& session : sessions_) sessions.push_back(session.get());
  if (sessions.empty()) sessions.push_back(&context_.session);
  Step step(*this, "sentence no.", limit_, context_.session, sessions);
  step_ = &step;
  host_ = &host;
  wants_reports_ = host.wants_reports();
  const StepResult result = host.run_step(context_, step);
  context_.session.output.flush();
  context_.target_left = sessions_.empty() ? context_.session.state.forced_node != nullptr : target_left_;
  if (memory_is_exhausted_) throw std::bad_alloc();
  return result;
}

void Batch::work(StepWorker& worker) {
  try {
    if (sessions_.empty()) {
      work_alone(worker);
    } else {
      work_together(worker);
    }
  } catch (const std::bad_alloc&) {
    const std::lock_guard lock(mutex_);
    memory_is_exhausted_ = true;
    end();
  }
}

void Batch::wake() {
  const std::lock_guard lock(mutex_);
  moved_.notify_all();
}

Batch::Outcome Batch::render(StepWorker& worker, TextSource source, std::int32_t number, InputNotes& notes) {
  Session& session = worker.session();
  worker.begin(number);
  Outcome outcome;
  const std::int64_t steps = session.state.steps;
  const std::int64_t undone = session.state.undone;
  const auto start = std::chrono::steady_clock::now();
  const Status status = render_guarded(session, context_, source, notes, wants_reports_ ? &outcome.report : nullptr);
  outcome.report.milliseconds =
      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  outcome.report.steps = session.state.steps - steps;
  outcome.report.steps_back = session.state.undone - undone;
  outcome.is_starved = session.state.abort == Status::memory;
  outcome.leaves_target = session.state.forced_node != nullptr;
  session.pool.release_all();
  switch (status) {
    case Status::ok: outcome.end = End::done; break;
    case Status::end_of_input: outcome.end = End::end_of_input; break;
    case Status::stopped: outcome.end = worker.is_over_time() ? End::over_time : End::cancelled; break;
    default: outcome.end = End::failed; break;
  }
  return outcome;
}

bool Batch::close_sentence(Outcome& outcome) {
  Output& output = context_.session.output;
  if (outcome.is_starved) ++context_.starved;
  switch (outcome.end) {
    case End::cancelled: return false;
    case End::end_of_input: context_.input_ended = true; return false;
    case End::done:
      output.put(";;Done!\n");
      ++context_.done;
      break;
    case End::failed:
      output.put(";;Failed!\n");
      ++context_.failed;
      break;
    case End::over_time:
      output.banner(";;Time Over!");
      ++context_.over_time;
      break;
  }
  ++context_.number;
  if (wants_reports_) {
    outcome.report.status = outcome.end == End::done ? "done" : outcome.end == End::failed ? "failed" : "over time";
    host_->report(outcome.report);
  }
  if (outcome.end == End::done) {
    out_flush(context_.session);
  } else {
    output.flush();
  }
  // Nobody can read what comes behind a hole.
  if (std::ferror(context_.output.get()) != 0) return false;
  return wanted_ == 0 || context_.tried() < wanted_;
}

void Batch::work_alone(StepWorker& worker) {
  Session& session = worker.session();
  const bool has_rules = context_.grammar.rules != nullptr;
  session.state.forced_node = target_left_ ? &session.gone : nullptr;
  bool goes_on = true;
  while (goes_on) {
    const auto number = static_cast<std::int32_t>(context_.number);
    // Who feeds sentences one by one wants to see each before the next.
    if (context_.input_waits) session.flush_wanted = true;
    Outcome outcome{End::failed};
    if (has_rules) {
      outcome = render(worker, context_.input, number, context_.input_notes);
    } else if (step_->is_cancelled()) {
      outcome.end = End::cancelled;
    }
    if (context_.input_waits) session.flush_wanted = true;
    // A read that was stopped while it waited for data is no fault of the file.
    if (outcome.end == End::over_time) std::clearerr(context_.input);
    goes_on = close_sentence(outcome);
  }
}

void Batch::work_together(StepWorker& worker) {
  Desk desk(*this, worker);
  while (Job* job = take()) {
    desk.render(*job);
    finish(desk, *job);
  }
}

bool Batch::has_room() const {
  return jobs_.empty() || (jobs_.size() < kWindow && kept_ < kMostKept);
}

// False when no sentence is to be begun any more.
bool Batch::read_text(Job& job) {
  TextLimit limit{kMostText};
  const bool is_there = sentence_text_read(context_.input, job.text, &limit);
  if (step_->is_cancelled()) return false;
  job.lines_before = lines_;
  job.number = static_cast<std::int32_t>(first_ + taken_);
  ++taken_;
  // An empty text is read as the end of the input.
  all_taken_ = !is_there || taken_ == wanted_;
  job.is_cut = limit.is_met;
  if (!job.is_cut) pass_lines(lines_, job.text);
  return true;
}

// The next sentence of the input, or null.
Batch::Job* Batch::take() {
  std::unique_lock input(input_mutex_);
  {
    std::unique_lock lock(mutex_);
    moved_.wait(lock, [this] { return has_ended_ || step_->is_cancelled() || has_room(); });
    if (has_ended_) return nullptr;
  }
  Job job;
  if (all_taken_ || step_->is_cancelled() || !read_text(job)) return nullptr;
  if (job.is_cut) job.input = std::move(input);
  const std::lock_guard lock(mutex_);
  kept_ += job.text.size();
  job.begins_with_target = target_left_;
  jobs_.push_back(std::move(job));
  return &jobs_.back();
}

// Room for an output, of one that has been written if there is any.
std::string Batch::room_take() {
  const std::lock_guard lock(mutex_);
  if (rooms_.empty()) return {};
  std::string room = std::move(rooms_.back());
  rooms_.pop_back();
  return room;
}

// What the other threads do now is of no use. The caller holds the second mutex.
void Batch::end() {
  has_ended_ = true;
  step_->stop();
  moved_.notify_all();
}

// Commits all that is ready, from the first sentence on; one thread at a time does that.
void Batch::finish(Desk& desk, Job& job) {
  std::unique_lock lock(mutex_);
  job.is_done = true;
  kept_ += job.output.size();
  if (is_committing_) return;
  is_committing_ = true;
  while (!has_ended_ && !jobs_.empty() && jobs_.front().is_done) {
    Job& first = jobs_.front();
    kept_ -= first.size();
    const bool is_of_use = first.begins_with_target == target_left_;
    first.begins_with_target = target_left_;
    lock.unlock();
    if (!is_of_use) desk.render(first);
    const bool goes_on = commit(first);
    lock.lock();
    target_left_ = first.outcome.leaves_target;
    if (rooms_.size() < rooms_.capacity() && first.output.capacity() <= kLargestRoom)
      rooms_.push_back(std::move(first.output));
    jobs_.pop_front();
    if (!goes_on) end();
    moved_.notify_all();
  }
  is_committing_ = false;
}

bool Batch::commit(Job& job) {
  context_.session.output.append(job.output);
  join(context_.input_notes, job.notes);
  join(context_.session.damage, job.damage);
  return close_sentence(job.outcome);
}

}  // namespace lexon
