#include "support/test_dictionary.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "dict/builder.hpp"
#include "support/capture.hpp"

namespace lexon::test {

TestDictionary::TestDictionary(const std::string& entries, DictionaryFiles& files) : files_(files) {
  // The files are this object's alone, whatever tests run beside it, and are gone from their folder at once.
  const bool for_words = &files == &sentence.dictionary;
  const std::string name = (for_words ? "test_words_" : "test_pairs_") + std::to_string(getpid());
  BuildOptions options;
  options.entries = file_of(name + ".txt", entries);
  options.dictionary = file_of(name + ".dic", "");
  BuildFigures figures;
  EXPECT_TRUE(dictionary_build(options, stderr, figures));
  std::FILE* dictionary = std::fopen(options.dictionary.c_str(), "rb");
  for (const int key_field : {kKeyHw, kKeyCw}) {
    EXPECT_EQ(index_slot_read(dictionary, key_field, slots_.data()), Status::ok);
  }
  files_ = {dictionary, std::fopen(figures.index.c_str(), "rb"), slots_.data()};
  for (const std::string& path : {options.entries, options.dictionary, figures.index}) std::remove(path.c_str());
}

TestDictionary::~TestDictionary() {
  std::fclose(files_.dictionary);
  std::fclose(files_.index);
  for (IndexDescriptor* slot : slots_) std::free(slot);
  files_ = {};
}

}  // namespace lexon::test
