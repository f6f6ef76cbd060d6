// lexon-dict: builds, lists, searches and checks binary dictionaries.

#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "data/platform.hpp"
#include "data/session.hpp"
#include "dicttool/build.hpp"
#include "dicttool/check.hpp"
#include "dicttool/find.hpp"
#include "dicttool/list.hpp"
#include "dicttool/paradigm.hpp"
#include "dicttool/record_view.hpp"
#include "dicttool/word_import.hpp"
#include "front/process.hpp"

namespace {

using namespace lexon;

// Exit statuses: done; failed, damaged, nothing found, or bad lines in a word list, of which the rest is written; a
// wrong command line; standard output not written whole.
constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr int kOutputShort = 4;

constexpr const char* kAbout = R"(Builds, lists, searches and checks the dictionaries of lexon, and makes their text
of word lists and of stems.

An entry stands on one line:
  [HW]{ID} GLOSS "CW" (ATTRIBUTES) <LANGUAGE,FREQUENCY,PRIORITY>;
HW is the surface form and CW the concept word. Empty lines and lines that begin
with ";" are comments.)";

// What the words of the command line come to, for whichever command was given.
struct Arguments {
  BuildOptions build;
  std::string dictionary;
  FindQuery find;
  std::string field = "hw";
  WordImport import;
  std::string format;
  // Of `import`: write the table that comes with the program, and read no list.
  bool shows_table = false;
  Inflection inflection;
  std::string output = "-";  // of entry text
  std::vector<std::string> keys;
  // Of `build` and `check`, for the sort: what does not fit goes to the disk.
  unsigned memory_mib = 192;
};

// The bit of a key field by its name; 0 for other names.
// As the option `--keys` and the builder have them: bit N is key field N.
unsigned key_bit(const std::string& name) {
  for (int field = kKeyHw; field <= kSlotCount; ++field) {
    if (key_field_name(field) != nullptr && name == key_field_name(field)) return 1U << field;
  }
  return 0;
}

// Used for single names and, behind a delimiter, for each of a list.
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
// On a terminal both show control characters as text; see `ShownStream`. Neither is owned.
struct Streams {
  std::FILE* out;
  std::FILE* log;
};

// Figures go to the output, faults to the log; so do those of the other commands.
int run_build(Session& session, Arguments& arguments, const Streams& to) {
  BuildOptions& options = arguments.build;
  // Added to the two keys that every dictionary has.
  for (const std::string& name : arguments.keys) options.key_fields |= key_bit(name);
  options.memory = std::size_t{arguments.memory_mib} << 20;
  BuildFigures figures;
  if (!dictionary_build(session, options, to.log, figures)) return kFailed;
  std::fprintf(to.out, "%s in %s (%u blocks), index in %s (%u blocks)",
               counted(figures.entries, "entry", "entries").c_str(), options.dictionary.c_str(),
               figures.dictionary_blocks, figures.index.c_str(), figures.index_blocks);
  if (figures.repeated != 0) std::fprintf(to.out, ", %lld repeated", static_cast<long long>(figures.repeated));
  if (figures.bad_lines != 0) {
    std::fprintf(to.out, ", %s left out", counted(figures.bad_lines, "bad line", "bad lines").c_str());
  }
  std::fprintf(to.out, "\n");
  return kDone;
}

// As entry text, which `build` reads again.
int run_list(Session& session, const Arguments& arguments, const Streams& to) {
  return dictionary_list(session, arguments.dictionary, to.out, to.log) ? kDone : kFailed;
}

// Nothing found is a failure, so that a script can ask whether a word is there.
int run_find(Session& session, Arguments& arguments, const Streams& to) {
  FindQuery& query = arguments.find;
  for (int field = kKeyHw; field <= kSlotCount; ++field) {
    if (key_bit(arguments.field) == 1U << field) query.field = field;
  }
  const FindResult result = dictionary_find(session, arguments.dictionary, query, to.out, to.log);
  if (result == FindResult::nothing) std::fprintf(to.log, "nothing is found\n");
  return result == FindResult::found ? kDone : kFailed;
}

// Entry text that is made of something else: a file in the making, or standard output.
class EntryTarget {
 public:
  EntryTarget(const std::string& path, const Streams& to) : path_(path), to_(to) {}

  // Null if it cannot be made, which has been told.
  std::FILE* open() {
    if (path_ == "-") return to_.out;
    if (draft_.open_beside(path_)) return draft_.stream();
    std::fprintf(to_.log, "%s: cannot be created: %s\n", path_.c_str(), std::strerror(errno));
    return nullptr;
  }

  // Only now does the file have its name: what fails on the way leaves the one that stood there.
  [[nodiscard]] bool finish() {
    if (path_ == "-" || draft_.put_in_place(path_)) return true;
    std::fprintf(to_.log, "%s: cannot be written\n", path_.c_str());
    return false;
  }

 private:
  const std::string& path_;
  const Streams& to_;
  DraftFile draft_;
};

// Words that are left out are told and are no failure; lines that are no line of such a list are one, at the end.
int run_import(Session& session, Arguments& arguments, const Streams& to) {
  WordImport& options = arguments.import;
  for (const WordFormat format :
       {WordFormat::unimorph, WordFormat::lttoolbox, WordFormat::conllu, WordFormat::wordnet, WordFormat::propbank}) {
    if (arguments.format == word_format_name(format)) options.format = format;
  }
  if (arguments.shows_table) {
    const std::string_view table = shipped_table(options.format);
    std::fwrite(table.data(), 1, table.size(), to.out);
    return kDone;
  }
  if (options.inputs.empty()) {
    std::fprintf(to.log, "no list is named: write it behind the options, - for standard input\n");
    return kUsage;
  }
  EntryTarget target(arguments.output, to);
  std::FILE* out = target.open();
  WordImportFigures figures;
  if (out == nullptr || !words_import(session, options, out, to.log, figures) || !target.finish()) return kFailed;
  std::fprintf(to.log, "%s", counted(figures.entries, "entry", "entries").c_str());
  if (figures.repeated != 0) std::fprintf(to.log, ", %lld repeated", static_cast<long long>(figures.repeated));
  if (figures.left_out != 0) std::fprintf(to.log, ", %s left out", counted(figures.left_out, "word", "words").c_str());
  if (figures.bad_lines != 0) std::fprintf(to.log, ", %s", counted(figures.bad_lines, "bad line", "bad lines").c_str());
  std::fprintf(to.log, "\n");
  return figures.bad_lines == 0 ? kDone : kFailed;
}

// As for `run_import`: the text is written, and bad lines fail the command.
int run_inflect(Session& session, Arguments& arguments, const Streams& to) {
  EntryTarget target(arguments.output, to);
  std::FILE* out = target.open();
  InflectionFigures figures;
  if (out == nullptr || !stems_inflect(session, arguments.inflection, out, to.log, figures) || !target.finish()) {
    return kFailed;
  }
  std::fprintf(to.log, "%s of %s", counted(figures.entries, "entry", "entries").c_str(),
               counted(figures.stems, "stem", "stems").c_str());
  if (figures.repeated != 0) std::fprintf(to.log, ", %lld repeated", static_cast<long long>(figures.repeated));
  if (figures.bad_lines != 0) std::fprintf(to.log, ", %s", counted(figures.bad_lines, "bad line", "bad lines").c_str());
  std::fprintf(to.log, "\n");
  return figures.bad_lines == 0 ? kDone : kFailed;
}

// Where the check itself could not be made neither answer is given, and the log has the reason.
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

// The range keeps the product below what 32 bits can tell.
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

// The commands that read one dictionary; some add options of their own.
CLI::App* add_with_dictionary(CLI::App& app, const char* name, const char* what, Arguments& arguments) {
  CLI::App* command = app.add_subcommand(name, what);
  command->add_option("DIC", arguments.dictionary, "The dictionary")->required();
  return command;
}

CLI::App* add_find(CLI::App& app, Arguments& arguments) {
  CLI::App* command = add_with_dictionary(app, "find", "Write the entries for which all of these hold", arguments);
  FindQuery& query = arguments.find;
  // A group, so that one of its options can be demanded.
  CLI::Option_group* conditions = command->add_option_group("conditions");
  const CLI::Option* hw = conditions->add_option("--hw", query.hw, "The whole surface form");
  const CLI::Option* cw = conditions->add_option("--cw", query.cw, "The whole concept word");
  // An empty text is a form of its own: whether the option was given decides.
  command->callback([&query, hw, cw] {
    query.wants_hw = hw->count() != 0;
    query.wants_cw = cw->count() != 0;
  });
  // One value each: an attribute or a pattern may look like anything.
  const auto one = [](CLI::Option* option) {
    option->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  };
  one(conditions->add_option("--attr", query.attributes, "An attribute that they have; with ^ in front: have not"));
  one(conditions->add_option("--prefix", query.prefixes, "How the field begins"));
  one(conditions->add_option("--glob", query.globs, "All of the field: * any text, ? a character, [a-z] one of them"));
  one(conditions->add_option("--regex", query.regexes, "A part of the field, as an ECMAScript regular expression"));
  // At least one: without a condition the command is `list`.
  conditions->require_option(1, 0);
  command->add_option("--in", arguments.field, "The field that prefix, glob and regex are about")
      ->check(is_key_name())
      ->capture_default_str();
  command->add_option("--limit", query.limit, "Entries to write; 0: all")->check(CLI::NonNegativeNumber);
  command->add_flag("--count", query.count_only, "Write only how many there are");
  return command;
}

// What `import` and `inflect` have in common.
void add_entry_form(CLI::App& command, Arguments& arguments, EntryForm& form) {
  command.add_option("-o,--output", arguments.output, "The entry text to write; - for standard output")
      ->capture_default_str();
  command.add_option("--cw", form.cw,
                     "The concept word, with {lemma}, {category} and {class} (the first attribute) in their places");
  command.add_option("--id", form.id, "The id, likewise");
  command.add_option("--language", form.language, "The language of all entries, one letter or two");
}

CLI::App* add_import(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand("import", "Make entry text of a word list");
  command->add_option("LISTS", arguments.import.inputs,
                      "The lists; - for standard input; of WordNet and PropBank their folder");
  command
      ->add_option("--from", arguments.format,
                   "unimorph, lttoolbox (what lt-expand writes), conllu, wordnet or propbank")
      ->required()
      ->check(CLI::IsMember({"unimorph", "lttoolbox", "conllu", "wordnet", "propbank"}));
  command->add_option("--table", arguments.import.tables, "Rows that override the shipped table of features");
  command->add_flag("--show-table", arguments.shows_table, "Write the shipped table and stop");
  add_entry_form(*command, arguments, arguments.import.form);
  return command;
}

// Each `add_` function gives the command, for the caller to ask whether it was meant.
CLI::App* add_inflect(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand("inflect", "Make entry text of stems and a table of paradigms");
  command->add_option("STEMS", arguments.inflection.stems, "Tables of stems; - for standard input")->required();
  command->add_option("-p,--paradigms", arguments.inflection.paradigms, "Endings by class, and letter changes")
      ->required();
  add_entry_form(*command, arguments, arguments.inflection.form);
  return command;
}

// Reads the command line and does what it says.
int run(int argc, char** argv, const Streams& to) {
  Arguments arguments;
  CLI::App app(kAbout, "lexon-dict");
  app.set_version_flag("--version", std::string("lexon-dict ") + LEXON_VERSION);
  // No more than one, either: the options of two would mix.
  app.require_subcommand(1);
  const CLI::App* build = add_build(app, arguments);
  const CLI::App* list = add_with_dictionary(app, "list", "Write all entries as text, in order of HW", arguments);
  const CLI::App* find = add_find(app, arguments);
  const CLI::App* import = add_import(app, arguments);
  const CLI::App* inflect = add_inflect(app, arguments);
  CLI::App* check =
      add_with_dictionary(app, "check", "Look for damage, and ask for every entry by every key", arguments);
  add_memory(*check, arguments);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    std::ostringstream out;
    std::ostringstream log;
    // The library's own statuses are not ours. Its texts go through our streams, which escape what steers a terminal.
    const int status = app.exit(error, out, log) == 0 ? kDone : kUsage;
    std::fputs(out.str().c_str(), to.out);
    std::fputs(log.str().c_str(), to.log);
    return status;
  }
  // Too large for a stack.
  const auto session = std::make_unique<Session>();
  if (build->parsed()) return run_build(*session, arguments, to);
  if (list->parsed()) return run_list(*session, arguments, to);
  if (find->parsed()) return run_find(*session, arguments, to);
  if (import->parsed()) return run_import(*session, arguments, to);
  if (inflect->parsed()) return run_inflect(*session, arguments, to);
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
