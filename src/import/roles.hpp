// The table that turns roles of a meaning bank, or dependencies of a treebank, into labels of relations and into
// attributes.
#pragma once

#include <istream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "import/meaning.hpp"

namespace lexon {

// The tables that the program brings along, as text.
extern const char* const kAmrRoles;
extern const char* const kDependencyRoles;

// A role becomes at most this many letters: a rule can follow no longer label.
constexpr std::size_t kMaxLabel = 3;

class RoleTable {
 public:
  // Adds the lines of a table, `role`, a tab, `label`; a later line replaces an earlier one. Says what is wrong with a
  // line and goes on with the next.
  std::vector<SourceError> read(std::istream& in);

  // The label of a role with its colon, or the attribute of a `:role=value`; null if the table lacks it.
  const std::string* find(const std::string& role) const;

  // The label of a role that the table lacks: its first three letters or digits, in lower case.
  static std::string cut(std::string_view role);

 private:
  std::map<std::string, std::string> labels_;
};

}  // namespace lexon
