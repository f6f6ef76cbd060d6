// The tables of one sentence; all are cleared by `sentence_clear` (data/session.hpp).
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <span>

#include "data/records.hpp"

namespace lexon {

struct IndexDescriptor;  // dict/index.hpp

inline constexpr int kMaxGraphWords = 512;
inline constexpr int kMaxGraphNodes = 512;
inline constexpr int kMaxWordLists = 512;
inline constexpr int kMaxScopes = 255;
inline constexpr int kMaxRelations = 128;
inline constexpr int kLineSize = 1024;      // of a line read, terminator included
inline constexpr int kSentenceSize = 1024;  // of a finished sentence, terminator included
inline constexpr int kKeyFields = 9;        // slots of a dictionary, indexed by key field; 0 and 8 are never used

// The open files of a dictionary. Nothing here is owned.
struct DictionaryFiles {
  std::FILE* dictionary;                // null: no such dictionary in this run
  std::FILE* index;                     // null: looked for by the name in the slot
  const IndexDescriptor* const* slots;  // kKeyFields pointers
  std::size_t name_size;                // the room for an index name in the blocks of the index
};

// A word of the graph, as written.
struct GraphWord {
  std::int32_t look_up;  // 1: asked of the dictionary; 0: written in double quotes
  std::int32_t number;
  char name[260];
  ScopeAttrs* blocks;  // newest first
};

// A scope: where its generation starts.
struct ScopeRow {
  std::uint8_t number;
  Node* entry;  // null: no "@entry" was found for it
};

struct Sentence {
  std::array<GraphWord, kMaxGraphWords> graph_words;  // by name, then number
  std::int32_t graph_word_count;
  std::array<Node*, kMaxGraphNodes> graph_nodes;  // in the same order
  std::int32_t graph_node_count;
  std::array<WordEntry*, kMaxWordLists> word_lists;  // what Node::entries points at
  std::int32_t word_list_count;
  std::array<ScopeRow, kMaxScopes> semlst;  // row 0 is the sentence itself, the rest by first mention
  std::int32_t semlst_count;                // at least 1 once cleared
  std::array<Relation*, kMaxRelations> graph_relations;
  std::int32_t graph_relation_count;
  Node* root;  // entry node of the whole sentence
  DictionaryFiles dictionary;
  DictionaryFiles cr_dictionary;  // files null when the run has none
  bool refused;                   // a limit was exceeded while reading; a message has said which
  bool has_scopes_mixed;          // a word has attributes in more than one scope
  bool has_loop;                  // a node has been put beside itself
};

// The rows of the scope table that are in use, from row `first` on; 1 leaves out the sentence itself.
[[nodiscard]] inline std::span<ScopeRow> scope_rows(Sentence& sentence, std::size_t first = 0) {
  const std::size_t used = std::min(static_cast<std::size_t>(sentence.semlst_count), sentence.semlst.size());
  return {sentence.semlst.data() + first, std::max(used, first) - first};
}
[[nodiscard]] inline std::span<const ScopeRow> scope_rows(const Sentence& sentence, std::size_t first = 0) {
  return scope_rows(const_cast<Sentence&>(sentence), first);
}

}  // namespace lexon
