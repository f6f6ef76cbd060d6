// lexon-lab expand: the plain rules that a grammar source stands for.

#include "source/expand.hpp"

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "data/platform.hpp"
#include "front/process.hpp"
#include "lab/commands.hpp"
#include "lab/options.hpp"
#include "lab/text_file.hpp"
#include "run/notes.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

struct Arguments {
  std::string source;
  std::string rules;
  std::string map;
};

void tell_lines(std::string_view text) {
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    tell_line(line);
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
}

int expand(const Arguments& arguments) {
  Expansion expansion = expand_source(arguments.source);
  for (const SourceMessage& message : expansion.messages) tell_lines(source_message_text(message));
  if (expansion.has_errors()) return kFailed;
  if (arguments.rules.empty()) {
    std::fwrite(expansion.text.data(), 1, expansion.text.size(), stdout);
    return kDone;
  }
  text_file_write(arguments.rules, expansion.text);
  if (arguments.map.empty()) return kDone;
  SourceMap& map = expansion.map;
  map.text_path = arguments.rules;
  map.text_mark = file_mark(File(regular_file_open(arguments.rules, "rb")).get()).value_or(FileMark());
  text_file_write(arguments.map, source_map_text(map, arguments.map));
  return kDone;
}

}  // namespace

Command add_expand(CLI::App& app) {
  CLI::App& command = add_command(app, "expand", "Write the plain rules that a grammar source (.lxr) stands for");
  const auto arguments = std::make_shared<Arguments>();
  add_option(command, "SOURCE", arguments->source, "The source", {.required = true});
  CLI::Option* rules = add_option(command, "-o,--output", arguments->rules, "The rules to write; else standard output");
  add_option(command, "--map", arguments->map, "Where each line of the rules comes from, to write", {.needs = rules});
  return {&command, [arguments] { return expand(*arguments); }};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
