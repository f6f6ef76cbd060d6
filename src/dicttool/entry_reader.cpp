#include "dicttool/entry_reader.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include "data/chars.hpp"
#include "data/session.hpp"
#include "dict/entry_text.hpp"

namespace lexon {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

bool EntryText::fill_chunk() {
  chunk_at_ = 0;
  chunk_end_ = std::fread(chunk_.data(), 1, chunk_.size(), stream_);
  return chunk_end_ != 0;
}

// No line takes more room than the longest entry, however long it is in the file.
void EntryText::take(const char* from, std::size_t length) {
  const std::size_t room = kMaxEntryLine + 1 - line_.size();  // one more for the first of two end characters
  too_long_ = too_long_ || length > room;
  line_.append(from, std::min(length, room));
}

// Reads a line without its end. False at the end of the file.
bool EntryText::read_line() {
  line_.clear();
  too_long_ = false;
  bool is_ended = false;
  while (!is_ended) {
    if (chunk_at_ == chunk_end_ && !fill_chunk()) break;
    const char* from = reinterpret_cast<const char*>(chunk_.data()) + chunk_at_;
    // The line may begin in one chunk and end in another, or fill several.
    const void* end = std::memchr(from, '\n', chunk_end_ - chunk_at_);
    is_ended = end != nullptr;
    const std::size_t length =
        is_ended ? static_cast<std::size_t>(static_cast<const char*>(end) - from) : chunk_end_ - chunk_at_;
    take(from, length);
    chunk_at_ += length + (is_ended ? 1 : 0);
  }
  // A last line without an end is a line all the same.
  if (!is_ended && line_.empty()) return false;
  if (is_ended && !line_.empty() && line_.back() == '\r') line_.pop_back();
  too_long_ = too_long_ || line_.size() > kMaxEntryLine;
  if (++line_number_ == 1 && line_.starts_with(kByteOrderMark)) line_.erase(0, kByteOrderMark.size());
  return true;
}

// Comments and empty lines. A line that begins with a NUL looks empty and is a bad one.
bool EntryText::is_passed_over() const {
  const char first = *skip_blanks(line_.c_str());
  const bool is_empty = first == '\0' && !too_long_ && line_.find('\0') == std::string::npos;
  return first == ';' || is_empty;
}

bool EntryText::refuse(std::string reason) {
  reason_ = std::move(reason);
  return false;
}

bool EntryText::check_line() {
  // In this order: a line that is cut or holds a NUL cannot be judged by what it says.
  if (too_long_) return refuse("the line has more than " + std::to_string(kMaxEntryLine) + " characters");
  if (line_.find('\0') != std::string::npos) return refuse("the line holds a NUL character");
  if (*skip_blanks(line_.c_str()) != '[') return refuse("an entry begins with \"[\"");
  return true;
}

// What the text may say and the files cannot hold.
bool EntryText::check_record(const RecordView& record) {
  // A record does not go over the end of a block.
  const std::size_t size = record_size(record);
  if (size > kMaxRecordSize) {
    return refuse("the entry needs " + std::to_string(size) + " bytes, and a block holds " +
                  std::to_string(kMaxRecordSize));
  }
  for (int field = kKeyHw; field <= kSlotCount; ++field) {
    const std::size_t length = record_key(record, field).size();
    if (!keys_.has(field) || length <= keys_.longest) continue;
    return refuse(std::string("the ") + key_field_name(field) + " has " + std::to_string(length) +
                  " bytes, and a key of the index at most " + std::to_string(keys_.longest));
  }
  return true;
}

// From the line to the record. The word in between is gone at the end.
EntryText::Line EntryText::convert() {
  if (!check_line()) return Line::bad;
  // The parser takes the last ")" for the end of the attributes only in front of a line end.
  line_.push_back('\n');
  WordEntry* word = nullptr;
  const Status status = parse_entry(session_, line_.c_str(), word, EntryStorage::sentence_pool);
  Line result = status == Status::memory ? Line::no_memory : Line::bad;
  if (status != Status::ok) {
    reason_ = entry_error_text(status);
  } else if (const RecordView record = record_of(*word); check_record(record)) {
    record_.clear();
    record_append(record, record_);
    result = Line::entry;
  }
  parsed_entry_free(session_, word, EntryStorage::sentence_pool);
  return result;
}

EntryText::Line EntryText::next() {
  do {
    if (!read_line()) return std::ferror(stream_) != 0 ? Line::unreadable : Line::end;
  } while (is_passed_over());
  return convert();
}

}  // namespace lexon
