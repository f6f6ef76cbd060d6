#include "graph/graph_words.hpp"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

#include "data/attr_string.hpp"
#include "data/chain.hpp"
#include "data/session.hpp"
#include "graph/line_text.hpp"

namespace lexon {

namespace {

constexpr std::size_t kBlockLimit = 1024;  // characters of a block's text
constexpr std::int64_t kBlockCell = 4096;  // bytes that the pool gives to a block
constexpr int kHighestScope = 99;          // that can be referred to

// Always false, for the callers to pass on.
bool refuse(Session& session, const char* what) {
  sentence_refuse(session, what);
  return false;
}

bool refuse_attributes(Session& session) {
  return refuse(session, "the graph has a word with more than 1024 characters of attributes");
}

// Puts a new block with the attributes as written in front of `blocks`.
bool block_push(Session& session, ScopeAttrs*& blocks, const char* attrs, int scope) {
  // Dots stay as they are: they turn to commas when the node is built.
  const std::string_view text(attrs);
  if (text.size() > kBlockLimit) return refuse_attributes(session);
  // Its cell has room to spare. Blocks that all began at the same place of theirs would drive each other from the cache.
  constexpr std::size_t kPlaces = 47;
  constexpr std::size_t kLine = 64;
  static_assert((kPlaces - 1) * kLine + sizeof(ScopeAttrs) <= std::size_t{kBlockCell});
  auto* cell = static_cast<char*>(temp_alloc(session, kBlockCell));
  if (cell == nullptr) return false;
  const std::size_t place = static_cast<std::size_t>(session.sentence.graph_word_count) % kPlaces;
  auto* block = new (cell + place * kLine) ScopeAttrs;
  block->scope = static_cast<std::uint8_t>(scope);
  text.copy(block->text, text.size());
  block->text[text.size()] = '\0';
  block->next = blocks;
  // From now on matching has to turn blocks: until then each word has the attributes of one scope.
  if (blocks != nullptr) session.sentence.has_scopes_mixed = true;
  blocks = block;
  return true;
}

// wanted: an empty text gets the comma too.
bool block_append(Session& session, ScopeAttrs& block, std::string_view attr) {
  const std::size_t length = std::strlen(block.text);
  if (length + 1 + attr.size() > kBlockLimit) return refuse_attributes(session);
  block.text[length] = ',';
  attr.copy(block.text + length + 1, attr.size());
  block.text[length + 1 + attr.size()] = '\0';
  return true;
}

// Adds those of the attributes, written with dots or blanks between, that the block does not hold.
bool block_merge(Session& session, ScopeAttrs& block, char* attrs) {
  while (true) {
    while (*attrs == '.' || *attrs == ' ') ++attrs;
    if (*attrs == '\0') return true;
    char* end = attrs + std::strcspn(attrs, ". ");
    const bool is_last = *end == '\0';
    // The attribute ends here for the comparison.
    *end = '\0';
    if (attr_find(block.text, attrs) == nullptr && !block_append(session, block, attrs)) return false;
    if (is_last) return true;
    attrs = end + 1;
  }
}

// Puts a new row in at `row`, in front of the one that stands there. False if the word could not be entered; then nothing
// has changed.
bool row_insert(Session& session, GraphWord* row, const WordText& word, int scope) {
  const std::string_view name(word.name);
  if (name.size() >= sizeof row->name) return refuse(session, "the graph has a word of more than 259 characters");
  if (session.sentence.graph_word_count == kMaxGraphWords) return refuse(session, "the graph has more than 512 words");
  // The block first: without memory no row may stand without one.
  ScopeAttrs* blocks = nullptr;
  if (!block_push(session, blocks, word.attrs, scope)) return false;
  GraphWord* end = session.sentence.graph_words.data() + session.sentence.graph_word_count;
  std::move_backward(row, end, end + 1);
  // A quoted word is not looked up.
  row->look_up = word.quoted ? 0 : 1;
  row->number = word.number;
  row->blocks = blocks;
  text_copy(row->name, name.data(), name.size() + 1);
  ++session.sentence.graph_word_count;
  return true;
}

}  // namespace

int graph_word_add(Session& session, char* text, int scope, std::span<const int> guesses) {
  const WordText word = split_word(text);
  GraphWord* first = session.sentence.graph_words.data();
  GraphWord* end = first + session.sentence.graph_word_count;
  const auto holds_word = [&](const GraphWord& row) {
    return row.number == word.number && std::strcmp(row.name, word.name) == 0;
  };
  // The row of the word, or where it is to be put in.
  GraphWord* row = end;
  for (const int guess : guesses) {
    if (guess >= 0 && first + guess < end && holds_word(first[guess])) row = first + guess;
  }
  bool is_there = row != end;
  if (!is_there) {
    row = std::lower_bound(first, end, word, [](const GraphWord& known, const WordText& w) {
      return sorts_before(known.name, known.number, w.name, w.number);
    });
    is_there = row != end && holds_word(*row);
  }
  const auto index = static_cast<int>(row - first);
  if (!is_there) return row_insert(session, row, word, scope) ? index : -1;
  // wanted: a scope above 255 equals none of the 8-bit numbers, so each mention brings a block of its own.
  for (ScopeAttrs& block : chain<&ScopeAttrs::next>(row->blocks)) {
    if (block.scope == scope) return block_merge(session, block, word.attrs) ? index : -1;
  }
  return block_push(session, row->blocks, word.attrs, scope) ? index : -1;
}

int scope_number_of(const GraphWord& row) {
  const bool refers = row.name[0] == '\0' && row.number >= 0 && row.number <= kHighestScope;
  return refers ? row.number : 0;
}

}  // namespace lexon
