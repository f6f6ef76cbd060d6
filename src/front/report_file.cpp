#include "front/report_file.hpp"

#include <cstdio>

#include <nlohmann/json.hpp>

#include "run/files.hpp"

namespace lexon {

namespace {

// A field keeps to its line and its column.
std::string tsv_text(std::string_view text) {
  std::string field;
  for (const char c : text) {
    switch (c) {
      case '\t': field += "\\t"; break;
      case '\n': field += "\\n"; break;
      case '\r': field += "\\r"; break;
      case '\\': field += "\\\\"; break;
      default: field += c;
    }
  }
  return field;
}

// The texts of a list stand in one field.
std::string tsv_list(const std::vector<std::string>& texts) {
  std::string field;
  for (const std::string& text : texts) field += (field.empty() ? "" : "; ") + tsv_text(text);
  return field;
}

// Milliseconds to the microsecond.
std::string number_text(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", number);
  return text;
}

// The columns in the order of the line of names.
std::string tsv_row(const SentenceReport& sentence) {
  std::string row = tsv_text(sentence.label);
  for (const std::string& field :
       {sentence.status, number_text(sentence.milliseconds), std::to_string(sentence.steps),
        std::to_string(sentence.steps_back), tsv_list(sentence.unused_relations), tsv_list(sentence.unknown_words),
        tsv_text(sentence.text), tsv_text(sentence.fallback)}) {
    row += '\t' + field;
  }
  return row;
}

// Names as in the line of names, but for the time, whose unit is its name; lists stay lists. What is no UTF-8 is
// replaced, since JSON has no other bytes.
std::string json_row(const SentenceReport& sentence) {
  nlohmann::ordered_json row;
  row["label"] = sentence.label;
  row["status"] = sentence.status;
  row["ms"] = sentence.milliseconds;
  row["steps"] = sentence.steps;
  row["steps_back"] = sentence.steps_back;
  row["unused_relations"] = sentence.unused_relations;
  row["unknown_words"] = sentence.unknown_words;
  row["text"] = sentence.text;
  row["fallback"] = sentence.fallback;
  return row.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

// In one piece, so that who reads along sees whole lines.
void line_write(std::FILE* stream, std::string line) {
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stream);
}

}  // namespace

// Any other name gets a table.
ReportForm report_form_of(const std::string& path) {
  return path.ends_with(".json") || path.ends_with(".jsonl") ? ReportForm::json : ReportForm::tsv;
}

// The line of names stands there even when no sentence follows.
ReportFile::ReportFile(const std::string& path, ReportForm form)
    : owned_(path == "-" ? nullptr : file_open(path, "wb")), stream_(path == "-" ? stdout : owned_.get()), form_(form) {
  if (stream_ != nullptr && form_ == ReportForm::tsv)
    line_write(stream_, "label\tstatus\tms\tsteps\tsteps_back\tunused_relations\tunknown_words\ttext\tfallback");
}

// Who reads along sees a sentence as soon as it is there.
void ReportFile::write(const SentenceReport& sentence) {
  line_write(stream_, form_ == ReportForm::json ? json_row(sentence) : tsv_row(sentence));
  std::fflush(stream_);
}

// A report that was never opened has been told of already.
bool ReportFile::close() {
  return stream_ == nullptr || is_written(stream_);
}

}  // namespace lexon
