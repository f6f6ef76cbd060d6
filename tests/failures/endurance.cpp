// endurance SENTENCES: one run over many sentences, with failing, malformed and over-time ones among them, watched from
// outside. Memory, open files and threads must not grow. Ends with 0 if they have not and every sentence came out as it
// should.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/capture.hpp"
#include "support/program.hpp"

namespace lexon::test {
namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;

constexpr int kRound = 100;          // sentences of the mixture
constexpr int kOverTimeEvery = 100;  // rounds; each takes more than a second
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long kAllowedGrowth = 65536;  // KiB: a sanitizer remembers what was released
#else
constexpr long kAllowedGrowth = 1024;
#endif

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

std::string repeated(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

std::string numbered(int count, const std::string& before, const std::string& behind) {
  std::string all;
  for (int i = 0; i < count; ++i) all += before + std::to_string(i) + behind;
  return all;
}

// Sentences that fail, each in a way of its own; all begin and end like others.
std::vector<std::string> bad_sentences() {
  return {
      "[S]\n[/S]\n",
      "[S]\nagt(\n)))\n,,,\n[/S]\n",
      "[S]\n" + std::string(5000, 'x') + "\n[/S]\n",
      "[S]\nnxt(nothing.@entry, known)\n[/S]\n",
      "[S]\n" + numbered(200, "nxt(a,b", ")\n") + "[/S]\n",
      "[S]\n[W]\n" + numbered(600, "word", "\n") + "[/W]\n[/S]\n",
      "[S]\n" + numbered(99, "nxt:", "(a.@entry,b)\n") + "[/S]\n",
      "[S]\n[W]\n\"" + std::string(900, 'w') + "\".@entry\n" + repeated(2, "\"" + std::string(240, 'v') + "\"\n") +
          "[/W]\n[/S]\n",
      "[S]\nagt(:01.@entry, :02)\nagt:01(:02.@entry, :01)\nagt:02(:01.@entry, :02)\n[/S]\n",
      "[S]\nag" + std::string(1, '\0') + "t(a,b)\n\xFF\xFE(\x80,\x81)\n[/S]\n",
  };
}

// Words enough to try for longer than anybody waits.
std::string chain_entries() {
  std::string text;
  for (char concept_name = 'a'; concept_name <= 'i'; ++concept_name) {
    for (int word = 0; word < 10; ++word) {
      text += std::string("[") + concept_name + std::to_string(word) + "]{} \"zz" + concept_name + "\" (ZZ);\n";
    }
  }
  return text;
}
constexpr const char* kChainRule = ":{ZZ:::}\"ZZ::nxt:\"P255;\nR{ZZ:::}{ZZ:::}P254;\n";
constexpr const char* kChain =
    "[S]\nnxt(zza.@entry,zzb)\nnxt(zzb,zzc)\nnxt(zzc,zzd)\nnxt(zzd,zze)\nnxt(zze,zzf)\nnxt(zzf,zzg)\nnxt(zzg,zzh)\n"
    "nxt(zzh,zzi)\n[/S]\n";

void write_input(const std::string& path, long sentences) {
  const std::vector<std::string> good = example_sentences();
  const std::vector<std::string> bad = bad_sentences();
  std::ofstream input(path, std::ios::binary);
  for (long i = 0; i < sentences; ++i) {
    const long in_round = i % kRound;
    const bool is_over_time = in_round == kRound / 2 && i / kRound % kOverTimeEvery == 0;
    if (is_over_time) {
      input << kChain;
    } else if (in_round % 10 == 9) {
      input << bad[static_cast<std::size_t>(in_round / 10) % bad.size()];
    } else {
      input << good[static_cast<std::size_t>(i) % good.size()];
    }
  }
}

// What a process holds.
struct Holding {
  long memory = 0;  // KiB of its own, resident
  long files = 0;
  long threads = 0;
};

Holding holding_of(int process) {
  const std::string folder = "/proc/" + std::to_string(process);
  Holding holding;
  std::ifstream status(folder + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("RssAnon:", 0) == 0) holding.memory = std::strtol(line.c_str() + 8, nullptr, 10);
    if (line.rfind("Threads:", 0) == 0) holding.threads = std::strtol(line.c_str() + 8, nullptr, 10);
  }
  std::error_code error;
  for (fs::directory_iterator file(folder + "/fd", error), end; !error && file != end; file.increment(error)) {
    ++holding.files;
  }
  return holding;
}

Holding most(const Holding& a, const Holding& b) {
  return {std::max(a.memory, b.memory), std::max(a.files, b.files), std::max(a.threads, b.threads)};
}

// The most that was held in about the first third of the output, and in all that came after.
struct Watch {
  Holding early;
  Holding late;
};

Watch watch(int process, const std::string& output, long sentences) {
  constexpr long kBytesOfASentence = 70;
  const long first_third = sentences / 3 * kBytesOfASentence;
  Watch watch;
  std::error_code error;
  while (fs::exists("/proc/" + std::to_string(process) + "/fd/0", error)) {
    const auto size = static_cast<long>(fs::file_size(output, error));
    if (!error && size > 0) {
      const Holding now = holding_of(process);
      Holding& part = size < first_third ? watch.early : watch.late;
      if (now.memory != 0) part = most(part, now);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return watch;
}

std::map<std::string, long> banners_of(const std::string& output) {
  std::map<std::string, long> banners;
  std::ifstream lines(output, std::ios::binary);
  for (std::string line; std::getline(lines, line);) {
    if (line == ";;Done!" || line == ";;Failed!" || line == ";;Time Over!") ++banners[line];
  }
  return banners;
}

bool build(const std::string& folder, const std::string& name, const std::string& more) {
  write_file(folder + "/" + name + ".txt", bytes_of(std::string(LEXON_EXAMPLES "/english/") + name + ".txt") + more);
  return run_program("lexon-dict", {"build", folder + "/" + name + ".txt", folder + "/" + name + ".dic"}).exit_status ==
         0;
}

int endurance(long sentences) {
  const std::string folder = fresh_folder("endurance");
  if (!build(folder, "entries", chain_entries()) || !build(folder, "cr", "")) return 2;
  write_file(folder + "/rules.txt", kChainRule + bytes_of(LEXON_EXAMPLES "/english/rules.txt"));
  write_input(folder + "/input.txt", sentences);
  const steady_clock::time_point start = steady_clock::now();
  const std::string output = folder + "/output.txt";
  const int process = start_program("lexon", {folder + "/entries.dic", folder + "/rules.txt", folder + "/input.txt",
                                              output, "--quiet", "-L0", "-N0", "-T1", "-C" + folder + "/cr.dic"});
  const Watch seen = watch(process, output, sentences);
  const int status = wait_for_program(process);
  const double seconds = std::chrono::duration<double>(steady_clock::now() - start).count();
  std::map<std::string, long> banners = banners_of(output);
  fs::remove_all(folder);
  const long over_time = (sentences + kRound * kOverTimeEvery - kRound / 2 - 1) / (kRound * kOverTimeEvery);
  std::printf("%ld sentences in %.1f s: %ld done, %ld failed, %ld over time (%ld meant to be); exit status %d\n",
              sentences, seconds, banners[";;Done!"], banners[";;Failed!"], banners[";;Time Over!"], over_time, status);
  std::printf("memory %ld KiB at most in the first third, %ld KiB behind it; files %ld and %ld; threads %ld and %ld\n",
              seen.early.memory, seen.late.memory, seen.early.files, seen.late.files, seen.early.threads,
              seen.late.threads);
  const long all = banners[";;Done!"] + banners[";;Failed!"] + banners[";;Time Over!"];
  const bool is_all_there = status == 3 && all == sentences && banners[";;Time Over!"] >= over_time &&
                            banners[";;Done!"] >= sentences / 10 * 8;
  const bool has_grown = seen.late.memory > seen.early.memory + kAllowedGrowth || seen.late.files > seen.early.files ||
                         seen.late.threads > seen.early.threads;
  std::printf("%s\n", has_grown ? "GROWN" : is_all_there ? "no growth" : "SENTENCES ARE MISSING");
  return is_all_there && !has_grown ? 0 : 1;
}

}  // namespace
}  // namespace lexon::test

int main(int argc, char** argv) {
  return lexon::test::endurance(argc > 1 ? std::strtol(argv[1], nullptr, 10) : 20000);
}
