#include "lab/check_siblings.hpp"

#include <algorithm>
#include <set>
#include <utility>

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// A custom is one that so many rules keep, and so many times more than break it.
constexpr std::size_t kFewestKeepers = 3;
constexpr std::size_t kKeepersForOne = 3;

// Lines of one kind in a row, all but one with the same priority: so many make that one stand out.
constexpr std::size_t kFewestInRow = 5;

// Priorities of neighbouring lines go down in small steps, inside which a priority that lost a digit is looked for.
constexpr int kSmallSteps = 8;

// Was a digit left out, typed twice, or exchanged with its neighbour? Another digit in its place is no sign: that is how
// 229 and 209 differ, which grammars have side by side.
bool is_slip_of(const std::string& written, const std::string& meant) {
  // A digit too many is a digit left out the other way round.
  if (written.size() > meant.size()) return !meant.empty() && is_slip_of(meant, written);
  for (std::size_t i = 0; i < meant.size(); ++i) {
    std::string slip = meant;
    if (written.size() < meant.size()) {
      slip.erase(i, 1);
    } else if (i + 1 < slip.size()) {
      std::swap(slip[i], slip[i + 1]);
    }
    if (slip == written && slip != meant) return true;
  }
  return false;
}

class SiblingCheck {
 public:
  SiblingCheck(const CheckInput& input, const RuleBase& base, const Names& names, std::vector<Finding>& findings)
      : input_(input), names_(names), findings_(findings) {
    for (const RuleView& rule : base.rules) rules_.push_back(&rule);
    std::ranges::sort(rules_, {}, &RuleView::line);
  }

  void run() {
    check_marks();
    check_runs();
    check_steps();
  }

 private:
  Finding& report(const RuleView& rule, std::uint32_t begin, std::uint32_t end, const char* code, std::string what,
                  std::string remedy) {
    findings_.push_back(finding_at(input_.rules.file, rule.line, rule.text, begin, end, Level::warning, code,
                                   std::move(what), std::move(remedy)));
    findings_.back().fix.old = rule.text.substr(begin, end - begin);
    return findings_.back();
  }

  // --- marks of relations

  // An attribute among the conditions, or one that the actions take away, on one side of a rule; null: none. A name of
  // `kNoName` stands for any mark of a relation that leads on from the word.
  const RuleItem* find(const RuleView& rule, Place place, Side side, std::uint8_t op, NameId name) const {
    const auto found = std::ranges::find_if(rule.items, [&](const RuleItem& item) {
      const bool is_name = name == kNoName ? names_[item.name].starts_with('>') : item.name == name;
      return item.place == place && item.side == side && item.kind == ItemKind::attribute && item.op == op && is_name;
    });
    return found == rule.items.end() ? nullptr : &*found;
  }

  // A rule that brings a word in over a relation asks for the mark of this relation on the word that is there, and takes
  // it away: else the tests on the mark take back what the rule has done. Where a grammar has that custom, a rule that
  // keeps the mark, or takes away that of another relation instead, is told.
  void check_marks() {
    struct Slip {
      const RuleView* rule;
      const RuleItem* at;     // the mark that is kept, or taken away instead
      std::string mark;       // that was meant
      const RuleItem* taken;  // a mark that the rule takes away, and does not ask for; null: none
    };
    std::size_t keepers = 0;
    std::vector<Slip> slips;
    for (const RuleView* rule : rules_) {
      // Rules with one pattern in quotes: the other one stands for the word that is there.
      const bool brings_in = rule->inserts() && rule->quote(Side::left) != rule->quote(Side::right);
      if (!brings_in || rule->is_post_edit()) continue;
      const Side there = rule->quote(Side::left) ? Side::right : Side::left;
      const RuleItem* label = rule->first(Place::relation, other(there));
      if (label == nullptr) continue;
      const std::string mark = '>' + names_[label->name];
      const NameId id = names_.find(mark);
      const RuleItem* asked = id == kNoName ? nullptr : find(*rule, Place::cond, there, kOpHas, id);
      const RuleItem* strikes = id == kNoName ? nullptr : find(*rule, Place::action, there, kOpDelete, id);
      // Any mark that is taken away on that side, the first of them.
      const RuleItem* taken = find(*rule, Place::action, there, kOpDelete, kNoName);
      const bool is_asked_for = taken != nullptr && find(*rule, Place::cond, there, kOpHas, taken->name) != nullptr;
      if (asked != nullptr && strikes != nullptr) {
        ++keepers;
      } else if (asked != nullptr) {
        slips.push_back({rule, asked, mark, is_asked_for ? nullptr : taken});
      } else if (strikes == nullptr && is_asked_for) {
        slips.push_back({rule, label, names_[taken->name].substr(1), nullptr});
      }
    }
    // A grammar without the custom, or one with many exceptions.
    if (keepers < kFewestKeepers || slips.size() * kKeepersForOne > keepers) return;
    for (const Slip& slip : slips) {
      if (slip.at->place == Place::relation) {
        Finding& found = report(
            *slip.rule, slip.at->begin, slip.at->end, "relation-mark",
            "this rule follows " + names_[slip.at->name] + ", and asks for >" + slip.mark + " and takes that away",
            "did you mean " + slip.mark + "?");
        found.fix.kind = Fix::Kind::replace;
        found.fix.text = slip.mark;
      } else if (slip.taken != nullptr) {
        Finding& found =
            report(*slip.rule, slip.taken->begin, slip.taken->end, "relation-mark",
                   "this rule asks for " + slip.mark + ", follows it, and takes " + names_[slip.taken->name] + " away",
                   "did you mean -" + slip.mark + "?");
        found.fix.kind = Fix::Kind::replace;
        found.fix.text = '-' + slip.mark;
      } else {
        report(*slip.rule, slip.at->begin, slip.at->end, "relation-mark",
               "this rule follows the relation and keeps " + slip.mark +
                   ", while the others of these rules take theirs away",
               "write -" + slip.mark + " among the actions of this pattern");
      }
    }
  }

  // --- priorities

  static bool is_of_kind(const RuleView& a, const RuleView& b) { return a.type == b.type && a.is_quote == b.is_quote; }

  void report_priority(const RuleView& rule, const std::string& meant, const std::string& what) {
    const auto length = static_cast<std::uint32_t>(rule.number.size());
    Finding& found = report(rule, rule.number_begin, rule.number_begin + length + 1, "priority-stands-out",
                            'P' + rule.number + " stands out: " + what, "did you mean P" + meant + '?');
    found.fix.kind = Fix::Kind::replace;
    found.fix.text = 'P' + meant;
  }

  // Rules of one kind, a line each and none between: all have one priority but one, which is not at an end, where
  // another step may begin.
  void check_runs() {
    for (std::size_t begin = 0, end = 0; begin < rules_.size(); begin = end) {
      for (end = begin + 1; end < rules_.size(); ++end) {
        const bool goes_on = rules_[end]->line == rules_[end - 1]->line + 1 && is_of_kind(*rules_[end], *rules_[begin]);
        if (!goes_on) break;
      }
      // Of a few lines none stands out.
      if (end - begin < kFewestInRow) continue;
      const RuleView& first = *rules_[begin];
      const RuleView* odd = nullptr;
      std::size_t count = 0;
      for (std::size_t i = begin + 1; i < end; ++i) {
        if (rules_[i]->priority == first.priority) continue;
        odd = rules_[i];
        ++count;
      }
      if (count != 1 || odd == rules_[end - 1]) continue;
      report_priority(*odd, first.number,
                      "the " + std::to_string(end - begin - 1) + " rules around it have P" + first.number);
      told_.insert(odd);
    }
  }

  // A line and its two neighbours: those above and below, or at an end of a block of lines the two next to it. The two
  // differ by little, and the priority of the line is no value from the one to the other, but such a value with a digit
  // lost, doubled or exchanged.
  void check_steps() {
    for (std::size_t i = 0, begin = 0, end = 0; i < rules_.size(); ++i) {
      if (i == end) {  // of the block of lines
        begin = end++;
        while (end < rules_.size() && rules_[end]->line == rules_[end - 1]->line + 1) ++end;
      }
      const RuleView& rule = *rules_[i];
      if (end - begin < 3 || told_.contains(&rule)) continue;
      // The rule that goes on to the right has P1 whatever stands around it.
      if (rule.number.size() < 2) continue;
      const std::size_t first = i == begin ? i + 2 : i - 1;
      const std::size_t second = i + 1 == end ? i - 2 : i + 1;
      const auto [least, most] = std::minmax(rules_[first]->priority, rules_[second]->priority);
      const bool is_inside = rule.priority >= least && rule.priority <= most;
      // Priorities that differ much say nothing about what stands between them.
      if (is_inside || most - least > kSmallSteps) continue;
      for (int meant = most; meant >= least; --meant) {
        if (!is_slip_of(rule.number, std::to_string(meant))) continue;
        report_priority(rule, std::to_string(meant),
                        "the lines beside it have P" + rules_[first]->number +
                            (least == most ? std::string() : " and P" + rules_[second]->number));
        break;
      }
    }
  }

  const CheckInput& input_;
  const Names& names_;
  std::vector<const RuleView*> rules_;  // in the order of their lines
  std::vector<Finding>& findings_;
  std::set<const RuleView*> told_;  // rules whose priority has been told already
};

}  // namespace

void check_siblings(const CheckInput& input, const RuleBase& base, const Names& names, std::vector<Finding>& findings) {
  SiblingCheck(input, base, names, findings).run();
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
