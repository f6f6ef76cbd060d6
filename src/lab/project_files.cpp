#include "lab/project_files.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "dicttool/find.hpp"
#include "lab/check.hpp"
#include "lab/commands.hpp"
#include "lab/text_file.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

// The names of the files in a folder, in order.
std::vector<std::string> names_in(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator each(folder, error), end; !error && each != end; each.increment(error)) {
    // Folders, pipes and links that lead nowhere are no files of a project.
    if (each->is_regular_file(error)) names.push_back(each->path().filename().string());
  }
  std::ranges::sort(names);
  return names;
}

// What the file begins with behind comments and empty lines: its first line with something else, without blanks in front.
// Empty for a file that is missing, or that has nothing in its first 64 KiB.
std::string first_text(const std::string& path, const Overlay* unsaved) {
  std::string head;
  if (const auto text = unsaved != nullptr ? unsaved->find(path) : nullptr; text != nullptr) {
    // What an editor has not saved counts in the place of the file.
    head = text->substr(0, 65536);
  } else {
    std::ifstream file(path, std::ios::binary);
    head.resize(65536);
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(file.gcount()));
  }
  std::string_view rest = head;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    const std::size_t begin = line.find_first_not_of(" \t\r");
    if (begin != std::string_view::npos && line[begin] != ';') return std::string(line.substr(begin));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  }
  return {};
}

// Other formats have files of these names too: graphs open with a sentence, a word block, a block of any name ({org}), or a
// document or paragraph. An empty file may become what its name says.
bool is_graphs(const std::string& path, const Overlay* unsaved) {
  const std::string text = first_text(path, unsaved);
  return text.empty() || text.starts_with("[S") || text.starts_with("[W]") || text.starts_with("{") ||
         text.starts_with("[D") || text.starts_with("[P");
}

// Entry text opens with the surface form of an entry.
bool is_entries(const std::string& path, const Overlay* unsaved) {
  const std::string text = first_text(path, unsaved);
  return text.empty() || (text.starts_with('[') && !text.starts_with("[S"));
}

// The first file whose name fits the first pattern that any fits: a source counts before the plain rules beside it, which
// most often were made of it.
void guess_rules(ProjectFiles& files, const std::vector<std::string>& names) {
  for (const char* pattern : {"rules.lxr", "rules.txt", "*.lxr", "rules[-_]*.txt", "*[-_]rules.txt", "*.rules"}) {
    for (const std::string& name : names) {
      if (!glob_matches(pattern, name) || name.ends_with(".lxr.txt")) continue;  // what a source was expanded to
      files.rules = files.folder + name;
      return;
    }
  }
}

// All that fit, in the order of the patterns: the files of a project's words count as one.
void guess_words(ProjectFiles& files, const std::vector<std::string>& names, const Overlay* unsaved) {
  for (const char* pattern : {"words.txt", "literals.txt", "entries.txt", "*[-_]entries.txt", "*.entries"}) {
    for (const std::string& name : names) {
      if (glob_matches(pattern, name) && is_entries(files.folder + name, unsaved))
        files.words.push_back(files.folder + name);
    }
  }
}

// Of several the last in the order of names.
void guess_cooccurrence(ProjectFiles& files, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    // By its name alone: its text looks like that of entries.
    if (name == "cr.txt" || glob_matches("*[-_]cr.txt", name)) files.cooccurrence = files.folder + name;
  }
}

// Grammars of several languages lie side by side under one folder, which has the graphs of all.
void guess_graphs(ProjectFiles& files, const Overlay* unsaved) {
  const std::string above = fs::path(files.folder).parent_path().parent_path().string() + '/';
  for (const std::string& folder : {files.folder, above}) {
    const std::vector<std::string> names = names_in(folder);
    for (const char* pattern : {"input.txt", "graphs.txt", "*[-_]graphs.txt", "*.graphs", "*.sem"}) {
      for (const std::string& name : names) {
        if (glob_matches(pattern, name) && is_graphs(folder + name, unsaved)) files.graphs.push_back(folder + name);
      }
    }
    // The folder above is looked at only where the own one has no graphs.
    if (!files.graphs.empty()) return;
  }
}

std::string with_slash(std::string folder) {
  if (folder.empty()) folder = ".";
  if (folder.back() != '/') folder += '/';
  return folder;
}

// The settings of a project, read over what was guessed. What is wrong with them is told by `ProjectFiles::fault`, the
// first fault alone; what could be read is in force.
class Settings {
 public:
  Settings(ProjectFiles& files, const Json& json, const std::string& name) : files_(files), json_(json), name_(name) {}

  void read() {
    if (!json_.is_object()) return refuse("is no object: it reads {\"rules\": \"rules.txt\", ...}");
    for (const auto& [key, value] : json_.items()) {
      constexpr std::array<std::string_view, 7> kKeys = {"rules",    "entries", "cooccurrence", "graphs",
                                                         "coverage", "no",      "blocks"};
      if (std::ranges::find(kKeys, key) == kKeys.end())
        refuse("\"" + key + "\" is not known: rules, entries, cooccurrence, graphs, coverage, no, blocks are");
    }
    one("rules", files_.rules);
    many("entries", files_.words, true);
    one("cooccurrence", files_.cooccurrence);
    many("graphs", files_.graphs, true);
    one("coverage", files_.coverage);
    many("no", files_.silenced, false);
    for (const std::string& code : files_.silenced) {
      const auto is_it = [&code](const CheckCode& known) { return code == known.code; };
      if (std::ranges::none_of(check_codes(), is_it)) refuse("\"no\": no finding has the code \"" + code + "\"");
    }
    if (const auto found = json_.find("blocks"); found != json_.end()) {
      constexpr std::int64_t kMost = 65535;
      const std::int64_t blocks = found->is_number_integer() ? found->get<std::int64_t>() : 0;
      if (blocks < 1 || blocks > kMost) return refuse("\"blocks\": is a number from 1 to 65535");
      // As `lexon --blocks`.
      files_.blocks = static_cast<int>(blocks);
    }
  }

 private:
  void refuse(const std::string& what) {
    if (files_.fault.empty()) files_.fault = name_ + ": " + what;
  }

  // A file name. An empty text, or null, means that there is none, whatever was guessed.
  void one(const char* key, std::string& file) {
    std::vector<std::string> all;
    many(key, all, true);
    if (all.size() > 1) refuse(std::string("\"") + key + "\": one file is wanted");
    // Also where it is null, which takes away what was guessed.
    if (json_.contains(key)) file = all.empty() ? std::string() : all.front();
  }

  // A text, or a list of texts, in the place of what was guessed.
  void many(const char* key, std::vector<std::string>& result, bool are_files) {
    const auto found = json_.find(key);
    if (found == json_.end() || found->is_null()) return;
    result.clear();
    const Json list = found->is_array() ? *found : Json::array({*found});
    for (const Json& each : list) {
      if (!each.is_string()) {
        refuse(std::string("\"") + key + "\": " + (are_files ? "names of files are" : "a list of codes is") +
               " wanted");
      } else if (!are_files) {
        result.push_back(each.get<std::string>());
      } else if (const std::string name = each.get<std::string>(); !name.empty()) {
        add_files(name, result);
      }
    }
  }

  // A "*" stands for text in the name of the file alone, not in those of folders. A name without one is taken as it is, so
  // that a file that is missing is noticed where it is read.
  void add_files(const std::string& name, std::vector<std::string>& result) const {
    // Names count from the folder of the settings.
    const std::string path = name.starts_with('/') ? name : files_.folder + name;
    const std::size_t slash = path.rfind('/');
    const std::string pattern = path.substr(slash + 1);
    // Its text is not looked at either: who names a file means it.
    if (pattern.find('*') == std::string::npos) {
      result.push_back(path);
      return;
    }
    for (const std::string& each : names_in(path.substr(0, slash + 1))) {
      if (glob_matches(pattern, each)) result.push_back(path.substr(0, slash + 1) + each);
    }
  }

  ProjectFiles& files_;
  const Json& json_;
  const std::string& name_;  // of the file with the settings, for messages
};

}  // namespace

std::vector<std::string> ProjectFiles::keys() const {
  std::vector<std::string> all;
  if (!rules.empty()) all.push_back(file_key(rules));
  for (const std::string& file : words) all.push_back(file_key(file));
  if (!cooccurrence.empty()) all.push_back(file_key(cooccurrence));
  for (const std::string& file : graphs) all.push_back(file_key(file));
  return all;
}

ProjectFiles project_files_from(const std::string& folder, const std::string& json, const std::string& name_of_json,
                                const Overlay* unsaved) {
  ProjectFiles files{.folder = with_slash(file_key(folder))};
  const std::vector<std::string> names = names_in(files.folder);
  guess_rules(files, names);
  guess_words(files, names, unsaved);
  guess_cooccurrence(files, names);
  guess_graphs(files, unsaved);
  if (std::ranges::find(names, "coverage.json") != names.end()) files.coverage = files.folder + "coverage.json";
  // A folder without settings is what its names say.
  if (json.empty()) return files;
  try {
    // Settings that are no JSON leave what was guessed in force.
    const Json settings = Json::parse(json);
    Settings(files, settings, name_of_json).read();
  } catch (const Json::parse_error& error) {
    files.fault = name_of_json + ": is no JSON: " + error.what();
  }
  return files;
}

ProjectFiles project_files_of(const std::string& folder, const Overlay* unsaved) {
  const std::string path = with_slash(folder) + kProjectFile;
  std::error_code error;
  // A project file that is new in an editor counts before it is saved.
  const bool is_there = fs::is_regular_file(path, error) || (unsaved != nullptr && unsaved->find(path) != nullptr);
  return project_files_from(folder, is_there ? text_file_read(path, unsaved) : std::string(), path, unsaved);
}

// Goes up from the folder of the file; `top`, or without one that folder, is the last that is looked at.
std::string project_folder_of(const std::string& file, const std::string& top) {
  const fs::path own = fs::path(file_key(file)).parent_path();
  const fs::path last(file_key(top.empty() ? own.string() : top));
  for (fs::path folder = own;; folder = folder.parent_path()) {
    ProjectFiles files{.folder = with_slash(folder.string())};
    std::error_code error;
    if (fs::is_regular_file(folder / kProjectFile, error)) return files.folder;
    guess_rules(files, names_in(files.folder));
    if (!files.rules.empty()) return files.folder;
    if (folder == last || !folder.has_relative_path()) break;
  }
  return with_slash(own.string());
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
