// Notes of the core as messages.
#pragma once

#include <string>
#include <vector>

#include "api/core.hpp"

namespace lexon {
inline namespace v1 {

// What there is for them comes from `GrammarFiles::blocks`.
inline constexpr const char* kNoRoomForRules = "no room for the rules; more `blocks` make room for them";

// An error about `file` as a whole.
void error_append(std::vector<Message>& messages, const std::string& file, std::string text);

// The same, of a text that begins with the file's name.
void fault_append(std::vector<Message>& messages, const std::string& file, const std::string& fault);

// What reading `file` has shown since `before`; empty `file`: a text in memory.
void text_notes_append(std::vector<Message>& messages, const std::string& file, const TextWatch& text,
                       const TextWatch& before = {});

// What the rule parser has noted. Of rules from a grammar source `map` tells the places; else it is empty.
void rule_notes_append(std::vector<Message>& messages, const std::string& file, const RuleNotes& notes,
                       const SourceMap& map);

// What the expansion of a grammar source has noted.
void source_messages_append(std::vector<Message>& messages, const std::vector<SourceMessage>& source);

}  // namespace v1
}  // namespace lexon
