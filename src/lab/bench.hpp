// Sentences rendered in sight of observers, and within limits.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "lab/options.hpp"
#include "lab/project.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// Hands on to several observers, in order, and ends a sentence that takes more steps than it may. The observers are not
// owned.
class Watchers final : public Observer {
 public:
  void add(Observer& observer) { observers_.push_back(&observer); }
  void remove(Observer& observer) { std::erase(observers_, &observer); }
  // Steps of the search for each sentence; 0: any number.
  void set_limit(std::int64_t steps) { limit_ = steps; }
  // Was the last sentence ended for its steps?
  [[nodiscard]] bool is_over_steps() const { return is_over_; }

  void sentence_begins(Session& session) override;
  void generated(Session& session, core::Status status) override;
  void sentence_ends(Session& session, core::Status status) override;
  void offered(Session& session, const Window& window, const RuleCandidate* list) override;
  void offered_in_post_edit(Session& session, const Window& window, std::span<const RuleBlock> rules) override;
  void tried(Session& session, const RuleCandidate& candidate, const Window& before, const Window& after,
             Fit fit) override;
  void applied(Session& session, const RuleCandidate& candidate, const Window& after) override;
  void undone(Session& session, const RuleCandidate& candidate) override;
  void word_given_up(Session& session, const Node& node) override;
  void scope_entered(Session& session, const RuleCandidate& candidate, int scope) override;
  void scope_returned_into(Session& session, int scope) override;
  void scope_left(Session& session, int scope, bool has_failed) override;

 private:
  void count(Session& session);

  std::vector<Observer*> observers_;
  std::int64_t limit_ = 0;
  std::int64_t first_step_ = 0;  // what the session, which never sets it back, had counted when the sentence began
  bool is_over_ = false;
};

// What came of a sentence of an input.
struct Rendered {
  Sentence sentence;
  bool is_over_steps = false;

  [[nodiscard]] bool is_done() const { return sentence.status == Status::done; }
  // "done", "failed", "over time", "over steps", "stopped".
  [[nodiscard]] std::string status() const;
};

// A generator with its observers, for one thread. The project has to outlive it.
class Bench {
 public:
  explicit Bench(const Project& project);
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  Watchers& watchers() { return watchers_; }
  // The sentences of the text, most often one. Of `options` only the limits and post-edit count.
  [[nodiscard]] std::vector<Rendered> render(const std::string& text, const RenderOptions& options);
  // Asked now and then while sentences are rendered: false stops the one under way. Without it, the interrupt key does.
  void set_keep_going(std::function<bool()> asked) { keep_going_ = std::move(asked); }

 private:
  Watchers watchers_;  // the generator's session points to it, so a bench stays where it is
  std::function<bool()> keep_going_;
  Generator generator_;
};

// Renders the inputs sentence by sentence, in their order, and hands on what came of each.
void for_each_rendered(Bench& bench, const RenderOptions& options,
                       const std::function<void(const GraphText& graph, const Rendered& rendered)>& use);

// Does `use` for 0 to `count` - 1 on threads, each of which takes a stretch of them in order. With one thread it is the
// caller's. What a thread throws ends its stretch, and is thrown when all have ended.
void for_each_on(unsigned threads, std::size_t count,
                 const std::function<void(unsigned thread, std::size_t number)>& use);

// Renders the inputs on threads, each of which takes a stretch of the sentences in their order: what threads have counted,
// added up in the order of their numbers, is what one alone would have counted. `use` gets the number of the thread,
// from 0, and is called by that thread. With one the inputs are read sentence by sentence, else whole.
void for_each_sentence_on(unsigned threads, const RenderOptions& options,
                          const std::function<void(unsigned thread, const GraphText& sentence)>& use);

// What is told on standard error of a sentence that came to nothing: where it stands, its status and messages.
void tell_failure(const GraphText& graph, const Rendered& rendered);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
