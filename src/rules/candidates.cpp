// The rules that the attributes of a window allow.
//
// First each side's scope reference is seen through to the word at the head of its scope. Then each side is searched
// by itself: for one word after the other, the rules that forbid an attribute of the word are struck out, and those
// that require an attribute which is not present. Last, one walk over the bits of both sides makes the list.
#include <algorithm>
#include <cstring>
#include <utility>

#include "data/nodes.hpp"
#include "data/session.hpp"
#include "rules/bits.hpp"
#include "rules/grammar.hpp"
#include "rules/rule_search.hpp"

namespace lexon {

namespace {

// One side of the window, and the part of the index that belongs to it.
struct WindowSide {
  const MatrixSide& matrix;
  const SideSearch& search;
  SearchScratch::Side& scratch;
  std::size_t row_bytes;
  const Node* node;             // may be null
  const Node* entry = nullptr;  // what the node leads to as a reference to a scope that is not built; else null
};

// Finds what the side's node leads to. False if an entry node is missing on the way, or the references run in a circle.
bool see_through(const Session& session, WindowSide& side) {
  if (side.node == nullptr || !is_scope_reference(*side.node)) return true;
  if (scope_is_built(session, side.node->scope) != 0) return true;
  int scope = side.node->scope;
  for (int steps = 0; steps <= kMaxScopes; ++steps) {
    Node* entry = scope_entry_node(session, scope);
    if (entry == nullptr) return false;
    scope_attrs_to_front(*entry, side.node->scope);
    side.entry = entry;
    if (!is_scope_reference(*entry)) return true;
    scope = entry->scope;
  }
  return false;
}

// Is the word in force all there is to try? Else every word is tried and the results are joined.
bool is_settled(const WindowSide& side) {
  return side.node->matches != nullptr && (side.entry == nullptr || side.entry->matches != nullptr);
}

// Calls `visit` with each row whose name is the `length` bytes at `run`.
template <typename Visit>
void for_each_row(const NameIndex& names, std::uint32_t hash, const char* run, std::size_t length, Visit visit) {
  for (std::int32_t next = names.buckets[hash & names.mask]; next != 0; next = names.next_rows[next - 1]) {
    const char* name = names.names[next - 1];
    const bool equal = std::strncmp(name, run, length) == 0 && name[length] == '\0';
    if (equal) visit(next - 1);
  }
}

// A name of the table in an attribute string.
struct NameHit {
  std::int32_t row;
  const char* begin;
  const char* end;
  bool is_one_piece;
};

// Calls `visit` with each place where a name of the table stands in `text` as one piece between commas or, if it has
// commas itself, as several neighbouring pieces. Empty pieces are pieces like others.
template <typename Visit>
void for_each_name(const NameIndex& names, const char* text, Visit visit) {
  for (const char* begin = text; begin != nullptr;) {
    std::uint32_t hash = kHashSeed;
    const char* end = begin;
    const char* next_piece = nullptr;
    for (int commas = 0;; ++commas) {
      for (; *end != '\0' && *end != ','; ++end) hash = hash_step(hash, *end);
      if (commas == 0) next_piece = *end == ',' ? end + 1 : nullptr;
      for_each_row(names, hash, begin, static_cast<std::size_t>(end - begin), [&](std::int32_t row) {
        visit(NameHit{row, begin, end, commas == 0});
      });
      if (*end == '\0' || commas == names.most_commas) break;
      hash = hash_step(hash, *end++);
    }
    begin = next_piece;
  }
}

void row_present(SearchScratch::Side& scratch, std::int32_t row) {
  std::uint8_t& is_present = scratch.is_present[static_cast<std::size_t>(row)];
  if (is_present != 0) return;
  is_present = 1;
  scratch.present.push_back(row);
}

// Forgets the present rows but the `count` that were found first.
void present_cut_to(SearchScratch::Side& scratch, std::size_t count) {
  for (; scratch.present.size() > count; scratch.present.pop_back()) {
    scratch.is_present[static_cast<std::size_t>(scratch.present.back())] = 0;
  }
}

// Strikes out the rules that forbid the attribute of a row.
void forbidden_drop(const WindowSide& side, std::int32_t row) {
  const std::uint8_t* allowed = side.matrix.neg_matrix + static_cast<std::size_t>(row) * side.row_bytes;
  vector_combine(side.scratch.result.data(), allowed, side.row_bytes, [](auto a, auto b) { return a & b; });
}

// Strikes out the rules that forbid an attribute of the word, and notes its attributes as present.
void word_take(const WindowSide& side, const WordEntry& word) {
  if (word.attrs == nullptr) return;
  const NameIndex& names = side.search.names;
  for_each_name(names, word.attrs, [&](const NameHit& hit) {
    row_present(side.scratch, hit.row);
    if (hit.is_one_piece && names.find_rows[hit.row] >= 0) forbidden_drop(side, names.find_rows[hit.row]);
  });
}

// Notes the attributes that the graph gives the node in the head block. They strike out nothing.
// wanted: the last one counts only if the first ",name" of the text is the one at its end, as in `attr_find`.
void scope_attrs_take(const WindowSide& side, const Node& node) {
  const char* text = head_text(node);
  if (text == nullptr) return;
  for_each_name(side.search.names, text, [&](const NameHit& hit) {
    const bool is_last_of_several = *hit.end == '\0' && hit.begin != text;
    if (is_last_of_several && std::strstr(text, hit.begin - 1) != hit.begin - 1) return;
    row_present(side.scratch, hit.row);
  });
}

bool requirements_met(const WindowSide& side, std::int32_t rule) {
  const std::int32_t* rows = side.search.required_rows.items;
  const std::uint32_t* starts = side.search.required_rows.starts + rule;
  const std::uint8_t* is_present = side.scratch.is_present.data();
  return std::all_of(rows + starts[0], rows + starts[1], [&](std::int32_t row) { return is_present[row] != 0; });
}

// Strikes out the rules that require an attribute that is not present.
void keep_satisfied(const WindowSide& side) {
  const SideSearch& search = side.search;
  std::uint8_t* missing = side.scratch.missing.data();
  std::memcpy(missing, search.demanding, side.row_bytes);
  for (const std::int32_t row : side.scratch.present) {
    const std::uint32_t* starts = search.watching_rules.starts + row;
    for (std::uint32_t at = starts[0]; at < starts[1]; ++at) {
      const std::int32_t rule = search.watching_rules.items[at];
      if (requirements_met(side, rule)) bit_clear(missing, static_cast<std::size_t>(rule));
    }
  }
  vector_combine(side.scratch.result.data(), missing, side.row_bytes, [](auto a, auto b) { return a & ~b; });
}

// Joins the result to those of the words before.
void union_join(const WindowSide& side) {
  SearchScratch::Side& scratch = side.scratch;
  if (!std::exchange(scratch.has_joined, true))
    std::fill(scratch.joined.begin(), scratch.joined.end(), std::uint8_t{0});
  vector_combine(scratch.joined.data(), scratch.result.data(), side.row_bytes, [](auto a, auto b) { return a | b; });
}

void let_all_through(const WindowSide& side) {
  std::memset(side.scratch.result.data(), 0xFF, side.row_bytes);
}

// Takes what holds for every word of the search. With an entry node that includes the word of the reference.
// wanted: what that word strikes out counts for the first word of the entry node alone.
void lasting_take(const WindowSide& side) {
  scope_attrs_take(side, *side.node);
  if (side.entry == nullptr) return;
  scope_attrs_take(side, *side.entry);
  word_take(side, *side.node->candidates);
}

// Leaves the side's result in `result` if it is settled, else in `joined`. False if the search has to be
// given up.
bool side_search(const Session& session, const WindowSide& side) {
  lasting_take(side);
  const std::size_t lasting = side.scratch.present.size();
  const WordEntry* word = side.entry == nullptr ? side.node->candidates : side.entry->candidates;
  do {
    if (word != nullptr) word_take(side, *word);
    keep_satisfied(side);
    if (is_settled(side)) return true;
    union_join(side);
    if (must_leave(session) != Status::ok) return false;
    let_all_through(side);
    present_cut_to(side.scratch, lasting);
    if (word != nullptr) word = word->next;
  } while (word != nullptr);
  return true;
}

bool side_run(const Session& session, const WindowSide& side) {
  side.scratch.has_joined = false;
  let_all_through(side);
  if (side.node == nullptr || side.node->candidates == nullptr) return true;
  const bool done = side_search(session, side);
  present_cut_to(side.scratch, 0);
  return done;
}

// The side's bits in the end. Null stands for a vector of zeros: a fresh node without words lets no rule through.
const std::uint8_t* side_bits(const WindowSide& side) {
  if (side.node == nullptr || is_settled(side)) return side.scratch.result.data();
  return side.scratch.has_joined ? side.scratch.joined.data() : nullptr;
}

// The bits from byte `at` on of the rules that pass both sides. What an inserted pattern asks for is not held against
// the window: it speaks of a word that is not there yet.
std::uint64_t passing(const WindowSide& left, const WindowSide& right, std::size_t at) {
  const auto word = [&](const std::uint8_t* vector) {
    return vector == nullptr ? 0 : bits_at(vector, left.row_bytes, at);
  };
  const std::uint64_t l = word(side_bits(left));
  const std::uint64_t r = word(side_bits(right));
  return (l & r) | (l & word(right.search.inserted)) | (r & word(left.search.inserted));
}

// Appends an element for the rule at `link`. False if memory is exhausted.
bool candidate_append(Session& session, RuleCandidate**& link, CandidateList*& list, const Rule* rule) {
  if (list == nullptr) list = temp_new<CandidateList>(session);
  auto* element = list == nullptr ? nullptr : temp_new<RuleCandidate>(session);
  if (element == nullptr) return false;
  element->rule = rule;
  element->list = list;
  ++list->elements;
  *link = element;
  link = &element->next;
  return true;
}

RuleCandidate* candidates_collect(Session& session, const WindowSide& left, const WindowSide& right) {
  const RuleSearch& search = session.grammar->index.search;
  RuleCandidate* head = nullptr;
  RuleCandidate** link = &head;
  CandidateList* list = nullptr;
  bool complete = true;
  for (std::size_t at = 0; at < left.row_bytes && complete; at += kWordBytes) {
    for_each_bit(passing(left, right, at), at * 8, [&](std::size_t number) {
      if (number >= static_cast<std::size_t>(search.rule_count)) return;
      complete = complete && candidate_append(session, link, list, search.rules[number]);
    });
  }
  return complete ? head : nullptr;
}

}  // namespace

RuleCandidate* rule_candidates(Session& session, Node* lnode, Node* rnode) {
  const RuleIndex& index = session.grammar->index;
  if ((lnode == nullptr && rnode == nullptr) || index.search.rules == nullptr) return nullptr;
  const auto row_bytes = static_cast<std::size_t>(index.matrix.row_bytes);
  WindowSide left{index.matrix.left, index.search.left, session.search.left, row_bytes, lnode};
  WindowSide right{index.matrix.right, index.search.right, session.search.right, row_bytes, rnode};
  if (!see_through(session, left) || !see_through(session, right)) return nullptr;
  return side_run(session, left) && side_run(session, right) ? candidates_collect(session, left, right) : nullptr;
}

}  // namespace lexon
