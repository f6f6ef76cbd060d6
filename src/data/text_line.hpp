// Lines of text, whatever their line ends.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace lexon {

// What reading a text line by line has shown. The numbers of lines count from 1; 0: there is no such line.
struct TextWatch {
  std::int64_t line = 0;       // the one read last
  bool goes_on = false;        // it was longer than the buffer: its rest comes next
  bool is_utf16 = false;       // the text begins with the mark of UTF-16
  bool has_mark = false;       // ... of UTF-8
  std::int64_t nul = 0;        // the first line with a NUL, which hides what stands behind it
  std::int64_t utf8 = 0;       // the first with a character of UTF-8 that has more than a byte
  std::int64_t other = 0;      // the first with bytes that are none
  std::int64_t long_line = 0;  // the first that came in pieces
};

// Where text is read from: a file, memory, or memory and behind it a file. A handle, to be copied; the place of reading
// lies in what it stands for, and moves on there.
class TextSource {
 public:
  // The stream is not owned.
  TextSource(std::FILE* stream) : stream_(stream) {}
  // `rest` is what is still to be read: it loses its head. It must outlive the source.
  TextSource(std::string_view& rest) : rest_(&rest) {}
  TextSource(std::string_view& rest, std::FILE* behind) : stream_(behind), rest_(&rest) {}

  // From now on every byte that is read is appended to `copy`, as it stands in the text. Null: no longer.
  void keep(std::string* copy) { copy_ = copy; }

  // The next character, the pair CR LF counting as its LF; EOF at the end.
  [[nodiscard]] int next() {
    return rest_ == nullptr || (rest_->empty() && stream_ != nullptr) ? next_in_file() : next_in_memory();
  }

  // Of a text in memory: takes its next line into `to`, or the first `most` characters of it. Returns how many; 0 if
  // the line holds a CR, or nothing is left: `next` goes on there.
  [[nodiscard]] int take_plain(char* to, int most);

  // Of a file: reads its next line into the `size` bytes at `to`, or as much of it as finds room with a terminator behind
  // it; the pair CR LF becomes one LF. Returns how many characters; 0 at the end, and where memory comes first.
  [[nodiscard]] int take_of_file(char* to, int size);

  // The file; null for memory.
  [[nodiscard]] std::FILE* stream() const { return stream_; }

  // Did the reading end before the text did?
  [[nodiscard]] bool has_failed() const { return stream_ != nullptr && std::ferror(stream_) != 0; }

 private:
  int next_in_memory();
  int next_in_file();

  std::FILE* stream_ = nullptr;
  std::string_view* rest_ = nullptr;
  std::string* copy_ = nullptr;
};

// As `fgets`, with the pair CR LF read as one LF; a lone CR stays. Returns false at the end of the text. A line of
// `size` - 1 characters or more arrives in pieces. Null for `watch`: nobody wants to know.
[[nodiscard]] bool text_line_read(TextSource source, char* buffer, int size, TextWatch* watch = nullptr);

}  // namespace lexon
