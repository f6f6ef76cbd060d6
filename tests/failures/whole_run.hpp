// Whole runs inside the test program, one after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "data/pool.hpp"

namespace lexon::test {

// Looked at by the pools of a run, and by the operators new of the test program.
inline AllocationFault refused{};

// A golden case, or the English example, in a folder of its own, with its dictionaries built.
class RunCase {
 public:
  // A folder of tests/golden, or "english".
  explicit RunCase(const std::string& name);

  struct Result {
    int exit_status = -1;
    std::string output;  // times masked
    std::string error;   // what went to standard error
    std::int64_t allocations = 0;
  };
  // Renders all sentences, with the rules from the text (`converts`) or from the compiled files of the run before.
  // `fault` holds for the run alone; `more` is a switch besides, or null.
  [[nodiscard]] Result run(bool converts, AllocationFault fault = {}, const char* more = nullptr) const;

  [[nodiscard]] std::string path(const std::string& name) const { return folder_ + "/" + name; }
  // The names in the folder, sorted, but for the compiled rules; temporary files would stand in a folder "temp" of it.
  [[nodiscard]] std::string names() const;

 private:
  std::string folder_;
  std::vector<std::string> arguments_;
};

// The names of all cases.
[[nodiscard]] std::vector<std::string> run_case_names();

// The output in its sentences: each piece ends with its banner.
[[nodiscard]] std::vector<std::string> sentences_in(const std::string& output);

// While it lives, every read of a block gives half of what was asked for.
class ShortReads {
 public:
  ShortReads();
  ~ShortReads();
  ShortReads(const ShortReads&) = delete;
  ShortReads& operator=(const ShortReads&) = delete;
};

// How many descriptors the process holds.
[[nodiscard]] std::size_t open_files();

}  // namespace lexon::test
