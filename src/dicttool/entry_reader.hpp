// Reading a file of entry text, line by line, into binary records.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "dicttool/record_view.hpp"

namespace lexon {

// The longest line of entry text, without its end. A line written from any record that fits a block is shorter.
inline constexpr std::size_t kMaxEntryLine = 8191;

// The key fields of a dictionary, as bits, and the longest key that its index can hold.
struct KeyPlan {
  unsigned fields;  // bit n: key field n
  std::size_t longest;

  [[nodiscard]] bool has(int key_field) const { return (fields >> key_field & 1U) != 0; }
};
inline constexpr unsigned kDefaultKeys = 1U << kKeyHw | 1U << kKeyCw;

// Reads the lines of a text, with one or two characters as their end. Comments (";" behind blanks) and empty lines are
// passed over, and so is a byte order mark at the start.
class EntryText {
 public:
  enum class Line { entry, bad, end, unreadable, no_memory };

  EntryText(Session& session, std::FILE* stream, const KeyPlan& keys)
      : session_(session), stream_(stream), keys_(keys), chunk_(kChunk) {}

  // Reads the next entry. `entry`: `record()` holds it; `bad`: `reason()` tells why.
  [[nodiscard]] Line next();

  [[nodiscard]] std::int64_t line_number() const { return line_number_; }
  [[nodiscard]] const std::string& line() const { return line_; }  // as read last
  [[nodiscard]] const Bytes& record() const { return record_; }
  [[nodiscard]] const std::string& reason() const { return reason_; }

 private:
  static constexpr std::size_t kChunk = 65536;

  [[nodiscard]] bool read_line();
  [[nodiscard]] bool fill_chunk();
  void take(const char* from, std::size_t length);
  [[nodiscard]] bool is_passed_over() const;
  [[nodiscard]] Line convert();
  [[nodiscard]] bool check_line();
  [[nodiscard]] bool check_record(const RecordView& record);
  [[nodiscard]] bool refuse(std::string reason);

  Session& session_;
  std::FILE* stream_;
  KeyPlan keys_;
  Bytes chunk_;
  std::size_t chunk_at_ = 0;
  std::size_t chunk_end_ = 0;
  std::string line_;
  bool too_long_ = false;
  std::int64_t line_number_ = 0;
  Bytes record_;
  std::string reason_;
};

}  // namespace lexon
