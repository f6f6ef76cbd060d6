// Why a rule did not work in a sentence: for the command and for the shell.
#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "lab/bench.hpp"
#include "lab/project.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// What became of a rule at the windows of a sentence. Equal answers are counted, not kept.
class RuleWatch final : public Observer {
 public:
  enum class Answer {
    worked,            // it was carried out, or has narrowed words
    refused,           // it was tried and refused
    other_came_first,  // it was offered, and another rule fitted before its turn
    not_offered,       // the index did not offer it
  };
  struct Finding {
    Answer answer{};
    std::vector<Miss> misses;     // empty: nothing was missing
    const Rule* other = nullptr;  // that came first
    std::int64_t count = 0;
    std::string window;  // the first of them
    std::string list;
  };

  RuleWatch(const Project& project, const Rule& rule) : project_(project), rule_(rule) {}

  // Those of the last sentence: what worked first, then the nearest misses.
  [[nodiscard]] std::vector<Finding> findings() const;
  [[nodiscard]] std::int64_t windows() const { return windows_; }
  // Windows at which the patterns that are held against the window fitted, each for itself.
  [[nodiscard]] std::int64_t fits(Side side) const { return side == Side::left ? left_fits_ : right_fits_; }
  [[nodiscard]] const std::string& first_fit(Side side) const { return side == Side::left ? left_fit_ : right_fit_; }

  void sentence_begins(Session& session) override;
  void generated(Session& session, core::Status status) override;
  void offered(Session& session, const Window& window, const RuleCandidate* list) override;
  void offered_in_post_edit(Session& session, const Window& window, std::span<const RuleBlock> rules) override;
  void tried(Session& session, const RuleCandidate& candidate, const Window& before, const Window& after,
             Fit fit) override;

 private:
  void look(Session& session, const Window& window, bool is_offered);
  void note(Answer answer, std::vector<Miss>&& misses, const Rule* other, const std::string& window,
            const std::string& list);

  const Project& project_;
  const Rule& rule_;
  std::map<std::string, Finding> findings_;  // by what makes two of them equal
  std::int64_t windows_ = 0;                 // at which a rule of this type could be asked for
  std::int64_t left_fits_ = 0;
  std::int64_t right_fits_ = 0;
  std::string left_fit_;
  std::string right_fit_;
  bool is_post_edit_ = false;
  // Of the last list that was asked for, until the rule is tried or another one fits.
  bool waits_ = false;
  std::vector<Miss> would_miss_;  // what the rule lacked when that list was asked for
  std::string window_;
  std::string list_;
};

// Renders the sentence once for each rule at `place` ("203", "rules.txt:203") and writes to `out` what became of it. False
// if the sentence came to nothing. Throws Fault where no rule stands.
bool why_sentence(std::ostream& out, const Project& project, Bench& bench, const GraphText& graph,
                  const RenderOptions& limits, const std::string& place);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
