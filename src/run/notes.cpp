#include "run/notes.hpp"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "data/pool.hpp"
#include "data/utf8.hpp"

namespace lexon {

namespace {

constexpr std::size_t kShownBytes = 64;  // of a long line, on each side of the place
// Room for sentences below which the rules are said to be many.
constexpr std::int64_t kScarceBytes = std::int64_t{2} << 20;

// "FILE:LINE", as compilers write it and editors find it.
std::string place(const std::string& path, std::int64_t line) {
  return path + ':' + std::to_string(line);
}

// How far from `at` the text may be cut without cutting a character.
std::size_t character_begin(std::string_view text, std::size_t at) {
  while (at > 0 && at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) --at;
  return at;
}

// The line, or what stands around the place in a long one, and a caret under the place.
std::string line_with_caret(std::string_view text, std::size_t column) {
  // Of a long line so many bytes on each side of the place are shown, whole characters at both cuts.
  const std::size_t begin = character_begin(text, column > kShownBytes ? column - kShownBytes : 0);
  const std::size_t end = character_begin(text, std::min(text.size(), column + kShownBytes));
  std::string line = begin > 0 ? "  ..." : "  ";
  std::string below(line.size(), ' ');
  line += text.substr(begin, end - begin);
  if (end < text.size()) line += "...";
  // Under each character one blank, and a tab under a tab, so that the caret stands right at any width of tabs.
  for (std::string_view rest = text.substr(begin, column - begin); !rest.empty();) {
    below += rest.front() == '\t' ? '\t' : ' ';
    rest.remove_prefix(utf8_first(rest).length);
  }
  return line + '\n' + below + '^';
}

std::string megabytes(std::int64_t bytes) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", static_cast<double>(bytes) / 1e6);
  return text;
}

// What rules and a sentence have together, were every block full.
std::int64_t room_bytes(const Pool& rules) {
  return std::int64_t{rules.max_blocks()} * kFirstBlockSize;
}

std::string rules_room(const Pool& rules) {
  return "rules use " + megabytes(rules.bytes_used()) + " of " + megabytes(room_bytes(rules)) + " MB";
}

// What reading a text has shown, with the path in front.
void note_text(const std::string& path, const TextWatch& text, Host& host) {
  for (const TextNote& note : text_notes(text))
    host.note({place(path, note.line) + ": " + note.text, note.is_loss, true});
}

// A line of a text, and what is to be said of a byte of it.
std::string line_note(const std::string& path, std::int64_t line, std::string_view text, std::size_t column, bool stays,
                      const std::string& what) {
  column = std::min(column, text.size());
  const std::size_t shown_column = utf8_count(text.substr(0, column)) + 1;
  return place(path, line) + ':' + std::to_string(shown_column) + (stays ? ": warning: " : ": ") + what + '\n' +
         line_with_caret(text, column);
}

// A rule of a grammar source is shown where it stands there; a value that a mark has there, where the mark stands.
std::string rule_note_text(const std::string& path, const SourceMap& map, const RuleNote& note) {
  const bool stays = is_warning(note.fault);
  const std::string what = rule_fault_text(note.fault);
  const MappedPlace from = map.place(note.line, note.column);
  if (from.file.empty()) return line_note(path, note.line, note.text, note.column, stays, what);
  std::string around = surroundings_text(from);
  around += (around.empty() ? "expanded to " : ", expanded to ") + place(path, note.line);
  return line_note(from.file, from.line, source_line_at(from.file, from.line), from.column, stays,
                   what + " (" + around + ')');
}

// The whole map, if the rules come from a grammar source.
SourceMap source_map_of(const RunContext& context) {
  SourceMap map;
  if (!context.source.is_source || context.source.is_new) return context.source.expansion.map;
  static_cast<void>(source_map_read(context.source.map_path, map, false));
  return map;
}

// Rules that found no room, or leave little: the number of blocks that is proposed is twice the present one.
void note_room(const RunSettings& settings, const RunContext& context, Host& host) {
  const Pool& rules = context.grammar.pool;
  const std::int64_t left = room_bytes(rules) - rules.bytes_used();
  const std::string more = "; --blocks " + std::to_string(2 * settings.blocks) + " makes room for more";
  if (context.rules_without_room) {
    const std::int64_t line = context.rule_notes.memory_line;
    const std::string& path = context.rule_text_path.empty() ? settings.rule_file : context.rule_text_path;
    const std::string where = line != 0 ? place(path, line) : path;
    host.note({where + ": no room for the rules: " + rules_room(rules) + more, true, true});
  } else if (left < kScarceBytes) {
    host.note({settings.rule_file + ": little room is left for sentences: " + rules_room(rules) + more, false, true});
  }
}

// What the end of the input shows: a sentence that it cut off, a start behind it, or no sentence at all.
void note_end(const RunSettings& settings, const RunContext& context, Host& host) {
  const std::string& path = settings.input_file;
  const InputNotes& notes = context.input_notes;
  if (notes.unclosed.number != 0) {
    host.note({place(path, notes.unclosed.number) + ": " + notes.unclosed.why, true, true});
  }
  if (!context.input_ended || context.tried() != 0 || notes.text.line == 0) return;
  if (settings.start_sentence > 1) {
    host.note({path + ": -S " + std::to_string(settings.start_sentence) + " is behind its end: it has " +
                   counted(context.skipped, "sentence that is closed", "sentences that are closed"),
               true, true});
  } else if (!notes.has_sentence) {
    host.note({path + ": holds no sentence: one begins with a line \"[S\" and ends with a line \"[/S]\"", true, true});
  }
}

}  // namespace

std::vector<TextNote> text_notes(const TextWatch& text, const TextWatch& before) {
  std::vector<TextNote> notes;
  const auto is_new = [](std::int64_t line, std::int64_t line_before) { return line != 0 && line_before == 0; };
  if (text.is_utf16) {
    if (!before.is_utf16) notes.push_back({1, "this text is UTF-16: save it as UTF-8", true});
    return notes;
  }
  if (text.has_mark && !before.has_mark) {
    notes.push_back({1, "a byte order mark hides how this line begins: save the text without it", true});
  }
  // What stands behind a NUL is lost to the line, so nothing that was seen behind one is worth a note.
  if (text.nul != 0) {
    if (before.nul == 0) {
      notes.push_back(
          {text.nul, "a NUL character hides the rest of this line: save the text as UTF-8, if it is one", true});
    }
    return notes;
  }
  if (is_new(text.long_line, before.long_line)) {
    notes.push_back({text.long_line, "this line has more than 1022 characters: its rest counts as another line", true});
  }
  // Other characters alone are an encoding of their own, which is all right. Both kinds in one text are a mistake.
  const bool is_mixed = text.utf8 != 0 && text.other != 0;
  if (is_mixed && (before.utf8 == 0 || before.other == 0)) {
    notes.push_back({text.other,
                     "characters that are not UTF-8, as those of line " + std::to_string(text.utf8) +
                         " are: save the text in one encoding",
                     false});
  }
  return notes;
}

std::string counted(std::int64_t count, const char* one, const char* many) {
  return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

void note_settings(const RunSettings& settings, Host& host) {
  const std::int64_t end = std::int64_t{settings.start_sentence} + settings.sentence_count;
  const bool meets_zero = settings.start_sentence <= 0 && (settings.sentence_count <= 0 || end > 0);
  if (settings.max_time_per_sentence != 0 && meets_zero) {
    host.note({"the sentence that -S makes number 0 has no time limit, whatever -T says: count from 1"});
  }
}

std::string source_message_text(const SourceMessage& message) {
  if (message.line == 0) return message.file + ": " + message.text;
  return line_note(message.file, message.line, message.shown, message.column, message.is_warning, message.text);
}

void note_source(const RunContext& context, Host& host) {
  for (const SourceMessage& message : context.source.expansion.messages)
    host.note({source_message_text(message), !message.is_warning, true});
}

void note_rules(const RunSettings& settings, const RunContext& context, Host& host) {
  const RuleNotes& rules = context.rule_notes;
  const std::string& path = context.rule_text_path.empty() ? settings.rule_file : context.rule_text_path;
  note_text(path, rules.text, host);
  // A large map is read only if there is something to find in it.
  const SourceMap map = rules.notes.empty() ? SourceMap() : source_map_of(context);
  for (const RuleNote& note : rules.notes) host.note({rule_note_text(path, map, note), !is_warning(note.fault), true});
  if (rules.last_line_fails) {
    host.note({path + ": no rule is in force, as the last line is refused: mend it, or end the text with "
                      "an empty line",
               true, true});
  }
  note_room(settings, context, host);
}

void note_input(const RunSettings& settings, const RunContext& context, Host& host) {
  note_text(settings.input_file, context.input_notes.text, host);
  note_end(settings, context, host);
  if (context.starved != 0) {
    host.note({counted(context.starved, "sentence", "sentences") +
                   " failed for want of memory: " + rules_room(context.grammar.pool) + "; --blocks " +
                   std::to_string(2 * settings.blocks) + " makes room for more",
               true});
  }
}

}  // namespace lexon
