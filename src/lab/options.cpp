#include "lab/options.hpp"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <type_traits>

#include "lab/commands.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

CLI::App& add_command(CLI::App& app, const char* name, const char* about) {
  return *app.add_subcommand(name, about);
}

// The one function that knows how CLI11 says each demand; below it the types that commands use, so that no command has to
// include its headers.
template <class T>
CLI::Option* add_option(CLI::App& command, const char* names, T& value, const char* about, const Demands& demands) {
  CLI::Option* option = command.add_option(names, value, about);
  if (demands.required) option->required();
  // Else an option that may be repeated would swallow the words behind it.
  if (demands.one_value) option->allow_extra_args(false);
  if (demands.not_negative) option->check(CLI::NonNegativeNumber);
  if (!demands.choices.empty()) option->check(CLI::IsMember(demands.choices));
  // A range of texts would have no meaning.
  if constexpr (std::is_arithmetic_v<T>) {
    const auto& range = demands.range;
    if (range) option->check(CLI::Range(static_cast<T>(range->first), static_cast<T>(range->second)));
  }
  if (demands.needs != nullptr) option->needs(demands.needs);
  if (demands.shows_default) option->capture_default_str();
  return option;
}

template CLI::Option* add_option(CLI::App&, const char*, std::string&, const char*, const Demands&);
template CLI::Option* add_option(CLI::App&, const char*, std::vector<std::string>&, const char*, const Demands&);
template CLI::Option* add_option(CLI::App&, const char*, double&, const char*, const Demands&);
template CLI::Option* add_option(CLI::App&, const char*, int&, const char*, const Demands&);
template CLI::Option* add_option(CLI::App&, const char*, unsigned&, const char*, const Demands&);
template CLI::Option* add_option(CLI::App&, const char*, std::int64_t&, const char*, const Demands&);
template CLI::Option* add_option(CLI::App&, const char*, std::size_t&, const char*, const Demands&);

void add_flag(CLI::App& command, const char* names, bool& value, const char* about) {
  command.add_flag(names, value, about);
}

void add_grammar_options(CLI::App& command, GrammarFiles& files) {
  add_option(command, "-d,--dict", files.dictionary, "The dictionary, made by lexon-dict", {.required = true});
  add_option(command, "-r,--rules", files.rules, "The rules, as text or compiled (.rul)", {.required = true});
  add_option(command, "-c,--cr", files.cooccurrence, "The co-occurrence dictionary");
}

void add_render_options(CLI::App& command, RenderOptions& options) {
  add_option(command, "INPUT", options.inputs, "Graphs; - for standard input", {.required = true});
  add_option(command, "-s,--sentence", options.sentences,
             "Only the sentence with this label, or #NUMBER; may be repeated", {.one_value = true});
  add_option(command, "-T,--time", options.seconds, "Seconds for each sentence; 0: no limit", {.shows_default = true});
  add_option(command, "--steps", options.steps, "Steps of the search for each sentence; 0: no limit",
             {.not_negative = true});
  add_flag(command, "!--no-post-edit", options.post_edit, "Leave out the rules of post-edit");
}

void add_run_options(CLI::App& command, RunArguments& arguments) {
  add_grammar_options(command, arguments.grammar);
  add_render_options(command, arguments.render);
}

void refuse_own_files(const RunArguments& arguments, const std::string& output, const char* option) {
  // Nothing is written to a file.
  if (output.empty() || output == "-") return;
  std::vector<std::string> files = arguments.render.inputs;
  files.insert(files.end(), {arguments.grammar.rules, arguments.grammar.dictionary, arguments.grammar.cooccurrence});
  for (const std::string& file : files) {
    std::error_code error;  // an output that is not there yet is no file that is read
    if (!file.empty() && std::filesystem::equivalent(file, output, error))
      throw Fault(output + ": a file that is read would be overwritten: give " + option + " another name");
  }
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
