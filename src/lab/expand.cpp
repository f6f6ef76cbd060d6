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
  std::string source;  // that names all others
  std::string rules;   // file to write; empty: standard output
  std::string map;     // file to write; empty: none
};

// The rules go to a file, or to standard output; the map, which says where each of their lines comes from, belongs to a
// file of rules and is of no use without one.
int expand(const Arguments& arguments) {
  Expansion expansion = expand_source(arguments.source);
  for (const SourceMessage& message : expansion.messages) {
    const std::string told = source_message_text(message);
    for (const std::string_view line : lines_of(told)) tell_line(line);
  }
  // Half of the rules would look like all of them.
  if (expansion.has_errors()) return kFailed;
  RunArguments read;
  // What is written must be none of the files that were read.
  read.grammar.rules = arguments.source;
  for (const MappedFile& file : expansion.map.files) read.render.inputs.push_back(file.path);
  refuse_own_files(read, arguments.rules, "--output");
  refuse_own_files(read, arguments.map, "--map");
  if (arguments.rules.empty()) {
    std::fwrite(expansion.text.data(), 1, expansion.text.size(), stdout);
    return kDone;
  }
  text_file_write(arguments.rules, expansion.text);
  if (arguments.map.empty()) return kDone;
  // The map holds the state of the rules that it was written for, so that another text is not taken for them.
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
