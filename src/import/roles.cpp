#include "import/roles.hpp"

#include <cctype>

namespace lexon {
namespace {

// What is wrong with a label; null if nothing is.
const char* fault_of(const std::string& label) {
  if (label.empty()) return "a label is missing behind the tab";
  if (label.find_first_of(" \t.,():\"") != std::string::npos) return "a label has no blanks and none of . , ( ) : \"";
  if (label[0] != '@' && label.size() > kMaxLabel) return "a label has at most three letters, or no rule can follow it";
  return nullptr;
}

}  // namespace

// `role` may be that of a source with its colon (:ARG0, :ARG0-of), a role with a value (:polarity=-), a dependency (nsubj)
// or a feature (Number=Plur): the readers ask for them by the same text, so that one table serves all.
std::vector<SourceError> RoleTable::read(std::istream& in) {
  std::vector<SourceError> errors;
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line[0] == '#') continue;
    // The first tab: a label has none, and a line with two is told by the check of the label.
    const std::size_t tab = line.find('\t');
    if (tab == std::string::npos || tab == 0) {
      errors.push_back({{number, 1}, "a line is a role, a tab and a label"});
      continue;
    }
    const std::string label = line.substr(tab + 1);
    if (const char* fault = fault_of(label)) {
      errors.push_back({{number, static_cast<int>(tab) + 2}, fault});
      continue;
    }
    labels_[line.substr(0, tab)] = label;
  }
  return errors;
}

// The pointer holds until the table is read into again.
const std::string* RoleTable::find(const std::string& role) const {
  const auto found = labels_.find(role);
  return found == labels_.end() ? nullptr : &found->second;
}

// Two roles may become one label so; the counts of roles that the table lacks name the whole role.
std::string RoleTable::cut(std::string_view role) {
  std::string label;
  for (const char c : role) {
    if (label.size() == kMaxLabel) break;
    if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
      label += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
  }
  return label.empty() ? "rel" : label;
}

}  // namespace lexon
