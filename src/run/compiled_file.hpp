// A compiled rule file of a run, open for reading or for writing.
//
// What is written is a draft. Only when it is whole does it take the file's name, in one move: whoever reads the file
// meanwhile, through this name or another one, reads what stood there before, and a program that is killed on the way
// has changed nothing.
#pragma once

#include <cstdio>
#include <optional>
#include <string>

#include "data/platform.hpp"

namespace lexon {

struct CompiledFile {
  std::string path;             // the file's own name
  std::FILE* stream = nullptr;  // null while closed
  DraftFile draft;              // where the content is written; without one it is written in place
  bool for_writing = false;
  std::optional<FileTime> opened;  // the date that the file had if it had been emptied when it was opened for writing
};

// Open `file.path`. False when it cannot be opened: for writing, a file that is write-protected, or a folder that takes
// no new file, unless an ordinary file with this one name stands there: that is emptied and written in place.
[[nodiscard]] bool compiled_file_open_read(CompiledFile& file);
[[nodiscard]] bool compiled_file_open_write(CompiledFile& file);

// The three ends of a file; nothing happens to a closed one. The first puts what was written in its place, with the
// date `time` if there is one; false if not all of it could be written, and a draft then leaves the file as it was.
// The second puts an empty file there. The third closes the file and changes nothing more.
bool compiled_file_finish(CompiledFile& file, std::optional<FileTime> time = std::nullopt);
void compiled_file_empty(CompiledFile& file);
void compiled_file_close(CompiledFile& file);

}  // namespace lexon
