// Building a binary dictionary and its index from entry text.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "dicttool/entry_reader.hpp"

namespace lexon {

struct Session;

struct BuildOptions {
  std::string entries = {};                     // path of the entry text
  std::string dictionary = {};                  // path of the dictionary to make; its index is made beside it
  bool skip_bad = false;                        // leave bad lines out, instead of failing
  unsigned key_fields = kDefaultKeys;           // bit n: key field n; the surface form is always one
  std::size_t memory = std::size_t{192} << 20;  // what sorting may use; it goes on in temporary files beyond
  bool force = false;                           // replace an index that belongs to another dictionary
};

// What has been built.
struct BuildFigures {
  std::int64_t entries = 0;
  std::int64_t bad_lines = 0;
  std::int64_t repeated = 0;            // entries that are the same, in all their parts, as one before
  std::uint32_t dictionary_blocks = 0;  // the header included
  std::uint32_t index_blocks = 0;
  std::string index;  // path of the index file
};

// Builds both files without names, and puts them in place with their stamp (dict/pair_stamp.hpp) when they are whole
// and on the disk. Bad lines and repeated entries go to `log` as FILE:LINE with the reason, and so does what else went wrong. An index that
// belongs to another dictionary is refused unless `force` is set. False on failure: then the old pair stands, or, where
// only one of the two could be replaced, the stamp keeps every opening from using them.
[[nodiscard]] bool dictionary_build(Session& session, const BuildOptions& options, std::FILE* log,
                                    BuildFigures& figures);

// The name of the index file of a dictionary, without a directory: the extension becomes ".idx", and other dots "_",
// since readers measure the name up to its first dot.
[[nodiscard]] std::string index_name_of(const std::string& dictionary);

}  // namespace lexon
