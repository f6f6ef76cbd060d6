// The rules that the attributes of a window allow.
//
// First each side's scope reference is seen through to the word at the head of its scope. Then each side is searched
// by itself: for one word after the other, the rules that forbid an attribute of the word are struck out, and those
// that require an attribute which is not present. Last, one walk over the bits of both sides gives the rules.
//
// What a side lets through follows from the attribute texts of its node, and the same texts come back in window after
// window. So the answer is remembered by the texts, and the rules of two answers by the pair.
#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string_view>
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
  const RuleSearch& index;
  const SideSearch& search;
  SearchScratch::Side& scratch;
  const Node* node;             // may be null
  const Node* entry = nullptr;  // what the node leads to as a reference to a scope that is not built; else null
};

// The rules that a side lets through, and what the answer goes by in a pair.
struct Answer {
  const std::uint64_t* bits;
  std::int32_t name;
};
constexpr std::int32_t kAll = 0;
constexpr std::int32_t kNone = 1;
constexpr std::int32_t kFirstKnown = 2;  // from here on: the number of the key
constexpr std::int32_t kNameless = -1;   // not remembered; there is no other word for the bits than the scratch

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
  for (std::int32_t next = names.buckets[hash & names.mask]; next != 0;
       next = names.next_rows[static_cast<std::size_t>(next - 1)]) {
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

// Notes the attributes of the word as present, and which of them strike out rules.
void word_take(const WindowSide& side, const WordEntry& word) {
  if (word.attrs == nullptr) return;
  const NameIndex& names = side.search.names;
  for_each_name(names, word.attrs, [&](const NameHit& hit) {
    row_present(side.scratch, hit.row);
    if (!hit.is_one_piece) return;
    const std::int32_t row = names.find_rows[static_cast<std::size_t>(hit.row)];
    if (row >= 0) side.scratch.struck.push_back(row);
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

bool requirements_met(const WindowSide& side, const Watched& watched) {
  const std::uint8_t* is_present = side.scratch.is_present.data();
  if (watched.also >= 0) return is_present[watched.also] != 0;
  const std::int32_t* more = side.search.more.data() + (-1 - watched.also);
  return std::all_of(more + 1, more + 1 + *more, [&](std::int32_t row) { return is_present[row] != 0; });
}

// Leaves in `result` the rules that the present rows satisfy but for those that are struck out.
void result_take(const WindowSide& side) {
  const SideSearch& search = side.search;
  std::uint64_t* result = side.scratch.result.data();
  std::memcpy(result, search.undemanding.data(), search.undemanding.words() * kWordBytes);
  for (const std::int32_t row : side.scratch.present) {
    const std::uint32_t* starts = search.watch_starts.data() + row;
    for (std::uint32_t at = starts[0]; at < starts[1]; ++at) {
      const Watched watched = search.watched[at];
      const auto rule = static_cast<std::size_t>(watched.rule);
      if (requirements_met(side, watched)) result[rule / kWordBits] |= word_bit(rule);
    }
  }
  for (const std::int32_t row : side.scratch.struck) {
    const std::uint32_t* starts = search.forbidding.starts.data() + row;
    for (std::uint32_t at = starts[0]; at < starts[1]; ++at) {
      const auto rule = static_cast<std::size_t>(search.forbidding.items[at]);
      result[rule / kWordBits] &= ~word_bit(rule);
    }
  }
  side.scratch.struck.clear();
}

// Joins the result to those of the words before.
void union_join(const WindowSide& side) {
  SearchScratch::Side& scratch = side.scratch;
  for (std::size_t word = 0; word < side.index.all.words(); ++word) scratch.joined[word] |= scratch.result[word];
}

// Takes what holds for every word of the search. With an entry node that includes the word of the reference.
// wanted: what that word strikes out counts for the first word of the entry node alone.
void lasting_take(const WindowSide& side) {
  scope_attrs_take(side, *side.node);
  if (side.entry == nullptr) return;
  scope_attrs_take(side, *side.entry);
  word_take(side, *side.node->candidates);
}

// The first of the words that are tried.
const WordEntry* first_word(const WindowSide& side) {
  return side.entry == nullptr ? side.node->candidates : side.entry->candidates;
}

// Leaves what the side lets through in `result`, without summary. False if the search has to be given up.
bool side_search(const Session& session, const WindowSide& side) {
  SearchScratch::Side& scratch = side.scratch;
  lasting_take(side);
  const std::size_t lasting = scratch.present.size();
  const bool settled = is_settled(side);
  if (!settled) std::fill(scratch.joined.begin(), scratch.joined.end(), 0);
  const WordEntry* word = first_word(side);
  do {
    if (word != nullptr) word_take(side, *word);
    result_take(side);
    if (settled) return true;
    union_join(side);
    if (must_leave(session) != Status::ok) return false;
    present_cut_to(scratch, lasting);
    if (word != nullptr) word = word->next;
  } while (word != nullptr);
  scratch.result.swap(scratch.joined);
  return true;
}

void summarise(const WindowSide& side) {
  const std::size_t words = side.index.all.words();
  std::uint64_t* bits = side.scratch.result.data();
  std::fill(bits + words, bits + side.index.all.size(), 0);
  for (std::size_t word = 0; word < words; ++word) {
    if (bits[word] != 0) bits[words + word / kWordBits] |= word_bit(word);
  }
}

// Puts together all that the search looks at. No text holds what parts the texts.
void key_take(const WindowSide& side) {
  std::string& key = side.scratch.key;
  const auto text_take = [&](const char* text) {
    key += text == nullptr ? '\0' : '\1';
    if (text != nullptr) key.append(text, std::strlen(text) + 1);
  };
  const bool settled = is_settled(side);
  key.clear();
  key += settled ? 's' : 'o';
  key += side.entry == nullptr ? 'n' : 'e';
  text_take(head_text(*side.node));
  if (side.entry != nullptr) {
    text_take(head_text(*side.entry));
    text_take(side.node->candidates->attrs);
  }
  for (const WordEntry* word = first_word(side); word != nullptr; word = settled ? nullptr : word->next) {
    text_take(word->attrs);
  }
}

// Longer keys are seldom the same again.
constexpr std::size_t kLongestKey = 4096;

Answer side_answer(Session& session, const WindowSide& side) {
  const bool settled = side.node == nullptr || is_settled(side);
  if (side.node == nullptr || side.node->candidates == nullptr) {
    // A fresh node without words lets no rule through.
    return settled ? Answer{side.index.all.data(), kAll} : Answer{side.index.none.data(), kNone};
  }
  SearchScratch::Side& scratch = side.scratch;
  const std::size_t size = side.index.all.size();
  key_take(side);
  if (const std::int32_t number = scratch.known.find(scratch.key); number >= 0) {
    return {scratch.answers.data() + static_cast<std::size_t>(number) * size, number + kFirstKnown};
  }
  scratch.struck.clear();
  const bool done = side_search(session, side);
  present_cut_to(scratch, 0);
  if (!done) return {nullptr, kNameless};
  summarise(side);
  const std::int32_t number = scratch.key.size() > kLongestKey ? -1 : scratch.known.add(scratch.key);
  if (number < 0) {
    session.search.is_full = session.search.is_full || scratch.key.size() <= kLongestKey;
    return {scratch.result.data(), kNameless};
  }
  scratch.answers.insert(scratch.answers.end(), scratch.result.begin(), scratch.result.end());
  return {scratch.answers.data() + static_cast<std::size_t>(number) * size, number + kFirstKnown};
}

// Forgets all answers: their numbers begin anew.
void search_forget(SearchScratch& scratch) {
  for (SearchScratch::Side* side : {&scratch.left, &scratch.right}) {
    side->known.clear();
    side->answers.clear();
  }
  scratch.known_pairs.clear();
  scratch.found.clear();
  scratch.rules.clear();
  scratch.is_full = false;
}

// The rules that are asked for.
enum class Wanted : std::int32_t { all, post_edit };

// Calls `visit` with the number of each rule that passes both sides. What an inserted pattern asks for is not held
// against the window: it speaks of a word that is not there yet.
template <typename Visit>
void for_each_passing(const RuleSearch& index, const std::uint64_t* left, const std::uint64_t* right,
                      const RuleBits& wanted, Visit visit) {
  const std::uint64_t* left_inserted = index.left.inserted.data();
  const std::uint64_t* right_inserted = index.right.inserted.data();
  const auto passing = [&](std::size_t at) {
    const std::uint64_t l = left[at];
    const std::uint64_t r = right[at];
    return ((l & r) | (l & right_inserted[at]) | (r & left_inserted[at])) & wanted.data()[at];
  };
  for (std::size_t at = wanted.words(); at < wanted.size(); ++at) {
    for_each_bit(passing(at), (at - wanted.words()) * kWordBits, [&](std::size_t word) {
      for_each_bit(passing(word), word * kWordBits, [&](std::size_t rule) { visit(static_cast<std::int32_t>(rule)); });
    });
  }
}

// The numbers of the rules that pass both sides; they stand until the next search.
std::span<const std::int32_t> passing_rules(Session& session, const Answer& left, const Answer& right, Wanted kind) {
  const RuleSearch& index = session.grammar->index.search;
  SearchScratch& scratch = session.search;
  const std::array<std::int32_t, 3> pair = {left.name, right.name, static_cast<std::int32_t>(kind)};
  const std::string_view key(reinterpret_cast<const char*>(pair.data()), sizeof(pair));
  const bool has_names = left.name != kNameless && right.name != kNameless;
  if (const std::int32_t number = has_names ? scratch.known_pairs.find(key) : -1; number >= 0) {
    const SearchScratch::Found& found = scratch.found[static_cast<std::size_t>(number)];
    return std::span(scratch.rules).subspan(found.begin, found.count);
  }
  scratch.fresh.clear();
  for_each_passing(index, left.bits, right.bits, kind == Wanted::post_edit ? index.post_edit : index.all,
                   [&](std::int32_t rule) { scratch.fresh.push_back(rule); });
  const bool has_room = scratch.rules.capacity() - scratch.rules.size() >= scratch.fresh.size();
  if (has_names && has_room && scratch.known_pairs.add(key) >= 0) {
    scratch.found.push_back(
        {static_cast<std::uint32_t>(scratch.rules.size()), static_cast<std::uint32_t>(scratch.fresh.size())});
    scratch.rules.insert(scratch.rules.end(), scratch.fresh.begin(), scratch.fresh.end());
  } else if (has_names) {
    scratch.is_full = true;
  }
  return scratch.fresh;
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

RuleCandidate* candidates_make(Session& session, std::span<const std::int32_t> rules) {
  const RuleSearch& index = session.grammar->index.search;
  RuleCandidate* head = nullptr;
  RuleCandidate** link = &head;
  CandidateList* list = nullptr;
  for (const std::int32_t rule : rules) {
    if (!candidate_append(session, link, list, index.rules[static_cast<std::size_t>(rule)])) return nullptr;
  }
  return head;
}

RuleCandidate* search(Session& session, Node* lnode, Node* rnode, Wanted kind) {
  const RuleSearch& index = session.grammar->index.search;
  if ((lnode == nullptr && rnode == nullptr) || index.rules.empty()) return nullptr;
  WindowSide left{index, index.left, session.search.left, lnode};
  WindowSide right{index, index.right, session.search.right, rnode};
  if (!see_through(session, left) || !see_through(session, right)) return nullptr;
  if (session.search.is_full) search_forget(session.search);
  const Answer left_answer = side_answer(session, left);
  if (left_answer.bits == nullptr) return nullptr;
  const Answer right_answer = side_answer(session, right);
  if (right_answer.bits == nullptr) return nullptr;
  return candidates_make(session, passing_rules(session, left_answer, right_answer, kind));
}

}  // namespace

RuleCandidate* rule_candidates(Session& session, Node* lnode, Node* rnode) {
  return search(session, lnode, rnode, Wanted::all);
}

RuleCandidate* post_edit_candidates(Session& session, Node* lnode, Node* rnode) {
  return search(session, lnode, rnode, Wanted::post_edit);
}

}  // namespace lexon
