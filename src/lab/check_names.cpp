#include "lab/check_names.hpp"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// Bytes, signs in front not counted. Short names differ by a letter as a matter of course, and long ones may hold two
// slips.
constexpr std::size_t kShortName = 3;
constexpr std::size_t kLongName = 8;

// "progress" of "@progress" and of "^@progress": which sign stands in front is a slip of its own.
std::string_view without_signs(std::string_view name) {
  const std::size_t begin = name.find_first_not_of("@!#+-_.;^");
  return begin == std::string_view::npos ? name : name.substr(begin);
}

std::string lower(std::string_view name) {
  std::string result(name);
  for (char& c : result) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return result;
}

// Steps from one to the other, an exchange of neighbours counting as one; anything above `limit` is `limit` + 1.
std::size_t distance(std::string_view a, std::string_view b, std::size_t limit) {
  if (std::max(a.size(), b.size()) - std::min(a.size(), b.size()) > limit) return limit + 1;
  // Three rows of the table are enough: an exchange looks two rows back.
  std::vector<std::size_t> before(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(last.begin(), last.end(), 0U);
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0U : 1U)});
      const bool exchanged = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (exchanged) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    // No later row can be smaller.
    if (*std::min_element(row.begin(), row.end()) > limit) return limit + 1;
    // The rows of the table move up by one.
    before.swap(last);
    last.swap(row);
  }
  return last.back();
}

// 0: the same but for case or signs; above 2: not near.
std::size_t difference(std::string_view a, std::string_view b) {
  const std::string_view plain_a = without_signs(a);
  const std::string_view plain_b = without_signs(b);
  // Other signs or another case; with both, as in PL and @pl, the two are meant to stand side by side.
  if (plain_a == plain_b) return 0;
  if (lower(plain_a) == lower(plain_b)) return lower(a) == lower(b) ? 0 : 3;
  const std::size_t shorter = std::min(plain_a.size(), plain_b.size());
  if (shorter <= kShortName) {
    // Of two or three letters: the same first one, and one other.
    const bool is_short_slip = shorter >= 2 && plain_a.size() == plain_b.size() && a.front() == b.front() &&
                               a.size() == b.size() && distance(a, b, 1) == 1;
    return is_short_slip ? 2 : 3;
  }
  // Two slips only where the first letter is right.
  const std::size_t limit = shorter >= kLongName && plain_a.front() == plain_b.front() ? 2 : 1;
  const std::size_t steps = distance(plain_a, plain_b, limit);
  return steps <= limit ? steps : 3;
}

}  // namespace

NameId Names::enter(std::string_view text) {
  if (const auto known = ids_.find(text); known != ids_.end()) return known->second;
  // A deque: its texts stay where they are, and the keys point to them.
  const std::string& kept = texts_.emplace_back(text);
  const auto id = static_cast<NameId>(texts_.size() - 1);
  ids_.emplace(kept, id);
  return id;
}

NameId Names::find(std::string_view text) const {
  const auto known = ids_.find(text);
  return known == ids_.end() ? kNoName : known->second;
}

bool is_near(std::string_view a, std::string_view b) {
  return a != b && !a.empty() && !b.empty() && difference(a, b) <= 2;
}

const std::string* nearest(std::string_view name, const std::vector<const std::string*>& known) {
  const std::string* best = nullptr;
  std::size_t best_difference = 3;
  for (const std::string* other : known) {
    if (*other == name || other->empty() || name.empty()) continue;
    const std::size_t found = difference(name, *other);
    // Of names as near the first one is told.
    if (found >= best_difference) continue;
    best = other;
    best_difference = found;
  }
  return best;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
