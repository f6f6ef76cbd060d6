// Catches what the code under test prints.
#pragma once

#include <cstdio>
#include <string>

namespace lexon::test {

// While it lives, the output stream is a memory buffer. The stream that was set before comes back at its end.
class Capture {
 public:
  Capture();
  ~Capture();
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;

  // All that has been printed so far.
  [[nodiscard]] std::string text();

 private:
  std::FILE* before_;
  char* buffer_ = nullptr;
  std::size_t size_ = 0;
  std::FILE* stream_;
};

// A readable stream over `text`, to be closed by the caller.
[[nodiscard]] std::FILE* stream_of(const std::string& text);

// A file of `text` in the test's temporary folder; the path.
[[nodiscard]] std::string file_of(const std::string& name, const std::string& text);

// The bytes of a file.
[[nodiscard]] std::string bytes_of(const std::string& path);

}  // namespace lexon::test
