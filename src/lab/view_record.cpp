#include "lab/view_record.hpp"

#include <algorithm>
#include <cstring>
#include <fstream>

#include "lab/show.hpp"
#include "run/report.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// Rules can make lists, copies and searches of any size; a page needs an end.
constexpr std::ptrdiff_t kMostAround = 100;    // nodes of a list to each side of the window
constexpr int kMostNodes = 4096;               // that are walked over in one direction
constexpr std::size_t kMostStanding = 100000;  // steps that can be told to be taken back
constexpr int kMostCopies = 64;                // of copies, back to the node of the graph
constexpr std::size_t kMostFitted = 300;       // more than scopes can lie within each other
constexpr int kMostFinal = 2048;               // words of the sentence

std::string_view text_of(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

// Is it one of the attributes, which have commas between them?
bool has_attr(std::string_view attrs, std::string_view wanted) {
  while (!attrs.empty()) {
    const std::size_t length = std::min(attrs.find(','), attrs.size());
    if (attrs.substr(0, length) == wanted) return true;
    attrs.remove_prefix(std::min(length + 1, attrs.size()));
  }
  return false;
}

// How many of `attrs` are in `others`.
int common_attrs(std::string_view attrs, std::string_view others) {
  int count = 0;
  while (!attrs.empty()) {
    const std::size_t length = std::min(attrs.find(','), attrs.size());
    if (length > 0 && has_attr(others, attrs.substr(0, length))) ++count;
    attrs.remove_prefix(std::min(length + 1, attrs.size()));
  }
  return count;
}

// What no action of a rule changes.
bool is_same_word(const WordEntry& a, const WordEntry& b) {
  return text_of(a.cw) == text_of(b.cw) && text_of(a.gloss) == text_of(b.gloss) && text_of(a.id) == text_of(b.id) &&
         std::memcmp(a.frequency, b.frequency, sizeof a.frequency) == 0 && a.priority == b.priority;
}

// The entry that the word comes from, whatever rules have made of it since: of those that agree in what no rule changes,
// the one with the same form, or else the most of its attributes. Null: none agrees.
const WordEntry* entry_behind(const WordEntry* entries, const WordEntry& word) {
  const WordEntry* best = nullptr;
  int best_likeness = -1;
  for (const WordEntry& entry : chain<&WordEntry::next>(entries)) {
    if (!is_same_word(entry, word)) continue;
    const bool has_its_form = text_of(entry.hw) == text_of(word.hw);
    const int likeness = common_attrs(text_of(entry.attrs), text_of(word.attrs)) + (has_its_form ? kAttrLimit : 0);
    // Of equal ones the first, which the dictionary tries first.
    if (likeness > best_likeness) {
      best = &entry;
      best_likeness = likeness;
    }
  }
  return best;
}

// What the node was copied from in the first place: a node of the graph, or one that a rule has brought in.
const Node& first_of(const Node& node) {
  const Node* first = &node;
  for (int steps = 0; first->source != nullptr && steps < kMostCopies; ++steps) first = first->source;
  return *first;
}

}  // namespace

// ---- The graph.

// The number of a node of the graph, which is noted when it is first met: nodes that no relation has come late.
std::int32_t ViewRecord::graph_node(const Node& node) {
  const auto [place, is_new] = graph_nodes_.try_emplace(&node, static_cast<std::int32_t>(graph_nodes_.size()));
  // It was described when it was first met.
  if (!is_new) return place->second;
  nlohmann::json data;
  const std::string scope = std::to_string(node.scope);
  const std::string name(text_of(node.name));
  data["name"] = is_scope_reference(node) ? ':' + std::string(scope.size() < 2 ? "0" : "") + scope : name;
  data["scope"] = is_scope_reference(node) ? node.scope : -1;
  data["instance"] = is_scope_reference(node) ? 0 : node.scope;
  // By scope, since a node may have other attributes in each.
  data["attrs"] = nlohmann::json::array();
  for (const ScopeAttrs& block : chain<&ScopeAttrs::next>(node.scope_attrs))
    data["attrs"].push_back({block.scope, block.text});
  data["unknown"] = std::find(unknown_words_.begin(), unknown_words_.end(), name) != unknown_words_.end();
  graph_["nodes"].push_back(std::move(data));
  return place->second;
}

// The graph as it was read, in the order of its lines. Whether a relation was followed is known at the end.
void ViewRecord::graph_read(const Session& session) {
  graph_ = {{"nodes", nlohmann::json::array()},
            {"relations", nlohmann::json::array()},
            {"scopes", nlohmann::json::array()},
            {"layout", nullptr},
            {"notice", ""}};
  SentenceReport report;
  report_leftovers(session, report);
  unknown_words_ = std::move(report.unknown_words);
  const auto& sentence = session.sentence;
  for (std::int32_t at = 0; at < sentence.graph_node_count; ++at) {
    const Node* node = sentence.graph_nodes[static_cast<std::size_t>(at)];
    if (node != nullptr) static_cast<void>(graph_node(*node));
  }
  for (std::int32_t at = 0; at < sentence.graph_relation_count; ++at) {
    const Relation* arc = sentence.graph_relations[static_cast<std::size_t>(at)];
    // Relations that were refused leave a gap.
    if (arc == nullptr || arc->from == nullptr || arc->to == nullptr) continue;
    relations_.push_back(arc);
    const std::int32_t from = graph_node(*arc->from);
    const std::int32_t to = graph_node(*arc->to);
    graph_["relations"].push_back(
        {{"label", arc->label}, {"scope", arc->scope}, {"from", from}, {"to", to}, {"used", false}});
  }
  for (const ScopeRow& row : scope_rows(sentence)) {
    const bool has_entry = row.entry != nullptr;
    graph_["scopes"].push_back({{"number", row.number}, {"entry", has_entry ? graph_node(*row.entry) : -1}});
  }
}

// Which relations have been followed by now, as a number of `used_`. When the search was left early what is in memory may
// be half done, so nothing is read.
std::int32_t ViewRecord::used_now(const Session& session) {
  std::string used;
  if (must_leave(session) == core::Status::ok || is_post_edit_) {
    for (const Relation* arc : relations_) used += arc->used != 0 ? '1' : '0';
  }
  return used_.number_of(used);
}

// ---- Lists.

// The number of a place of lists. Places are told apart by their node in memory.
std::int32_t ViewRecord::place_of(const Node& node) {
  const auto known = places_by_node_.find(&node);
  // A place that was given back can come again as another one.
  if (known != places_by_node_.end()) {
    const Place& place = places_[static_cast<std::size_t>(known->second)];
    const bool is_the_same = place.source == node.source && (node.name == nullptr || place.name == node.name);
    if (is_the_same) return known->second;
  }
  Place place;
  place.source = node.source;
  // A copy has no name of its own.
  int steps = 0;
  for (const Node* each = &node; each != nullptr && place.name.empty() && ++steps < kMostCopies; each = each->source)
    place.name = text_of(each->name);
  if (const auto found = graph_nodes_.find(&node); found != graph_nodes_.end()) place.graph = found->second;
  if (node.source != nullptr && node.source != &node) {
    const auto source = places_by_node_.find(node.source);
    place.from = source != places_by_node_.end() ? source->second : -1;
    if (place.from == -1) {
      // A copy of what no list has shown yet, which is a node of the graph.
      const auto found = graph_nodes_.find(&first_of(node));
      if (found != graph_nodes_.end()) place.graph = found->second;
    }
  }
  const auto number = static_cast<std::int32_t>(places_.size());
  places_.push_back(std::move(place));
  // In the place of what stood at this address before.
  places_by_node_[&node] = number;
  return number;
}

// Notes the words of a node that a rule brings in, before its actions change them: they come from no entry of the
// dictionary, and are shown in the place of one.
void ViewRecord::literal_note(const Node& node) {
  const std::int32_t number = place_of(node);
  Place& place = places_[static_cast<std::size_t>(number)];
  place.literals.clear();
  for (const WordEntry& word : chain<&WordEntry::next>(node.candidates))
    place.literals.emplace_back(text_of(word.hw),
                                entries_.number_of({entry_line(word), std::string(text_of(word.attrs))}));
}

// The number of the entry behind the node's word; -1: it has none.
std::int32_t ViewRecord::entry_of(const Node& node, const Place& place) {
  if (node.candidates == nullptr || is_boundary(node)) return -1;
  // A copy has no entries of its own.
  const Node& first = first_of(node);
  const WordEntry* entry = entry_behind(node.entries != nullptr ? node.entries : first.entries, *node.candidates);
  if (entry != nullptr) return entries_.number_of({entry_line(*entry), std::string(text_of(entry->attrs))});
  const std::string_view form = text_of(node.candidates->hw);
  for (const auto& [literal, number] : place.literals) {
    if (literal == form) return number;
  }
  return place.literals.empty() ? -1 : place.literals.front().second;
}

// The number of the node's state now; with a candidate, as it was before that one touched it.
std::int32_t ViewRecord::state_of(const Node& node, const RuleCandidate* candidate) {
  State state;
  state.place = place_of(node);
  state.text = candidate == nullptr ? node_text(&node) : node_text_before(&node, *candidate);
  const MatchRecord* record = node.matches;
  // Records stand newest first.
  while (record != nullptr && candidate != nullptr && record->candidate == candidate) record = record->next;
  state.is_untouched = !is_boundary(node) && (record == nullptr || record->state == kStateHold);
  if (node.candidates != nullptr) state.attrs = text_of(node.candidates->attrs);
  // What the graph says of a word gets into it when a rule first fits.
  if (is_untouched(node) && !is_boundary(node)) {
    const char* said = head_text(node);
    if (said != nullptr && *said != '\0') state.attrs = std::string(said) + ',' + state.attrs;
  }
  const std::int32_t number = states_.number_of(state);
  // A state that is new; of a known one the entry is known, too.
  if (static_cast<std::size_t>(number) == entry_of_state_.size())
    entry_of_state_.push_back(entry_of(node, places_[static_cast<std::size_t>(state.place)]));
  return number;
}

// The list around the window. With a candidate its words are as they were before that one touched them, and without what
// it has `inserted`.
ViewRecord::Shown ViewRecord::list_of(const Session& session, const Window& window, const RuleCandidate* candidate,
                                      const Node* inserted) {
  // The walk begins at a place that stands in the list: what a rule brings in may not yet.
  const bool begins_right = window.lnode == nullptr || window.lnode == inserted;
  const Node* middle = begins_right ? window.rnode : window.lnode;
  if (middle == nullptr || must_leave(session) != core::Status::ok) return {};
  std::vector<const Node*> nodes;
  std::int32_t left_out[2] = {0, 0};  // nodes at either end that are too far away
  // A rule base can close a list to a circle.
  int steps = 0;
  for (const Node* node = middle->left; node != nullptr && ++steps < kMostNodes; node = node->left) {
    if (steps <= kMostAround) {
      nodes.push_back(node);
    } else {
      ++left_out[0];
    }
  }
  std::reverse(nodes.begin(), nodes.end());
  const std::size_t to_the_left = nodes.size();  // where the middle comes to stand
  steps = 0;
  for (const Node* node = middle; node != nullptr && ++steps < kMostNodes; node = node->right) {
    if (steps <= kMostAround) {
      nodes.push_back(node);
    } else {
      ++left_out[1];
    }
  }
  std::vector<std::int32_t> list;
  Shown shown;
  // A negative number stands for so many nodes that are not shown.
  if (left_out[0] > 0) list.push_back(-left_out[0]);
  for (std::size_t at = 0; at < nodes.size(); ++at) {
    if (nodes[at] == inserted) continue;
    // The window's left place is the one in front of the middle if that is its right one.
    if (at == to_the_left) shown.at = static_cast<std::int32_t>(list.size()) - (begins_right ? 1 : 0);
    list.push_back(state_of(*nodes[at], candidate));
  }
  if (left_out[1] > 0) list.push_back(-left_out[1]);
  shown.list = lists_.number_of(list);
  return shown;
}

// The words of the sentence, as they are joined to its text: scopes in the places of their references.
// `entry`: any node of the list; `depth`: of scopes, which bad rules can lay within themselves.
void ViewRecord::final_walk(const Session& session, const Node* entry, int depth, std::vector<std::int32_t>& list) {
  if (entry == nullptr || depth > kMaxScopes) return;
  int steps = 0;
  while (entry->left != nullptr && ++steps < kMostNodes) entry = entry->left;
  for (steps = 0; entry != nullptr && ++steps < kMostNodes && list.size() < kMostFinal; entry = entry->right) {
    if (is_scope_reference(*entry)) {
      const int row = scope_row_find(session, entry->scope);
      // Row 0 is the sentence itself.
      if (row != 0) final_walk(session, session.sentence.semlst[static_cast<std::size_t>(row)].entry, depth + 1, list);
    } else if (kind_bits(*entry) != kKindBoundary) {
      list.push_back(state_of(*entry, nullptr));
    }
  }
}

std::int32_t ViewRecord::final_list(const Session& session) {
  std::vector<std::int32_t> list;
  final_walk(session, session.sentence.semlst[0].entry, 0, list);
  return lists_.number_of(list);
}

// ---- The search.

void ViewRecord::sentence_begins(Session& session) {
  relations_.clear();
  graph_nodes_.clear();
  places_by_node_.clear();
  places_.clear();
  entries_.clear();
  states_.clear();
  entry_of_state_.clear();
  lists_.clear();
  used_.clear();
  steps_.clear();
  standing_.clear();
  standing_at_.clear();
  last_number_ = forgotten_ = 0;
  // What is left of a sentence that was stopped.
  fitted_.clear();
  last_offered_ = {};
  has_reason_ = is_post_edit_ = false;
  graph_read(session);
}

// What comes now is post-edit.
void ViewRecord::generated(Session&, core::Status) {
  is_post_edit_ = true;
}

ViewRecord::Step ViewRecord::step_of(const Session& session, Kind kind, const Rule* rule) const {
  return {
      .kind = kind, .is_post_edit = is_post_edit_, .rule = rule, .scope = std::int32_t{current_scope(session).number}};
}

// A half more than is kept may gather, so that forgetting is rare.
void ViewRecord::append(Step&& step) {
  step.number = ++last_number_;
  steps_.push_back(std::move(step));
  // Forgetting goes over everything that is kept.
  if (steps_.size() > kept_ + kept_ / 2) forget_some();
}

// A step that stands till it is taken back.
void ViewRecord::stand(const RuleCandidate& candidate, Step&& step) {
  has_reason_ = false;
  // Carried out again, with another word or another solution of its scope, it takes the place of what it was before.
  const std::size_t place = standing_at(candidate);
  if (place < standing_.size() && !step.is_post_edit) {
    const auto before = step_at(standing_[place].number);
    // A list of -1 is one that could not be read.
    if (before != steps_.end() && step.before.list == -1) step.before = before->before;
    take_back_from(place);
  }
  append(std::move(step));
  standing_at_[&candidate] = standing_.size();
  standing_.push_back({&candidate, last_number_});
  if (standing_.size() <= kMostStanding) return;
  // The oldest are given up: if they are taken back after all, the page shows them as standing.
  standing_.erase(standing_.begin(), standing_.begin() + kMostStanding / 2);
  standing_at_.clear();
  for (std::size_t at = 0; at < standing_.size(); ++at) standing_at_[standing_[at].candidate] = at;
}

// A step that is over as soon as it is there.
void ViewRecord::leaf(Step&& step) {
  step.size = 1;
  step.is_undone = true;
  append(std::move(step));
}

std::deque<ViewRecord::Step>::iterator ViewRecord::step_at(std::int64_t number) {
  const auto step = std::lower_bound(steps_.begin(), steps_.end(), number,
                                     [](const Step& each, std::int64_t wanted) { return each.number < wanted; });
  return step != steps_.end() && step->number == number ? step : steps_.end();
}

// The size of the stack if it does not stand.
std::size_t ViewRecord::standing_at(const RuleCandidate& candidate) const {
  const auto found = standing_at_.find(&candidate);
  return found == standing_at_.end() ? standing_.size() : found->second;
}

// This step and all that followed on it. Their sizes are known now: they reach to the last number.
void ViewRecord::take_back_from(std::size_t place) {
  for (; standing_.size() > place; standing_.pop_back()) {
    const auto newest = standing_at_.find(standing_.back().candidate);
    if (newest != standing_at_.end() && newest->second + 1 == standing_.size()) standing_at_.erase(newest);
    const std::int64_t number = standing_.back().number;
    const auto step = step_at(number);
    // It was forgotten meanwhile.
    if (step == steps_.end()) continue;
    step->is_undone = true;
    step->size = last_number_ - number + 1;
  }
}

// Behind the first half goes first what was taken back longest ago, then what stands.
void ViewRecord::forget_some() {
  const std::size_t head = kept_ / 2;
  const std::size_t size = steps_.size();
  std::size_t surplus = size - kept_;
  std::deque<Step> left;
  for (std::size_t at = 0; at < size; ++at) {
    const bool goes = at >= head && surplus > 0 && steps_[at].is_undone;
    if (goes) --surplus;
    if (!goes) left.push_back(steps_[at]);
  }
  // Not enough was taken back: of what stands the oldest behind the head goes.
  if (surplus > 0) {
    const auto first = left.begin() + static_cast<std::ptrdiff_t>(std::min(head, left.size() - surplus));
    left.erase(first, first + static_cast<std::ptrdiff_t>(surplus));
  }
  forgotten_ += static_cast<std::int64_t>(size - left.size());
  steps_.swap(left);
  // The tables keep what is still pointed at.
  Table<State> states;
  std::vector<std::int32_t> entries;
  Table<std::vector<std::int32_t>> lists;
  // Takes over what a step shows, and gives it the numbers of the new tables.
  const auto move = [&](Shown& shown) {
    if (shown.list == -1) return;
    std::vector<std::int32_t> list = lists_.at(shown.list);
    for (std::int32_t& state : list) {
      if (state < 0) continue;
      const std::int32_t entry = entry_of_state_[static_cast<std::size_t>(state)];
      state = states.number_of(states_.at(state));
      if (static_cast<std::size_t>(state) == entries.size()) entries.push_back(entry);
    }
    shown.list = lists.number_of(list);
  };
  for (Step& step : steps_) {
    move(step.before);
    move(step.after);
  }
  for (Fitted& fitted : fitted_) move(fitted.before);
  move(last_offered_);
  states_.swap(states);
  entry_of_state_.swap(entries);
  lists_.swap(lists);
}

void ViewRecord::offered(Session& session, const Window& window, const RuleCandidate*) {
  has_reason_ = false;
  // If the search goes back now, this is the window in which no rule was left.
  last_offered_ = list_of(session, window);
}

void ViewRecord::offered_in_post_edit(Session&, const Window&, std::span<const RuleBlock>) {
  has_reason_ = false;
}

void ViewRecord::tried(Session& session, const RuleCandidate& candidate, const Window& before, const Window& after,
                       Fit fit) {
  const Rule& rule = *candidate.rule;
  const bool is_test = is_word_test_type(rule.type);
  // A word test that refuses asks for a step back, which comes next as `undone`.
  if (fit == Fit::refused && is_test) {
    Step step = step_of(session, Kind::asked, &rule);
    step.before = list_of(session, before);
    step.used = used_now(session);
    leaf(std::move(step));
    has_reason_ = true;
  }
  if (fit != Fit::yes) return;
  // One that fits has narrowed the words at once; other rules are carried out later, with scopes in between.
  if (is_test) {
    Step step = step_of(session, Kind::narrowed, &rule);
    step.before = list_of(session, before, &candidate);
    step.after = list_of(session, before);
    step.used = used_now(session);
    stand(candidate, std::move(step));
    return;
  }
  // A shift brings its place in when it is carried out: in the window stand those that were there before.
  const bool is_shift = rule.type == rule_type::shift_left || rule.type == rule_type::shift_right;
  const Node* inserted = is_shift                    ? nullptr
                         : rule.lnode->inserted != 0 ? after.lnode
                         : rule.rnode->inserted != 0 ? after.rnode
                                                     : nullptr;
  // Now, since its actions come next.
  if (inserted != nullptr) literal_note(*inserted);
  // Those whose scopes have failed are left over.
  if (fitted_.size() > kMostFitted) fitted_.erase(fitted_.begin());
  // The list as it was: the nodes change when the rule is carried out.
  fitted_.push_back({&candidate, list_of(session, after, &candidate, inserted)});
}

void ViewRecord::applied(Session& session, const RuleCandidate& candidate, const Window& after) {
  Step step = step_of(session, Kind::rule, candidate.rule);
  const auto same = [&candidate](const Fitted& each) { return each.candidate == &candidate; };
  if (const auto found = std::find_if(fitted_.rbegin(), fitted_.rend(), same); found != fitted_.rend()) {
    // Of a rule that fitted too long ago nothing is kept, and the step has no list before.
    step.before = found->before;
    // Those behind it belong to scopes that it has entered, and are done.
    fitted_.erase(std::next(found).base(), fitted_.end());
  }
  step.after = list_of(session, after);
  step.used = used_now(session);
  stand(candidate, std::move(step));
}

void ViewRecord::undone(Session& session, const RuleCandidate& candidate) {
  const std::size_t place = standing_at(candidate);
  if (place == standing_.size()) return;  // its scope failed before it was carried out
  // Nothing has said why: at the window that was offered last no rule was left.
  if (!has_reason_) {
    Step step = step_of(session, Kind::dead_end, nullptr);
    step.before = last_offered_;
    step.used = used_now(session);
    leaf(std::move(step));
    has_reason_ = true;
  }
  take_back_from(place);
}

// ---- The whole.

// The line of a rule as it stands in its file, which is read once; empty if it cannot be had.
std::string ViewRecord::source_line(const RulePlace& place) {
  const auto [known, is_new] = source_lines_.try_emplace(place.file);
  std::vector<std::string>& lines = known->second;
  std::ifstream file;
  if (is_new) file.open(place.file, std::ios::binary);
  for (std::string line; is_new && std::getline(file, line);) {
    // The page would show it as a blank.
    if (line.ends_with('\r')) line.pop_back();
    lines.push_back(line);
  }
  return place.line == 0 || place.line > lines.size() ? std::string() : lines[place.line - 1];
}

// Kept from sentence to sentence: a rule says the same each time.
const nlohmann::json& ViewRecord::rule_data(const Rule& rule) {
  nlohmann::json& data = rule_data_[&rule];
  // A rule that is met for the first time has no data yet.
  if (!data.is_null()) return data;
  data = {{"place", project_.place_of(rule)}, {"text", project_.text_of(rule)}};
  data["source"] = source_line(project_.line_of(rule));
  // Of a rule from a source: the values of the loops around it.
  data["values"] = rule.line == 0 ? std::string() : surroundings_text(project_.loaded().source.place(rule.line, 0));
  return data;
}

// The data of the sentence, see view.hpp. Of the rules only those of its steps are in it.
nlohmann::json ViewRecord::result(const Session& session) {
  nlohmann::json data;
  for (std::size_t at = 0; at < relations_.size(); ++at) graph_["relations"][at]["used"] = relations_[at]->used != 0;
  // A sentence that was stopped has no words to show.
  data["final"] = must_leave(session) == core::Status::ok ? final_list(session) : -1;
  data["graph"] = std::move(graph_);
  std::map<const Rule*, std::size_t> rules;
  data["rules"] = nlohmann::json::array();
  nlohmann::json& rows = data["steps"] = nlohmann::json::array();
  for (const Step& step : steps_) {
    std::int64_t rule = -1;
    if (step.rule != nullptr) {
      const auto [known, is_new] = rules.try_emplace(step.rule, rules.size());
      if (is_new) data["rules"].push_back(rule_data(*step.rule));
      rule = static_cast<std::int64_t>(known->second);
    }
    // As view.hpp numbers kinds.
    const int kind = static_cast<int>(step.kind) + (step.is_post_edit ? 8 : 0) + (step.is_undone ? 16 : 0);
    // What stands reaches to the end of the search.
    const std::int64_t size = step.size != 0 ? step.size : last_number_ - step.number + 1;
    rows.push_back({step.number, size, kind, rule, step.scope, step.before.list, step.before.at, step.after.list,
                    step.after.at, step.used});
  }
  data["kept"] = {{"steps", steps_.size()}, {"of", steps_.size() + static_cast<std::size_t>(forgotten_)}};
  data["nodes"] = nlohmann::json::array();
  for (const Place& place : places_)
    data["nodes"].push_back({{"name", place.name}, {"from", place.from}, {"graph", place.graph}});
  data["states"] = nlohmann::json::array();
  for (std::size_t at = 0; at < states_.size(); ++at) {
    const State& state = states_.at(static_cast<std::int32_t>(at));
    data["states"].push_back({state.place, state.text, state.attrs, entry_of_state_[at], state.is_untouched ? 1 : 0});
  }
  // Tables are written as lists: the number of an item is its place.
  const auto texts = [](const auto& table) {
    nlohmann::json all = nlohmann::json::array();
    for (std::size_t at = 0; at < table.size(); ++at) all.emplace_back(table.at(static_cast<std::int32_t>(at)));
    return all;
  };
  data["entries"] = texts(entries_);
  data["lists"] = texts(lists_);
  data["used"] = texts(used_);
  return data;
}

void ViewRecord::sentence_ends(Session& session, core::Status) {
  sentences_.push_back(result(session));
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
