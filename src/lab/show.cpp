#include "lab/show.hpp"

#include <cstdlib>

#include <unistd.h>

#include <algorithm>
#include <vector>

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

std::string_view trimmed(std::string_view text) {
  const auto is_blank = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

std::string_view text_of(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

constexpr std::size_t kLongestWord = 120;  // bytes that are shown of a word with its attributes

// What the node is asked about: "the left word "dog"".
std::string subject(const Miss& miss) {
  // A node without a text of its own may still have a word: one that writes nothing.
  const auto quoted = [&miss] {
    if (!miss.node.empty()) return " \"" + miss.node + "\"";
    return std::string(miss.word.empty() ? "" : " ''");
  };
  switch (miss.part) {
    case RulePart::pre: return "PRE: " + (miss.node.empty() ? "the node" : "\"" + miss.node + "\"");
    case RulePart::mid: return "MID: " + (miss.node.empty() ? "the node" : "\"" + miss.node + "\"");
    case RulePart::suf: return "SUF: " + (miss.node.empty() ? "the node" : "\"" + miss.node + "\"");
    case RulePart::lnode: return "LNODE" + quoted();
    case RulePart::rnode: return "RNODE" + quoted();
    default: return "the rule";
  }
}

std::string condition_text(const Miss& miss) {
  return miss.condition == nullptr ? std::string() : std::string(miss.condition->text);
}

// What the word has: "it is dog (N,SG)".
std::string word_part(const Miss& miss) {
  if (miss.word.empty()) return {};
  std::string word = miss.word.substr(0, kLongestWord);
  // Words with many attributes would hide what is said about them.
  if (word.size() < miss.word.size()) word += "...";
  return "; its word: " + word;
}

// A sentence for each reason of a refusal. `asked` is what the condition names: an attribute, a form, a concept word, a
// label.
std::string sentence_of(const Miss& miss) {
  const std::string asked = condition_text(miss);
  const bool is_forbidden = miss.condition != nullptr && miss.condition->op == kOpNot;
  const std::string who = subject(miss);
  // No default: the compiler tells of a reason that has no sentence.
  switch (miss.reason) {
    case Reason::relation_between_braces:
      return "both patterns stand in braces, and a rule like that never fits when one of them names a relation (" +
             asked + "): put the node that it brings in into quotes";
    case Reason::test_at_boundary: return who + ": ?L and ?R never test the boundary of a list";
    case Reason::merge_of_boundary_or_entry:
      return who + ": DL and DR take away neither a boundary nor the entry word of a scope";
    case Reason::waits_for_another_candidate: return who + " waits for another word by another application of MID";
    case Reason::place_empty: return who + ": there is no node at this place";
    case Reason::list_too_short: return "the list is too short for PRE or SUF";
    case Reason::context_ended: return who + ": the list ends before the groups do";
    case Reason::context_untouched: return who + " has not been touched by a rule yet, and a group takes no such node";
    case Reason::context_condition:
      if (miss.condition == nullptr) return who + ": no group has taken a node";
      return who + (is_forbidden ? " has " : " lacks ") + asked + word_part(miss);
    case Reason::surface_form:
      return who + (is_forbidden ? " has the surface form [" : " has not the surface form [") + asked + "]" +
             word_part(miss);
    case Reason::concept_word:
      return who + (is_forbidden ? " has the concept word [[" : " has not the concept word [[") + asked + "]]" +
             word_part(miss);
    case Reason::attribute_missing: return who + " lacks " + asked + word_part(miss);
    case Reason::attribute_forbidden: return who + " has " + asked + ", which is forbidden" + word_part(miss);
    case Reason::attributes_too_long: return who + ": its attributes would be longer than 1023 characters";
    case Reason::nothing_to_object: return who + " is as the test wants it, which has nothing to take back";
    case Reason::no_word: return who + " has no words";
    case Reason::co_occurrence: return "the pair " + miss.detail + " has the co-occurrence value 0";
    case Reason::relation_missing: return who + " has no relation " + asked;
    case Reason::relation_turned: return who + " has the relation " + asked + ", but it points the other way";
    case Reason::relation_used: return who + ": its relation " + asked + " has brought in a node already";
    case Reason::relation_of_other_scope: return who + " has the relation " + asked + " in another scope only";
    case Reason::scope_without_entry: return who + ": the scope has no @entry";
    case Reason::literal_without_text: return who + " names neither a word nor a relation to bring in";
    case Reason::literal_unknown: return who + ": the dictionary has no such word (" + asked + ")";
    case Reason::literal_lookup_failed: return who + ": the dictionary cannot be read";
    case Reason::shifted_text: return who + ": its text does not begin, or end, with [" + asked + "]";
    case Reason::words_used_up: return "the node that it brought in has tried all its words";
    case Reason::asks_for_step_back: return "the test found what it forbids, and asked for a step back";
  }
  return {};
}

// A node that no rule has touched has no word in force yet: it goes by what the graph calls it.
std::string text_of_node(const Node& node, bool is_untouched_yet) {
  // As the trace shows it.
  if (kind_bits(node) == kKindBoundary) return "|";
  std::string text;
  if (is_scope_reference(node)) {
    text = ":" + std::string(node.scope < 10 ? "0" : "") + std::to_string(node.scope);
  } else if (is_untouched_yet && node.name != nullptr) {
    text = node.name;
  } else if (node.candidates != nullptr) {
    // A form may have blanks around it, which would hide in a line of words.
    const std::string_view whole = text_of(node.candidates->hw);
    const std::string_view hw = trimmed(whole);
    text = hw.empty() && is_untouched_yet ? text_of(node.candidates->cw) : hw;
    // A blank, and a word that writes nothing.
    if (text.empty()) text = whole.empty() ? "''" : "' '";
  } else {
    text = text_of(node.name);
  }
  return is_untouched_yet ? "[" + text + "]" : text;
}

// What `text` gives for each node of the list, with blanks between; nothing for an empty text.
template <typename Text>
std::string texts_of_list(const Session& session, const Window& window, Text text) {
  const Node* node = window.lnode != nullptr ? window.lnode : window.rnode;
  // A rule base can close a list to a circle, and a walk must not outlive a sentence that is to stop.
  int steps = 0;
  constexpr int kMostNodes = 4096;
  // First to the left end, then through the list.
  while (node != nullptr && node->left != nullptr && ++steps < kMostNodes) node = node->left;
  std::string all;
  for (; node != nullptr && ++steps < 2 * kMostNodes && must_leave(session) == core::Status::ok; node = node->right) {
    const std::string one = text(node);
    if (!all.empty() && !one.empty()) all += ' ';
    all += one;
  }
  return all;
}

}  // namespace

std::string node_text(const Node* node) {
  return node == nullptr ? "-" : text_of_node(*node, is_untouched(*node));
}

// A node is untouched as long as no rule has worked on it; a hold that was placed on it from outside is no work.
std::string node_text_before(const Node* node, const RuleCandidate& candidate) {
  if (node == nullptr) return "-";
  // Records stand newest first, so those of the candidate are in front.
  const MatchRecord* record = node->matches;
  while (record != nullptr && record->candidate == &candidate) record = record->next;
  return text_of_node(*node, record == nullptr || record->state == kStateHold);
}

std::string window_text(const Window& window) {
  return node_text(window.lnode) + " + " + node_text(window.rnode);
}

std::string list_text(const Session& session, const Window& window) {
  return texts_of_list(session, window, node_text);
}

std::string list_text_before(const Session& session, const Window& window, const RuleCandidate& candidate,
                             const Node* inserted) {
  return texts_of_list(session, window, [&](const Node* node) {
    return node == inserted ? std::string() : node_text_before(node, candidate);
  });
}

std::string miss_text(const Project& project, const Miss& miss) {
  std::string text = sentence_of(miss);
  if (miss.settled_by != nullptr && !miss.word.empty())
    text += " (last touched by " + project.place_of(*miss.settled_by) + ")";
  return text;
}

std::string misses_text(const Project& project, const std::vector<Miss>& misses) {
  std::string text;
  for (const Miss& miss : misses) {
    if (!text.empty()) text += "\n; and ";
    text += miss_text(project, miss);
  }
  return text;
}

// As `lexon-dict list` writes it.
std::string entry_line(const WordEntry& word) {
  Output output;
  entry_print(output, &word, "");
  std::string line = output.take();
  while (line.ends_with('\n')) line.pop_back();
  return line;
}

// NO_COLOR is what users of many programs set; its value does not count.
bool wants_colours() {
  return isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
}

std::string count_text(std::int64_t count, std::string_view noun) {
  const bool hisses = noun.ends_with('s');
  return std::to_string(count) + ' ' + std::string(noun) + (count == 1 ? "" : hisses ? "es" : "s");
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
