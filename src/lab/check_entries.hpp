// Checks of an entry against its like: the class that all others of its kind have. Quiet where a dictionary has no such
// custom.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "lab/check.hpp"
#include "lab/word_index.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// Appends a finding for each entry whose first attribute, its class, seems to be missing.
void check_entries(std::span<const std::shared_ptr<const WordIndex>> indexes, std::vector<Finding>& findings);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
