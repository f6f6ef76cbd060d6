// Nodes: copies, release, their undo stacks, and the links of the node list.
//
// No other file assigns `left` and `right`, unless a rule of the search demands a lopsided link.
#pragma once

#include <cstddef>
#include <span>

#include "data/records.hpp"
#include "data/status.hpp"

namespace lexon {

struct Session;

// Makes a node from `src`. With `mode` 0 (an inserted or merged copy, or a re-entered entry node) and 1 (a copy rule)
// the words are copied in different ways; see the comments in the source. With a `relation`, that relation's end is
// turned to the copy, and the attributes that a used node has gathered are appended, marked with "#", to the shared
// attribute block. `copy` is null on failure.
[[nodiscard]] Status node_copy(Session& session, Node*& copy, Node& src, Relation* relation, int mode);

// Appends the attributes that the words of `src` have gathered to the block, each marked with "#", unless it is empty or
// has marks already: what a copy over a relation shows of the node that it was copied from.
void marked_attrs_append(ScopeAttrs& block, const Node& src);

// Releases the node's name, words, newest record and the node itself, and clears the pointer. A forced target that
// is released equals no node from then on.
void node_free(Session& session, Node*& node);

// Keeps a window honest across calls that can undo the application that made its nodes: while the watch lives,
// `node_free` clears a watched place whose node it releases. Watches end in the reverse order of their making.
class PlaceWatch {
 public:
  PlaceWatch(Session& session, Node*& first, Node*& second);
  ~PlaceWatch();
  PlaceWatch(const PlaceWatch&) = delete;
  PlaceWatch& operator=(const PlaceWatch&) = delete;

  // Clears the places of all watches that hold `node`.
  static void forget(const Session& session, const Node* node);

 private:
  Session& session_;
  Node** places_[2];
  PlaceWatch* outer_;
};

// The same but for the node itself and its name: others may still point to it.
void node_empty(Session& session, Node& node);

// Joins the neighbours, releases the words, then does as `node_free`.
void node_unlink_free(Session& session, Node*& node);

// Reloads `candidates` by a fresh copy of `entries`; the old list is released.
[[nodiscard]] Status node_words_reload(Session& session, Node& node);

// Recomputes the kind of a node from its word in force: 2, 0, 5 or 1. Callers see to it that `kind` is below 9.
void node_kind_recompute(Node& node);

// The node's block of `scope`, or null.
[[nodiscard]] ScopeAttrs* scope_attrs_find(const Node& node, int scope);

// Moves the node's block of `scope` to the front of its attribute blocks; nothing changes if there is none.
void scope_attrs_to_front(Node& node, int scope);

// The text of the head block, or null without blocks.
[[nodiscard]] const char* head_text(const Node& node);

// Pushes a record on the node's undo stack. A null candidate makes a window marker.
[[nodiscard]] Status match_record_push(Session& session, Node& node, std::uint8_t state, RuleCandidate* candidate,
                                       WordEntry* cooccurrence = nullptr);

// Pops and releases the newest record. The stack must not be empty.
void match_record_pop(Session& session, Node& node);

// A new list: its first element, and the rules behind it, which get theirs when they are asked for. Null when memory is
// exhausted.
[[nodiscard]] RuleCandidate* candidates_new(Session& session, const Rule* first, std::span<const RuleBlock> rest = {});

// A new element behind the last one of a list; null when memory is exhausted.
[[nodiscard]] RuleCandidate* candidate_append(Session& session, RuleCandidate& last, const Rule* rule);

// Releases an element of a candidate list that matching has passed over. It is kept until the sentence ends if a
// record can still reach it.
void candidate_passed_over(Session& session, RuleCandidate* element);

// The same for all elements from `first` up to `end`; null stands for none, and for the end of the list.
void candidates_passed_over(Session& session, RuleCandidate* first, const RuleCandidate* end = nullptr);

// The search goes on with `now` instead of `before`, which nobody else holds: what it leaves behind is passed over.
// Either may be null.
void candidates_left_behind(Session& session, RuleCandidate* before, const RuleCandidate* now);

// Links `node` into the list directly behind / in front of `at`.
void node_insert_after(Session& session, Node& at, Node& node);
void node_insert_before(Session& session, Node& at, Node& node);

// Joins the neighbours of `node` to each other. The node keeps its own links.
void node_take_out(Session& session, Node& node);

// The first node of the list that `node` stands in, or a node that stands beside itself.
[[nodiscard]] Node* list_first(Node* node);

}  // namespace lexon
