// A compiled rule file of a run, open for reading or for writing.
//
// A file that is written is first emptied in its own place, and its new content takes that place only when it is
// whole: a program that is killed on the way leaves an empty, old file that no later run trusts.
#pragma once

#include <cstdio>
#include <string>

#include "data/platform.hpp"

namespace lexon {

struct CompiledFile {
  std::string path;             // the file's own name
  std::FILE* stream = nullptr;  // null once closed
  DraftFile draft;              // where the content is written until it is whole; else it is written in place
  bool for_writing = false;
};

// Open `file.path`. False when it cannot be opened.
[[nodiscard]] bool compiled_file_open_read(CompiledFile& file);
[[nodiscard]] bool compiled_file_open_write(CompiledFile& file);

// Close the file; nothing happens to a closed one. The first puts what was written in its place, and is false if
// not all of it could be written; the second leaves the emptied file.
bool compiled_file_finish(CompiledFile& file);
void compiled_file_discard(CompiledFile& file);

// Discards what was written and deletes the file.
void compiled_file_delete(CompiledFile& file);

}  // namespace lexon
