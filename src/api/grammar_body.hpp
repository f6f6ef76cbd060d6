// What a grammar of the library holds.
#pragma once

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "api/core.hpp"

namespace lexon {
inline namespace v1 {

// An open dictionary with its index. Read-only once open.
class OpenDictionary {
 public:
  OpenDictionary() = default;
  ~OpenDictionary();
  OpenDictionary(const OpenDictionary&) = delete;
  OpenDictionary& operator=(const OpenDictionary&) = delete;

  enum class Use { words, cooccurrence };
  // False: `messages` has got one more, and the dictionary cannot be used.
  bool open(const std::string& path, Use use, std::vector<Message>& messages);

  // Nulls as long as it is not open. The lookup changes nothing behind these pointers.
  [[nodiscard]] DictionaryFiles files() const;
  // Names the file behind one of its streams; empty for another stream.
  [[nodiscard]] std::string name_of(const std::FILE* stream) const;

 private:
  std::string path_;
  std::FILE* dictionary_ = nullptr;
  std::FILE* index_ = nullptr;
  std::array<IndexDescriptor*, kKeyFields> slots_{};
};

struct LoadedGrammar {
  core::Grammar rules;
  OpenDictionary words;
  OpenDictionary cooccurrence;
  std::vector<Message> messages;
  bool is_usable = false;
};

struct Grammar::Body : LoadedGrammar {};

}  // namespace v1
}  // namespace lexon
