// The tables of one sentence. One sentence at a time; all is cleared by `sentence_clear`.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>

#include "data/records.hpp"
#include "data/state.hpp"

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
};

extern Sentence sentence;

// The scope that is generated now.
[[nodiscard]] inline ScopeRow& current_scope() {
  return sentence.semlst[static_cast<std::size_t>(state.semlst_cur)];
}

// Clears all tables, and what the last sentence left in the engine's state; the dictionaries stay as they are. A
// forced target that is left over stays set but equals no node of this sentence.
void sentence_clear();

// Notes that the sentence breaks a limit and prints ";;" and `what`, once per sentence.
void sentence_refuse(const char* what);

// The scope's index in `semlst` if it is generated and standing, else 0. A row without entry ends the search, and its
// index is the result.
[[nodiscard]] int scope_is_built(int scope);

// Is `node` a scope reference whose scope is not generated?
[[nodiscard]] inline bool is_unbuilt_reference(const Node& node) {
  return is_scope_reference(node) && scope_is_built(node.scope) == 0;
}

// The entry node of a scope, or null.
[[nodiscard]] Node* scope_entry_node(int scope);

// The node that a scope reference leads to, through references, or null if an entry is missing on the way or the
// references run in a circle.
[[nodiscard]] Node* scope_final_node(int scope);

// The same, but going on only through references whose scope is not built; the first that is built is the result.
[[nodiscard]] Node* scope_unbuilt_target(int scope);

}  // namespace lexon
