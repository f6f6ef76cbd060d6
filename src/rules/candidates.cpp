// The rules that the attributes of a window allow.
//
// First each side's scope reference is seen through to the word at the head of its scope. Then each side is searched
// by itself: for one word after the other, the names are found that are present, and among the rules that they watch
// those that require nothing else and forbid no attribute of the word. Last, these rules of both sides and the easy ones
// are held against the other side, or both.
//
// What a side has follows from the attribute texts of its node, and the same texts come back in window after window. So
// what was found is remembered by the texts, and the rules of two sides by the pair.
#include "rules/candidates.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "data/nodes.hpp"
#include "data/side.hpp"
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

using Numbers = std::span<const std::int32_t>;
using Blocks = std::span<const RuleBlock>;
using Passing = SearchScratch::Passing;
using Uncertain = SearchScratch::Uncertain;

// What is known of a side: an answer, that all rules pass there (no node stands there), or that none does (a fresh
// node without words).
enum class Verdict : std::uint8_t { answer, all, none };

struct Answer {
  Verdict verdict;
  Blocks satisfied;   // the rules that the side watches and lets through, and such easy ones
  Numbers words;      // what each word has, see `word_note`
  std::int32_t name;  // what it goes by in a pair
};
constexpr std::int32_t kFirstKnown = 2;  // from here on: the number of the key; below, a verdict
constexpr std::int32_t kNameless = -1;   // not remembered; the numbers stand in the scratch

// Both verdicts have fixed names, so that pairs with them are remembered as well.
Answer plain_verdict(Verdict verdict) {
  return {verdict, {}, {}, verdict == Verdict::all ? 0 : 1};
}

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
    if (row < 0 || std::exchange(side.scratch.is_striking[static_cast<std::size_t>(row)], 1) != 0) return;
    side.scratch.striking.push_back(row);
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

// Do the present rows satisfy the rule, and does no striking row strike it out?
bool lets_through(const SideSearch& search, const SearchScratch::Side& scratch, std::size_t rule) {
  const auto is_present = [&](std::int32_t row) { return scratch.is_present[static_cast<std::size_t>(row)] != 0; };
  const auto is_striking = [&](std::int32_t row) { return scratch.is_striking[static_cast<std::size_t>(row)] != 0; };
  return std::ranges::all_of(search.required.of(rule), is_present) &&
         std::ranges::none_of(search.forbidden.of(rule), is_striking);
}

// A rule stands under one row only, so a word finds it at most once.
// Appends to `let` the rules that the word lets through: of those that the present rows watch, and of the easy ones that
// ask something of the side.
void satisfied_take(const WindowSide& side) {
  SearchScratch::Side& scratch = side.scratch;
  for (const std::int32_t row : scratch.present) {
    const std::uint32_t* starts = side.search.watch_starts.data() + row;
    for (std::uint32_t at = starts[0]; at < starts[1]; ++at) {
      const Watched watched = side.search.watched[at];
      if (scratch.is_present[static_cast<std::size_t>(watched.also)] == 0) continue;
      if (lets_through(side.search, scratch, static_cast<std::size_t>(watched.rule)))
        scratch.let.push_back(watched.rule);
    }
  }
  if (!side.index.sides_know_easy()) return;
  for (const std::int32_t rule : side.search.easy_asking) {
    if (lets_through(side.search, scratch, static_cast<std::size_t>(rule))) scratch.let.push_back(rule);
  }
}

// Appends to `words` what the word has: how many rows are present, how many striking, then they.
void word_note(SearchScratch::Side& scratch) {
  scratch.words.push_back(static_cast<std::int32_t>(scratch.present.size()));
  scratch.words.push_back(static_cast<std::int32_t>(scratch.striking.size()));
  for (const auto* rows : {&scratch.present, &scratch.striking}) {
    scratch.words.insert(scratch.words.end(), rows->begin(), rows->end());
  }
}

// What struck out rules for one word says nothing of the next.
void striking_clear(SearchScratch::Side& scratch) {
  for (const std::int32_t row : scratch.striking) scratch.is_striking[static_cast<std::size_t>(row)] = 0;
  scratch.striking.clear();
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

// Puts what the words let through in blocks, and the easy rules among it. Several words may let the same rule through.
void satisfied_join(SearchScratch::Side& scratch, Blocks easy) {
  std::vector<RuleBlock>& blocks = scratch.satisfied;
  blocks.clear();
  const auto append = [&](RuleBlock more) {
    if (blocks.empty() || blocks.back().block != more.block) return blocks.push_back(more);
    blocks.back().rules |= more.rules;
  };
  std::ranges::sort(scratch.let);
  for (const std::int32_t rule : scratch.let) {
    const std::int32_t block = rule / static_cast<std::int32_t>(kWordBits);
    for (; !easy.empty() && easy.front().block <= block; easy = easy.subspan(1)) append(easy.front());
    append({block, word_bit(static_cast<std::size_t>(rule))});
  }
  for (const RuleBlock& more : easy) append(more);
}

// Leaves in `satisfied` and `words` what the side comes to. False if the search has to be given up.
bool side_search(const Session& session, const WindowSide& side) {
  SearchScratch::Side& scratch = side.scratch;
  scratch.let.clear();
  scratch.words.clear();
  lasting_take(side);
  const std::size_t lasting = scratch.present.size();
  const bool settled = is_settled(side);
  bool is_given_up = false;
  const WordEntry* word = first_word(side);
  // One round without a word too: an entry node may have lost its words, and the rest still lets rules through.
  do {
    if (word != nullptr) word_take(side, *word);
    satisfied_take(side);
    word_note(scratch);
    striking_clear(scratch);
    present_cut_to(scratch, lasting);
    is_given_up = !settled && must_leave(session) != Status::ok;
    if (word != nullptr) word = settled ? nullptr : word->next;
  } while (word != nullptr && !is_given_up);
  present_cut_to(scratch, 0);
  // Easy rules that ask nothing here pass whatever the words are.
  satisfied_join(scratch, side.index.sides_know_easy() ? Blocks(side.search.easy_always) : Blocks{});
  return !is_given_up;
}

// Puts together in `key` all that the search looks at. No text holds what parts the texts. Empty if it is too long to be
// remembered. A settled node has the key of a fresh one whose only word is the word in force: the same rules pass.
std::string_view key_take(const WindowSide& side, std::span<char> key) {
  char* to = key.data();
  std::size_t room = key.size();
  // A missing text differs from an empty one.
  const auto text_take = [&](const char* text) {
    const std::size_t size = text == nullptr ? 1 : std::strlen(text) + 2;
    if (size > room) {
      room = 0;
      return;
    }
    *to = text == nullptr ? '\0' : '\1';
    if (text != nullptr) std::copy_n(text, size - 1, to + 1);
    to += size;
    room -= size;
  };
  const bool settled = is_settled(side);
  *to++ = side.entry == nullptr ? 'n' : 'e';
  --room;
  text_take(head_text(*side.node));
  if (side.entry != nullptr) {
    text_take(head_text(*side.entry));
    text_take(side.node->candidates->attrs);
  }
  for (const WordEntry* word = first_word(side); word != nullptr && room != 0; word = settled ? nullptr : word->next) {
    text_take(word->attrs);
  }
  if (room == 0) return {};
  return {key.data(), key.size() - room};
}

Answer known_answer(const SearchScratch::Side& scratch, std::int32_t number) {
  const SearchScratch::Side::Known& known = scratch.answers[static_cast<std::size_t>(number)];
  return {Verdict::answer, Blocks(scratch.blocks).subspan(known.first_block, known.satisfied),
          Numbers(scratch.numbers).subspan(known.first_number, known.words), number + kFirstKnown};
}

// Is there room for so much more without an allocation?
template <typename Item>
bool has_room(const std::vector<Item>& items, std::size_t more) {
  return items.capacity() - items.size() >= more;
}

// Remembers what stands in the scratch, by the number of its key; -1: the key has none yet. Without room the next search
// begins by forgetting all.
Answer answer_remember(SearchScratch& search, SearchScratch::Side& scratch, std::string_view key, std::int32_t number) {
  const Answer answer{Verdict::answer, scratch.satisfied, scratch.words, kNameless};
  if (key.empty()) return answer;
  // Beyond the room that was taken at first nothing grows: answers in use point into it.
  const bool fits = has_room(scratch.blocks, answer.satisfied.size()) && has_room(scratch.numbers, answer.words.size());
  if (fits && number < 0) number = search.known.add(key);
  if (!fits || number < 0) {
    search.is_full = true;
    return answer;
  }
  const auto place = static_cast<std::size_t>(number);
  if (scratch.answers.size() <= place) scratch.answers.resize(place + 1);
  scratch.answers[place] = {
      static_cast<std::uint32_t>(scratch.blocks.size()), static_cast<std::uint32_t>(answer.satisfied.size()),
      static_cast<std::uint32_t>(scratch.numbers.size()), static_cast<std::uint32_t>(answer.words.size())};
  scratch.blocks.insert(scratch.blocks.end(), answer.satisfied.begin(), answer.satisfied.end());
  scratch.numbers.insert(scratch.numbers.end(), answer.words.begin(), answer.words.end());
  return known_answer(scratch, number);
}

// The number of the node's key, or -1. The same node comes back with the same texts most often, so what was found last for
// its address is compared before the key is hashed.
std::int32_t number_find(SearchScratch& search, const Node& node, std::string_view key) {
  if (key.empty()) return -1;
  std::int32_t& latest = search.latest[reinterpret_cast<std::uintptr_t>(&node) / sizeof(Node) % search.latest.size()];
  if (search.known.is_number_of(latest, key)) return latest;
  const std::int32_t number = search.known.find(key);
  if (number >= 0) latest = number;
  return number;
}

// None if the search has to be given up.
std::optional<Answer> side_answer(Session& session, const WindowSide& side) {
  const bool settled = side.node == nullptr || is_settled(side);
  if (side.node == nullptr || side.node->candidates == nullptr) {
    return plain_verdict(settled ? Verdict::all : Verdict::none);
  }
  SearchScratch& search = session.search;
  SearchScratch::Side& scratch = side.scratch;
  const std::string_view key = key_take(side, search.key);
  const std::int32_t number = number_find(search, *side.node, key);
  const bool has_number = number >= 0 && static_cast<std::size_t>(number) < scratch.answers.size();
  const bool is_known = has_number && scratch.answers[static_cast<std::size_t>(number)].words != 0;
  if (is_known) return known_answer(scratch, number);
  if (!side_search(session, side)) return std::nullopt;
  return answer_remember(search, scratch, key, number);
}

// Forgets the rules of pairs.
// Needed as well when answers get new numbers: pairs are known by these.
void pairs_forget(SearchScratch& scratch) {
  scratch.pairs.clear();
  scratch.rules.clear();
}

// Forgets all answers, whose numbers begin anew, and what a search that broke off has left.
void search_forget(SearchScratch& scratch) {
  for (SearchScratch::Side* side : {&scratch.left, &scratch.right}) {
    std::ranges::fill(side->is_present, 0);
    std::ranges::fill(side->is_striking, 0);
    side->present.clear();
    side->striking.clear();
    side->answers.clear();
    side->blocks.clear();
    side->numbers.clear();
  }
  scratch.known.clear();
  pairs_forget(scratch);
  scratch.is_full = false;
}

// The rules that are asked for.
enum class Wanted : std::uint8_t { all, post_edit };

// Of the rules of a block: those that pass, if these pass the sides. What an inserted pattern asks for is not held against
// the window: it speaks of a word that is not there yet.
std::uint64_t passing(std::uint64_t left, std::uint64_t right, const BlockTraits& traits) {
  return (left & right) | (left & traits.right_inserted) | (right & traits.left_inserted);
}

// Tells block by block, in rising order, what is known on one side before rules are held against the words there.
class Told {
 public:
  Told(const RuleSearch& index, Side side, const Answer& answer)
      : is_left_(side == Side::left),
        knows_easy_(index.sides_know_easy()),
        verdict_(answer.verdict),
        satisfied_(answer.satisfied) {}

  struct Rules {
    std::uint64_t yes;
    std::uint64_t open;
  };
  // An answer names what the side lets through of the rules that this side watches, and of easy ones if it knows them; rules
  // of the other side are open.
  Rules of(std::int32_t block, const BlockTraits& traits) {
    if (verdict_ != Verdict::answer) return {verdict_ == Verdict::all ? traits.all : 0, 0};
    std::uint64_t yes = 0;
    if (next() == block) {
      yes = satisfied_.front().rules;
      satisfied_ = satisfied_.subspan(1);
    }
    const std::uint64_t told = is_left_ ? traits.left_watches : traits.right_watches;
    const std::uint64_t others = is_left_ ? traits.right_watches : traits.left_watches;
    return {yes, (knows_easy_ ? others : traits.all & ~told) & ~yes};
  }

  // The next block of which the answer names a rule.
  [[nodiscard]] std::int32_t next() const { return satisfied_.empty() ? kNoBlock : satisfied_.front().block; }
  static constexpr std::int32_t kNoBlock = std::numeric_limits<std::int32_t>::max();

 private:
  bool is_left_;
  bool knows_easy_;
  Verdict verdict_;
  Blocks satisfied_;
};

// Holds rules that are open on a side against each of its words.
void open_test(const SideSearch& search, const Answer& answer, SearchScratch::Side& scratch, std::span<Uncertain> rules,
               Passing Uncertain::*side) {
  if (std::ranges::none_of(rules, [side](const Uncertain& rule) { return rule.*side == Passing::open; })) return;
  for (Numbers words = answer.words; !words.empty();) {
    const auto present = words.subspan(2, static_cast<std::size_t>(words[0]));
    const auto striking = words.subspan(2 + present.size(), static_cast<std::size_t>(words[1]));
    words = words.subspan(2 + present.size() + striking.size());
    for (const std::int32_t row : present) scratch.is_present[static_cast<std::size_t>(row)] = 1;
    for (const std::int32_t row : striking) scratch.is_striking[static_cast<std::size_t>(row)] = 1;
    for (Uncertain& rule : rules) {
      if (rule.*side == Passing::open && lets_through(search, scratch, static_cast<std::size_t>(rule.rule)))
        rule.*side = Passing::yes;
    }
    for (const std::int32_t row : present) scratch.is_present[static_cast<std::size_t>(row)] = 0;
    for (const std::int32_t row : striking) scratch.is_striking[static_cast<std::size_t>(row)] = 0;
  }
}

// Leaves in `fresh` the rules that pass the window. Most are told by the answers of the sides, 64 at a time; the few of which
// the answers tell too little are held against the words.
void passing_find(const RuleSearch& index, const Answer& left, const Answer& right, Wanted kind,
                  SearchScratch& scratch) {
  scratch.fresh.clear();
  scratch.uncertain.clear();
  Told told_left(index, Side::left, left);
  Told told_right(index, Side::right, right);
  // Where all rules pass on a side, what is watched there tells nothing, and all blocks are looked at.
  const bool asks_all = left.verdict == Verdict::all || right.verdict == Verdict::all;
  Blocks easy = index.sides_know_easy() ? Blocks{} : Blocks(index.easy);
  const auto block_count = static_cast<std::int32_t>(index.traits.size());
  for (std::int32_t last = -1;;) {
    while (!easy.empty() && easy.front().block <= last) easy = easy.subspan(1);
    const std::int32_t named =
        std::min({told_left.next(), told_right.next(), easy.empty() ? Told::kNoBlock : easy.front().block});
    const std::int32_t block = asks_all ? last + 1 : named;
    if (block >= block_count) break;
    last = block;
    const BlockTraits& traits = index.traits[static_cast<std::size_t>(block)];
    const Told::Rules on_left = told_left.of(block, traits);
    const Told::Rules on_right = told_right.of(block, traits);
    const std::uint64_t wanted = kind == Wanted::all ? traits.all : traits.post_edit;
    const std::uint64_t sure = passing(on_left.yes, on_right.yes, traits) & wanted;
    const std::uint64_t possible = passing(on_left.yes | on_left.open, on_right.yes | on_right.open, traits) & wanted;
    if (possible == 0) continue;
    for_each_rule({block, possible & ~sure}, [&](std::int32_t rule) {
      const auto told = [bit = word_bit(static_cast<std::size_t>(rule))](const Told::Rules& rules) {
        if ((rules.yes & bit) != 0) return Passing::yes;
        return (rules.open & bit) != 0 ? Passing::open : Passing::no;
      };
      scratch.uncertain.push_back(
          {rule, static_cast<std::uint32_t>(scratch.fresh.size()), told(on_left), told(on_right)});
    });
    scratch.fresh.push_back({block, sure});
  }
  if (scratch.uncertain.empty()) return;
  open_test(index.left, left, scratch.left, scratch.uncertain, &Uncertain::left);
  open_test(index.right, right, scratch.right, scratch.uncertain, &Uncertain::right);
  for (const Uncertain& rule : scratch.uncertain) {
    RuleBlock& block = scratch.fresh[rule.at];
    const std::uint64_t bit = word_bit(static_cast<std::size_t>(rule.rule));
    const auto told = [bit](Passing side) { return side == Passing::yes ? bit : 0; };
    block.rules |= passing(told(rule.left), told(rule.right), index.traits[static_cast<std::size_t>(block.block)]);
  }
  std::erase_if(scratch.fresh, [](const RuleBlock& block) { return block.rules == 0; });
}

// The rules that pass both sides; they stand until the next search.
Blocks passing_rules(Session& session, const Answer& left, const Answer& right, Wanted kind) {
  SearchScratch& scratch = session.search;
  const bool has_names = left.name != kNameless && right.name != kNameless;
  const auto pair = static_cast<std::uint64_t>(left.name) << 32 | static_cast<std::uint64_t>(right.name) << 1 |
                    static_cast<std::uint64_t>(kind);
  const NumberedRanges::Range* found = has_names ? scratch.pairs.find(pair) : nullptr;
  if (found != nullptr) return Blocks(scratch.rules).subspan(found->begin, found->count);
  passing_find(session.grammar->index.search, left, right, kind, scratch);
  if (!has_names) return scratch.fresh;
  if (!has_room(scratch.rules, scratch.fresh.size())) pairs_forget(scratch);
  const NumberedRanges::Range range{pair, static_cast<std::uint32_t>(scratch.rules.size()),
                                    static_cast<std::uint32_t>(scratch.fresh.size())};
  if (has_room(scratch.rules, scratch.fresh.size()) && scratch.pairs.add(range)) {
    scratch.rules.insert(scratch.rules.end(), scratch.fresh.begin(), scratch.fresh.end());
  } else {
    pairs_forget(scratch);
  }
  return scratch.fresh;
}

// wanted: both sides are seen through before either is searched, so that an entry missing on one side means no rules.
Blocks search(Session& session, Node* lnode, Node* rnode, Wanted kind) {
  const RuleSearch& index = session.grammar->index.search;
  if ((lnode == nullptr && rnode == nullptr) || index.rules.empty()) return {};
  WindowSide left{index, index.left, session.search.left, lnode};
  WindowSide right{index, index.right, session.search.right, rnode};
  if (!see_through(session, left) || !see_through(session, right)) return {};
  if (session.search.is_full) search_forget(session.search);
  try {
    const std::optional<Answer> left_answer = side_answer(session, left);
    const std::optional<Answer> right_answer = left_answer ? side_answer(session, right) : std::nullopt;
    return right_answer ? passing_rules(session, *left_answer, *right_answer, kind) : Blocks{};
  } catch (const std::bad_alloc&) {
    session.search.is_full = true;  // the sentence is lost, and the next one begins with nothing half done
    throw;
  }
}

// The first rule of the list that has no element yet, which it names no longer; null if each has one.
const Rule* list_take(Session& session, CandidateList& list) {
  if (list.at == list.blocks) return nullptr;
  session.pool.promise_take_back(sizeof(RuleCandidate), 1);
  RuleBlock& block = blocks_of(list)[list.at];
  const std::int32_t number = rule_take(block);
  if (block.rules == 0) ++list.at;
  return session.grammar->index.search.rules[static_cast<std::size_t>(number)];
}

}  // namespace

RuleCandidate* rule_candidates(Session& session, Node* lnode, Node* rnode) {
  const Blocks rules = search(session, lnode, rnode, Wanted::all);
  if (rules.empty()) return nullptr;
  RuleCandidate* element = candidates_new(session, nullptr, rules);
  if (element != nullptr) element->rule = list_take(session, *element->list);
  return element;
}

RuleCandidate* candidate_next(Session& session, RuleCandidate& element) {
  if (element.next != nullptr) return element.next;
  const Rule* rule = list_take(session, *element.list);
  return rule == nullptr ? nullptr : candidate_append(session, element, rule);
}

RuleCandidate* candidate_pass(Session& session, RuleCandidate& element) {
  CandidateList& list = *element.list;
  if (element.next != nullptr || list.records != 0) {
    RuleCandidate* next = candidate_next(session, element);
    candidate_passed_over(session, &element);
    return next;
  }
  // Nobody can come back to the element, so it serves for the next rule. Rules of post-edit would be passed over as well, but
  // not those behind the next rule: backtracking may come to them.
  const std::vector<BlockTraits>& traits = session.grammar->index.search.traits;
  for (; list.at < list.blocks; ++list.at) {
    RuleBlock& block = blocks_of(list)[list.at];
    const std::uint64_t others = block.rules & ~traits[static_cast<std::size_t>(block.block)].post_edit;
    const std::uint64_t kept = others == 0 ? 0 : block.rules & (~std::uint64_t{0} >> std::countl_zero(others));
    if (kept != block.rules) {
      session.pool.promise_take_back(sizeof(RuleCandidate), std::popcount(block.rules ^ kept));
      block.rules = kept;
    }
    if (kept != 0) break;
  }
  const Rule* rule = list_take(session, list);
  if (rule == nullptr) {
    candidate_passed_over(session, &element);
    return nullptr;
  }
  element.rule = rule;
  element.lnode = element.rnode = nullptr;
  return &element;
}

std::span<const RuleBlock> post_edit_rules(Session& session, Node* lnode, Node* rnode) {
  return search(session, lnode, rnode, Wanted::post_edit);
}

}  // namespace lexon
