#include "support/test_dictionary.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

#include "dict/pair_stamp.hpp"
#include "dicttool/build.hpp"
#include "support/capture.hpp"
#include "support/session.hpp"

namespace lexon::test {

TestDictionary::TestDictionary(const std::string& entries, DictionaryFiles& files) : files_(files) {
  // The files are this object's alone, whatever tests run beside it, and are gone from their folder at once.
  const bool for_words = &files == &session.sentence.dictionary;
  const std::string name = (for_words ? "test_words_" : "test_pairs_") + std::to_string(getpid());
  BuildOptions options;
  options.entries = file_of(name + ".txt", entries);
  options.dictionary = file_of(name + ".dic", "");
  BuildFigures figures;
  EXPECT_TRUE(dictionary_build(session, options, stderr, figures));
  EXPECT_TRUE(dictionary_open(options.dictionary, PairCheck::quick, opened_)) << opened_.fault;
  files_ = opened_.files();
  for (const std::string& path : {options.entries, options.dictionary, figures.index, pair_stamp_path(figures.index)}) {
    std::remove(path.c_str());
  }
}

TestDictionary::~TestDictionary() {
  files_ = {};
}

}  // namespace lexon::test
