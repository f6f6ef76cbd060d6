// The rules that the attributes of a window allow.
//
// First each side's scope reference is seen through to the word at the head of its scope. Then each side is searched
// by itself: for one word after the other, the names are found that are present, and among the rules that they watch
// those that require nothing else and forbid no attribute of the word. Last, these rules of both sides and the easy ones
// are held against the other side, or both.
//
// What a side has follows from the attribute texts of its node, and the same texts come back in window after window. So
// what was found is remembered by the texts, and the rules of two sides by the pair.
#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <new>
#include <numeric>
#include <optional>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>

#include "data/nodes.hpp"
#include "data/session.hpp"
#include "data/side.hpp"
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

using Numbers = std::span<const std::int32_t>;

// What is known of a side: an answer, that all rules pass there (no node stands there), or that none does (a fresh
// node without words).
enum class Verdict : std::uint8_t { answer, all, none };

struct Answer {
  Verdict verdict;
  Numbers satisfied;  // the rules that the side watches and lets through, and such easy ones, in order
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
  // Several words may let the same rule through.
  std::ranges::sort(scratch.let);
  scratch.let.erase(std::unique(scratch.let.begin(), scratch.let.end()), scratch.let.end());
  scratch.satisfied.clear();
  // Easy rules that ask nothing here pass whatever the words are.
  const Numbers easy = side.index.sides_know_easy() ? Numbers(side.search.easy_always) : Numbers{};
  std::ranges::set_union(scratch.let, easy, std::back_inserter(scratch.satisfied));
  return !is_given_up;
}

// Longer keys are seldom the same again.
constexpr std::size_t kLongestKey = 4096;

// Puts together all that the search looks at, in the scratch. No text holds what parts the texts. Empty if it is too
// long to be remembered.
std::string_view key_take(const WindowSide& side) {
  std::string& key = side.scratch.key;
  if (key.size() < kLongestKey) key.resize(kLongestKey);
  char* to = key.data();
  std::size_t room = kLongestKey;
  // A missing text differs from an empty one.
  const auto text_take = [&](const char* text) {
    const std::size_t size = text == nullptr ? 1 : std::strlen(text) + 2;
    if (size > room) {
      room = 0;
      return;
    }
    *to = text == nullptr ? '\0' : '\1';
    if (text != nullptr) std::memcpy(to + 1, text, size - 1);
    to += size;
    room -= size;
  };
  const bool settled = is_settled(side);
  text_take(settled ? "s" : "o");
  text_take(side.entry == nullptr ? nullptr : "e");
  text_take(head_text(*side.node));
  if (side.entry != nullptr) {
    text_take(head_text(*side.entry));
    text_take(side.node->candidates->attrs);
  }
  for (const WordEntry* word = first_word(side); word != nullptr && room != 0; word = settled ? nullptr : word->next) {
    text_take(word->attrs);
  }
  if (room == 0) return {};
  return {key.data(), kLongestKey - room};
}

Answer known_answer(const SearchScratch::Side& scratch, std::int32_t number) {
  const SearchScratch::Side::Known& known = scratch.answers[static_cast<std::size_t>(number)];
  const Numbers numbers = Numbers(scratch.numbers).subspan(known.begin, known.satisfied + known.words);
  return {Verdict::answer, numbers.first(known.satisfied), numbers.last(known.words), number + kFirstKnown};
}

// Remembers what stands in the scratch. Without room the next search begins by forgetting all.
Answer answer_remember(SearchScratch& search, SearchScratch::Side& scratch, std::string_view key) {
  const Answer answer{Verdict::answer, scratch.satisfied, scratch.words, kNameless};
  if (key.empty()) return answer;
  const std::size_t size = answer.satisfied.size() + answer.words.size();
  // Beyond the room that was taken at first nothing grows: answers in use point into it.
  const bool has_room = scratch.numbers.capacity() - scratch.numbers.size() >= size;
  const std::int32_t number = has_room ? scratch.known.add(key) : -1;
  search.is_full = search.is_full || number < 0;
  if (number < 0) return answer;
  scratch.answers.push_back({static_cast<std::uint32_t>(scratch.numbers.size()),
                             static_cast<std::uint32_t>(answer.satisfied.size()),
                             static_cast<std::uint32_t>(answer.words.size())});
  for (const Numbers numbers : {answer.satisfied, answer.words}) {
    scratch.numbers.insert(scratch.numbers.end(), numbers.begin(), numbers.end());
  }
  return known_answer(scratch, number);
}

// The number of a key, or -1. What was found last for the node or the pair is compared before the key is hashed.
std::int32_t number_find(const KeyNumbers& known, std::string_view key, std::int32_t& latest) {
  if (known.is_number_of(latest, key)) return latest;
  const std::int32_t number = known.find(key);
  if (number >= 0) latest = number;
  return number;
}

// None if the search has to be given up.
// The place in `latest` follows from the address of the node: the same node comes back with the same texts most often.
std::optional<Answer> side_answer(Session& session, const WindowSide& side) {
  const bool settled = side.node == nullptr || is_settled(side);
  if (side.node == nullptr || side.node->candidates == nullptr) {
    return plain_verdict(settled ? Verdict::all : Verdict::none);
  }
  SearchScratch::Side& scratch = side.scratch;
  const std::string_view key = key_take(side);
  const auto place = reinterpret_cast<std::uintptr_t>(side.node) / sizeof(Node) % scratch.latest.size();
  const std::int32_t number = key.empty() ? -1 : number_find(scratch.known, key, scratch.latest[place]);
  if (number >= 0) return known_answer(scratch, number);
  if (!side_search(session, side)) return std::nullopt;
  return answer_remember(session.search, scratch, key);
}

// Forgets the rules of pairs.
// Needed as well when answers get new numbers: pairs are known by these.
void pairs_forget(SearchScratch& scratch) {
  scratch.known_pairs.clear();
  scratch.found.clear();
  scratch.rules.clear();
}

// Forgets all answers, whose numbers begin anew, and what a search that broke off has left.
void search_forget(SearchScratch& scratch) {
  for (SearchScratch::Side* side : {&scratch.left, &scratch.right}) {
    std::ranges::fill(side->is_present, 0);
    std::ranges::fill(side->is_striking, 0);
    side->present.clear();
    side->striking.clear();
    side->known.clear();
    side->answers.clear();
    side->numbers.clear();
  }
  pairs_forget(scratch);
  scratch.is_full = false;
}

// The rules that are asked for.
enum class Wanted : std::int32_t { all, post_edit };

// Does a rule pass that passes these sides? What an inserted pattern asks for is not held against the window: it speaks of a
// word that is not there yet.
bool passes(bool passes_left, bool passes_right, RuleTraits traits) {
  return (passes_left && passes_right) || (passes_left && traits.right_inserted) ||
         (passes_right && traits.left_inserted);
}

// Leaves in `asked` the rules that may pass, where an answer does not know the easy ones or is none. Where all rules pass on
// a side, what is watched there tells nothing.
void rules_ask(const RuleSearch& index, const Answer& left, const Answer& right, SearchScratch& scratch) {
  std::vector<std::int32_t>& asked = scratch.asked;
  asked.clear();
  if (left.verdict == Verdict::all || right.verdict == Verdict::all) {
    asked.resize(index.rules.size());
    std::iota(asked.begin(), asked.end(), 0);
  } else {
    const Numbers easy = index.sides_know_easy() ? Numbers{} : Numbers(index.easy);
    scratch.merged.clear();
    std::ranges::set_union(left.satisfied, right.satisfied, std::back_inserter(scratch.merged));
    std::ranges::set_union(easy, scratch.merged, std::back_inserter(asked));
  }
}

// What is known of a rule on one side before it is held against the words there.
enum class Passing : std::uint8_t { no, yes, open };

// Walks through an answer beside rules in rising order.
class Told {
 public:
  Told(const RuleSearch& index, Side side, const Answer& answer)
      : is_left_(side == Side::left),
        knows_easy_(index.sides_know_easy()),
        verdict_(answer.verdict),
        satisfied_(answer.satisfied) {}

  // The answer names those that the side lets through of the rules that this side watches, and easy ones if it knows them;
  // rules of the other side are open.
  Passing of(std::int32_t rule, RuleTraits traits) {
    if (verdict_ != Verdict::answer) return verdict_ == Verdict::all ? Passing::yes : Passing::no;
    while (!satisfied_.empty() && satisfied_.front() < rule) satisfied_ = satisfied_.subspan(1);
    if (!satisfied_.empty() && satisfied_.front() == rule) return Passing::yes;
    const bool watches = is_left_ ? traits.left_watches : traits.right_watches;
    const bool is_easy = !traits.left_watches && !traits.right_watches;
    return watches || (is_easy && knows_easy_) ? Passing::no : Passing::open;
  }

 private:
  bool is_left_;
  bool knows_easy_;
  Verdict verdict_;
  Numbers satisfied_;
};

// Holds the open rules of a side, which are places in `asked`, against each of its words. The `passing` of those that one
// lets through becomes 1.
void open_test(const SideSearch& search, Numbers asked, const Answer& answer, SearchScratch::Side& scratch) {
  for (Numbers words = answer.words; !words.empty() && !scratch.open.empty();) {
    const auto present = words.subspan(2, static_cast<std::size_t>(words[0]));
    const auto striking = words.subspan(2 + present.size(), static_cast<std::size_t>(words[1]));
    words = words.subspan(2 + present.size() + striking.size());
    for (const std::int32_t row : present) scratch.is_present[static_cast<std::size_t>(row)] = 1;
    for (const std::int32_t row : striking) scratch.is_striking[static_cast<std::size_t>(row)] = 1;
    for (const std::int32_t at : scratch.open) {
      const auto i = static_cast<std::size_t>(at);
      if (scratch.passing[i] == 0 && lets_through(search, scratch, static_cast<std::size_t>(asked[i])))
        scratch.passing[i] = 1;
    }
    for (const std::int32_t row : present) scratch.is_present[static_cast<std::size_t>(row)] = 0;
    for (const std::int32_t row : striking) scratch.is_striking[static_cast<std::size_t>(row)] = 0;
  }
}

// Leaves in `fresh` the rules that pass the window, by what is told of each on both sides.
void passing_find(const RuleSearch& index, const Answer& left, const Answer& right, Wanted kind,
                  SearchScratch& scratch) {
  rules_ask(index, left, right, scratch);
  for (SearchScratch::Side* side : {&scratch.left, &scratch.right}) {
    side->passing.clear();
    side->open.clear();
  }
  // Rules that fail whatever the words say drop out of `asked`.
  Told told_left(index, Side::left, left);
  Told told_right(index, Side::right, right);
  std::size_t kept = 0;
  for (const std::int32_t rule : scratch.asked) {
    const RuleTraits traits = index.traits[static_cast<std::size_t>(rule)];
    if (kind == Wanted::post_edit && !traits.is_post_edit) continue;
    const Passing on_left = told_left.of(rule, traits);
    const Passing on_right = told_right.of(rule, traits);
    if (!passes(on_left != Passing::no, on_right != Passing::no, traits)) continue;
    // Open rules are held against the words in one go, word by word: marking the rows of a word is what costs.
    if (on_left == Passing::open) scratch.left.open.push_back(static_cast<std::int32_t>(kept));
    if (on_right == Passing::open) scratch.right.open.push_back(static_cast<std::int32_t>(kept));
    scratch.left.passing.push_back(on_left == Passing::yes ? 1 : 0);
    scratch.right.passing.push_back(on_right == Passing::yes ? 1 : 0);
    scratch.asked[kept++] = rule;
  }
  const Numbers asked = Numbers(scratch.asked).first(kept);
  open_test(index.left, asked, left, scratch.left);
  open_test(index.right, asked, right, scratch.right);
  scratch.fresh.clear();
  for (std::size_t i = 0; i < asked.size(); ++i) {
    const RuleTraits traits = index.traits[static_cast<std::size_t>(asked[i])];
    if (passes(scratch.left.passing[i] != 0, scratch.right.passing[i] != 0, traits)) scratch.fresh.push_back(asked[i]);
  }
}

// The same for two answers that know the easy rules, which is the usual case: one walk through both. A rule that both name
// is easy and passes. One that a single side names passes, unless the other side's pattern is held against the window; and
// then an easy rule fails, and one that is watched is open on the other side.
void passing_merge(const RuleSearch& index, const Answer& left, const Answer& right, Wanted kind,
                   SearchScratch& scratch) {
  std::vector<std::int32_t>& fresh = scratch.fresh;
  fresh.clear();
  for (SearchScratch::Side* side : {&scratch.left, &scratch.right}) side->open.clear();
  const auto traits_of = [&](std::int32_t rule) { return index.traits[static_cast<std::size_t>(rule)]; };
  const auto is_wanted = [&](RuleTraits traits) { return kind == Wanted::all || traits.is_post_edit; };
  const auto single_take = [&](std::int32_t rule, SearchScratch::Side& other, bool is_other_inserted, bool is_watched) {
    if (!is_other_inserted && !is_watched) return;
    if (!is_other_inserted) other.open.push_back(static_cast<std::int32_t>(fresh.size()));
    fresh.push_back(rule);
  };
  auto at_left = left.satisfied.begin();
  auto at_right = right.satisfied.begin();
  while (at_left != left.satisfied.end() || at_right != right.satisfied.end()) {
    const bool has_left =
        at_right == right.satisfied.end() || (at_left != left.satisfied.end() && *at_left <= *at_right);
    const bool has_right =
        at_left == left.satisfied.end() || (at_right != right.satisfied.end() && *at_right <= *at_left);
    const std::int32_t rule = has_left ? *at_left : *at_right;
    at_left += has_left ? 1 : 0;
    at_right += has_right ? 1 : 0;
    const RuleTraits traits = traits_of(rule);
    if (!is_wanted(traits)) continue;
    if (has_left && has_right) {
      fresh.push_back(rule);
    } else if (has_left) {
      single_take(rule, scratch.right, traits.right_inserted, traits.left_watches);
    } else {
      single_take(rule, scratch.left, traits.left_inserted, traits.right_watches);
    }
  }
  // Open rules that no word of the side lets through drop out.
  constexpr std::int32_t kFails = -1;
  for (const auto& [search, answer, side] :
       {std::tuple(&index.left, &left, &scratch.left), std::tuple(&index.right, &right, &scratch.right)}) {
    if (side->open.empty()) continue;
    side->passing.assign(fresh.size(), 0);
    open_test(*search, fresh, *answer, *side);
    for (const std::int32_t at : side->open) {
      if (side->passing[static_cast<std::size_t>(at)] == 0) fresh[static_cast<std::size_t>(at)] = kFails;
    }
  }
  if (!scratch.left.open.empty() || !scratch.right.open.empty()) std::erase(fresh, kFails);
}

// The numbers of the rules that pass both sides; they stand until the next search.
Numbers passing_rules(Session& session, const Answer& left, const Answer& right, Wanted kind) {
  SearchScratch& scratch = session.search;
  const std::array<std::int32_t, 3> pair = {left.name, right.name, static_cast<std::int32_t>(kind)};
  const std::string_view key(reinterpret_cast<const char*>(pair.data()), sizeof(pair));
  const bool has_names = left.name != kNameless && right.name != kNameless;
  const std::size_t place =
      (static_cast<std::size_t>(left.name) * 31 + static_cast<std::size_t>(right.name)) % scratch.latest.size();
  const std::int32_t number = has_names ? number_find(scratch.known_pairs, key, scratch.latest[place]) : -1;
  if (number >= 0) {
    const SearchScratch::Found& found = scratch.found[static_cast<std::size_t>(number)];
    return Numbers(scratch.rules).subspan(found.begin, found.count);
  }
  const RuleSearch& index = session.grammar->index.search;
  const bool is_usual = left.verdict == Verdict::answer && right.verdict == Verdict::answer && index.sides_know_easy();
  is_usual ? passing_merge(index, left, right, kind, scratch) : passing_find(index, left, right, kind, scratch);
  const auto has_room = [&] { return scratch.rules.capacity() - scratch.rules.size() >= scratch.fresh.size(); };
  if (!has_names) return scratch.fresh;
  if (!has_room()) pairs_forget(scratch);
  if (has_room() && scratch.known_pairs.add(key) >= 0) {
    scratch.found.push_back(
        {static_cast<std::uint32_t>(scratch.rules.size()), static_cast<std::uint32_t>(scratch.fresh.size())});
    scratch.rules.insert(scratch.rules.end(), scratch.fresh.begin(), scratch.fresh.end());
  } else {
    pairs_forget(scratch);
  }
  return scratch.fresh;
}

// wanted: both sides are seen through before either is searched, so that an entry missing on one side means no rules.
Numbers search(Session& session, Node* lnode, Node* rnode, Wanted kind) {
  const RuleSearch& index = session.grammar->index.search;
  if ((lnode == nullptr && rnode == nullptr) || index.rules.empty()) return {};
  WindowSide left{index, index.left, session.search.left, lnode};
  WindowSide right{index, index.right, session.search.right, rnode};
  if (!see_through(session, left) || !see_through(session, right)) return {};
  if (session.search.is_full) search_forget(session.search);
  try {
    const std::optional<Answer> left_answer = side_answer(session, left);
    const std::optional<Answer> right_answer = left_answer ? side_answer(session, right) : std::nullopt;
    return right_answer ? passing_rules(session, *left_answer, *right_answer, kind) : Numbers{};
  } catch (const std::bad_alloc&) {
    session.search.is_full = true;  // the sentence is lost, and the next one begins with nothing half done
    throw;
  }
}

}  // namespace

RuleCandidate* rule_candidates(Session& session, Node* lnode, Node* rnode) {
  const Numbers rules = search(session, lnode, rnode, Wanted::all);
  RuleCandidate* head = rules.empty() ? nullptr : candidates_new(session, rules.size());
  RuleCandidate* element = head;
  for (std::size_t i = 0; element != nullptr; ++i, element = element->next) {
    element->rule = session.grammar->index.search.rules[static_cast<std::size_t>(rules[i])];
  }
  return head;
}

std::span<const std::int32_t> post_edit_rules(Session& session, Node* lnode, Node* rnode) {
  return search(session, lnode, rnode, Wanted::post_edit);
}

}  // namespace lexon
