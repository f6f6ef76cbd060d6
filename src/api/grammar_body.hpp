// What a grammar of the library holds.
#pragma once

#include <string>
#include <vector>

#include "api/core.hpp"

namespace lexon {
inline namespace v1 {

struct LoadedGrammar {
  core::Grammar rules;
  Dictionary words;
  Dictionary cooccurrence;  // not open when there is none
  std::vector<Message> messages;
  std::string printed;  // by the rule step
  bool is_usable = false;
};

struct Grammar::Body : LoadedGrammar {};

}  // namespace v1
}  // namespace lexon
