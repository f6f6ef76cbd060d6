#include "lab/check_order.hpp"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

#include "lab/progress.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// What a rule demands, as numbers: 8 bits of what is demanded of whom, 24 of nothing, 32 of the name.
using Demand = std::uint64_t;
using Demands = std::vector<Demand>;  // in ascending order, each once

Demand demand(unsigned kind, NameId name) {
  return static_cast<Demand>(kind) << 56 | name;
}

// Bits of the kind of a demand: of the left word's attributes if none is set.
constexpr unsigned kOfRight = 1;
constexpr unsigned kForbidden = 2;
constexpr unsigned kOfForm = 4;
constexpr unsigned kOfConcept = 8;
constexpr unsigned kOfInserted = 16;  // of a word that comes in
constexpr unsigned kLabel = 32;       // the relation over which it does

unsigned kind_of(const RuleItem& item) {
  unsigned kind = item.side == Side::right ? kOfRight : 0;
  if (item.op == kOpNot) kind |= kForbidden;
  if (item.kind == ItemKind::hw) kind |= kOfForm;
  if (item.kind == ItemKind::cw) kind |= kOfConcept;
  return kind;
}

// In ascending order, each once.
void make_set(Demands& demands) {
  std::ranges::sort(demands);
  demands.erase(std::unique(demands.begin(), demands.end()), demands.end());
}

// What the words that stand there must be like, and, for a word that comes in over a relation, that relation and that
// word.
Demands demands_of(const RuleView& rule) {
  Demands result;
  const bool has_relation = rule.first(Place::relation) != nullptr;
  for (const RuleItem& item : rule.items) {
    // A word that the rule names itself makes no demand on the list; one that comes over a relation has to be there
    // in the graph.
    const bool is_inserted = rule.quote(item.side);
    if (item.place == Place::relation && &item == rule.first(Place::relation, item.side)) {
      result.push_back(
          demand(kLabel | (item.side == Side::right ? kOfRight : 0) | (is_inserted ? kOfInserted : 0), item.name));
    }
    if (item.place != Place::cond || (is_inserted && !has_relation)) continue;
    const bool is_tested = item.kind == ItemKind::attribute || item.op == kOpHas || item.op == kOpNot;
    if (is_tested) result.push_back(demand(kind_of(item) | (is_inserted ? kOfInserted : 0), item.name));
  }
  make_set(result);
  return result;
}

// Of names: which of them only boundaries have, and which no boundary has.
struct BoundaryNames {
  std::vector<NameId> of_boundaries;
  const std::function<bool(NameId)>& keeps_off;

  [[nodiscard]] bool is_of_boundaries(Demand one) const {
    return std::ranges::find(of_boundaries, static_cast<NameId>(one)) != of_boundaries.end();
  }
};

// Can a demand be met without being made: is it one that forbids something which another demand rules out?
bool may_be_implied(Demand one, const BoundaryNames& boundaries) {
  const auto kind = static_cast<unsigned>(one >> 56);
  return (kind & kForbidden) != 0 && ((kind & (kOfForm | kOfConcept)) != 0 || boundaries.is_of_boundaries(one));
}

// Does what meets `met` meet `demands`? A demanded form rules all others out, and so does a concept word; an attribute
// that no boundary has rules boundaries out.
bool are_met(const Demands& demands, const Demands& met, const BoundaryNames& boundaries) {
  return std::ranges::all_of(demands, [&](Demand one) {
    if (std::ranges::binary_search(met, one)) return true;
    if (!may_be_implied(one, boundaries)) return false;
    const auto kind = static_cast<unsigned>(one >> 56);
    const bool is_attribute = (kind & (kOfForm | kOfConcept)) == 0;
    return std::ranges::any_of(met, [&](Demand other) {
      if (other >> 56 != (kind & ~kForbidden)) return false;
      const auto name = static_cast<NameId>(other);
      return is_attribute ? boundaries.keeps_off(name) : name != static_cast<NameId>(one);
    });
  });
}

bool has_demands(const RuleView& rule, Side side) {
  return std::ranges::any_of(rule.items,
                             [side](const RuleItem& item) { return item.place == Place::cond && item.side == side; });
}

bool is_one_of(std::uint8_t type, std::string_view types) {
  return types.find(static_cast<char>(type)) != std::string_view::npos;
}

// Finds rules whose demands are among given ones: each rule stands under the rarest of its demands.
class RulesByDemand {
 public:
  RulesByDemand(const std::vector<Demands>& demands, const std::vector<bool>& is_in, const BoundaryNames& boundaries) {
    std::unordered_map<Demand, std::uint32_t> counts;
    for (std::size_t i = 0; i < demands.size(); ++i) {
      if (!is_in[i]) continue;
      for (const Demand one : demands[i]) ++counts[one];
    }
    for (std::uint32_t i = 0; i < demands.size(); ++i) {
      if (!is_in[i]) continue;
      if (demands[i].empty()) {
        without_.push_back(i);
        continue;
      }
      // What may be implied by another demand is no sign.
      const auto rarity = [&](Demand one) { return std::pair(may_be_implied(one, boundaries), counts[one]); };
      // The rarest demand keeps the lists short: twelve thousand rules would else be compared pair by pair.
      const Demand sign = *std::ranges::min_element(demands[i], {}, rarity);
      if (rarity(sign).first) {
        without_.push_back(i);
      } else {
        under_[sign].push_back(i);
      }
    }
  }

  // Calls `use` with the numbers of rules that may be met by `met`, and more, till it says true.
  template <typename Use>
  void each(const Demands& met, const Use& use) const {
    for (const std::uint32_t i : without_) {
      if (use(i)) return;
    }
    for (const Demand one : met) {
      const auto found = under_.find(one);
      if (found == under_.end()) continue;
      for (const std::uint32_t i : found->second) {
        if (use(i)) return;
      }
    }
  }

 private:
  std::unordered_map<Demand, std::vector<std::uint32_t>> under_;  // numbers of rules, by their sign
  std::vector<std::uint32_t> without_;                            // those without a sign, which any others may meet
};

class OrderCheck {
 public:
  OrderCheck(const CheckInput& input, const RuleBase& base, const OrderContext& context, const Names& names,
             std::vector<Finding>& findings)
      : input_(input), rules_(base.rules), context_(context), findings_(findings) {
    for (const char* name : {"SHEAD", "STAIL", "CHEAD", "CTAIL"}) {
      if (const NameId id = names.find(name); id != kNoName) boundaries_.of_boundaries.push_back(id);
    }
  }

  void run() {
    demands_.reserve(rules_.size());
    for (const RuleView& rule : rules_) demands_.push_back(demands_of(rule));
    check_first();
    for (const RuleView& rule : rules_) {
      interrupt_check();
      check_insertion(rule);
      check_move(rule);
    }
    check_pairs();
  }

 private:
  void report(const RuleView& rule, Level level, const char* code, std::string what, std::string remedy) {
    findings_.push_back(finding_at(input_.rules.file, rule.line, rule.text, rule.text.find_first_not_of(" \t"),
                                   rule.text.size(), level, code, std::move(what), std::move(remedy)));
    findings_.back().fix.old = rule.text.substr(rule.text.find_first_not_of(" \t"));
  }

  [[nodiscard]] std::string line_of(const RuleView& rule) const { return rule_line_name(input_, rule.line); }

  // --- rules that can never be first

  // Does the rule fit wherever its demands are met? Not if it asks for more than demands can tell: groups between its
  // patterns, a pair that goes together, a word for a relation on both sides, a word that may not be had.
  bool is_plain(const RuleView& rule) const {
    // The letters are types of generation that go by their two words; tests that narrow, post-edit and splits go
    // otherwise.
    if (!is_one_of(rule.type, ":LRXCU345") || rule.mid_groups != 0 || rule.first(Place::role) != nullptr) return false;
    if (rule.quote(Side::left) && rule.quote(Side::right)) return false;
    const bool is_relation = rule.first(Place::relation) != nullptr;
    const bool is_quote = rule.quote(Side::left) || rule.quote(Side::right);
    if (is_relation && !is_quote) return false;
    return !is_quote || is_relation || context_.literal_fits(rule);
  }

  // Do the groups of `first` hold wherever those of `second` do?
  static bool groups_hold(const RuleView& first, const RuleView& second) {
    if (first.pre.empty() && first.suf.empty()) return true;
    // Groups are counted from the window, and a word that comes in moves what stands there.
    const bool same_place = first.is_quote == second.is_quote && second.mid_groups == 0;
    return same_place && (first.pre.empty() || first.pre == second.pre) &&
           (first.suf.empty() || first.suf == second.suf);
  }

  // Given that its demands are met wherever those of the second are: does the first rule come before it there?
  static bool comes_first_where(const RuleView& first, const RuleView& second) {
    if (first.is_post_edit() != second.is_post_edit() || !groups_hold(first, second)) return false;
    // A forced step back, or a test whose right word narrows the other way, is another matter.
    if (second.type == rule_type::test_left || second.type == rule_type::test_right) return false;
    if (second.type == rule_type::test && has_demands(first, Side::right)) return false;
    // These two see through a scope at its entry word.
    const bool sees_through = second.type == rule_type::insertion || second.type == rule_type::test;
    if (!sees_through || first.type == rule_type::insertion) return true;
    return !has_demands(first, Side::left) && !has_demands(first, Side::right);
  }

  // Word for word, whatever the blanks and the priorities.
  static bool is_same(const RuleView& a, const RuleView& b) {
    if (a.type != b.type || a.pre != b.pre || a.suf != b.suf || a.items.size() != b.items.size()) return false;
    return std::ranges::equal(a.items, b.items, [](const RuleItem& one, const RuleItem& two) {
      return one.place == two.place && one.side == two.side && one.kind == two.kind && one.op == two.op &&
             one.name == two.name;
    });
  }

  // `is_alike`: the two demand the same. Then the later one has its turn when the search comes back, as a second choice,
  // which is a way to write grammars and no mistake.
  void report_later(const RuleView& first, const RuleView& second, bool is_alike) {
    const bool is_double = is_same(first, second);
    std::string what = is_double ? "the same rule stands in " : "wherever this rule fits, an earlier one does: ";
    what += line_of(first);
    if (first.priority != second.priority) what += " (P" + std::to_string(first.priority) + ")";
    // With the same conditions it may be meant for when the search comes back.
    const bool is_second_choice = is_alike && !is_double && !second.is_post_edit();
    if (is_second_choice) what += "; it is tried when the search comes back";
    std::string remedy = "strike one of the two out";
    if (!is_double && first.priority == second.priority) remedy = "put this one in front, or give it a higher priority";
    if (!is_double && first.priority != second.priority) {
      remedy = "give this one a priority above " + std::to_string(first.priority);
    }
    report(second, is_second_choice ? Level::note : Level::warning, "rule-never-first", std::move(what),
           is_second_choice ? std::string() : std::move(remedy));
    if (is_double) findings_.back().fix.kind = Fix::Kind::strike_line;
  }

  // For each rule the first one found that always comes before it. Rules stand in the order of trial, so that an earlier
  // number is an earlier turn.
  void check_first() {
    std::vector<bool> is_in(rules_.size());
    for (std::size_t i = 0; i < rules_.size(); ++i) is_in[i] = is_plain(rules_[i]);
    const RulesByDemand index(demands_, is_in, boundaries_);
    for (std::uint32_t second = 0; second < rules_.size(); ++second) {
      const RuleView& rule = rules_[second];
      index.each(demands_[second], [&](std::uint32_t first) {
        if (first >= second || !are_met(demands_[first], demands_[second], boundaries_)) return false;
        if (!comes_first_where(rules_[first], rule)) return false;
        report_later(rules_[first], rule, demands_[first] == demands_[second]);
        return true;
      });
    }
  }

  // --- rules that fit their own result

  // Does an action of this side break a condition of it?
  bool breaks_itself(const RuleView& rule, Side side) const {
    return std::ranges::any_of(rule.items, [&](const RuleItem& action) {
      return action.place == Place::action && action.side == side &&
             std::ranges::any_of(rule.items, [&](const RuleItem& condition) {
               return condition.place == Place::cond && condition.side == side && breaks(action, condition);
             });
    });
  }

  // Does the action make the condition fail? One that sets another form breaks each condition on the old one.
  static bool breaks(const RuleItem& action, const RuleItem& condition) {
    if (action.kind != condition.kind) return false;
    const bool is_same_name = action.name == condition.name;
    if (action.kind == ItemKind::hw) return condition.op == kOpNot ? is_same_name : !is_same_name;
    // No action changes a concept word.
    if (action.kind == ItemKind::cw) return false;
    return is_same_name && (action.op == kOpDelete ? condition.op != kOpNot : condition.op == kOpNot);
  }

  // A word that the rule itself names can come in any number of times.
  void check_insertion(const RuleView& rule) {
    if (!rule.inserts() || rule.quote(Side::left) == rule.quote(Side::right)) return;
    if (rule.first(Place::relation) != nullptr || rule.mid_groups != 0) return;
    // Where the new word stands, the pair of the window changes; what is left is the word that was there, and the
    // outer groups.
    const Side in = rule.quote(Side::left) ? Side::left : Side::right;
    const Side there = other(in);
    if (!(in == Side::left ? rule.pre : rule.suf).empty() || breaks_itself(rule, there)) return;
    // Post-edit goes on to the left, and does not come back to the pair.
    if (rule.is_post_edit() && in == Side::left && has_demands(rule, there)) return;
    report(rule, Level::error, "endless-insertion",
           "this rule fits again beside the word that it has brought in, for ever",
           "let an action of the word that is there strike out one of its conditions, as in {@def: -@def}");
  }

  // What is known of the two words: demands that hold.
  using Facts = Demands;

  // What holds behind an application: actions take effect in their order, and each replaces what it contradicts.
  static void learn(Facts& facts, const RuleView& rule) {
    for (const RuleItem& item : rule.items) {
      if (item.place != Place::action || item.kind == ItemKind::cw) continue;
      const unsigned side = item.side == Side::right ? kOfRight : 0;
      if (item.kind == ItemKind::hw) {
        std::erase_if(
            facts, [side](Demand fact) { return (fact >> 56 & ~static_cast<Demand>(kForbidden)) == (side | kOfForm); });
        facts.push_back(demand(side | kOfForm, item.name));
        continue;
      }
      const Demand has = demand(side, item.name);
      const Demand has_not = demand(side | kForbidden, item.name);
      // Both are taken out first, so that a fact and its contrary never stand together.
      std::erase_if(facts, [has, has_not](Demand fact) { return fact == has || fact == has_not; });
      facts.push_back(item.op == kOpDelete ? has_not : has);
    }
    make_set(facts);
  }

  // An L and an R, or in post-edit a PR and a PL, pass the window to each other.
  void check_move(const RuleView& rule) {
    const bool goes_back = rule.type == rule_type::left || rule.type == rule_type::post_right;
    if (!goes_back || breaks_itself(rule, Side::left) || breaks_itself(rule, Side::right)) return;
    // What moves the other way in the same pass.
    const std::uint8_t onward = rule.type == rule_type::left ? rule_type::right : rule_type::post_left;
    // The word that both pairs share; of the rest of the pair nothing is known, so the plainest rule onward is meant.
    const Side kept = rule.type == rule_type::left ? Side::left : Side::right;
    Facts known = demands_of(rule);
    learn(known, rule);
    const RuleView* best = nullptr;
    std::size_t fewest = 0;
    for (const RuleView& next : rules_) {
      if (next.type != onward || contradicts(next, other(kept), known, kept)) continue;
      if (best != nullptr && next.items.size() >= fewest) continue;
      best = &next;
      fewest = next.items.size();
    }
    if (best == nullptr) return;
    report(rule, Level::warning, "endless-pair",
           "this rule moves the window back and changes nothing that it asks for, and the rule of " + line_of(*best) +
               " moves it on again, for ever",
           "let an action strike out a condition of its own side, as in {!go: -!go}");
  }

  // Can the rule not fit where the word on `side` is the one on `known_side` of which something is known?
  static bool contradicts(const RuleView& rule, Side side, const Facts& known, Side known_side) {
    return std::ranges::any_of(rule.items, [&](const RuleItem& item) {
      if (item.place != Place::cond || item.side != side) return false;
      // The demand is turned to the side on which the word stands in `known`, and asked for its contrary.
      const unsigned kind = (kind_of(item) & ~kOfRight) | (known_side == Side::right ? kOfRight : 0);
      return std::ranges::binary_search(known, demand(kind ^ kForbidden, item.name));
    });
  }

  // Rules that change words in place, each making what the other asks for.
  void check_pairs() {
    std::vector<bool> is_in(rules_.size());
    for (std::size_t i = 0; i < rules_.size(); ++i) {
      const RuleView& rule = rules_[i];
      is_in[i] = rule.inserts() && !rule.quote(Side::left) && !rule.quote(Side::right) && rule.pre.empty() &&
                 rule.suf.empty() && rule.first(Place::relation) == nullptr;
    }
    const RulesByDemand index(demands_, is_in, boundaries_);
    for (std::uint32_t first = 0; first < rules_.size(); ++first) {
      if (!is_in[first]) continue;
      Facts behind_first = demands_[first];
      learn(behind_first, rules_[first]);
      index.each(behind_first, [&](std::uint32_t second) {
        // Each pair is looked at once, from its first rule.
        if (second <= first || rules_[first].is_post_edit() != rules_[second].is_post_edit()) return false;
        if (!are_met(demands_[second], behind_first, boundaries_)) return false;
        Facts behind_both = behind_first;
        learn(behind_both, rules_[second]);
        if (!are_met(demands_[first], behind_both, boundaries_)) return false;
        report(rules_[second], Level::error, "endless-pair",
               "this rule and that of " + line_of(rules_[first]) + " undo each other on one pair of words, for ever",
               "let one of them leave a mark that the other forbids");
        return true;
      });
    }
  }

  const CheckInput& input_;
  const std::vector<RuleView>& rules_;
  const OrderContext& context_;
  BoundaryNames boundaries_{{}, context_.keeps_off_boundary};
  std::vector<Finding>& findings_;
  std::vector<Demands> demands_;  // by rule
};

}  // namespace

void check_order(const CheckInput& input, const RuleBase& base, const OrderContext& context, const Names& names,
                 std::vector<Finding>& findings) {
  OrderCheck(input, base, context, names, findings).run();
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
