// endurance RUNS: one run behind the other in one process, each over sentences that are good, fail or are malformed. What
// the process holds behind a run is counted: bytes that have been asked for and not given back, and open files. Neither
// may grow. Ends with 0 if they have not and every run gave the same.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "front/console.hpp"
#include "run/driver.hpp"
#include "support/capture.hpp"
#include "support/program.hpp"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#include <sanitizer/allocator_interface.h>
#endif

namespace lexon::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kRound = 100;  // sentences of a run

// The sentences of the example.
std::vector<std::string> example_sentences() {
  std::vector<std::string> all(1);
  std::istringstream lines(bytes_of(LEXON_EXAMPLES "/english/input.txt"));
  for (std::string line; std::getline(lines, line);) {
    all.back() += line + "\n";
    if (line.rfind("[/S", 0) == 0) all.emplace_back();
  }
  all.pop_back();
  return all;
}

std::string numbered(int count, const std::string& before, const std::string& behind) {
  std::string all;
  for (int i = 0; i < count; ++i) all += before + std::to_string(i) + behind;
  return all;
}

// Sentences that fail, each in a way of its own; all begin and end like others.
std::vector<std::string> bad_sentences() {
  const std::string two_long = "\"" + std::string(240, 'v') + "\"\n\"" + std::string(240, 'v') + "\"\n";
  return {
      "[S]\n[/S]\n",
      "[S]\nagn(\n)))\n,,,\n[/S]\n",
      "[S]\n" + std::string(5000, 'x') + "\n[/S]\n",
      "[S]\nnxt(nothing.@entry, known)\n[/S]\n",
      "[S]\n" + numbered(200, "nxt(a,b", ")\n") + "[/S]\n",
      "[S]\n[W]\n" + numbered(600, "word", "\n") + "[/W]\n[/S]\n",
      "[S]\n" + numbered(99, "nxt:", "(a.@entry,b)\n") + "[/S]\n",
      "[S]\n[W]\n\"" + std::string(900, 'w') + "\".@entry\n" + two_long + "[/W]\n[/S]\n",
      "[S]\nagn(:01.@entry, :02)\nagn:01(:02.@entry, :01)\nagn:02(:01.@entry, :02)\n[/S]\n",
      "[S]\nag" + std::string(1, '\0') + "t(a,b)\n\xFF\xFE(\x80,\x81)\n[/S]\n",
  };
}

// One round: nine good sentences, then a bad one, and so on.
void write_input(const std::string& path) {
  const std::vector<std::string> good = example_sentences();
  const std::vector<std::string> bad = bad_sentences();
  std::ofstream input(path, std::ios::binary);
  for (std::size_t i = 0; i < kRound; ++i) input << (i % 10 == 9 ? bad[i / 10 % bad.size()] : good[i % good.size()]);
}

long entries_of(const char* folder) {
  return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

// Counted by the sanitizers alone: the figures of a plain heap grow with what its bins keep.
long bytes_in_use() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return static_cast<long>(__sanitizer_get_current_allocated_bytes());
#else
  return 1;
#endif
}

using Holding = std::array<long, 2>;  // bytes, files

int endurance(long runs) {
  const std::string folder = fresh_folder("endurance");
  for (const char* name : {"entries", "cr"}) {
    const std::string text = std::string(LEXON_EXAMPLES "/english/") + name + ".txt";
    if (run_program("lexon-dict", {"build", text, folder + "/" + name + ".dic"}).exit_status != 0) return 2;
  }
  write_file(folder + "/rules.txt", bytes_of(LEXON_EXAMPLES "/english/rules.txt"));
  write_input(folder + "/input.txt");
  fs::current_path(folder);
  const char* const words[] = {"entries.dic", "rules.txt", "input.txt", "output.txt", "--quiet", "-L0", "-N0", "-Ccr.dic"};
  const CommandLine line = command_line_read(words);
  Holding early{};
  Holding late{};
  std::string first;
  bool is_same = true;
  for (long run = 0; run < runs; ++run) {
    {
      ConsoleHost host(line);
      run_driver(line.settings, host);
    }
    const std::string output = mask_times(bytes_of("output.txt"));
    if (run == 0) first = output;
    is_same = is_same && output == first;
    const Holding now = {bytes_in_use(), entries_of("/proc/self/fd")};
    Holding& most = run < runs / 3 ? early : late;
    for (std::size_t i = 0; i < now.size(); ++i) most[i] = std::max(most[i], now[i]);
  }
  fs::current_path("/");
  std::printf("%ld runs; at most in the first third and behind it: %ld and %ld bytes, %ld and %ld files\n", runs, early[0], late[0], early[1], late[1]);
  bool has_grown = early[0] == 0;
  for (std::size_t i = 0; i < early.size(); ++i) has_grown = has_grown || late[i] > early[i];
  std::printf("%s\n", has_grown ? "GROWN" : is_same ? "no growth" : "A RUN DIFFERS FROM THE FIRST");
  return is_same && !has_grown ? 0 : 1;
}

}  // namespace
}  // namespace lexon::test

int main(int argc, char** argv) {
  return lexon::test::endurance(argc > 1 ? std::strtol(argv[1], nullptr, 10) : 300);
}
