#include "graph/graph_nodes.hpp"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "data/chars.hpp"
#include "data/scratch.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "dict/entry_text.hpp"
#include "dict/word_lookup.hpp"
#include "graph/graph_words.hpp"

namespace lexon {

namespace {

// A row has one node at most, and a node fills one word list at most, so only the table of words can be full.
static_assert(kMaxGraphNodes >= kMaxGraphWords && kMaxWordLists >= kMaxGraphNodes);

// What stands for a word that no dictionary has, in the form of a dictionary line; its texts are filled in.
constexpr const char* kUnknownWord = "[]{}  \"\" (TEMP);";
constexpr const char* kNumberWord = "[0]{} \"\" (NUM,ANUM);";

// The table grows while it is searched: its end is asked for each time.
Node** nodes_end(Session& session) {
  return session.sentence.graph_nodes.data() + session.sentence.graph_node_count;
}

// The node's blocks are those of a row; dots of the newest one turn to commas.
void blocks_set(Node& node, ScopeAttrs* blocks) {
  node.scope_attrs = blocks;
  if (blocks == nullptr) return;
  for (char* dot = std::strchr(blocks->text, '.'); dot != nullptr; dot = std::strchr(dot, '.')) *dot = ',';
}

// Does `text` begin with `front`? Most differ in the first character.
bool begins_with(const char* text, const char* front) {
  while (*front != '\0' && *text == *front) ++text, ++front;
  return *front == '\0';
}

// The master list of a node of the same concept from `position` on, or null. It saves a lookup: such lists are never
// changed. A concept is the whole name of its node or the beginning of it, and those names stand side by side.
// wanted: only these nodes are looked at, so an instance with a lower number shares nothing.
WordEntry* words_to_share(Session& session, Node* const* position, const char* name) {
  for (; position != nodes_end(session) && begins_with((*position)->name, name); ++position) {
    WordEntry* entries = (*position)->entries;
    if (entries == nullptr || entries->cw == nullptr) return nullptr;
    const int order = names_compare(name, entries->cw);
    if (order == 0) return entries;
    if (order > 0) return nullptr;
  }
  return nullptr;
}

// The dictionary's words of the name as it stands, or else of its part in front of "(". `kept` receives the same ones as
// lookups keep them, or null.
Status known_words(Session& session, const char* name, WordEntry*& words, const LookupMemory::Kept*& kept) {
  const DictionaryFiles& dictionary = session.sentence.dictionary;
  if (const Status s = words_by_key(session, dictionary, kKeyCw, name, words, &kept); s != Status::ok) return s;
  const char* parenthesis = std::strchr(name, '(');
  if (words != nullptr || parenthesis == nullptr) return Status::ok;
  Scratch<sizeof(GraphWord::name)> front;
  front.append(std::string_view(name, parenthesis));
  return words_by_key(session, dictionary, kKeyCw, front.c_str(), words, &kept);
}

// Finds the words of a row and tells by `kind` where they came from; `kept` as for `known_words`.
Status words_find(Session& session, const GraphWord& row, WordEntry*& words, std::int8_t& kind,
                  const LookupMemory::Kept*& kept) {
  // wanted: an empty name is asked for like any other, before it is taken for a scope
  if (row.look_up != 0) {
    if (const Status s = known_words(session, row.name, words, kept); s != Status::ok) return s;
    if (words != nullptr) {
      kind = kKindWord;
      return Status::ok;
    }
    if (const int number = scope_number_of(row); number != 0) {
      kind = kKindScope;
      words = entry_new(session, "SCOPE:00", "SCOPE");
      if (words == nullptr) return Status::memory;
      // Two decimal digits behind "SCOPE:", whatever the digits of the graph's number are.
      words->hw[6] = static_cast<char>('0' + number / 10);
      words->hw[7] = static_cast<char>('0' + number % 10);
      return Status::ok;
    }
  }
  return literal_entry(session, row.name, words);
}

// Fills the node's candidates, and a word list of its own as its master list. Nobody changes that one, so that the words as
// lookups keep them serve for it if their order does.
Status words_fill(Session& session, const GraphWord& row, Node& node) {
  const LookupMemory::Kept* kept = nullptr;
  if (const Status s = words_find(session, row, node.candidates, node.kind, kept); s != Status::ok) return s;
  entry_list_sort(node.candidates);
  if (kept != nullptr && entry_list_is_sorted(&kept->word)) {
    node.entries = const_cast<WordEntry*>(&kept->word);
  } else if (const Status s = entry_list_copy(session, node.candidates, node.entries); s != Status::ok) {
    return s;
  }
  session.sentence.word_lists[static_cast<std::size_t>(session.sentence.word_list_count++)] = node.entries;
  return Status::ok;
}

// A node of the row that stands in no table yet.
Status node_make(Session& session, const GraphWord& row, WordEntry* shared_words, Node*& node) {
  node = temp_new<Node>(session);
  if (node == nullptr) return Status::memory;
  node->name = temp_text(session, row.name);
  if (node->name == nullptr) return Status::memory;
  // The number of the instance; of a scope reference, that of the scope.
  node->scope = row.number;
  if (shared_words == nullptr) return words_fill(session, row, *node);
  // wanted: the kind stays that of a literal until matching asks the word
  node->entries = shared_words;
  return entry_list_copy(session, shared_words, node->candidates);
}

bool is_number(std::string_view word) {
  return std::all_of(word.begin(), word.end(), is_digit);
}

// What is written of a word: the text in front of the first "(<" or "(>".
std::string_view surface_of(std::string_view word) {
  for (std::size_t at = word.find('('); at != word.npos; at = word.find('(', at + 1)) {
    if (at + 1 < word.size() && (word[at + 1] == '<' || word[at + 1] == '>')) return word.substr(0, at);
  }
  return word;
}

// Puts a copy of `by` in the place of a text of the entry. False without memory: the old text stays.
bool text_replace(Session& session, char*& text, std::int32_t& length, std::string_view by) {
  char* copy = temp_text(session, by);
  if (copy == nullptr) return false;
  temp_free_string(session, text);
  text = copy;
  length = static_cast<std::int32_t>(by.size());
  return true;
}

// Does the node of the row stand at `position`? If not, that becomes where it is to be put in. It begins as the row's own
// number, which is the place as long as each word before has a node.
bool is_place_of(Session& session, const GraphWord& row, Node**& position) {
  Node** const first = session.sentence.graph_nodes.data();
  Node** const end = nodes_end(session);
  const auto is_of_row = [&row](const Node* known) {
    return known->scope == row.number && std::strcmp(known->name, row.name) == 0;
  };
  const auto stands_before = [](const Node* known, const GraphWord& r) {
    return sorts_before(known->name, known->scope, r.name, r.number);
  };
  if (position < end && is_of_row(*position)) return true;
  const bool belongs_here = position <= end && (position == first || stands_before(position[-1], row)) &&
                            (position == end || !stands_before(*position, row));
  if (belongs_here) return false;
  position = std::lower_bound(first, end, row, stands_before);
  return position != end && is_of_row(*position);
}

}  // namespace

Status literal_entry(Session& session, const char* word, WordEntry*& head) {
  const std::string_view text(word);
  WordEntry* entry = nullptr;
  const char* form = is_number(text) ? kNumberWord : kUnknownWord;  // the empty word counts as a number
  if (const Status s = parse_entry(session, form, entry, EntryStorage::sentence_pool); s != Status::ok) return s;
  const bool replaced = text_replace(session, entry->cw, entry->cw_len, text) &&
                        text_replace(session, entry->hw, entry->hw_len, surface_of(text));
  if (!replaced) return Status::memory;
  entry_sizes_set(*entry);
  entry_list_free(session, head);
  head = entry;
  return Status::ok;
}

Status node_build(Session& session, int row_number, Node*& node) {
  node = nullptr;
  const GraphWord& row = session.sentence.graph_words[static_cast<std::size_t>(row_number)];
  Node** position = session.sentence.graph_nodes.data() + row_number;
  if (is_place_of(session, row, position)) {
    node = *position;
    // wanted: the node's place in its table serves as a row number. A word without a node makes them differ, and
    // the node gets the blocks of another row.
    const auto place = static_cast<std::size_t>(position - session.sentence.graph_nodes.data());
    if (node->scope_attrs != nullptr) blocks_set(*node, session.sentence.graph_words[place].blocks);
    return Status::ok;
  }
  Node* made = nullptr;
  if (const Status s = node_make(session, row, words_to_share(session, position, row.name), made); s != Status::ok)
    return s;
  // The table stays in order.
  std::move_backward(position, nodes_end(session), nodes_end(session) + 1);
  *position = made;
  ++session.sentence.graph_node_count;
  blocks_set(*made, row.blocks);
  node = made;
  return Status::ok;
}

}  // namespace lexon
