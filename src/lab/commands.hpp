// The commands of the workbench. Each adds itself to the program and gives what is to be run when it was asked for.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <stdexcept>

namespace lexon {
inline namespace v1 {
namespace lab {

// Exit statuses, of every command: done and nothing to object to; findings, differences or failed sentences, or a file
// that cannot be had; a wrong command line; standard output not written whole.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kUsage = 2;
inline constexpr int kOutputShort = 4;

struct Command {
  CLI::App* app;
  std::function<int()> run;
};

// What ends a command early: the text says which file, which line, what is wrong and how to put it right.
struct Fault : std::runtime_error {
  using std::runtime_error::runtime_error;
};

[[nodiscard]] Command add_check(CLI::App& app);
[[nodiscard]] Command add_expand(CLI::App& app);
[[nodiscard]] Command add_render(CLI::App& app);
[[nodiscard]] Command add_test(CLI::App& app);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
