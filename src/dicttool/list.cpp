// Listing a dictionary.

#include "dicttool/list.hpp"

#include "data/platform.hpp"
#include "data/session.hpp"
#include "dict/dictionary.hpp"
#include "dicttool/entry_line.hpp"
#include "dicttool/record_scan.hpp"

namespace lexon {

bool dictionary_list(Session& session, const std::string& path, std::FILE* out, std::FILE* log) {
  Dictionary opened;
  // The index is not needed: records are read from the beginning of the file to its end.
  if (!dictionary_file_open(path, opened) || opened.name_size == 0) {
    std::fprintf(log, "%s\n", opened.fault.c_str());
    return false;
  }
  std::string line;
  bool is_good = true;
  const bool is_read = records_scan(opened, log, [&](const RecordView& record, std::int64_t offset) {
    if (entry_line_write(session, record, line)) {
      std::fwrite(line.data(), 1, line.size(), out);
      return true;
    }
    // One record without a text form does not keep the others from being listed.
    is_good = false;
    const bool is_memory = must_leave(session) == Status::memory;
    std::fprintf(log, "%s: offset %lld: %s\n", opened.path.c_str(), static_cast<long long>(offset),
                 is_memory ? "memory is exhausted" : "a record without a text form");
    return true;
  });
  return is_read && is_good && is_written(out);
}

}  // namespace lexon
