// What the fuzz targets share. A target is one function that takes any bytes; it may do what it likes but crash, hang,
// leak, or break a property that it asks for by `require`.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "data/sentence.hpp"
#include "data/status.hpp"
#include "dict/dictionary.hpp"

// The entry of a target, called for each input; the result is always 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace lexon::fuzz {

[[nodiscard]] inline std::string_view bytes_of(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// Ends the program with `what` unless `holds`: the input is a finding.
void require(bool holds, const char* what);

// The parts of an input between lines that are "%%" alone; `count` of them, the missing ones empty. The last one takes
// the rest.
[[nodiscard]] std::vector<std::string_view> sections_of(std::string_view input, std::size_t count);

// A stream to read the bytes from, of a temporary file.
class Source {
 public:
  explicit Source(std::string_view bytes);
  ~Source();
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;
  [[nodiscard]] std::FILE* get() const { return stream_; }

 private:
  std::FILE* stream_;
};

// A stream to write to, and what has been written.
class Sink {
 public:
  Sink();
  ~Sink();
  Sink(const Sink&) = delete;
  Sink& operator=(const Sink&) = delete;
  [[nodiscard]] std::FILE* get() const { return stream_; }
  [[nodiscard]] std::string text() const;

 private:
  char* buffer_ = nullptr;
  std::size_t size_ = 0;
  std::FILE* stream_;
};

// The run's output goes to a sink as long as this lives.
class Output {
 public:
  Output();
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  [[nodiscard]] std::string text() const { return sink_.text(); }

 private:
  Sink sink_;
  std::FILE* before_;
};

// A stream that swallows what is written.
[[nodiscard]] std::FILE* nowhere();

// Everything of earlier inputs is gone: pools, rules, tables, the engine's state. Nothing is traced, to nowhere.
void fresh_start();

// A private folder that goes with the process.
[[nodiscard]] std::string folder_path(const std::string& name);
void file_write(const std::string& path, std::string_view bytes);
[[nodiscard]] std::string file_read(const std::string& path);

// While it lives, the core is asked to stop after some processor time, as a time limit does. A core that has not left
// long after that ends the program: some loop does not honour the request.
class StepLimit {
 public:
  explicit StepLimit(int milliseconds);
  ~StepLimit();
  StepLimit(const StepLimit&) = delete;
  StepLimit& operator=(const StepLimit&) = delete;
  // Has the request been made?
  [[nodiscard]] static bool is_over();
};

// A dictionary made of entry text, bad lines left out. It keeps the last text and is not made anew for an equal one.
class Dictionary {
 public:
  explicit Dictionary(std::string name) : name_(std::move(name)) {}
  Dictionary(const Dictionary&) = delete;
  Dictionary& operator=(const Dictionary&) = delete;

  void use(std::string_view entries);
  // No files at all if there was nothing to build from.
  [[nodiscard]] DictionaryFiles files() const { return opened_.files(); }
  // Cuts the open dictionary file to this size, until the next use.
  void cut(std::int64_t size);

 private:
  std::string name_;
  std::string entries_;
  bool is_cut_ = false;
  lexon::Dictionary opened_;
};

}  // namespace lexon::fuzz
