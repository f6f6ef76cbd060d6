#include "run/compiled_file.hpp"

#include <utility>

#include "data/platform.hpp"
#include "run/files.hpp"

namespace lexon {

namespace {

// False if not all that was written has reached the file.
bool close_stream(CompiledFile& file) {
  if (file.stream == nullptr) return true;
  std::FILE* stream = std::exchange(file.stream, nullptr);
  const bool written = std::ferror(stream) == 0;
  return std::fclose(stream) == 0 && written;
}

}  // namespace

bool compiled_file_open_read(CompiledFile& file) {
  file.stream = file_open(file.path, "rb");
  return file.stream != nullptr;
}

bool compiled_file_open_write(CompiledFile& file) {
  std::FILE* in_place = file_open(file.path, "wb");
  if (in_place == nullptr) return false;
  file.draft = temp_file_make_beside(file.path);
  file.stream = file.draft.empty() ? nullptr : file_open(file.draft, "wb");
  if (file.stream == nullptr) {
    // The folder takes no second file: the content is written in place.
    file.draft.clear();
    file.stream = in_place;
    return true;
  }
  std::fclose(in_place);
  file_time_reset(file.path);
  return true;
}

bool compiled_file_finish(CompiledFile& file) {
  const bool written = close_stream(file);
  if (file.draft.empty()) return written;
  const std::string draft = std::exchange(file.draft, {});
  if (written && file_move(draft, file.path)) return true;
  std::remove(draft.c_str());
  return false;
}

void compiled_file_discard(CompiledFile& file) {
  close_stream(file);
  if (!file.draft.empty()) std::remove(std::exchange(file.draft, {}).c_str());
}

void compiled_file_delete(CompiledFile& file) {
  compiled_file_discard(file);
  std::remove(file.path.c_str());
}

}  // namespace lexon
