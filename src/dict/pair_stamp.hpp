// The stamp beside an index says which dictionary and which index were built together, so that no lookup mixes the
// files of two builds. It carries the name of the index with ".stamp" behind it, since one index serves one dictionary.
//
//   dictionary.name     file name of the dictionary
//   dictionary, index   size, checksum and date of each file
//   dictionary.ends, index.ends     a checksum of both ends of each file, for the quick check
//   dictionary.before, index.before only while a build replaces the two files: what stood there before, if that was a
//                                   pair. Then either pair is good, and nothing between them.
#pragma once

#include <string>

#include "data/stamp.hpp"
#include "dict/dictionary.hpp"

namespace lexon {

inline constexpr const char* kStampName = "dictionary.name";
inline constexpr const char* kStampDictionary = "dictionary";
inline constexpr const char* kStampIndex = "index";
inline constexpr const char* kStampDictionaryEnds = "dictionary.ends";
inline constexpr const char* kStampIndexEnds = "index.ends";
inline constexpr const char* kStampDictionaryBefore = "dictionary.before";
inline constexpr const char* kStampIndexBefore = "index.before";
inline constexpr const char* kStampReplacing = "replacing";  // there while the files are replaced

[[nodiscard]] inline std::string pair_stamp_path(const std::string& index_path) {
  return index_path + ".stamp";
}

// A checksum of the first and the last 64 KiB of a file; none if they cannot be read.
[[nodiscard]] std::optional<std::int64_t> file_ends_hash(std::FILE* stream);

enum class Pairing {
  belong,    // of one build, or without a stamp
  changing,  // neither the old pair nor the new one, while a build replaces them, or after one that was broken off
  mixed,     // not of one build; or the stamp is none
};

// Do the two open files belong to each other? If not, `fault` of the dictionary names the file that is another.
[[nodiscard]] Pairing pair_check(Dictionary& dictionary, PairCheck check);

}  // namespace lexon
