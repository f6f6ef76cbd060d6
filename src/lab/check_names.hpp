// Names as numbers, and names that are written nearly alike.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace lexon {
inline namespace v1 {
namespace lab {

using NameId = std::uint32_t;
inline constexpr NameId kNoName = 0xFFFFFFFF;

class Names {
 public:
  NameId enter(std::string_view text);
  [[nodiscard]] NameId find(std::string_view text) const;  // or kNoName
  [[nodiscard]] const std::string& operator[](NameId id) const { return texts_[id]; }
  [[nodiscard]] std::size_t size() const { return texts_.size(); }

 private:
  std::deque<std::string> texts_;
  std::unordered_map<std::string_view, NameId> ids_;  // the keys point into `texts_`
};

// Is one most likely a slip of the pen for the other: another case, other signs in front, one letter more, less or
// other, two exchanged; of long names two such?
[[nodiscard]] bool is_near(std::string_view a, std::string_view b);

// The nearest of `known`, or null.
[[nodiscard]] const std::string* nearest(std::string_view name, const std::vector<const std::string*>& known);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
