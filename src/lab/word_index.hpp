// The entries of a file in memory, found by form and by concept word.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "lab/check.hpp"
#include "lab/overlay.hpp"
#include "lab/text_file.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// Takes some 45 to 55 bytes an entry besides its form and its concept word. Read-only once it is made.
class WordIndex {
 public:
  struct Entry {
    std::uint32_t text;  // where form, concept word and index name stand, each with a NUL behind it
    std::uint32_t set;   // its attributes, among `sets`
    std::uint32_t line;  // from 1; 0 in a built dictionary
  };
  // Attributes that some entry has together.
  struct AttributeSet {
    std::string attributes;   // with commas between
    std::int64_t count = 0;   // of entries
    std::uint32_t first = 0;  // of these, into `entries`
  };

  // Reads entry text or a built dictionary. Throws Fault for a file that cannot be read.
  WordIndex(const std::string& path, const Overlay* unsaved);

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] const std::vector<Entry>& entries() const { return entries_; }
  [[nodiscard]] const std::vector<AttributeSet>& sets() const { return sets_; }
  // The line of the first entry without a concept word that has this text as its gloss, which is one word; 0: none. Such
  // a text is a concept word most often, whose quotes were forgotten.
  [[nodiscard]] std::int64_t with_gloss(const std::string& text) const {
    const auto found = glosses_.find(text);
    return found == glosses_.end() ? 0 : found->second;
  }
  [[nodiscard]] const EncodedLines& encoded() const { return encoded_; }  // of entry text
  // Of entry text: the hash of each entry and its line, in ascending order; empty for a built dictionary.
  [[nodiscard]] const std::vector<std::pair<std::size_t, std::int64_t>>& lines_by_hash() const {
    return lines_by_hash_;
  }
  // What is wrong with the entries themselves.
  [[nodiscard]] const std::vector<Finding>& findings() const { return findings_; }

  [[nodiscard]] std::string_view form(const Entry& entry) const { return field(entry, 0); }
  [[nodiscard]] std::string_view concept_word(const Entry& entry) const { return field(entry, 1); }
  [[nodiscard]] std::string_view id(const Entry& entry) const { return field(entry, 2); }

  // The numbers of the entries with this form, or concept word, in the order of the file.
  [[nodiscard]] std::vector<std::uint32_t> with_form(std::string_view form) const { return find(by_form_, 0, form); }
  [[nodiscard]] std::vector<std::uint32_t> with_concept(std::string_view word) const {
    return find(by_concept_, 1, word);
  }
  // The same by their names for the co-occurrence dictionary; entries without one are found by none.
  [[nodiscard]] std::vector<std::uint32_t> with_id(std::string_view id) const { return find(by_id_, 2, id); }

 private:
  [[nodiscard]] std::string_view field(const Entry& entry, int number) const {
    const char* text = texts_.data() + entry.text;
    for (; number > 0; --number) text += std::string_view(text).size() + 1;
    return text;
  }
  [[nodiscard]] std::vector<std::uint32_t> find(const std::vector<std::uint64_t>& by_key, int number,
                                                std::string_view key) const;
  void look_at_gloss(std::int64_t line, std::string_view gloss);
  void sort_keys();
  // Calls `use` with each two forms of a concept word, the one first and then the other.
  template <typename Use>
  void for_each_two_forms(const Use& use) const;
  void look_for_twins();

  std::string path_;
  std::string texts_;  // of all entries, one behind the other; see `Entry::text`
  std::vector<Entry> entries_;
  std::vector<AttributeSet> sets_;
  std::vector<std::uint64_t> by_form_;  // hash of the key above, number of the entry below, in ascending order
  std::vector<std::uint64_t> by_concept_;
  std::vector<std::uint64_t> by_id_;
  EncodedLines encoded_;
  std::vector<std::pair<std::size_t, std::int64_t>> lines_by_hash_;  // see `lines_by_hash`
  std::unordered_map<std::string, std::int64_t> glosses_;            // see `with_gloss`
  std::vector<Finding> findings_;
};

// What checks keep from call to call: the entries of files that have not changed. Indexes that nobody asked for since
// `forget_unused` was called last but one go.
class CheckCache {
 public:
  // Reads the file if it is not known as it stands now.
  [[nodiscard]] std::shared_ptr<const WordIndex> words(const std::string& path, const Overlay* unsaved);
  void forget_unused();

 private:
  struct Known {
    TextMark mark;  // the file as it was when `index` was made
    std::shared_ptr<const WordIndex> index;
    bool is_used = true;  // since the last `forget_unused`
  };
  std::map<std::string, Known> known_;
};

}  // namespace lab
}  // namespace v1
}  // namespace lexon
