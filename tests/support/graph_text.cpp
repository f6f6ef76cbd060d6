#include "support/graph_text.hpp"

#include "data/chain.hpp"
#include "data/pool.hpp"
#include "data/words.hpp"
#include "graph/reader.hpp"
#include "support/capture.hpp"
#include "support/session.hpp"
#include "support/test.hpp"

namespace lexon::test {

namespace {

// The items of a table, joined.
template <typename Table, typename Count, typename Print>
std::string joined(const Table& table, Count first, Count count, Print print) {
  std::string all;
  for (Count i = first; i < count; ++i) {
    if (i != first) all += "; ";
    all += print(table[static_cast<std::size_t>(i)]);
  }
  return all;
}

std::string name_text(const char* name, int number) {
  return text_or_empty(name) + (number == 0 ? std::string() : "#" + std::to_string(number));
}

std::string name_text(const Node& node) {
  return name_text(node.name, node.scope);
}

std::string block_texts(const ScopeAttrs* blocks) {
  std::string all;
  for (const ScopeAttrs& block : chain<&ScopeAttrs::next>(blocks)) {
    all += "{" + std::to_string(block.scope) + ":" + block.text + "}";
  }
  return all;
}

std::string candidates_text(const WordEntry* words) {
  std::string all;
  for (const WordEntry& word : chain<&WordEntry::next>(words)) {
    if (!all.empty()) all += "|";
    all += std::string(text_or_empty(word.hw)) + "=" + text_or_empty(word.cw) + "/" + text_or_empty(word.attrs);
  }
  return all;
}

std::string list_number(const WordEntry* entries) {
  const auto& lists = session.sentence.word_lists;
  const auto* place = std::find(lists.begin(), lists.begin() + session.sentence.word_list_count, entries);
  return "L" + std::to_string(place - lists.begin());
}

}  // namespace

GraphRead graph_read(std::FILE* stream) {
  sentence_clear(session);
  session.pool.release_all();
  Capture capture;
  Node*& root = session.sentence.semlst[0].entry;
  const Status status = read_graph(session, stream, root);
  return {status, root, capture.text()};
}

GraphRead graph_of(const std::string& text) {
  std::FILE* stream = stream_of(text);
  GraphRead read = graph_read(stream);
  std::fclose(stream);
  return read;
}

GraphRead graph_of_lines(const std::string& lines) {
  return graph_of("{sem}\n" + lines + "[/S]\n");
}

std::string words_text() {
  return joined(session.sentence.graph_words, 0, session.sentence.graph_word_count, [](const GraphWord& row) {
    const std::string name = name_text(row.name, row.number);
    return (row.look_up != 0 ? name : '"' + name + '"') + block_texts(row.blocks);
  });
}

std::string nodes_text() {
  return joined(session.sentence.graph_nodes, 0, session.sentence.graph_node_count, [](const Node* node) {
    return name_text(*node) + " k" + std::to_string(node->kind) + " " + list_number(node->entries) + " " + candidates_text(node->candidates) + " " +
           block_texts(node->scope_attrs);
  });
}

std::string arcs_text() {
  return joined(session.sentence.graph_relations, 0, session.sentence.graph_relation_count, [](const Relation* arc) {
    const std::string label = arc->label + (":" + std::to_string(arc->scope));
    return arc->from == nullptr ? label : label + "(" + name_text(*arc->from) + "," + name_text(*arc->to) + ")";
  });
}

std::string scopes_text() {
  return joined(session.sentence.semlst, 1, session.sentence.semlst_count,
                [](const ScopeRow& row) { return std::to_string(row.number) + "=" + (row.entry == nullptr ? "-" : name_text(*row.entry)); });
}

Node* graph_node(const std::string& name, int number) {
  for (int i = 0; i < session.sentence.graph_node_count; ++i) {
    Node* node = session.sentence.graph_nodes[static_cast<std::size_t>(i)];
    if (node->name == name && node->scope == number) return node;
  }
  ADD_FAILURE() << "no node " << name_text(name.c_str(), number);
  return nullptr;
}

std::string blocks_of(const std::string& name, int number) {
  const Node* node = graph_node(name, number);
  return node == nullptr ? "" : block_texts(node->scope_attrs);
}

}  // namespace lexon::test
