// The checks that hold rules, words and graphs against each other.
#include "lab/check.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "data/chars.hpp"
#include "data/platform.hpp"
#include "lab/check_entries.hpp"
#include "lab/check_graphs.hpp"
#include "lab/check_order.hpp"
#include "lab/check_pairs.hpp"
#include "lab/check_rules.hpp"
#include "lab/check_siblings.hpp"
#include "lab/check_words.hpp"
#include "lab/progress.hpp"
#include "rules/scanners.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// The manual has a row for each; a test holds the two against each other.
constexpr CheckCode kCodes[] = {
    {"rule-syntax", "a rule cannot be read, and is left out"},
    {"last-line", "the last line is refused, and no rule is in force"},
    {"endless-rule", "a rule would fit its own result for ever, and is left out"},
    {"endless-insertion", "a rule brings the same word in again and again"},
    {"endless-pair", "rules that undo each other in place"},
    {"relation-mark", "a rule that follows a relation and leaves its mark, while others take theirs away"},
    {"left-over-boundary", "an L that can leave the list at its left end"},
    {"no-priority", "a rule without a priority, or with 0"},
    {"contradiction", "a pattern that asks for what it forbids"},
    {"line-runs-on", "a second rule or entry in a line, which is not read"},
    {"third-pattern", "a pattern behind the second"},
    {"priority-wraps", "a priority above 255"},
    {"priority-stands-out", "a priority that falls out of the lines around it"},
    {"rule-never-first", "an earlier rule fits wherever this one does"},
    {"unknown-name", "a name that nothing gives"},
    {"unused-name", "a name that nobody asks for"},
    {"unknown-label", "a relation that is in no graph"},
    {"unfollowed-label", "a relation of the graphs that no rule follows"},
    {"label-cut", "a label that is too long"},
    {"label-idle", "a label without an effect"},
    {"section-misplaced", "something stands in the section of something else"},
    {"sign-in-condition", "an action among the conditions"},
    {"bracket-runs-on", "a text in brackets that ends later than it seems"},
    {"form-in-pre", "a form or concept where it is not tested"},
    {"idle-type", "a rule type that does nothing"},
    {"literal-never-fits", "a word of the rule that its own conditions rule out"},
    {"literal-misspelt", "a word of the rule that is nearly one of the dictionary"},
    {"literal-forbidden", "a forbidden attribute that a made-up word gets"},
    {"form-never-there", "a form that no word of the list can have"},
    {"unknown-concept", "a concept word that nothing has"},
    {"unknown-relation", "a relation of co-occurrence that no pair has"},
    {"pair-idle", "a pair that nobody can ask about"},
    {"never-together", "attributes that no entry has together"},
    {"entry-syntax", "an entry that cannot be read"},
    {"concept-unquoted", "a concept word without quotes, which is read as the gloss"},
    {"duplicate-entry", "entries that are alike in everything"},
    {"entry-class", "an entry without the class that others of its kind have"},
    {"entry-twin", "two forms of a concept word that rules cannot tell apart"},
    {"unknown-word", "a word of the graphs without an entry"},
    {"graph-syntax", "a line of a graph that cannot be read"},
    {"stray-relation", "a relation outside of any sentence"},
    {"sentence-in-sentence", "a sentence that begins before the last one ends"},
    {"unclosed", "a sentence or block that is not closed"},
    {"no-sentence", "a file of graphs without a sentence"},
    {"label-twice", "two sentences of a file with one label"},
    {"no-entry", "a sentence without @entry"},
    {"second-entry", "a second word with @entry"},
    {"scope-entry", "a scope without @entry"},
    {"scope-empty", "a scope without relations"},
    {"scope-unused", "a scope that nothing leads to"},
    {"source-syntax", "a grammar source that cannot be expanded"},
    {"no-file", "a file of the project that cannot be read"},
    {"encoding", "text that is not read as it looks"},
    {"rules-room", "the rules leave no room for sentences"},
};

// Does the name begin as those do that graphs give: attributes and marks of relations?
bool is_signed_name(const std::string& name) {
  return !name.empty() && (name.front() == '@' || name.front() == '<' || name.front() == '>');
}

// A check in the order of `run`: read the rules; collect who gives and who asks for each name, from rules, graphs, words
// and pairs; then look at each rule, at the rules among themselves, and at the names that are left over. Findings about
// rules are sorted and moved to their sources before those about other files come behind them.
class Check {
 public:
  explicit Check(const CheckInput& input) : input_(input), base_(read_rules(input, names_, findings_)) {}

  std::vector<Finding> run() {
    collect_rule_names();
    std::vector<Finding> elsewhere;
    graphs_ = survey_graphs(input_, names_, elsewhere);
    ask_dictionary(elsewhere);
    collect_given();
    for (const RuleView& rule : base_.rules) {
      interrupt_check();
      check_rule(rule);
    }
    const OrderContext context{
        .literal_fits = [this](const RuleView& rule) { return literal_fits(rule); },
        .keeps_off_boundary = [this](NameId name) { return keeps_off_boundary(name); },
    };
    check_order(input_, base_, context, names_, findings_);
    check_siblings(input_, base_, names_, findings_);
    std::ranges::stable_sort(findings_, {}, &Finding::line);
    findings_to_sources(input_, findings_);
    std::move(elsewhere.begin(), elsewhere.end(), std::back_inserter(findings_));
    check_word_names();
    check_entries(words_.indexes, findings_);
    check_graph_names();
    check_encodings();
    entry_columns_find(input_, needles_, findings_);
    return std::move(findings_);
  }

 private:
  // --- who gives and who asks

  // Who gives a name, as bits.
  static constexpr unsigned by_engine = 1;  // boundaries, scopes, copies, words that are made up
  static constexpr unsigned by_action = 2;
  static constexpr unsigned by_literal = 4;
  static constexpr unsigned by_words = 8;
  static constexpr unsigned by_graphs = 16;
  static constexpr unsigned by_pairs = 32;  // the mark of a choice

  // What is known of one name. Names of attributes, labels, forms and concept words share one numbering, so a label
  // and an attribute that are spelt alike share this record too.
  struct NameUse {
    unsigned given = 0;     // bits of the above
    bool asked = false;     // by a condition
    bool taken = false;     // an action takes it away
    bool followed = false;  // as a label, cut as the parser does
  };

  NameUse& use_of(NameId name) {
    // Names are entered while this goes on, so a reference that was given out before may dangle after the next call.
    if (uses_.size() < names_.size()) uses_.resize(names_.size());
    return uses_[name];
  }

  // From the rules: what conditions ask for, what actions give and take away, labels and roles. Conditions of groups and of
  // the two patterns count alike here.
  void collect_rule_names() {
    for (const RuleView& rule : base_.rules) {
      for (const RuleItem& item : rule.items) {
        const bool is_condition = item.place == Place::cond || item.place == Place::pre || item.place == Place::mid ||
                                  item.place == Place::suf;
        if (item.place == Place::relation) {
          // Rules know a label as the parser cuts it.
          const std::string& label = names_[item.name];
          use_of(names_.enter(label.substr(0, kRelationLabelLimit))).followed = true;
        } else if (item.place == Place::role) {
          roles_.insert(item.name);
        } else if (item.kind == ItemKind::attribute && is_condition) {
          ask(item.name);
        } else if (item.kind == ItemKind::attribute) {
          if (item.op == kOpAdd) use_of(item.name).given |= by_action;
          if (item.op == kOpDelete) use_of(item.name).taken = true;
        } else if (item.kind == ItemKind::hw) {
          if (is_condition) questions_.forms.insert(item.name);
          if (!is_condition || rule.quote(item.side)) written_forms_.insert(item.name);
          has_class_ = has_class_ || (is_condition && names_[item.name].starts_with('#'));
        } else if (is_condition) {
          questions_.concepts.insert(item.name);
        }
      }
      // P<< and P>> write any letters that a rule names into a word of their own.
      has_splits_ = has_splits_ || rule.type == rule_type::shift_left || rule.type == rule_type::shift_right;
    }
  }

  // Copies carry "#" in front of what their models had, so that who asks for "#N" asks for "N" too.
  void ask(NameId name) {
    use_of(name).asked = true;
    const std::string& text = names_[name];
    const std::size_t begin = text.find_first_not_of('#');
    if (begin != 0 && begin != std::string::npos) use_of(names_.enter(text.substr(begin))).asked = true;
  }

  // Collects what the dictionary is to be asked, and reads it once: a dictionary of a million entries is gone through for
  // the forms and concept words that rules and graphs name, and for the names of attributes.
  void ask_dictionary(std::vector<Finding>& elsewhere) {
    for (const auto& [name, use] : graphs_.words) {
      questions_.concepts.insert(name);
      // A word with a restriction, "dog(>animal)", is looked up without it if it is not there with it.
      const std::string& text = names_[name];
      if (const std::size_t open = text.find('('); open != std::string::npos) {
        questions_.concepts.insert(names_.enter(text.substr(0, open)));
      }
    }
    // Findings about words are made here, but have to stand in front of those about graphs.
    std::vector<Finding> of_words;
    words_ = survey_words(input_, questions_, names_, of_words);
    pairs_ = survey_cooccurrence(input_, names_, of_words);
    const PairContext context{
        .words = words_,
        .roles = roles_,
        .forms = questions_.forms,
        .has_other_form = [this](const std::string& form) { return has_other_form(form); },
        .judges_words = words_.is_there() && graphs_.is_there,
    };
    valued_roles_ = check_pairs(input_, pairs_, context, names_, of_words);
    // Words before graphs, as the command line names them.
    elsewhere.insert(elsewhere.begin(), of_words.begin(), of_words.end());
  }

  // Who gives each name. Afterwards the lists of given and of asked names stand, in which slips are looked up.
  void collect_given() {
    for (const char* name :
         // The boundaries of sentence and scope, marks of numbers and of words that are made up, and those of copied
         // words.
         {"SHEAD", "STAIL", "CHEAD", "CTAIL", "SCOPE", "@entry", "TEMP", "NUM", "ANUM", "#ORIG", "#COPY", "H#NIL"}) {
      use_of(names_.enter(name)).given |= by_engine;
    }
    for (const auto& [name, use] : words_.attributes) use_of(name).given |= by_words;
    for (const auto& [name, use] : graphs_.attributes) use_of(name).given |= by_graphs;
    // A relation shows at its ends as >label and <label.
    for (const auto& [name, use] : graphs_.labels) {
      for (const char sign : {'>', '<'}) use_of(names_.enter(sign + names_[name])).given |= by_graphs;
    }
    // The mark of a choice is the name of its relation.
    for (const auto* relations : {&roles_, &pairs_.given}) {
      for (const NameId relation : *relations) {
        for (const char sign : {'>', '<'}) use_of(names_.enter(sign + names_[relation])).given |= by_pairs;
      }
    }
    for (const RuleView& rule : base_.rules) {
      for (const Side side : {Side::left, Side::right}) {
        // A word that is made up gets the conditions of its pattern as attributes, forbidden ones too.
        if (!is_literal(rule, side) || !is_made_up(rule, side)) continue;
        for (const RuleItem& item : rule.items) {
          const bool is_own = item.place == Place::cond && item.side == side && item.kind == ItemKind::attribute;
          if (is_own) use_of(item.name).given |= by_literal;
        }
      }
    }
    for (NameId name = 0; name < names_.size(); ++name) {
      NameUse& use = use_of(name);
      if (use.given != 0) given_names_.push_back(&names_[name]);
      if (use.asked && (use.given & by_engine) == 0) asked_names_.push_back(&names_[name]);
    }
  }

  // Does the rule name the word that it brings in on this side?
  static bool is_literal(const RuleView& rule, Side side) {
    return rule.inserts() && rule.quote(side) && rule.first(Place::relation) == nullptr &&
           named_by(rule, side) != nullptr;
  }

  // What a literal is looked up by: its form, or else its concept word.
  static const RuleItem* named_by(const RuleView& rule, Side side) {
    const RuleItem* form = nullptr;
    const RuleItem* concept_word = nullptr;
    for (const RuleItem& item : rule.items) {
      if (item.place != Place::cond || item.side != side) continue;
      if (item.kind == ItemKind::hw && form == nullptr) form = &item;
      if (item.kind == ItemKind::cw && concept_word == nullptr) concept_word = &item;
    }
    return form != nullptr ? form : concept_word;
  }

  // The words of the dictionary that a literal stands for; null: none.
  const std::vector<WordFacts>* literal_words(const RuleView& rule, Side side) const {
    const RuleItem* name = named_by(rule, side);
    if (name == nullptr) return nullptr;
    // Looked up by form, a word has to have the concept word that is asked for too, or it is none of these.
    const auto& by_key = name->kind == ItemKind::hw ? words_.by_form : words_.by_concept;
    // A literal with a form is found by that, whatever concept word stands beside it; one without by its concept
    // word.
    const auto found = by_key.find(name->name);
    if (found == by_key.end() || name->kind == ItemKind::cw) return found == by_key.end() ? nullptr : &found->second;
    for (const RuleItem& item : rule.items) {
      if (item.place != Place::cond || item.side != side || item.kind != ItemKind::cw || item.op != kOpHas) continue;
      const bool has_concept = std::ranges::any_of(
          found->second, [&](const WordFacts& word) { return word.concept_word == names_[item.name]; });
      if (!has_concept) return nullptr;
    }
    return &found->second;
  }

  // Without a dictionary any word may have to be made up.
  bool is_made_up(const RuleView& rule, Side side) const {
    return !words_.is_there() || literal_words(rule, side) == nullptr;
  }

  // The conditions of a pattern that a word does not meet. Signs among the conditions (`sign-in-condition`) ask for
  // attributes like names without one, and for nothing on forms and concept words.
  std::vector<const RuleItem*> unmet(const RuleView& rule, Side side, const WordFacts& word) const {
    std::vector<const RuleItem*> result;
    const std::vector<NameId>& attributes = words_.attribute_sets[word.attributes];
    for (const RuleItem& item : rule.items) {
      if (item.place != Place::cond || item.side != side) continue;
      bool has = std::ranges::binary_search(attributes, item.name);
      if (item.kind == ItemKind::hw) has = word.form == names_[item.name];
      if (item.kind == ItemKind::cw) has = word.concept_word == names_[item.name];
      const bool is_tested = item.kind == ItemKind::attribute || item.op == kOpHas || item.op == kOpNot;
      if (is_tested && has != (item.op != kOpNot)) result.push_back(&item);
    }
    return result;
  }

  // Is there, for each literal of the rule, a word that meets its conditions? One that is made up meets them.
  bool literal_fits(const RuleView& rule) const {
    for (const Side side : {Side::left, Side::right}) {
      if (!is_literal(rule, side) || is_made_up(rule, side)) continue;
      const std::vector<WordFacts>& words = *literal_words(rule, side);
      if (std::ranges::none_of(words, [&](const WordFacts& word) { return unmet(rule, side, word).empty(); }))
        return false;
    }
    return true;
  }

  // Boundaries have the attributes that the engine and the actions of rules give them, and no others.
  bool keeps_off_boundary(NameId name) {
    // A name that nothing gives is told elsewhere, and is no reason to trust the pattern.
    const unsigned given = use_of(name).given;
    return given != 0 && (given & ~(by_words | by_graphs)) == 0;
  }

  // Words of pairs that no entry has: numbers, forms that rules write, members of classes, names in graphs.
  bool has_other_form(const std::string& form) {
    const NameId name = names_.find(form);
    const bool is_written = name != kNoName && (written_forms_.contains(name) || pairs_.given.contains(name));
    return is_written || is_number(form) || is_name_in_graphs(form);
  }

  // --- findings

  // A finding at bytes of a rule's line. It may only be touched until the next one is made.
  Finding& report(const RuleView& rule, std::uint32_t begin, std::uint32_t end, Level level, const char* code,
                  std::string what, std::string remedy) {
    findings_.push_back(finding_at(input_.rules.file, rule.line, rule.text, begin, end, level, code, std::move(what),
                                   std::move(remedy)));
    // Editors compare this with what stands there when the change is asked for, since the text may have moved on.
    findings_.back().fix.old = rule.text.substr(begin, end - begin);
    return findings_.back();
  }

  Finding& report(const RuleView& rule, const RuleItem& item, Level level, const char* code, std::string what,
                  std::string remedy) {
    return report(rule, item.begin, item.end, level, code, std::move(what), std::move(remedy));
  }

  // The remedy is another text in the place of a part of what was found; editors offer it as a change. The last place
  // counts: signs and colons stand in front of a name.
  static void fix_by(Finding& finding, std::string_view part, std::string_view other) {
    const std::size_t at = finding.fix.old.rfind(part);
    if (at == std::string::npos) return;
    finding.fix.kind = Fix::Kind::replace;
    finding.fix.text = finding.fix.old;
    finding.fix.text.replace(at, part.size(), other);
  }

  // --- one rule

  // What is wrong with the place of an item is told alone: its name means nothing then.
  void check_rule(const RuleView& rule) {
    check_priority(rule);
    check_rest(rule);
    check_type(rule);
    for (const Side side : {Side::left, Side::right}) {
      if (is_literal(rule, side) && words_.is_there()) check_literal(rule, side);
      if (!is_literal(rule, side)) check_contradiction(rule, side);
      check_together(rule, side);
    }
    if (const RuleItem* role = rule.first(Place::role); role != nullptr) check_role(rule, *role);
    for (const RuleItem& item : rule.items) {
      // Order matters: what stands in the wrong section is told once, and not again as a name that nothing gives.
      const bool is_misplaced = check_section(rule, item);
      if (item.kind == ItemKind::hw) check_form(rule, item);
      if (item.kind == ItemKind::cw) check_concept(rule, item);
      const bool is_of_known_word =
          item.place == Place::cond && is_literal(rule, item.side) && words_.is_there() && !is_made_up(rule, item.side);
      if (is_misplaced || is_of_known_word) continue;
      if (item.place == Place::relation) check_label(rule, item);
      if (item.kind == ItemKind::attribute && item.place != Place::relation && item.place != Place::role)
        check_name(rule, item);
    }
  }

  // Compared as digits, since a number can have any length.
  void check_priority(const RuleView& rule) {
    const std::string& number = rule.number;
    // Zeros in front change nothing: P0300 wraps as P300 does.
    const std::size_t zeros = std::min(number.find_first_not_of('0'), number.size());
    const std::string digits = number.substr(zeros);
    if (digits.size() < 3 || (digits.size() == 3 && digits <= "255")) return;
    fix_by(report(rule, rule.number_begin, rule.number_begin + static_cast<std::uint32_t>(number.size()) + 1,
                  Level::error, "priority-wraps", "P" + number + " counts as P" + std::to_string(rule.priority),
                  "use a priority of 1 to 255"),
           number, "255");
  }

  // What stands behind the ";" of a rule is a comment. One that is a rule itself has most likely lost its line end.
  void check_rest(const RuleView& rule) {
    const std::size_t end = rule.text.find(';', rule.number_begin);
    const std::size_t begin = end == std::string::npos ? end : rule.text.find_first_not_of("; \t", end);
    if (begin == std::string::npos) return;
    const std::string_view rest = std::string_view(rule.text).substr(begin);
    const std::size_t pattern = rest.find_first_of("{\"(");
    const std::size_t priority = rest.rfind('P');
    if (pattern == std::string_view::npos || priority == std::string_view::npos || priority < pattern) return;
    constexpr std::array<std::string_view, 18> kTypes = {":",  "L",  "R",  "?",  "?L", "?R",  "X",   "CL",  "CR",
                                                         "DL", "DR", "P:", "PL", "PR", "P<<", "P>>", "PSL", "PSR"};
    const bool is_type = std::ranges::find(kTypes, rest.substr(0, pattern)) != kTypes.end();
    if (!is_type || priority + 1 == rest.size() || !is_digit(rest[priority + 1])) return;
    report(rule, static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(rule.text.size()), Level::warning,
           "line-runs-on", "a second rule in this line is a comment, and is not read",
           "begin a new line in front of it; or strike it out");
  }

  // Types that do nothing, relations in a rule that brings in no word, an L that can leave the list.
  void check_type(const RuleView& rule) {
    // Rules of the types D and P are read, and do nothing.
    constexpr std::string_view kIdle = "DP";
    if (is_stepless_type(rule.type) || kIdle.find(static_cast<char>(rule.type)) != std::string_view::npos) {
      report(rule, 0, 1, Level::warning, "idle-type", "rules of this type do nothing: the step is lost",
             "use one of : L R ? ?L ?R X CL CR DL DR, or P: PL PR P<< P>> PSL PSR in post-edit");
    }
    if (!rule.quote(Side::left) && !rule.quote(Side::right)) {
      if (const RuleItem* label = rule.first(Place::relation); label != nullptr) {
        report(rule, *label, Level::error, "label-idle",
               "a rule with a relation and two brace patterns never fits: it brings no word in",
               "write the pattern of the word that comes in with quotes: \"N::" + names_[label->name] +
                   "\"; or ask for the relation with >" + names_[label->name]);
      }
    }
    if (rule.type == rule_type::left) check_left_end(rule);
  }

  // Any condition that asks for something keeps the left boundary off, and groups in front do.
  void check_left_end(const RuleView& rule) {
    if (rule.pre_groups != 0) return;
    for (const RuleItem& item : rule.items) {
      if (item.place != Place::cond || item.side != Side::left) continue;
      // "<<" is the form of the left boundary, and SHEAD its attribute: forbidding either keeps it off.
      const bool keeps_off = item.op != kOpNot || names_[item.name] == "SHEAD" || names_[item.name] == "<<";
      if (keeps_off) return;
    }
    Finding& found = report(rule, rule.pattern_begin[0], rule.pattern_end[0], Level::warning, "left-over-boundary",
                            "with the left boundary as its left word this rule leaves the list, and the sentence fails",
                            "write ^SHEAD,^CHEAD into this pattern");
    // Behind the brace stands the first condition, or the colon or brace that ends an empty section.
    const bool is_empty = rule.first(Place::cond, Side::left) == nullptr;
    fix_by(found, found.fix.old.substr(1), (is_empty ? "^SHEAD,^CHEAD" : "^SHEAD,^CHEAD,") + found.fix.old.substr(1));
  }

  // Of a literal no word meets the conditions while it is made up, so this is about words that are there already.
  void check_contradiction(const RuleView& rule, Side side) {
    for (const RuleItem& forbidden : rule.items) {
      if (forbidden.place != Place::cond || forbidden.side != side || forbidden.op != kOpNot) continue;
      const bool is_asked = std::ranges::any_of(rule.items, [&](const RuleItem& item) {
        return item.place == Place::cond && item.side == side && item.op == kOpHas && item.kind == forbidden.kind &&
               item.name == forbidden.name;
      });
      if (!is_asked) continue;
      Finding& found =
          report(rule, forbidden, Level::warning, "contradiction",
                 "this pattern asks for " + names_[forbidden.name] + " and forbids it, so that the rule never fits",
                 "strike one of the two out");
      found.fix.kind = Fix::Kind::strike_item;
    }
  }

  // Of several roles the first one counts, that of the left pattern before that of the right.
  void check_role(const RuleView& rule, const RuleItem& item) {
    if (pairs_.index == nullptr || !rule.inserts() || valued_roles_.contains(item.name)) return;
    std::vector<const std::string*> valued;
    for (const NameId name : valued_roles_) valued.push_back(&names_[name]);
    const std::string& name = names_[item.name];
    const std::string* near = nearest(name, valued);
    Finding& found =
        report(rule, item, Level::warning, "unknown-relation",
               "the co-occurrence dictionary has no pair with " + name + ", so that the rule never fits",
               near != nullptr ? "did you mean " + *near + "?"
                               : "write pairs with it, or the relation alone to give all pairs a value: [" + name +
                                     "]{} \"\" () <.,0,1>;");
    if (near != nullptr) fix_by(found, name, *near);
  }

  // A bit for each letter of a word, whatever its case; other characters share bits.
  static std::uint32_t letters_of(std::string_view word) {
    std::uint32_t letters = 0;
    for (const char c : word) letters |= 1U << (static_cast<unsigned char>(c) % 32);
    return letters;
  }

  // A word that is nearly this one, and that the pattern would take; empty if there is none, or if the pattern asks for
  // nothing, so that any word would do.
  std::string near_literal(const RuleView& rule, Side side, const std::string& form) const {
    constexpr std::size_t kShortest = 4;  // shorter words are near each other as a matter of course
    const auto is_condition = [side](const RuleItem& item) {
      return item.place == Place::cond && item.side == side && item.kind == ItemKind::attribute;
    };
    const bool asks =
        std::ranges::any_of(rule.items, [&](const RuleItem& item) { return is_condition(item) && item.op != kOpNot; });
    if (form.size() < kShortest || !asks) return {};
    const std::uint32_t letters = letters_of(form);
    std::set<std::string> forms;
    for (std::size_t file = 0; file < words_.indexes.size(); ++file) {
      const WordIndex& index = *words_.indexes[file];
      // Whether an entry meets the conditions depends on its attributes alone, of which there are few sets.
      std::vector<bool> fits(index.sets().size());
      for (std::size_t set = 0; set < fits.size(); ++set) {
        const std::vector<NameId>& attributes = words_.attribute_sets[words_.first_sets[file] + set];
        fits[set] = std::ranges::all_of(rule.items, [&](const RuleItem& item) {
          return !is_condition(item) || std::ranges::binary_search(attributes, item.name) == (item.op != kOpNot);
        });
      }
      for (const WordIndex::Entry& entry : index.entries()) {
        if (!fits[entry.set]) continue;
        // A slip changes a letter or two, each of which is one bit more and one less. Most words of a million go here.
        const std::string_view other = index.form(entry);
        if (std::popcount(letters_of(other) ^ letters) <= 4 && is_near(form, other)) forms.emplace(other);
      }
    }
    std::vector<const std::string*> candidates;
    for (const std::string& each : forms) candidates.push_back(&each);
    const std::string* near = nearest(form, candidates);
    return near == nullptr ? std::string() : *near;
  }

  void check_literal(const RuleView& rule, Side side) {
    const RuleItem& name = *named_by(rule, side);
    if (names_[name.name].starts_with('#') && name.kind == ItemKind::hw)
      return;  // a class; the pairs say what is in it
    const std::string shown =
        name.kind == ItemKind::hw ? "[" + names_[name.name] + "]" : "[[" + names_[name.name] + "]]";
    if (is_made_up(rule, side)) {
      if (const std::string near = name.kind == ItemKind::hw ? near_literal(rule, side, names_[name.name]) : "";
          !near.empty()) {
        fix_by(
            report(rule, name, Level::warning, "literal-misspelt",
                   "the dictionary has no " + shown + ", so that the word is made up", "did you mean [" + near + "]?"),
            names_[name.name], near);
      }
      for (const RuleItem& item : rule.items) {
        if (item.place != Place::cond || item.side != side || item.kind != ItemKind::attribute || item.op != kOpNot)
          continue;
        Finding& found = report(rule, item, Level::warning, "literal-forbidden",
                                "the dictionary has no " + shown + ", so that the word is made up, and ^" +
                                    names_[item.name] + " gives it " + names_[item.name],
                                "strike ^" + names_[item.name] + " out, or put " + shown + " into the dictionary");
        found.fix.kind = Fix::Kind::strike_item;
      }
      return;
    }
    // The word that lacks least is the one that was meant.
    // Of several that lack as much the first of the file.
    const WordFacts* best = nullptr;
    std::vector<const RuleItem*> best_unmet;
    for (const WordFacts& word : *literal_words(rule, side)) {
      std::vector<const RuleItem*> missing = unmet(rule, side, word);
      if (best != nullptr && missing.size() >= best_unmet.size()) continue;
      best = &word;
      best_unmet = std::move(missing);
    }
    if (best_unmet.empty()) return;
    std::string has;
    for (const NameId attribute : words_.attribute_sets[best->attributes])
      has += (has.empty() ? "" : ",") + names_[attribute];
    std::string why;
    std::string remedy;
    for (const RuleItem* item : best_unmet) {
      const bool is_missing = item->op != kOpNot;
      why += (why.empty() ? "" : " and ") + std::string(is_missing ? "without " : "with ") + names_[item->name];
      remedy += (remedy.empty() ? "" : ", ") + std::string(is_missing ? "give the entry " : "take from the entry ") +
                names_[item->name];
    }
    report(rule, *best_unmet.front(), Level::error, "literal-never-fits",
           "this word can never come in: the dictionary has " + shown + " (" + has + "), " + why,
           remedy + "; or strike the condition out");
  }

  // Attributes that only entries give, and that no entry has together.
  void check_together(const RuleView& rule, Side side) {
    if (!words_.is_there()) return;
    std::vector<NameId> wanted;
    const RuleItem* last = nullptr;
    for (const RuleItem& item : rule.items) {
      if (item.place != Place::cond || item.side != side || item.kind != ItemKind::attribute || item.op == kOpNot)
        continue;
      // Without graphs a name that these can give may come from there too.
      if (use_of(item.name).given != by_words || !is_judged(names_[item.name])) continue;
      wanted.push_back(item.name);
      last = &item;
    }
    if (wanted.size() < 2 || (is_literal(rule, side) && !is_made_up(rule, side))) return;
    std::ranges::sort(wanted);
    // Copies of a rule ask for the same again and again.
    const auto [known, is_new] = together_.try_emplace(wanted, false);
    if (is_new) known->second = some_entry_has(wanted);
    if (known->second) return;
    std::string all;
    for (const NameId name : wanted) all += (all.empty() ? "" : ",") + names_[name];
    report(rule, *last, Level::warning, "never-together", "no entry of the dictionary has " + all + " together",
           "look for the entries with lexon-dict list, or strike one of them out");
  }

  // Does an entry have all of them? Only the sets with the rarest one are gone through.
  bool some_entry_has(const std::vector<NameId>& wanted) {
    if (sets_with_.empty()) {
      for (std::uint32_t set = 0; set < words_.attribute_sets.size(); ++set) {
        for (const NameId name : words_.attribute_sets[set]) sets_with_[name].push_back(set);
      }
    }
    const NameId rarest =
        *std::ranges::min_element(wanted, {}, [this](NameId name) { return sets_with_[name].size(); });
    return std::ranges::any_of(sets_with_[rarest], [&](std::uint32_t set) {
      return std::ranges::includes(words_.attribute_sets[set], wanted);
    });
  }

  bool is_label(NameId name) { return graphs_.labels.contains(name) || use_of(name).followed; }

  // Does the item stand where something else is read?
  // True if so; a condition with a sign is told, and still judged as a condition.
  // The sections are told apart by their colons alone, so that one colon too few or too many moves a name into the
  // next.
  bool check_section(const RuleView& rule, const RuleItem& item) {
    const std::string& name = names_[item.name];
    const bool brings_in = rule.inserts() && (rule.quote(Side::left) || rule.quote(Side::right));
    const bool has_relation = rule.first(Place::relation) != nullptr;
    const auto misplaced = [&](const std::string& read_as, const std::string& remedy, const std::string& instead) {
      Finding& found =
          report(rule, item, Level::error, "section-misplaced", name + " stands where " + read_as + " is read", remedy);
      if (!instead.empty()) fix_by(found, name, instead);
      return true;
    };
    const std::string order = "; a pattern is {conditions:actions:relation:role}";
    switch (item.place) {
      case Place::action:
        if (item.kind != ItemKind::attribute || item.op != kOpAdd || rule.text[item.begin] == '+') return false;
        // One colon too few: "N:agn" sets an attribute agn. A name that is asked for elsewhere may be meant as one.
        if (!brings_in || has_relation || !is_label(item.name) || use_of(item.name).asked) return false;
        return misplaced("an action", "write a second colon: \"N::" + name + "\"" + order, ':' + name);
      case Place::relation: {
        // A label is a plain word; a sign in front of it shows an action or a mark that has slipped in.
        const char first = name.empty() ? 'x' : name.front();
        if (first == '>' || first == '<') {
          return misplaced("a label", "write " + name.substr(1) + " here; > and < are for conditions", name.substr(1));
        }
        if (std::string_view("+-@^![").find(first) == std::string_view::npos) return false;
        return misplaced("a relation", "actions stand behind the first colon" + order, "");
      }
      case Place::role:
        // One colon too many, with nothing between.
        if (has_relation || !is_label(item.name)) return false;
        return misplaced("a role", "write two colons: \"N::" + name + "\"" + order, "");
      case Place::cond:
        if (item.kind != ItemKind::attribute || (item.op != kOpAdd && item.op != kOpDelete)) return false;
        report(rule, item, Level::warning, "sign-in-condition",
               std::string(item.op == kOpAdd ? "+" : "-") + name + " among the conditions asks for " + name +
                   " and changes nothing",
               "write a colon between conditions and actions, or leave the sign out");
        return false;
      default: return false;
    }
  }

  // A label of a rule: too long to be followed, without effect, or in no graph. It counts as a slip only if a label of the
  // graphs is near that no rule follows; else the grammar may be ready for more than these graphs.
  void check_label(const RuleView& rule, const RuleItem& item) {
    const std::string& full = names_[item.name];
    // Runs cut the label while they read the rule, so what is looked up from here on is the cut one.
    const NameId label = names_.enter(full.substr(0, kRelationLabelLimit));
    if (full.size() > kRelationLabelLimit) {
      report(rule, item, Level::error, "label-cut",
             "the label " + full + " is cut to " + names_[label] + ": rules follow labels of up to three characters",
             "use a label of up to three characters, in the graphs too");
      return;
    }
    const RuleItem* first = rule.first(Place::relation, item.side);
    if (first != &item) {
      report(rule, item, Level::warning, "label-idle", "only the first label of a pattern is followed",
             "write a rule of its own for " + full);
    }
    if (!graphs_.is_there || graphs_.labels.contains(label)) return;
    std::vector<const std::string*> candidates;
    for (const auto& [name, use] : graphs_.labels) {
      if (!use_of(name).followed) candidates.push_back(&names_[name]);
    }
    const std::string* near = nearest(full, candidates);
    Finding& found =
        report(rule, item, near != nullptr ? Level::warning : Level::note, "unknown-label", "no graph has " + full,
               near == nullptr ? "" : "did you mean " + *near + ", which no rule follows?");
    if (near != nullptr) fix_by(found, full, *near);
  }

  // Can it be told who gives this name? Names of graphs begin with a sign, all others may be those of entries; entries can
  // have names with a sign too, but graphs are what such a name is looked for in.
  bool is_judged(const std::string& name) const {
    if (name.empty()) return false;
    if (is_signed_name(name)) return graphs_.is_there;
    return words_.is_there();
  }

  bool is_given(NameId name) {
    if (use_of(name).given != 0) return true;
    // Copies: "#" in front of what the model had.
    const std::string& text = names_[name];
    const std::size_t begin = text.find_first_not_of('#');
    if (begin == std::string::npos) return true;
    if (begin == 0) return false;
    const std::string plain = text.substr(begin);
    const NameId known = names_.find(plain);
    return (known != kNoName && use_of(known).given != 0) || !is_judged(plain);
  }

  // A name in a condition, or one that an action takes away: does anything give it? Names of graphs that are near nothing
  // are notes, since these graphs may just not have them.
  void check_name(const RuleView& rule, const RuleItem& item) {
    const std::string& name = names_[item.name];
    if (item.place == Place::action && item.op == kOpAdd) {
      check_mark(rule, item);
      return;
    }
    // Silent where the files that could give the name were not handed over.
    if (!is_judged(name) || is_given(item.name)) return;
    const bool is_action = item.place == Place::action;
    std::string instead;
    std::string remedy = slip_in(name, rule, item, instead);
    if (remedy.empty()) {
      if (const std::string* near = near_given(name); near != nullptr) {
        remedy = "did you mean " + *near + "?";
        instead = *near;
      }
    }
    const bool is_of_graphs = is_signed_name(name);
    const bool is_taken = is_action;
    const Level level = remedy.empty() && is_of_graphs ? Level::note : Level::warning;
    std::string what = "nothing gives " + name;
    if (is_taken)
      what += ", so that there is nothing to take away";
    else if (item.op == kOpNot)
      what += ", so that ^" + name + " always holds";
    if (remedy.empty() && !is_of_graphs) remedy = "give it to an entry, or set it with an action";
    Finding& found = report(rule, item, level, "unknown-name", std::move(what), std::move(remedy));
    if (!instead.empty()) fix_by(found, name, instead);
  }

  // What the characters of a name show of a slip; empty for nothing. `instead` receives what should stand there, where
  // that is known.
  std::string slip_in(const std::string& name, const RuleView& rule, const RuleItem& item, std::string& instead) {
    if (const std::size_t sign = name.find('^'); sign != std::string::npos) {
      instead = name.substr(0, sign) + ',' + name.substr(sign);
      return "write a comma in front of ^";
    }
    if (name.back() == ';') {
      instead = name.substr(0, name.size() - 1) + ':';
      return "write : for ;, between conditions and actions";
    }
    if (name.find_first_of("[]") != std::string::npos) return "write a comma between a form and an attribute";
    const bool is_plain_condition = item.place == Place::cond && item.op == kOpHas && rule.quote(item.side);
    if (is_plain_condition && is_label(item.name)) return "a relation stands behind two colons: \"N::" + name + "\"";
    return {};
  }

  // The given name that is nearest; null if none is near. Many rules share a slip, so answers are kept.
  const std::string* near_given(const std::string& name) {
    const auto [known, is_new] = near_.try_emplace(name, nullptr);
    if (!is_new) return known->second;
    // Labels are short and much alike: only one that no rule knows can be the one that was meant.
    if (name.front() == '>' || name.front() == '<') {
      // A mark that some rule asks for is taken: it was meant where it stands.
      std::vector<const std::string*> unasked;
      for (const std::string* given : given_names_) {
        const NameId id = names_.find(*given);
        if (given->front() == name.front() && !use_of(id).asked) unasked.push_back(given);
      }
      known->second = nearest(name, unasked);
    } else {
      known->second = nearest(name, given_names_);
    }
    return known->second;
  }

  // An action that sets what no condition asks for. "@entry" is asked for by the engine.
  void check_mark(const RuleView& rule, const RuleItem& item) {
    const NameUse& use = use_of(item.name);
    const std::string& name = names_[item.name];
    // A rule that takes the mark away makes use of it, too.
    if (use.asked || use.taken || name.empty() || name == "@entry") return;
    const std::string* near = nearest(name, asked_names_);
    Finding& found =
        report(rule, item, Level::warning, "unused-name", "no condition asks for " + name,
               near != nullptr ? "did you mean " + *near + "?" : "strike it out, or ask for it with a condition");
    if (near != nullptr)
      fix_by(found, name, *near);
    else
      found.fix.kind = Fix::Kind::strike_item;
  }

  // A form in brackets: can any word of a list have it? Words come from entries with a concept word, which graphs name; from
  // rules that write a form or bring one in; from graphs themselves; from classes; and from words that post-edit splits.
  void check_form(const RuleView& rule, const RuleItem& item) {
    const std::string& form = names_[item.name];
    // "[a] N" is one form, "a] N": the bracket that ends a form is the last one of its item.
    const std::size_t inner = form.find("] ");  // the text of a form goes to the last bracket of its item
    if (inner != std::string::npos) {
      report(rule, item, Level::warning, "bracket-runs-on",
             "the text in brackets goes on to the last ]: its form is \"" + form + "\"",
             "write a comma behind the first ]");
      return;
    }
    if (item.place == Place::pre || (item.place == Place::mid && rule.quote(Side::left))) {
      report(rule, item, Level::warning, "form-in-pre", "groups to the left test attributes only, and no forms",
             "give the word an attribute, and ask for that");
      return;
    }
    const bool is_asked = item.place == Place::cond || item.place == Place::suf || item.place == Place::mid;
    if (!is_asked || item.op != kOpHas || !words_.is_there() || !graphs_.is_there) return;
    // An earlier check has judged those.
    if (item.place == Place::cond && rule.quote(item.side) && !rule.first(Place::relation)) return;  // a literal
    // Post-edit can split any form off a word.
    if ((rule.is_post_edit() && has_splits_) || form == "<<" || form == ">>" || is_number(form)) return;
    if (is_written(item, rule) || (has_class_ && pairs_.given.contains(item.name))) return;
    const auto known = words_.by_form.find(item.name);
    const bool has_entry = known != words_.by_form.end();
    // Graphs reach entries by their concept words.
    // A form whose entries have no concept word can come in by name only.
    const bool is_reached = has_entry && std::ranges::any_of(known->second, [](const WordFacts& word) {
                              return !word.concept_word.empty();
                            });
    if (is_reached || is_name_in_graphs(form)) return;
    report(rule, item, Level::warning, "form-never-there",
           "no word of the list can have the form [" + form + "]: " +
               (has_entry ? "its entries have no concept word, and no rule brings it in"
                          : "no entry, rule or graph gives it"),
           has_entry ? "to bring it in, write a quote pattern: \"[" + form + "]\"" : "look at how it is written");
  }

  // Does a rule write the form, or bring it in?
  bool is_written(const RuleItem& item, const RuleView& rule) const {
    if (!written_forms_.contains(item.name)) return false;
    // The item itself may be the only one, in a word that comes in over a relation.
    if (item.place != Place::cond || !rule.quote(item.side)) return true;
    for (const RuleView& other : base_.rules) {
      for (const RuleItem& own : other.items) {
        const bool writes = own.kind == ItemKind::hw && own.name == item.name && &own != &item &&
                            (own.place == Place::action || (own.place == Place::cond && is_literal(other, own.side)));
        if (writes) return true;
      }
    }
    return false;
  }

  static bool is_number(const std::string& text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) { return is_digit(c); });
  }

  // A word of the graphs that has no entry is written as it stands, without its restriction.
  bool is_name_in_graphs(const std::string& form) {
    // Made at the first question, since most rules ask for no form that is missing. The empty name marks it as made.
    if (name_forms_.empty()) {
      for (const auto* uses : {&graphs_.words, &graphs_.quoted}) {
        for (const auto& [name, use] : *uses) {
          const std::string& text = names_[name];
          name_forms_.insert(text);
          name_forms_.insert(text.substr(0, std::min(text.find("(>"), text.find("(<"))));
        }
      }
      name_forms_.insert("");
    }
    return name_forms_.contains(form);
  }

  // A concept word in brackets: known to the dictionary, or to the graphs?
  void check_concept(const RuleView& rule, const RuleItem& item) {
    const std::string& name = names_[item.name];
    if (item.place == Place::pre || (item.place == Place::mid && rule.quote(Side::left))) {
      report(rule, item, Level::warning, "form-in-pre", "groups to the left test attributes only, and no concepts",
             "give the word an attribute, and ask for that");
      return;
    }
    const bool is_asked = item.place == Place::cond || item.place == Place::suf || item.place == Place::mid;
    if (!is_asked || item.op != kOpHas || !words_.is_there() || words_.by_concept.contains(item.name)) return;
    if (graphs_.words.contains(item.name) || graphs_.quoted.contains(item.name)) return;
    const bool is_made = is_literal(rule, item.side) && item.place == Place::cond;
    report(rule, item, Level::warning, "unknown-concept",
           "no entry has the concept word " + name + (is_made ? ", so that a word of this form is made up" : ""),
           "look at how the dictionary writes it");
  }

  // --- texts

  // Characters beyond ASCII are bytes to Lexon, and a word is found only if all files write it in the same ones. A file in
  // an encoding of its own is all right where no other has such characters.
  void check_encodings() {
    struct Text {
      const std::string* file;
      EncodedLines lines;
    };
    std::vector<Text> texts;
    if (input_.source == nullptr) texts.push_back({&input_.rules.file, encoded_lines(input_.rules.text)});
    for (const auto& index : words_.indexes) texts.push_back({&index->path(), index->encoded()});
    for (const CheckText& graphs : input_.graphs) texts.push_back({&graphs.file, encoded_lines(graphs.text)});
    // A file that has both was told when it was read.
    const auto in_utf8 =
        std::ranges::find_if(texts, [](const Text& text) { return text.lines.utf8 != 0 && text.lines.other == 0; });
    if (in_utf8 == texts.end()) return;
    for (const Text& text : texts) {
      if (text.lines.other == 0 || text.lines.utf8 != 0) continue;
      findings_.push_back({*text.file, text.lines.other, 1, 2, Level::warning, "encoding",
                           "characters that are not UTF-8, as those of " + *in_utf8->file + ':' +
                               std::to_string(in_utf8->lines.utf8) + " are, so that no word with them is found",
                           "save all files in UTF-8"});
    }
  }

  // --- names that nobody asks for

  // Attributes of entries, each told once, at the first entry that has it.
  void check_word_names() {
    std::vector<NameId> unused;
    for (const auto& [name, use] : words_.attributes) {
      // An attribute that only an action takes away is told at that action, if at all.
      if (!use_of(name).asked && !use_of(name).taken) unused.push_back(name);
    }
    std::ranges::sort(unused, {}, [this](NameId name) {
      const WordSurvey::Attribute& use = words_.attributes.at(name);
      return std::tuple(use.file, use.line, std::string_view(names_[name]));
    });
    for (const NameId id : unused) {
      const WordSurvey::Attribute& use = words_.attributes.at(id);
      const std::string& name = names_[id];
      // A slip of the pen is rare; what stands in many entries is meant.
      constexpr std::int64_t kMostSlips = 3;
      const std::string* near = use.count <= kMostSlips ? nearest(name, asked_names_) : nullptr;
      std::string what = "no rule asks for " + name + " of [" + use.form + "]";
      if (use.count > 1) what += " and of " + std::to_string(use.count - 1) + " more";
      if (use.line != 0) needles_[findings_.size()] = name;  // the column is looked for when all findings are there
      findings_.push_back({words_.files[use.file], use.line, 0, 0, near != nullptr ? Level::warning : Level::note,
                           "unused-name", std::move(what), near != nullptr ? "did you mean " + *near + "?" : ""});
      if (near != nullptr && use.line != 0) findings_.back().fix = {Fix::Kind::replace, name, *near};
    }
  }

  void report(const GraphSurvey::Use& use, Level level, const char* code, std::string what, std::string remedy,
              Fix fix = {}) {
    findings_.push_back({input_.graphs[use.file].file, use.line, use.column, use.end_column, level, code,
                         std::move(what), std::move(remedy), std::move(fix)});
  }

  static Fix fix_of(const std::string& name, const std::string* near) {
    return near == nullptr ? Fix() : Fix{Fix::Kind::replace, name, *near};
  }

  static std::string times(std::int64_t count) { return count == 1 ? "" : " (" + std::to_string(count) + " times)"; }

  using UseOfName = std::pair<NameId, const GraphSurvey::Use*>;

  // By their first places, or by count and then these.
  static std::vector<UseOfName> sorted(const std::unordered_map<NameId, GraphSurvey::Use>& uses, bool by_count) {
    std::vector<UseOfName> result;
    for (const auto& [name, use] : uses) result.emplace_back(name, &use);
    std::ranges::sort(result, {}, [by_count](const UseOfName& use) {
      return std::tuple(by_count ? -use.second->count : 0, use.second->file, use.second->line, use.second->column);
    });
    return result;
  }

  // Labels and attributes in the order of the graphs, words by how often they stand there: what is missing most comes first.
  void check_graph_names() {
    std::vector<const std::string*>
        lost_labels;  // that rules follow and no graph has: what a slip may have been meant for
    for (const RuleView& rule : base_.rules) {
      for (const RuleItem& item : rule.items) {
        if (item.place == Place::relation && !graphs_.labels.contains(item.name))
          lost_labels.push_back(&names_[item.name]);
      }
    }
    for (const auto& [name, use] : sorted(graphs_.labels, false)) check_graph_label(name, *use, lost_labels);
    for (const auto& [id, use] : sorted(graphs_.attributes, false)) {
      const NameUse& known = use_of(id);
      if (known.asked || known.taken || (known.given & by_engine) != 0) continue;
      const std::string& name = names_[id];
      const std::string* near = nearest(name, asked_names_);
      report(*use, near != nullptr ? Level::warning : Level::note, "unused-name",
             "no rule asks for " + name + times(use->count), near != nullptr ? "did you mean " + *near + "?" : "",
             fix_of(name, near));
    }
    if (words_.is_there()) check_graph_words();
  }

  // A label of the graphs that no rule follows. One that a condition sees (>label) may be said by other means, so it is no
  // more than a note.
  void check_graph_label(NameId id, const GraphSurvey::Use& use, const std::vector<const std::string*>& lost_labels) {
    const std::string& label = names_[id];
    if (label.size() > kRelationLabelLimit) {
      report(use, Level::warning, "label-cut",
             "rules can see the relation " + label + " as >" + label + ", and cannot follow it" + times(use.count),
             "use a label of up to three characters");
      return;
    }
    if (use_of(id).followed) return;
    const bool is_seen = std::ranges::any_of(std::array{'>', '<'}, [&](char sign) {
      const NameId seen = names_.find(sign + label);
      return seen != kNoName && use_of(seen).asked;
    });
    const std::string* near = nearest(label, lost_labels);
    report(use, is_seen && near == nullptr ? Level::note : Level::warning, "unfollowed-label",
           "no rule follows " + label + times(use.count),
           near != nullptr ? "did you mean " + *near + "?" : "write a rule that brings its word in",
           fix_of(label, near));
  }

  // Words of the graphs that no entry has, those in quotes apart: they are names by intention.
  void check_graph_words() {
    for (const auto& [id, use] : sorted(graphs_.words, true)) {
      const std::string& name = names_[id];
      if (words_.by_concept.contains(id) || name.empty() || is_digit(name.front())) continue;
      const std::size_t open = name.find('(');
      // Runs try the whole name first, and then the part in front of the restriction.
      const NameId plain = open == std::string::npos ? kNoName : names_.find(name.substr(0, open));
      if (plain != kNoName && words_.by_concept.contains(plain)) continue;
      // A capital, or a letter beyond ASCII, begins a name, which needs no entry.
      // A restriction, as in dog(>animal), shows that an entry was meant after all.
      const bool is_name = open == std::string::npos && !(name.front() >= 'a' && name.front() <= 'z');
      std::string gloss_place;
      for (const auto& index : words_.indexes) {
        const std::int64_t line = gloss_place.empty() ? index->with_gloss(name) : 0;
        if (line != 0) gloss_place = index->path() + ':' + std::to_string(line);
      }
      if (!gloss_place.empty()) {
        report(*use, Level::warning, "unknown-word",
               "the dictionary has no " + name + times(use->count) + ": without quotes it is read as the gloss",
               "write the concept word of " + gloss_place + " in quotes");
        continue;
      }
      report(
          *use, is_name ? Level::note : Level::warning, "unknown-word",
          "the dictionary has no " + name + times(use->count) + (is_name ? "; it counts as a name" : ""),
          is_name ? ""
          : name.front() == '@'
              ? "write . for the comma in front of it: attributes stand behind a point"
              : "write an entry with the concept word \"" + name + "\", or the word in quotes if it is a name",
          is_name ? Fix() : Fix{Fix::Kind::new_entry, name, '[' + name.substr(0, open) + "]{} \"" + name + "\" ();"});
    }
  }

  const CheckInput& input_;
  Names names_;
  std::vector<Finding> findings_;
  RuleBase base_;
  GraphSurvey graphs_;
  WordSurvey words_;
  PairSurvey pairs_;
  WordQuestions questions_;                   // forms and concepts that rules and graphs name
  std::vector<NameUse> uses_;                 // by name; grows with the names
  std::unordered_set<NameId> roles_;          // relations of co-occurrence in rules
  std::unordered_set<NameId> valued_roles_;   // of these and of their superiors: some pair has a value
  std::unordered_set<NameId> written_forms_;  // that rules write, or bring in
  std::set<std::string> name_forms_;          // forms of words in graphs, made when they are first asked for
  bool has_class_ = false;                    // some rule asks for a word of a class
  bool has_splits_ = false;                   // some rule splits words, and so makes forms that nothing else gives
  std::vector<const std::string*> given_names_;
  std::vector<const std::string*> asked_names_;                       // by conditions, but those of the engine
  std::unordered_map<std::string, const std::string*> near_;          // answers of `near_given`
  std::map<std::vector<NameId>, bool> together_;                      // answers of `some_entry_has`
  std::unordered_map<NameId, std::vector<std::uint32_t>> sets_with_;  // attribute sets by name
  std::unordered_map<std::size_t, std::string> needles_;              // see `entry_columns_find`
};

}  // namespace

std::span<const CheckCode> check_codes() {
  return kCodes;
}

std::vector<Finding> check(const CheckInput& input) {
  return Check(input).run();
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
