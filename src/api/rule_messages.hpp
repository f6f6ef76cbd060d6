// What the rule parser has printed, as messages.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "api/core.hpp"

namespace lexon {
inline namespace v1 {

// `printed`: ";;", the rule from where it is wrong on, and behind it ";;ERR(column,line)" or the like and what is
// wrong. Other lines become errors of their own. `file` names the rules in the messages.
void rule_messages_append(std::string_view printed, const std::string& file, std::vector<Message>& messages);

}  // namespace v1
}  // namespace lexon
