// What checks want to know of graphs: the names that they give, and what is wrong with them as graphs.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "lab/check.hpp"
#include "lab/check_names.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

struct GraphSurvey {
  // How often a name stands in the graphs, and where first.
  struct Use {
    std::int64_t count = 0;
    std::size_t file = 0;
    std::int64_t line = 0;
    std::size_t column = 0;  // characters, from 1
    std::size_t end_column = 0;
  };
  bool is_there = false;
  std::unordered_map<NameId, Use> attributes;
  std::unordered_map<NameId, Use> labels;
  std::unordered_map<NameId, Use> words;   // that are looked up
  std::unordered_map<NameId, Use> quoted;  // that are not
};

[[nodiscard]] GraphSurvey survey_graphs(const CheckInput& input, Names& names, std::vector<Finding>& findings);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
