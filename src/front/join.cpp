// Joining begins with a look at all markers, so that everything that is wrong is told at once. The output comes into
// its place when all of it has been copied, and its parts are what their markers say.
#include "front/join.hpp"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "data/platform.hpp"
#include "front/process.hpp"
#include "run/notes.hpp"
#include "run/shard.hpp"

namespace lexon {

namespace {

namespace fs = std::filesystem;

// Help, and what a wrong line is answered with.
constexpr const char* kUsage =
    "usage: lexon join OUTPUT [--of N] [--strict] [--quiet]\n\n"
    "  joins OUTPUT.1-of-N to OUTPUT.N-of-N, which \"--shard\" has written\n"
    "  --of N      the number of shards, where several sets of them stand there\n"
    "  --strict    status 3 also where something was left out\n";

// What the words behind "join" come to.
struct JoinLine {
  std::string output;
  std::int32_t of = 0;  // 0: as the files have it
  bool strict = false;
  bool quiet = false;
  bool help = false;
  bool is_wrong = false;
};

// A number of shards, whole and within its limits.
bool read_number(std::string_view text, std::int32_t& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() && number >= 1 && number <= kMostShards;
}

// Wrong words make the line wrong as a whole; which of them it was shows in the usage text.
JoinLine read_line(std::span<char* const> words) {
  JoinLine line;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string_view word = words[i];
    if (word == "--strict") {
      line.strict = true;
    } else if (word == "--quiet") {
      line.quiet = true;
    } else if (word == "--help") {
      line.help = true;
    } else if (word == "--of" && i + 1 < words.size()) {
      line.is_wrong = !read_number(words[++i], line.of) || line.is_wrong;
    } else if (!word.starts_with("-") && line.output.empty()) {
      line.output = word;
    } else {
      line.is_wrong = true;
    }
  }
  line.is_wrong = line.is_wrong || line.output.empty();
  return line;
}

// The numbers of shards that names beside `output` tell of.
std::set<std::int32_t> counts_of_shards(const std::string& output) {
  const fs::path path(output);
  const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
  const std::string begin = path.filename().string() + '.';
  std::set<std::int32_t> counts;
  std::error_code error;
  for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
    std::string name = it->path().filename().string();
    // A part of which the output is gone and the marker is left counts: the check names it.
    if (name.ends_with(".done")) name.resize(name.size() - 5);
    if (!name.starts_with(begin)) continue;
    const std::string_view rest = std::string_view(name).substr(begin.size());
    const std::size_t middle = rest.find("-of-");
    ShardNumber shard;
    const bool is_shard = middle != std::string_view::npos && read_number(rest.substr(0, middle), shard.number) &&
                          read_number(rest.substr(middle + 4), shard.of) && shard.number <= shard.of &&
                          // Only the name that a part would have, zeros included.
                          output + '.' + std::string(rest) == shard_path(output, shard);
    if (is_shard) counts.insert(shard.of);
  }
  return counts;
}

// The first thing of which two shards are not made alike; empty if there is none.
// Keys are what the marker calls them, such as "input" or "rules": they go into the message as they are.
std::string difference(const Stamp& a, const Stamp& b) {
  for (const auto& [key, value] : a.lines) {
    const std::string* other = b.text(key);
    if (other == nullptr || *other != value) return key;
  }
  for (const auto& [key, value] : b.lines) {
    if (a.text(key) == nullptr) return key;
  }
  return {};
}

// One joining. Parts stand in the order of their numbers, from the first to the last.
class Join {
 public:
  Join(const JoinLine& line, std::int32_t of) : line_(line) {
    for (std::int32_t i = 1; i <= of; ++i) parts_.push_back({{i, of}, shard_path(line.output, {i, of})});
  }

  // Has everything been found whole? What is wrong has been told.
  bool check();
  // The status: 0, or 1 for a part that has changed, or 4. What is wrong has been told.
  int write();
  [[nodiscard]] ShardResult sum() const;

 private:
  struct Part {
    ShardNumber shard;
    std::string path;
    // Found whole, with a marker that fits: only then can its place be looked at.
    bool is_there = false;
    ShardMarker marker{};
  };

  // Tells what is wrong and which command mends it.
  void wrong(const Part& part, const std::string& what, const char* more = "") {
    is_whole_ = false;
    tell_line(part.path + ": " + what + ": run --shard " + std::to_string(part.shard.number) + '/' +
              std::to_string(part.shard.of) + more + " again");
  }
  // What the marker says by itself; then where the part stands among the others.
  void check_marker(Part& part);
  void check_place(const Part* before, const Part& part);
  bool copy(const Part& part, std::FILE* to);

  const JoinLine& line_;
  std::vector<Part> parts_;
  const Part* model_ = nullptr;  // the first with a marker
                                 // Nothing wrong has been found so far.
  bool is_whole_ = true;
};

// Each part has one message at most, the first thing that is wrong with it.
void Join::check_marker(Part& part) {
  const StampState state = shard_marker_read(shard_marker_path(part.path), part.marker);
  if (state == StampState::unopened) {
    is_whole_ = false;
    return tell_line(shard_marker_path(part.path) + ": cannot be opened: " + std::strerror(errno));
  }
  const File output(regular_file_open(part.path, "rb"));
  const ShardNumber& found = part.marker.shard;
  if (state == StampState::missing) return wrong(part, output != nullptr ? "is unfinished" : "is missing");
  const bool is_marker = state == StampState::whole && found.number == part.shard.number && found.of == part.shard.of;
  if (!is_marker) return wrong(part, "has a marker that cannot be read");
  const bool is_same = output != nullptr && file_size(output.get()) == part.marker.result.output.size;
  if (!is_same) return wrong(part, "is not what was written");
  if (model_ == nullptr) model_ = &part;
  const std::string other = difference(model_->marker.made_of, part.marker.made_of);
  if (!other.empty()) return wrong(part, "was made with another " + other + " than " + model_->path);
  part.is_there = true;
}

// Does the shard go on where the one before it ends?
void Join::check_place(const Part* before, const Part& part) {
  if (!part.is_there || (before != nullptr && !before->is_there)) return;
  const std::int64_t first = before == nullptr ? 0 : before->marker.first + before->marker.sentences;
  if (part.marker.first != first) return wrong(part, "begins with another sentence than behind the shard before it");
  const bool leaves = before != nullptr && before->marker.result.target_left;
  // The bit that it assumed is not the one that was left: the part is right in all else, and is to be done with the
  // other bit.
  if (part.marker.begins_with_target == leaves) return;
  if (leaves)
    return wrong(part, "begins without the forced target that the shard before it leaves", " --forced-target");
  wrong(part, "begins with a forced target, which the shard before it does not leave");
}

// The places can be compared only when all markers have been read.
bool Join::check() {
  for (Part& part : parts_) check_marker(part);
  const Part* before = nullptr;
  for (const Part& part : parts_) {
    check_place(before, part);
    before = &part;
  }
  return is_whole_;
}

// The hash is taken of what is copied, so that no byte is read twice. False if it cannot be written; what is wrong with
// the part itself shows in `is_whole_`.
bool Join::copy(const Part& part, std::FILE* to) {
  const File from(regular_file_open(part.path, "rb"));
  // Reads large enough that a disk is not asked too often.
  std::vector<char> chunk(std::size_t{1} << 20);
  ByteHash hash;
  std::int64_t size = 0;
  while (from != nullptr) {
    const std::int64_t got = file_read_some_at(from.get(), size, chunk.data(), chunk.size());
    if (got <= 0) break;
    hash.add(chunk.data(), static_cast<std::size_t>(got));
    size += got;
    if (std::fwrite(chunk.data(), 1, static_cast<std::size_t>(got), to) != static_cast<std::size_t>(got)) return false;
  }
  const FileMark& wanted = part.marker.result.output;
  if (size != wanted.size || hash.value() != wanted.hash) wrong(part, "is not what was written");
  return true;
}

// Leaving on the way discards the draft: an output that stood there before is untouched.
int Join::write() {
  DraftFile draft;
  bool is_written = draft.open_beside(line_.output);
  for (const Part& part : parts_) {
    is_written = is_written && copy(part, draft.stream());
    if (!is_whole_) return 1;
  }
  if (is_written && draft.put_in_place(line_.output)) return 0;
  tell_line(line_.output + ": the output could not be written whole");
  return 4;
}

// Counts and losses; mark and target of the sum stay empty, since nobody asks for them.
ShardResult Join::sum() const {
  ShardResult all;
  for (const Part& part : parts_) {
    const ShardResult& result = part.marker.result;
    all.done += result.done;
    all.failed += result.failed;
    all.over_time += result.over_time;
    all.left_out += result.left_out;
    all.has_losses = all.has_losses || result.has_losses;
  }
  return all;
}

// In the words of a run's own summary.
void show(const ShardResult& all, std::int32_t shards) {
  std::string text = counted(shards, "shard", "shards") + ": " + std::to_string(all.done) + " done";
  if (all.failed != 0) text += ", " + std::to_string(all.failed) + " failed";
  if (all.over_time != 0) text += ", " + std::to_string(all.over_time) + " over time";
  if (all.left_out != 0) text += "; " + counted(all.left_out, "line", "lines") + " left out";
  tell_line(text);
}

// Status 1 where parts are missing or do not fit, and nothing is written then; else that of one run over all.
int join(const JoinLine& line) {
  std::int32_t of = line.of;
  if (of == 0) {
    const std::set<std::int32_t> counts = counts_of_shards(line.output);
    if (counts.empty()) {
      tell_line(line.output + ": there are no shards of it: \"--shard 1/4\" writes " + shard_path(line.output, {1, 4}));
      return 1;
    }
    if (counts.size() > 1) {
      std::string list;
      for (const std::int32_t count : counts) list += (list.empty() ? "" : ", ") + std::to_string(count);
      tell_line(line.output + ": there are sets of " + list + " shards: --of says which, or remove the others");
      return 1;
    }
    of = *counts.begin();
  }
  Join all(line, of);
  if (!all.check()) return 1;
  if (const int status = all.write(); status != 0) return status;
  const ShardResult sum = all.sum();
  if (!line.quiet) show(sum, of);
  return sum.exit_status(line.strict);
}

}  // namespace

int join_shards(std::span<char* const> words) {
  const JoinLine line = read_line(words);
  if (line.help) {
    std::fputs(kUsage, stdout);
    return standard_output_is_whole() ? 0 : 4;
  }
  if (line.is_wrong) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  return join(line);
}

}  // namespace lexon
