// A part of a run that another process renders, perhaps on another machine: which sentences it has, under which name
// its output stands, and the marker that says that it is done, of what it was made, and what came of it.
//
// Shard 3 of 10 of a run that would write `out.txt` writes `out.txt.03-of-10`; behind its last sentence comes
// `out.txt.03-of-10.done`, a stamp (data/stamp.hpp). An output without it is unfinished.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

#include "data/stamp.hpp"
#include "run/borders.hpp"
#include "run/settings.hpp"

namespace lexon {

inline constexpr std::int32_t kMostShards = 1'000'000;

struct ShardNumber {
  std::int32_t number = 1;  // from 1
  std::int32_t of = 1;
};

// Of a run that would write `output`.
[[nodiscard]] std::string shard_path(const std::string& output, ShardNumber shard);
[[nodiscard]] std::string shard_marker_path(const std::string& shard_output);

// What came of a shard.
struct ShardResult {
  FileMark output;
  std::int64_t done = 0;  // sentences
  std::int64_t failed = 0;
  std::int64_t over_time = 0;
  std::int64_t left_out = 0;  // lines
  bool has_losses = false;
  bool target_left = false;

  // The status of the program that rendered it.
  [[nodiscard]] int exit_status(bool strict) const;
};

// What a marker holds.
struct ShardMarker {
  ShardNumber shard;
  std::int64_t first = 0;  // sentences in front of it
  std::int64_t sentences = 0;
  bool begins_with_target = false;
  Stamp made_of;  // program, files and settings: the same for all shards of a run
  ShardResult result;
};
[[nodiscard]] StampState shard_marker_read(const std::string& path, ShardMarker& marker);
[[nodiscard]] bool shard_marker_write(const std::string& path, const ShardMarker& marker);

struct ShardPlan {
  ShardMarker marker;  // all but the result
  Borders borders;
  bool borders_are_kept = true;
};

// Plans a shard of the run of `settings`, whose output file and range become those of the shard. `version` is the
// program's. The result is empty, or why it cannot be: a file that cannot be read, or `stop` was set.
[[nodiscard]] std::string shard_plan(RunSettings& settings, ShardNumber shard, bool begins_with_target,
                                     const char* version, const std::atomic<bool>& stop, ShardPlan& plan);

// The result, if this shard is done already: the marker says the same, and the output has its size.
[[nodiscard]] std::optional<ShardResult> shard_done(const RunSettings& settings, const ShardPlan& plan);

// The mark of the file at `path`, without its date; none if it cannot be read.
[[nodiscard]] std::optional<FileMark> content_mark(const std::string& path);

}  // namespace lexon
