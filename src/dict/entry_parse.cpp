// Parsing an entry line: one function for each field, in the order of the line; the driver at the end calls them in
// turn. Nothing is allocated before a field's length is known.

#include <array>
#include <cstring>
#include <new>
#include <string_view>

#include "data/bytes.hpp"
#include "data/chars.hpp"
#include "data/output.hpp"
#include "data/scratch.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "dict/entry_text.hpp"

namespace lexon {

namespace {

// A line that is being read, and the word that is made of it.
struct EntryScan {
  const char* line;         // its start; messages show it whole
  const char* at;           // what is read next; never behind the terminator
  const char* behind_list;  // right behind the ")" of the attributes
  WordEntry& entry;         // fields that have not been read yet are null and 0
  EntryStorage storage;     // where the texts of all fields come from
  Scratch<1028> text;       // a field whose text differs from what is written
};

// Lines come from files with their line end, and from the program without one.
bool ends_line(char c) {
  return c == '\0' || c == '\n';
}

void* storage_alloc(Session& session, EntryStorage storage, std::size_t size) {
  const auto bytes = static_cast<std::int64_t>(size);
  return storage == EntryStorage::heap ? checked_malloc(bytes) : temp_alloc(session, bytes);
}

void storage_free(Session& session, EntryStorage storage, void* cell, std::size_t size) {
  if (storage == EntryStorage::heap) return heap_free_clear(cell);
  temp_free(session, cell, static_cast<std::int64_t>(size));
}

// A field that is never null: the surface form.
Status store_always(Session& session, const EntryScan& scan, char*& field, std::int32_t& length,
                    std::string_view text) {
  field = static_cast<char*>(storage_alloc(session, scan.storage, text.size() + 1));
  if (field == nullptr) return Status::memory;
  if (!text.empty()) std::memcpy(field, text.data(), text.size());
  field[text.size()] = '\0';
  length = static_cast<std::int32_t>(text.size());
  return Status::ok;
}

// An empty text leaves the field null.
Status store(Session& session, const EntryScan& scan, char*& field, std::int32_t& length, std::string_view text) {
  return text.empty() ? Status::ok : store_always(session, scan, field, length, text);
}

// The text from the current place up to the next `close`, which is stepped over.
Status store_up_to(Session& session, EntryScan& scan, char close, char*& field, std::int32_t& length, Status missing) {
  const char* end = std::strchr(scan.at, close);
  if (end == nullptr) return missing;
  const std::string_view text(scan.at, static_cast<std::size_t>(end - scan.at));
  scan.at = end + 1;
  return store(session, scan, field, length, text);
}

bool is_escape_pair(const char* at) {
  return at[0] == '\\' && (at[1] == '[' || at[1] == ']' || at[1] == '\\');
}

// The "{" of the id must follow, so that brackets can stand in a surface form without escapes.
bool closes_hw(const char* at) {
  return *at == ']' && *skip_blanks(at + 1) == '{';
}

// wanted: the character right behind an escape pair is never the start of another one.
void unescape(std::string_view raw, Scratch<1028>& text) {
  text.clear();
  for (std::size_t i = 0; i < raw.size(); ++i) {
    const bool is_pair = i + 1 < raw.size() && is_escape_pair(raw.data() + i);
    if (is_pair) text.append(raw[++i]);
    if (is_pair && ++i == raw.size()) break;
    text.append(raw[i]);
  }
}

Status read_hw(Session& session, EntryScan& scan) {
  const char* open = std::strchr(scan.at, '[');
  const char* end = open == nullptr ? nullptr : entry_hw_end(open + 1);
  if (end == nullptr) return kBadHw;
  unescape({open + 1, static_cast<std::size_t>(end - open - 1)}, scan.text);
  if (scan.text.size() > kMaxHwLength) return kBadHw;
  scan.at = end + 1;
  return store_always(session, scan, scan.entry.hw, scan.entry.hw_len, scan.text.view());
}

// The "{" is there: the surface form ends in front of it.
Status read_id(Session& session, EntryScan& scan) {
  scan.at = skip_blanks(scan.at) + 1;
  const Status s = store_up_to(session, scan, '}', scan.entry.id, scan.entry.id_len, kBadId);
  scan.at = skip_blanks(scan.at);
  return s;
}

// The gloss has no marks of its own: it goes up to what the next field begins with. A quote wins over a "(" wherever they
// stand, so that a gloss may hold parentheses if a concept word follows.
Status read_gloss(Session& session, EntryScan& scan) {
  if (*scan.at == '"' || *scan.at == '(') return Status::ok;
  const char* next = std::strstr(scan.at, " \"");
  if (next == nullptr) next = std::strstr(scan.at, " (");
  if (next == nullptr) return kBadGloss;
  // The blanks in front of the next field are not part of it; a gloss of nothing else is none.
  const char* end = next;
  while (end > scan.at && is_blank(end[-1])) --end;
  const std::string_view text(scan.at, static_cast<std::size_t>(end - scan.at));
  scan.at = skip_blanks(next);
  return store(session, scan, scan.entry.gloss, scan.entry.gloss_len, text);
}

// A quote closes the concept word by what follows it, so that quotes can stand inside.
bool closes_cw(const char* at) {
  if (*at != '"') return false;
  const char behind = *skip_blanks(at + 1);
  return behind == '(' || behind == '\n';
}

// Collects the concept word without its master definitions, the texts in braces, and steps behind its closing quote.
Status scan_cw(Session& session, EntryScan& scan) {
  scan.text.clear();
  bool in_definition = false;
  const char* at = scan.at;
  for (; !closes_cw(at); ++at) {
    if (*at == '\0') return kBadCwOrAttrs;
    // A "}" that closes belongs to the definition; one without a "{" is a character of the word.
    const bool closes_definition = in_definition && *at == '}';
    if (*at == '{') in_definition = true;
    if (!in_definition) scan.text.append(*at);
    if (closes_definition) in_definition = false;
  }
  scan.at = at + 1;
  if (in_definition) {
    out_print(session, ";;close-braces for the master definition may be missing\n");
    out_flush(session);
  }
  return in_definition || !scan.text.fits() ? kBadCwOrAttrs : Status::ok;
}

// The word may be left out if the attributes stand in its place. Spaces at its end go, with a message; tabs stay.
Status read_cw(Session& session, EntryScan& scan) {
  if (*scan.at != '"') return Status::ok;
  ++scan.at;
  if (const Status s = scan_cw(session, scan); s != Status::ok) return s;
  std::string_view text = scan.text.view();
  text = text.substr(0, text.find_last_not_of(' ') + 1);
  if (text.size() < scan.text.size()) out_print(session, ";;the spaces in the end of CW is deleted\n%s", scan.line);
  scan.at = skip_blanks(scan.at);
  return store(session, scan, scan.entry.cw, scan.entry.cw_len, text);
}

// A ")" behind an attribute closes the list by what follows it.
bool closes_list(const char* at) {
  if (*at != ')') return false;
  const char behind = *skip_blanks(at + 1);
  return behind == '\n' || behind == ';' || behind == '<';
}

// One attribute; inside its own parentheses neither blank, comma nor ")" ends it.
std::string_view scan_attribute(const char*& at) {
  const char* start = at;
  for (bool in_parentheses = false; !ends_line(*at); ++at) {
    if (*at == '(') in_parentheses = true;
    const bool ends = *at == ' ' || *at == ',' || closes_list(at);
    if (ends && !in_parentheses) break;
    if (*at == ')') in_parentheses = false;
  }
  return {start, static_cast<std::size_t>(at - start)};
}

const char* skip_separators(const char* at) {
  while (is_blank(*at) || *at == ',') ++at;
  return at;
}

Status read_attrs(Session& session, EntryScan& scan) {
  if (*scan.at != '(') return kBadCwOrAttrs;
  scan.text.clear();
  const char* at = skip_separators(scan.at + 1);
  // wanted: a ")" at the start of an attribute ends the list, whatever follows it.
  for (; *at != ')' && !ends_line(*at); at = skip_separators(at)) {
    if (!scan.text.empty()) scan.text.append(',');
    scan.text.append(scan_attribute(at));
  }
  // wanted: a list that runs up to the terminator counts as closed, one up to a line feed does not.
  const bool is_unclosed = *at == '\n';
  if (is_unclosed || scan.text.size() > kMaxAttrsLength) return kBadCwOrAttrs;
  scan.behind_list = *at == ')' ? at + 1 : at;
  scan.at = skip_blanks(scan.behind_list);
  return store(session, scan, scan.entry.attrs, scan.entry.attr_len, scan.text.view());
}

// Of the language one character is kept: the mark of its code, or the letter itself. The rest of the word is passed over,
// but a "." in front of something else than a letter is a mark by itself.
void read_language(EntryScan& scan) {
  if (*scan.at != '.' && !is_letter(*scan.at)) return;
  scan.entry.language[0] = *language_to_mark(scan.at);
  const bool stands_alone = *scan.at == '.' && !is_letter(scan.at[1]);
  ++scan.at;
  while (is_blank(*scan.at) || (!stands_alone && is_letter(*scan.at))) ++scan.at;
}

// A number behind its comma, with the blanks around it. Overflow keeps the low bits.
std::uint32_t read_number(const char*& at) {
  if (*at == ',') at = skip_blanks(at + 1);
  std::uint32_t number = 0;
  for (; is_digit(*at); ++at) number = number * 10 + static_cast<std::uint32_t>(*at - '0');
  at = skip_blanks(at);
  return number;
}

bool step_over(const char*& at, char c) {
  if (*at != c) return false;
  ++at;
  return true;
}

// "<language,frequency,priority>", of which each part may be left out from the end on; so may the closing ">" if ";" or the
// line's end follows.
Status read_numbers(Session&, EntryScan& scan) {
  if (!step_over(scan.at, '<')) return Status::ok;
  scan.at = skip_blanks(scan.at);
  read_language(scan);
  if (step_over(scan.at, '>')) return Status::ok;
  store_u32(scan.entry.frequency, read_number(scan.at));
  if (step_over(scan.at, '>')) return Status::ok;
  scan.entry.priority = static_cast<std::uint8_t>(read_number(scan.at));
  const bool ends = step_over(scan.at, '>') || *scan.at == ';' || ends_line(*scan.at);
  return ends ? Status::ok : kBadNumbers;
}

// Behind the entry proper: a letter or "." is the second character of the language.
Status read_second_mark(Session&, EntryScan& scan) {
  while (is_blank(*scan.at) || *scan.at == ';') ++scan.at;
  if (is_letter(*scan.at) || *scan.at == '.') scan.entry.language[1] = *scan.at++;
  return Status::ok;
}

Status read_extra1(Session& session, EntryScan& scan) {
  if (*scan.at != '[') {
    // wanted: without a first extra text, the second is looked for behind the attribute list.
    scan.at = scan.behind_list;
    return Status::ok;
  }
  ++scan.at;
  return store_up_to(session, scan, ']', scan.entry.extra1, scan.entry.extra1_len, kBadExtra1);
}

Status read_extra2(Session& session, EntryScan& scan) {
  if (!step_over(scan.at, '{')) return Status::ok;
  return store_up_to(session, scan, '}', scan.entry.extra2, scan.entry.extra2_len, kBadExtra2);
}

// In the order of the line; each leaves `at` where the next one begins.
constexpr std::array kFields = {read_hw,      read_id,          read_gloss,  read_cw,    read_attrs,
                                read_numbers, read_second_mark, read_extra1, read_extra2};

Status parse_fields(Session& session, const char* line, WordEntry& entry, EntryStorage storage) {
  EntryScan scan{.line = line, .at = line, .behind_list = line, .entry = entry, .storage = storage, .text = {}};
  for (const auto& read_field : kFields) {
    if (const Status s = read_field(session, scan); s != Status::ok) return s;
  }
  entry_sizes_set(entry);
  return Status::ok;
}

}  // namespace

const char* entry_hw_end(const char* hw) {
  for (const char* at = hw; *at != '\0'; ++at) {
    // Behind a pair the next character is looked at as a closing bracket only, and at the line's end not at all.
    if (is_escape_pair(at)) at += 2;
    if (closes_hw(at)) return at;
    if (*at == '\0') break;
  }
  return nullptr;
}

// Cells go back by the lengths with which the fields were read.
void parsed_entry_free(Session& session, WordEntry*& entry, EntryStorage storage) {
  if (entry == nullptr) return;
  const auto release = [&session, storage](char* text, std::int32_t length) {
    storage_free(session, storage, text, static_cast<std::size_t>(length) + 1);
  };
  release(entry->hw, entry->hw_len);
  release(entry->gloss, entry->gloss_len);
  release(entry->cw, entry->cw_len);
  release(entry->attrs, entry->attr_len);
  release(entry->id, entry->id_len);
  release(entry->extra1, entry->extra1_len);
  release(entry->extra2, entry->extra2_len);
  storage_free(session, storage, entry, sizeof(WordEntry));
  entry = nullptr;
}

Status parse_entry(Session& session, const char* line, WordEntry*& result, EntryStorage storage) {
  result = nullptr;
  void* cell = storage_alloc(session, storage, sizeof(WordEntry));
  if (cell == nullptr) return Status::memory;
  WordEntry* entry = new (cell) WordEntry{};
  entry->language[0] = entry->language[1] = '.';
  const Status s = parse_fields(session, line, *entry, storage);
  if (s == Status::ok) {
    result = entry;
  } else {
    parsed_entry_free(session, entry, storage);
  }
  return s;
}

}  // namespace lexon
