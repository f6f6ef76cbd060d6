#include "lab/check_project.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "lab/check_rules.hpp"
#include "lab/commands.hpp"
#include "lab/text_file.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// A file that is missing must not end the check of the others.
std::optional<std::string> text_or_finding(const std::string& path, const Overlay& unsaved,
                                           std::vector<Finding>& findings) {
  try {
    return text_file_read(path, &unsaved);
  } catch (const Fault& fault) {
    findings.push_back({path, 0, 0, 0, Level::error, "no-file", fault.what(),
                        "write its name into lexon.json as it is, or take it out there"});
    return std::nullopt;
  }
}

// Findings that compare the files with the rules mean nothing without rules.
bool is_about_rules(const Finding& finding) {
  constexpr std::array<std::string_view, 3> kCompared = {"unused-name", "unfollowed-label", "unknown-word"};
  return std::ranges::find(kCompared, finding.code) != kCompared.end();
}

}  // namespace

// The first half of a message says what is wrong, the second how to put it right.
std::vector<Finding> source_findings(const Expansion& expansion) {
  std::vector<Finding> findings;
  for (const SourceMessage& message : expansion.messages) {
    const std::size_t colon = message.text.find(": ");
    Finding finding =
        finding_at(message.file, message.line, message.shown, message.column, message.column + 1,
                   message.is_warning ? Level::warning : Level::error, "source-syntax", message.text.substr(0, colon),
                   colon == std::string::npos ? std::string() : message.text.substr(colon + 2));
    findings.push_back(std::move(finding));
  }
  return findings;
}

std::vector<Finding> check_project(const ProjectFiles& files, const Overlay& unsaved, CheckCache& cache) {
  std::vector<Finding> findings;
  CheckInput input;
  input.blocks = files.blocks;
  input.unsaved = &unsaved;
  input.cache = &cache;
  input.rules.file = files.rules;
  // Without rules the other files are still checked for themselves.
  bool has_rules = false;  // and they can be read
  Expansion expansion;     // that `input` points into
  if (!files.rules.empty()) {
    if (auto text = text_or_finding(files.rules, unsaved, findings)) {
      input.rules.text = std::move(*text);
      has_rules = true;
    }
  }
  if (has_rules && files.rules.ends_with(kSourceExtension)) {
    expansion = expand_source(files.rules, unsaved.lookup());
    if (expansion.is_source) {
      std::ranges::move(source_findings(expansion), std::back_inserter(findings));
      has_rules = !expansion.has_errors();
      input.rules.text = expansion.text;
      input.source = &expansion.map;
    }
  }
  // Compiled rules under the name of a text.
  if (has_rules && is_compiled(input.rules.text)) {
    findings.push_back({files.rules, 0, 0, 0, Level::error, "no-file", "is no rule text",
                        "compiled rules do not tell lines: name the text"});
    has_rules = false;
  }
  // Words and graphs are still checked for themselves.
  if (!has_rules) {
    input.rules.text.clear();
    input.source = nullptr;
  }
  // Reads words into the cache, from which the check takes them.
  const auto keep_readable = [&](const std::string& path) {
    try {
      static_cast<void>(cache.words(path, &unsaved));
      return true;
    } catch (const Fault& fault) {
      findings.push_back({path, 0, 0, 0, Level::error, "no-file", fault.what(),
                          "write its name into lexon.json as it is, or take it out there"});
      return false;
    }
  };
  std::ranges::copy_if(files.words, std::back_inserter(input.words_files), keep_readable);
  if (!files.cooccurrence.empty() && keep_readable(files.cooccurrence)) input.cooccurrence_file = files.cooccurrence;
  for (const std::string& path : files.graphs) {
    if (auto text = text_or_finding(path, unsaved, findings)) input.graphs.push_back({path, std::move(*text)});
  }
  std::vector<Finding> all = check(input);
  // Else everything would be a name that nobody asks for.
  if (!has_rules) std::erase_if(all, is_about_rules);
  std::ranges::move(all, std::back_inserter(findings));
  std::erase_if(findings, [&files](const Finding& finding) {
    return std::ranges::find(files.silenced, finding.code) != files.silenced.end();
  });
  return findings;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
