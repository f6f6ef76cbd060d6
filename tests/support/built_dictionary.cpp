#include "support/built_dictionary.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "data/chain.hpp"
#include "data/pool.hpp"
#include "dict/dictionary.hpp"
#include "dicttool/check.hpp"
#include "dicttool/find.hpp"
#include "dicttool/list.hpp"
#include "support/session.hpp"

namespace lexon::test {

namespace fs = std::filesystem;

namespace {

// A stream into memory.
class TextStream {
 public:
  TextStream() : stream_(open_memstream(&buffer_, &size_)) {}
  ~TextStream() {
    std::fclose(stream_);
    std::free(buffer_);
  }
  TextStream(const TextStream&) = delete;
  TextStream& operator=(const TextStream&) = delete;

  [[nodiscard]] std::FILE* get() const { return stream_; }
  // What has been written, without `part` wherever it stands.
  [[nodiscard]] std::string text_without(const std::string& part) const {
    std::fflush(stream_);
    std::string text(buffer_, size_);
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part)) text.erase(at, part.size());
    return text;
  }

 private:
  char* buffer_ = nullptr;
  std::size_t size_ = 0;
  std::FILE* stream_;
};

}  // namespace

BuildFolder::BuildFolder() {
  std::string pattern = ::testing::TempDir() + "lexon-build-XXXXXX";
  path_ = mkdtemp(pattern.data());
}

BuildFolder::~BuildFolder() {
  std::error_code error;
  fs::remove_all(path_, error);
}

std::vector<std::string> BuildFolder::names() const {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(path_)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

BuildResult build_text(const BuildFolder& folder, const std::string& entries, const std::string& name, BuildOptions options) {
  options.entries = folder.path("entries.txt");
  options.dictionary = folder.path(name);
  std::ofstream(options.entries, std::ios::binary) << entries;
  const TextStream log;
  BuildResult result;
  result.done = dictionary_build(session, options, log.get(), result.figures);
  result.log = log.text_without(folder.path(""));
  return result;
}

ToolResult list_of(const BuildFolder& folder, const std::string& name) {
  const TextStream out;
  const TextStream log;
  const bool done = dictionary_list(session, folder.path(name), out.get(), log.get());
  return {done, out.text_without(folder.path("")), log.text_without(folder.path(""))};
}

ToolResult check_of(const BuildFolder& folder, const std::string& name) {
  const TextStream log;
  CheckFigures figures;
  const bool done = dictionary_check(session, folder.path(name), log.get(), std::size_t{1} << 20, figures);
  return {done, std::to_string(figures.records) + " records", log.text_without(folder.path(""))};
}

ToolResult find_of(const BuildFolder& folder, int key_field, const std::string& key) {
  const TextStream out;
  const TextStream log;
  const FindQuery query = key_field == kKeyHw ? FindQuery{.hw = key, .wants_hw = true} : FindQuery{.cw = key, .wants_cw = true};
  const FindResult result = dictionary_find(session, folder.path("words.dic"), query, out.get(), log.get());
  return {result == FindResult::found, out.text_without(folder.path("")), log.text_without(folder.path(""))};
}

struct Asked::State {
  Dictionary opened;
  bool is_open;
};

Asked::Asked(const BuildFolder& folder, const std::string& name) : state_(new State) {
  state_->is_open = dictionary_open(folder.path(name), PairCheck::quick, state_->opened);
  EXPECT_TRUE(state_->is_open) << state_->opened.fault;
}

Asked::~Asked() {
  delete state_;
}

std::string Asked::ids(int key_field, const std::string& key) {
  LookupGroup* groups = nullptr;
  const Status status = dict_lookup(session, state_->opened.files(), key_field, key.c_str(), groups);
  if (status != Status::ok) return "status " + std::to_string(code(status));
  WordEntry* words = nullptr;
  groups_flatten(session, groups, words);
  std::string ids;
  for (const WordEntry& word : chain<&WordEntry::next>(words)) ids += (ids.empty() ? "" : " ") + std::string(word.id);
  session.pool.release_all();
  return ids;
}

int Asked::groups(int key_field, const std::string& key) {
  LookupGroup* groups = nullptr;
  EXPECT_EQ(dict_lookup(session, state_->opened.files(), key_field, key.c_str(), groups), Status::ok);
  int count = 0;
  for (const LookupGroup* group = groups; group != nullptr; group = group->next) ++count;
  session.pool.release_all();
  return count;
}

}  // namespace lexon::test
