// How often each rule and each of its conditions was of use, over any number of sentences and runs.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "lab/project.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// Of an attribute condition on a node that stands there: the places that had what it wants, and those that had not. Of
// any other condition: the tries of the rule in which it held, and those that it spoiled.
struct ConditionCount {
  std::string text;  // "LNODE ^PL", "SUF [the]"
  std::int64_t hits = 0;
  std::int64_t misses = 0;
  std::string example;  // the first sentence with a hit; may be empty
};

struct RuleCount {
  std::string file;          // the rule text, or the source that it comes from
  std::uint32_t line = 0;    // 0: not known
  std::string text;          // canonical
  std::int64_t offered = 0;  // windows for which the index gave the rule
  std::int64_t tried = 0;
  std::int64_t hits = 0;    // carried out, words narrowed, or a step back asked for
  std::int64_t undone = 0;  // of these, taken back
  std::string example;      // the first sentence with a hit; may be empty
  std::vector<ConditionCount> conditions;
};

// What one run has counted, or several that were merged.
struct Coverage {
  std::int64_t runs = 0;
  std::int64_t sentences = 0;
  std::int64_t windows = 0;
  std::vector<RuleCount> rules;  // in the order of the grammar
};

// Counts while sentences are rendered, for one thread. The project has to outlive it.
class CoverageCounter final : public Observer {
 public:
  explicit CoverageCounter(const Project& project);
  // The name under which what is counted from now on is shown.
  void set_sentence(std::string name) { sentence_ = std::move(name); }
  [[nodiscard]] Coverage result() const;

  void sentence_begins(Session& session) override;
  void generated(Session& session, core::Status status) override;
  void offered(Session& session, const Window& window, const RuleCandidate* list) override;
  void offered_in_post_edit(Session& session, const Window& window, std::span<const RuleBlock> rules) override;
  void tried(Session& session, const RuleCandidate& candidate, const Window& before, const Window& after,
             Fit fit) override;
  void applied(Session& session, const RuleCandidate& candidate, const Window& after) override;
  void undone(Session& session, const RuleCandidate& candidate) override;

 private:
  // Places of one side, by the attributes that they had.
  struct Seen {
    std::int64_t places = 0;
    std::string example;
  };
  using Places = std::unordered_map<std::string, Seen>;
  void count_window(const Session& session, const Window& window);
  void count_place(const Session& session, const Node* node, Places& places);
  void hit(RuleCount& count);

  std::unordered_map<const Rule*, std::size_t> numbers_;  // places in the next two
  std::vector<const Rule*> list_;
  Coverage coverage_;                                                       // without conditions, which `result` adds
  std::vector<std::unordered_map<const CondItem*, std::int64_t>> spoiled_;  // by number of the rule
  std::vector<std::int64_t> fits_;                                          // by number of the rule
  Places left_[2];                                                          // of generation and of post-edit
  Places right_[2];
  std::int64_t places_[2] = {0, 0};  // windows, of generation and of post-edit
  std::string sentence_;
  bool is_post_edit_ = false;
};

// Reads what `lexon-lab coverage --data` has written. Throws Fault.
[[nodiscard]] Coverage coverage_read(const std::string& path);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
