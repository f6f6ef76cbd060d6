// lexon-lab coverage: counting, data files that add up, and what is shown of them.

#include "lab/coverage.hpp"

#include <algorithm>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <tuple>
#include <utility>

#include <nlohmann/json.hpp>

#include "front/process.hpp"
#include "lab/bench.hpp"
#include "lab/commands.hpp"
#include "lab/options.hpp"
#include "lab/show.hpp"
#include "lab/text_file.hpp"
#include "rules/candidates.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

using Json = nlohmann::json;

// A condition of a rule and the part that it stands in.
struct Condition {
  RulePart part;
  const CondItem* item;  // of the grammar; the key by which a refusal names the condition
  std::string text;      // "LNODE ^PL"
  bool is_attribute;     // else a form, a concept word, a relation or a role
};

const char* part_name(RulePart part) {
  switch (part) {
    case RulePart::pre: return "PRE";
    case RulePart::lnode: return "LNODE";
    case RulePart::mid: return "MID";
    case RulePart::rnode: return "RNODE";
    case RulePart::suf: return "SUF";
    // A rule has no other part with conditions.
    default: return "";
  }
}

// All conditions of a rule in the order of its text. Two runs that have the same canonical text have the same list, which
// is what merging goes by.
std::vector<Condition> conditions_of(const Rule& rule) {
  std::vector<Condition> conditions;
  // `open` and `close` stand around the text, as rules write it.
  const auto add = [&](RulePart part, const CondItem* items, const char* open, const char* close, bool is_attribute) {
    for (const CondItem& item : chain<&CondItem::next>(items)) {
      conditions.push_back(
          {part, &item, std::string(part_name(part)) + ' ' + (item.op == kOpNot ? "^" : "") + open + item.text + close,
           is_attribute});
    }
  };
  // Within a group and a pattern forms come first, then concept words, then attributes, whatever the order of the
  // text.
  const auto add_groups = [&](RulePart part, const ContextGroup* groups) {
    for (const ContextGroup& group : chain<&ContextGroup::next>(groups)) {
      add(part, group.hw_conds, "[", "]", false);
      add(part, group.cw_conds, "[[", "]]", false);
      add(part, group.attr_conds, "", "", true);
    }
  };
  const auto add_pattern = [&](RulePart part, const NodePattern& pattern) {
    add(part, pattern.hw_conds, "[", "]", false);
    add(part, pattern.cw_conds, "[[", "]]", false);
    add(part, pattern.attr_conds, "", "", true);
    add(part, pattern.relations, "relation ", "", false);
    add(part, pattern.roles, "co-occurrence ", "", false);
  };
  add_groups(RulePart::pre, rule.pre);
  add_pattern(RulePart::lnode, *rule.lnode);
  add_groups(RulePart::mid, rule.mid);
  add_pattern(RulePart::rnode, *rule.rnode);
  add_groups(RulePart::suf, rule.suf);
  return conditions;
}

// Is the condition held against a place of the window, attribute by attribute?
bool asks_place(const Rule& rule, const Condition& condition) {
  if (!condition.is_attribute) return false;
  // A pattern in quotes is about a word that is not there yet.
  if (condition.part == RulePart::lnode) return rule.lnode->inserted == 0;
  return condition.part == RulePart::rnode && rule.rnode->inserted == 0;
}

// Calls `visit` with each name of an attribute list; null has none.
template <typename Visit>
void for_each_attr(const char* attrs, Visit visit) {
  std::string_view rest = attrs == nullptr ? std::string_view() : std::string_view(attrs);
  while (!rest.empty()) {
    const std::size_t length = std::min(rest.find(','), rest.size());
    if (length > 0) visit(rest.substr(0, length));
    rest.remove_prefix(std::min(length + 1, rest.size()));
  }
}

}  // namespace

// ---- Counting

CoverageCounter::CoverageCounter(const Project& project) {
  for (const Rule& rule : chain<&Rule::next>(project.loaded().rules.rules)) {
    // The numbers are those of the search index, by which post-edit names its rules.
    numbers_[&rule] = list_.size();
    list_.push_back(&rule);
    RuleCount count;
    const RulePlace place = project.line_of(rule);
    count.file = place.file;
    count.line = place.line;
    // The canonical text is how a rule is known again in another run, when its line may have moved.
    count.text = project.text_of(rule);
    coverage_.rules.push_back(std::move(count));
  }
  spoiled_.resize(list_.size());
  fits_.resize(list_.size());
  // A counter is one run, however many sentences it sees.
  coverage_.runs = 1;
}

void CoverageCounter::sentence_begins(Session&) {
  ++coverage_.sentences;
  is_post_edit_ = false;
}

void CoverageCounter::generated(Session&, core::Status) {
  is_post_edit_ = true;
}

// Counts for the place of a window each attribute that some word there could give, since before a rule has settled the
// word the index too goes by what any of its words has. A scope that is not built yet has those of its entry word.
void CoverageCounter::count_place(const Session& session, const Node* node, Places& places) {
  std::set<std::string_view> attrs;
  const auto take = [&](const Node& of, bool is_open) {
    // What the graph says of the word; it is in force before any rule has touched it.
    for_each_attr(head_text(of), [&](std::string_view attr) { attrs.insert(attr); });
    for (const WordEntry* word = of.candidates; word != nullptr; word = is_open ? word->next : nullptr) {
      for_each_attr(word->attrs, [&](std::string_view attr) { attrs.insert(attr); });
    }
  };
  take(*node, is_fresh(*node));
  if (is_unbuilt_reference(session, *node)) {
    if (const Node* entry = scope_final_node(session, node->scope); entry != nullptr) take(*entry, is_fresh(*entry));
  }
  for (const std::string_view attr : attrs) {
    Seen& seen = places[std::string(attr)];
    // The first sentence is kept as the example.
    if (seen.places++ == 0) seen.example = sentence_;
  }
}

// Some rules are offered in generation whose type is of post-edit; these are no offers.
void CoverageCounter::offered(Session& session, const Window& window, const RuleCandidate* list) {
  // At the end of a list rules are asked for once more, with half a window.
  if (window.lnode == nullptr || window.rnode == nullptr) return;
  count_window(session, window);
  for_each_rule_from(session, list, [&](const Rule& rule) {
    if (!is_post_edit_type(rule.type)) ++coverage_.rules[numbers_.find(&rule)->second].offered;
  });
}

void CoverageCounter::offered_in_post_edit(Session& session, const Window& window, std::span<const RuleBlock> rules) {
  count_window(session, window);
  for (const RuleBlock& block : rules) {
    for_each_rule(block, [&](std::int32_t number) { ++coverage_.rules[static_cast<std::size_t>(number)].offered; });
  }
}

// Every window counts, in generation and in post-edit apart: rules of one see no places of the other.
void CoverageCounter::count_window(const Session& session, const Window& window) {
  ++coverage_.windows;
  // Also the index of the tables below: generation first.
  const std::size_t pass = is_post_edit_ ? 1 : 0;
  ++places_[pass];
  count_place(session, window.lnode, left_[pass]);
  count_place(session, window.rnode, right_[pass]);
}

void CoverageCounter::hit(RuleCount& count) {
  // Threads begin with different sentences, so with several the example may be any of them.
  if (count.hits++ == 0) count.example = sentence_;
}

void CoverageCounter::tried(Session& session, const RuleCandidate& candidate, const Window& before, const Window&,
                            Fit fit) {
  const std::size_t number = numbers_.find(candidate.rule)->second;
  RuleCount& count = coverage_.rules[number];
  ++count.tried;
  // A word test that asks for a step back has worked. What fits is a hit when it is carried out; a test never is.
  if (fit == Fit::yes || (fit == Fit::refused && is_word_test_type(candidate.rule->type))) {
    ++fits_[number];
    if (is_word_test_type(candidate.rule->type)) hit(count);
  } else if (fit == Fit::no) {
    // All that was missing, not only what refused it: a condition that alone would let the rule pass is worth knowing.
    for (const Miss& miss : rule_misses(session, candidate, before, true)) {
      if (miss.condition != nullptr) ++spoiled_[number][miss.condition];
    }
  }
}

void CoverageCounter::applied(Session&, const RuleCandidate& candidate, const Window&) {
  hit(coverage_.rules[numbers_.find(candidate.rule)->second]);
}

void CoverageCounter::undone(Session&, const RuleCandidate& candidate) {
  ++coverage_.rules[numbers_.find(candidate.rule)->second].undone;
}

// Adds the conditions to what was counted of the rules. Of an attribute that is held against a place the windows tell how
// many had it, whether the rule was tried there or not; of all others only the tries tell.
Coverage CoverageCounter::result() const {
  Coverage coverage = coverage_;
  for (std::size_t number = 0; number < list_.size(); ++number) {
    const Rule& rule = *list_[number];
    const std::size_t pass = is_post_edit_type(rule.type) ? 1 : 0;
    for (const Condition& condition : conditions_of(rule)) {
      ConditionCount count;
      count.text = condition.text;
      const auto spoiled = spoiled_[number].find(condition.item);
      // First what the tries tell; the places of the window replace it where they know more.
      count.misses = spoiled == spoiled_[number].end() ? 0 : spoiled->second;
      count.hits = fits_[number];
      count.example = coverage.rules[number].example;
      // Of a condition that forbids, the places that had the attribute are the misses.
      if (asks_place(rule, condition)) {
        const Places& places = condition.part == RulePart::lnode ? left_[pass] : right_[pass];
        const auto seen = places.find(condition.item->text);
        const std::int64_t with = seen == places.end() ? 0 : seen->second.places;
        // A sign among the conditions asks for its attribute, too.
        const bool wants = condition.item->op != kOpNot;
        count.hits = wants ? with : places_[pass] - with;
        count.misses = wants ? places_[pass] - with : with;
        if (wants) count.example = seen == places.end() ? std::string() : seen->second.example;
      }
      coverage.rules[number].conditions.push_back(std::move(count));
    }
  }
  return coverage;
}

namespace {

// ---- Data files

// {"format", "runs", "sentences", "windows", "rules": [{"file", "line", "text", "offered", "tried", "hits", "undone",
// "example", "conditions": [{"text", "hits", "misses", "example"}, ...]}, ...]}. A rule is known again by its text.
constexpr const char* kFormat = "lexon-coverage-1";

Json json_of(const Coverage& coverage) {
  Json rules = Json::array();
  for (const RuleCount& rule : coverage.rules) {
    Json conditions = Json::array();
    for (const ConditionCount& condition : rule.conditions) {
      conditions.push_back({{"text", condition.text},
                            {"hits", condition.hits},
                            {"misses", condition.misses},
                            {"example", condition.example}});
    }
    rules.push_back({{"file", rule.file},
                     {"line", rule.line},
                     {"text", rule.text},
                     {"offered", rule.offered},
                     {"tried", rule.tried},
                     {"hits", rule.hits},
                     {"undone", rule.undone},
                     {"example", rule.example},
                     {"conditions", std::move(conditions)}});
  }
  return {{"format", kFormat},
          {"runs", coverage.runs},
          {"sentences", coverage.sentences},
          {"windows", coverage.windows},
          {"rules", std::move(rules)}};
}

// Throws for what is missing or has another type.
Coverage coverage_of(const Json& json) {
  Coverage coverage;
  if (json.at("format") != kFormat) throw Fault("it is of another format");
  coverage.runs = json.at("runs");
  coverage.sentences = json.at("sentences");
  coverage.windows = json.at("windows");
  for (const Json& each : json.at("rules")) {
    RuleCount rule;
    // An assignment throws if the value is of another type.
    rule.file = each.at("file");
    rule.line = each.at("line");
    rule.text = each.at("text");
    rule.offered = each.at("offered");
    rule.tried = each.at("tried");
    rule.hits = each.at("hits");
    rule.undone = each.at("undone");
    rule.example = each.at("example");
    for (const Json& condition : each.at("conditions")) {
      rule.conditions.push_back(
          {condition.at("text"), condition.at("hits"), condition.at("misses"), condition.at("example")});
    }
    coverage.rules.push_back(std::move(rule));
  }
  return coverage;
}

}  // namespace

Coverage coverage_read(const std::string& path) {
  const std::string text = text_file_read(path);
  try {
    return coverage_of(Json::parse(text));
  } catch (const std::exception& fault) {
    throw Fault(path + ": this is no data file of lexon-lab coverage: " + fault.what());
  }
}

namespace {

// Adds what an earlier run has counted, rule by rule. Returns how many of its rules are no longer there.
std::int64_t coverage_add(Coverage& to, const Coverage& from) {
  // The same text can stand in the file more than once: its copies are paired in order.
  std::map<std::string_view, std::vector<RuleCount*>> by_text;
  for (auto rule = to.rules.rbegin(); rule != to.rules.rend(); ++rule) by_text[rule->text].push_back(&*rule);
  std::int64_t lost = 0;
  for (const RuleCount& rule : from.rules) {
    const auto found = by_text.find(rule.text);
    if (found == by_text.end() || found->second.empty()) {
      ++lost;
      continue;
    }
    // The lists were filled from the back, so their ends are the copies that stand first.
    RuleCount& mine = *found->second.back();
    found->second.pop_back();
    mine.offered += rule.offered;
    mine.tried += rule.tried;
    mine.hits += rule.hits;
    mine.undone += rule.undone;
    // Of this run rather than of an earlier one.
    if (mine.example.empty()) mine.example = rule.example;
    for (std::size_t at = 0; at < std::min(mine.conditions.size(), rule.conditions.size()); ++at) {
      mine.conditions[at].hits += rule.conditions[at].hits;
      mine.conditions[at].misses += rule.conditions[at].misses;
      if (mine.conditions[at].example.empty()) mine.conditions[at].example = rule.conditions[at].example;
    }
  }
  to.runs += from.runs;
  to.sentences += from.sentences;
  to.windows += from.windows;
  return lost;
}

// ---- What is shown

// The order of the grammar is that of trial; people read by file and line.
std::vector<const RuleCount*> in_file_order(const Coverage& coverage) {
  std::vector<const RuleCount*> rules;
  for (const RuleCount& rule : coverage.rules) rules.push_back(&rule);
  std::stable_sort(rules.begin(), rules.end(), [](const RuleCount* a, const RuleCount* b) {
    return std::tie(a->file, a->line) < std::tie(b->file, b->line);
  });
  return rules;
}

std::string place_text(const RuleCount& rule) {
  return rule.line == 0 ? rule.file : rule.file + ':' + std::to_string(rule.line);
}

// "RNODE ^PL  12 hits, 3 misses, input.txt:8 [S:1]".
std::string condition_text(const ConditionCount& condition) {
  std::string text =
      condition.text + "  " + std::to_string(condition.hits) + " hits, " + std::to_string(condition.misses) + " misses";
  if (!condition.example.empty()) text += ", " + condition.example;
  return text;
}

// A line a rule. Below one that never fired stand the conditions that never held, which is why.
void print_text(const Coverage& coverage, bool with_conditions) {
  const bool in_colours = wants_colours();
  const auto fired =
      std::count_if(coverage.rules.begin(), coverage.rules.end(), [](const RuleCount& rule) { return rule.hits > 0; });
  std::cout << count_text(coverage.sentences, "sentence") << ", " << count_text(coverage.windows, "window") << "; "
            << fired << " of " << count_text(static_cast<std::int64_t>(coverage.rules.size()), "rule") << " fired\n\n";
  const std::vector<const RuleCount*> rules = in_file_order(coverage);
  for (const RuleCount* rule : rules) {
    std::string line = place_text(*rule) + "  ";
    if (rule->hits > 0) {
      line += count_text(rule->hits, "hit") + ", " + std::to_string(rule->undone) + " taken back, " +
              std::to_string(rule->tried - std::min(rule->hits, rule->tried)) + " misses; " + rule->example;
    } else if (rule->tried > 0) {
      // Three ways of never firing, which call for different remedies: conditions, order, and names.
      line += "never fired: refused in " + std::to_string(rule->tried) + (rule->tried == 1 ? " try" : " tries");
    } else if (rule->offered > 0) {
      line += "never fired: another rule came first at " + count_text(rule->offered, "window");
    } else {
      line += "never fired: never offered";
    }
    const bool is_marked = in_colours && rule->hits == 0;
    std::cout << (is_marked ? "\x1b[31m" : "") << escaped(line) << (is_marked ? "\x1b[0m" : "") << '\n';
    if (!with_conditions && rule->hits > 0) continue;
    for (const ConditionCount& condition : rule->conditions) {
      // Of a rule that never fired the conditions that held are not to blame.
      const bool is_telling = with_conditions || condition.hits == 0;
      if (is_telling) std::cout << escaped("    " + condition_text(condition)) << '\n';
    }
  }
}

// Text as it may stand in a page, in an attribute too.
std::string html_text(std::string_view text) {
  std::string html;
  for (const char c : text) {
    switch (c) {
      case '<': html += "&lt;"; break;
      case '>': html += "&gt;"; break;
      case '&': html += "&amp;"; break;
      case '"': html += "&quot;"; break;
      default: html += c;
    }
  }
  return html;
}

// The rows of one file: its text, with a colour and the counts at each rule. `anchor` stands in front of the line numbers
// by which links find a row.
void html_rows(std::ostringstream& page, const std::string& path, const std::string& anchor, const Coverage& coverage) {
  // Of a grammar source a line can stand for many rules.
  std::map<std::uint32_t, std::vector<const RuleCount*>> by_line;
  for (const RuleCount& rule : coverage.rules) {
    if (rule.file == path) by_line[rule.line].push_back(&rule);
  }
  std::uint32_t number = 0;
  const std::string rules = text_file_read(path);
  for (const std::string_view line : lines_of(rules)) {
    const auto found = by_line.find(++number);
    if (found == by_line.end()) {
      page << "<tr><td class=\"n\">" << number << "</td><td></td><td></td><td></td><td class=\"c\">" << html_text(line)
           << "</td></tr>\n";
      continue;
    }
    // A line of a source counts for all rules that it was expanded to.
    RuleCount all;
    for (const RuleCount* rule : found->second) {
      all.hits += rule->hits;
      all.undone += rule->undone;
      all.tried += rule->tried;
      all.offered += rule->offered;
      if (all.example.empty()) all.example = rule->example;
    }
    page << "<tr id=\"" << anchor << number << "\" class=\""
         << (all.hits > 0      ? "hit"
             : all.offered > 0 ? "late"
                               : "miss")
         << "\"><td class=\"n\">" << number << "</td><td class=\"n\">" << all.hits << "</td><td class=\"n\">"
         << all.undone << "</td><td class=\"n\">" << all.tried << "</td><td class=\"c\">" << html_text(line)
         << "<details><summary>" << (all.example.empty() ? "conditions" : html_text(all.example)) << "</summary>";
    for (const RuleCount* rule : found->second) {
      if (found->second.size() > 1)
        page << "<p>" << html_text(rule->text) << ": " << count_text(rule->hits, "hit") << "</p>";
      page << "<ul>";
      for (const ConditionCount& condition : rule->conditions) {
        page << "<li" << (condition.hits == 0 ? " class=\"zero\"" : "") << '>' << html_text(condition_text(condition))
             << "</li>";
      }
      page << "</ul>";
    }
    page << "</details></td></tr>\n";
  }
}

// The rule text, and behind it each file that a source includes, as a page without anything beside it.
std::string html_page(const Project& project, const Coverage& coverage) {
  const auto fired =
      std::count_if(coverage.rules.begin(), coverage.rules.end(), [](const RuleCount& rule) { return rule.hits > 0; });
  std::ostringstream page;
  page << "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>Coverage of "
       << html_text(project.rule_text())
       << "</title>\n<style>body{font:14px/1.4 sans-serif;margin:1em}table{border-collapse:collapse;width:100%}"
          "td{padding:0 .6em;vertical-align:top;white-space:pre-wrap}td.n{text-align:right;color:#666}"
          "td.c{font-family:monospace}tr.hit{background:#e7f6e7}tr.miss{background:#fbe3e3}"
          "tr.late{background:#fdf3d8}details{font-family:sans-serif;color:#333}summary{cursor:pointer}"
          "li.zero{color:#a00}</style></head>\n<body><h1>"
       << html_text(project.rule_text()) << "</h1>\n<p>" << count_text(coverage.sentences, "sentence") << " in "
       << count_text(coverage.runs, "run") << ", " << count_text(coverage.windows, "window") << "; " << fired << " of "
       << count_text(static_cast<std::int64_t>(coverage.rules.size()), "rule")
       << " fired. Green: fired; yellow: offered, but another rule came first or a condition failed; red: never "
          "offered.</p>\n";
  // The file that was named comes first, whether it has rules of its own or not.
  std::vector<std::string> files = {project.rule_text()};
  for (const RuleCount* rule : in_file_order(coverage)) {
    if (std::ranges::find(files, rule->file) == files.end()) files.push_back(rule->file);
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (i > 0) page << "<h2>" << html_text(files[i]) << "</h2>\n";
    page << "<table><tr><th>line</th><th>hits</th><th>taken back</th><th>tried</th><th></th></tr>\n";
    html_rows(page, files[i], i == 0 ? "L" : "F" + std::to_string(i) + "L", coverage);
    page << "</table>\n";
  }
  page << "</body></html>\n";
  return page.str();
}

// The tracefile that genhtml and editors read: a line is a rule, a branch pair a condition that held and failed.
//
//   TN:                       begins the record of a file, with an empty name of the test
//   SF:FILE
//   BRDA:LINE,BLOCK,0,COUNT   how often the condition held, and with ,1, how often it failed; "-": never asked
//   BRF:N, BRH:N              branches, and those of them that were taken
//   DA:LINE,COUNT             how often the rules of the line fired
//   LF:N, LH:N                lines with rules, and those of them that fired
//   end_of_record
std::string lcov_text(const Coverage& coverage) {
  std::ostringstream text;
  const std::vector<const RuleCount*> rules = in_file_order(coverage);
  for (std::size_t begin = 0; begin < rules.size();) {
    std::map<std::uint32_t, std::int64_t> hits;
    std::int64_t branches = 0;
    std::int64_t taken = 0;
    text << "TN:\nSF:" << rules[begin]->file << '\n';
    std::size_t at = begin;
    for (; at < rules.size() && rules[at]->file == rules[begin]->file; ++at) {
      const RuleCount& rule = *rules[at];
      hits[rule.line] += rule.hits;
      for (const ConditionCount& condition : rule.conditions) {
        for (const std::int64_t count : {condition.hits, condition.misses}) {
          text << "BRDA:" << rule.line << ',' << branches / 2 << ',' << branches % 2 << ',';
          text << (rule.offered == 0 ? "-" : std::to_string(count)) << '\n';
          ++branches;
          // A rule that was never offered has asked for nothing, whatever the windows counted.
          taken += count > 0 && rule.offered > 0 ? 1 : 0;
        }
      }
    }
    text << "BRF:" << branches << "\nBRH:" << taken << '\n';
    std::int64_t hit = 0;
    for (const auto& [line, count] : hits) {
      text << "DA:" << line << ',' << count << '\n';
      hit += count > 0 ? 1 : 0;
    }
    text << "LF:" << hits.size() << "\nLH:" << hit << "\nend_of_record\n";
    begin = at;
  }
  return text.str();
}

// The rule text without the rules that never fired; comments and what is no rule in force stay. Of a grammar source it
// is the rules alone.
std::string pruned_text(const Project& project, const Coverage& coverage) {
  std::set<std::uint32_t> left_out;  // lines
  std::string canonical;
  bool has_lines = true;
  for (const RuleCount& rule : coverage.rules) {
    has_lines = has_lines && rule.line != 0;
    // A plain text has one rule in a line, so that no rule goes along that fired.
    if (rule.hits == 0) left_out.insert(rule.line);
    if (rule.hits > 0) canonical += rule.text + '\n';
  }
  // Compiled rules without their text have no lines, and a line of a source may stand for rules that fired and others.
  if (!has_lines || project.has_source()) return canonical;
  std::string text;
  std::uint32_t number = 0;
  const std::string rules = text_file_read(project.rule_text());
  for (const std::string_view line : lines_of(rules)) {
    if (left_out.count(++number) == 0) (text += line) += '\n';
  }
  return text;
}

// ---- The command

struct Arguments : RunArguments {
  std::vector<std::string> merged;  // data files of earlier runs
  std::string data;                 // files to write, here to `pruned`; empty: none
  std::string html;
  std::string lcov;
  std::string pruned;
  unsigned jobs = 1;
  bool with_conditions = false;
};

int cover(const Arguments& arguments) {
  const Project project(arguments.grammar);
  RunArguments read = arguments;
  // Written files must be none that is read.
  read.render.inputs.push_back(project.rule_text());  // of compiled rules the text beside them
  refuse_own_files(read, arguments.pruned, "--prune");
  refuse_own_files(read, arguments.html, "--html");
  refuse_own_files(read, arguments.lcov, "--lcov");
  refuse_own_files(read, arguments.data, "--data");
  // Compiled rules whose text is not beside them have no lines that a page or a tracefile could show.
  const Rule* first = project.loaded().rules.rules;
  const bool has_lines = first == nullptr || project.line_of(*first).line != 0;
  if (!has_lines && !(arguments.html.empty() && arguments.lcov.empty())) {
    throw Fault(arguments.grammar.rules + ": compiled rules do not tell lines: name the text for --html and --lcov");
  }
  // A thread counts for itself; the counts are added up when all are through.
  struct Worker {
    explicit Worker(const Project& project) : bench(project), counter(project) { bench.watchers().add(counter); }
    Bench bench;
    CoverageCounter counter;
    std::vector<std::pair<GraphText, Rendered>> failed;
  };
  std::vector<std::unique_ptr<Worker>> workers;
  for (unsigned i = 0; i < arguments.jobs; ++i) workers.push_back(std::make_unique<Worker>(project));
  for_each_sentence_on(arguments.jobs, arguments.render, [&](unsigned thread, const GraphText& graph) {
    Worker& worker = *workers[thread];
    worker.counter.set_sentence(graph.place() + (graph.label.empty() ? std::string() : " [" + graph.label + "]"));
    for (Rendered& rendered : worker.bench.render(graph.text, arguments.render)) {
      if (!rendered.is_done()) worker.failed.emplace_back(graph, std::move(rendered));
    }
  });
  int status = kDone;
  Coverage coverage = workers.front()->counter.result();
  for (const auto& worker : workers) {
    // All threads have the same rules, so nothing is lost.
    if (worker != workers.front()) static_cast<void>(coverage_add(coverage, worker->counter.result()));
    for (const auto& [graph, rendered] : worker->failed) {
      status = kFailed;
      tell_failure(graph, rendered);
    }
  }
  coverage.runs = 1;  // however many threads took part
  for (const std::string& path : arguments.merged) {
    if (const std::int64_t lost = coverage_add(coverage, coverage_read(path)); lost > 0)
      tell_line(path + ": " + count_text(lost, "rule") + " of it, changed or taken out since, left out");
  }
  if (!arguments.data.empty())
    // Texts that are no UTF-8 are shown with a sign for each bad byte.
    text_file_write(arguments.data, json_of(coverage).dump(1, ' ', false, Json::error_handler_t::replace) + '\n');
  if (!arguments.html.empty()) text_file_write(arguments.html, html_page(project, coverage));
  if (!arguments.lcov.empty()) text_file_write(arguments.lcov, lcov_text(coverage));
  if (!arguments.pruned.empty()) text_file_write(arguments.pruned, pruned_text(project, coverage));
  // Who has it written wants no text too, but pruned rules are no account.
  const bool is_shown = arguments.data.empty() && arguments.html.empty() && arguments.lcov.empty();
  if (is_shown || arguments.with_conditions) print_text(coverage, arguments.with_conditions);
  return status;
}

}  // namespace

Command add_coverage(CLI::App& app) {
  CLI::App& command = add_command(app, "coverage", "Count how often each rule and condition was of use");
  const auto arguments = std::make_shared<Arguments>();
  add_run_options(command, *arguments);
  add_option(command, "-j,--jobs", arguments->jobs, "Threads", {.shows_default = true, .range = {{1, 256}}});
  add_option(command, "-m,--merge", arguments->merged, "Add what a data file of an earlier run holds; may be repeated",
             {.one_value = true});
  add_option(command, "--data", arguments->data, "Write a data file, for --merge");
  add_option(command, "--html", arguments->html, "Write the rules with their counts as a page");
  add_option(command, "--lcov", arguments->lcov, "Write a tracefile of LCOV");
  add_option(command, "--prune", arguments->pruned, "Write the rules without those that never fired");
  add_flag(command, "--conditions", arguments->with_conditions, "Show each condition of each rule");
  return {&command, [arguments] { return cover(*arguments); }};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
