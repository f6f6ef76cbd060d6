// A binary dictionary made of entry text.
#pragma once

#include <string>

#include "dict/dictionary.hpp"
#include "support/session.hpp"

namespace lexon::test {

// While it lives, sentences look their words up in it, by surface form and by concept word. `files` says what for: it
// is the word dictionary or the co-occurrence dictionary of the sentence.
class TestDictionary {
 public:
  explicit TestDictionary(const std::string& entries, DictionaryFiles& files = session.sentence.dictionary);
  ~TestDictionary();
  TestDictionary(const TestDictionary&) = delete;
  TestDictionary& operator=(const TestDictionary&) = delete;

 private:
  DictionaryFiles& files_;
  Dictionary opened_;
};

}  // namespace lexon::test
