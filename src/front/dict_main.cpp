// lexon-dict: builds, lists, searches and checks binary dictionaries.

#include <CLI/CLI.hpp>

#include <cstdint>
#include <cstdio>
#include <exception>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "data/session.hpp"
#include "dicttool/build.hpp"
#include "dicttool/check.hpp"
#include "dicttool/list.hpp"
#include "dicttool/record_view.hpp"
#include "front/process.hpp"

namespace {

using namespace lexon;

// Exit statuses: done; failed, damaged or nothing found; a wrong command line; standard output not written whole.
constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr int kOutputShort = 4;

constexpr const char* kAbout = R"(Builds, lists, searches and checks the dictionaries of lexon.

An entry stands on one line:
  [HW]{ID} GLOSS "CW" (ATTRIBUTES) <LANGUAGE,FREQUENCY,PRIORITY>;
HW is the surface form and CW the concept word. Empty lines and lines that begin
with ";" are comments.)";

struct Arguments {
  BuildOptions build;
  std::string dictionary;
  std::string hw;
  std::string cw;
  std::vector<std::string> keys;
  unsigned memory_mib = 192;
};

// The bit of a key field by its name; 0 for other names.
unsigned key_bit(const std::string& name) {
  for (int field = kKeyHw; field <= kSlotCount; ++field) {
    if (key_field_name(field) != nullptr && name == key_field_name(field)) return 1U << field;
  }
  return 0;
}

CLI::Validator is_key_name() {
  const auto check = [](const std::string& name) {
    return key_bit(name) != 0 ? std::string{} : "a key is hw, gloss, cw, id, extra1 or extra2, not \"" + name + "\"";
  };
  return {check, "KEY"};
}

// "1 entry", "2 entries".
std::string counted(std::int64_t count, const char* one, const char* many) {
  return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

// Where answers and messages go.
struct Streams {
  std::FILE* out;
  std::FILE* log;
};

int run_build(Session& session, Arguments& arguments, const Streams& to) {
  BuildOptions& options = arguments.build;
  for (const std::string& name : arguments.keys) options.key_fields |= key_bit(name);
  options.memory = std::size_t{arguments.memory_mib} << 20;
  BuildFigures figures;
  if (!dictionary_build(session, options, to.log, figures)) return kFailed;
  std::fprintf(to.out, "%s in %s (%u blocks), index in %s (%u blocks)",
               counted(figures.entries, "entry", "entries").c_str(), options.dictionary.c_str(),
               figures.dictionary_blocks, figures.index.c_str(), figures.index_blocks);
  if (figures.bad_lines != 0) {
    std::fprintf(to.out, ", %s left out", counted(figures.bad_lines, "bad line", "bad lines").c_str());
  }
  std::fprintf(to.out, "\n");
  return kDone;
}

int run_list(Session& session, const Arguments& arguments, const Streams& to) {
  return dictionary_list(session, arguments.dictionary, to.out, to.log) ? kDone : kFailed;
}

int run_find(Session& session, const Arguments& arguments, bool by_hw, const Streams& to) {
  const std::string& key = by_hw ? arguments.hw : arguments.cw;
  const FindResult result =
      dictionary_find(session, arguments.dictionary, by_hw ? kKeyHw : kKeyCw, key, to.out, to.log);
  if (result == FindResult::nothing) std::fprintf(to.log, "nothing is found\n");
  return result == FindResult::found ? kDone : kFailed;
}

int run_check(Session& session, const Arguments& arguments, const Streams& to) {
  CheckFigures figures;
  const std::size_t memory = std::size_t{arguments.memory_mib} << 20;
  const bool is_sound = dictionary_check(session, arguments.dictionary, to.log, memory, figures);
  if (is_sound) {
    const std::string keys = counted(figures.keys - figures.unasked, "key", "keys");
    std::fprintf(to.out, "%s: sound: %s, each found once by each of %s%s\n", arguments.dictionary.c_str(),
                 counted(figures.records, "entry", "entries").c_str(), keys.c_str(),
                 figures.has_stamp ? "" : " (no stamp to compare checksums with)");
  } else if (figures.damages != 0) {
    std::fprintf(to.out, "%s: damaged in %s\n", arguments.dictionary.c_str(),
                 counted(figures.damages, "place", "places").c_str());
  }
  return is_sound ? kDone : kFailed;
}

void add_memory(CLI::App& command, Arguments& arguments) {
  command.add_option("--memory", arguments.memory_mib, "MiB that sorting may use")
      ->check(CLI::Range(1U, 4000U))
      ->capture_default_str();
}

CLI::App* add_build(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand("build", "Make a dictionary from entry text, and its index (.idx) beside it");
  command->add_option("ENTRIES", arguments.build.entries, "The entry text")->required();
  command->add_option("OUT", arguments.build.dictionary, "The dictionary to make")->required();
  command->add_flag("--skip-bad", arguments.build.skip_bad, "Report bad lines and leave them out");
  command->add_option("--keys", arguments.keys, "Keys to look words up by, besides hw and cw")
      ->delimiter(',')
      ->check(is_key_name());
  command->add_flag("--force", arguments.build.force, "Replace an index that belongs to another dictionary");
  add_memory(*command, arguments);
  return command;
}

CLI::App* add_with_dictionary(CLI::App& app, const char* name, const char* what, Arguments& arguments) {
  CLI::App* command = app.add_subcommand(name, what);
  command->add_option("DIC", arguments.dictionary, "The dictionary")->required();
  return command;
}

// Reads the command line and does what it says.
int run(int argc, char** argv, const Streams& to) {
  Arguments arguments;
  CLI::App app(kAbout, "lexon-dict");
  app.set_version_flag("--version", std::string("lexon-dict ") + LEXON_VERSION);
  app.require_subcommand(1);
  const CLI::App* build = add_build(app, arguments);
  const CLI::App* list = add_with_dictionary(app, "list", "Write all entries as text, in order of HW", arguments);
  CLI::App* find = add_with_dictionary(app, "find", "Write the entries with this HW or CW", arguments);
  CLI::Option_group* key = find->add_option_group("key");
  const CLI::Option* hw = key->add_option("--hw", arguments.hw, "The surface form");
  key->add_option("--cw", arguments.cw, "The concept word");
  key->require_option(1);
  CLI::App* check =
      add_with_dictionary(app, "check", "Look for damage, and ask for every entry by every key", arguments);
  add_memory(*check, arguments);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    std::ostringstream out;
    std::ostringstream log;
    const int status = app.exit(error, out, log) == 0 ? kDone : kUsage;
    std::fputs(out.str().c_str(), to.out);
    std::fputs(log.str().c_str(), to.log);
    return status;
  }
  const auto session = std::make_unique<Session>();
  if (build->parsed()) return run_build(*session, arguments, to);
  if (list->parsed()) return run_list(*session, arguments, to);
  if (find->parsed()) return run_find(*session, arguments, hw->count() != 0, to);
  return run_check(*session, arguments, to);
}

// The status of a command whose output has to arrive.
int with_output_written(int status) {
  if (standard_output_is_whole()) return status;
  std::fputs("lexon-dict: the output could not be written whole\n", stderr);
  return kOutputShort;
}

}  // namespace

int main(int argc, char** argv) {
  process_begin();
  try {
    // A scope of its own: what has been written has left the streams behind it.
    const int status = [argc, argv] {
      const ShownStream out(stdout);
      const ShownStream log(stderr);
      return run(argc, argv, {out.stream(), log.stream()});
    }();
    return with_output_written(status);
  } catch (const std::bad_alloc&) {
    tell_line("lexon-dict: memory is exhausted");
    return kFailed;
  } catch (const std::exception& error) {
    tell_line(std::string("lexon-dict: ") + error.what());
    return kFailed;
  }
}
