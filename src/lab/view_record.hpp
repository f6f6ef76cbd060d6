// What the page of a run shows of a sentence, written down while it is rendered.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "lab/project.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// Texts, or rows of numbers, each kept once.
template <typename Item>
class Table {
 public:
  std::int32_t number_of(const Item& item) {
    const auto [place, is_new] = numbers_.try_emplace(item, static_cast<std::int32_t>(items_.size()));
    if (is_new) items_.push_back(&place->first);
    return place->second;
  }
  [[nodiscard]] const Item& at(std::int32_t number) const { return *items_[static_cast<std::size_t>(number)]; }
  [[nodiscard]] std::size_t size() const { return items_.size(); }
  void clear() {
    items_.clear();
    numbers_.clear();
  }
  void swap(Table& other) {
    numbers_.swap(other.numbers_);
    items_.swap(other.items_);
  }

 private:
  std::map<Item, std::int32_t> numbers_;
  std::vector<const Item*> items_;  // into `numbers_`, whose places do not move
};

// Keeps the steps of a search as a tree: all of them up to `kept`; of a longer search the first half of that many, the
// last ones, and what stands. Memory does not grow with the search.
class ViewRecord final : public Observer {
 public:
  ViewRecord(const Project& project, std::size_t kept) : project_(project), kept_(kept) {}
  // The sentences since `clear`, in the form that view.hpp describes, as far as an observer knows it.
  [[nodiscard]] std::vector<nlohmann::json>& sentences() { return sentences_; }
  void clear() { sentences_.clear(); }
  void keep(std::size_t steps) { kept_ = steps; }

  void sentence_begins(Session& session) override;
  void generated(Session& session, core::Status status) override;
  void sentence_ends(Session& session, core::Status status) override;
  void tried(Session& session, const RuleCandidate& candidate, const Window& before, const Window& after,
             Fit fit) override;
  void applied(Session& session, const RuleCandidate& candidate, const Window& after) override;
  void undone(Session& session, const RuleCandidate& candidate) override;
  void offered(Session& session, const Window& window, const RuleCandidate* list) override;
  void offered_in_post_edit(Session& session, const Window& window, std::span<const RuleBlock> rules) override;

 private:
  enum class Kind : std::uint8_t { rule, narrowed, asked, dead_end };
  // A list, and the index of the window's left place in it.
  struct Shown {
    std::int32_t list = -1;
    std::int32_t at = -1;
  };
  struct Step {
    std::int64_t number = 0;  // in the order of time, from 1
    std::int64_t size = 0;    // of it and all that followed on it; 0: it stands
    Kind kind{};
    bool is_post_edit = false;
    bool is_undone = false;
    const Rule* rule = nullptr;
    std::int32_t scope = 0;
    Shown before{};
    Shown after{};
    std::int32_t used = 0;  // of `used_`: which relations had been followed
  };
  // A place of lists.
  struct Place {
    std::string name;
    std::int32_t from = -1;                                      // the place that it is a copy of; -1: of none
    std::int32_t graph = -1;                                     // its node of the graph; -1: it has none
    const Node* source = nullptr;                                // to be compared, never read
    std::vector<std::pair<std::string, std::int32_t>> literals;  // surface form and entry of a word of a rule
  };
  // What stands in a place at a time.
  struct State {
    std::int32_t place;
    std::string text;   // as a list shows it
    std::string attrs;  // with commas between
    bool is_untouched;  // no rule has chosen its form yet
    auto operator<=>(const State&) const = default;
  };
  // The list as it was when a rule fitted.
  struct Fitted {
    const RuleCandidate* candidate = nullptr;
    Shown before{};
  };
  // A step that was not taken back, on the stack of those.
  struct Standing {
    const RuleCandidate* candidate;  // to be compared, never read
    std::int64_t number;             // of the step
  };

  void graph_read(const Session& session);
  [[nodiscard]] std::int32_t graph_node(const Node& node);
  [[nodiscard]] std::int32_t place_of(const Node& node);
  void literal_note(const Node& node);
  [[nodiscard]] std::int32_t entry_of(const Node& node, const Place& place);
  [[nodiscard]] std::int32_t state_of(const Node& node, const RuleCandidate* candidate);
  [[nodiscard]] Shown list_of(const Session& session, const Window& window, const RuleCandidate* candidate = nullptr,
                              const Node* inserted = nullptr);
  [[nodiscard]] std::int32_t used_now(const Session& session);
  [[nodiscard]] std::int32_t final_list(const Session& session);
  void final_walk(const Session& session, const Node* entry, int depth, std::vector<std::int32_t>& list);

  [[nodiscard]] Step step_of(const Session& session, Kind kind, const Rule* rule) const;
  void stand(const RuleCandidate& candidate, Step&& step);
  void leaf(Step&& step);
  void append(Step&& step);
  [[nodiscard]] std::deque<Step>::iterator step_at(std::int64_t number);  // the end: not kept
  [[nodiscard]] std::size_t standing_at(const RuleCandidate& candidate) const;
  void take_back_from(std::size_t place);
  void forget_some();
  [[nodiscard]] nlohmann::json result(const Session& session);
  [[nodiscard]] const nlohmann::json& rule_data(const Rule& rule);
  [[nodiscard]] std::string source_line(const RulePlace& place);

  const Project& project_;
  std::size_t kept_;
  std::vector<nlohmann::json> sentences_;
  std::map<const Rule*, nlohmann::json> rule_data_;
  std::map<std::string, std::vector<std::string>> source_lines_;  // by file

  // Of the sentence.
  nlohmann::json graph_;
  std::vector<const Relation*> relations_;
  std::vector<std::string> unknown_words_;
  std::unordered_map<const Node*, std::int32_t> graph_nodes_;
  std::unordered_map<const Node*, std::int32_t> places_by_node_;
  std::vector<Place> places_;
  Table<std::pair<std::string, std::string>> entries_;  // line and attributes
  Table<State> states_;
  std::vector<std::int32_t> entry_of_state_;  // by the number of the state; -1: none
  Table<std::vector<std::int32_t>> lists_;
  Table<std::string> used_;
  std::deque<Step> steps_;
  std::vector<Standing> standing_;
  std::unordered_map<const RuleCandidate*, std::size_t> standing_at_;  // the newest of each
  std::int64_t last_number_ = 0;
  std::int64_t forgotten_ = 0;  // steps
  std::vector<Fitted> fitted_;  // not carried out yet, the newest last: scopes lie between
  Shown last_offered_;
  bool has_reason_ = false;  // why steps are taken back now has been written down
  bool is_post_edit_ = false;
};

}  // namespace lab
}  // namespace v1
}  // namespace lexon
