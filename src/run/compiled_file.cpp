#include "run/compiled_file.hpp"

#include <utility>

#include "run/files.hpp"

namespace lexon {

namespace {

bool is_written_in_place(const CompiledFile& file) {
  return file.for_writing && file.draft.stream() == nullptr;
}

// False if not all that was written has reached the file.
bool close_in_place(CompiledFile& file) {
  std::FILE* stream = std::exchange(file.stream, nullptr);
  const bool written = std::ferror(stream) == 0;
  return std::fclose(stream) == 0 && written;
}

// An empty, old file is not trusted by any run.
void empty_in_place(const CompiledFile& file) {
  if (std::FILE* stream = file_open(file.path, "wb"); stream != nullptr) std::fclose(stream);
  file_time_reset(file.path);
}

}  // namespace

bool compiled_file_open_read(CompiledFile& file) {
  file.stream = file_open(file.path, "rb");
  return file.stream != nullptr;
}

bool compiled_file_open_write(CompiledFile& file) {
  file.stream = file_open(file.path, "wb");
  if (file.stream == nullptr) return false;
  file.for_writing = true;
  // Where the folder takes no second file, the content is written in place.
  if (!file.draft.open_beside(file.path)) return true;
  std::fclose(std::exchange(file.stream, file.draft.stream()));
  file_time_reset(file.path);
  return true;
}

bool compiled_file_finish(CompiledFile& file) {
  if (file.stream == nullptr) return true;
  if (!is_written_in_place(file)) {
    file.stream = nullptr;
    return file.draft.put_in_place(file.path);
  }
  if (close_in_place(file)) return true;
  empty_in_place(file);
  return false;
}

void compiled_file_discard(CompiledFile& file) {
  if (file.stream == nullptr) return;
  if (!file.for_writing) {
    std::fclose(std::exchange(file.stream, nullptr));
  } else if (is_written_in_place(file)) {
    static_cast<void>(close_in_place(file));
    empty_in_place(file);
  } else {
    file.stream = nullptr;
    file.draft.discard();
  }
}

void compiled_file_delete(CompiledFile& file) {
  compiled_file_discard(file);
  std::remove(file.path.c_str());
}

}  // namespace lexon
