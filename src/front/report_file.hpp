// Reports of sentences as a file: one row a sentence.
#pragma once

#include <string>

#include "data/platform.hpp"
#include "run/report.hpp"

namespace lexon {

enum class ReportForm {
  tsv,   // a line of names, then a line a sentence; tabs, line ends and backslashes as \t, \n, \\; lists with "; "
  json,  // an object a line; bytes that are no UTF-8 come as U+FFFD
};

// JSON for names that end in ".json" or ".jsonl".
[[nodiscard]] ReportForm report_form_of(const std::string& path);

class ReportFile {
 public:
  // Creates or truncates the file; "-" is standard output.
  explicit ReportFile(const std::string& path) : ReportFile(path, report_form_of(path)) {}
  ReportFile(const std::string& path, ReportForm form);

  [[nodiscard]] bool is_open() const { return stream_ != nullptr; }
  void write(const SentenceReport& sentence);
  // False if something did not arrive.
  [[nodiscard]] bool close();

 private:
  File owned_;
  std::FILE* stream_;
  ReportForm form_;
};

}  // namespace lexon
