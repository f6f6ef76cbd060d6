// Entries of the dictionary, by surface form and by concept word.

#include <algorithm>
#include <memory>

#include "lab/commands.hpp"
#include "lab/explain.hpp"
#include "lab/show.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

std::vector<std::string> words_found(const Project& project, const std::string& word) {
  std::vector<std::string> lines;
  const auto session = std::make_unique<Session>();  // owns the words that are found
  const DictionaryFiles files = project.loaded().words.files();
  for (const int key_field : {kKeyHw, kKeyCw}) {
    WordEntry* words = nullptr;
    if (words_by_key(*session, files, key_field, word.c_str(), words) != core::Status::ok)
      throw Fault(project.files.dictionary + ": cannot be searched: lexon-dict check says whether it is damaged");
    entry_list_sort(words);
    for (const WordEntry& each : chain<&WordEntry::next>(words)) {
      // A word can have the form and the concept that are asked for.
      std::string line = entry_line(each);
      if (std::find(lines.begin(), lines.end(), line) == lines.end()) lines.push_back(std::move(line));
    }
  }
  return lines;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
