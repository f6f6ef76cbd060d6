#include "source/source_map.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cinttypes>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string_view>

#include "data/platform.hpp"

namespace lexon {

namespace {

namespace fs = std::filesystem;

// The file is text: a line for each record, its fields with tabs between.
//   lexon-map 1                                     the version
//   text  PATH SIZE HASH SECONDS NANOSECONDS        the expanded rules
//   file  PATH SIZE HASH SECONDS NANOSECONDS        each file that was read, the source first
//   end                                             of the head, which is all that has to be read to see what is stale
//   loop  PARENT NAME VALUE                         frames, numbered from 1 as they come
//   row   PARENT FILE LINE NAME VALUE
//   include PARENT FILE LINE
//   run   COUNT FILE LINE FRAME                     lines that are those of the source, one after the other
//   line  FILE FRAME BEGIN:LINE:COLUMN[=] ...       a line made of pieces, with blanks between; "=" for a value
// Numbers of files count from 0, lines and columns from 1 (in memory columns count from 0), the hash is hexadecimal.
constexpr std::string_view kFirstLine = "lexon-map\t1";

// ---- Writing

// Fields stay between their tabs and on their line.
void append_field(std::string& out, std::string_view field) {
  out += '\t';
  for (const char c : field) {
    switch (c) {
      case '\t': out += "\\t"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\\': out += "\\\\"; break;
      default: out += c;
    }
  }
}

// By `to_chars`, which is quick: a map has some numbers for each rule.
void append_number(std::string& out, std::int64_t number, char in_front = '\t') {
  std::array<char, 24> digits;
  // The first number of a piece has a blank or a tab in front, the others a colon.
  if (in_front != '\0') out += in_front;
  out.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

// What a file was: by this it is seen later that it has changed.
void append_mark(std::string& out, const FileMark& mark) {
  std::array<char, 96> text;
  const int length = std::snprintf(text.data(), text.size(), "\t%" PRId64 "\t%016" PRIx64 "\t%" PRId64 "\t%" PRId64,
                                   mark.size, mark.hash, mark.time.seconds, mark.time.nanoseconds);
  out.append(text.data(), static_cast<std::size_t>(length));
}

std::string folder_of(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

// As it is named in a map in `folder`.
// A source with its map can be moved as a folder, so what lies below is named relative to it, and all else in full.
std::string name_in(const std::string& folder, const std::string& path) {
  // Without a folder in its own path a map lies in the current one, as does every relative path.
  const bool is_below = path.starts_with(folder) && !path.starts_with("/");
  if (is_below || (!folder.empty() && path.starts_with(folder))) return path.substr(folder.size());
  std::error_code error;
  const fs::path whole = fs::absolute(path, error);
  return error ? path : whole.lexically_normal().string();
}

void append_frame(std::string& out, const MapFrame& frame) {
  // The words of the file format, see above.
  switch (frame.kind) {
    case MapFrame::Kind::loop: out += "loop"; break;
    case MapFrame::Kind::row: out += "row"; break;
    case MapFrame::Kind::include: out += "include"; break;
  }
  append_number(out, frame.parent);
  if (frame.kind != MapFrame::Kind::loop) {
    append_number(out, frame.file);
    append_number(out, frame.line);
  }
  if (frame.kind != MapFrame::Kind::include) {
    append_field(out, frame.name);
    append_field(out, frame.value);
  }
  out += '\n';
}

// A line with pieces. Its own `line` is not written: it is that of the first piece.
void append_pieces(std::string& out, const SourceMap& map, const MapLine& line) {
  out += "line";
  append_number(out, line.file);
  append_number(out, line.frame);
  char in_front = '\t';
  for (std::size_t i = 0; i < line.pieces; ++i) {
    const MapPiece& piece = map.pieces[line.first_piece + i];
    append_number(out, std::int64_t{piece.begin} + 1, in_front);
    append_number(out, piece.line, ':');
    append_number(out, std::int64_t{piece.column} + 1, ':');
    if (piece.is_value) out += '=';
    in_front = ' ';
  }
  out += '\n';
}

// ---- Reading

// The fields of a line, one after the other.
// A map may be damaged or made by hand. What does not fit clears `is_sound` and gives 0, so that a reader asks once
// behind all fields of a line, and no number leads out of its array.
struct Fields {
  std::string_view rest;
  char separator = '\t';
  bool is_sound = true;

  std::string_view text() {
    const std::size_t end = std::min(rest.find(separator), rest.size());
    const std::string_view taken = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return taken;
  }

  template <typename Number>
  Number number(int base = 10) {
    const std::string_view field = text();
    Number value{};
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value, base);
    is_sound = is_sound && error == std::errc{} && end == field.data() + field.size();
    return value;
  }

  // A number that is used as an index: below `limit`.
  std::uint32_t index(std::size_t limit) {
    const auto value = number<std::uint32_t>();
    is_sound = is_sound && value < limit;
    return is_sound ? value : 0;
  }

  // The field as it was before `append_field`. An unknown sign behind "\" stands for itself.
  std::string plain() {
    std::string value;
    const std::string_view field = text();
    for (std::size_t i = 0; i < field.size(); ++i) {
      const bool is_sign = field[i] == '\\' && i + 1 < field.size();
      const char c = is_sign ? field[++i] : field[i];
      value += !is_sign ? c : c == 't' ? '\t' : c == 'n' ? '\n' : c == 'r' ? '\r' : c;
    }
    return value;
  }

  // As `append_mark` writes it.
  FileMark mark() {
    FileMark mark;
    mark.size = number<std::int64_t>();
    mark.hash = number<std::uint64_t>(16);
    mark.time.seconds = number<std::int64_t>();
    mark.time.nanoseconds = number<std::int64_t>();
    return mark;
  }
};

std::string whole_path(const std::string& folder, const std::string& name) {
  return name.starts_with('/') ? name : folder + name;
}

// A frame stands behind its parent, so a parent is one of those that have been read: frames cannot form a circle.
void read_frame(Fields& fields, MapFrame::Kind kind, SourceMap& map) {
  MapFrame frame{.kind = kind, .name = {}, .value = {}};
  // The first frame is there before any is read, and is its own parent.
  frame.parent = fields.index(map.frames.size());
  if (kind != MapFrame::Kind::loop) {
    frame.file = fields.index(map.files.size());
    frame.line = fields.number<std::uint32_t>();
  }
  if (kind != MapFrame::Kind::include) {
    frame.name = fields.plain();
    frame.value = fields.plain();
  }
  map.frames.push_back(std::move(frame));
}

// Lines that are copies: they follow each other in the source too.
void read_run(Fields& fields, SourceMap& map) {
  const auto count = fields.number<std::uint32_t>();
  MapLine line;
  line.file = fields.index(map.files.size());
  line.line = fields.number<std::uint32_t>();
  line.frame = fields.index(map.frames.size());
  // No text has more lines than bytes.
  fields.is_sound = fields.is_sound && count <= map.text_mark.size;
  for (std::uint32_t i = 0; fields.is_sound && i < count; ++i, ++line.line) map.lines.push_back(line);
}

// A line that was made: `pieces` stay in the order of the line, which `SourceMap::place` relies on.
void read_line(Fields& fields, SourceMap& map) {
  MapLine line;
  line.file = fields.index(map.files.size());
  line.frame = fields.index(map.frames.size());
  line.first_piece = static_cast<std::uint32_t>(map.pieces.size());
  for (std::string_view rest = fields.rest; !rest.empty() && fields.is_sound;) {
    const std::size_t end = std::min(rest.find(' '), rest.size());
    Fields piece{rest.substr(0, end), ':'};
    rest.remove_prefix(std::min(end + 1, rest.size()));
    // The sign stands behind the column.
    const bool is_value = piece.rest.ends_with('=');
    if (is_value) piece.rest.remove_suffix(1);
    const auto begin = piece.number<std::uint32_t>();
    const auto number = piece.number<std::uint32_t>();
    const auto column = piece.number<std::uint32_t>();
    fields.is_sound = piece.is_sound && begin > 0 && column > 0;
    map.pieces.push_back({begin - 1, number, column - 1, is_value});
  }
  line.pieces = static_cast<std::uint32_t>(map.pieces.size()) - line.first_piece;
  if (line.pieces != 0) line.line = map.pieces[line.first_piece].line;
  map.lines.push_back(line);
}

// The file, or, for who wants the head alone, as much as holds it. None if there is no ordinary file.
std::optional<std::string> content_of(const std::string& path, bool head_only) {
  const File stream(regular_file_open(path, "rb"));
  if (stream == nullptr) return std::nullopt;
  std::string content;
  std::array<char, 1 << 16> chunk;
  while (const std::size_t got = std::fread(chunk.data(), 1, chunk.size(), stream.get())) {
    content.append(chunk.data(), got);
    // The head may end in the middle of a chunk; what else was read of it does no harm.
    if (head_only && content.find("\nend\n") != std::string::npos) break;
  }
  return content;
}

}  // namespace

MappedPlace SourceMap::place(std::int64_t number, std::size_t column) const {
  if (number < 1 || number > static_cast<std::int64_t>(lines.size())) return {};
  const MapLine& line = lines[static_cast<std::size_t>(number) - 1];
  MappedPlace place = surroundings(line.frame);
  place.file = files[line.file].path;
  place.line = line.line;
  place.column = column;
  // The last piece that begins at or before the column. Within copied text the columns run side by side; of a value all
  // columns lead to its mark.
  if (line.pieces != 0) {
    std::size_t at = line.first_piece;
    const std::size_t end = at + line.pieces;
    while (at + 1 < end && pieces[at + 1].begin <= column) ++at;
    const MapPiece& piece = pieces[at];
    place.line = piece.line;
    place.column = piece.column + (piece.is_value || column < piece.begin ? 0 : column - piece.begin);
  }
  return place;
}

MappedPlace SourceMap::surroundings(std::uint32_t number) const {
  MappedPlace place;
  for (; number != 0; number = frames[number].parent) {
    const MapFrame& frame = frames[number];
    if (frame.kind == MapFrame::Kind::include) {
      place.included_at.emplace_back(files[frame.file].path, frame.line);
    } else {
      place.values.emplace_back(frame.name, frame.value);
    }
  }
  // Frames lead from the inside out, and are told from the outside in.
  std::reverse(place.values.begin(), place.values.end());
  std::reverse(place.included_at.begin(), place.included_at.end());
  return place;
}

std::string surroundings_text(const MappedPlace& place) {
  std::string text;
  for (const auto& [name, value] : place.values) {
    text.append(text.empty() ? "with " : ", ").append(name).append("=").append(value);
  }
  for (const auto& [file, line] : place.included_at) {
    text += (text.empty() ? "included at " : ", included at ") + file + ':' + std::to_string(line);
  }
  return text;
}

std::string source_line_at(const std::string& path, std::int64_t line) {
  const std::optional<std::string> content = content_of(path, false);
  if (!content) return {};
  std::string_view rest = *content;
  // A number behind the last line leaves nothing.
  for (; line > 1 && !rest.empty(); --line) rest.remove_prefix(std::min(rest.find('\n'), rest.size() - 1) + 1);
  rest = rest.substr(0, rest.find('\n'));
  if (rest.ends_with('\r')) rest.remove_suffix(1);
  return std::string(rest);
}

std::string source_map_text(const SourceMap& map, const std::string& path) {
  const std::string folder = folder_of(path);
  std::string out(kFirstLine);
  out += "\ntext";
  append_field(out, name_in(folder, map.text_path));
  append_mark(out, map.text_mark);
  for (const MappedFile& file : map.files) {
    out += "\nfile";
    append_field(out, name_in(folder, file.path));
    append_mark(out, file.mark);
  }
  out += "\nend\n";
  for (std::size_t i = 1; i < map.frames.size(); ++i) append_frame(out, map.frames[i]);
  for (std::size_t i = 0; i < map.lines.size();) {
    const MapLine& line = map.lines[i];
    if (line.pieces != 0) {
      append_pieces(out, map, line);
      ++i;
      continue;
    }
    // Copied lines that follow each other in the source and in the text become one record: a plain rule file is one
    // line of map, however long.
    const auto goes_on = [&line](const MapLine& other, std::size_t behind) {
      return other.pieces == 0 && other.file == line.file && other.frame == line.frame &&
             other.line == line.line + behind;
    };
    std::size_t count = 1;
    while (i + count < map.lines.size() && goes_on(map.lines[i + count], count)) ++count;
    out += "run";
    for (const std::int64_t number : {static_cast<std::int64_t>(count), std::int64_t{line.file},
                                      std::int64_t{line.line}, std::int64_t{line.frame}}) {
      append_number(out, number);
    }
    out += '\n';
    i += count;
  }
  return out;
}

bool source_map_read(const std::string& path, SourceMap& map, bool head_only) {
  map = {};
  map.frames.resize(1);
  const std::optional<std::string> content = content_of(path, head_only);
  // A map that breaks off was not written to its end. Of the head alone the "end" line tells that.
  if (!content || !content->ends_with('\n')) {
    if (!content || !head_only) return false;
  }
  const std::string folder = folder_of(path);
  std::string_view rest = *content;
  bool is_first = true;
  bool has_head = false;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    Fields fields{rest.substr(0, end)};
    rest.remove_prefix(std::min(end + 1, rest.size()));
    // Another version is no map: the source is expanded again.
    if (is_first && fields.rest != kFirstLine) return false;
    const std::string_view kind = fields.text();
    if (is_first) {
      is_first = false;
    } else if (kind == "text") {
      map.text_path = whole_path(folder, fields.plain());
      map.text_mark = fields.mark();
    } else if (kind == "file") {
      std::string file = whole_path(folder, fields.plain());
      map.files.push_back({std::move(file), fields.mark()});
    } else if (kind == "end") {
      has_head = true;
      if (head_only) break;
    } else if (kind == "loop") {
      read_frame(fields, MapFrame::Kind::loop, map);
    } else if (kind == "row") {
      read_frame(fields, MapFrame::Kind::row, map);
    } else if (kind == "include") {
      read_frame(fields, MapFrame::Kind::include, map);
    } else if (kind == "run") {
      read_run(fields, map);
    } else if (kind == "line") {
      read_line(fields, map);
    } else {
      return false;
    }
    if (!fields.is_sound) return false;
  }
  return has_head && !map.files.empty();
}

}  // namespace lexon
