// Other programs that the workbench starts: the one that lays graphs out, and the browser.
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace lexon {
inline namespace v1 {
namespace lab {

// Starts the program `words[0]`, looked up as a shell does. It reads from the descriptor `input` and writes to `output`,
// each of which may be -1 for nothing; its messages are thrown away, and no signal is held back from it that is held
// back here. Returns its process, which the caller has to wait for; -1 if there is none, with the reason in `errno`.
[[nodiscard]] pid_t process_start(const std::vector<std::string>& words, int input, int output);

// Shows a file in the user's browser, without waiting for it. If that fails, standard error says so, and what to do
// `instead`; what the desktop finds out later is only told while this program goes on.
void browser_show(const std::string& file, const std::string& instead);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
