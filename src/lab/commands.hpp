// The commands of the workbench. Each adds itself to the program and gives what is to be run when it was asked for.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

// Declared alone: its header takes ten seconds to compile.
namespace CLI {
class App;
}

namespace lexon {
inline namespace v1 {
namespace lab {

// Exit statuses, of every command: done and nothing to object to; findings, differences or failed sentences, or a file
// that cannot be had; a wrong command line; standard output not written whole.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kUsage = 2;
inline constexpr int kOutputShort = 4;

// Runs the program with these words behind its name, as from a command line. Its status.
[[nodiscard]] int run_command(const std::vector<std::string>& words);

struct Command {
  CLI::App* app;
  std::function<int()> run;
};

// What ends a command early: the text says which file, which line, what is wrong and how to put it right.
struct Fault : std::runtime_error {
  using std::runtime_error::runtime_error;
};

[[nodiscard]] Command add_check(CLI::App& app);
[[nodiscard]] Command add_coverage(CLI::App& app);
[[nodiscard]] Command add_expand(CLI::App& app);
[[nodiscard]] Command add_explain(CLI::App& app);
[[nodiscard]] Command add_lsp(CLI::App& app);
[[nodiscard]] Command add_profile(CLI::App& app);
[[nodiscard]] Command add_render(CLI::App& app);
[[nodiscard]] Command add_report(CLI::App& app);
[[nodiscard]] Command add_serve(CLI::App& app);
[[nodiscard]] Command add_shell(CLI::App& app);
[[nodiscard]] Command add_test(CLI::App& app);
[[nodiscard]] Command add_view(CLI::App& app);
[[nodiscard]] Command add_why(CLI::App& app);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
