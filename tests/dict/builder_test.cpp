// Dictionaries built from text: that every record is found once by each of its keys, and in what order; that text and
// dictionary stand for each other; what is refused.

#include "dict/entry_text.hpp"
#include "dict/item_sort.hpp"
#include "dicttool/block_packer.hpp"
#include "dicttool/entry_line.hpp"
#include "support/built_dictionary.hpp"
#include "support/capture.hpp"
#include "support/session.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

// ---- generated dictionaries beside a multimap

// What a generated dictionary is like.
struct Shape {
  const char* name;
  int entries;
  int surface_forms;       // so many different ones
  int concept_words;       // 0: none has one
  std::size_t padding;     // length of the gloss
  std::size_t key_length;  // letters of a key; 0: a number alone
  const char* file;
};

constexpr Shape kShapes[] = {
    {"Nothing", 0, 1, 1, 0, 0, "words.dic"},
    {"OneEntry", 1, 1, 1, 0, 0, "words.dic"},
    {"AllDifferent", 1500, 1 << 30, 1 << 30, 0, 0, "words.dic"},
    {"OneSurfaceFormOverManyBlocks", 2000, 1, 300, 20, 0, "words.dic"},
    {"OneConceptWordInEveryBlock", 2000, 500, 1, 20, 0, "words.dic"},
    {"SoManyBlocksOfOneKeyThatIndexBlocksAreLinked", 900, 2, 2, 3000, 30, "words.dic"},
    {"FewRecordsToABlock", 700, 90, 40, 1500, 0, "words.dic"},
    {"LongNameOfTheIndex", 2000, 300, 300, 100, 0, "a_long_name.dic"},
    {"WithoutConceptWords", 500, 100, 0, 0, 0, "words.dic"},
    {"KeysThatFillHalfAnIndexBlock", 400, 300, 200, 0, 480, "words.dic"},
    {"KeysOfWhichTwoDoNotFitAnIndexBlock", 200, 60, 50, 0, 900, "words.dic"},
    {"DeepTrees", 1200, 1100, 1100, 0, 300, "words.dic"},
};

struct Generated {
  std::string hw, cw, id;
};

// Letters that make keys long, bytes of all kinds that make them hard to order, and prefixes of each other.
std::string generated_key(std::mt19937& random, int different, std::size_t length) {
  constexpr std::string_view kBytes = "\x01\x7f\x80\xff\xc3\xa4 [](){\\\".a~";
  const auto number = random() % static_cast<unsigned>(different);
  if (number % 29 == 3) return "";
  std::mt19937 own(number);
  std::string key;
  while (own() % 3 != 0 && key.size() < length + 6) key += kBytes[own() % kBytes.size()];
  key += std::to_string(number);
  key.resize(std::max(key.size(), length), 'x');
  return key;
}

std::vector<Generated> generate(const Shape& shape) {
  std::mt19937 random(7);
  std::vector<Generated> entries;
  for (int i = 0; i < shape.entries; ++i) {
    Generated entry;
    entry.hw = generated_key(random, shape.surface_forms, shape.key_length);
    if (shape.concept_words != 0) entry.cw = generated_key(random, shape.concept_words, shape.key_length);
    std::erase_if(entry.cw, [](char c) { return c == '{' || c == '"'; });
    std::erase_if(entry.hw, [](char c) { return c == '\\' || c == '{'; });
    entry.id = std::to_string(i);
    entries.push_back(entry);
  }
  return entries;
}

std::string text_of(const std::vector<Generated>& entries, std::size_t padding) {
  std::string text;
  for (const Generated& e : entries) {
    text += "[" + e.hw + "]{" + e.id + "} " + std::string(padding, 'g') + " \"" + e.cw + "\" (N) <.,1,2>;\n";
  }
  return text;
}

using Expected = std::map<std::string, std::string>;

void expect(Expected& expected, const std::string& key, const std::string& id) {
  std::string& ids = expected[key];
  ids += (ids.empty() ? "" : " ") + id;
}

// What lookups by each key must give: by surface form, then as in the text.
void expect_all(const std::vector<Generated>& entries, Expected& by_hw, Expected& by_cw, Expected& by_id) {
  std::multimap<std::string, const Generated*> in_order;
  for (const Generated& entry : entries) in_order.emplace(entry.hw, &entry);
  for (const auto& [hw, entry] : in_order) {
    expect(by_hw, hw, entry->id);
    if (!entry->cw.empty()) expect(by_cw, entry->cw, entry->id);
    expect(by_id, entry->id, entry->id);
  }
}

TEST(Builder, FindsEveryRecordOnceByEachKey) {
  for (const Shape& shape : kShapes) {
    SCOPED_TRACE(shape.name);
    const std::vector<Generated> entries = generate(shape);
    const Folder folder;
    const BuildResult built = build_text(folder, text_of(entries, shape.padding), shape.file, {.key_fields = 1U << kKeyCw | 1U << kKeyId});
    ASSERT_TRUE(built.done) << built.log;
    EXPECT_EQ(built.figures.entries, shape.entries);
    Expected by_hw, by_cw, by_id;
    expect_all(entries, by_hw, by_cw, by_id);
    Asked asked(folder, shape.file);
    const std::pair<int, const Expected*> keys[] = {{kKeyHw, &by_hw}, {kKeyCw, &by_cw}, {kKeyId, &by_id}};
    for (const auto& [field, expected] : keys) {
      for (const auto& [key, ids] : *expected) {
        EXPECT_EQ(asked.ids(field, key), ids) << field << " " << key;
        // Neighbours that are not there.
        if (expected->contains(key + "!")) continue;
        EXPECT_EQ(asked.ids(field, key + "!"), "") << field << " " << key;
      }
      EXPECT_EQ(asked.ids(field, "\xff\xff\xff"), "") << field;
    }
    EXPECT_EQ(asked.ids(kKeyCw, ""), "") << "an absent text is no key";
    const ToolResult check = check_of(folder, shape.file);
    EXPECT_TRUE(check.done) << check.log;
    EXPECT_EQ(check.out, std::to_string(shape.entries) + " records");
  }
}

TEST(Builder, ListedAndBuiltAgainIsTheSame) {
  for (const Shape& shape : kShapes) {
    SCOPED_TRACE(shape.name);
    const Folder first;
    const Folder second;
    ASSERT_TRUE(build_text(first, text_of(generate(shape), shape.padding), shape.file).done);
    const ToolResult list = list_of(first, shape.file);
    EXPECT_TRUE(list.done) << list.log;
    ASSERT_TRUE(build_text(second, list.out, shape.file).done);
    EXPECT_EQ(bytes_of(first.path(shape.file)), bytes_of(second.path(shape.file)));
    const std::string index = index_name_of(shape.file);
    EXPECT_EQ(bytes_of(first.path(index)), bytes_of(second.path(index)));
    EXPECT_EQ(list_of(second, shape.file).out, list.out);
  }
}

TEST(Builder, SortingInTemporaryFilesGivesTheSame) {
  const Shape shape = {"", 20000, 4000, 3000, 40, 0, "words.dic"};
  const std::string text = text_of(generate(shape), shape.padding);
  const Folder roomy;
  const Folder tight;
  ASSERT_TRUE(build_text(roomy, text).done);
  ASSERT_TRUE(build_text(tight, text, "words.dic", {.memory = 1}).done);
  EXPECT_EQ(bytes_of(roomy.path("words.dic")), bytes_of(tight.path("words.dic")));
  EXPECT_EQ(bytes_of(roomy.path("words.idx")), bytes_of(tight.path("words.idx")));
}

TEST(Builder, AKeyIsEnteredOnceForEachBlock) {
  std::string text;
  for (int i = 0; i < 50; ++i) text += "[w" + std::to_string(i) + "]{" + std::to_string(i) + "} \"same\" (N);\n";
  const Folder folder;
  ASSERT_TRUE(build_text(folder, text).done);
  Asked asked(folder);
  EXPECT_EQ(asked.groups(kKeyCw, "same"), 1);
}

// ---- the bytes

std::string hex(const std::string& bytes, std::size_t from, std::size_t length) {
  std::string text;
  char digits[4];
  for (const char c : bytes.substr(from, length)) {
    (void)std::snprintf(digits, sizeof digits, "%02x ", static_cast<unsigned char>(c));
    text += digits;
  }
  return text;
}

TEST(Builder, WritesTheLayoutsByteForByte) {
  const Folder folder;
  ASSERT_TRUE(build_text(folder, "[ab]{i} g \"c\" (N,V) <ES,258,7>;X[e]{f}\n", "short.dic").done);
  const std::string dictionary = bytes_of(folder.path("short.dic"));
  const std::string index = bytes_of(folder.path("short.idx"));
  ASSERT_EQ(dictionary.size(), 3U * 4096);
  ASSERT_EQ(index.size(), 2U * 1024);
  const std::string name = "73 68 6f 72 74 2e 69 64 78 00 00 00 ";
  EXPECT_EQ(hex(dictionary, 0, 3), "00 00 00 ");
  EXPECT_EQ(hex(dictionary, 3, 22), name + "00 01 00 00 00 01 00 00 00 00 ") << "slot of the surface form";
  EXPECT_EQ(hex(dictionary, 25, 22), hex(std::string(22, '\0'), 0, 22)) << "slot of the gloss";
  EXPECT_EQ(hex(dictionary, 47, 22), name + "00 02 00 00 00 02 00 00 00 00 ") << "slot of the concept word";
  EXPECT_EQ(hex(dictionary, 4096, 51),
            "00 29 01 00 26 "                                      // used length, type; size of the record
            "00 02 61 62 00 01 67 00 01 63 "                       // hw, gloss, cw
            "00 0f 00 03 4e 2c 56 00 00 01 02 07 00 00 00 30 58 "  // attributes and fixed part
            "00 01 69 00 01 65 00 01 66 00 00 00 00 00 00 00 00 00 00 ");
  EXPECT_EQ(hex(dictionary, 8192, 9), "00 08 02 00 01 63 00 02 00 ") << "key block";
  EXPECT_EQ(hex(index, 0, 22), "00 15 " + hex(std::string(13, '\0'), 0, 13) + "00 02 61 62 00 02 00 ");
  EXPECT_EQ(hex(index, 1024, 22), "00 14 " + hex(std::string(13, '\0'), 0, 13) + "00 01 63 00 03 00 00 ");
}

TEST(Builder, TheNameDecidesTheSlots) {
  const std::tuple<const char*, const char*, std::size_t> rows[] = {
      {"eightchr.dic", "eightchr.idx", 22},        {"ninechars.dic", "ninechars.idx", 138},   {"a.b.dic", "a_b.idx", 22},
      {"version.1.2.dic", "version_1_2.idx", 138}, {"no_extension", "no_extension.idx", 138},
  };
  for (const auto& [name, index, slot_size] : rows) {
    const Folder folder;
    const BuildResult built = build_text(folder, "[a]{7} \"c\" (N);\n", name);
    ASSERT_TRUE(built.done) << built.log;
    EXPECT_EQ(built.figures.index, folder.path(index));
    EXPECT_EQ(bytes_of(folder.path(name)).substr(3 + 2 * slot_size, 3), std::string(index).substr(0, 3)) << name;
    EXPECT_EQ(Asked(folder, name).ids(kKeyCw, "c"), "7") << name;
  }
}

// ---- text forms

TEST(Builder, ListWritesWhatWasRead) {
  const std::pair<const char*, const char*> rows[] = {
      {"[a]{} \"b\" (c);", "[a]{} \"b\" (c) <.,0,0>;"},
      {"[]{}  \"\" (TEMP);", "[]{} \"\" (TEMP) <.,0,0>;"},
      {"[ ]{}(BLK)", "[ ]{} \"\" (BLK) <.,0,0>;"},
      {"[a]{i}some (gloss) here \"b\" ( c , d ) <ES, 7, 300> ;", "[a]{i} some (gloss) here \"b\" (c,d) <ES,7,44>;"},
      {"[a]{}\"b\" () <XX,4294967295,255>;", "[a]{} \"b\" () <X,4294967295,255>;"},
      {"[a]{} \"b\" (c) <SW>;Q", "[a]{} \"b\" (c) <SW,0,0>;Q"},
      {"[a]{} \"b\" (c);Q[e1]{e2} rest", "[a]{} \"b\" (c) <.,0,0>;Q[e1]{e2}"},
      {"[a]{} \"b\" (c);[e1]", "[a]{} \"b\" (c) <.,0,0>;[e1]"},
      {"[a]{} \"b\" (c);[]{e2}", "[a]{} \"b\" (c) <.,0,0>;[]{e2}"},
      {"[a]{} \"b\" (){e2}", "[a]{} \"b\" () <.,0,0>;[]{e2}"},
      {"[a]b]{} \"x\" (y);", "[a]b]{} \"x\" (y) <.,0,0>;"},
      {"[a\\]]{} \"x\" (y);", "[a]]{} \"x\" (y) <.,0,0>;"},
      {"[a\\] {b]{} \"x\" (y);", "[a\\] {b]{} \"x\" (y) <.,0,0>;"},
      {"[\\[\\\\]{z]{} \"x\" (y);", "[\\[\\\\]{z]{} \"x\" (y) <.,0,0>;"},
      {"[a\\n\\\\]{} \"x\" (y);", "[a\\n\\\\]{} \"x\" (y) <.,0,0>;"},
      {"[a\\\\\\b]{} \"x\" (y);", "[a\\\\\\b]{} \"x\" (y) <.,0,0>;"},
      {"[a]{} \"x{y}z{}\" (c);", "[a]{} \"xz\" (c) <.,0,0>;"},
      {"[a]{} \"x\"{y} (z\" (c);", "[a]{} \"x\"{} (z\" (c) <.,0,0>;"},
      {"[a]{} \"b\"c\" (c);", "[a]{} \"b\"c\" (c) <.,0,0>;"},
      {"[a]{} \"b\" (c(d, e),x),f(g));", "[a]{} \"b\" (c(d, e),x),f(g)) <.,0,0>;"},
      {"\t [\xc3\xa4\xff]{\x80} \"\xe4\xb8\xad\" (\xc3\x9f);", "[\xc3\xa4\xff]{\x80} \"\xe4\xb8\xad\" (\xc3\x9f) <.,0,0>;"},
  };
  for (const auto& [line, listed] : rows) {
    const Folder folder;
    const BuildResult built = build_text(folder, std::string(line) + "\n");
    ASSERT_TRUE(built.done) << line << "\n" << built.log;
    EXPECT_EQ(list_of(folder).out, std::string(listed) + "\n") << line;
    const std::string bytes = bytes_of(folder.path("words.dic"));
    ASSERT_TRUE(build_text(folder, std::string(listed) + "\n").done) << listed;
    EXPECT_EQ(bytes_of(folder.path("words.dic")), bytes) << line;
  }
}

TEST(Builder, LinesAroundEntries) {
  const std::pair<const char*, const char*> rows[] = {
      {"", ""},
      {"\n \t\r\n\n", ""},
      {";comment\n  ; [a]{} \"b\" (c);\r\n", ""},
      {"\xEF\xBB\xBF; a mark first\n[a]{} \"b\" (c)", "[a]{} \"b\" (c) <.,0,0>;\n"},
      {"\xEF\xBB\xBF[a]{} \"b\" (c)\r\n", "[a]{} \"b\" (c) <.,0,0>;\n"},
      {"[a]{} \"b\" (c)\r\n[A]{} \"b\" (c)", "[A]{} \"b\" (c) <.,0,0>;\n[a]{} \"b\" (c) <.,0,0>;\n"},
  };
  for (const auto& [text, listed] : rows) {
    const Folder folder;
    const BuildResult built = build_text(folder, text);
    EXPECT_TRUE(built.done) << built.log;
    EXPECT_EQ(list_of(folder).out, listed) << text;
  }
}

// ---- what is refused

std::string filled(std::size_t length, char c = 'x') {
  return std::string(length, c);
}

TEST(Builder, BadLinesAreReportedWithTheirPlace) {
  const std::string good = "[a]{} \"b\" (c);\n";
  const std::pair<std::string, std::string> rows[] = {
      {"a line\n", "entries.txt:2: an entry begins with \"[\"\n"},
      {"\n;\n[a] \"b\" (c);\n", "entries.txt:4: "},
      {"[a]{ \"b\" (c);\n", "entries.txt:2: no \"}\" behind the id\n"},
      {"[a]{} \"b\" (c) <x y>\n" + good + "[a]{} \"b\" (c);[e\n", "entries.txt:4: no \"]\" behind the first extra text\n"},
      {std::string("[a]{}\0 \"b\" (c);\n", 16), "entries.txt:2: the line holds a NUL character\n"},
      {"[a]{} " + filled(8186) + "\n", "entries.txt:2: the line has more than 8191 characters\n"},
      {"[a]{} " + filled(8185) + "\r\n", "entries.txt:2: "},
      {"[a]{} " + filled(70000) + "\n", "entries.txt:2: the line has more than 8191 characters\n"},
      {"[a]{} " + filled(4068) + " \"b\" (c);\n", "entries.txt:2: the entry needs 4093 bytes, and a block holds 4091\n"},
      {"[" + filled(1004) + "]{} \"b\" (c);\n", "entries.txt:2: the hw has 1004 bytes, and a key of the index at most 1003\n"},
      {"[a]{} \"" + filled(1004) + "\" (c);\n", "entries.txt:2: the cw has 1004 bytes, and a key of the index at most 1003\n"},
  };
  for (const auto& [text, message] : rows) {
    const Folder folder;
    const BuildResult strict = build_text(folder, good + text);
    EXPECT_FALSE(strict.done) << message;
    EXPECT_EQ(strict.log.find(message), 0U) << strict.log;
    EXPECT_NE(strict.log.find("entries.txt: 1 bad line, nothing has been built\n"), std::string::npos) << strict.log;
    EXPECT_EQ(folder.names(), std::vector<std::string>{"entries.txt"});
    const BuildResult lenient = build_text(folder, good + text, "words.dic", {.skip_bad = true});
    EXPECT_TRUE(lenient.done);
    EXPECT_EQ(lenient.log.find(message), 0U) << lenient.log;
    EXPECT_EQ(lenient.figures.bad_lines, 1);
    EXPECT_TRUE(check_of(folder).done);
  }
}

TEST(Builder, TheLargestThatFits) {
  const std::tuple<std::string, const char*, bool> rows[] = {
      {"[a]{} " + filled(4066) + " \"b\" (c);\n", "words.dic", true},
      {"[" + filled(1003) + "]{} \"" + filled(1003) + "\" (c);\n", "words.dic", true},
      {"[" + filled(887) + "]{} \"b\" (c);\n", "ninechars.dic", true},
      {"[" + filled(888) + "]{} \"b\" (c);\n", "ninechars.dic", false},
  };
  for (const auto& [text, name, fits] : rows) {
    const Folder folder;
    EXPECT_EQ(build_text(folder, text + text, name).done, fits) << name << " " << text.size();
    EXPECT_EQ(check_of(folder, name).done, fits);
  }
}

TEST(Builder, RefusesOutputsThatWouldDestroySomething) {
  const std::pair<std::string, const char*> rows[] = {
      {"entries.txt", "entries.txt: is the entry text itself\n"},
      {"words.idx", "words.idx: \".idx\" is for the index file\n"},
      {"folder", "folder: is a directory\n"},
      {"nowhere/words.dic", "nowhere/words.dic: cannot be created: "},
      {" words.dic", " words.dic: the name begins with a blank\n"},
      {filled(125) + ".dic", "the index name is too long\n"},
  };
  for (const auto& [name, message] : rows) {
    const Folder folder;
    std::filesystem::create_directory(folder.path("folder"));
    const BuildResult built = build_text(folder, "[a]{} \"b\" (c);\n", name);
    EXPECT_FALSE(built.done) << name;
    EXPECT_NE(built.log.find(message), std::string::npos) << built.log;
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"entries.txt", "folder"})) << name;
  }
}

TEST(Builder, AFailedBuildLeavesTheOldDictionary) {
  const Folder folder;
  ASSERT_TRUE(build_text(folder, "[a]{1} \"b\" (c);\n").done);
  EXPECT_FALSE(build_text(folder, "[a]{2} \"b\" (c);\nbad\n").done);
  EXPECT_EQ(Asked(folder).ids(kKeyHw, "a"), "1");
  EXPECT_TRUE(build_text(folder, "[a]{3} \"b\" (c);\n").done);
  EXPECT_EQ(Asked(folder).ids(kKeyHw, "a"), "3");
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"entries.txt", "words.dic", "words.idx", "words.idx.stamp"}));
}

TEST(Builder, BlockNumbersEndAt65535) {
  const std::tuple<std::uint32_t, int, PackResult> rows[] = {{65534, 2, PackResult::ok}, {65534, 3, PackResult::too_many_blocks}, {65535, 1, PackResult::ok}};
  for (const auto& [first, blocks, expected] : rows) {
    const File stream(std::tmpfile());
    BlockFile file{stream.get(), first};
    std::vector<ChainStart> chains;
    BlockPacker packer(file, dict_layout(kDataBlock), LongRun::many_chains, chains);
    const Bytes item(kMaxRecordSize);
    PackResult result = PackResult::ok;
    for (int i = 0; i < blocks && result == PackResult::ok; ++i) result = packer.add(std::to_string(i), item);
    if (result == PackResult::ok) result = packer.finish();
    EXPECT_EQ(result, expected) << first << " " << blocks;
  }
}

}  // namespace
}  // namespace lexon::test
