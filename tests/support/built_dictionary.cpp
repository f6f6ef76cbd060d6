#include "support/built_dictionary.hpp"

#include "data/chain.hpp"
#include "data/pool.hpp"
#include "dicttool/check.hpp"
#include "dicttool/find.hpp"
#include "dicttool/list.hpp"

namespace lexon::test {

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
  // What has been written, without the name of the folder.
  [[nodiscard]] std::string text_in(const Folder& folder) const {
    std::fflush(stream_);
    return folder.plain({buffer_, size_});
  }

 private:
  char* buffer_ = nullptr;
  std::size_t size_ = 0;
  std::FILE* stream_;
};

}  // namespace

BuildResult build_text(const Folder& folder, const std::string& entries, const std::string& name, BuildOptions options) {
  options.entries = folder.write("entries.txt", entries);
  options.dictionary = folder.path(name);
  const TextStream log;
  BuildResult result;
  result.done = dictionary_build(session, options, log.get(), result.figures);
  result.log = log.text_in(folder);
  return result;
}

ToolResult list_of(const Folder& folder, const std::string& name) {
  const TextStream out;
  const TextStream log;
  const bool done = dictionary_list(session, folder.path(name), out.get(), log.get());
  return {done, out.text_in(folder), log.text_in(folder)};
}

ToolResult check_of(const Folder& folder, const std::string& name) {
  const TextStream log;
  CheckFigures figures;
  const bool done = dictionary_check(session, folder.path(name), log.get(), std::size_t{1} << 20, figures);
  return {done, std::to_string(figures.records) + " records", log.text_in(folder)};
}

ToolResult find_of(const Folder& folder, int key_field, const std::string& key) {
  const TextStream out;
  const TextStream log;
  const FindQuery query = key_field == kKeyHw ? FindQuery{.hw = key, .wants_hw = true} : FindQuery{.cw = key, .wants_cw = true};
  const FindResult result = dictionary_find(session, folder.path("words.dic"), query, out.get(), log.get());
  return {result == FindResult::found, out.text_in(folder), log.text_in(folder)};
}

Asked::Asked(const Folder& folder, const std::string& name) {
  EXPECT_TRUE(dictionary_open(folder.path(name), PairCheck::quick, opened_)) << opened_.fault;
}

std::string Asked::ids(int key_field, const std::string& key) {
  LookupGroup* groups = nullptr;
  const Status status = dict_lookup(session, opened_.files(), key_field, key.c_str(), groups);
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
  EXPECT_EQ(dict_lookup(session, opened_.files(), key_field, key.c_str(), groups), Status::ok);
  int count = 0;
  for (const LookupGroup* group = groups; group != nullptr; group = group->next) ++count;
  session.pool.release_all();
  return count;
}

TestDictionary::TestDictionary(const std::string& entries, DictionaryFiles& files) : files_(files) {
  const BuildResult built = build_text(folder_, entries);
  EXPECT_TRUE(built.done) << built.log;
  EXPECT_TRUE(dictionary_open(folder_.path("words.dic"), PairCheck::quick, opened_)) << opened_.fault;
  files_ = opened_.files();
}

}  // namespace lexon::test
