// The records that every room works on. Plain data: they lie in the sentence's pool and end with it; no field owns
// what it points to unless it says so.
#pragma once

#include <cstdint>
#include <type_traits>

namespace lexon {

struct Rule;  // rules/rule.hpp

// The limit of an attribute string, terminator included.
inline constexpr int kAttrLimit = 1024;

// The kinds of a node: its low seven bits. Bit 7 is the mark "to be tried again in place".
inline constexpr std::int8_t kKindLiteral = 0;    // no dictionary entry, or attributes that hold "TEMP"
inline constexpr std::int8_t kKindWord = 1;       // an ordinary word
inline constexpr std::int8_t kKindNine = 2;       // attributes that hold "@9"
inline constexpr std::int8_t kKindClassWord = 5;  // a word of a word class; its surface form is not tested
inline constexpr std::int8_t kKindBoundary = 9;   // head or tail of a node list
inline constexpr std::int8_t kKindScope = 10;     // stands for a whole scope

// A dictionary word, or a word candidate of a node.
struct WordEntry {
  std::int32_t total_size;  // size as a text record; kept up to date by some writers only, nothing decides on it
  std::int32_t hw_len;
  char* hw;  // surface form; may be null
  std::int32_t gloss_len;
  char* gloss;  // free text of the entry; may be null
  std::int32_t cw_len;
  char* cw;                      // concept word; null or empty: the word has none
  std::int32_t attr_block_size;  // attr_len + 12
  std::int32_t attr_len;         // may be larger than the string, never relied on for reading
  char* attrs;                   // attribute names with commas between; may be null
  std::uint8_t frequency[4];     // high byte first
  std::uint8_t priority;         // higher is tried first
  char language[2];              // '.' where none is given
  std::int32_t id_len;
  char* id;  // text in braces behind the surface form; may be null
  std::int32_t extra1_len;
  char* extra1;  // may be null
  std::int32_t extra2_len;
  char* extra2;  // may be null
  WordEntry* next;
};
static_assert(std::is_trivial_v<WordEntry>);

// Attributes of a graph node in one scope. Made by the graph reader, shared by a node and its copies.
struct ScopeAttrs {
  std::uint8_t scope;
  char text[1027];  // at most 1024 characters are used
  ScopeAttrs* next;
};
static_assert(std::is_trivial_v<ScopeAttrs>);

struct Node;
struct MatchRecord;

// One arc of the graph. It is in the lists of both its ends through its one `next`, so a list can hold arcs that
// do not touch its node: every reader tests `from` and `to`.
struct Relation {
  std::uint8_t used;   // generation has consumed the arc; the graph dump borrows the flag
  std::uint8_t scope;  // low 8 bits of the number in the label
  char label[6];       // at most 5 characters
  Node* from;
  Node* to;
  Relation* next;
};
static_assert(std::is_trivial_v<Relation>);

// One place in the graph and in the list that is being generated. Stays valid, with all its links, after it has
// left a list, until the sentence ends or the application that made it is undone.
struct Node {
  std::int8_t kind;         // see the constants above; compared as a signed number
  bool was_listed;          // stands in a list, or has stood in one
  std::int32_t scope;       // a scope reference: the scope's number; else the number of the word's instance, or 0
  char* name;               // text in the graph; null for boundaries, copies and nodes made by rules
  MatchRecord* matches;     // undo stack, newest first; null: the node is fresh
  WordEntry* entries;       // master list, shared by the nodes of one concept, never changed; may be null
  WordEntry* candidates;    // the head is the word in force, the rest are its alternatives
  Relation* relations;      // arcs; a copy shares its source's list
  Node* left;               // null at the left boundary
  Node* right;              // null at the right boundary
  Node* origin;             // the node of which this is a copy; null if none, or given back
  Node* source;             // set with `origin` on every copy; on a merge node what undo puts back
  Node* merged_with;        // on a merge node: the other node of the pair
  ScopeAttrs* scope_attrs;  // the head is the block of the scope being generated; shared by copies
};
static_assert(std::is_trivial_v<Node>);

// What all elements of one list have in common.
struct CandidateList {
  std::int32_t records;   // match records that point to any element of the list
  std::int32_t elements;  // elements not released yet; the list goes back to the pool with the last one
  std::int32_t blocks;    // how many stand behind this record, in the same cell
  std::int32_t at;        // the first of them that still names rules without an element; `blocks`: none does
};

// Rules of 64 neighbouring numbers, of which few are named: those of block b have the numbers from 64 * b on, the first on
// the top bit. In an array of blocks, `block` rises.
struct RuleBlock {
  std::int32_t block;
  std::uint64_t rules;
};

// The rules of the list that have no element yet, from `at` on.
[[nodiscard]] inline RuleBlock* blocks_of(CandidateList& list) {
  return reinterpret_cast<RuleBlock*>(&list + 1);
}
[[nodiscard]] inline const RuleBlock* blocks_of(const CandidateList& list) {
  return reinterpret_cast<const RuleBlock*>(&list + 1);
}
static_assert(std::is_trivial_v<RuleBlock> && sizeof(CandidateList) % alignof(RuleBlock) == 0);

// One rule that may fit a window. Backtracking resumes with the one behind it, which most often is not made before it is
// asked for: see `candidate_next`.
struct RuleCandidate {
  const Rule* rule;
  Node* lnode;  // set by matching for a rule with MID, else null
  Node* rnode;
  RuleCandidate* next;  // null: the last one, or the last that has been made
  CandidateList* list;  // never null
};
static_assert(std::is_trivial_v<RuleCandidate>);

// States of a match record.
inline constexpr std::uint8_t kStateStep = 0;     // marks a step; the word is as it was
inline constexpr std::uint8_t kStateChanged = 1;  // the head of the word list is a changed copy that undo drops
inline constexpr std::uint8_t kStateHold = 2;     // a hold placed on a scope's entry node from outside

// One entry of a node's undo stack.
struct MatchRecord {
  std::uint8_t state;
  RuleCandidate* candidate;  // null in a window marker
  WordEntry* cooccurrence;   // words that the co-occurrence step chose, the head in force; null if none
  MatchRecord* next;
};
static_assert(std::is_trivial_v<MatchRecord>);

// A node's low seven bits, and its mark "to be tried again in place".
[[nodiscard]] constexpr int kind_bits(const Node& node) {
  return node.kind & 0x7F;
}
[[nodiscard]] constexpr bool is_marked(const Node& node) {
  return node.kind < 0;
}
constexpr void mark(Node& node) {
  node.kind = static_cast<std::int8_t>(node.kind | 0x80);
}
constexpr void unmark(Node& node) {
  node.kind = static_cast<std::int8_t>(node.kind & 0x7F);
}

[[nodiscard]] constexpr bool is_boundary(const Node& node) {
  return node.kind == kKindBoundary;
}
[[nodiscard]] constexpr bool is_scope_reference(const Node& node) {
  return node.kind == kKindScope;
}
[[nodiscard]] constexpr bool is_fresh(const Node& node) {
  return node.matches == nullptr;
}
// The newest record is a hold; a fresh node has none.
[[nodiscard]] constexpr bool is_held(const Node& node) {
  return node.matches != nullptr && node.matches->state == kStateHold;
}
// No rule has touched the node: it is fresh or only held from outside.
[[nodiscard]] constexpr bool is_untouched(const Node& node) {
  return is_fresh(node) || is_held(node);
}

}  // namespace lexon
