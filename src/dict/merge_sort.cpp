// A balanced two-way merge over four temporary files. The lines of the input are dealt out in sorted pairs to two
// files. Each pass then merges the runs of one pair of files into runs of double length, dealt out to the other pair,
// until all lines lie in one file.

#include "dict/merge_sort.hpp"

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "data/chars.hpp"
#include "data/platform.hpp"
#include "data/state.hpp"
#include "data/text_line.hpp"
#include "dict/entry_text.hpp"
#include "dict/layout.hpp"

namespace lexon {

namespace {

constexpr int kSortLine = 1024;  // of a line in hand, terminator included
constexpr std::size_t kSortBuffer = 30720;
constexpr std::int64_t kFirstRun = 2;

using SortLine = std::array<char, kSortLine>;

// A file of sorted runs that is being read, with its next line in hand.
struct Source {
  std::FILE* stream = nullptr;
  int count = 0;        // lines of the file
  int empty = 0;        // of them, those that left nothing in it
  int taken = 0;        // lines read
  bool held = false;    // `line` is to be used yet
  bool is_cut = false;  // the file was shorter than was counted: lines are lost
  SortLine line;
};

// A file that is being written, in large pieces.
struct Sink {
  std::FILE* stream = nullptr;
  int count = 0;  // lines put
  int empty = 0;  // of them, those that hold nothing: a line that begins with a zero
  std::size_t fill = 0;
  bool failed = false;
  std::array<char, kSortBuffer> buffer;
};

// One sort at work. Its temporary files go with it.
struct Sort {
  Sort() = default;
  Sort(const Sort&) = delete;
  Sort& operator=(const Sort&) = delete;
  ~Sort();

  bool dictionary_mode = false;
  std::FILE* log = nullptr;
  std::FILE* input = nullptr;
  std::array<TempFile, 4> files;  // two pairs of files: one is read while the other is written
  std::size_t read_pair = 0;
  std::int64_t run_length = kFirstRun;
  std::array<Source, 2> sources;
  std::array<Sink, 2> sinks;
};

void close_stream(std::FILE*& stream) {
  if (stream != nullptr) static_cast<void>(std::fclose(std::exchange(stream, nullptr)));
}

Sort::~Sort() {
  close_stream(input);
  for (Source& source : sources) close_stream(source.stream);
  for (Sink& sink : sinks) close_stream(sink.stream);
}

int fail_with(std::FILE* log, const char* message) {
  if (log != nullptr) std::fputs(message, log);
  return -1;
}

int fail_to_open(std::FILE* log, const char* path) {
  if (log != nullptr) std::fprintf(log, ";;Can't open input file %s!\n", path);
  return -1;
}

// ---- lines

// The order of two lines; what is equal stays in its order.
int compare_lines(const Sort& sort, const SortLine& a, const SortLine& b) {
  if (!sort.dictionary_mode) return std::strcmp(a.data(), b.data());
  const auto key = [](const SortLine& line) {
    const char* hw = std::strchr(line.data(), '[') + 1;
    return std::string_view(hw, static_cast<std::size_t>(entry_hw_end(hw) - hw));
  };
  return key_compare(key(a), key(b));
}

// wanted: a line without its line feed loses its last character to one.
void close_line(SortLine& line) {
  const std::size_t length = std::strlen(line.data());
  if (length != 0) line[length - 1] = '\n';
}

// In dictionary mode only entries are sorted; the log tells of other lines.
bool is_sortable(const Sort& sort, const SortLine& line) {
  if (!sort.dictionary_mode) return true;
  const char* text = skip_blanks(line.data());
  if (*text == '[' && entry_hw_end(text + 1) != nullptr) return true;
  if (sort.log != nullptr) std::fprintf(sort.log, *text == ';' ? "%s" : ";;%s", line.data());
  return false;
}

bool read_input_line(const Sort& sort, SortLine& line) {
  while (must_leave() == Status::ok && text_line_read(sort.input, line.data(), kSortLine)) {
    close_line(line);
    if (is_sortable(sort, line)) return true;
  }
  return false;
}

// ---- files

void sink_flush(Sink& sink) {
  if (sink.fill != 0 && std::fwrite(sink.buffer.data(), 1, sink.fill, sink.stream) != sink.fill) sink.failed = true;
  sink.fill = 0;
}

void sink_put(Sink& sink, const SortLine& line) {
  const std::size_t length = std::strlen(line.data());
  if (sink.fill + length > kSortBuffer - 1) sink_flush(sink);
  std::memcpy(sink.buffer.data() + sink.fill, line.data(), length);
  sink.fill += length;
  ++sink.count;
  if (length == 0) ++sink.empty;
}

bool sink_open(Sink& sink, const char* path, const char* mode) {
  sink.stream = std::fopen(path, mode);
  sink.count = sink.empty = 0;
  return sink.stream != nullptr;
}

bool sink_close(Sink& sink) {
  sink_flush(sink);
  const bool closed = std::fclose(std::exchange(sink.stream, nullptr)) == 0;
  return closed && !sink.failed;
}

bool sinks_open(Sort& sort, std::size_t pair) {
  return sink_open(sort.sinks[0], sort.files[2 * pair].path().c_str(), "wb") &&
         sink_open(sort.sinks[1], sort.files[2 * pair + 1].path().c_str(), "wb");
}

bool sinks_close(Sort& sort) {
  const bool first = sink_close(sort.sinks[0]);
  return sink_close(sort.sinks[1]) && first && must_leave() == Status::ok;
}

bool source_open(Source& source, const std::string& name, const Sink& written) {
  close_stream(source.stream);
  source.stream = std::fopen(name.c_str(), "rb");
  source.count = written.count;
  source.empty = written.empty;
  source.taken = 0;
  return source.stream != nullptr;
}

// The pair just written becomes the one to be read.
bool sources_open(Sort& sort, std::size_t pair) {
  sort.read_pair = pair;
  return source_open(sort.sources[0], sort.files[2 * pair].path(), sort.sinks[0]) &&
         source_open(sort.sources[1], sort.files[2 * pair + 1].path(), sort.sinks[1]);
}

// ---- steps

// Deals the lines of the input out, in pairs of which the lower stands first. False if the input cannot be read to its
// end.
bool distribute(Sort& sort) {
  SortLine& first = sort.sources[0].line;
  SortLine& second = sort.sources[1].line;
  for (std::size_t turn = 0; read_input_line(sort, first); turn ^= 1) {
    Sink& sink = sort.sinks[turn];
    const bool is_pair = read_input_line(sort, second);
    const bool is_reversed = is_pair && compare_lines(sort, first, second) > 0;
    if (is_reversed) sink_put(sink, second);
    sink_put(sink, first);
    if (is_pair && !is_reversed) sink_put(sink, second);
  }
  return std::ferror(sort.input) == 0;
}

bool has_more(const Source& source) {
  return source.taken < source.count;
}

// Takes the next line of a file in hand. A file that is shorter than was counted ends.
void take_line(Source& source) {
  const bool is_there = has_more(source) && must_leave() == Status::ok;
  source.held = is_there && std::fgets(source.line.data(), kSortLine, source.stream) != nullptr;
  source.is_cut = source.is_cut || (is_there && !source.held && source.count - source.taken > source.empty);
  if (source.held) {
    ++source.taken;
  } else {
    source.count = source.taken;
  }
}

// The same within a run, which ends at a multiple of its length.
void take_line_of_run(Source& source, std::int64_t run_length) {
  if (source.taken % run_length == 0) {
    source.held = false;
  } else {
    take_line(source);
  }
}

// Merges one run of each source into one of the sink. A source that has ended has an empty run.
void merge_run(Sort& sort, Sink& sink) {
  Source& left = sort.sources[0];
  Source& right = sort.sources[1];
  take_line(left);
  take_line(right);
  while (left.held || right.held) {
    const bool from_left = !right.held || (left.held && compare_lines(sort, left.line, right.line) <= 0);
    Source& source = from_left ? left : right;
    sink_put(sink, source.line);
    take_line_of_run(source, sort.run_length);
  }
}

bool merge_pass(Sort& sort) {
  const std::size_t write_pair = 1 - sort.read_pair;
  if (!sinks_open(sort, write_pair)) return false;
  for (std::size_t turn = 0; has_more(sort.sources[0]) || has_more(sort.sources[1]); turn ^= 1) {
    merge_run(sort, sort.sinks[turn]);
  }
  sort.run_length *= 2;
  if (sort.sources[0].is_cut || sort.sources[1].is_cut) return false;
  return sinks_close(sort) && sources_open(sort, write_pair);
}

// Copies the sorted file, leaving out lines equal to the one before. The number of lines written, or -1.
int remove_duplicates(Sort& sort, Source& result, const char* output) {
  Sink& sink = sort.sinks[0];
  if (!sink_open(sink, output, "w")) return -1;
  SortLine* last = &sort.sources[0].line;
  SortLine* line = &sort.sources[1].line;
  int taken = 0;
  while (must_leave() == Status::ok && std::fgets(line->data(), kSortLine, result.stream) != nullptr) {
    ++taken;
    if (sink.count != 0 && std::strcmp(line->data(), last->data()) == 0) continue;
    sink_put(sink, *line);
    std::swap(line, last);
  }
  const bool is_whole = sink_close(sink) && taken + result.empty == result.count;
  return is_whole && must_leave() == Status::ok ? sink.count : -1;
}

int deliver(Sort& sort, bool unique, const char* output) {
  const std::size_t full = sort.sources[0].count != 0 ? 0 : 1;
  Source& result = sort.sources[full];
  if (unique) return remove_duplicates(sort, result, output);
  close_stream(result.stream);
  return sort.files[2 * sort.read_pair + full].move_to(output) ? result.count : -1;
}

int sort_stream(Sort& sort, bool unique, const char* output) {
  if (!sinks_open(sort, 0)) return fail_to_open(sort.log, sort.files[0].path().c_str());
  const bool dealt_out = distribute(sort);
  if (!sinks_close(sort) || !dealt_out) return -1;
  if (sort.sinks[0].count == 0) return 0;
  bool going = sources_open(sort, 0);
  while (going && has_more(sort.sources[0]) && has_more(sort.sources[1])) going = merge_pass(sort);
  return going ? deliver(sort, unique, output) : -1;
}

}  // namespace

int merge_sort_file(bool unique, bool dictionary_mode, const char* input, const char* output, std::FILE* log) {
  const std::unique_ptr<Sort> sort(new (std::nothrow) Sort);
  if (sort == nullptr) return fail_with(log, ";;No memory\n");
  sort->dictionary_mode = dictionary_mode;
  sort->log = log;
  if (input == nullptr) return fail_with(log, ";;Not found input file!\n");
  sort->input = std::fopen(input, "r");
  return sort->input == nullptr ? fail_to_open(log, input) : sort_stream(*sort, unique, output);
}

}  // namespace lexon
