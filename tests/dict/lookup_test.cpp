// Lookups in small dictionaries, their slots, records and key order.

#include <sys/stat.h>
#include <unistd.h>

#include "dict/dict_bytes.hpp"
#include "dict/dict_record.hpp"
#include "support/session.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

struct FindRow {
  const char* what;
  int field;
  const char* key;
  const char* words;
};

const FindRow kFinds[] = {
    {"the first of a chain", kKeyHw, "a", "a"},
    {"not what begins with the key", kKeyHw, "ab", "ab"},
    {"all records of a key, in the next block of the chain", kKeyHw, "b", "b,b"},
    {"below an entry of the tree", kKeyHw, "c", "c"},
    {"equal to an entry of the tree", kKeyHw, "d", "d,d"},
    {"the last of all", kKeyHw, "f", "f"},
    {"between keys", kKeyHw, "aa", "none"},
    {"below all keys", kKeyHw, "A", "none"},
    {"above all keys", kKeyHw, "z", "none"},
    {"the empty key", kKeyHw, "", "none"},
    {"two chains, in the order of the key block", kKeyCw, "u", "d|a,b,c"},
    {"a longer key of the same block", kKeyCw, "uu", "d"},
    {"in the second key block of a chain", kKeyCw, "w", "e"},
    {"a key that one chain of two blocks leads to", kKeyCw, "v", "b"},
    {"equal to an entry of the tree", kKeyCw, "x", "ab"},
    {"behind an entry of the tree", kKeyCw, "y", "f"},
    {"below all keys", kKeyCw, "a", "none"},
    {"between keys", kKeyCw, "ux", "none"},
    {"above all keys", kKeyCw, "zz", "none"},
};

TEST(Lookup, FindsTheSameInFlatAndDeepTrees) {
  TestedDictionary flat(header_of(1, 1, 2, 2) + kWords + kCwKeys, kFlatIndex);
  for (const FindRow& row : kFinds) EXPECT_EQ(flat.find(row.field, row.key), row.words) << row.what;
  TestedDictionary deep(header_of(3, 1, 3, 8) + kWords + kCwKeys, kDeepIndex);
  for (const FindRow& row : kFinds) EXPECT_EQ(deep.find(row.field, row.key), row.words) << row.what << ", deep";
}

TEST(Lookup, LongNamesMoveTheIndexEntries) {
  const std::string index = index_block(entry("a", 2) + entry("d", 4) + entry("e", 5), 0, 128) + index_block(entry("u", 6) + entry("x", 8), 0, 128);
  TestedDictionary dictionary(header_of(1, 1, 2, 2, 128, "ninechars.idx") + kWords + kCwKeys, index);
  for (const FindRow& row : kFinds) EXPECT_EQ(dictionary.find(row.field, row.key), row.words) << row.what;
}

TEST(Lookup, EqualEntriesOfTheTreeAreAllFollowed) {
  const std::string words = data(record("k", "")) + data(record("m", "")) + data(record("m", "") + record("n", ""));
  const std::string index = index_block(entry("k", 2) + entry("m", 2) + entry("m", 3)) +  // 1
                            index_block(entry("k", 2) + entry("m", 3)) +                  // 2
                            index_block(entry("m", 4));                                   // 3
  TestedDictionary dictionary(header_of(2, 1, 0, 0) + words, index);
  EXPECT_EQ(dictionary.find(kKeyHw, "m"), "m|m");
  EXPECT_EQ(dictionary.find(kKeyHw, "k"), "k");
  EXPECT_EQ(dictionary.find(kKeyHw, "n"), "n");
}

TEST(Lookup, OtherFields) {
  const std::string words = header({slot("d.idx", 1, 1), padded("", 22), padded("", 22), padded("", 22), slot("d.idx", 1, 6), slot("d.idx", 0, 2)}) + kWords +
                            keys(entry("i", 4) + entry("i", 5));
  TestedDictionary dictionary(words, kFlatIndex);
  // One level for a field above 1 is a key block of the dictionary.
  EXPECT_EQ(dictionary.find(kKeyId, "i"), "d|e");
  EXPECT_EQ(dictionary.find(kKeyId, ""), "none");
  // Records end behind the id: a field that is not there equals nothing, not even the empty key.
  EXPECT_EQ(dictionary.find(kKeyExtra1, "", false), "none");
  EXPECT_EQ(dictionary.find(kKeyGloss, "x"), "22");
  EXPECT_EQ(dictionary.find(0, "x"), "22");
  EXPECT_EQ(dictionary.find(8, "x"), "22");
}

TEST(Lookup, RemembersTheAnswersOfEachDictionary) {
  TestedDictionary first(header_of(1, 1, 2, 2) + kWords + kCwKeys, kFlatIndex);
  TestedDictionary second(header_of(1, 1, 0, 0) + data(record("d", "")), index_block(entry("d", 2)));
  const DictionaryFiles files[] = {first.opened.files(), second.opened.files()};
  session.lookups.attend({files[0].dictionary, files[0].index, files[1].dictionary, files[1].index});
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(first.find(kKeyHw, "d"), "d,d");
    EXPECT_EQ(second.find(kKeyHw, "d"), "d");
  }
  session.lookups.attend({});
}

TEST(Lookup, WithoutIndexTheRootChainIsScanned) {
  TestedDictionary dictionary(header_of(0, 2, 1, 6) + kWords + kCwKeys, "");
  EXPECT_EQ(dictionary.find(kKeyHw, "b", false), "b,b");
  EXPECT_EQ(dictionary.find(kKeyHw, "d", false), "none");  // in another chain
  EXPECT_EQ(dictionary.find(kKeyCw, "v", false), "b");
  EXPECT_EQ(dictionary.find(kKeyCw, "x", false), "none");
}

// A chain that cannot be read or runs in a circle ends, and what has been found stands; only a block of the wrong type,
// and an index that cannot be read, refuse the lookup.
TEST(Lookup, DamagedFilesEndALookupCleanly) {
  const std::string head = header_of(1, 1, 2, 2);
  const std::string full = head + kWords + kCwKeys;
  const std::string tree = index_block(entry("a", 2)) + index_block(entry("u", 3));
  const std::string two = record("a", "u") + record("b", "u");
  const std::string bad_field = sized(text("b") + text("") + u16(500) + "u");
  const std::string bad_end = sized(text("b") + text("") + text("u") + u16(9) + u16(8) + "12345678");
  const std::string index_circle = index_block("", 2) + index_block("", 3) + index_block(entry("a", 2), 4) + index_block("", 2);
  const std::tuple<const char*, std::string, std::string, int, const char*, const char*> rows[] = {
      {"truncated index block", full, kFlatIndex.substr(0, 1023), kKeyHw, "a", "22"},
      {"index entry past the used length", full, index_block(entry("a", 2) + "\1"), kKeyHw, "b", "22"},
      {"index blocks in a circle", full, index_circle, kKeyHw, "b", "b,b"},
      {"index without entries", full, index_block(""), kKeyHw, "b", "none"},
      {"data where keys should be", head + data(two) + data(two), tree, kKeyCw, "u", "202"},
      {"keys in the middle of a data chain", head + data(two, 3) + keys(""), tree, kKeyHw, "c", "203"},
      {"words found are dropped at a wrong type", head + data(record("a", "u"), 4) + keys(entry("u", 2)) + keys(""), tree, kKeyCw, "u", "203"},
      {"the chain ends where it cannot be read", head + data(record("a", ""), 7), tree, kKeyHw, "a", "a"},
      {"data blocks in a circle", head + data(record("a", "x"), 3) + data(record("a", "y"), 4) + data("", 3), tree, kKeyHw, "b", "none"},
      {"block number 1 reads as 2", head + data(two), index_block(entry("a", 1)), kKeyHw, "b", "b"},
      {"record of size 0", head + data(record("a", "u") + u16(0) + two), tree, kKeyHw, "b", "none"},
      {"used length beyond the block", head + dict_block(1, two, 0, 65535), tree, kKeyHw, "b", "b"},
      {"a field past the record's end equals nothing", head + data(bad_field + record("b", "u")) + keys(entry("u", 2)), tree, kKeyCw, "u", "b"},
      {"a damaged record is passed over", head + data(bad_end + record("b", "u")), tree, kKeyHw, "b", "b"},
  };
  for (const auto& [what, dictionary, index, field, key, result] : rows) {
    EXPECT_EQ(TestedDictionary(dictionary, index).find(field, key), result) << what;
  }
}

TEST(Lookup, AStopEndsIt) {
  TestedDictionary dictionary(header_of(1, 1, 2, 2) + kWords + kCwKeys, kFlatIndex);
  session.stop_requested = true;
  EXPECT_EQ(dictionary.find(kKeyCw, "u", false), "120");
  session.stop_requested = false;
  EXPECT_EQ(dictionary.find(kKeyHw, "a"), "a");
}

TEST(Lookup, FlatteningJoinsAllGroups) {
  TestedDictionary dictionary(header_of(1, 1, 2, 2) + kWords + kCwKeys, kFlatIndex);
  LookupGroup* groups = nullptr;
  ASSERT_EQ(dict_lookup(session, dictionary.opened.files(), kKeyCw, "u", groups), Status::ok);
  EXPECT_EQ(groups->block, 4);
  EXPECT_EQ(groups->next->block, 2);
  WordEntry* list = nullptr;
  groups_flatten(session, groups, list);
  EXPECT_EQ(words_of(list), "d,a,b,c");
  groups_flatten(session, nullptr, list);
  EXPECT_EQ(list, nullptr);
}

// ---- slots

// name, levels, numbers, and the name size of the file.
std::string slot_text(const std::string& file, std::size_t field) {
  const TestedDictionary dictionary(file, "");
  const IndexDescriptor* d = dictionary.opened.slots[field];
  std::string result = std::to_string(dictionary.opened.name_size) + " ";
  if (d == nullptr) return result + "empty";
  return result + std::string(d->name) + " " + static_cast<char>(d->unread) + " " + std::to_string(d->levels) + " " + std::to_string(d->number1) + " " +
         std::to_string(d->root) + " " + std::to_string(d->number2);
}

TEST(Slots, AreReadByTheNameSizeOfTheFirst) {
  const std::string none12(22, '\0');
  const std::string none128(138, ' ');
  EXPECT_EQ(slot_text(header_of(-1, 513, 0, 0, 12, "eightchr.x"), 1), "12 eightchr.x u -1 258 513 50595078");
  EXPECT_EQ(slot_text(header_of(2, 7, 4, 9, 128, "ninechars.x"), 3), "128 ninechars.x u 4 258 9 50595078");
  EXPECT_EQ(slot_text(header_of(2, 7, 4, 9), 2), "12 empty");
  EXPECT_EQ(slot_text(header({none12, none12, slot("abcdefgh.idx", 2, 5)}), 3), "12 abcdefgh.idx u 2 258 5 50595078");
  EXPECT_EQ(slot_text(header({none128, none128, slot("a b  ", 2, 5, 128)}), 3), "128 a b u 2 258 5 50595078");
  EXPECT_EQ(slot_text(header({none128}), 1), "128 empty");
  EXPECT_EQ(slot_text(header({slot(std::string(128, 'x'), 1, 1, 128)}), 1), "128 " + std::string(128, 'x') + " u 1 258 1 50595078");
  EXPECT_EQ(slot_text(header_of(1, 1, 2, 2).substr(0, 4095), 1), "0 empty") << "a header that is cut";
}

// Two dictionaries whose index names are of different kinds answer side by side.
TEST(Slots, BelongToTheirDictionary) {
  const auto made = [](std::size_t name_size, const char* name) {
    return std::pair(header_of(1, 1, 2, 2, name_size, name) + kWords + kCwKeys,
                     index_block(entry("a", 2) + entry("d", 4) + entry("e", 5), 0, name_size) + index_block(entry("u", 6) + entry("x", 8), 0, name_size));
  };
  const auto [short_words, short_index] = made(12, "d.idx");
  const auto [long_words, long_index] = made(128, "ninechars.idx");
  TestedDictionary first(short_words, short_index);
  TestedDictionary second(long_words, long_index);
  for (TestedDictionary* dictionary : {&first, &second, &first}) {
    EXPECT_EQ(dictionary->find(kKeyHw, "d"), "d,d");
    EXPECT_EQ(dictionary->find(kKeyCw, "x"), "ab");
  }
  first.opened.name_size = second.opened.name_size;
  EXPECT_EQ(first.find(kKeyHw, "d"), "none");
}

class IndexOpen : public ::testing::Test {
 protected:
  IndexOpen() : name_("lexon-" + std::to_string(getpid()) + ".idx"), path_(file_of(name_, kFlatIndex)) {}
  ~IndexOpen() override { std::filesystem::remove(path_); }

  std::string name_;
  std::string path_;
};

TEST_F(IndexOpen, NeedsATreeAndABareNameOfARegularFile) {
  const std::string folder = ::testing::TempDir();
  const std::string fifo = name_ + ".fifo";
  ASSERT_EQ(mkfifo((folder + fifo).c_str(), 0600), 0);
  struct Row {
    std::string prefix, name;
    int field;
    std::int8_t levels;
    bool opens;
  };
  const Row rows[] = {
      {folder, name_, kKeyHw, 1, true},  {folder, name_, kKeyCw, 2, true}, {folder, name_, kKeyHw, 0, false},   {folder, name_, kKeyHw, -1, false},
      {folder, name_, kKeyCw, 1, false}, {folder, fifo, kKeyHw, 1, false}, {folder, ".", kKeyHw, 1, false},     {folder, "..", kKeyHw, 1, false},
      {folder, "", kKeyHw, 1, false},    {"", path_, kKeyHw, 1, false},    {"/dev/", "null", kKeyHw, 1, false}, {folder + "none/", name_, kKeyHw, 1, false},
  };
  for (const Row& row : rows) {
    for (const bool read_only : {true, false}) {
      IndexDescriptor descriptor{};
      row.name.copy(descriptor.name, kLongNameSize);
      descriptor.levels = row.levels;
      const File stream(index_open(row.prefix, descriptor, row.field, read_only));
      EXPECT_EQ(stream != nullptr, row.opens) << row.prefix << row.name << " " << row.field << " " << int{row.levels};
    }
  }
  std::filesystem::remove(folder + fifo);
}

TEST_F(IndexOpen, ALookupOpensTheIndexByItsName) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(::testing::TempDir());
  TestedDictionary dictionary(header_of(1, 1, 2, 2) + kWords + kCwKeys, "");
  for (const int field : {kKeyHw, kKeyCw}) name_.copy(dictionary.opened.descriptors[static_cast<std::size_t>(field)].name, kLongNameSize);
  EXPECT_EQ(dictionary.find(kKeyHw, "d", false), "d,d");
  EXPECT_EQ(dictionary.find(kKeyCw, "u", false), "d|a,b,c");
  std::filesystem::current_path(before);
}

// ---- records

TEST(Records, BecomeWords) {
  const std::string fixed = std::string("\0\1\2\3", 4) + '\xFE' + "???" + "EX";
  const std::string attributes = text("V,@9") + fixed;
  const std::pair<std::string, const char*> rows[] = {
      {sized(text("go") + text("g") + text("c") + text(attributes) + text("i") + text("e") + text("ff")), "40 go g c V,@9 16 66051 254 EX i e ff"},
      {sized(text("go") + text("") + text("c") + text(text("") + fixed)), "25 go - c - 12 66051 254 EX - - -"},
      {sized(text("go") + text("") + text("c") + u16(0) + text("i")), "16 go - c - 12 0 0 .. i - -"},
      {sized(text("go") + text("g")), "9 go g - - 0 0 0 .. - - -"},
      {sized(text("go") + text("") + text("") + text(text("V") + std::string("\0\0\0\7\5", 5))), "20 go - - V 8 7 5 .. - - -"},
  };
  const auto shown = [](const char* t) { return t == nullptr ? std::string("-") : std::string(t); };
  for (const auto& [bytes, expected] : rows) {
    WordEntry* w = nullptr;
    const ByteView view(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    ASSERT_EQ(record_unpack(session, view, w), Status::ok);
    ASSERT_NE(w, nullptr) << expected;
    const std::string got = std::to_string(w->total_size) + " " + shown(w->hw) + " " + shown(w->gloss) + " " + shown(w->cw) + " " + shown(w->attrs) + " " +
                            std::to_string(w->attr_block_size) + " " + std::to_string(load_u32(w->frequency)) + " " + std::to_string(w->priority) + " " +
                            std::string(w->language, 2) + " " + shown(w->id) + " " + shown(w->extra1) + " " + shown(w->extra2);
    EXPECT_EQ(got, expected);
  }
  session.pool.release_all();
}

TEST(KeyOrder, BytesUnsignedAndPrefixFirst) {
  EXPECT_EQ(key_compare("ab", 2, "ab", 2), 0);
  EXPECT_EQ(key_compare("", 0, nullptr, 0), 0);
  EXPECT_EQ(key_compare(nullptr, 1, nullptr, 2), 0);
  EXPECT_LT(key_compare("ab", 2, "abc", 3), 0);
  EXPECT_GT(key_compare("abc", 3, "ab", 2), 0);
  EXPECT_GT(key_compare("b", 1, "abc", 3), 0);
  EXPECT_LT(key_compare("abc", 3, "b", 1), 0);
  EXPECT_LT(key_compare("a", 1, "\xE9", 1), 0);
  EXPECT_LT(key_compare("", 0, "a", 1), 0);
  EXPECT_LT(key_compare(nullptr, 0, "a", 1), 0);
  EXPECT_LT(key_compare("a", 1, nullptr, 0), 0);
}

}  // namespace
}  // namespace lexon::test
