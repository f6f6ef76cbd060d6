// What the features of a word list are as attributes of a dictionary.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace lexon {

// The lists that can be read, and the tables that the program brings along for them.
enum class WordFormat : std::uint8_t { unimorph, lttoolbox, conllu, wordnet, propbank };
[[nodiscard]] const char* word_format_name(WordFormat format);
[[nodiscard]] std::string_view shipped_table(WordFormat format);

// A row is `FEATURES`, a tab, `ATTRIBUTES`: features with ";" between them, attributes with commas. A row with several
// features holds where all of them are there, goes before rows with fewer, and uses its features up. No attributes: the
// features say nothing. "-" for attributes: the word is left out, whatever other rows say. Lines that begin with "# " are comments.
class FeatureTable {
 public:
  // Adds the rows of a text; a later row replaces an earlier one of the same features. What is wrong is appended to
  // `faults` as "LINE: what".
  void read(std::string_view text, std::vector<std::string>& faults);

  // The attributes of a bundle of features with ";" between them; none: the word is left out. Features that no row has
  // are counted.
  [[nodiscard]] std::optional<std::string> attributes(const std::string& bundle);

  // Features that no row has, and how many words had them.
  [[nodiscard]] const std::map<std::string, std::int64_t>& unknown() const { return unknown_; }

 private:
  struct Row {
    std::vector<std::string> features;
    std::string attributes;
  };
  struct Answer {
    std::optional<std::string> attributes;
    std::vector<std::string> unknown;
  };
  [[nodiscard]] Answer answer(std::string_view bundle) const;

  std::vector<Row> rows_;
  std::map<std::vector<std::string>, std::size_t> numbers_;  // of the rows, by their features in order
  std::unordered_map<std::string, Answer> answers_;          // bundles come again and again
  std::map<std::string, std::int64_t> unknown_;
};

}  // namespace lexon
