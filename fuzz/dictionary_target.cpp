// Binary dictionaries and indexes: damaged ones are listed, checked and asked.
#include "blocks.hpp"
#include "data/pool.hpp"
#include "dict/dictionary.hpp"
#include "dicttool/check.hpp"
#include "dicttool/list.hpp"
#include "support.hpp"
#include "support/session.hpp"

namespace {

using lexon::test::session;

using namespace lexon;

constexpr int kMilliseconds = 300;

// A file system cuts names at the first NUL, so the name of the index is what the slot says up to there.
void ask(Dictionary& opened, int key_field, const std::string& key) {
  const fuzz::StepLimit limit(kMilliseconds);
  LookupGroup* groups = nullptr;
  const Status status = dict_lookup(session, opened.files(), key_field, key.c_str(), groups);
  fuzz::require(status == Status::ok || groups == nullptr, "a lookup that fails gives nothing");
  for (const LookupGroup* group = groups; group != nullptr; group = group->next) {
    fuzz::require(group->entries != nullptr, "a group holds a word");
  }
  session.pool.release_all();
  session.state.abort = Status::ok;
}

void ask_all(const std::string& path, const std::vector<std::string>& keys) {
  Dictionary opened;
  if (!dictionary_open(path, PairCheck::whole, opened)) return;
  for (const std::string& key : keys) {
    for (const int field : {kKeyHw, kKeyGloss, kKeyCw, kKeyId, kKeyExtra2}) ask(opened, field, key);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::fresh_start();
  const fuzz::DictionaryImage image = fuzz::ImageReader(fuzz::bytes_of(data, size)).read();
  const std::string path = fuzz::folder_path("words.dic");
  fuzz::file_write(path, image.dictionary);
  fuzz::file_write(fuzz::folder_path("words.idx"), image.index);
  static_cast<void>(dictionary_list(session, path, fuzz::nowhere(), fuzz::nowhere()));
  ask_all(path, image.keys);
  const fuzz::StepLimit limit(kMilliseconds);
  CheckFigures figures;
  static_cast<void>(dictionary_check(session, path, fuzz::nowhere(), std::size_t{1} << 16, figures));
  return 0;
}
