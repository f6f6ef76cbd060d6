// What the commands say of their options. A door to CLI11, whose headers take ten seconds to compile: options.cpp pays
// for all commands.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "api/core.hpp"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace lexon {
inline namespace v1 {
namespace lab {

// What an option demands of its value.
struct Demands {
  bool required = false;
  bool shows_default = false;  // in the help
  bool one_value = false;      // a list takes one each time that the option is given
  bool not_negative = false;
  std::vector<std::string> choices = {};          // empty: any
  std::optional<std::pair<int, int>> range = {};  // of a number; both ends belong to it
  CLI::Option* needs = nullptr;                   // the option without which it is refused; null: none
};

// A command of the program by this name. The program owns it.
[[nodiscard]] CLI::App& add_command(CLI::App& app, const char* name, const char* about);

// Has the command take an option ("-d,--dict"), or a word of the command line ("INPUT"), into `value`, which must live
// until the command line is read. What does not fit its type or the demands is a wrong command line. The command owns
// the option. T: std::string, a vector of these, double, int, unsigned, std::int64_t or std::size_t.
template <class T>
CLI::Option* add_option(CLI::App& command, const char* names, T& value, const char* about, const Demands& demands = {});
void add_flag(CLI::App& command, const char* names, bool& value, const char* about);

// -d DICT -r RULES [-c COOCCURRENCE].
void add_grammar_options(CLI::App& command, GrammarFiles& files);

// Which sentences of an input: by label ("S:3", "[S:3]" or "3"), or by number where no label fits; and limits.
struct RenderOptions {
  std::vector<std::string> inputs;
  std::vector<std::string> sentences;  // empty: all
  double seconds = 10;                 // for each sentence; 0: none
  std::int64_t steps = 0;              // for each sentence; 0: none
  bool post_edit = true;
};
void add_render_options(CLI::App& command, RenderOptions& options);

// What most commands begin with: a grammar, and the sentences that are rendered with it.
struct RunArguments {
  GrammarFiles grammar;
  RenderOptions render;
};
void add_run_options(CLI::App& command, RunArguments& arguments);

// Throws Fault if writing `output`, the value of `option`, would destroy a file that the command reads, under whatever
// name. Empty and "-" are no files.
void refuse_own_files(const RunArguments& arguments, const std::string& output, const char* option);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
