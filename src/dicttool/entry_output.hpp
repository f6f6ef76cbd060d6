// Entry text that is made of other word lists.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <unordered_set>

#include "dicttool/record_view.hpp"

namespace lexon {

struct Session;

// How the words of a list become entries.
struct EntryForm {
  std::string cw;        // with {lemma}, {category} and {class}, the first attribute, in their places
  std::string id;        // likewise; may be empty
  std::string language;  // one letter or a code of two; empty: none
};

struct ListedWord {
  std::string_view form;
  std::string_view lemma;
  std::string_view category;
  std::string_view attributes;
  std::string_view gloss = {};
  std::uint32_t frequency = 0;
  std::uint8_t priority = 0;
  std::string_view concept_word = {};  // empty: it is made as the form says
};

// Writes entries, each of them once.
class EntryOutput {
 public:
  EntryOutput(Session& session, const EntryForm& form, std::FILE* out);

  enum class Result : std::uint8_t { written, known, impossible };
  // `impossible`: no line of entry text stands for the word; see `too_long`.
  Result write(const ListedWord& word);

  [[nodiscard]] std::int64_t written() const { return written_; }
  [[nodiscard]] std::int64_t known() const { return known_; }

 private:
  void fill(std::string_view form, const ListedWord& word, std::string& to) const;

  Session& session_;
  const EntryForm& form_;
  std::FILE* out_;
  std::string cw_;
  std::string id_;
  std::string line_;
  std::unordered_set<std::uint64_t> lines_;  // hashes
  std::int64_t written_ = 0;
  std::int64_t known_ = 0;
};

}  // namespace lexon
