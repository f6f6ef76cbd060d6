#include "dict/pair_stamp.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "data/bytes.hpp"

namespace lexon {

namespace {

// Bytes at each end of a file that the quick look goes by: an exchange or a cut shows there, and a large dictionary
// need not be read.
constexpr std::int64_t kEnd = 65536;

// Is the file behind `stream` the one that the stamp knows under `key`?
bool is_as_stamped(std::FILE* stream, const Stamp& stamp, const char* key) {
  const std::optional<FileMark> mark = stamp.mark(key);
  const std::optional<FileMark> now = mark ? file_mark(stream) : std::nullopt;
  return mark && now && now->same_content(*mark);
}

// The same by size and ends alone.
bool is_as_stamped_quick(std::FILE* stream, const Stamp& stamp, const char* key, const char* ends_key) {
  const std::optional<FileMark> mark = stamp.mark(key);
  const std::optional<std::int64_t> ends = stamp.number(ends_key);
  return mark && ends && file_size(stream) == mark->size && file_ends_hash(stream) == ends;
}

}  // namespace

// Of a file that is shorter than both ends together some bytes count twice.
std::optional<std::int64_t> file_ends_hash(std::FILE* stream) {
  const std::unique_ptr<std::uint8_t[]> end(new std::uint8_t[kEnd]);
  ByteHash hash;
  for (const std::int64_t at : {std::int64_t{0}, std::max<std::int64_t>(file_size(stream) - kEnd, 0)}) {
    const std::int64_t got = file_read_some_at(stream, at, end.get(), kEnd);
    if (got < 0) return std::nullopt;
    hash.add(end.get(), static_cast<std::size_t>(got));
  }
  return static_cast<std::int64_t>(hash.value());
}

Pairing pair_check(Dictionary& dictionary, PairCheck check) {
  const std::string stamp_path = pair_stamp_path(dictionary.index_path);
  Stamp stamp;
  const StampState found = stamp_read(stamp_path, stamp);
  // A dictionary from elsewhere has no stamp, and is taken as it is.
  if (found == StampState::missing) return Pairing::belong;
  if (found == StampState::unopened) {
    dictionary.fault = stamp_path + ": cannot be opened: " + std::strerror(errno);
    return Pairing::mixed;
  }
  if (found == StampState::damaged) {
    dictionary.fault = stamp_path + ": cannot be read as a stamp; build the dictionary again, or remove this file";
    return Pairing::mixed;
  }
  std::FILE* words = dictionary.dictionary.get();
  std::FILE* index = dictionary.index.get();
  // While a build puts two new files in their places the stamp knows the marks of both pairs, and only a look at every
  // byte tells which of the files are there.
  const bool is_replacing = stamp.text(kStampReplacing) != nullptr;
  bool words_fit = false;
  bool index_fits = false;
  if (check == PairCheck::whole || is_replacing) {
    words_fit = is_as_stamped(words, stamp, kStampDictionary);
    index_fits = is_as_stamped(index, stamp, kStampIndex);
    const bool is_pair_before = is_replacing && is_as_stamped(words, stamp, kStampDictionaryBefore) &&
                                is_as_stamped(index, stamp, kStampIndexBefore);
    if (is_pair_before) return Pairing::belong;
  } else {
    words_fit = is_as_stamped_quick(words, stamp, kStampDictionary, kStampDictionaryEnds);
    index_fits = is_as_stamped_quick(index, stamp, kStampIndex, kStampIndexEnds);
  }
  if (words_fit && index_fits) return Pairing::belong;
  // The file that does not fit is named; of two, the words.
  const bool is_index = words_fit;
  dictionary.fault = (is_index ? dictionary.index_path : dictionary.path) + ": is not the file that was built with " +
                     (is_index ? dictionary.path : dictionary.index_path) + ": " +
                     (is_replacing ? "a build was broken off while it replaced the two"
                                   : "it has been exchanged, cut or changed since") +
                     "; build the dictionary again (" + stamp_path + " holds the sizes and checksums of the build)";
  return is_replacing ? Pairing::changing : Pairing::mixed;
}

}  // namespace lexon
