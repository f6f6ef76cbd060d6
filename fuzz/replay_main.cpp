// Runs a target over inputs that are kept: each argument is a file, or a folder of files. A finding of the past that
// comes back ends the program as it did then.
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "support.hpp"

namespace {

namespace fs = std::filesystem;

// A slow input is a finding too; the sanitizers take their share of this.
constexpr double kLongest = 20.0;  // seconds of processor time

std::vector<fs::path> files_in(const fs::path& path) {
  if (!fs::is_directory(path)) return {path};
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(path)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

bool replay(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) {
    std::fprintf(stderr, "%s: cannot be read\n", path.c_str());
    return false;
  }
  const std::vector<char> bytes((std::istreambuf_iterator<char>(stream)), {});
  std::fprintf(stderr, "%s\n", path.c_str());  // the last one named is the one that failed
  const std::clock_t start = std::clock();
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  if (seconds <= kLongest) return true;
  std::fprintf(stderr, "%s: takes %.1f seconds\n", path.c_str(), seconds);
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  int done = 0;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path& path : files_in(argv[i])) {
      if (!replay(path)) return 1;
      ++done;
    }
  }
  std::printf("%d inputs replayed\n", done);
  return done == 0 ? 1 : 0;
}
