// What one thread works with while it makes rules ready or renders sentences: the first parameter of what touches it.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "data/key_numbers.hpp"
#include "data/lookup_memory.hpp"
#include "data/output.hpp"
#include "data/pool.hpp"
#include "data/records.hpp"
#include "data/sentence.hpp"
#include "data/state.hpp"
#include "data/status.hpp"

namespace lexon {

struct Grammar;  // rules/grammar.hpp
class Observer;  // engine/observer.hpp

// What lookups have met in damaged files. The output has no place for it: the front end tells.
struct LookupDamage {
  std::int64_t blocks;      // that could not be read, or were of the wrong kind; one counts as often as it is met
  const std::FILE* stream;  // where the first of them stands; null as long as there is none
  std::int64_t offset;      // its place in that file
};

// What is wrong with a sentence, for who renders from a program; the output says it in its own way.
struct Remark {
  std::int64_t line;  // of the input, from 1; 0: it is about no line
  std::string text;
};

// The work area of the search for rules, and what it remembers; sized for the grammar by `session_use`. Lists of rules
// are numbers in rising order.
struct SearchScratch {
  struct Side {
    // What is remembered of a node: where its blocks and its numbers begin, and how many they are. Each word has two numbers
    // at least: without any, the side has not been asked yet.
    struct Known {
      std::uint32_t first_block;
      std::uint32_t satisfied;
      std::uint32_t first_number;
      std::uint32_t words;
    };
    std::vector<std::int32_t> let;         // the rules that its words let through, but for easy ones that always pass
    std::vector<RuleBlock> satisfied;      // of the rules that it watches, and of easy ones, what its words let through
    std::vector<std::int32_t> words;       // the rows that each of the words has
    std::vector<std::uint8_t> is_present;  // by row of the index; zeros between searches
    std::vector<std::int32_t> present;     // the rows that are present, in the order of their finding
    std::vector<std::uint8_t> is_striking;  // by row; zeros between searches
    std::vector<std::int32_t> striking;     // the rows whose forbidding rules are struck out
    std::vector<Known> answers;             // by number of the key; the last keys may have none yet
    std::vector<RuleBlock> blocks;          // of all answers that are known: what they satisfy
    std::vector<std::int32_t> numbers;      // the same: their words
  };
  // Is a rule let through on a side? Open: its words have not been asked yet.
  enum class Passing : std::uint8_t { no, yes, open };
  // A rule of which the answers of the sides do not tell yet whether it passes.
  struct Uncertain {
    std::int32_t rule;
    std::uint32_t at;  // its place in `fresh`
    Passing left;
    Passing right;
  };
  Side left;
  Side right;
  std::array<char, 4096> key;  // all that the answer for a node follows from; longer ones are seldom met again
  KeyNumbers known;            // keys of answers, of both sides: a node moves from one to the other
  std::array<std::int32_t, 64> latest{};  // numbers that are tried first, at a place that follows from the node
  NumberedRanges pairs;                   // of `rules`, by pair of answers
  std::vector<RuleBlock> rules;           // of all pairs that are known
  std::vector<RuleBlock> fresh;           // of the last pair that was not known
  std::vector<Uncertain> uncertain;       // while such a pair is searched
  bool is_full = false;                   // there was no room for an answer: the next search begins by forgetting all
};

// One thread's working memory, 160 KB: not for a stack. Any number can live side by side, each with its own grammar or
// sharing one. Another thread may set `stop_requested` and `flush_wanted` and nothing else.
struct Session {
  const Grammar* grammar = nullptr;  // not owned; null until rules are there
  EngineState state{};
  Sentence sentence{};
  Pool pool;      // all cells of the sentence; released at its end
  Output output;  // sentences, banners, messages and trace
  SearchScratch search;
  std::vector<std::string> rule_texts;  // by number of the rule: as the trace prints it; empty or missing: not yet
  LookupDamage damage{};
  std::string label;                       // the line that opened the sentence; empty if it has none
  std::int64_t line = 0;                   // how many lines of the input have been read
  std::vector<Remark>* remarks = nullptr;  // not owned; null: nobody wants to know
  Observer* observer = nullptr;            // not owned; null: nobody watches
  LookupMemory lookups;
  std::atomic<bool> stop_requested{false};  // every loop that can run long looks at it
  std::atomic<bool> flush_wanted{false};    // so does it at this: the output so far is wanted by who watches the run
  bool has_company = false;                 // others work beside it: its processor time is that of its own thread
  Node gone{};                              // equals no node of any list: what `forced_node` becomes without its target

  Session() = default;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
};

// What a loop must return at once: `stopped`, a failure of the rule base, or exhausted stack; ok to go on.
[[nodiscard]] inline Status must_leave(const Session& session) {
  return session.stop_requested.load(std::memory_order_relaxed) ? Status::stopped : session.state.abort;
}

// The same for a loop that fills `pool`: a cell that it was refused ends the step, since what is half done must not pass
// for whole.
[[nodiscard]] inline Status must_leave(Session& session, const Pool& pool) {
  if (pool.is_exhausted() && session.state.abort == Status::ok) session.state.abort = Status::memory;
  return must_leave(session);
}

// Is the worker's stack nearly used up? Then the sentence is lost: `abort` becomes `memory`.
[[nodiscard]] bool stack_nearly_used(Session& session);

// Ends the sentence as a failure of the rule base. Prints ";;" and what the rule base did, at the first call in a
// sentence. Returns `Status::rule_base`, or `memory` if memory was exhausted before.
Status rule_base_failure(Session& session, const char* what);

// Keeps a remark, if anybody wants to know.
void remark(Session& session, std::int64_t line, std::string_view text);

// Texts to the session's output, one behind the other; nothing once the worker was asked to stop.
template <typename... Pieces>
void out_text(Session& session, const Pieces&... pieces) {
  if (!session.stop_requested.load(std::memory_order_relaxed)) session.output.put(pieces...);
}

// A place where the output so far is handed on if that is wanted; one stands in every loop that can run long.
inline void out_flush(Session& session) {
  if (!session.flush_wanted.load(std::memory_order_relaxed)) return;
  session.flush_wanted.store(false, std::memory_order_relaxed);
  session.output.flush();
}

// What stands in front of each line of the trace.
[[nodiscard]] inline std::string_view trace_indent(const Session& session) {
  return session.state.trace_indent;
}

// A line of the trace: the indent, the texts and the line's end.
template <typename... Pieces>
void trace_line(Session& session, const Pieces&... pieces) {
  out_text(session, trace_indent(session), pieces..., "\n");
}

// Enters and leaves a scope in the trace: depth and indent. Depth beyond 255 is a failure: false, nothing changes.
[[nodiscard]] bool trace_indent_grow(Session& session);
void trace_indent_shrink(Session& session);

// ---- Memory of the sentence.

// As `Pool::alloc`, but a request that is refused also sets `abort` to `memory`: the step ends, whether or not the
// caller could go on without the cell.
[[nodiscard]] inline void* temp_alloc(Session& session, std::int64_t size) {
  void* cell = session.pool.alloc(size);
  if (cell == nullptr && size > 0 && session.state.abort == Status::ok) session.state.abort = Status::memory;
  return cell;
}
inline void temp_free(Session& session, void* cell, std::int64_t size) {
  session.pool.free(cell, size);
}

// Gives a string back by its present length plus 1. Ignores null, the empty string, and texts that lookups keep.
void temp_free_string(Session& session, char* text);

// A terminated copy of `text`, or null.
[[nodiscard]] inline char* temp_text(Session& session, std::string_view text) {
  auto* copy = static_cast<char*>(temp_alloc(session, static_cast<std::int64_t>(text.size()) + 1));
  if (copy == nullptr) return nullptr;
  text_copy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return copy;
}

// A zeroed record, or null. Released with `temp_delete`.
template <typename Record>
[[nodiscard]] Record* temp_new(Session& session) {
  void* cell = temp_alloc(session, static_cast<std::int64_t>(sizeof(Record)));
  return cell == nullptr ? nullptr : zeroed_record<Record>(cell);
}

template <typename Record>
void temp_delete(Session& session, Record* record) {
  temp_free(session, record, static_cast<std::int64_t>(sizeof(Record)));
}

// ---- The sentence's tables.

// The scope that is generated now.
[[nodiscard]] inline ScopeRow& current_scope(Session& session) {
  return session.sentence.semlst[static_cast<std::size_t>(session.state.semlst_cur)];
}

// Clears all tables, and what the last sentence left in the engine's state; the dictionaries stay as they are. A
// forced target that is left over stays set but equals no node of this sentence.
void sentence_clear(Session& session);

// Notes that the sentence breaks a limit and prints ";;" and `what`, once per sentence.
void sentence_refuse(Session& session, const char* what);

[[nodiscard]] inline const ScopeRow& current_scope(const Session& session) {
  return session.sentence.semlst[static_cast<std::size_t>(session.state.semlst_cur)];
}

// The index of a scope in the scope table, or 0.
[[nodiscard]] int scope_row_find(const Session& session, int scope);

// The scope's index in `semlst` if it is generated and standing, else 0. A row without entry ends the search, and its
// index is the result.
[[nodiscard]] int scope_is_built(const Session& session, int scope);

// Is `node` a scope reference whose scope is not generated?
[[nodiscard]] inline bool is_unbuilt_reference(const Session& session, const Node& node) {
  return is_scope_reference(node) && scope_is_built(session, node.scope) == 0;
}

// The entry node of a scope, or null.
[[nodiscard]] Node* scope_entry_node(const Session& session, int scope);

// The node that a scope reference leads to, through references, or null if an entry is missing on the way or the
// references run in a circle.
[[nodiscard]] Node* scope_final_node(const Session& session, int scope);

// The same, but going on only through references whose scope is not built; the first that is built is the result.
[[nodiscard]] Node* scope_unbuilt_target(const Session& session, int scope);

}  // namespace lexon
