#include "api/rule_messages.hpp"

#include <algorithm>
#include <charconv>

namespace lexon {
inline namespace v1 {

namespace {

constexpr std::string_view kErrorMark = ";;ERR(";
constexpr std::string_view kRoleMark = ";;ROLE ERR(";
constexpr std::string_view kWarningMark = ";;WARNING(";

std::int64_t number_take(std::string_view& text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  if (!text.empty()) text.remove_prefix(1);  // the comma, or the parenthesis
  return error == std::errc() ? number : 0;
}

// The marks stand at the end of what is printed, so the last one counts: a rule may hold the like.
struct Mark {
  std::size_t at = std::string_view::npos;
  std::size_t length = 0;
  MessageKind kind = MessageKind::error;
};

Mark mark_find(std::string_view line) {
  Mark found;
  for (const auto& [text, kind] : {std::pair(kErrorMark, MessageKind::error), std::pair(kRoleMark, MessageKind::error),
                                   std::pair(kWarningMark, MessageKind::warning)}) {
    const std::size_t at = line.rfind(text);
    if (at != std::string_view::npos && (found.at == std::string_view::npos || at > found.at)) {
      found = {at, text.size(), kind};
    }
  }
  return found;
}

Message message_at(const Mark& mark, std::string_view line, const std::string& file, std::string_view rest_of_rule) {
  std::string_view behind = line.substr(mark.at + mark.length);
  const std::int64_t column = number_take(behind) + 1;
  const std::int64_t line_number = number_take(behind);
  behind.remove_prefix(std::min(behind.find_first_not_of(", "), behind.size()));
  const bool is_error = mark.kind == MessageKind::error;
  std::string text = is_error ? "this rule is left out: error " : "";
  text += behind;
  if (is_error && !rest_of_rule.empty()) text.append(", at: ").append(rest_of_rule);
  return {mark.kind, file, line_number, column, text};
}

}  // namespace

void rule_messages_append(std::string_view printed, const std::string& file, std::vector<Message>& messages) {
  std::string_view rest_of_rule;
  while (!printed.empty()) {
    const std::size_t end = std::min(printed.find('\n'), printed.size());
    const std::string_view line = printed.substr(0, end);
    printed.remove_prefix(std::min(end + 1, printed.size()));
    const Mark mark = mark_find(line);
    if (mark.at == std::string_view::npos) {
      rest_of_rule = line.starts_with(";;") ? line.substr(2) : line;
      continue;
    }
    if (mark.at != 0) rest_of_rule = line.substr(line.starts_with(";;") ? 2 : 0, mark.at - 2);
    messages.push_back(message_at(mark, line, file, rest_of_rule));
    rest_of_rule = {};
  }
  // What is printed last without a mark is about the whole text.
  if (!rest_of_rule.empty()) messages.push_back({MessageKind::error, file, 0, 0, std::string(rest_of_rule)});
}

}  // namespace v1
}  // namespace lexon
