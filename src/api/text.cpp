// What the library says and does without a grammar.
#include "api/core.hpp"

namespace lexon {
inline namespace v1 {

// As the programs tell it.
const char* version() noexcept {
  return LEXON_VERSION;
}

// A value that is none of these counts as a failure.
const char* to_string(Status status) noexcept {
  switch (status) {
    case Status::done: return "done";
    case Status::over_time: return "over time";
    case Status::stopped: return "stopped";
    default: return "failed";
  }
}

// "FILE:LINE:COLUMN: TEXT", without what there is not.
std::string to_string(const Message& message) {
  std::string place = message.file;
  const auto add = [&place](const std::string& part) { place += place.empty() ? part : ':' + part; };
  if (message.line != 0) add(std::to_string(message.line));
  if (message.column != 0) add(std::to_string(message.column));
  return place.empty() ? message.text : place + ": " + message.text;
}

// The parts point into `graphs`; joined they are the whole text, but for blanks at its end.
std::vector<std::string_view> split(std::string_view graphs) {
  std::vector<std::string_view> parts;
  for (std::string_view rest = graphs; !rest.empty();) {
    const std::string_view before = rest;
    sentence_pass(rest);
    const std::string_view part = before.substr(0, before.size() - rest.size());
    // Blank text behind the last sentence is no part; in front of a sentence it belongs to it.
    const bool is_blank = part.find_first_not_of(" \t\r\n") == std::string_view::npos;
    if (!is_blank || !rest.empty()) parts.push_back(part);
  }
  return parts;
}

}  // namespace v1
}  // namespace lexon
