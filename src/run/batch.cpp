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

// Sentences that are taken and not committed yet: beyond, no further one is taken. So many, or so many for each thread.
constexpr std::size_t kWindow = 256;
constexpr std::size_t kWindowOfOne = 32;
// Bytes of their texts and outputs, likewise.
constexpr std::size_t kMostKept = std::size_t{32} << 20;
// Bytes of the output of a job: beyond, its thread waits until it may write.
constexpr std::size_t kMostOfOne = std::size_t{4} << 20;
// Bytes of one text: a longer one is read from the input while it is rendered.
constexpr std::size_t kMostText = std::size_t{1} << 20;

// What is taken at once: so many sentences, or so many bytes of them. After this time, or so many bytes of output, the
// rest goes to whoever is idle.
constexpr std::size_t kMostTogether = 16;
constexpr std::size_t kBytesTogether = std::size_t{8} << 10;
constexpr std::chrono::milliseconds kTimeTogether{2};
constexpr std::size_t kOutputTogether = std::size_t{256} << 10;

// Bytes that are read of the input at once.
constexpr std::size_t kReadAtOnce = std::size_t{128} << 10;

// Committed jobs that a thread keeps for their buffers, and how large one of these may have become.
constexpr std::size_t kMostSpare = 4;
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
    // As where a step has met it: the sentence counts as one without memory, and its forced target is lost with it.
    session.state.abort = Status::memory;
    session.state.forced_node = nullptr;
    return Status::memory;
  }
}

// Goes on with the numbers of lines behind a text that begins where `lines` stands.
void pass_lines(TextWatch& lines, std::string_view text) {
  if (text.empty()) return;
  const bool goes_on = text.back() != '\n';
  lines.line += std::count(text.begin(), text.end(), '\n') + (goes_on ? 1 : 0) - (lines.goes_on ? 1 : 0);
  lines.goes_on = goes_on;
}

// 0 stands for "none yet".
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

// The place is that of the first damage; the count goes over all.
void join(LookupDamage& all, const LookupDamage& damage) {
  if (all.blocks == 0) {
    all = damage;
  } else {
    all.blocks += damage.blocks;
  }
}

}  // namespace

void Batch::Job::clear() {
  text.clear();
  pieces.clear();
  output.clear();
  reads_on = is_done = false;
  rendered = closed = 0;  // also for a job that is cancelled before it is begun
  notes = {};
  damage = {};
  if (output.capacity() > kLargestRoom) output = {};
}

// Where one of several threads does its sentences, and how their output gets on from there.
class Batch::Desk final : public Output::Collector {
 public:
  Desk(Batch& batch, StepWorker& worker);
  ~Desk() override { session().output.set_collector(nullptr); }
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;

  // Renders what it has time for; the rest is handed back.
  void render(Job& job);
  // The same of a job that assumed the wrong bit, with the right one and to its end.
  void render_again(Job& job);

  // A job whose predecessors have all been committed writes at once what it has. Another keeps it, up to a point.
  void collect(Output& output) override;

  [[nodiscard]] Jobs& spare() const { return spare_; }

 private:
  [[nodiscard]] Session& session() const { return worker_.session(); }
  [[nodiscard]] bool is_first(const Job& job) const { return &batch_.jobs_.front() == &job; }
  bool wait_to_be_first(const Job& job);
  void begin(Job& job);
  bool render_piece(Job& job, std::size_t place);
  void render_while_reading(Job& job);
  void end(Job& job);

  Batch& batch_;
  StepWorker& worker_;
  Jobs& spare_;         // the batch's, for this thread alone
  Job* job_ = nullptr;  // in work
  bool may_write_ = false;
};

Batch::Desk::Desk(Batch& batch, StepWorker& worker)
    : batch_(batch),
      worker_(worker),
      spare_(batch.spares_[static_cast<std::size_t>(
          std::find_if(batch.sessions_.begin(), batch.sessions_.end(),
                       [&worker](const auto& session) { return session.get() == &worker.session(); }) -
          batch.sessions_.begin())]) {
  session().output.set_collector(this);
}

// False when that will never be.
bool Batch::Desk::wait_to_be_first(const Job& job) {
  worker_.set_waiting(true);
  std::unique_lock lock(batch_.mutex_);
  batch_.moved_.wait(lock, [&] { return is_first(job) || batch_.is_over(); });
  const bool goes_on = !batch_.is_over();
  lock.unlock();
  worker_.set_waiting(false);
  return goes_on;
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
  batch_.context_.session.output.take_from(output);
  // Who watches the run wants to know what came of those in front of a sentence that takes long.
  for (; job_->closed < job_->rendered; ++job_->closed) {
    static_cast<void>(batch_.close_sentence(job_->pieces[job_->closed].outcome));
  }
  out_flush(batch_.context_.session);
}

void Batch::Desk::begin(Job& job) {
  job_ = &job;
  job.rendered = job.closed = 0;
  may_write_ = false;
  session().damage = {};
  session().state.forced_node = job.begins_with_target ? &session().gone : nullptr;
  job.notes = {};
  job.notes.text = job.lines_before;
  lookups_attend(session(), batch_.context_.dictionary.files(), batch_.context_.cr_dictionary.files());
}

void Batch::Desk::end(Job& job) {
  job_ = nullptr;
  job.output = session().output.take(std::move(job.output));
  job.damage = session().damage;
}

// One of its sentences, and the banner. False when none is to follow.
bool Batch::Desk::render_piece(Job& job, std::size_t place) {
  Piece& piece = job.pieces[place];
  const std::size_t from = place == 0 ? 0 : job.pieces[place - 1].text_end;
  std::string_view text = std::string_view(job.text).substr(from, piece.text_end - from);
  piece.outcome = batch_.render(worker_, text, job.number + static_cast<std::int32_t>(place), job.notes);
  worker_.end();
  banner_put(session().output, piece.outcome.end);
  piece.output_end = session().output.kept();
  job.rendered = place + 1;
  return piece.outcome.end != End::cancelled && piece.outcome.end != End::end_of_input;
}

// A sentence whose text is too long to be kept. Its thread has the input for itself until it has been read.
void Batch::Desk::render_while_reading(Job& job) {
  if (wait_to_be_first(job)) {
    {
      const std::lock_guard lock(batch_.mutex_);
      job.begins_with_target = batch_.target_left_;
    }
    begin(job);
    std::string_view rest = std::string_view(batch_.ahead_).substr(batch_.used_);
    Outcome& outcome = job.pieces.front().outcome;
    outcome = batch_.render(worker_, {rest, batch_.context_.input}, job.number, job.notes);
    worker_.end();
    banner_put(session().output, outcome.end);
    end(job);
    batch_.used_ = batch_.ahead_.size() - rest.size();
    batch_.lines_.line = job.notes.text.line;
    batch_.lines_.goes_on = job.notes.text.goes_on;
  }
  const std::lock_guard lock(batch_.mutex_);
  batch_.is_reading_ = false;
  batch_.moved_.notify_all();
}

void Batch::Desk::render(Job& job) {
  if (job.reads_on) return render_while_reading(job);
  begin(job);
  const auto start = std::chrono::steady_clock::now();
  for (std::size_t place = 0; place < job.pieces.size() && render_piece(job, place);) {
    ++place;
    const bool is_long = std::chrono::steady_clock::now() - start > kTimeTogether;
    const bool is_enough = is_long || session().output.kept() > kOutputTogether;
    if (is_enough && place < job.pieces.size()) batch_.hand_back(job, place);
  }
  end(job);
}

// Behind a sentence that leaves what it has left before nothing changes. The notes are those of reading, which does not
// know of the bit.
void Batch::Desk::render_again(Job& job) {
  const std::vector<Piece> old = job.pieces;
  const std::string old_output = std::move(job.output);
  const InputNotes old_notes = job.notes;
  const bool is_whole = job.damage.blocks == 0 && old.back().outcome.end != End::cancelled;
  begin(job);
  bool meets = false;
  std::size_t place = 0;
  while (!meets && place < old.size() && render_piece(job, place)) {
    meets = is_whole && job.pieces[place].outcome.leaves_target == old[place].outcome.leaves_target;
    ++place;
  }
  end(job);
  if (!meets) return;
  job.notes = old_notes;
  job.output += std::string_view(old_output).substr(old[place - 1].output_end);
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
  window_ = std::max(kWindow, kWindowOfOne * threads);
  spares_.resize(threads);
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

void Batch::banner_put(Output& output, End end) {
  switch (end) {
    case End::done: output.put(";;Done!\n"); break;
    case End::failed: output.put(";;Failed!\n"); break;
    case End::over_time: output.banner(";;Time Over!"); break;
    case End::cancelled:
    case End::end_of_input: break;
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

// A thread that finds no memory outside of a sentence ends the run for all.
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

// One sentence with the worker's session. Its memory goes back before it is counted, whatever came of it.
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

// In the order of the input, one at a time: counts and reports are those of one thread.
bool Batch::close_sentence(Outcome& outcome) {
  if (outcome.is_starved) ++context_.starved;
  switch (outcome.end) {
    case End::cancelled: return false;
    case End::end_of_input: context_.input_ended = true; return false;
    case End::done: ++context_.done; break;
    case End::failed: ++context_.failed; break;
    case End::over_time: ++context_.over_time; break;
  }
  ++context_.number;
  if (wants_reports_) {
    outcome.report.status = outcome.end == End::done ? "done" : outcome.end == End::failed ? "failed" : "over time";
    host_->report(outcome.report);
  }
  return true;
}

// What was not done is shown at once, and everything where the input waits: whoever feeds sentences one by one wants to
// see what came of each before the next, and no thread comes by later to look whether the output is wanted.
bool Batch::goes_on_behind(bool all_are_done) {
  if (all_are_done && !context_.input_waits) {
    out_flush(context_.session);
  } else {
    context_.session.output.flush();
  }
  // Nobody can read what comes behind a hole.
  if (std::ferror(context_.output.get()) != 0) return false;
  return wanted_ == 0 || context_.tried() < wanted_;
}

// The session of the rule step renders, straight from the input and straight into the output.
void Batch::work_alone(StepWorker& worker) {
  Session& session = worker.session();
  const bool has_rules = context_.grammar.rules != nullptr;
  session.state.forced_node = target_left_ ? &session.gone : nullptr;
  bool goes_on = true;
  while (goes_on) {
    const auto number = static_cast<std::int32_t>(context_.number);
    Outcome outcome{End::failed};
    if (has_rules) {
      lookups_attend(session, context_.dictionary.files(), context_.cr_dictionary.files());
      outcome = render(worker, context_.input, number, context_.input_notes);
    } else if (step_->is_cancelled()) {
      outcome.end = End::cancelled;
    }
    // A read that was stopped while it waited for data is no fault of the file.
    if (outcome.end == End::over_time) std::clearerr(context_.input);
    banner_put(context_.session.output, outcome.end);
    goes_on = close_sentence(outcome) && goes_on_behind(outcome.end == End::done);
  }
}

void Batch::work_together(StepWorker& worker) {
  Desk desk(*this, worker);
  while (Job* job = take(desk.spare())) {
    desk.render(*job);
    finish(desk, *job);
  }
}

bool Batch::has_room() const {
  return jobs_.empty() || (sentences_ + kMostTogether <= window_ && kept_ < kMostKept);
}

// ---- From the input. One thread at a time reads, without the mutex.

// Reads until the next sentence is whole in `ahead_`: how long it is, 0 behind the last one; none if it is too long.
std::optional<std::size_t> Batch::sentence_size() {
  std::string_view rest = std::string_view(ahead_).substr(used_);
  if (context_.input_waits) {
    // Reads no further than to the sentence's end: who writes it may wait for what comes of it.
    TextLimit limit{kMostText};
    std::string text;
    static_cast<void>(sentence_text_read({rest, context_.input}, text, &limit));
    ahead_ = std::move(text);
    used_ = 0;
    if (limit.is_met) return std::nullopt;
    return ahead_.size();
  }
  for (bool is_all = false;;) {
    const std::size_t there = rest.size();
    const bool ends = sentence_pass(rest);
    // Where the bytes end the line may go on, or the LF of a CR may follow.
    if (is_all || (ends && !rest.empty())) return there - rest.size();
    if (there >= kMostText) return std::nullopt;
    ahead_.erase(0, std::exchange(used_, 0));
    ahead_.resize(there + kReadAtOnce);
    const std::size_t count = std::fread(ahead_.data() + there, 1, kReadAtOnce, context_.input);
    ahead_.resize(there + count);
    is_all = count == 0;
    rest = ahead_;
  }
}

// The text behind the last sentence comes as one more, which is read as the end of the input.
void Batch::read_texts(Job& job) {
  job.number = static_cast<std::int32_t>(first_ + taken_);
  job.lines_before = lines_;
  const std::size_t most = context_.input_waits ? 1 : kMostTogether;
  while (!is_at_end_ && job.pieces.size() < most && job.text.size() < kBytesTogether) {
    const std::optional<std::size_t> size = sentence_size();
    job.reads_on = !size && job.pieces.empty();
    if (!size && !job.reads_on) break;
    job.text.append(ahead_, used_, size.value_or(0));
    used_ += size.value_or(0);
    job.pieces.emplace_back().text_end = job.text.size();
    ++taken_;
    is_at_end_ = size == 0 || taken_ == wanted_;
    if (job.reads_on) break;
  }
  pass_lines(lines_, job.text);
}

// ---- Between the threads

// The next sentences that nobody has begun: those that were handed back, or from the input. Null when none are left.
// `spare` is this thread's.
Batch::Job* Batch::take(Jobs& spare) {
  std::unique_lock lock(mutex_);
  const auto may_read = [this] { return !is_reading_ && !all_taken_ && has_room(); };
  const auto all_are_begun = [this] { return all_taken_ && at_work_ == 0; };
  moved_.wait(lock, [&] { return is_over() || handed_back_ != 0 || may_read() || all_are_begun(); });
  if (is_over()) return nullptr;
  if (handed_back_ != 0) {
    --handed_back_;
    ++at_work_;
    Job& job = *std::find_if(jobs_.begin(), jobs_.end(), [](const Job& j) { return !j.is_begun; });
    job.is_begun = true;
    job.spare = &spare;
    return &job;
  }
  if (!may_read()) return nullptr;
  is_reading_ = true;
  Jobs taken;
  if (!spare.empty()) taken.splice(taken.begin(), spare, spare.begin());
  lock.unlock();
  Job& job = taken.empty() ? taken.emplace_back() : taken.front();
  job.clear();
  read_texts(job);
  lock.lock();
  all_taken_ = is_at_end_;
  is_reading_ = job.reads_on;
  moved_.notify_all();
  if (step_->is_cancelled()) return nullptr;
  ++at_work_;
  sentences_ += job.pieces.size();
  kept_ += job.text.size();
  job.is_begun = true;
  job.spare = &spare;
  job.begins_with_target = target_left_;
  jobs_.splice(jobs_.end(), taken);
  return &job;
}

// Makes a job of its own of the sentences that have not been rendered. Nobody waits for it in vain: the caller takes it
// next, if no other thread has.
void Batch::hand_back(Job& job, std::size_t rendered) {
  const Piece& last = job.pieces[rendered - 1];
  Jobs back;
  {
    const std::lock_guard lock(mutex_);
    if (!job.spare->empty()) back.splice(back.begin(), *job.spare, job.spare->begin());
  }
  Job& rest = back.empty() ? back.emplace_back() : back.front();
  rest.clear();
  rest.is_begun = false;
  rest.number = job.number + static_cast<std::int32_t>(rendered);
  rest.text = job.text.substr(last.text_end);
  rest.pieces.resize(job.pieces.size() - rendered);
  for (std::size_t i = 0; i < rest.pieces.size(); ++i) {
    rest.pieces[i].text_end = job.pieces[rendered + i].text_end - last.text_end;
  }
  rest.lines_before.line = job.notes.text.line;
  rest.lines_before.goes_on = job.notes.text.goes_on;
  rest.begins_with_target = last.outcome.leaves_target;
  job.text.resize(last.text_end);
  job.pieces.resize(rendered);
  const std::lock_guard lock(mutex_);
  const auto place = std::find_if(jobs_.begin(), jobs_.end(), [&job](const Job& j) { return &j == &job; });
  jobs_.splice(std::next(place), back);
  ++handed_back_;
  moved_.notify_all();
}

// What the other threads do now is of no use. The caller holds the mutex.
void Batch::end() {
  has_ended_ = true;
  step_->stop();
  moved_.notify_all();
}

// Commits all that is ready, from the first job on; one thread at a time does that.
void Batch::finish(Desk& desk, Job& job) {
  std::unique_lock lock(mutex_);
  job.is_done = true;
  --at_work_;
  kept_ += job.output.size();
  if (all_taken_) moved_.notify_all();
  if (is_committing_) return;
  is_committing_ = true;
  while (!has_ended_ && !jobs_.empty() && jobs_.front().is_done) {
    Job& first = jobs_.front();
    kept_ -= first.size();
    const bool is_of_use = first.begins_with_target == target_left_;
    first.begins_with_target = target_left_;
    lock.unlock();
    if (!is_of_use) desk.render_again(first);
    bool leaves_target = false;
    const bool goes_on = commit(first, leaves_target);
    lock.lock();
    target_left_ = leaves_target;
    sentences_ -= first.pieces.size();
    if (first.spare->size() < kMostSpare) {
      first.spare->splice(first.spare->begin(), jobs_, jobs_.begin());
    } else {
      jobs_.pop_front();
    }
    if (!goes_on) end();
    moved_.notify_all();
  }
  is_committing_ = false;
}

bool Batch::commit(Job& job, bool& leaves_target) {
  context_.session.output.append(job.output);
  join(context_.input_notes, job.notes);
  join(context_.session.damage, job.damage);
  bool all_are_done = true;
  for (std::size_t place = 0; place < job.pieces.size(); ++place) {
    Piece& piece = job.pieces[place];
    leaves_target = piece.outcome.leaves_target;
    all_are_done = all_are_done && piece.outcome.end == End::done;
    if (place >= job.closed && !close_sentence(piece.outcome)) return false;
  }
  return goes_on_behind(all_are_done);
}

}  // namespace lexon
