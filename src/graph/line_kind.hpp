// What the lines of a graph document are, by how they begin, and where a sentence ends.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "data/scratch.hpp"
#include "data/text_line.hpp"

namespace lexon {

enum class LineKind {
  ignored,
  graph_start,
  graph_end,
  block_tag,
  sentence_end,
  word_block,
  skipped_block,
  sentence_start,
  graph_line,  // a relation; stray outside of a graph
};

inline constexpr std::size_t kTagLength = 9;  // of a block tag's name

// The block tag that hides lines; empty if none is open.
using BlockTag = Scratch<kTagLength + 1>;

// `line` is what stands behind the leading blanks.
[[nodiscard]] LineKind line_kind(std::string_view line, const BlockTag& open_tag);

// A tag line closes the open tag, or else opens another in its place.
void block_tag_change(BlockTag& open_tag, std::string_view line);

// The marks that end a block of words and a skipped block; in their first column alone.
inline constexpr std::string_view kWordBlockEnd = "[/W";
inline constexpr std::string_view kSkippedBlockEnd = "[/R";

// How much of a sentence is read at once.
struct TextLimit {
  std::size_t bytes;
  bool is_met = false;  // the sentence goes on behind what was read
};

// Reads on to where the reader would end the next sentence, without building its graph. `text` receives all bytes up
// to there, as they stand in the source. False if nothing was left. What stands behind the last sentence of a text
// comes as if it were one, and is read as the end of the input. Null for `limit`: there is none.
[[nodiscard]] bool sentence_text_read(TextSource source, std::string& text, TextLimit* limit = nullptr);

// The same without keeping the text. False at the end of the source: what was passed over then is no whole sentence.
// Null for `lines`: nobody wants to know.
bool sentence_pass(TextSource source, TextWatch* lines = nullptr);

}  // namespace lexon
