#include "run/output_check.hpp"

#include <filesystem>
#include <system_error>

#include "dict/dictionary.hpp"
#include "run/files.hpp"
#include "run/rule_files.hpp"
#include "source/expand.hpp"

namespace lexon {

namespace {

namespace fs = std::filesystem;

// Where a name leads, whether or not a file stands there.
fs::path target_of(fs::path path) {
  // As many links as the system follows; links that lead in a circle end here.
  constexpr int kMaxLinks = 40;
  std::error_code error;
  for (int i = 0; i < kMaxLinks && fs::is_symlink(fs::symlink_status(path, error)); ++i) {
    const fs::path next = fs::read_symlink(path, error);
    if (error) break;
    path = path.parent_path() / next;
  }
  return fs::weakly_canonical(path, error);
}

// Do both names lead to one file, or to the place where it would be made?
bool is_same_file(const std::string& a, const std::string& b) {
  if (b.empty()) return false;
  std::error_code error;
  // By the file itself, so that hard links count; a name that is free has only its path.
  if (fs::exists(a, error) && fs::exists(b, error)) return fs::equivalent(a, b, error);
  const fs::path target = target_of(a);
  return !target.empty() && target == target_of(b);
}

// The name of the index stands in the dictionary alone; empty if it cannot be had.
std::string index_path(const std::string& dictionary_file) {
  Dictionary dictionary;
  const bool names_index = !dictionary_file.empty() && dictionary_file_open(dictionary_file, dictionary) &&
                           dictionary.slots[kKeyHw] != nullptr;
  return names_index ? folder_prefix(dictionary_file) + dictionary.slots[kKeyHw]->name : std::string();
}

}  // namespace

// Files that a run writes by itself count as well: an output over the compiled rules would be emptied, then
// overwritten.
std::string output_conflict(const RunSettings& settings) {
  const std::string& output = settings.output_file;
  std::error_code error;
  const fs::file_status status = fs::status(output, error);
  if (output.empty() || (fs::exists(status) && !fs::is_regular_file(status))) return {};
  struct Read {
    const char* what;
    std::string path;
  };
  const bool may_be_source = settings.rule_file.ends_with(kSourceExtension);
  const CompiledPaths compiled = compiled_paths_of(settings.rule_file);
  const CompiledPaths expanded = compiled_paths_of(may_be_source ? settings.rule_file + ".txt" : "");
  // An index is there when its dictionary is of use.
  const bool may_be_index = fs::exists(status);
  const Read all[] = {
      {"the input", settings.input_file},
      {"the rules", settings.rule_file},
      {"the compiled rules", compiled.rules},
      {"the compiled rule matrix", compiled.matrix},
      {"the stamp of the compiled rules", compiled.stamp},
      {"the expanded rules", may_be_source ? settings.rule_file + ".txt" : ""},
      {"the map of the expanded rules", may_be_source ? settings.rule_file + ".map" : ""},
      {"the compiled rules", expanded.rules},
      {"the compiled rule matrix", expanded.matrix},
      {"the stamp of the compiled rules", expanded.stamp},
      {"the dictionary", settings.dictionary_file},
      {"the index of the dictionary", may_be_index ? index_path(settings.dictionary_file) : ""},
      {"the co-occurrence dictionary", settings.cr_dictionary_file},
      {"the index of the co-occurrence dictionary", may_be_index ? index_path(settings.cr_dictionary_file) : ""},
  };
  for (const Read& read : all) {
    if (!is_same_file(output, read.path)) continue;
    return "The output " + output + " is the same file as " + read.what + " " + read.path +
           "; nothing was written. Name another output!";
  }
  return {};
}

}  // namespace lexon
