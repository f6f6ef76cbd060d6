// Grammar sources: rules without boilerplate. A source is rule text with directives, lines that begin with "%" and a
// word: named texts, lists, tables, loops, conditions, includes. It expands to plain rule text; a text without
// directives is its own expansion.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "source/source_map.hpp"

namespace lexon {

// Something wrong in a source: what, and how it is put right.
struct SourceMessage {
  bool is_warning = false;
  std::string file;
  std::int64_t line = 0;   // from 1; 0: the file as a whole
  std::size_t column = 0;  // byte of `shown`
  std::string text;
  std::string shown;  // the line, without its end; of a long one its head
};

// What comes of a source. The text is of use only without errors.
struct Expansion {
  bool is_source = false;  // the file has directives; otherwise only that and the text are filled
  std::string text;
  SourceMap map;  // its `text_path` is for who writes the text
  std::vector<SourceMessage> messages;

  [[nodiscard]] bool has_errors() const;
};

inline constexpr const char* kSourceExtension = ".lxr";

// What an editor shows and has not saved: the text that stands for the file at `path`, or null where the file itself is
// meant. The text has to stay until the call that asks for it returns.
using TextLookup = std::function<const std::string*(const std::string& path)>;

// Expands the file at `path` in memory, with what it includes. A file that cannot be opened is an error.
[[nodiscard]] Expansion expand_source(const std::string& path, const TextLookup& unsaved = {});

// The expansion of a source as a file beside it, "NAME.lxr.txt", with a map, "NAME.lxr.map".
struct ExpandedFile {
  bool is_source = false;   // otherwise `path` is rule text, or cannot be opened, and nothing else is filled
  bool is_new = false;      // expanded by this call
  bool wrote_text = false;  // and the text differs from the one that stood there
  std::string text_path;
  std::string map_path;
  Expansion expansion;  // the text if it is new, the messages, and the files; the whole map only if it is new
  std::string fault;    // what kept it from being written
};

enum class Expanding : std::uint8_t { when_changed, anew, in_memory };

// Brings the expansion of `path` up to date: it is made when one of its files or the expanded text is not what it was.
// Files are replaced in one move each; in memory none is written or looked at. A file whose extension is not ".lxr" is
// never a source. Unsaved texts are for expanding in memory.
[[nodiscard]] ExpandedFile expand_beside(const std::string& path, Expanding how, const TextLookup& unsaved = {});

}  // namespace lexon
