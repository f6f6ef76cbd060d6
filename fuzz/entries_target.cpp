// Entry text: single lines, and dictionaries built of them, listed, and built again.
#include <algorithm>

#include "data/chars.hpp"
#include "data/pool.hpp"
#include "dict/entry_text.hpp"
#include "dict/layout.hpp"
#include "dicttool/build.hpp"
#include "dicttool/check.hpp"
#include "dicttool/list.hpp"
#include "support.hpp"
#include "support/session.hpp"

namespace {

using lexon::test::session;

using namespace lexon;

std::string printed(const WordEntry* entry) {
  Output text;
  entry_print(text, entry, "");
  return text.take();
}

bool is_plain(const char* text) {
  const std::string_view all = text == nullptr ? "" : text;
  return std::all_of(all.begin(), all.end(), [](char c) { return is_letter(c) || is_digit(c) || c == ','; });
}

// Is the printed line sure to say the same again?
bool is_printable(const WordEntry& entry) {
  return is_plain(entry.hw) && is_plain(entry.id) && is_plain(entry.gloss) && is_plain(entry.cw) &&
         is_plain(entry.attrs) && is_plain(std::string{entry.language[0]}.c_str());
}

void parse_printed(const std::string& line) {
  WordEntry* entry = nullptr;
  fuzz::require(parse_entry(session, line.c_str(), entry, EntryStorage::heap) == Status::ok, "a printed entry is one");
  fuzz::require(printed(entry) == line, "a printed entry reads and prints the same again");
  parsed_entry_free(session, entry, EntryStorage::heap);
}

void parse_line(const std::string& line) {
  WordEntry* in_pool = nullptr;
  WordEntry* on_heap = nullptr;
  const Status status = parse_entry(session, line.c_str(), in_pool, EntryStorage::sentence_pool);
  const Status again = parse_entry(session, line.c_str(), on_heap, EntryStorage::heap);
  fuzz::require(status == again, "both storages give the same status");
  if (status == Status::ok) {
    fuzz::require(printed(in_pool) == printed(on_heap), "both storages give the same word");
    if (is_printable(*on_heap)) parse_printed(printed(on_heap));
  }
  parsed_entry_free(session, in_pool, EntryStorage::sentence_pool);
  parsed_entry_free(session, on_heap, EntryStorage::heap);
}

void parse_lines(std::string_view text) {
  constexpr std::size_t kMostLines = 50;
  for (std::size_t i = 0; i < kMostLines && !text.empty(); ++i) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    parse_line(std::string(text.substr(0, end)));
    text.remove_prefix(end);
  }
}

constexpr std::size_t kSortMemory = std::size_t{1} << 16;

// Builds `name`.dic of `name`.txt with every key there is.
void build(const std::string& name, std::string_view entries, bool skip_bad) {
  BuildOptions options;
  options.entries = fuzz::folder_path(name + ".txt");
  options.dictionary = fuzz::folder_path(name + ".dic");
  options.skip_bad = skip_bad;
  options.key_fields = 0xEE;
  options.memory = kSortMemory;
  fuzz::file_write(options.entries, entries);
  BuildFigures figures;
  fuzz::require(dictionary_build(session, options, fuzz::nowhere(), figures), "a dictionary is built");
}

std::string listed(const std::string& name) {
  const fuzz::Sink out;
  const bool is_good = dictionary_list(session, fuzz::folder_path(name + ".dic"), out.get(), fuzz::nowhere());
  fuzz::require(is_good, "a built dictionary has a text form");
  return out.text();
}

void check(const std::string& name) {
  CheckFigures figures;
  const std::string path = fuzz::folder_path(name + ".dic");
  fuzz::require(dictionary_check(session, path, fuzz::nowhere(), kSortMemory, figures), "a built dictionary is sound");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::fresh_start();
  const std::string_view text = fuzz::bytes_of(data, size);
  parse_lines(text);
  build("words", text, true);
  check("words");
  const std::string list = listed("words");
  build("again", list, false);
  fuzz::require(listed("again") == list, "a list that is built again lists the same");
  const bool equal = fuzz::file_read(fuzz::folder_path("again.dic")).substr(kDictBlockSize) ==
                     fuzz::file_read(fuzz::folder_path("words.dic")).substr(kDictBlockSize);
  fuzz::require(equal, "a list that is built again gives the same blocks");
  return 0;
}
