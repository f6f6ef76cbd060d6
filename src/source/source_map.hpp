// Where each line of expanded rules comes from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "data/stamp.hpp"

namespace lexon {

// A file that an expansion has read.
struct MappedFile {
  std::string path;
  FileMark mark;
};

// What surrounds a line: a turn of a loop, or an include.
struct MapFrame {
  enum class Kind : std::uint8_t { loop, row, include };
  Kind kind = Kind::loop;
  std::uint32_t parent = 0;  // number of the frame around it; 0: none
  std::uint32_t file = 0;    // of a row: where it stands; of an include: where the directive stands
  std::uint32_t line = 0;
  std::string name;   // the variable
  std::string value;  // of a row: "column=cell" for each column, with blanks between
};

// A stretch of an expanded line. Columns are bytes from 0.
struct MapPiece {
  std::uint32_t begin = 0;   // in the expanded line
  std::uint32_t line = 0;    // in the source
  std::uint32_t column = 0;  // in the source
  bool is_value = false;     // stands for a mark: all of it comes from that place
};

// Where a line of the expanded text comes from: a copy of a source line, or pieces.
struct MapLine {
  std::uint32_t file = 0;
  std::uint32_t frame = 0;  // number of the innermost frame; 0: none
  std::uint32_t line = 0;   // of its first piece
  std::uint32_t first_piece = 0;
  std::uint32_t pieces = 0;  // 0: the line is that of the source, byte for byte
};

// Where a place of the expanded text comes from.
struct MappedPlace {
  std::string file;  // empty: unknown
  std::int64_t line = 0;
  std::size_t column = 0;                                   // bytes from 0
  std::vector<std::pair<std::string, std::string>> values;  // variables of the loops around it, the outermost first
  std::vector<std::pair<std::string, std::int64_t>> included_at;  // file and line, the outermost first
};

// Maps every line of an expansion. Numbers of files are indices of `files`, those of pieces indices of `pieces`.
struct SourceMap {
  std::string text_path;  // of the expanded rules
  FileMark text_mark;
  std::vector<MappedFile> files;  // the source first
  std::vector<MapFrame> frames;   // number 0 is none
  std::vector<MapPiece> pieces;
  std::vector<MapLine> lines;

  // Where line `line` (from 1) of the expanded text comes from, at byte `column` (from 0).
  [[nodiscard]] MappedPlace place(std::int64_t line, std::size_t column) const;
  // The loops and includes of a frame alone.
  [[nodiscard]] MappedPlace surroundings(std::uint32_t frame) const;
};

// "with V=go, included at main.lxr:3"; empty if there is nothing to say.
[[nodiscard]] std::string surroundings_text(const MappedPlace& place);

// Line `line` (from 1) of a file, without its end; empty if it has none.
[[nodiscard]] std::string source_line_at(const std::string& path, std::int64_t line);

// The map as the text of its file at `path`; files in that folder and below are named relative to it.
[[nodiscard]] std::string source_map_text(const SourceMap& map, const std::string& path);

// Reads a map file. With `head_only` the frames and lines stay empty. False if there is none, or it is damaged.
[[nodiscard]] bool source_map_read(const std::string& path, SourceMap& map, bool head_only);

}  // namespace lexon
