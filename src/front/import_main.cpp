// lexon-import: turns the graphs of meaning banks and the trees of treebanks into graphs of lexon.

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "front/process.hpp"
#include "import/importer.hpp"
#include "import/steps.hpp"

namespace {

using namespace lexon;

// Exit statuses: done; mistakes in an input, told, the rest is written; a wrong command line or a file that cannot be
// opened; output not written whole.
constexpr int kDone = 0;
constexpr int kMistakes = 1;
constexpr int kUsage = 2;
constexpr int kOutputShort = 4;

constexpr const char* kAbout = R"(Turns meaning graphs (PENMAN: AMR, UMR) and dependency trees (CoNLL-U) into
graphs of lexon.

Every triple of the source is in the output, or on the list of --left-out with
the reason. --steps tells what each step of rewriting does.)";

// What the words of the command line come to. Empty names: not given.
struct Arguments {
  std::vector<std::string> inputs;
  std::string output = "-";
  std::string format = "auto";
  std::vector<std::string> roles;
  std::string attributes;
  std::string gold;
  std::string left_out;
  bool keeps_all = false;
  bool enhanced = false;
  bool quiet = false;
  bool lists_steps = false;
  ImportOptions options;
};

// By the name's end, unless a format is asked for; standard input has no name and is PENMAN.
SourceFormat format_of(const Arguments& arguments, const std::string& input) {
  if (arguments.format == "conllu") return SourceFormat::conllu;
  if (arguments.format == "auto" && (input.ends_with(".conllu") || input.ends_with(".conll"))) {
    return SourceFormat::conllu;
  }
  return SourceFormat::penman;
}

// "FILE:LINE:COLUMN: error: TEXT", as editors find it.
// All of a file at once; the caller decides whether that ends the run.
void complain(const std::string& file, const std::vector<SourceError>& errors) {
  for (const SourceError& error : errors) {
    tell_line(file + ':' + std::to_string(error.place.line) + ':' + std::to_string(error.place.column) +
              ": error: " + error.text);
  }
}

// The table of a format with those of the user on top. False if one cannot be read.
bool table_read(const Arguments& arguments, SourceFormat format, RoleTable& table) {
  // The user's rows come behind, and so go before those of the program.
  std::istringstream own(format == SourceFormat::penman ? kAmrRoles : kDependencyRoles);
  table.read(own);
  for (const std::string& name : arguments.roles) {
    std::ifstream file(name);
    if (!file) {
      tell_line("lexon-import: " + name + " cannot be opened");
      return false;
    }
    const std::vector<SourceError> errors = table.read(file);
    complain(name, errors);
    if (!errors.empty()) return false;
  }
  return true;
}

// An output file, or standard output for "-"; null for an empty name.
class Output {
 public:
  // False if the file cannot be made.
  bool open(const std::string& name) {
    name_ = name;
    if (name.empty() || name == "-") return true;
    file_.open(name, std::ios::binary);
    if (!file_) tell_line("lexon-import: " + name + " cannot be written");
    return static_cast<bool>(file_);
  }

  // Not valid longer than this object.
  std::ostream* stream() {
    if (name_.empty()) return nullptr;
    return name_ == "-" ? &std::cout : &file_;
  }

  // True if all that was written has arrived.
  // To be asked once, behind all that was written.
  bool finish() {
    std::ostream* under = stream();
    if (under == nullptr) return true;
    under->flush();
    if (!*under) tell_line("lexon-import: " + name_ + " could not be written whole");
    return static_cast<bool>(*under);
  }

 private:
  std::string name_;
  std::ofstream file_;
};

// The messages of a source, told line by line.
// The library writes messages to a stream; on a terminal each line is shown so that it steers nothing.
class Teller : public std::stringbuf {
 public:
  int sync() override {
    std::istringstream lines(str());
    for (std::string line; std::getline(lines, line);) tell_line(line);
    str({});
    return 0;
  }
};

// Each as the switch that leaves it out.
void show_steps() {
  for (const RewriteStep& step : rewrite_steps()) std::printf("--no-%-13s %s\n", step.name, step.about);
}

// Every triple is in one of the counts: relations, words, attributes, left out.
// To the messages: the output may be the graphs.
void show_figures(const ImportFigures& figures) {
  std::ostringstream out;
  out << figures.graphs << " graphs, " << figures.triples << " triples: " << figures.relations << " as relations, "
      << figures.words << " as words, " << figures.attributes << " as attributes, " << figures.left_out << " left out";
  if (figures.placeholders != 0)
    out << "\n  not written: " << figures.placeholders << "  the graph says that there is none (umr-empty)";
  for (const auto& [reason, count] : figures.reasons) out << "\n  left out: " << count << "  " << reason;
  for (const auto& [role, count] : figures.unknown) {
    out << "\n  no label in the table: " << count << "  " << role << ", written as " << RoleTable::cut(role);
  }
  if (figures.errors != 0)
    out << "\n  " << figures.errors << (figures.errors == 1 ? " mistake" : " mistakes") << " in the input";
  std::istringstream lines(out.str());
  for (std::string line; std::getline(lines, line);) tell_line(line);
}

// In this order: tables, then outputs, then one input after the other.
int run_import(Arguments& arguments) {
  AttributeTable attributes;
  if (!arguments.attributes.empty()) {
    std::ifstream file(arguments.attributes);
    if (!file) {
      tell_line("lexon-import: " + arguments.attributes + " cannot be opened");
      return kUsage;
    }
    const std::vector<SourceError> errors = attributes.read(file);
    complain(arguments.attributes, errors);
    if (!errors.empty()) return kUsage;
  }
  // An output is emptied when it is opened: before the first input has been read.
  // By what the names lead to, not by how they are spelled.
  for (const std::string& output : {arguments.output, arguments.gold, arguments.left_out}) {
    for (const std::string& input : arguments.inputs) {
      std::error_code error;
      if (!std::filesystem::is_regular_file(output, error) || !std::filesystem::equivalent(output, input, error))
        continue;
      tell_line("lexon-import: " + output + " is read and cannot be written: name another file");
      return kUsage;
    }
  }
  Output graphs;
  Output gold;
  Output left_out;
  if (!graphs.open(arguments.output) || !gold.open(arguments.gold) || !left_out.open(arguments.left_out)) return kUsage;
  Teller teller;
  std::ostream messages(&teller);
  // Over all inputs.
  ImportFigures figures;
  const ImportOutputs outputs{graphs.stream(), gold.stream(), left_out.stream(), &messages};
  for (const std::string& input : arguments.inputs) {
    const SourceFormat format = format_of(arguments, input);
    // Each format has a table of its own, so it is read anew for each input.
    arguments.options.table = {};
    if (!table_read(arguments, format, arguments.options.table)) return kUsage;
    arguments.options.format = format;
    arguments.options.enhanced = arguments.enhanced;
    std::ifstream file;
    if (input != "-") file.open(input, std::ios::binary);
    if (input != "-" && !file) {
      tell_line("lexon-import: " + input + " cannot be opened");
      return kUsage;
    }
    import_stream(input == "-" ? std::cin : file, input == "-" ? "stdin" : input, arguments.options, attributes,
                  outputs, figures);
    messages.flush();
  }
  // Known only behind the last input.
  for (const std::string& label : attributes.unused()) {
    tell_line(arguments.attributes + ": error: no sentence has the label " + label);
    ++figures.errors;
  }
  if (!arguments.quiet) show_figures(figures);
  // All three are finished, and each that fails is told.
  const bool is_whole = static_cast<int>(graphs.finish()) + gold.finish() + left_out.finish() == 3;
  if (!is_whole) return kOutputShort;
  return figures.errors == 0 ? kDone : kMistakes;
}

int run(int argc, char** argv) {
  Arguments arguments;
  CLI::App app(kAbout, "lexon-import");
  app.set_version_flag("--version", std::string("lexon-import ") + LEXON_VERSION);
  app.add_option("FILE", arguments.inputs, "The sources; - is standard input");
  app.add_option("-o,--output", arguments.output, "The graph file to write")->capture_default_str();
  app.add_option("--from", arguments.format, "penman, conllu, or auto: conllu for names that end so")
      ->check(CLI::IsMember({"auto", "penman", "conllu"}))
      ->capture_default_str();
  app.add_option("--roles", arguments.roles, "A table of roles and labels, on top of the program's own");
  app.add_option("--attributes", arguments.attributes, "A table of attributes: label, node, @attributes");
  app.add_option("--gold", arguments.gold, "Write the references, as lexon-lab test reads them");
  app.add_option("--left-out", arguments.left_out, "Write every triple that is left out, with the reason");
  app.add_flag("--enhanced", arguments.enhanced, "CoNLL-U: take the enhanced dependencies");
  app.add_flag("--steps", arguments.lists_steps, "List the steps of rewriting and stop");
  app.add_flag("--no-rewriting", arguments.keeps_all, "Take none of them: the graph as it is");
  app.add_flag("-q,--quiet", arguments.quiet, "No summary");
  for (const RewriteStep& step : rewrite_steps()) {
    app.add_flag_callback(std::string("--no-") + step.name,
                          [&arguments, name = step.name] { arguments.options.left_steps.insert(name); })
        ->group("Steps of rewriting to leave out");
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kUsage;
  }
  if (arguments.lists_steps) {
    show_steps();
    return kDone;
  }
  if (arguments.inputs.empty()) {
    tell_line("lexon-import: no FILE is given; see --help");
    return kUsage;
  }
  if (arguments.keeps_all) {
    for (const RewriteStep& step : rewrite_steps()) arguments.options.left_steps.insert(step.name);
  }
  return run_import(arguments);
}

}  // namespace

int main(int argc, char** argv) {
  process_begin();
  try {
    const int status = run(argc, argv);
    if (standard_output_is_whole()) return status;
    std::fputs("lexon-import: the output could not be written whole\n", stderr);
    return kOutputShort;
  } catch (const std::bad_alloc&) {
    std::fputs("lexon-import: memory is exhausted\n", stderr);
    return kMistakes;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "lexon-import: %s\n", error.what());
    return kMistakes;
  }
}
