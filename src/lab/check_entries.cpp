#include "lab/check_entries.hpp"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// A slip of the pen is rare; what stands in many entries is meant.
constexpr std::int64_t kMostOdd = 3;
// A custom is one that so many entries keep for each that breaks it.
constexpr std::int64_t kEntriesForOne = 10;

std::string_view first_attribute(std::string_view attributes) {
  return attributes.substr(0, attributes.find(','));
}

// Where an attribute stands in the entries that have it.
struct Standing {
  std::int64_t in_front = 0;
  std::int64_t behind = 0;
  std::unordered_map<std::string_view, std::int64_t> leads;  // the first attributes that it stands behind
};

class EntryCheck {
 public:
  EntryCheck(std::span<const std::shared_ptr<const WordIndex>> indexes, std::vector<Finding>& findings)
      : indexes_(indexes), findings_(findings) {}

  void run() {
    count_standings();
    for (const auto& index : indexes_) {
      for (const WordIndex::AttributeSet& set : index->sets()) check_class(*index, set);
    }
  }

 private:
  void report(const WordIndex& index, const WordIndex::Entry& entry, const char* code, std::string what,
              std::string remedy) {
    const bool has_line = entry.line != 0;  // a built dictionary has none
    findings_.push_back({index.path(), entry.line, has_line ? std::size_t{1} : 0, has_line ? std::size_t{2} : 0,
                         Level::warning, code, std::move(what), std::move(remedy)});
  }

  // Of all files, since they count as one dictionary.
  void count_standings() {
    for (const auto& index : indexes_) {
      for (const WordIndex::AttributeSet& set : index->sets()) {
        entries_ += set.count;
        std::string_view rest = set.attributes;
        if (rest.empty()) {
          without_ += set.count;
          continue;
        }
        const std::string_view lead = first_attribute(rest);
        standings_[lead].in_front += set.count;
        while (rest.size() > first_attribute(rest).size()) {
          rest.remove_prefix(first_attribute(rest).size() + 1);
          Standing& standing = standings_[first_attribute(rest)];
          standing.behind += set.count;
          standing.leads[lead] += set.count;
        }
      }
    }
  }

  // The first attribute of an entry is its class by custom. One that stands in front here, and behind a class
  // everywhere else, has lost it; so has an entry without any.
  void check_class(const WordIndex& index, const WordIndex::AttributeSet& set) {
    const WordIndex::Entry& entry = index.entries()[set.first];
    // A word that is not written is there for its attributes.
    if (index.form(entry).empty()) return;
    const std::string form = '[' + std::string(index.form(entry)) + ']';
    if (set.attributes.empty()) {
      if (without_ > kMostOdd || entries_ - without_ < without_ * kEntriesForOne) return;
      report(index, entry, "entry-class",
             form + " has no attributes, and all entries but " + std::to_string(without_) + " have",
             "give it its class, as (N)");
      return;
    }
    const std::string_view name = first_attribute(set.attributes);
    const Standing& standing = standings_.at(name);
    if (standing.in_front > kMostOdd || standing.behind < standing.in_front * kEntriesForOne) return;
    const auto lead = std::ranges::max_element(standing.leads, {}, [](const auto& each) { return each.second; });
    report(index, entry, "entry-class",
           std::string(name) + " stands in front in " + form + ", and behind " + std::string(lead->first) + " in " +
               std::to_string(lead->second) + " entries",
           "did you mean (" + std::string(lead->first) + ',' + set.attributes + ")?");
  }

  std::span<const std::shared_ptr<const WordIndex>> indexes_;
  std::vector<Finding>& findings_;
  std::unordered_map<std::string_view, Standing> standings_;  // by attribute
  std::int64_t entries_ = 0;
  std::int64_t without_ = 0;  // of these, without attributes
};

}  // namespace

void check_entries(std::span<const std::shared_ptr<const WordIndex>> indexes, std::vector<Finding>& findings) {
  EntryCheck(indexes, findings).run();
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
