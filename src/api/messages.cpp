#include "api/messages.hpp"

#include <string_view>
#include <utility>

namespace lexon {
inline namespace v1 {

// About a file as a whole: neither line nor column.
void error_append(std::vector<Message>& messages, const std::string& file, std::string text) {
  messages.push_back({MessageKind::error, file, 0, 0, std::move(text)});
}

// What the core says of a file begins with its name, which a message has in a field of its own.
void fault_append(std::vector<Message>& messages, const std::string& file, const std::string& fault) {
  const bool is_named = !file.empty() && fault.starts_with(file + ": ");
  error_append(messages, file, is_named ? fault.substr(file.size() + 2) : fault);
}

// `before` is what an earlier look has told of already.
void text_notes_append(std::vector<Message>& messages, const std::string& file, const TextWatch& text,
                       const TextWatch& before) {
  for (const TextNote& note : text_notes(text, before)) {
    const MessageKind kind = note.is_loss ? MessageKind::error : MessageKind::warning;
    messages.push_back({kind, file, note.line, 0, note.text});
  }
}

// First what the text is, then rule by rule in the order of the file, last what became of the whole.
void rule_notes_append(std::vector<Message>& messages, const std::string& file, const RuleNotes& notes,
                       const SourceMap& map) {
  text_notes_append(messages, file, notes.text);
  for (const RuleNote& note : notes.notes) {
    const MessageKind kind = is_warning(note.fault) ? MessageKind::warning : MessageKind::error;
    // Of rules from a grammar source the place there is told. Columns count from 0 in the core, from 1 in a message.
    const MappedPlace from = map.place(note.line, note.column);
    const std::string around = surroundings_text(from);
    const std::string text = rule_fault_text(note.fault) + (around.empty() ? "" : " (" + around + ')');
    const bool is_mapped = !from.file.empty();
    messages.push_back({kind, is_mapped ? from.file : file, is_mapped ? from.line : note.line,
                        static_cast<std::int64_t>(is_mapped ? from.column : note.column) + 1, text});
  }
  if (notes.last_line_fails) {
    error_append(messages, file,
                 "no rule is in force, as the last line is refused: mend it, or end the text with an empty line");
  }
  // The line at which the room for rules ended.
  if (notes.memory_line != 0) messages.push_back({MessageKind::error, file, notes.memory_line, 0, kNoRoomForRules});
}

void source_messages_append(std::vector<Message>& messages, const std::vector<SourceMessage>& source) {
  for (const SourceMessage& message : source) {
    const MessageKind kind = message.is_warning ? MessageKind::warning : MessageKind::error;
    // A message about a file as a whole has neither line nor column.
    const auto column = message.line == 0 ? 0 : static_cast<std::int64_t>(message.column) + 1;
    messages.push_back({kind, message.file, message.line, column, message.text});
  }
}

}  // namespace v1
}  // namespace lexon
