// A generator: a thread with a large stack that renders, and a caller who waits for it and watches the clock.
#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <utility>

#include "api/inside.hpp"
#include "api/messages.hpp"

namespace lexon {
inline namespace v1 {

namespace {

using Clock = std::chrono::steady_clock;

// Generation is recursive: a real grammar must never meet the end of this stack. The same as of a run.
constexpr std::size_t kStack = std::size_t{256} << 20;
constexpr std::size_t kStackReserve = std::size_t{256} << 10;
// Also the precision of a time limit, since a deadline that moves on wakes nobody.
// How often the caller is asked whether to go on, and the clock is looked at.
constexpr std::chrono::milliseconds kAskInterval{100};

// As a run writes them behind a sentence.
const char* banner_of(Status status) {
  switch (status) {
    case Status::done: return ";;Done!\n";
    case Status::over_time: return ";;Time Over!\n";
    case Status::stopped: return ";;Cancelled!\n";
    default: return ";;Failed!\n";
  }
}

// What a failed sentence is told to have failed for.
const char* reason_of(core::Status code) {
  switch (code) {
    case core::Status::memory: return "no room for this sentence: it needs too much memory, or goes too deep";
    case core::Status::rule_base: return "the rule base asked for something that has no result";
    case core::Status::nothing_left: return "no rule leads on: every word, rule and scope has been tried";
    case core::Status::end_of_input: return "the text ends within this sentence, which is empty";
    case core::Status::index_unreadable:
    case core::Status::not_a_key_block:
    case core::Status::not_a_data_block: return "the dictionary is damaged: \"lexon-dict check\" tells more";
    default: return "generation came to no result";
  }
}

// The line that opened the sentence stands in front of what follows the reading, messages about lines apart.
std::string label_in(std::string_view output) {
  while (!output.empty()) {
    const std::size_t end = std::min(output.find('\n'), output.size());
    const std::string_view line = output.substr(0, end);
    if (line.starts_with("[S")) return std::string(line);
    if (!line.starts_with(";;") && !line.starts_with('\t')) break;
    output.remove_prefix(std::min(end + 1, output.size()));
  }
  return {};
}

}  // namespace

// The thread renders from `busy` to not `busy`; between, everything but the marked fields is its own. `session` is the
// thread's but for its stop request, which is set and cleared under the mutex.
struct Generator::Body {
  // Starts the thread, unless the grammar is not usable. Throws `std::bad_alloc` where no thread is to be had.
  explicit Body(Grammar&& of);
  ~Body();
  Body(const Body&) = delete;
  Body& operator=(const Body&) = delete;

  // For the caller's thread: gives the thread its work, waits, and watches the clock meanwhile.
  std::vector<Sentence> render(std::string_view text, const Settings& settings);
  void stop();
  [[nodiscard]] Session& session() { return *session_; }

 private:
  // For the generator's own thread.
  void serve();
  void render_all();
  bool render_next(std::string_view& rest);
  core::Status render_into(std::string_view& rest, Sentence& result);
  bool begin_sentence();
  bool end_sentence();
  void finish(Sentence& result, core::Status code, bool is_over_time, const TextWatch& text_before);
  std::string file_behind(const std::FILE* stream) const;
  // For the caller's thread again, under the lock that they give up while they wait.
  void watch_clock(std::unique_lock<std::mutex>& lock);
  void ask_caller(std::unique_lock<std::mutex>& lock);
  void request_stop();

  Grammar grammar_;
  const LoadedGrammar* loaded_ = nullptr;  // null: not usable
  std::unique_ptr<Session> session_ = std::make_unique<Session>();
  std::vector<Remark> remarks_;  // of the sentence
  InputNotes notes_;             // of the call
  std::string_view graphs_;      // of the call, as its settings
  const Settings* settings_ = nullptr;
  std::vector<Sentence> results_;
  bool no_memory_ = false;  // for the results
  ThreadHandle thread_{};

  // Under the mutex.
  std::mutex mutex_;
  std::condition_variable changed_;
  bool busy_ = false;
  bool ends_ = false;
  bool in_sentence_ = false;
  bool is_over_time_ = false;  // of the sentence
  bool stop_wanted_ = false;   // of the call
  Clock::time_point deadline_;
  Clock::time_point next_question_;
};

Generator::Body::Body(Grammar&& of) : grammar_(std::move(of)) {
  if (!grammar_.is_usable()) return;
  loaded_ = grammar_.body_.get();
  session_use(*session_, loaded_->rules);
  // What the reader says of a sentence is kept apart from what it prints: it becomes messages with their lines.
  session_->remarks = &remarks_;
  // One thread for the life of the generator; its stack is larger than that of any caller.
  const auto body = [](void* self) { static_cast<Body*>(self)->serve(); };
  if (!thread_start(thread_, kStack, body, this)) throw std::bad_alloc();
}

Generator::Body::~Body() {
  if (loaded_ == nullptr) return;
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
  }
  changed_.notify_all();
  thread_join(thread_);
}

// ---- The caller's side

// `text` and `settings` must stand until the call returns; nothing of them is kept.
std::vector<Sentence> Generator::Body::render(std::string_view text, const Settings& settings) {
  // One failed sentence instead of none: who counts results finds that something is missing.
  if (loaded_ == nullptr) {
    Sentence none;
    none.messages.push_back({MessageKind::error, {}, 0, 0, "the grammar is not usable: its messages tell why"});
    return {none};
  }
  std::unique_lock lock(mutex_);
  graphs_ = text;
  settings_ = &settings;
  session_->state.trace_level = static_cast<std::int8_t>(std::clamp(settings.trace_level, 0, 4));
  // A stop that came before the call is none of this call.
  stop_wanted_ = false;
  next_question_ = Clock::now() + kAskInterval;
  deadline_ = Clock::time_point::max();
  busy_ = true;
  changed_.notify_all();
  while (busy_) {
    watch_clock(lock);
    ask_caller(lock);
  }
  std::vector<Sentence> results = std::exchange(results_, {});
  // The thread itself throws nothing: what it has met is thrown here, where somebody may catch it.
  if (std::exchange(no_memory_, false)) throw std::bad_alloc();
  return results;
}

// Waits for the end, or until there is something to do. A deadline that moves on is met by looking again.
void Generator::Body::watch_clock(std::unique_lock<std::mutex>& lock) {
  const bool is_limited = settings_->time_limit > 0;
  const auto is_over = [this] { return !busy_; };
  if (!is_limited && !settings_->keep_going) return changed_.wait(lock, is_over);
  // The deadline is set by the other thread, sentence by sentence, without waking this one.
  const Clock::time_point soon = Clock::now() + kAskInterval;
  changed_.wait_until(lock, is_limited ? std::min(deadline_, soon) : soon, is_over);
  if (is_limited && in_sentence_ && !is_over_time_ && Clock::now() >= deadline_) {
    is_over_time_ = true;
    session_->stop_requested = true;
  }
}

void Generator::Body::ask_caller(std::unique_lock<std::mutex>& lock) {
  if (!busy_ || !settings_->keep_going || Clock::now() < next_question_) return;
  // The caller's function may take its time, and may call `stop`.
  lock.unlock();
  const bool goes_on = settings_->keep_going();
  lock.lock();
  next_question_ = Clock::now() + kAskInterval;
  if (!goes_on) request_stop();
}

// Between two sentences there is nothing to stop: the next one is then not begun.
void Generator::Body::request_stop() {
  stop_wanted_ = busy_;
  if (in_sentence_) session_->stop_requested = true;
}

void Generator::Body::stop() {
  const std::lock_guard lock(mutex_);
  request_stop();
}

// ---- The thread's side

// Work comes by `busy_` and goes back by it; the mutex is free while sentences are rendered.
void Generator::Body::serve() {
  session_->state.stack_limit = stack_limit_of_this_thread(kStackReserve);
  std::unique_lock lock(mutex_);
  while (true) {
    changed_.wait(lock, [this] { return busy_ || ends_; });
    if (!busy_) return;
    lock.unlock();
    render_all();
    lock.lock();
    busy_ = false;
    changed_.notify_all();
  }
}

void Generator::Body::render_all() {
  try {
    session_->state.forced_node = settings_->begins_with_target ? &session_->gone : nullptr;
    // Lines count from the beginning of the text of this call.
    notes_ = {};
    for (std::string_view rest = graphs_; render_next(rest);) continue;
  } catch (const std::bad_alloc&) {
    no_memory_ = true;
  }
  // Also behind an exception, so that the next call begins with an empty session.
  session_->pool.release_all();
  static_cast<void>(session_->output.take());
}

// False when the call is to stop.
bool Generator::Body::begin_sentence() {
  const std::lock_guard lock(mutex_);
  in_sentence_ = !stop_wanted_;
  is_over_time_ = false;
  // A limit of any size is taken: a double beyond what the clock can count would wrap.
  session_->stop_requested = false;
  if (settings_->time_limit > 0) {
    deadline_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                   std::chrono::duration<double>(std::min(settings_->time_limit, 1e9)));
  }
  return in_sentence_;
}

// Was it over its time?
bool Generator::Body::end_sentence() {
  const std::lock_guard lock(mutex_);
  in_sentence_ = false;
  session_->stop_requested = false;
  return is_over_time_;
}

// The path of one of the grammar's open files.
std::string Generator::Body::file_behind(const std::FILE* stream) const {
  for (const Dictionary* dictionary : {&loaded_->words, &loaded_->cooccurrence}) {
    if (stream == dictionary->dictionary.get()) return dictionary->path;
    if (stream == dictionary->index.get()) return dictionary->index_path;
  }
  return {};
}

core::Status Generator::Body::render_into(std::string_view& rest, Sentence& result) {
  // A sentence without memory fails; those behind it are rendered. Its forced target is lost with it, as in a run.
  std::array<char, kSentenceSize> text;
  core::Status code = core::Status::memory;
  try {
    lookups_attend(*session_, loaded_->words.files(), loaded_->cooccurrence.files());
    code = render_sentence(*session_, loaded_->words.files(), rest, text.data(), loaded_->cooccurrence.files(),
                           settings_->post_edit, &notes_);
  } catch (const std::bad_alloc&) {
    session_->state.forced_node = nullptr;
  }
  if (code == core::Status::ok) result.text = plain_sentence(*session_, text.data());
  return code;
}

void Generator::Body::finish(Sentence& result, core::Status code, bool is_over_time, const TextWatch& text_before) {
  if (code == core::Status::ok) {
    result.status = Status::done;
  } else if (code == core::Status::stopped) {
    result.status = is_over_time ? Status::over_time : Status::stopped;
  }
  result.code = lexon::code(code);
  result.label = label_in(result.trace);
  // Messages in the order in which a reader meets them: encoding, lines, the end, the dictionary, and last why it
  // failed.
  text_notes_append(result.messages, {}, notes_.text, text_before);
  for (Remark& remark : remarks_) {
    result.messages.push_back({MessageKind::error, {}, remark.line, 0, std::move(remark.text)});
  }
  if (notes_.unclosed.number != 0) {
    result.messages.push_back({MessageKind::error, {}, notes_.unclosed.number, 0, notes_.unclosed.why});
  }
  if (const LookupDamage& damage = session_->damage; damage.blocks != 0) {
    error_append(result.messages, file_behind(damage.stream),
                 "damaged at offset " + std::to_string(damage.offset) + "; \"lexon-dict check\" tells more");
  }
  // What a remark has said need not be said again.
  const bool is_told = code == core::Status::rule_base || code == core::Status::no_effect;
  if (result.status == Status::failed && (result.messages.empty() || !is_told)) {
    error_append(result.messages, {}, reason_of(code));
  }
}

// Renders the next sentence of `rest`. False when there is none, or the call is to stop.
bool Generator::Body::render_next(std::string_view& rest) {
  if (!begin_sentence()) return false;
  remarks_.clear();
  session_->damage = {};
  const TextWatch text_before = notes_.text;
  const std::int64_t steps_before = session_->state.steps;
  const Clock::time_point start = Clock::now();
  Sentence result;
  // What the reader takes of it is this sentence.
  const std::string_view graph = rest;
  const core::Status code = render_into(rest, result);
  const bool is_over_time = end_sentence();
  result.seconds = std::chrono::duration<double>(Clock::now() - start).count();
  result.steps = session_->state.steps - steps_before;
  // Before the pool is released, and before the text of the output is taken away.
  result.memory_bytes = session_->pool.bytes_used();
  result.leaves_target = session_->state.forced_node != nullptr;
  session_->pool.release_all();
  result.trace = session_->output.take();
  const bool has_ended = code == core::Status::end_of_input;
  if (has_ended && result.trace.empty()) return false;
  finish(result, code, is_over_time, text_before);
  if (result.status != Status::done) result.fallback = fallback_words(graph.substr(0, graph.size() - rest.size()));
  // A run writes no banner for what the end of its input leaves open.
  if (!has_ended) result.trace += banner_of(result.status);
  results_.push_back(std::move(result));
  return !has_ended;
}

// For the workbench, which watches the search from inside.
Session& Inside::session(Generator& generator) {
  return generator.body_->session();
}

Generator::Generator(Grammar grammar) : body_(std::make_unique<Body>(std::move(grammar))) {}

Generator::~Generator() = default;
Generator::Generator(Generator&& other) noexcept = default;
Generator& Generator::operator=(Generator&& other) noexcept = default;

// The public functions; moved-from objects may only be destroyed or assigned to.
std::vector<Sentence> Generator::render(std::string_view graphs, const Settings& settings) {
  return body_->render(graphs, settings);
}

void Generator::stop() noexcept {
  body_->stop();
}

}  // namespace v1
}  // namespace lexon
