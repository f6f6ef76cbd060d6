#include "lab/bench.hpp"

#include <algorithm>
#include <exception>
#include <thread>

#include "front/process.hpp"
#include "lab/progress.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// ---- Handing on. An observer may be added or removed between sentences only; what all of them are told is the same.

void Watchers::sentence_begins(Session& session) {
  // The counter of the session goes on from sentence to sentence.
  first_step_ = session.state.steps;
  is_over_ = false;
  for (Observer* each : observers_) each->sentence_begins(session);
}

void Watchers::generated(Session& session, core::Status status) {
  for (Observer* each : observers_) each->generated(session, status);
}

void Watchers::sentence_ends(Session& session, core::Status status) {
  for (Observer* each : observers_) each->sentence_ends(session, status);
}

// The search counts its passes itself, also those that end without an event; so the counter is looked at whenever
// something comes by. A search inside one pass shows itself in undone steps and in words given up.
void Watchers::count(Session& session) {
  // 0 stands for no limit.
  if (limit_ <= 0 || session.state.steps - first_step_ < limit_) return;
  is_over_ = true;
  session.stop_requested = true;
}

void Watchers::offered(Session& session, const Window& window, const RuleCandidate* list) {
  count(session);
  for (Observer* each : observers_) each->offered(session, window, list);
}

void Watchers::offered_in_post_edit(Session& session, const Window& window, std::span<const RuleBlock> rules) {
  count(session);
  for (Observer* each : observers_) each->offered_in_post_edit(session, window, rules);
}

void Watchers::tried(Session& session, const RuleCandidate& candidate, const Window& before, const Window& after,
                     Fit fit) {
  for (Observer* each : observers_) each->tried(session, candidate, before, after, fit);
}

void Watchers::applied(Session& session, const RuleCandidate& candidate, const Window& after) {
  for (Observer* each : observers_) each->applied(session, candidate, after);
}

void Watchers::undone(Session& session, const RuleCandidate& candidate) {
  count(session);
  for (Observer* each : observers_) each->undone(session, candidate);
}

void Watchers::word_given_up(Session& session, const Node& node) {
  count(session);
  for (Observer* each : observers_) each->word_given_up(session, node);
}

void Watchers::scope_entered(Session& session, const RuleCandidate& candidate, int scope) {
  for (Observer* each : observers_) each->scope_entered(session, candidate, scope);
}

void Watchers::scope_returned_into(Session& session, int scope) {
  for (Observer* each : observers_) each->scope_returned_into(session, scope);
}

void Watchers::scope_left(Session& session, int scope, bool has_failed) {
  for (Observer* each : observers_) each->scope_left(session, scope, has_failed);
}

// The session knows of a stop alone, and not who asked for it.
std::string Rendered::status() const {
  return is_over_steps && sentence.status == Status::stopped ? "over steps" : to_string(sentence.status);
}

Bench::Bench(const Project& project) : keep_going_([] { return !is_interrupted(); }), generator_(project.grammar) {
  // Every event of the engine goes to the watchers, also where none of them wants it.
  Inside::session(generator_).observer = &watchers_;
}

// Of several sentences in a text, which are rendered in one go, the limit of steps counts for each; that one was over it is
// known of the last.
std::vector<Rendered> Bench::render(const std::string& text, const RenderOptions& options) {
  Settings settings;
  settings.post_edit = options.post_edit;
  settings.time_limit = options.seconds;
  // Asked now and then by the search: an interrupt, or a page that no longer wants the answer.
  settings.keep_going = keep_going_;
  watchers_.set_limit(options.steps);
  std::vector<Rendered> results;
  for (Sentence& sentence : generator_.render(text, settings)) {
    results.push_back({std::move(sentence), watchers_.is_over_steps()});
  }
  return results;
}

void for_each_rendered(Bench& bench, const RenderOptions& options,
                       const std::function<void(const GraphText& graph, const Rendered& rendered)>& use) {
  for_each_sentence(options, [&](const GraphText& graph) {
    for (const Rendered& rendered : bench.render(graph.text, options)) use(graph, rendered);
  });
}

void for_each_on(unsigned threads, std::size_t count,
                 const std::function<void(unsigned thread, std::size_t number)>& use) {
  Progress progress(count);
  std::vector<std::exception_ptr> faults(threads);
  const auto work = [&](unsigned thread) {
    // Stretches, not turns: what is added up by thread is then in the order of the sentences.
    const std::size_t begin = count * thread / threads;
    const std::size_t end = count * (thread + 1) / threads;
    try {
      for (std::size_t i = begin; i < end; ++i) {
        use(thread, i);
        progress.passed();
      }
    } catch (...) {
      // An exception must not leave its thread; the first of them is thrown again when all are through.
      faults[thread] = std::current_exception();
    }
  };
  std::vector<std::thread> others;
  for (unsigned thread = 1; thread < threads; ++thread) others.emplace_back(work, thread);
  // The calling thread takes a stretch, too.
  work(0);
  for (std::thread& other : others) other.join();
  for (const std::exception_ptr& fault : faults) {
    if (fault != nullptr) std::rethrow_exception(fault);
  }
}

// Stretches want the number of sentences, so with threads the whole input is in memory.
void for_each_sentence_on(unsigned threads, const RenderOptions& options,
                          const std::function<void(unsigned thread, const GraphText& sentence)>& use) {
  if (threads <= 1) return for_each_sentence(options, [&use](const GraphText& sentence) { use(0, sentence); });
  std::vector<GraphText> sentences;
  for_each_sentence(options, [&sentences](const GraphText& sentence) { sentences.push_back(sentence); });
  for_each_on(threads, sentences.size(), [&](unsigned thread, std::size_t i) { use(thread, sentences[i]); });
}

void tell_failure(const GraphText& graph, const Rendered& rendered) {
  const std::string& label = rendered.sentence.label;
  tell_line(graph.place() + ": " + label + (label.empty() ? "" : ": ") + rendered.status());
  for (const Message& message : rendered.sentence.messages) tell_line("  " + to_string(graph.placed(message)));
  if (!rendered.sentence.fallback.empty()) tell_line("  its words: " + escaped(rendered.sentence.fallback));
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
