#include "run/compiled_file.hpp"

#include <utility>

#include "run/files.hpp"

namespace lexon {

namespace {

// False for a file that is written in place, since its folder takes no new file.
bool has_draft(const CompiledFile& file) {
  return file.draft.stream() != nullptr;
}

// False if not all that was written has reached the file.
bool close_in_place(CompiledFile& file) {
  std::FILE* stream = std::exchange(file.stream, nullptr);
  const bool written = std::ferror(stream) == 0;
  return std::fclose(stream) == 0 && written;
}

void empty_in_place(const CompiledFile& file) {
  if (std::FILE* stream = file_open(file.path, "wb"); stream != nullptr) std::fclose(stream);
}

}  // namespace

bool compiled_file_open_read(CompiledFile& file) {
  file.stream = regular_file_open(file.path, "rb");
  file.for_writing = false;
  return file.stream != nullptr;
}

// The draft has no name before it is whole. Where the folder takes none, the file itself is emptied: a program that is
// killed then leaves it empty, which the next run takes for "to be made".
bool compiled_file_open_write(CompiledFile& file) {
  const WritableName name = writable_name(file.path);
  if (!name.by_replacing) return false;
  file.for_writing = true;
  if (file.draft.open_beside(file.path)) {
    file.stream = file.draft.stream();
  } else if (name.in_place) {
    file.stream = file_open(file.path, "wb+");
  }
  if (file.stream != nullptr) file.opened = stream_time(file.stream);
  return file.stream != nullptr;
}

bool compiled_file_finish(CompiledFile& file, std::optional<FileTime> time) {
  if (file.stream == nullptr) return true;
  // What was written in place and is not whole must not pass for compiled rules.
  if (!has_draft(file)) {
    if (time) stream_time_set(file.stream, *time);
    if (close_in_place(file)) return true;
    empty_in_place(file);
    return false;
  }
  file.stream = nullptr;
  // The date is set before the file has its name, so that nobody sees it with another one.
  const bool is_whole = file.draft.sync() && (!time || stream_time_set(file.draft.stream(), *time));
  if (is_whole && file.draft.put_in_place(file.path)) return true;
  file.draft.discard();
  return false;
}

// An empty file with the date that it would have if it had been emptied at its opening: the dates decide what the next
// run compiles.
void compiled_file_empty(CompiledFile& file) {
  if (file.stream == nullptr) return;
  if (!has_draft(file)) {
    static_cast<void>(close_in_place(file));
    return empty_in_place(file);
  }
  file.stream = nullptr;
  file.draft.discard();
  if (!file.draft.open_beside(file.path)) return;
  if (file.opened) stream_time_set(file.draft.stream(), *file.opened);
  static_cast<void>(file.draft.put_in_place(file.path));
}

void compiled_file_close(CompiledFile& file) {
  if (file.stream == nullptr) return;
  if (!file.for_writing) {
    std::fclose(std::exchange(file.stream, nullptr));
  } else if (has_draft(file)) {
    file.stream = nullptr;
    file.draft.discard();
  } else {
    static_cast<void>(close_in_place(file));
    empty_in_place(file);
  }
}

}  // namespace lexon
