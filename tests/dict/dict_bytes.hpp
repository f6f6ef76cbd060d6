// Dictionaries written byte by byte, and what they answer.
#pragma once

#include "data/pool.hpp"
#include "dict/dictionary.hpp"
#include "support/capture.hpp"
#include "support/session.hpp"
#include "support/test.hpp"

namespace lexon::test {

// ---- the files, from their smallest parts up

inline std::string u16(std::size_t value) {
  return {static_cast<char>(value / 256), static_cast<char>(value % 256)};
}

inline std::string text(const std::string& t) {
  return u16(t.size()) + t;
}

inline std::string entry(const std::string& key, std::size_t block) {
  return text(key) + u16(block);
}

inline std::string sized(const std::string& fields) {
  return u16(fields.size() + 2) + fields;
}

// A record with nothing in its fixed part.
inline std::string record(const std::string& hw, const std::string& cw, const std::string& id = "") {
  const std::string attributes = text("N") + std::string(10, '\0');
  return sized(text(hw) + text("") + text(cw) + text(attributes) + text(id));
}

inline std::string padded(std::string bytes, std::size_t size, char filler = '\0') {
  bytes.resize(size, filler);
  return bytes;
}

// A block of the dictionary file. `used` other than 0 is written in place of the true length.
inline std::string dict_block(char type, const std::string& content, std::size_t next = 0, std::size_t used = 0) {
  const std::string head = u16(used != 0 ? used : content.size() + 3) + type;
  return padded(head + content, 4094) + u16(next);
}
inline std::string data(const std::string& content, std::size_t next = 0) {
  return dict_block(1, content, next);
}
inline std::string keys(const std::string& content, std::size_t next = 0) {
  return dict_block(2, content, next);
}

// A block of the index file, for names of 12 characters unless told otherwise.
inline std::string index_block(const std::string& content, std::size_t next = 0, std::size_t name_size = 12) {
  const std::size_t head = name_size + 3;
  return padded(u16(head + content.size()) + std::string(head - 2, '?') + content, 1022) + u16(next);
}

inline std::string slot(const std::string& name, char levels, std::size_t root, std::size_t name_size = 12) {
  return padded(name, name_size) + 'u' + levels + u16(0x0102) + u16(root) + std::string("\3\4\5\6");
}

inline std::string header(const std::vector<std::string>& slots) {
  std::string bytes = "???";
  for (const std::string& s : slots) bytes += s;
  return padded(bytes, 4096);
}

// A header with trees for HW and CW.
inline std::string header_of(char hw_levels, std::size_t hw_root, char cw_levels, std::size_t cw_root, std::size_t name_size = 12,
                             const std::string& name = "d.idx") {
  return header({slot(name, hw_levels, hw_root, name_size), padded("", name_size + 10), slot(name, cw_levels, cw_root, name_size)});
}

// ---- a dictionary of these bytes, and what it answers

inline std::string words_of(const WordEntry* list) {
  std::string all;
  for (; list != nullptr; list = list->next) all += (all.empty() ? "" : ",") + std::string(list->hw);
  return all;
}

class TestedDictionary {
 public:
  TestedDictionary(const std::string& dictionary, const std::string& index) {
    opened.dictionary.reset(stream_of(dictionary));
    opened.index.reset(stream_of(index));
    dictionary_header_read(opened);
  }
  ~TestedDictionary() { session.pool.release_all(); }
  TestedDictionary(const TestedDictionary&) = delete;
  TestedDictionary& operator=(const TestedDictionary&) = delete;

  // The words of each group, groups parted by "|"; or the status.
  std::string find(int field, const char* key, bool with_index = true) {
    DictionaryFiles files = opened.files();
    if (!with_index) files.index = nullptr;
    LookupGroup* groups = nullptr;
    const Status s = dict_lookup(session, files, field, key, groups);
    EXPECT_EQ(session.state.engine_status, s);
    if (s != Status::ok) return groups == nullptr ? std::to_string(code(s)) : "groups in spite of a failure";
    std::string all;
    for (const LookupGroup* group = groups; group != nullptr; group = group->next) {
      all += (all.empty() ? "" : "|") + words_of(group->entries);
    }
    return all.empty() ? "none" : all;
  }

  Dictionary opened;
};

// ---- a small dictionary

// Data chains: 2 -> 3 (a to c), 4 (d), 5 (e to f). Key blocks: 6 -> 7 (u to w), 8 (x to y).
inline const std::string kWords = data(record("a", "u") + record("ab", "x"), 3) +                 // 2
                                  data(record("b", "v") + record("b", "u") + record("c", "u")) +  // 3
                                  data(record("d", "uu") + record("d", "u", "i")) +               // 4
                                  data(record("e", "w", "i") + record("f", "y"));                 // 5
inline const std::string kCwKeys = keys(entry("u", 4) + entry("u", 2) + entry("uu", 4), 7) +      // 6
                                   keys(entry("v", 2) + entry("w", 5)) +                          // 7
                                   keys(entry("x", 2) + entry("y", 5));                           // 8

// One level for HW: 1. Two for CW, the lower in the dictionary: 2.
inline const std::string kFlatIndex = index_block(entry("a", 2) + entry("d", 4) + entry("e", 5)) +  // 1
                                      index_block(entry("u", 6) + entry("x", 8));                   // 2

// Three levels for HW: 1 -> 2; 3 and 4; 5, 6 -> 7. Three for CW, the lowest in the dictionary: 8; 9 and 10.
inline const std::string kDeepIndex = index_block(entry("a", 3), 2) +                // 1
                                      index_block(entry("d", 4)) +                   // 2
                                      index_block(entry("a", 5)) +                   // 3
                                      index_block(entry("d", 6)) +                   // 4
                                      index_block(entry("a", 2)) +                   // 5
                                      index_block(entry("d", 4), 7) +                // 6
                                      index_block(entry("e", 5)) +                   // 7
                                      index_block(entry("u", 9) + entry("x", 10)) +  // 8
                                      index_block(entry("u", 6)) +                   // 9
                                      index_block(entry("x", 8));                    // 10

}  // namespace lexon::test
