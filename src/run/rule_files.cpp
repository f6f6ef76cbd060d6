#include "run/rule_files.hpp"

#include <optional>

#include "data/platform.hpp"
#include "run/files.hpp"

namespace lexon {

namespace {

constexpr const char* kGenerationRule = "Generation Rule";

// Measured as a file that is open, not by its name: what cannot be opened counts as empty.
bool is_empty_file(const std::string& path) {
  std::FILE* stream = file_open(path, "r");
  if (stream == nullptr) return true;
  const bool empty = file_size(stream) == 0;
  std::fclose(stream);
  return empty;
}

// Clears `convert` if the compiled rules are as new as the text. The result is a message, or empty.
std::string compare_with_text(const std::string& rule_file, const std::optional<FileTime>& compiled_time,
                              RunContext& context) {
  if (!compiled_time) return {};
  int error = 0;
  const std::optional<FileTime> text_time = file_time(rule_file, error);
  if (!text_time) return ";;error in " + rule_file + ":" + std::to_string(error) + "\n";
  if (*compiled_time < *text_time) return {};
  context.convert = is_empty_file(context.compiled_rules.path);
  return {};
}

bool matrix_is_current(const std::optional<FileTime>& compiled_time, const std::string& matrix_path) {
  int error = 0;
  const std::optional<FileTime> matrix_time = file_time(matrix_path, error);
  return compiled_time && matrix_time && *compiled_time <= *matrix_time;
}

bool open_compiled(CompiledFile& file, bool for_writing) {
  return for_writing ? compiled_file_open_write(file) : compiled_file_open_read(file);
}

}  // namespace

std::string rule_files_open(const std::string& rule_file, RunContext& context) {
  const PathParts parts = path_split(rule_file);
  context.convert = parts.extension != ".rul";
  context.compiled_rules.path = parts.folder + parts.name + ".rul";
  if (context.convert) {
    context.rule_text = file_open(rule_file, "r");
    if (context.rule_text == nullptr) return cannot_open(kGenerationRule, rule_file);
  }
  int error = 0;
  const std::optional<FileTime> compiled_time = file_time(context.compiled_rules.path, error);
  if (context.convert) {
    if (std::string message = compare_with_text(rule_file, compiled_time, context); !message.empty()) return message;
  }
  if (parts.extension == ".mtx") return "Please assign rule file with extension \".rul\" or \".txt\"";
  context.compiled_matrix.path = parts.folder + parts.name + ".mtx";
  context.rebuild_matrix = context.convert || !matrix_is_current(compiled_time, context.compiled_matrix.path);
  if (!open_compiled(context.compiled_rules, context.convert)) {
    return cannot_open(kGenerationRule, context.compiled_rules.path);
  }
  if (!open_compiled(context.compiled_matrix, context.rebuild_matrix)) {
    compiled_file_discard(context.compiled_rules);
    return cannot_open(kGenerationRule, context.compiled_matrix.path);
  }
  return {};
}

}  // namespace lexon
