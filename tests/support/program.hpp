// Running the built programs, as a user would.
#pragma once

#include <string>
#include <vector>

namespace lexon::test {

struct ProgramResult {
  int exit_status = -1;  // 128 and the number of the signal for a program that a signal ended
  std::string out;
  std::string error;
};

// Where a program of the build stands; a path stays as it is.
[[nodiscard]] std::string program_path(const std::string& name);

// Runs a program of the build by its name, or any by its path, without a terminal, in the folder `folder`, and waits
// for it.
[[nodiscard]] ProgramResult run_program(const std::string& name, const std::vector<std::string>& arguments, const std::string& folder = ".");

// Waits for a child process; its exit status as above.
[[nodiscard]] int wait_for_program(int process);

// A fresh empty folder in the test's temporary place, of this process alone; removed when the program ends.
[[nodiscard]] std::string fresh_folder(const std::string& name);

// Writes `text` to a file.
void write_file(const std::string& path, const std::string& text);

// The text with every time figure of a sentence's time line replaced.
[[nodiscard]] std::string mask_times(const std::string& text);

}  // namespace lexon::test
