#include "run/borders.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>

#include "data/platform.hpp"
#include "data/sentence.hpp"
#include "graph/line_kind.hpp"
#include "run/files.hpp"

namespace lexon {

namespace {

// Borders that are kept at most: they fit into a stamp, and what lies between two of them is passed over in no time.
constexpr std::size_t kMostPlaces = 1024;
// Bytes that are read before their hash is taken.
constexpr std::size_t kHashed = std::size_t{64} << 10;

// In the first column. A line that goes on is looked at in pieces, as everywhere.
bool ends_a_sentence(const char* line) {
  return std::strncmp(line, "[/S", 3) == 0 || std::strncmp(line, "[/T", 3) == 0;
}

// Every second border goes when there are too many.
void place_add(Borders& borders, const Border& place) {
  if (borders.sentences % borders.every != 0) return;
  if (borders.places.size() == kMostPlaces) {
    for (std::size_t i = 0; i < kMostPlaces / 2; ++i) borders.places[i] = borders.places[2 * i];
    borders.places.resize(kMostPlaces / 2);
    borders.every *= 2;
    if (borders.sentences % borders.every != 0) return;
  }
  borders.places.push_back(place);
}

// What has been read of the input, as bytes.
class ReadBytes {
 public:
  explicit ReadBytes(TextSource& source) { source.keep(&text_); }

  [[nodiscard]] std::int64_t count() const { return hashed_ + static_cast<std::int64_t>(text_.size()); }
  void empty() {
    hash_.add(text_.data(), text_.size());
    hashed_ += static_cast<std::int64_t>(text_.size());
    text_.clear();
  }
  void empty_if_full() {
    if (text_.size() >= kHashed) empty();
  }
  [[nodiscard]] std::uint64_t hash() const { return hash_.value(); }

 private:
  std::string text_;
  std::int64_t hashed_ = 0;
  ByteHash hash_;
};

// The one pass over the whole input. Borders, size and hash are of the bytes that were read; if the file is another one
// behind the pass, none of them is of use.
std::string pass_over(std::FILE* stream, std::int64_t start, const std::atomic<bool>& stop, Borders& borders) {
  const auto before = file_state(stream);
  borders = {};
  borders.start = start;
  TextWatch lines;
  TextSource source(stream);
  ReadBytes bytes(source);
  bool is_there = skip_sentences(source, start - 1, lines, stop) == start - 1;
  while (is_there && !stop) {
    bytes.empty_if_full();
    const Border place{bytes.count(), lines.line, lines.goes_on};
    // What stands behind the last sentence counts as one, as the run tries it.
    const bool ends = sentence_pass(source, &lines);
    is_there = ends || bytes.count() > place.offset;
    if (!is_there) break;
    place_add(borders, place);
    ++borders.sentences;
  }
  if (stop) return "cancelled";
  if (source.has_failed()) return "cannot be read to its end";
  const auto after = file_state(stream);
  if (!before || before != after || before->size != bytes.count()) return "changes while it is read";
  bytes.empty();
  borders.input = {bytes.count(), bytes.hash(), before->written};
  return {};
}

// ---- The file

std::string written(const Border& place) {
  return std::to_string(place.offset) + ' ' + std::to_string(place.line) + (place.goes_on ? " 1" : " 0");
}

// The three numbers of a border: offset, lines, whether the last one goes on. False unless they are all and alone.
bool read_place(std::string_view text, Border& place) {
  std::array<std::int64_t, 3> numbers{};
  for (std::int64_t& number : numbers) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  }
  place = {numbers[0], numbers[1], numbers[2] != 0};
  return text.empty();
}

Stamp stamp_of(const Borders& borders) {
  Stamp stamp;
  stamp.put("input", borders.input);
  stamp.put("start", borders.start);
  stamp.put("sentences", borders.sentences);
  stamp.put("every", borders.every);
  for (std::size_t i = 0; i < borders.places.size(); ++i) stamp.put(std::to_string(i), written(borders.places[i]));
  return stamp;
}

// False for what is no file of borders, whole and in order.
bool borders_read(const std::string& path, Borders& borders) {
  Stamp stamp;
  if (stamp_read(path, stamp) != StampState::whole) return false;
  const auto mark = stamp.mark("input");
  const auto start = stamp.number("start");
  const auto sentences = stamp.number("sentences");
  const auto every = stamp.number("every");
  if (!mark || !start || !sentences || !every || *every < 1 || *sentences < 0) return false;
  borders = {*mark, *start, *sentences, *every, {}};
  const std::int64_t count = (*sentences + *every - 1) / *every;
  if (count > static_cast<std::int64_t>(kMostPlaces)) return false;
  for (std::int64_t i = 0; i < count; ++i) {
    const std::string* text = stamp.text(std::to_string(i));
    Border place;
    if (text == nullptr || !read_place(*text, place) || place.offset > mark->size) return false;
    if (!borders.places.empty() && place.offset < borders.places.back().offset) return false;
    borders.places.push_back(place);
  }
  return true;
}

// Size and date, not the content: that would take as long as to find the borders anew.
bool is_of(const Borders& borders, std::FILE* stream, std::int64_t start) {
  const auto state = file_state(stream);
  return state && borders.start == start && state->size == borders.input.size && state->written == borders.input.time;
}

}  // namespace

// wanted: "[/T" ends a sentence here and nowhere else, and leading blanks do not.
std::int64_t skip_sentences(TextSource source, std::int64_t count, TextWatch& lines, const std::atomic<bool>& stop) {
  std::array<char, kLineSize> line;
  std::int64_t passed = 0;
  while (passed < count && !stop && text_line_read(source, line.data(), kLineSize, &lines)) {
    if (ends_a_sentence(line.data())) ++passed;
  }
  return passed;
}

std::string borders_of(const std::string& input, std::int64_t start, bool is_new, const std::atomic<bool>& stop,
                       Borders& borders, bool& is_kept) {
  const std::string path = Borders::path_beside(input);
  const File stream(regular_file_open(input, "rb"));
  if (stream == nullptr) {
    return input + (errno == EINVAL ? ": is no file, and its sentences cannot be found in advance"
                                    : std::string(": cannot be opened: ") + std::strerror(errno));
  }
  start = std::max<std::int64_t>(start, 1);
  is_kept = true;
  // Another program may have written them while this one waited for the lock: asked once before and once behind it.
  const auto is_there = [&] { return borders_read(path, borders) && is_of(borders, stream.get(), start); };
  if (!is_new && is_there()) return {};
  const FileLock lock(stream.get());
  if (!is_new && is_there()) return {};
  std::string fault = pass_over(stream.get(), start, stop, borders);
  if (!fault.empty()) return input + ": " + fault;
  is_kept = stamp_write(path, stamp_of(borders), false);
  return {};
}

bool is_input_of(const std::string& input, const Borders& borders) {
  const File stream(regular_file_open(input, "rb"));
  return stream != nullptr && is_of(borders, stream.get(), borders.start);
}

}  // namespace lexon
