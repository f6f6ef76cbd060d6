// Entry text from word lists that exist.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "dicttool/entry_output.hpp"
#include "dicttool/feature_table.hpp"

namespace lexon {

struct WordImport {
  WordFormat format = WordFormat::unimorph;
  std::vector<std::string> inputs;  // "-": standard input. Of WordNet and PropBank: the folder, or files of it
  std::vector<std::string> tables;  // override rows of the shipped one
  EntryForm form;                   // an empty `cw`: the usual one of the format
};

struct WordImportFigures {
  std::int64_t entries = 0;
  std::int64_t repeated = 0;   // words that were there already, with the same attributes
  std::int64_t left_out = 0;   // by the table, or as they cannot be said
  std::int64_t bad_lines = 0;  // told in the log
};

// Reads the lists and writes entries to `out`. Bad lines, features that the table lacks and why words were left out go
// to `log`. False if a file cannot be had, or memory is exhausted.
[[nodiscard]] bool words_import(Session& session, const WordImport& options, std::FILE* out, std::FILE* log,
                                WordImportFigures& figures);

}  // namespace lexon
