// The expansion of a source as a file beside it. The text is written first and then the map, which holds what the text
// and the files of the source were: whatever comes between, the map that stands there does not fit, and the next call
// expands again.
#include <array>
#include <cstdio>
#include <optional>

#include "data/platform.hpp"
#include "source/expand.hpp"
#include "source/source_text.hpp"

namespace lexon {

namespace {

std::optional<FileMark> mark_of(const std::string& path) {
  const File stream(regular_file_open(path, "rb"));
  return stream == nullptr ? std::nullopt : file_mark(stream.get());
}

bool is_as_marked(const std::string& path, const FileMark& mark) {
  const std::optional<FileMark> found = mark_of(path);
  return found && found->same_content(mark);
}

// The whole file; none if it is no ordinary file that can be read.
std::optional<std::string> content_of(const std::string& path) {
  const File stream(regular_file_open(path, "rb"));
  if (stream == nullptr) return std::nullopt;
  std::string content(static_cast<std::size_t>(file_size(stream.get())), '\0');
  if (!content.empty() && !file_read_at(stream.get(), 0, content.data(), content.size())) return std::nullopt;
  return content;
}

// Nothing that the expansion was made of has changed, nor what was made of it. Contents count, not times: a file that
// was copied or touched is the same.
bool is_current(const ExpandedFile& file) {
  const SourceMap& map = file.expansion.map;
  if (!is_as_marked(file.text_path, map.text_mark)) return false;
  for (const MappedFile& read : map.files) {
    if (!is_as_marked(read.path, read.mark)) return false;
  }
  return true;
}

// Puts a file in its place in one move. A name that is no ordinary file (a device, a pipe) is refused: it cannot be
// replaced.
bool write(const std::string& path, const std::string& text) {
  if (!writable_name(path).by_replacing) return false;
  DraftFile draft;
  if (!draft.open_beside(path)) return false;
  // What does not reach the file is noticed when it is put in place.
  static_cast<void>(std::fwrite(text.data(), 1, text.size(), draft.stream()));
  return draft.sync() && draft.put_in_place(path);
}

// The text first, then its map: see the head of this file. The lock keeps two programs that expand the same source from
// mixing the text of one with the map of the other.
void write_both(ExpandedFile& file) {
  SourceMap& map = file.expansion.map;
  const FolderLock lock(file.text_path);
  // A text that is what it was keeps its date, and what was compiled from it stays of use.
  const std::optional<std::string> before = content_of(file.text_path);
  const bool is_same = before && *before == file.expansion.text;
  file.wrote_text = !is_same;
  if (!is_same && !write(file.text_path, file.expansion.text)) {
    file.fault = file.text_path + ": cannot be written; --in-memory expands and renders without files";
    return;
  }
  if (const std::optional<FileMark> mark = mark_of(file.text_path)) map.text_mark = *mark;
  if (!write(file.map_path, source_map_text(map, file.map_path))) {
    file.fault = file.map_path + ": cannot be written; --in-memory expands and renders without files";
  }
  folder_sync(file.text_path);
}

}  // namespace

// A look at the content comes before all else: a source without directives is rule text, and gets no files beside it.
ExpandedFile expand_beside(const std::string& path, Expanding how, const TextLookup& unsaved) {
  ExpandedFile file;
  if (!path.ends_with(kSourceExtension)) return file;
  const std::string* text = unsaved ? unsaved(path) : nullptr;
  const std::optional<std::string> content = text != nullptr ? *text : content_of(path);
  if (!content || !has_directives(*content)) return file;
  file.is_source = true;
  file.text_path = path + ".txt";
  file.map_path = path + ".map";
  if (how == Expanding::when_changed) {
    // A map of another source that was moved here fits nothing.
    const bool is_known =
        source_map_read(file.map_path, file.expansion.map, true) && file.expansion.map.files.front().path == path;
    if (is_known && is_current(file)) return file;
  }
  file.expansion = expand_source(path, unsaved);
  file.expansion.map.text_path = file.text_path;
  file.is_new = true;
  if (!file.expansion.has_errors() && how != Expanding::in_memory) write_both(file);
  return file;
}

}  // namespace lexon
