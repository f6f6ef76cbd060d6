// Expands a source: files are read into trees (source_text.hpp), the trees are walked, and every rule line that is met
// goes out with the values that its marks have at that moment. The map grows with the text.
#include "source/expand.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "data/chars.hpp"
#include "data/platform.hpp"
#include "data/stamp.hpp"
#include "source/source_text.hpp"

namespace lexon {

namespace {

namespace fs = std::filesystem;

// A source is trusted no more than any other file: each of these ends an expansion that a slip would let grow without
// end.
constexpr std::size_t kMostLine = 1022;       // characters that the rule parser reads as one line
constexpr std::size_t kMostValue = 65536;     // bytes of a named text
constexpr std::size_t kMostDepth = 64;        // includes within each other
constexpr std::size_t kMostMessages = 100;    // that are kept
constexpr std::size_t kMostSteps = 10000000;  // lines, marks and turns of loops of an expansion
constexpr std::size_t kMostText = std::size_t{1} << 30;

// The rows of a %table: as many cells each as there are columns, whose names may be anything.
struct Table {
  std::vector<std::string> columns;
  std::vector<std::vector<std::string>> rows;
  std::vector<SourcePlace> places;  // of the rows

  [[nodiscard]] std::optional<std::size_t> column(std::string_view name) const {
    const auto found = std::find(columns.begin(), columns.end(), name);
    if (found == columns.end()) return std::nullopt;
    return static_cast<std::size_t>(found - columns.begin());
  }
};

// What a name stands for.
// `kind` says which members are filled. A row refers to the table it belongs to, which lives as long as one of both.
struct Binding {
  enum class Kind : std::uint8_t { text, list, table, row };
  Kind kind = Kind::text;
  std::string text;
  std::vector<std::string> items;
  std::shared_ptr<Table> table;  // of a row too
  std::size_t row = 0;
  SourcePlace place;
};

// Lets names be looked up by a view, without a copy.
struct NameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};

// How many letters have to be changed, put in or taken out to make one of the other; a large number for long ones.
// By rows: `row[j]` is the distance of the head of `a` that has been seen to the first `j` letters of `b`.
std::size_t distance(std::string_view a, std::string_view b) {
  constexpr std::size_t kLong = 64;
  if (a.size() > kLong || b.size() > kLong) return kLong;
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0U : 1U)});
      diagonal = above;
    }
  }
  return row.back();
}

// The directive that a word is most like; empty if it is like none.
std::string_view directive_like(std::string_view word) {
  for (const std::string_view name : directive_names()) {
    // The first letter is hardly ever the wrong one, and short words are near each other otherwise.
    if (name.front() == word.front() && distance(name, word) <= 2) return name;
  }
  return {};
}

std::string in_quotes(std::string_view text) {
  return '"' + std::string(text) + '"';
}

// "3 cells", "1 cell".
std::string counted(std::size_t count, const char* what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

// One cell more than there are separators, empty ones too.
void split_at(std::string_view text, char separator, std::vector<std::string>& cells) {
  while (true) {
    const std::size_t end = text.find(separator);
    cells.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

// Walks the trees of a source and of what it includes. There are two stacks in it: the names that are bound (`bound_`),
// cut back behind each turn of a loop, and the frames around the current line, of which the innermost is `frame_` and
// the map keeps the rest. Faults are told and the walk goes on, with nothing in the place of what is missing.
class Expander {
 public:
  Expander(Expansion& out, const TextLookup& unsaved) : out_(out), unsaved_(unsaved) { out_.map.frames.resize(1); }

  // A file without directives is its own expansion, and needs no map. One with directives in an included file alone is
  // not possible: %include is a directive.
  void expand(const std::string& path) {
    std::uint32_t file = 0;
    // What was wrong has been told.
    if (!open_file(path, {}, file)) return;
    out_.is_source = has_directives(texts_[file]->content);
    if (out_.is_source) {
      walk_file(file);
    } else {
      out_.text = texts_[file]->content;
    }
  }

 private:
  // ---- Messages

  // A message at a place, with the values of the loops and the includes around it, so that a line that is said many
  // times shows for which turn it is wrong.
  void tell(bool is_warning, const SourcePlace& place, std::string text) {
    // Each turn of a loop would say the same.
    if (!told_.emplace(place.file, place.line, place.column, text).second) return;
    // The rest is known, so that it is not told twice, and not kept.
    if (out_.messages.size() >= kMostMessages) return;
    const std::string around = surroundings_text(out_.map.surroundings(frame_));
    if (!around.empty()) text += " (" + around + ")";
    out_.messages.push_back(
        {is_warning, out_.map.files[place.file].path, place.line, place.column, std::move(text), line_of(place)});
  }

  void fault(const SourcePlace& place, std::string text) { tell(false, place, std::move(text)); }

  // A place in the file that is being walked.
  SourcePlace at(std::uint32_t line, std::uint32_t column) const { return {file_, line, column}; }

  // The line for a message; of one that is longer than 64 KiB the head.
  std::string line_of(const SourcePlace& place) {
    std::string_view rest = texts_[place.file]->content;
    std::string_view line;
    std::string_view end;
    for (std::uint32_t i = 0; i < place.line && !rest.empty(); ++i) line = take_line(rest, end);
    return std::string(line.substr(0, std::size_t{1} << 16));
  }

  // Counts what an expansion costs, so that a slip cannot fill the memory. False when it is enough.
  bool take_steps(std::size_t count, const SourcePlace& place) {
    steps_ += count;
    if (steps_ <= kMostSteps && out_.text.size() <= kMostText) return true;
    if (!is_over_)
      fault(place, "the source expands to more than 10 million steps or 1 GiB: look at the loops around this");
    is_over_ = true;
    return false;
  }

  // ---- Files

  // Reads a file once; `from`: where it is asked for, none for the source itself.
  // Two paths that lead to one file give one number, by which a file that includes itself is noticed. The message names
  // the path as it was written.
  bool open_file(const std::string& path, const std::optional<SourcePlace>& from, std::uint32_t& number) {
    std::error_code error;
    // Links and dots are followed, so that one file has one key.
    const fs::path whole = fs::weakly_canonical(path, error);
    const std::string key = error || whole.empty() ? path : whole.string();
    if (const auto known = numbers_.find(key); known != numbers_.end()) {
      number = known->second;
      return true;
    }
    errno = 0;
    const std::string* text = unsaved_ ? unsaved_(path) : nullptr;
    const File stream(text != nullptr ? nullptr : regular_file_open(path, "rb"));
    std::string why = text == nullptr && stream == nullptr ? std::strerror(errno) : std::string();
    std::optional<FileMark> mark;
    std::string content;
    if (text != nullptr) {
      content = *text;
      ByteHash hash;
      hash.add(content.data(), content.size());
      // An unsaved text has no time; it is not written to a map that lasts, as such texts are expanded in memory alone.
      mark = FileMark{.size = static_cast<std::int64_t>(content.size()), .hash = hash.value()};
    } else if (stream != nullptr) {
      // Regular files alone come here, whose size is known.
      const std::int64_t size = file_size(stream.get());
      content.resize(static_cast<std::size_t>(size));
      mark = file_mark(stream.get());
      const bool is_read = size == 0 || file_read_at(stream.get(), 0, content.data(), content.size());
      if (!is_read || !mark) why = "it cannot be read to its end";
    }
    if (!why.empty()) {
      if (from) {
        fault(*from, in_quotes(path) + " cannot be opened: " + why);
      } else {
        out_.messages.push_back({false, path, 0, 0, "the source cannot be opened: " + why, {}});
      }
      return false;
    }
    number = static_cast<std::uint32_t>(texts_.size());
    numbers_.emplace(key, number);
    out_.map.files.push_back({path, *mark});
    texts_.push_back(std::make_unique<SourceText>());
    texts_.back()->content = std::move(content);
    return true;
  }

  // What a name in the current file leads to.
  // Relative paths are meant from the folder of the file that names them, so that a source can be moved with what it
  // includes.
  std::string path_beside(std::string_view name) const {
    const std::string& path = out_.map.files[file_].path;
    // A full path stays as it is.
    if (name.starts_with('/')) return std::string(name);
    return path.substr(0, path.rfind('/') + 1) + std::string(name);
  }

  // Such a file has a zero behind every letter and would give a fault a line: one message instead.
  bool is_utf16(std::uint32_t number) {
    const std::string_view content = texts_[number]->content;
    const bool is = content.starts_with("\xFF\xFE") || content.starts_with("\xFE\xFF");
    if (is) fault({number, 1, 0}, "this text is UTF-16: save it as UTF-8");
    return is;
  }

  // A file may be included at many places and is read into its tree once. One that has faults gives no rules at all.
  void walk_file(std::uint32_t number) {
    SourceText& text = *texts_[number];
    if (is_utf16(number)) return;
    // The tree is kept with its faults, which are told once.
    if (read_.insert(number).second) {
      source_text_read(text);
      for (const SourceFault& found : text.faults) fault({number, found.line, found.column}, found.text);
    }
    if (!text.faults.empty()) return;
    const std::uint32_t before = std::exchange(file_, number);
    // By this an %include notices that it would go round.
    around_.push_back(number);
    walk(text.body);
    around_.pop_back();
    file_ = before;
  }

  // ---- Names

  Binding* find(std::string_view name) {
    const auto found = names_.find(name);
    return found == names_.end() ? nullptr : &found->second;
  }

  std::string place_text(const SourcePlace& place) const {
    return out_.map.files[place.file].path + ':' + std::to_string(place.line);
  }

  // Null: the name is taken, which has been told.
  // Names are never hidden by others: what a name means can be seen at one place.
  Binding* bind(const std::string& name, const SourcePlace& place) {
    if (const Binding* known = find(name)) {
      fault(place, in_quotes(name) + " is defined already, at " + place_text(known->place) + ": choose another name");
      return nullptr;
    }
    Binding& binding = names_[name];
    binding.place = place;
    bound_.push_back(name);
    return &binding;
  }

  // Forgets what was bound since there were `count` names.
  void unbind(std::size_t count) {
    for (; bound_.size() > count; bound_.pop_back()) names_.erase(bound_.back());
  }

  // The message for a name that nothing defines, with the likeliest remedy: a defined name at its head ("%STEMen" means
  // "%{STEM}en"), a directive with a slip of the pen, or a name that differs by a letter or two.
  std::string unknown_name(const SourcePiece& mark) {
    std::string best;
    // Of a short name one other letter is a slip, of a longer one two.
    std::size_t best_distance = mark.text.size() < 4 ? 2 : 3;
    for (const auto& [name, binding] : names_) {
      if (const std::size_t d = distance(name, mark.text); d < best_distance) {
        best_distance = d;
        best = name;
      }
    }
    for (std::size_t length = mark.text.size(); !mark.is_braced && length-- > 1;) {
      const std::string head = mark.text.substr(0, length);
      if (find(head) == nullptr) continue;
      std::string told = "no " + in_quotes(mark.text) + " is defined: write %{";
      told.append(head).append("}").append(mark.text, length).append(" if ").append(head).append(" is meant");
      return told;
    }
    std::string text = "no " + in_quotes(mark.text) + " is defined";
    const std::string_view directive = directive_like(mark.text);
    if (best.empty() && mark.begins_line && !directive.empty()) {
      return text + ": did you mean the directive %" + std::string(directive) + "?";
    }
    if (!best.empty()) return text + ": did you mean " + in_quotes(best) + "?";
    return text + ": define it above with %define, or write %% for the sign itself";
  }

  // ---- Values

  // Appends what a mark stands for. False if it stands for nothing, which has been told.
  // A text behind which a dot and a name stand keeps both, unless the mark is braced.
  bool append_value(const SourcePiece& mark, std::string& to) {
    const SourcePlace place = at(mark.line, mark.column);
    // Null: no %define, list, table or loop around this has the name.
    const Binding* binding = find(mark.text);
    if (binding == nullptr) {
      fault(place, unknown_name(mark));
      return false;
    }
    switch (binding->kind) {
      case Binding::Kind::text: break;
      case Binding::Kind::row: return append_cell(*binding, mark, place, to);
      case Binding::Kind::list:
      case Binding::Kind::table:
        fault(place, in_quotes(mark.text) + (binding->kind == Binding::Kind::list ? " is a list" : " is a table") +
                         ": write %for NAME in " + mark.text + " above the rule, and %NAME here");
        return false;
    }
    to += binding->text;
    if (mark.field.empty()) return true;
    if (mark.is_braced) {
      fault(place, in_quotes(mark.text) + " is no row of a table, and has no columns");
      return false;
    }
    // The dot that was taken for a column was one of the text.
    (to += '.') += mark.field;
    return true;
  }

  bool append_cell(const Binding& row, const SourcePiece& mark, const SourcePlace& place, std::string& to) {
    const Table& table = *row.table;
    // For the messages: what could have been written.
    std::string columns;
    for (const std::string& name : table.columns) columns += (columns.empty() ? "" : ", ") + name;
    if (mark.field.empty()) {
      fault(place,
            in_quotes(mark.text) + " is a row of a table: write %" + mark.text + ".COLUMN, with one of " + columns);
      return false;
    }
    const std::optional<std::size_t> column = table.column(mark.field);
    if (!column) {
      fault(place, "the table has no column " + in_quotes(mark.field) + ": it has " + columns);
      return false;
    }
    to += table.rows[row.row][*column];
    return true;
  }

  // The text of pieces, with the values of their marks.
  // None if a value is missing or it grows too long: a name may be defined by another, each twice as long as the one
  // before.
  std::optional<std::string> text_of(const SourceLine& pieces) {
    std::string text;
    bool is_whole = true;
    for (const SourcePiece& piece : pieces) {
      if (piece.is_mark) {
        is_whole = append_value(piece, text) && is_whole;
      } else {
        text += piece.text;
      }
      if (text.size() <= kMostValue) continue;
      fault(at(piece.line, piece.column), "this text grows longer than 65,536 bytes");
      return std::nullopt;
    }
    // All marks are looked at first, so that one call tells of all that is missing.
    if (!is_whole) return std::nullopt;
    return std::string(trimmed(text));
  }

  // The words of a text, between blanks. Values are put in first, so a text of several words gives several items.
  std::vector<std::string> items_of(const SourceLine& pieces) {
    std::vector<std::string> items;
    const std::optional<std::string> text = text_of(pieces);
    if (!text) return items;
    for (std::string_view rest = *text; !rest.empty(); rest = trimmed(rest)) {
      const std::size_t end = std::min(rest.find_first_of(" \t"), rest.size());
      items.emplace_back(rest.substr(0, end));
      rest.remove_prefix(end);
    }
    return items;
  }

  // ---- Definitions

  // The text is made now, with the values that names have here, and not where it is used. A name whose text has a fault
  // is bound all the same, to nothing, so that its uses are not told as unknown.
  void walk_define(const SourceNode& node) {
    std::optional<std::string> text = text_of(node.text);
    Binding* binding = bind(node.name, at(node.line, node.column));
    if (binding != nullptr && text) binding->text = std::move(*text);
  }

  void walk_list(const SourceNode& node) {
    std::vector<std::string> items;
    if (!node.is_block) items = items_of(node.text);
    for (const SourceLine& row : node.rows) {
      if (std::optional<std::string> text = text_of(row); text && !text->empty()) items.push_back(std::move(*text));
    }
    Binding* binding = bind(node.name, at(node.line, node.column));
    if (binding == nullptr) return;
    binding->kind = Binding::Kind::list;
    binding->items = std::move(items);
  }

  void walk_table(const SourceNode& node) {
    auto table = std::make_shared<Table>();
    if (node.is_block) {
      table_of_block(node, *table);
    } else if (const std::optional<std::string> path = text_of(node.text); path) {
      table_of_file(path_beside(*path), at(node.text.front().line, node.text.front().column), *table);
    }
    Binding* binding = bind(node.name, at(node.line, node.column));
    if (binding == nullptr) return;
    binding->kind = Binding::Kind::table;
    binding->table = std::move(table);
  }

  // Rows that are written in the source: cells between "|", without the blanks around them; marks have their values.
  void table_of_block(const SourceNode& node, Table& table) {
    if (node.rows.empty())
      return fault(at(node.line, node.column), "this table has no header: write NAME | NAME below");
    for (const SourceLine& row : node.rows) {
      const std::optional<std::string> text = text_of(row);
      if (!text) continue;
      std::vector<std::string> cells;
      split_at(*text, '|', cells);
      for (std::string& cell : cells) cell = std::string(trimmed(cell));
      row_append(table, std::move(cells), at(row.front().line, 0), "|");
    }
  }

  // Rows of a TSV file: every byte between two tabs counts, and a percent sign is one.
  void table_of_file(const std::string& path, const SourcePlace& from, Table& table) {
    std::uint32_t number = 0;
    if (!open_file(path, from, number) || is_utf16(number)) return;
    std::string_view rest = texts_[number]->content;
    if (rest.starts_with("\xEF\xBB\xBF")) rest.remove_prefix(3);
    for (std::uint32_t line = 1; !rest.empty(); ++line) {
      std::string_view end;
      const std::string_view text = take_line(rest, end);
      if (text.empty()) continue;
      std::vector<std::string> cells;
      split_at(text, '\t', cells);
      row_append(table, std::move(cells), {number, line, 0}, "a tab");
    }
    if (table.columns.empty())
      fault(from, in_quotes(path) + " is empty: its first line names the columns, with tabs between");
  }

  // The first one is the header.
  // A row of another length is told and left out. Columns without a name cannot be asked for, so several may be.
  void row_append(Table& table, std::vector<std::string>&& cells, const SourcePlace& place, const char* separator) {
    if (table.columns.empty()) {
      for (auto cell = cells.begin(); cell != cells.end(); ++cell) {
        if (cell->empty() || std::find(cells.begin(), cell, *cell) == cell) continue;
        fault(place, "the header has two columns " + in_quotes(*cell) + ": rename one");
      }
      table.columns = std::move(cells);
      return;
    }
    if (cells.size() != table.columns.size()) {
      return fault(place, "this row has " + counted(cells.size(), "cell") + ", and the header " +
                              counted(table.columns.size(), "column") + ": " + separator + " stands between cells");
    }
    table.rows.push_back(std::move(cells));
    table.places.push_back(place);
  }

  // ---- Walking

  void walk(const std::vector<SourceNode>& body) {
    for (const SourceNode& node : body) {
      if (is_over_) return;
      switch (node.kind) {
        case SourceKind::plain: walk_plain(node); break;
        case SourceKind::rule: walk_rule(node); break;
        case SourceKind::define: walk_define(node); break;
        case SourceKind::list: walk_list(node); break;
        case SourceKind::table: walk_table(node); break;
        case SourceKind::loop: walk_loop(node); break;
        case SourceKind::branch: walk_branch(node); break;
        case SourceKind::include: walk_include(node); break;
      }
    }
  }

  // Comments are not said again by each turn of a loop.
  // Elsewhere the line goes out with its own end, and is a copy in the map: no pieces.
  void walk_plain(const SourceNode& node) {
    if (loops_ != 0) return;
    out_.map.lines.push_back({file_, frame_, node.line, 0, 0});
    out_.text += node.plain;
    // The last line of an included file may have no end.
    if (node.plain.back() != '\n' && around_.size() > 1) out_.text += '\n';
  }

  // A rule line with its values. Each piece of the source is one of the map; a line that is a single piece from the
  // head of its source line is a copy, which the map keeps in fewer bytes.
  void walk_rule(const SourceNode& node) {
    SourceMap& map = out_.map;
    if (!take_steps(node.text.size() + 1, at(node.line, node.column))) return;
    const std::size_t begin = out_.text.size();
    MapLine line{file_, frame_, node.line, static_cast<std::uint32_t>(map.pieces.size()), 0};
    for (const SourcePiece& piece : node.text) {
      map.pieces.push_back(
          {static_cast<std::uint32_t>(out_.text.size() - begin), piece.line, piece.column, piece.is_mark});
      if (piece.is_mark) {
        append_value(piece, out_.text);
      } else {
        out_.text += piece.text;
      }
    }
    const std::size_t length = out_.text.size() - begin;
    if (length > kMostLine) {
      fault(at(node.line, node.column), "this rule expands to " + std::to_string(length) +
                                            " characters, and 1022 is the most: make two rules of it");
    }
    line.pieces = static_cast<std::uint32_t>(map.pieces.size()) - line.first_piece;
    const bool is_as_it_was = line.pieces == 1 && map.pieces.back().line == node.line &&
                              map.pieces.back().column == 0 && !map.pieces.back().is_value;
    if (is_as_it_was) {
      map.pieces.pop_back();
      line.pieces = 0;
    }
    map.lines.push_back(line);
    // The last line of a file may have no end. Something may follow it here, though: the next turn, or the file around.
    const bool wants_end = node.end.empty() && (loops_ != 0 || around_.size() > 1);
    out_.text += wants_end ? "\n" : node.end;
  }

  // Names that the file defines stay defined behind it. An include counts as 1000 steps, as a file has to be walked.
  void walk_include(const SourceNode& node) {
    const SourcePlace place = at(node.line, node.column);
    const std::optional<std::string> name = text_of(node.text);
    std::uint32_t number = 0;
    if (!name || !take_steps(1000, place)) return;
    if (!open_file(path_beside(*name), at(node.text.front().line, node.text.front().column), number)) return;
    if (std::find(around_.begin(), around_.end(), number) != around_.end()) {
      return fault(place, "this file includes itself, by way of the files around it: strike one of the includes out");
    }
    if (around_.size() >= kMostDepth) return fault(place, "includes are nested too deep: 64 is the most");
    MapFrame frame{.kind = MapFrame::Kind::include, .parent = frame_, .name = {}, .value = {}};
    frame.file = file_;
    frame.line = node.line;
    const std::uint32_t before = frame_;
    open_frame(std::move(frame));
    walk_file(number);
    frame_ = before;
  }

  void open_frame(MapFrame&& frame) {
    frame_ = static_cast<std::uint32_t>(out_.map.frames.size());
    out_.map.frames.push_back(std::move(frame));
  }

  // Says the body once for each value, or for each `step` values with several variables. A frame of the map is opened
  // for each variable of a turn, one within the other. What the body defines is forgotten behind the turn. The list is
  // copied: the body may define names, and a reference into the table of names would not be safe then.
  void walk_loop(const SourceNode& node) {
    const SourcePlace place = at(node.line, node.column);
    std::vector<std::string> own;
    const std::vector<std::string>* items = &own;
    std::shared_ptr<Table> table;
    if (node.name.empty()) {
      own = items_of(node.text);
    } else {
      const Binding* binding = find(node.name);
      if (binding == nullptr)
        return fault(place, in_quotes(node.name) + " is no list: define it above with %list or %table");
      if (binding->kind == Binding::Kind::table) {
        table = binding->table;
      } else if (binding->kind == Binding::Kind::list) {
        own = binding->items;
      } else {
        return fault(place, in_quotes(node.name) + " is no list: write (%" + node.name + ") for the words of its text");
      }
    }
    const std::size_t count = table != nullptr ? table->rows.size() : items->size();
    const std::size_t step = node.names.size();
    if (count == 0) return tell(true, place, "this loop makes nothing: its list is empty");
    if (table != nullptr && step != 1) {
      return fault(
          place, "a loop over a table has one variable, whose columns are written %" + node.names.front() + ".COLUMN");
    }
    if (count % step != 0) {
      return fault(place, "the list has " + counted(count, "value") + ", and the loop takes " + std::to_string(step) +
                              " at a time");
    }
    const std::size_t outside = bound_.size();
    for (const std::string& name : node.names) {
      if (bind(name, place) == nullptr) return unbind(outside);
    }
    const std::size_t inside = bound_.size();
    const std::uint32_t around = frame_;
    ++loops_;
    // An empty body costs a step a turn too: loops within loops would not end for a long time else.
    for (std::size_t turn = 0; turn < count && take_steps(1, place); turn += step) {
      frame_ = around;
      const std::size_t frames = out_.map.frames.size();
      const std::size_t lines = out_.map.lines.size();
      for (std::size_t i = 0; i < step; ++i) take_turn(node.names[i], *items, table, turn + i);
      walk(node.ways.front().body);
      unbind(inside);
      // A turn that has said nothing leaves nothing.
      if (out_.map.lines.size() == lines) out_.map.frames.resize(frames);
    }
    --loops_;
    frame_ = around;
    unbind(outside);
  }

  // Gives a variable its next value.
  void take_turn(const std::string& name, const std::vector<std::string>& items, const std::shared_ptr<Table>& table,
                 std::size_t index) {
    Binding& binding = *find(name);
    MapFrame frame{.kind = MapFrame::Kind::loop, .parent = frame_, .name = name, .value = {}};
    if (table == nullptr) {
      frame.value = binding.text = items[index];
      return open_frame(std::move(frame));
    }
    binding.kind = Binding::Kind::row;
    binding.table = table;
    binding.row = index;
    frame.kind = MapFrame::Kind::row;
    frame.file = table->places[index].file;
    frame.line = table->places[index].line;
    for (std::size_t i = 0; i < table->columns.size(); ++i) {
      ((((frame.value += i == 0 ? "" : " ")) += table->columns[i]) += '=') += table->rows[index][i];
    }
    open_frame(std::move(frame));
  }

  // ---- Conditions

  // None: it cannot be told, and has been said.
  // "Is set" means that the value is not empty: a name that nothing defines is a fault, not a test that fails.
  std::optional<bool> holds(const SourceTest& test) {
    std::string value;
    if (!append_value(test.name, value)) return std::nullopt;
    bool is_so = false;
    switch (test.kind) {
      case SourceTest::Kind::is_set: is_so = !value.empty(); break;
      case SourceTest::Kind::equal: {
        const std::optional<std::string> other = text_of(test.value);
        if (!other) return std::nullopt;
        is_so = value == *other;
        break;
      }
      case SourceTest::Kind::among: {
        std::vector<std::string> items;
        if (test.list_name.empty()) {
          items = items_of(test.value);
        } else {
          const Binding* list = find(test.list_name);
          if (list == nullptr || list->kind != Binding::Kind::list) {
            fault(at(test.name.line, test.name.column),
                  in_quotes(test.list_name) + " is no list: define it with %list");
            return std::nullopt;
          }
          items = list->items;
        }
        is_so = std::find(items.begin(), items.end(), value) != items.end();
        break;
      }
    }
    return is_so != test.is_negated;
  }

  // "and" binds closer than "or".
  // `all` is the group of tests joined by "and" that is being read, `any` whether one before it held. Every test is
  // asked, even if the outcome stands, so that a fault in any of them is told. Without tests, that of %else, it holds.
  std::optional<bool> hold(const std::vector<SourceTest>& tests) {
    bool any = false;
    bool all = true;
    for (const SourceTest& test : tests) {
      if (test.joined_by_or) {
        any = any || all;
        all = true;
      }
      const std::optional<bool> is_so = holds(test);
      if (!is_so) return std::nullopt;
      all = all && *is_so;
    }
    return any || all;
  }

  // The first way whose tests hold. If one cannot be told, none is taken: each could bring faults that follow from the
  // first.
  void walk_branch(const SourceNode& node) {
    for (const SourceWay& way : node.ways) {
      const std::optional<bool> is_so = hold(way.tests);
      if (!is_so) return;
      if (!*is_so) continue;
      return walk(way.body);
    }
  }

  // What is made, and what is read.
  Expansion& out_;
  const TextLookup& unsaved_;
  std::vector<std::unique_ptr<SourceText>> texts_;  // beside the files of the map
  std::unordered_map<std::string, std::uint32_t> numbers_;
  std::set<std::uint32_t> read_;
  std::vector<std::uint32_t> around_;  // the files that are being walked
  // Where the walk is: numbers of the file and of the innermost frame, and how many loops are around.
  std::uint32_t file_ = 0;
  std::uint32_t frame_ = 0;
  std::size_t loops_ = 0;
  std::unordered_map<std::string, Binding, NameHash, std::equal_to<>> names_;
  // The names in the order of their definition, the newest last.
  std::vector<std::string> bound_;
  // Messages that have been told: file, line, column, text.
  std::set<std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, std::string>> told_;
  std::size_t steps_ = 0;
  bool is_over_ = false;
};

}  // namespace

bool Expansion::has_errors() const {
  return std::any_of(messages.begin(), messages.end(), [](const SourceMessage& m) { return !m.is_warning; });
}

Expansion expand_source(const std::string& path, const TextLookup& unsaved) {
  Expansion expansion;
  Expander(expansion, unsaved).expand(path);
  return expansion;
}

}  // namespace lexon
