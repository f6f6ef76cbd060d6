#include "lab/check_pairs.hpp"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "lab/progress.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

constexpr std::string_view kSuperior = "sup";
// A dictionary that was made for more than this grammar may be full of pairs without a use.
constexpr std::size_t kMostShown = 20;
constexpr std::size_t kMostNamed = 6;  // relations in a remedy

// The key of a pair is three texts run together: the word that is there, the relation, the word to be chosen. A key that
// is a relation alone gives the value of all pairs that are not listed.
class PairCheck {
 public:
  PairCheck(const CheckInput& input, const PairSurvey& pairs, const PairContext& context, Names& names)
      : input_(input), index_(*pairs.index), context_(context), names_(names) {}

  std::unordered_set<NameId> run(std::vector<Finding>& findings) {
    collect_relations();
    std::vector<Finding> idle;
    std::size_t judged = 0;
    for (const WordIndex::Entry& entry : index_.entries()) {
      interrupt_check();
      ++judged;
      if (index_.concept_word(entry).starts_with(kSuperior)) {
        check_superior(entry, idle);
      } else {
        check_pair(entry, idle);
      }
    }
    // Where most have no use, the dictionary is meant for more than this grammar.
    if (idle.size() > judged / 2) {
      for (Finding& finding : idle) finding.level = Level::note;
    }
    const std::size_t more = idle.size() - std::min(idle.size(), kMostShown);
    idle.resize(idle.size() - more);
    if (more != 0 && !idle.empty()) idle.back().text += "; and " + std::to_string(more) + " more pairs have no use";
    std::ranges::move(idle, std::back_inserter(findings));
    return std::move(seen_);
  }

 private:
  // The relations that rules name, and those that are tried in their place.
  void collect_relations() {
    std::multimap<NameId, NameId> superiors;  // by the relation that they stand above
    for (const WordIndex::Entry& entry : index_.entries()) {
      const std::string_view concept_word = index_.concept_word(entry);
      if (!concept_word.starts_with(kSuperior)) continue;
      // The text behind "sup" is what the entry stands above; its id is what is tried instead.
      superiors.emplace(names_.enter(concept_word.substr(kSuperior.size())), names_.enter(index_.id(entry)));
    }
    std::vector<NameId> waiting(context_.roles.begin(), context_.roles.end());
    while (!waiting.empty()) {
      const NameId relation = waiting.back();
      waiting.pop_back();
      // Superiors can form a ring; a relation that is known goes no further.
      if (!relations_.insert(relation).second) continue;
      const auto [begin, end] = superiors.equal_range(relation);
      // A relation with a superior has the values of that one.
      if (begin != end) seen_.insert(relation);
      for (auto each = begin; each != end; ++each) waiting.push_back(each->second);
    }
  }

  // Names the relation, or the class, that it stands above.
  void check_superior(const WordIndex::Entry& entry, std::vector<Finding>& idle) {
    const NameId name = names_.enter(index_.concept_word(entry).substr(kSuperior.size()));
    if (relations_.contains(name) || context_.forms.contains(name)) return;
    std::vector<const std::string*> asked;
    for (const NameId each : relations_) asked.push_back(&names_[each]);
    for (const NameId each : context_.forms) {
      if (names_[each].starts_with('#')) asked.push_back(&names_[each]);
    }
    const std::string* near = nearest(names_[name], asked);
    report(entry, '"' + std::string(index_.concept_word(entry)) + "\": no rule asks for " + names_[name],
           near != nullptr ? "did you mean " + *near + "?" : "strike it out, or name it in a rule", idle);
  }

  void check_pair(const WordIndex::Entry& entry, std::vector<Finding>& idle) {
    const std::string_view key = index_.form(entry);
    std::string fault;
    std::string remedy;
    std::vector<NameId> held;  // relations that the key holds
    bool has_use = false;
    // Relations can hold each other, as "/in/" and "in" do: the pair is of those that leave two words on their sides.
    for (const NameId relation : relations_) {
      const std::string& name = names_[relation];
      const std::size_t at = name.empty() ? std::string_view::npos : key.find(name);
      if (at == std::string_view::npos) continue;
      held.push_back(relation);
      std::string wrong;
      for (const std::string_view word : {key.substr(0, at), key.substr(at + name.size())}) {
        if (wrong.empty() && context_.judges_words) judge(std::string(word), wrong, remedy);
      }
      has_use = has_use || wrong.empty();
      if (wrong.empty()) seen_.insert(relation);
      // The last one is shown: in a key with two relations either may be the one that was meant.
      if (!wrong.empty()) fault = wrong;
    }
    if (has_use) return;
    // A pair with a wrong word still shows that its relation is the one that is meant.
    seen_.insert(held.begin(), held.end());
    if (held.empty()) {
      fault = "no rule asks for the relation of this pair";
      remedy = "a pair is [word relation word] without blanks between; rules ask for " + relation_list();
    }
    report(entry, '[' + std::string(key) + "]: " + fault, remedy, idle);
  }

  void report(const WordIndex::Entry& entry, std::string what, std::string remedy, std::vector<Finding>& idle) const {
    idle.push_back(
        {input_.cooccurrence_file, entry.line, 0, 0, Level::warning, "pair-idle", std::move(what), std::move(remedy)});
  }

  // Says what is wrong with a word of a pair, if anything is.
  void judge(const std::string& word, std::string& fault, std::string& remedy) const {
    if (word.empty() || context_.has_other_form(word)) return;
    std::string id;
    // An entry with an id is known by that alone, and one without by its form.
    for (const auto& words : context_.words.indexes) {
      if (!words->with_id(word).empty()) return;
      for (const std::uint32_t each : words->with_form(word)) {
        id = words->id(words->entries()[each]);
        if (id.empty()) return;
      }
    }
    if (!id.empty()) {
      fault = "all entries of [" + word + "] go by an id, so that this pair is never looked up";
      remedy = "write {" + id + "} of its entry in the place of " + word + ", without the braces";
      return;
    }
    fault = "no word goes by the name " + word;
    remedy = "write the id of its entry, or its form if it has none";
  }

  [[nodiscard]] std::string relation_list() const {
    std::set<std::string> sorted;
    for (const NameId relation : relations_) sorted.insert(names_[relation]);
    std::string list;
    std::size_t count = 0;
    for (const std::string& name : sorted) {
      if (++count > kMostNamed) return list + ", ...";
      list += (list.empty() ? "" : ", ") + name;
    }
    return list;
  }

  const CheckInput& input_;
  const WordIndex& index_;
  const PairContext& context_;
  Names& names_;
  std::unordered_set<NameId> relations_;  // that a check can come to
  std::unordered_set<NameId> seen_;       // of these: some pair, or the relation alone, has a value
};

}  // namespace

std::unordered_set<NameId> check_pairs(const CheckInput& input, const PairSurvey& pairs, const PairContext& context,
                                       Names& names, std::vector<Finding>& findings) {
  // Without a relation in the rules the dictionary serves its classes alone.
  if (pairs.index == nullptr || context.roles.empty()) return {};
  return PairCheck(input, pairs, context, names).run(findings);
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
