#include "run/report.hpp"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "data/attr_string.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "run/render.hpp"

namespace lexon {

namespace {

// The name of a node as the graph has it. A copy that generation has made leads to the node that it was copied from.
std::string node_name(const Node& node) {
  const Node* named = &node;
  while (named->name == nullptr && named->origin != nullptr) named = named->origin;
  if (!is_scope_reference(*named)) return text_or_empty(named->name);
  return (named->scope < 10 ? ":0" : ":") + std::to_string(named->scope);
}

// The dictionary had no entry, and the word stands for itself.
bool is_unknown(const Session& session, const Node& node) {
  const auto words =
      std::span(session.sentence.graph_words).first(static_cast<std::size_t>(session.sentence.graph_word_count));
  const auto is_asked = [&node](const GraphWord& word) {
    return word.look_up != 0 && node.name == std::string_view(word.name);
  };
  return node.name != nullptr && attr_has(node.entries, "TEMP") &&
         text_or_empty(node.entries->cw) == std::string_view(node.name) &&
         std::any_of(words.begin(), words.end(), is_asked);
}

}  // namespace

// The marks of unused relations are added while the sentence is collected, so it is collected once more without them.
std::string plain_sentence(Session& session, const char* printed) {
  std::int8_t& level = session.state.trace_level;
  if (level <= 0) return printed;
  const std::int8_t kept = std::exchange(level, std::int8_t{0});
  std::array<char, kSentenceSize> text{};
  char* cursor = text.data();
  const bool fits = collect_sentence(session, session.sentence.semlst[0].entry, cursor, text.end(), 0);
  level = kept;
  return fits ? text.data() : printed;
}

// Relations and words in the order of the graph; each word once, however often it stands there.
void report_leftovers(const Session& session, SentenceReport& report) {
  report.label = session.label;
  while (!report.label.empty() && (report.label.back() == '\n' || report.label.back() == '\r')) report.label.pop_back();
  const Sentence& sentence = session.sentence;
  for (std::int32_t at = 0; at < sentence.graph_relation_count; ++at) {
    const Relation* arc = sentence.graph_relations[static_cast<std::size_t>(at)];
    if (arc == nullptr || arc->used != 0 || arc->from == nullptr || arc->to == nullptr) continue;
    report.unused_relations.push_back(std::string(arc->label) + '(' + node_name(*arc->from) + ", " +
                                      node_name(*arc->to) + ')');
  }
  for (std::int32_t at = 0; at < sentence.graph_node_count; ++at) {
    const Node* node = sentence.graph_nodes[static_cast<std::size_t>(at)];
    if (node == nullptr || !is_unknown(session, *node)) continue;
    const std::string name = node->name;
    std::vector<std::string>& words = report.unknown_words;
    if (std::find(words.begin(), words.end(), name) == words.end()) words.push_back(name);
  }
}

}  // namespace lexon
