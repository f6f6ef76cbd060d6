#include "dicttool/entry_line.hpp"

#include <array>
#include <vector>

#include "data/chars.hpp"
#include "data/session.hpp"
#include "dict/entry_text.hpp"
#include "dicttool/entry_reader.hpp"

namespace lexon {

namespace {

// Does `c` follow, with nothing but blanks in front of it?
bool blanks_then(std::string_view text, std::size_t at, char c) {
  while (at < text.size() && is_blank(text[at])) ++at;
  return at < text.size() && text[at] == c;
}

// --- the surface form

// Where the text is being read: behind an escape pair the next character cannot begin another one.
enum Place : std::size_t { free_place, behind_pair };

bool is_escapable(char c) {
  return c == '[' || c == ']' || c == '\\';
}

// A "]" in front of "{" would end the form where it stands.
bool closes_early(std::string_view hw, std::size_t i) {
  return hw[i] == ']' && blanks_then(hw, i + 1, '{');
}

// Would the reader take this backslash and what is behind it for a pair? At the end the "]" of the line is behind it.
bool begins_pair(std::string_view hw, std::size_t i) {
  return hw[i] == '\\' && (i + 1 == hw.size() || is_escapable(hw[i + 1]));
}

// For each character and place: can it, with all that follows, be written there as it is, and as a pair?
struct Choice {
  std::array<bool, 2> plain;
  bool pair;
};

bool is_writable(const Choice& choice, Place place) {
  return choice.plain[place] || (place == free_place && choice.pair);
}

// From the end to the start, since the character behind decides whether one may be a pair.
std::vector<Choice> hw_choices(std::string_view hw) {
  // Behind the last character all is well.
  std::vector<Choice> choices(hw.size() + 1, Choice{{true, true}, true});
  for (std::size_t i = hw.size(); i-- > 0;) {
    const Choice& next = choices[i + 1];
    const bool is_plain = !closes_early(hw, i) && is_writable(next, free_place);
    choices[i].plain = {is_plain && !begins_pair(hw, i), is_plain};
    choices[i].pair = is_escapable(hw[i]) && is_writable(next, behind_pair);
  }
  return choices;
}

// As few pairs as possible. False: the form cannot be written in a way that reads back.
bool append_hw(std::string_view hw, std::string& line) {
  const std::vector<Choice> choices = hw_choices(hw);
  Place place = free_place;
  if (!is_writable(choices[0], place)) return false;
  for (std::size_t i = 0; i < hw.size(); ++i) {
    const bool is_pair = !choices[i].plain[place];
    if (is_pair) line += '\\';
    line += hw[i];
    place = is_pair ? behind_pair : free_place;
  }
  return true;
}

// --- the other fields

// A quote that blanks and "(" follow would close the concept word: an empty master definition parts them.
void append_cw(std::string_view cw, std::string& line) {
  for (std::size_t i = 0; i < cw.size(); ++i) {
    line += cw[i];
    if (cw[i] == '"' && blanks_then(cw, i + 1, '(')) line += "{}";
  }
}

// Of a mark the code of two letters, and of any other character that itself.
void append_language(char mark, std::string& line) {
  const std::array<char, 2> text = {mark, '\0'};
  const char* row = language_to_code(text.data());
  line.append(row, row == text.data() ? 1 : 2);
}

// From the ")" of the attributes to the end of the line.
void append_tail(const RecordView& record, std::string& line) {
  line += ") <";
  append_language(record.language[0], line);
  line += ',' + std::to_string(record.frequency) + ',' + std::to_string(record.priority) + ">;";
  if (record.language[1] != '.') line += record.language[1];
  if (record.extra1.empty() && record.extra2.empty()) return;
  line.append("[").append(record.extra1).append("]");
  // The second text can only stand behind the first, which may be empty.
  if (!record.extra2.empty()) line.append("{").append(record.extra2).append("}");
}

// Does the line stand for the record, and is it one line for who reads a text?
bool reads_back(Session& session, const std::string& line, const RecordView& record) {
  const bool is_line = line.find('\n') == line.size() - 1 && !line.ends_with("\r\n") && line.size() <= kMaxEntryLine &&
                       line.find('\0') == std::string::npos;
  WordEntry* word = nullptr;
  if (!is_line || parse_entry(session, line.c_str(), word, EntryStorage::sentence_pool) != Status::ok) return false;
  const bool is_same = record_of(*word) == record;
  parsed_entry_free(session, word, EntryStorage::sentence_pool);
  return is_same;
}

}  // namespace

bool entry_line_write(Session& session, const RecordView& record, std::string& line) {
  line = "[";
  if (!append_hw(record.hw, line)) return false;
  line.append("]{").append(record.id).append("} ");
  if (!record.gloss.empty()) line.append(record.gloss).append(" ");
  line += '"';
  append_cw(record.cw, line);
  line.append("\" (").append(record.attrs);
  append_tail(record, line);
  line += '\n';
  return reads_back(session, line, record);
}

}  // namespace lexon
