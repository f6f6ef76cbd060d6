#include "lab/derivation.hpp"

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>

#include "lab/show.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// What is kept of a search, however long it is.
constexpr std::size_t kMostStanding = 20000;  // steps
constexpr std::size_t kMostLines = 20000;     // of the log
constexpr std::size_t kMostTouches = 1000;    // rules and places that touched the word that is followed
constexpr std::size_t kMostDeadEnds = 500;    // windows; later ones count as "(others)"
constexpr std::size_t kLastSteps = 12;

std::string_view text_of(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

// Calls `visit` with each name of an attribute list ("N,PL,@def").
template <typename Visit>
void for_each_attr(std::string_view attrs, Visit visit) {
  while (!attrs.empty()) {
    const std::size_t length = std::min(attrs.find(','), attrs.size());
    if (length > 0) visit(attrs.substr(0, length));
    attrs.remove_prefix(std::min(length + 1, attrs.size()));
  }
}

bool holds_attr(std::string_view attrs, std::string_view wanted) {
  bool found = false;
  for_each_attr(attrs, [&](std::string_view attr) { found = found || attr == wanted; });
  return found;
}

std::string_view attrs_of(const Node* node) {
  return node == nullptr || node->candidates == nullptr ? std::string_view() : text_of(node->candidates->attrs);
}

// Does one node take the place of others by a rule of this type?
bool replaces_nodes(std::uint8_t type) {
  return type == rule_type::merge_left || type == rule_type::merge_right || type == rule_type::copy_left ||
         type == rule_type::copy_right || type == rule_type::exchange || type == rule_type::shift_left ||
         type == rule_type::shift_right;
}

std::string pair_text(const Node* left, const Node* right) {
  if (left == nullptr) return node_text(right);
  if (right == nullptr) return node_text(left);
  return node_text(left) + ' ' + node_text(right);
}

// The two nodes that a rule has left behind; an exchange has moved the window on by one.
std::string worked_on(const Rule& rule, const Window& after) {
  if (rule.type == rule_type::exchange && after.rnode != nullptr) return pair_text(after.rnode, after.rnode->right);
  return pair_text(after.lnode, after.rnode);
}

}  // namespace

bool Step::is_plain_move() const {
  const std::uint8_t type = rule->type;
  const bool moves = type == rule_type::left || type == rule_type::right || type == rule_type::post_left ||
                     type == rule_type::post_right;
  return moves && changes.empty() && has_brace_patterns(*rule);
}

Derivation::Derivation(const Project& project) : project_(project) {
  // A debt is a mark that some word test asks about and some rule strikes out; the first test is named.
  std::map<std::string, const Rule*, std::less<>> asked;
  for (const Rule& rule : chain<&Rule::next>(project.loaded().rules.rules)) {
    if (!is_word_test_type(rule.type)) continue;
    for (const NodePattern* pattern : {rule.lnode, rule.rnode}) {
      for (const CondItem& condition : chain<&CondItem::next>(pattern->attr_conds)) {
        // `emplace` keeps the first.
        if (condition.op == kOpHas) asked.emplace(condition.text, &rule);
      }
    }
  }
  for (const Rule& rule : chain<&Rule::next>(project.loaded().rules.rules)) {
    for (const NodePattern* pattern : {rule.lnode, rule.rnode}) {
      for (const CondItem& action : chain<&CondItem::next>(pattern->actions)) {
        const auto found = action.op == kOpDelete ? asked.find(action.text) : asked.end();
        if (found != asked.end()) debts_.insert(*found);
      }
    }
  }
}

void Derivation::sentence_begins(Session& session) {
  standing_.clear();
  forgotten_ = undone_at_end_ = undone_ = steps_ = 0;
  log_.clear();
  log_forgotten_ = 0;
  deepest_ = {};
  last_.clear();
  touches_.clear();
  word_entries_.clear();
  taken_back_.clear();
  dead_ends_.clear();
  asking_ = nullptr;
  dead_end_ = nullptr;
  fitted_ = {};
  outer_.clear();
  is_post_edit_ = false;
  const auto nodes = std::span(session.sentence.graph_nodes);
  for (const Node* node : nodes.first(static_cast<std::size_t>(session.sentence.graph_node_count))) {
    // Entries are noted now, while the node still has all of them.
    if (node == nullptr || !is_followed(node)) continue;
    for (const WordEntry& word : chain<&WordEntry::next>(node->entries)) word_entries_.push_back(entry_line(word));
  }
}

void Derivation::generated(Session&, core::Status) {
  is_post_edit_ = true;
}

// A new try: what was taken back before is over.
void Derivation::turn(Session& session, const Window& window) {
  asking_ = nullptr;
  dead_end_ = nullptr;
  if (window.lnode == nullptr || window.rnode == nullptr) return;
  // As text: the nodes may have changed by the time that it is shown.
  window_ = window_text(window);
  list_ = list_text(session, window);
}

void Derivation::offered(Session& session, const Window& window, const RuleCandidate*) {
  // A search that never takes a step has its first window as the deepest list.
  if (steps_ == 0) note_deepest(session, window);
  turn(session, window);
}

void Derivation::offered_in_post_edit(Session& session, const Window& window, std::span<const RuleBlock>) {
  turn(session, window);
}

// What is known of a rule before it is carried out: `applied` comes when the window has changed already, and the nodes of
// the window before may be gone by then, so all that is to be shown of them is copied here.
void Derivation::tried(Session& session, const RuleCandidate& candidate, const Window& before, const Window& after,
                       Fit fit) {
  if (fit == Fit::no) return;
  turn(session, before);
  const Rule& rule = *candidate.rule;
  const bool is_test = is_word_test_type(rule.type);
  if (fit == Fit::refused && is_test) {
    asking_ = &rule;
    // The first place is kept, and all are counted.
    TakenBack& taken = taken_back_[&rule];
    if (taken.asked++ == 0) taken.where = list_;
    log_append({.text = "asks for a step back in " + list_, .step = {.rule = &rule}});
    if (is_followed(before.lnode) || is_followed(before.rnode))
      note_touch(project_.place_of(rule) + "  asks for a step back at " + window_);
  }
  if (fit != Fit::yes) return;
  // A test that fits has narrowed the words of the window, and nothing is carried out behind it.
  if (is_test) {
    Step step = step_of(session, candidate);
    step.before = list_text_before(session, before, candidate, nullptr);
    step.after = pair_text(before.lnode, before.rnode) + "  (words narrowed)";
    if (is_followed(before.lnode) || is_followed(before.rnode))
      note_touch(project_.place_of(rule) + "  narrows the words at " + window_);
    stand(session, std::move(step));
    note_deepest(session, before);
    return;
  }
  fitted_.candidate = &candidate;
  // The word that the rule brings in stands in the list already.
  const Node* inserted = rule.lnode->inserted != 0 ? after.lnode : rule.rnode->inserted != 0 ? after.rnode : nullptr;
  fitted_.before = list_text_before(session, after, candidate, inserted);
  const Node* nodes[2] = {after.lnode, after.rnode};
  for (std::size_t at = 0; at < 2; ++at) {
    fitted_.nodes[at] = nodes[at];
    // For the changes: what the word had before the rule acted on it.
    fitted_.attrs[at] = attrs_of(nodes[at]);
  }
}

Step Derivation::step_of(const Session& session, const RuleCandidate& candidate) {
  Step step;
  step.rule = candidate.rule;
  step.candidate = &candidate;
  step.depth = session.state.trace_depth;
  step.is_post_edit = is_post_edit_;
  return step;
}

// The attributes that the rule has added and struck out, by node.
std::string Derivation::changes() const {
  std::string text;
  for (std::size_t at = 0; at < 2; ++at) {
    const Node* node = fitted_.nodes[at];
    const std::string_view now = attrs_of(node);
    // A node of the window before need not be one of the window now, and still shows its own changes.
    if (node == nullptr || now == fitted_.attrs[at]) continue;
    std::string changes;
    for_each_attr(now, [&](std::string_view attr) {
      if (!holds_attr(fitted_.attrs[at], attr)) changes.append(" +").append(attr);
    });
    for_each_attr(fitted_.attrs[at], [&](std::string_view attr) {
      if (!holds_attr(now, attr)) changes.append(" -").append(attr);
    });
    if (changes.empty()) continue;
    if (!text.empty()) text += ", ";
    text += node_text(node) + changes;
  }
  return text;
}

void Derivation::applied(Session& session, const RuleCandidate& candidate, const Window& after) {
  const Rule& rule = *candidate.rule;
  Step step = step_of(session, candidate);
  const bool is_known = fitted_.candidate == &candidate;
  // A scope that was entered in between has put its own in front; see `scope_entered`.
  step.before = is_known ? fitted_.before : list_text(session, after);
  if (is_known && !replaces_nodes(rule.type)) {
    step.after = pair_text(fitted_.nodes[0], fitted_.nodes[1]);
    step.changes = changes();
  } else {
    // Of rules that put nodes in the place of others, what stands there now.
    step.after = worked_on(rule, after);
  }
  const bool is_touched =
      is_followed(after.lnode) || is_followed(after.rnode) ||
      (is_known && !replaces_nodes(rule.type) && (is_followed(fitted_.nodes[0]) || is_followed(fitted_.nodes[1])));
  if (is_touched) {
    note_touch(project_.place_of(rule) + "  " + step.before + "  -> " + step.after +
               (step.changes.empty() ? "" : "  (" + step.changes + ")"));
  }
  stand(session, std::move(step));
  note_deepest(session, after);
}

// Puts a step behind those that stand. Steps that were taken back since the last one are counted in front of it.
void Derivation::stand(Session&, Step&& step) {
  ++steps_;
  // Carried out again (after a scope, or with another word), it stands once. In post-edit one candidate can stand at several
  // places.
  const auto same = [&step](const Step& other) { return other.candidate == step.candidate; };
  if (const auto found = std::find_if(standing_.rbegin(), standing_.rend(), same);
      found != standing_.rend() && !step.is_post_edit) {
    standing_.erase(std::next(found).base());
  }
  // Steps taken back are told between the steps that stand.
  step.undone_before = std::exchange(undone_at_end_, 0);
  log_append({.step = step});
  step.number = log_.back().number;
  last_.push_back(step);
  if (last_.size() > kLastSteps) last_.pop_front();
  standing_.push_back(std::move(step));
  if (standing_.size() <= kMostStanding) return;
  standing_.pop_front();  // a search that deep is shown by its end
  ++forgotten_;
}

// Numbers rise over the whole sentence, also over lines that are forgotten.
void Derivation::log_append(LogLine&& line) {
  line.number = (log_.empty() ? 0 : log_.back().number) + 1;
  log_.push_back(std::move(line));
  const std::size_t most = keeps_all_ ? kMostLines : 1;  // the last one gives the next its number
  while (log_.size() > most) {
    // The oldest line goes; its number is not given again.
    log_.pop_front();
    ++log_forgotten_;
  }
}

// A step that is taken back is counted for the word test that asked for it, or for the window in which no rule was left;
// it leaves the standing steps, and its count goes to the one behind it.
void Derivation::undone(Session&, const RuleCandidate& candidate) {
  ++undone_;
  if (asking_ != nullptr) {
    // The test that asked is in force until the next try.
    ++taken_back_[asking_].steps;
  } else {
    if (dead_end_ == nullptr) {
      const auto found = dead_ends_.find(window_);
      const bool is_kept = found != dead_ends_.end() || dead_ends_.size() < kMostDeadEnds;
      dead_end_ = &dead_ends_[is_kept ? window_ : std::string("(others)")];
      if (dead_end_->asked++ == 0) dead_end_->where = list_;
    }
    ++dead_end_->steps;
  }
  const auto same = [&candidate](const Step& step) { return step.candidate == &candidate; };
  const auto found = std::find_if(standing_.rbegin(), standing_.rend(), same);
  if (found == standing_.rend()) return;  // its scope failed before it was carried out
  const auto step = std::next(found).base();
  // Lines have rising numbers, and those in front may be forgotten.
  const auto line = std::lower_bound(log_.begin(), log_.end(), step->number,
                                     [](const LogLine& each, std::int64_t number) { return each.number < number; });
  if (line != log_.end() && line->number == step->number) line->is_undone = true;
  const std::int64_t taken = step->undone_before + 1;
  const auto behind = standing_.erase(step);
  (behind == standing_.end() ? undone_at_end_ : behind->undone_before) += taken;
}

// The search takes the next word of a node, the one in force having led nowhere.
void Derivation::word_given_up(Session&, const Node& node) {
  const WordEntry* word = node.candidates;
  if (word == nullptr) return;
  const std::string text = "gives up the word \"" + std::string(text_of(word->hw)) + "\" of " + node_text(&node) +
                           (word->next == nullptr ? ": it was the last" : "");
  if (keeps_all_) log_append({.text = text});
  if (is_followed(&node)) note_touch(text);
}

// A scope is built in the middle of an application: the window around it waits on a stack.
void Derivation::scope_entered(Session&, const RuleCandidate& candidate, int scope) {
  outer_.push_back(std::exchange(fitted_, {}));
  log_append({.text = "enters scope :" + std::to_string(scope), .step = {.rule = candidate.rule}});
}

void Derivation::scope_returned_into(Session&, int scope) {
  outer_.push_back(std::exchange(fitted_, {}));
  log_append({.text = "goes back into scope :" + std::to_string(scope)});
}

// Whether it is finished or has failed, the window around it is the one in force again.
void Derivation::scope_left(Session&, int scope, bool has_failed) {
  if (!outer_.empty()) {
    fitted_ = std::move(outer_.back());
    outer_.pop_back();
  }
  log_append({.text = "scope :" + std::to_string(scope) + (has_failed ? " has failed" : " is finished")});
}

// ---- The deepest list.

// Of a failed sentence the list at which the most steps stood says most: what was not followed there, and which marks are
// debts that some rule was to pay.
void Derivation::note_deepest(Session& session, const Window& window) {
  const std::size_t depth = standing_.size() + static_cast<std::size_t>(forgotten_);
  if (is_post_edit_ || (depth <= deepest_.steps && !deepest_.list.empty())) return;
  deepest_.steps = depth;
  deepest_.list = list_text(session, window);
  // What was noted of a list that was less deep is of no interest any more.
  deepest_.unfollowed.clear();
  const core::Status leaves = must_leave(session);
  // A search that is being left may have half-done nodes.
  if (leaves != core::Status::ok) return;
  for (std::int32_t at = 0; at < session.sentence.graph_relation_count; ++at) {
    const Relation* arc = session.sentence.graph_relations[static_cast<std::size_t>(at)];
    if (arc == nullptr || arc->used != 0 || arc->from == nullptr || arc->to == nullptr) continue;
    const auto name = [](const Node* node) {
      // A copy is called what its model is.
      while (node->name == nullptr && node->origin != nullptr) node = node->origin;
      return is_scope_reference(*node) ? node_text(node) : std::string(text_of(node->name));
    };
    deepest_.unfollowed.push_back(std::string(arc->label) + '(' + name(arc->from) + ", " + name(arc->to) + ')');
  }
  deepest_.debts.clear();
  const Node* node = window.lnode != nullptr ? window.lnode : window.rnode;
  // Rules can close a list to a circle, so the walk is bounded.
  for (int steps = 0; node != nullptr && node->left != nullptr && steps < 4096; ++steps) node = node->left;
  for (int steps = 0; node != nullptr && steps < 4096; node = node->right, ++steps) {
    // A word that no rule has touched has not settled which of its words is in force, so its marks are none yet.
    if (is_untouched(*node)) continue;
    for_each_attr(attrs_of(node), [&](std::string_view attr) {
      if (const auto debt = debts_.find(attr); debt != debts_.end()) {
        deepest_.debts.push_back(node_text(node) + ": " + debt->first + " (asked about by " +
                                 project_.place_of(*debt->second) + ")");
      }
    });
  }
}

// ---- One word.

// Is it the word that was asked for: by the name in the graph, by its form, or by its concept? A copy counts as its model.
bool Derivation::is_followed(const Node* node) const {
  if (word_.empty() || node == nullptr) return false;
  const auto is_word = [this](std::string_view text) {
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    // "dog" names "dog(>animal)" too.
    return text == word_ || (text.starts_with(word_) && text[word_.size()] == '(');
  };
  const Node* named = node;
  while (named->name == nullptr && named->origin != nullptr) named = named->origin;
  if (is_word(text_of(named->name))) return true;
  const WordEntry* word = node->candidates;
  return word != nullptr && (is_word(text_of(word->hw)) || is_word(text_of(word->cw)));
}

// The same touch again is counted.
void Derivation::note_touch(const std::string& text) {
  const auto same = [&text](const Touch& touch) { return touch.text == text; };
  if (const auto found = std::find_if(touches_.begin(), touches_.end(), same); found != touches_.end()) {
    ++found->count;
  } else if (touches_.size() < kMostTouches) {
    touches_.push_back({text});
  }
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
