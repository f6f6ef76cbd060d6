// How soon a run that is told to stop has ended, on inputs that would go on for minutes. The time is that from the
// signal to the end of the program.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kRounds = 5;
constexpr double kWantedMilliseconds = 50.0;

struct Input {
  const char* name;
  std::string entries;
  std::string cr;  // co-occurrence entries, or empty
  std::string rules;
  std::string graph;
};

// Rules that let the list grow to the right without end.
constexpr const char* kGrowing = ":{A,^M:+M::}\"[x]:::\"P5;\nR{M:::}{A:::}P4;\nR{SHEAD:::}{A:::}P3;\n";

Input endless_post_edit() {
  return {"an endless pass into a scope", "[a]{} \"a\" (A);\n[b]{} \"b\" (B);\n", "",
          "R{SHEAD:::}{A:::}P9;\n:{A:::}\"SCOPE::pat:\"P8;\nPSL{SCOPE:::}{:::}P7;\nR{:::}{:::}P1;\n",
          "pat(a.@entry, :01)\natt:01(b.@entry, b)\n"};
}

Input endless_search() {
  Input input{"a search that never ends", "", "", ":{N:::}\"N::nxt:\"P9;\nR{:::}{^STAIL:::}P5;\n", ""};
  for (char name = 'a'; name <= 'j'; ++name) {
    for (char word = '0'; word <= '9'; ++word) {
      input.entries += std::string("[") + name + word + "]{} \"" + name + "\" (N);\n";
    }
    if (name == 'j') continue;
    input.graph +=
        std::string("nxt(") + name + (name == 'a' ? ".@entry, " : ", ") + static_cast<char>(name + 1) + ")\n";
  }
  return input;
}

Input starred_groups() {
  return {"starred groups over a long list", "[x]{} \"a\" (A);\n", "",
          std::string("R(A)*(A)*(A)*(Q){A:::}{A:::}P9;\n") + kGrowing, "att(a.@entry, a:01)\n"};
}

Input large_class() {
  Input input{"a class of 10,000 words", "[x]{} \"a\" (A);\n", "",
              std::string(":{A:::}\"[#all],NEVER:::\"P9;\n") + kGrowing, "att(a.@entry, a:01)\n"};
  for (int i = 0; i < 10000; ++i) {
    input.cr += "[m" + std::to_string(i) + "]{word" + std::to_string(i) + "} \"sup#all\" (X);\n";
  }
  return input;
}

void write_file(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::string read_file(const fs::path& path) {
  std::ostringstream all;
  all << std::ifstream(path, std::ios::binary).rdbuf();
  return all.str();
}

pid_t start(const std::vector<std::string>& words) {
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  std::fflush(stdout);
  const pid_t child = fork();
  if (child != 0) return child;
  if (std::freopen("/dev/null", "w", stdout) != nullptr) execv(arguments[0], arguments.data());
  _exit(127);
}

int wait_for(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void place(const Input& input, const fs::path& folder, const fs::path& programs) {
  write_file(folder / "entries.txt", input.entries);
  write_file(folder / "cr.txt", input.cr.empty() ? "[none]{} \"none\" (X);\n" : input.cr);
  write_file(folder / "rules.txt", input.rules);
  write_file(folder / "input.txt", "[S:1]\n" + input.graph + "[/S]\n");
  for (const char* name : {"entries", "cr"}) {
    const std::string stem = (folder / name).string();
    wait_for(start({(programs / "lexon-dict").string(), "build", stem + ".txt", stem + ".dic"}));
  }
}

// Milliseconds from the signal to the end; below zero if the run ended by itself or in another way.
double stop_time(const fs::path& folder, const fs::path& programs) {
  const std::string stem = folder.string() + "/";
  fs::remove(folder / "out.txt");
  const pid_t child = start({(programs / "lexon").string(), stem + "entries.dic", stem + "rules.txt",
                             stem + "input.txt", stem + "out.txt", "-C" + stem + "cr.dic", "-L0", "-q"});
  while (read_file(folder / "out.txt").find("[S:1]") == std::string::npos) usleep(1000);
  usleep(300'000);
  const Clock::time_point asked = Clock::now();
  kill(child, SIGINT);
  const bool was_cancelled = wait_for(child) == 130;
  const double time = std::chrono::duration<double, std::milli>(Clock::now() - asked).count();
  return was_cancelled ? time : -1.0;
}

}  // namespace

int main(int, char** argv) {
  const fs::path programs = fs::absolute(argv[0]).parent_path();
  const fs::path folder = fs::temp_directory_path() / ("lexon-stop-bench-" + std::to_string(getpid()));
  fs::create_directories(folder);
  for (const Input& input : {endless_post_edit(), endless_search(), starred_groups(), large_class()}) {
    place(input, folder, programs);
    double longest = 0.0;
    for (int round = 0; round < kRounds && longest >= 0.0; ++round) {
      const double time = stop_time(folder, programs);
      longest = time < 0.0 ? time : std::max(longest, time);
    }
    if (longest < 0.0) {
      std::printf("stopping %s: ended by itself: NOT MET\n", input.name);
    } else {
      std::printf("stopping %s: %.1f ms, wanted <= %.0f: %s\n", input.name, longest, kWantedMilliseconds,
                  longest <= kWantedMilliseconds ? "met" : "NOT MET");
    }
  }
  fs::remove_all(folder);
}
