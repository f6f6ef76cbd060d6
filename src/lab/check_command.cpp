// lexon-lab check: mistakes that no single file shows.

#include <algorithm>
#include <array>
#include <cctype>
#include <iostream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <tuple>

#include "front/process.hpp"
#include "lab/check.hpp"
#include "lab/check_project.hpp"
#include "lab/check_rules.hpp"
#include "lab/commands.hpp"
#include "lab/options.hpp"
#include "lab/text_file.hpp"
#include "run/files.hpp"
#include "run/notes.hpp"
#include "source/expand.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

using Json = nlohmann::ordered_json;

struct Arguments {
  std::string rules;                  // text or source; "-": standard input
  std::vector<std::string> words;     // entry texts, which count as one, or a built dictionary; empty: none
  std::string cooccurrence;           // the same, one file
  std::vector<std::string> inputs;    // graphs
  std::string format = "text";        // or "json" or "sarif"
  std::vector<std::string> silenced;  // codes of findings that are left out
  int blocks = kMaxBlocks;
  bool is_strict = false;  // warnings count as errors in the status
};

// As in all three forms of the output; the names are those of SARIF.
const char* name_of(Level level) {
  switch (level) {
    case Level::error: return "error";
    case Level::warning: return "warning";
    default: return "note";
  }
}

// Of one slip that was copied about, so many places are shown to people.
constexpr std::int64_t kShownAlike = 5;

void write_text(const std::vector<Finding>& findings) {
  using What = std::tuple<std::string, std::string, std::string>;
  const auto what_of = [](const Finding& finding) { return What(finding.code, finding.file, finding.text); };
  // The remedy does not count: that of copies names the lines that each was copied from.
  std::map<What, std::int64_t> alike;
  for (const Finding& finding : findings) ++alike[what_of(finding)];
  std::map<What, std::int64_t> shown;
  for (const Finding& finding : findings) {
    const What what = what_of(finding);
    const std::int64_t count = ++shown[what];  // of its like, this one counted
    // The fifth of a kind tells how many there are besides.
    if (count > kShownAlike) continue;
    std::cout << escaped(finding.file);
    if (finding.line != 0) std::cout << ':' << finding.line;
    if (finding.column != 0) std::cout << ':' << finding.column;
    std::cout << ": " << name_of(finding.level) << ": " << escaped(finding.text) << " [" << finding.code << "]\n";
    if (!finding.remedy.empty()) std::cout << "  fix: " << escaped(finding.remedy) << '\n';
    if (count == kShownAlike && alike[what] > count) std::cout << "  and " << alike[what] - count << " more places\n";
  }
}

// Texts may hold bytes that are no UTF-8, which JSON cannot.
void write_json(const Json& json) {
  std::cout << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

// A list of {"file", "line", "column", "endColumn", "level", "code", "text", "fix"}; what is not known is left out. Columns
// are characters, the end column stands behind the last.
Json json_of(const std::vector<Finding>& findings) {
  Json all = Json::array();
  for (const Finding& finding : findings) {
    Json one{{"file", finding.file}};
    if (finding.line != 0) one["line"] = finding.line;
    if (finding.column != 0) {
      one["column"] = finding.column;
      one["endColumn"] = finding.end_column;
    }
    one["level"] = name_of(finding.level);
    one["code"] = finding.code;
    one["text"] = finding.text;
    // The remedy in words; the change of the text is for editors, which ask the language server.
    if (!finding.remedy.empty()) one["fix"] = finding.remedy;
    all.push_back(std::move(one));
  }
  return all;
}

// A path as a relative reference: bytes that a URI cannot hold are written as %XX.
std::string uri_of(const std::string& path) {
  constexpr std::string_view kPlain = "-._~/!$&'()*+,;=@";
  std::string uri;
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80 && (std::isalnum(byte) != 0 || kPlain.find(c) != std::string_view::npos)) {
      uri += c;
    } else {
      constexpr std::string_view kDigits = "0123456789ABCDEF";
      ((uri += '%') += kDigits[byte >> 4]) += kDigits[byte & 15];
    }
  }
  return uri;
}

// The form that editors and code review read. It has no field for a remedy in words, so that goes into the message.
Json sarif_of(const std::vector<Finding>& findings) {
  Json rules = Json::array();
  for (const CheckCode& code : check_codes()) {
    // All codes are listed, whether something was found or not: viewers show their texts.
    rules.push_back({{"id", code.code}, {"shortDescription", {{"text", code.text}}}});
  }
  Json results = Json::array();
  for (const Finding& finding : findings) {
    Json location{{"artifactLocation", {{"uri", uri_of(finding.file)}}}};
    if (finding.line != 0) location["region"]["startLine"] = finding.line;
    if (finding.column != 0) {
      location["region"]["startColumn"] = finding.column;
      location["region"]["endColumn"] = finding.end_column;
    }
    const std::string text = finding.remedy.empty() ? finding.text : finding.text + ". Fix: " + finding.remedy;
    results.push_back({{"ruleId", finding.code},
                       {"level", name_of(finding.level)},
                       {"message", {{"text", text}}},
                       {"locations", Json::array({{{"physicalLocation", location}}})}});
  }
  const Json driver{{"name", "lexon-lab check"}, {"version", LEXON_VERSION}, {"rules", rules}};
  return {{"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
          {"version", "2.1.0"},
          {"runs",
           Json::array({{{"tool", {{"driver", driver}}}, {"columnKind", "unicodeCodePoints"}, {"results", results}}})}};
}

// A misspelt code would silence nothing, and nobody would notice.
void refuse_unknown_codes(const std::vector<std::string>& codes) {
  for (const std::string& code : codes) {
    const bool is_known =
        std::ranges::any_of(check_codes(), [&code](const CheckCode& known) { return code == known.code; });
    if (!is_known) throw Fault("--no " + code + ": no finding has this code: they stand in brackets behind each");
  }
}

// Expands a source, checks, leaves out what is silenced, and writes the rest; the count goes to standard error, so that
// standard output holds findings alone.
int run_check(const Arguments& arguments) {
  refuse_unknown_codes(arguments.silenced);
  CheckInput input;
  input.rules = {arguments.rules, text_file_read(arguments.rules)};
  // No finding, as an empty file is no mistake by itself.
  if (input.rules.text.empty()) tell_line(arguments.rules + ": is empty, so there are no rules to check");
  input.words_files = arguments.words;
  input.cooccurrence_file = arguments.cooccurrence;
  input.blocks = arguments.blocks;
  const bool may_be_source = path_split(arguments.rules).extension == kSourceExtension;
  const Expansion expansion = may_be_source ? expand_source(arguments.rules) : Expansion();
  if (expansion.is_source && !expansion.has_errors()) {
    input.rules.text = expansion.text;
    input.source = &expansion.map;
  }
  // A text from standard input is read once, and named "-" in findings.
  for (const std::string& path : arguments.inputs) input.graphs.push_back({path, text_file_read(path)});
  if (path_split(arguments.rules).extension == ".rul" || is_compiled(input.rules.text)) {
    throw Fault(arguments.rules + ": is no rule text: compiled rules do not tell lines; name the text");
  }
  // Without its expansion nothing can be held against a source: its own faults come first.
  std::vector<Finding> findings = source_findings(expansion);
  if (!expansion.has_errors()) std::ranges::move(check(input), std::back_inserter(findings));
  std::erase_if(findings, [&arguments](const Finding& finding) {
    return std::ranges::find(arguments.silenced, finding.code) != arguments.silenced.end();
  });
  if (arguments.format == "json") write_json(json_of(findings));
  if (arguments.format == "sarif") write_json(sarif_of(findings));
  if (arguments.format == "text") write_text(findings);

  std::array<std::int64_t, 3> counts{};
  for (const Finding& finding : findings) ++counts[static_cast<std::size_t>(finding.level)];
  std::cout.flush();
  if (arguments.format == "text") {
    tell_line(counted(counts[0], "error", "errors") + ", " + counted(counts[1], "warning", "warnings") + ", " +
              counted(counts[2], "note", "notes"));
  }
  return counts[0] != 0 || (arguments.is_strict && counts[1] != 0) ? kFailed : kDone;
}

}  // namespace

Command add_check(CLI::App& app) {
  CLI::App& command = add_command(app, "check", "Find mistakes in rules, words and graphs without rendering");
  const auto arguments = std::make_shared<Arguments>();
  add_option(command, "RULES", arguments->rules, "The rules, as text or as a grammar source (.lxr)",
             {.required = true});
  add_option(
      command, "-d,--dict", arguments->words,
      "The dictionary: entry text, so that findings name its lines, or what lexon-dict makes of it; may be repeated",
      {.one_value = true});
  add_option(command, "-c,--cr", arguments->cooccurrence, "The co-occurrence dictionary, text or built");
  add_option(command, "-i,--input", arguments->inputs, "Graphs; - for standard input; may be repeated");
  add_option(command, "--format", arguments->format, "How findings are written",
             {.shows_default = true, .choices = {"text", "json", "sarif"}});
  add_option(command, "--no", arguments->silenced, "Leave out findings of this code; may be repeated",
             {.one_value = true});
  add_option(command, "--blocks", arguments->blocks, "The memory that runs will have, as for lexon",
             {.shows_default = true, .range = {{1, 65535}}});
  add_flag(command, "--strict", arguments->is_strict, "Status 1 with warnings too");
  return {&command, [arguments] { return run_check(*arguments); }};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
