// The rules that the attributes of a window allow.
//
// First each side's scope reference is seen through to the word at the head of its scope. Then each side is searched
// by itself: for one word after the other, the rules that forbid an attribute of the word are struck out, and those
// that require an attribute which is not present. Last, one walk over the bits of both sides makes the list.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "data/nodes.hpp"
#include "data/pool.hpp"
#include "data/sentence.hpp"
#include "data/state.hpp"
#include "rules/bits.hpp"
#include "rules/matrix.hpp"
#include "rules/rule_search.hpp"

namespace lexon {

namespace {

// One side of the window, and the part of the index that belongs to it.
struct Side {
  MatrixSide& matrix;
  SideSearch& search;
  const Node* node;   // may be null
  const Node* entry;  // what the node leads to as a reference to a scope that is not built; else null
};

std::size_t row_bytes() {
  return static_cast<std::size_t>(rule_matrix.row_bytes);
}

// Finds what the side's node leads to. False if an entry node is missing on the way, or the references run in a circle.
bool see_through(Side& side) {
  if (side.node == nullptr || !is_scope_reference(*side.node)) return true;
  if (scope_is_built(side.node->scope) != 0) return true;
  int scope = side.node->scope;
  for (int steps = 0; steps <= kMaxScopes; ++steps) {
    Node* entry = scope_entry_node(scope);
    if (entry == nullptr) return false;
    scope_attrs_to_front(*entry, side.node->scope);
    side.entry = entry;
    if (!is_scope_reference(*entry)) return true;
    scope = entry->scope;
  }
  return false;
}

// Is the word in force all there is to try? Else every word is tried and the results are joined.
bool is_settled(const Side& side) {
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

void row_present(SideSearch& search, std::int32_t row) {
  if (search.is_present[row] != 0) return;
  search.is_present[row] = 1;
  search.present_rows[search.present_count++] = row;
}

// Forgets the present rows but the `count` that were found first.
void present_cut_to(SideSearch& search, std::int32_t count) {
  while (search.present_count > count) search.is_present[search.present_rows[--search.present_count]] = 0;
}

// Strikes out the rules that forbid the attribute of a row.
void forbidden_drop(MatrixSide& matrix, std::int32_t row) {
  const std::uint8_t* allowed = matrix.neg_matrix + static_cast<std::size_t>(row) * row_bytes();
  vector_combine(matrix.result_vector, allowed, row_bytes(), [](auto a, auto b) { return a & b; });
}

// Strikes out the rules that forbid an attribute of the word, and notes its attributes as present.
void word_take(const Side& side, const WordEntry& word) {
  if (word.attrs == nullptr) return;
  const NameIndex& names = side.search.names;
  for_each_name(names, word.attrs, [&](const NameHit& hit) {
    row_present(side.search, hit.row);
    if (hit.is_one_piece && names.find_rows[hit.row] >= 0) forbidden_drop(side.matrix, names.find_rows[hit.row]);
  });
}

// Notes the attributes that the graph gives the node in the head block. They strike out nothing.
// wanted: the last one counts only if the first ",name" of the text is the one at its end, as in `attr_find`.
void scope_attrs_take(SideSearch& search, const Node& node) {
  const char* text = head_text(node);
  if (text == nullptr) return;
  for_each_name(search.names, text, [&](const NameHit& hit) {
    const bool is_last_of_several = *hit.end == '\0' && hit.begin != text;
    if (is_last_of_several && std::strstr(text, hit.begin - 1) != hit.begin - 1) return;
    row_present(search, hit.row);
  });
}

bool requirements_met(const SideSearch& search, std::int32_t rule) {
  const std::int32_t* rows = search.required_rows.items;
  const std::uint32_t* starts = search.required_rows.starts + rule;
  return std::all_of(rows + starts[0], rows + starts[1], [&](std::int32_t row) { return search.is_present[row] != 0; });
}

// Strikes out the rules that require an attribute that is not present.
void keep_satisfied(const Side& side) {
  const SideSearch& search = side.search;
  std::uint8_t* missing = side.matrix.missing_vector;
  std::memcpy(missing, search.demanding, row_bytes());
  for (std::int32_t i = 0; i < search.present_count; ++i) {
    const std::uint32_t* starts = search.watching_rules.starts + search.present_rows[i];
    for (std::uint32_t at = starts[0]; at < starts[1]; ++at) {
      const std::int32_t rule = search.watching_rules.items[at];
      if (requirements_met(search, rule)) bit_clear(missing, static_cast<std::size_t>(rule));
    }
  }
  vector_combine(side.matrix.result_vector, missing, row_bytes(), [](auto a, auto b) { return a & ~b; });
}

// Joins the result to those of the words before. False if memory is exhausted.
bool union_join(MatrixSide& matrix) {
  if (matrix.union_vector == nullptr) matrix.union_vector = static_cast<std::uint8_t*>(zeroed_block(row_bytes()));
  if (matrix.union_vector == nullptr) {
    state.abort = Status::memory;
    return false;
  }
  vector_combine(matrix.union_vector, matrix.result_vector, row_bytes(), [](auto a, auto b) { return a | b; });
  return true;
}

void let_all_through(MatrixSide& matrix) {
  std::memset(matrix.result_vector, 0xFF, row_bytes());
}

// Takes what holds for every word of the search. With an entry node that includes the word of the reference.
// wanted: what that word strikes out counts for the first word of the entry node alone.
void lasting_take(const Side& side) {
  scope_attrs_take(side.search, *side.node);
  if (side.entry == nullptr) return;
  scope_attrs_take(side.search, *side.entry);
  word_take(side, *side.node->candidates);
}

// Leaves the side's result in `result_vector` if it is settled, else in `union_vector`. False if the search has to be
// given up.
bool side_search(const Side& side) {
  lasting_take(side);
  const std::int32_t lasting = side.search.present_count;
  const WordEntry* word = side.entry == nullptr ? side.node->candidates : side.entry->candidates;
  do {
    if (word != nullptr) word_take(side, *word);
    keep_satisfied(side);
    if (is_settled(side)) return true;
    if (!union_join(side.matrix) || must_leave() != Status::ok) return false;
    let_all_through(side.matrix);
    present_cut_to(side.search, lasting);
    if (word != nullptr) word = word->next;
  } while (word != nullptr);
  return true;
}

bool side_run(const Side& side) {
  let_all_through(side.matrix);
  if (side.node == nullptr || side.node->candidates == nullptr) return true;
  const bool done = side_search(side);
  present_cut_to(side.search, 0);
  return done;
}

// The side's bits in the end. Null stands for a vector of zeros: a fresh node without words lets no rule through.
const std::uint8_t* side_bits(const Side& side) {
  return side.node == nullptr || is_settled(side) ? side.matrix.result_vector : side.matrix.union_vector;
}

// The bits from byte `at` on of the rules that pass both sides. What an inserted pattern asks for is not held against
// the window: it speaks of a word that is not there yet.
std::uint64_t passing(const Side& left, const Side& right, std::size_t at) {
  const auto word = [at](const std::uint8_t* vector) {
    return vector == nullptr ? 0 : bits_at(vector, row_bytes(), at);
  };
  const std::uint64_t l = word(side_bits(left));
  const std::uint64_t r = word(side_bits(right));
  return (l & r) | (l & word(right.search.inserted)) | (r & word(left.search.inserted));
}

// Hangs an element for rule `number` on `link`. False if memory is exhausted.
bool candidate_append(RuleCandidate**& link, CandidateList*& list, std::size_t number) {
  if (list == nullptr) list = temp_new<CandidateList>();
  auto* element = list == nullptr ? nullptr : temp_new<RuleCandidate>();
  if (element == nullptr) return false;
  element->rule = rule_search.rules[number];
  element->list = list;
  ++list->elements;
  *link = element;
  link = &element->next;
  return true;
}

RuleCandidate* candidates_collect(const Side& left, const Side& right) {
  RuleCandidate* head = nullptr;
  RuleCandidate** link = &head;
  CandidateList* list = nullptr;
  bool complete = true;
  for (std::size_t at = 0; at < row_bytes() && complete; at += kWordBytes) {
    for_each_bit(passing(left, right, at), at * 8, [&](std::size_t number) {
      if (number >= static_cast<std::size_t>(rule_search.rule_count)) return;
      complete = complete && candidate_append(link, list, number);
    });
  }
  return complete ? head : nullptr;
}

void union_release(MatrixSide& matrix) {
  std::free(matrix.union_vector);
  matrix.union_vector = nullptr;
}

}  // namespace

RuleCandidate* rule_candidates(Node* lnode, Node* rnode) {
  if ((lnode == nullptr && rnode == nullptr) || rule_search.rules == nullptr) return nullptr;
  Side left{rule_matrix.left, rule_search.left, lnode, nullptr};
  Side right{rule_matrix.right, rule_search.right, rnode, nullptr};
  if (!see_through(left) || !see_through(right)) return nullptr;
  RuleCandidate* list = side_run(left) && side_run(right) ? candidates_collect(left, right) : nullptr;
  union_release(rule_matrix.left);
  union_release(rule_matrix.right);
  return list;
}

}  // namespace lexon
