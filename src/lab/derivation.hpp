// What stands of a sentence's search, step by step, and what was taken back on the way.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "lab/project.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// A rule that was carried out, or a word test that has narrowed the words.
struct Step {
  std::int64_t number = 0;  // in the order of the search, from 1
  const Rule* rule = nullptr;
  const RuleCandidate* candidate = nullptr;  // to be compared, never read
  int depth = 0;                             // scopes around it
  bool is_post_edit = false;
  std::string before{};            // the list when the rule fitted, without what it has brought in
  std::string after{};             // the two places that it worked on, or that it has left
  std::string changes{};           // of the attributes: "dog +def -x"
  std::int64_t undone_before = 0;  // steps between the one before and this that were taken back
  [[nodiscard]] bool is_plain_move() const;
};

// What happened, in the order of time; for who wants to see what was taken back too.
struct LogLine {
  std::int64_t number = 0;  // rising
  std::string text{};       // of what is no step
  Step step{};              // without a rule: it is no step
  bool is_undone = false;
};

// Where the search had come when it stood deepest.
struct Deepest {
  std::size_t steps = 0;  // that stood
  std::string list;
  std::vector<std::string> unfollowed;  // relations: "agn(sleep(>rest), dog(>animal))"
  std::vector<std::string> debts;       // marks that word tests ask about: "dog: @def (asked about by rules.txt:12)"
};

// Follows one sentence after the other. It keeps the steps that stand and a part of the rest, however long the search.
class Derivation final : public Observer {
 public:
  explicit Derivation(const Project& project);
  // Every rule that touches a word with this surface form or concept is noted. Empty: none.
  void follow_word(std::string word) { word_ = std::move(word); }
  // Keeps what was taken back, for `log`.
  void keep_all(bool wanted) { keeps_all_ = wanted; }

  [[nodiscard]] const std::deque<Step>& standing() const { return standing_; }
  [[nodiscard]] std::int64_t forgotten() const { return forgotten_; }  // steps that stand in front of those kept
  [[nodiscard]] std::int64_t undone_at_end() const { return undone_at_end_; }
  [[nodiscard]] std::int64_t undone() const { return undone_; }
  [[nodiscard]] std::int64_t steps() const { return steps_; }
  [[nodiscard]] const std::deque<LogLine>& log() const { return log_; }
  [[nodiscard]] std::int64_t log_forgotten() const { return log_forgotten_; }
  [[nodiscard]] const Deepest& deepest() const { return deepest_; }
  [[nodiscard]] const std::deque<Step>& last() const { return last_; }
  // The words that the dictionary has for it in this graph, as entries.
  [[nodiscard]] const std::vector<std::string>& word_entries() const { return word_entries_; }
  struct Touch {
    std::string text;
    std::int64_t count = 1;
  };
  [[nodiscard]] const std::vector<Touch>& touches() const { return touches_; }

  // Steps that were taken back on account of a word test.
  struct TakenBack {
    std::int64_t asked = 0;  // how often
    std::int64_t steps = 0;
    std::string where;  // the list at the first time
  };
  [[nodiscard]] const std::map<const Rule*, TakenBack>& taken_back() const { return taken_back_; }
  // The windows in which no rule was left, and what was taken back from there; not all, if there are many.
  [[nodiscard]] const std::map<std::string, TakenBack>& dead_ends() const { return dead_ends_; }

  void sentence_begins(Session& session) override;
  void generated(Session& session, core::Status status) override;
  void tried(Session& session, const RuleCandidate& candidate, const Window& before, const Window& after,
             Fit fit) override;
  void applied(Session& session, const RuleCandidate& candidate, const Window& after) override;
  void undone(Session& session, const RuleCandidate& candidate) override;
  void offered(Session& session, const Window& window, const RuleCandidate* list) override;
  void offered_in_post_edit(Session& session, const Window& window, std::span<const RuleBlock> rules) override;
  void word_given_up(Session& session, const Node& node) override;
  void scope_entered(Session& session, const RuleCandidate& candidate, int scope) override;
  void scope_returned_into(Session& session, int scope) override;
  void scope_left(Session& session, int scope, bool has_failed) override;

 private:
  // The window as it was when the rule last fitted.
  struct Fitted {
    const RuleCandidate* candidate = nullptr;
    std::string before;
    const Node* nodes[2] = {nullptr, nullptr};
    std::string attrs[2];
  };

  void stand(Session& session, Step&& step);
  void log_append(LogLine&& line);
  void note_deepest(Session& session, const Window& window);
  void note_touch(const std::string& text);
  [[nodiscard]] Step step_of(const Session& session, const RuleCandidate& candidate);
  void turn(Session& session, const Window& window);
  [[nodiscard]] bool is_followed(const Node* node) const;
  [[nodiscard]] std::string changes() const;

  const Project& project_;
  std::map<std::string, const Rule*, std::less<>> debts_;  // marks that word tests ask about and rules strike out
  std::string word_;
  bool keeps_all_ = false;

  // Of the sentence.
  std::deque<Step> standing_;
  std::int64_t forgotten_ = 0;
  std::int64_t undone_at_end_ = 0;
  std::int64_t undone_ = 0;
  std::int64_t steps_ = 0;
  std::deque<LogLine> log_;
  std::int64_t log_forgotten_ = 0;
  Deepest deepest_;
  std::deque<Step> last_;
  std::vector<std::string> word_entries_;
  std::vector<Touch> touches_;
  std::map<const Rule*, TakenBack> taken_back_;
  std::map<std::string, TakenBack> dead_ends_;
  const Rule* asking_ = nullptr;   // the word test on whose account steps are taken back
  TakenBack* dead_end_ = nullptr;  // from which steps are taken back
  Fitted fitted_;
  std::vector<Fitted> outer_;  // of the scopes around
  std::string window_;         // at the last try
  std::string list_;
  bool is_post_edit_ = false;
};

}  // namespace lab
}  // namespace v1
}  // namespace lexon
