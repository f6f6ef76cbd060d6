// endurance SENTENCES: one run over many sentences, with failing, malformed and over-time ones among them. What the
// process holds is counted between two sentences: bytes that have been asked for and not given back, open files,
// threads. None of them may grow. Ends with 0 if they have not and every sentence came out as it should.
#include <malloc.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
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

constexpr long kRound = 100;          // sentences of the mixture
constexpr long kOverTimeEvery = 100;  // rounds; each takes more than a second

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
      "[S]\nagt(\n)))\n,,,\n[/S]\n",
      "[S]\n" + std::string(5000, 'x') + "\n[/S]\n",
      "[S]\nnxt(nothing.@entry, known)\n[/S]\n",
      "[S]\n" + numbered(200, "nxt(a,b", ")\n") + "[/S]\n",
      "[S]\n[W]\n" + numbered(600, "word", "\n") + "[/W]\n[/S]\n",
      "[S]\n" + numbered(99, "nxt:", "(a.@entry,b)\n") + "[/S]\n",
      "[S]\n[W]\n\"" + std::string(900, 'w') + "\".@entry\n" + two_long + "[/W]\n[/S]\n",
      "[S]\nagt(:01.@entry, :02)\nagt:01(:02.@entry, :01)\nagt:02(:01.@entry, :02)\n[/S]\n",
      "[S]\nag" + std::string(1, '\0') + "t(a,b)\n\xFF\xFE(\x80,\x81)\n[/S]\n",
  };
}

// Words enough to try for longer than anybody waits.
std::string chain_entries() {
  std::string text;
  for (const char letter : std::string("abcdefghi")) {
    for (int i = 0; i < 10; ++i) text += std::string("[") + letter + std::to_string(i) + "]{} \"zz" + letter + "\" (ZZ);\n";
  }
  return text;
}
constexpr const char* kChainRule = ":{ZZ:::}\"ZZ::nxt:\"P255;\nR{ZZ:::}{ZZ:::}P254;\n";
constexpr const char* kChain =
    "[S]\nnxt(zza.@entry,zzb)\nnxt(zzb,zzc)\nnxt(zzc,zzd)\nnxt(zzd,zze)\nnxt(zze,zzf)\nnxt(zzf,zzg)\nnxt(zzg,zzh)\nnxt(zzh,zzi)\n[/S]\n";

void write_input(const std::string& path, long sentences) {
  const std::vector<std::string> good = example_sentences();
  const std::vector<std::string> bad = bad_sentences();
  std::ofstream input(path, std::ios::binary);
  for (long i = 0; i < sentences; ++i) {
    const long in_round = i % kRound;
    const bool is_over_time = in_round == kRound / 2 && i / kRound % kOverTimeEvery == 0;
    const bool is_bad = in_round % 10 == 9;
    input << (is_over_time ? kChain : is_bad ? bad[static_cast<std::size_t>(in_round / 10)] : good[static_cast<std::size_t>(i) % good.size()]);
  }
}

long entries_of(const char* folder) {
  return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

long bytes_in_use() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return static_cast<long>(__sanitizer_get_current_allocated_bytes());
#else
  const struct mallinfo2 figures = mallinfo2();
  return static_cast<long>(figures.uordblks + figures.hblkhd);
#endif
}

using Holding = std::array<long, 3>;  // bytes, files, threads

// Counts behind one sentence of each round, which none that is over its time precedes; so the counts say nothing of the
// time that anything takes.
class CountingHost final : public Host {
 public:
  CountingHost(const CommandLine& line, long sentences) : console_(line), first_third_(sentences / 3) {}

  void report_stop(const std::string& text) override { console_.report_stop(text); }
  bool ask_yes_no(const std::string& text) override { return console_.ask_yes_no(text); }
  void minimise() override {}
  StepResult run_step(RunContext& context, const char* caption, std::int32_t number) override {
    const StepResult result = console_.run_step(context, caption, number);
    if (number % kRound == 5) {
      const Holding now = {bytes_in_use(), entries_of("/proc/self/fd"), entries_of("/proc/self/task")};
      Holding& most = number < first_third_ ? early : late;
      for (std::size_t i = 0; i < now.size(); ++i) most[i] = std::max(most[i], now[i]);
    }
    return result;
  }
  void finish() override { console_.finish(); }

  [[nodiscard]] int exit_status() const { return console_.exit_status(); }

  Holding early{};
  Holding late{};

 private:
  ConsoleHost console_;
  long first_third_;
};

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
  return run_program("lexon-dict", {"build", name + ".txt", name + ".dic"}, folder).exit_status == 0;
}

int endurance(long sentences) {
  const std::string folder = fresh_folder("endurance");
  if (!build(folder, "entries", chain_entries()) || !build(folder, "cr", "")) return 2;
  write_file(folder + "/rules.txt", kChainRule + bytes_of(LEXON_EXAMPLES "/english/rules.txt"));
  write_input(folder + "/input.txt", sentences);
  fs::current_path(folder);
  const char* const words[] = {"entries.dic", "rules.txt", "input.txt", "output.txt", "--quiet", "-L0", "-N0", "-T1", "-Ccr.dic"};
  const CommandLine line = command_line_read(words);
  CountingHost host(line, sentences);
  run_driver(line.settings, host);
  std::map<std::string, long> banners = banners_of("output.txt");
  fs::current_path("/");
  const long over_time = (sentences + kRound * kOverTimeEvery - kRound / 2 - 1) / (kRound * kOverTimeEvery);
  std::printf("%ld sentences: %ld done, %ld failed, %ld over time (%ld meant to be); exit status %d\n", sentences, banners[";;Done!"], banners[";;Failed!"],
              banners[";;Time Over!"], over_time, host.exit_status());
  std::printf("at most in the first third and behind it: %ld and %ld bytes, %ld and %ld files, %ld and %ld threads\n", host.early[0], host.late[0],
              host.early[1], host.late[1], host.early[2], host.late[2]);
  const long all = banners[";;Done!"] + banners[";;Failed!"] + banners[";;Time Over!"];
  const bool is_all_there = host.exit_status() == 3 && all == sentences && banners[";;Time Over!"] >= over_time && banners[";;Done!"] >= sentences / 10 * 8;
  bool has_grown = host.early[0] == 0;
  for (std::size_t i = 0; i < host.early.size(); ++i) has_grown = has_grown || host.late[i] > host.early[i];
  std::printf("%s\n", has_grown ? "GROWN" : is_all_there ? "no growth" : "SENTENCES ARE MISSING");
  return is_all_there && !has_grown ? 0 : 1;
}

}  // namespace
}  // namespace lexon::test

int main(int argc, char** argv) {
  return lexon::test::endurance(argc > 1 ? std::strtol(argv[1], nullptr, 10) : 20000);
}
