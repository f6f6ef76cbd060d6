#include "dicttool/feature_table.hpp"

#include <algorithm>

#include "dicttool/text_fields.hpp"

namespace lexon {

// A later row for the same features replaces the earlier one, so that a table of the user can override the shipped one.
// Features are sorted, so that their order in the row does not count.
void FeatureTable::read(std::string_view text, std::vector<std::string>& faults) {
  answers_.clear();
  std::int64_t number = 0;
  for (std::string_view line; take_line(text, line);) {
    ++number;
    // A comment has a blank behind its sign: features may begin with one.
    if (line.empty() || line == "#" || line.starts_with("# ")) continue;
    const std::size_t tab = line.find('\t');
    if (tab == std::string_view::npos || tab == 0) {
      faults.push_back(std::to_string(number) + ": a row is FEATURES, a tab and ATTRIBUTES");
      continue;
    }
    Row row;
    for (const std::string_view feature : fields_of(line.substr(0, tab), ';')) row.features.emplace_back(feature);
    std::sort(row.features.begin(), row.features.end());
    row.attributes = line.substr(tab + 1);
    const auto [place, is_new] = numbers_.emplace(row.features, rows_.size());
    if (is_new) {
      rows_.push_back(std::move(row));
    } else {
      rows_[place->second].attributes = std::move(row.attributes);
    }
  }
}

// Rows that ask for most features come first, and each feature of the bundle serves one row; those of one number come
// in order of the table. Attributes come in the order in which their features stand in the bundle. A row with "-"
// leaves the word out, whatever the others say.
FeatureTable::Answer FeatureTable::answer(std::string_view bundle) const {
  std::vector<std::string_view> left = fields_of(bundle, ';');
  // Rows whose features the bundle has, all of them.
  std::vector<const Row*> tried;
  for (const Row& row : rows_) {
    const bool fits = std::all_of(row.features.begin(), row.features.end(), [&left](const std::string& feature) {
      return std::find(left.begin(), left.end(), feature) != left.end();
    });
    if (fits && row.attributes == "-") return {};
    if (fits) tried.push_back(&row);
  }
  std::stable_sort(tried.begin(), tried.end(),
                   [](const Row* a, const Row* b) { return a->features.size() > b->features.size(); });
  std::vector<const Row*> at(left.size());  // the row that a feature of the bundle begins
  std::vector<bool> used(left.size());
  for (const Row* row : tried) {
    // Where in the bundle its features stand that no row has used so far.
    std::vector<std::size_t> places;
    for (const std::string& feature : row->features) {
      for (std::size_t i = 0; i < left.size(); ++i) {
        if (!used[i] && left[i] == feature) {
          places.push_back(i);
          break;
        }
      }
    }
    if (places.size() != row->features.size()) continue;
    for (const std::size_t place : places) used[place] = true;
    at[*std::min_element(places.begin(), places.end())] = row;
  }
  Answer answer;
  std::string attributes;
  for (std::size_t i = 0; i < left.size(); ++i) {
    // A feature that served no row is one that the table lacks.
    if (!used[i] && !left[i].empty()) answer.unknown.emplace_back(left[i]);
    if (at[i] == nullptr || at[i]->attributes.empty()) continue;
    attributes += (attributes.empty() ? "" : ",") + at[i]->attributes;
  }
  answer.attributes = std::move(attributes);
  return answer;
}

// Lists of a million words have some hundred bundles, so answers are kept.
std::optional<std::string> FeatureTable::attributes(const std::string& bundle) {
  const auto [found, is_new] = answers_.try_emplace(bundle);
  if (is_new) found->second = answer(bundle);
  for (const std::string& feature : found->second.unknown) ++unknown_[feature];
  return found->second.attributes;
}

}  // namespace lexon
