#include "support/capture.hpp"

#include "support/session.hpp"
#include "support/test.hpp"

namespace lexon::test {

Capture::Capture() : before_(session.output.stream()), stream_(open_memstream(&buffer_, &size_)) {
  static_cast<void>(session.output.take());  // what was printed while nobody looked
  session.output.redirect(stream_);
}

Capture::~Capture() {
  session.output.redirect(before_);
  std::fclose(stream_);
  std::free(buffer_);
}

std::string Capture::text() {
  session.output.flush();
  return std::string(buffer_, size_);
}

std::FILE* stream_of(const std::string& text) {
  std::FILE* stream = std::tmpfile();
  std::fwrite(text.data(), 1, text.size(), stream);
  std::rewind(stream);
  return stream;
}

std::string file_of(const std::string& name, const std::string& text) {
  const std::string path = ::testing::TempDir() + name;
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

std::string bytes_of(const std::string& path) {
  std::ostringstream all;
  all << std::ifstream(path, std::ios::binary).rdbuf();
  return all.str();
}

}  // namespace lexon::test
