#include "run/rule_files.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>

#include "data/platform.hpp"
#include "data/stamp.hpp"
#include "run/files.hpp"

namespace lexon {

namespace {

constexpr const char* kGenerationRule = "Generation Rule";

// The lines of the stamp.
constexpr const char* kTextLine = "text";
constexpr const char* kRulesLine = "rules";
constexpr const char* kMatrixLine = "matrix";
constexpr const char* kRefusedLine = "refused";

// ---- Deciding and opening

// Measured as a file that is open, not by its name: what cannot be opened counts as empty.
bool is_empty_file(const std::string& path) {
  std::FILE* stream = regular_file_open(path, "rb");
  if (stream == nullptr) return true;
  const bool empty = file_size(stream) == 0;
  std::fclose(stream);
  return empty;
}

// Clears `convert` if the compiled rules are as new as the text. The result is a message, or empty.
std::string compare_with_text(const std::optional<FileTime>& compiled_time, RunContext& context) {
  if (!compiled_time) return {};
  const std::string& rule_file = context.rule_text_path;
  int error = 0;
  const std::optional<FileTime> text_time = file_time(rule_file, error);
  if (!text_time) return ";;error in " + rule_file + ":" + std::to_string(error) + "\n";
  if (*compiled_time < *text_time) return {};
  context.convert = is_empty_file(context.compiled_rules.path);
  return {};
}

// Rules and matrix are put in place one behind the other, so a matrix of the same date belongs to the rules.
bool matrix_is_current(const std::optional<FileTime>& compiled_time, const std::string& matrix_path) {
  int error = 0;
  const std::optional<FileTime> matrix_time = file_time(matrix_path, error);
  return compiled_time && matrix_time && *compiled_time <= *matrix_time;
}

// The message is the fixed one; what helps the user is in the note.
std::string cannot_write(const CompiledFile& file, RunContext& context) {
  context.notes.push_back(file.path + ": cannot be written; --in-memory renders without compiled files");
  return cannot_open(kGenerationRule, file.path);
}

std::string open_compiled(CompiledFile& file, bool for_writing, RunContext& context) {
  if (for_writing && context.in_memory) return {};
  if (for_writing) return compiled_file_open_write(file) ? std::string() : cannot_write(file, context);
  return compiled_file_open_read(file) ? std::string() : cannot_open(kGenerationRule, file.path);
}

void close_both(RunContext& context) {
  compiled_file_close(context.compiled_rules);
  compiled_file_close(context.compiled_matrix);
}

// Decides by the dates and opens both files. The result is a message, or empty.
std::string decide_and_open(const RunSettings& settings, const std::string& extension, RunContext& context) {
  // A text that has just been expanded may bear the date of rules compiled from the one before.
  const bool reuses = !settings.rebuild && !settings.in_memory && !context.source.wrote_text;
  context.convert = !context.rule_text_path.empty();
  int error = 0;
  const std::optional<FileTime> compiled_time = file_time(context.compiled_rules.path, error);
  if (context.convert && reuses) {
    std::string message = compare_with_text(compiled_time, context);
    if (!message.empty()) return message;
  }
  if (extension == ".mtx") return "Please assign rule file with extension \".rul\" or \".txt\"";
  context.rebuild_matrix =
      context.convert || !reuses || !matrix_is_current(compiled_time, context.compiled_matrix.path);
  // Beside the first part of a run the others write nothing.
  if (settings.range && !settings.range->is_first && context.rebuild_matrix) context.in_memory = true;
  std::string message = open_compiled(context.compiled_rules, context.convert, context);
  if (message.empty()) message = open_compiled(context.compiled_matrix, context.rebuild_matrix, context);
  return message;
}

// Another run may have put a new pair there between the look at the dates and the opening. It replaces the rules first.
bool is_one_pair(const RunContext& context) {
  const CompiledFile& rules = context.compiled_rules;
  if (context.convert) return true;
  if (!is_file_at(rules.stream, rules.path)) return false;
  return context.rebuild_matrix || stream_time(rules.stream) <= stream_time(context.compiled_matrix.stream);
}

// ---- The stamp

// A file that cannot be measured, or of which the stamp says nothing, is not called another one.
bool differs(std::FILE* stream, const Stamp& stamp, const char* line) {
  const std::optional<FileMark> written = stamp.mark(line);
  const std::optional<FileMark> found = written ? file_mark(stream) : std::nullopt;
  return found && !found->same_content(*written);
}

void note_altered(const CompiledFile& file, const Stamp& stamp, const char* line, RunContext& context) {
  if (!differs(file.stream, stamp, line)) return;
  context.notes.push_back(
      file.path + ": is not what was written when the rules were compiled; --rebuild makes it anew " + "from the text");
}

// What the stamp has to say of files that are about to be reused.
void note_by_stamp(const std::string& rule_file, const std::string& stamp_path, StampState found,
                   const std::string& reason, const Stamp& stamp, RunContext& context) {
  if (found == StampState::missing) return;
  const std::string& rules = context.compiled_rules.path;
  if (found == StampState::unopened) {
    context.notes.push_back(stamp_path +
                            ": cannot be opened, so changes of the compiled files go unnoticed: " + reason);
    return;
  }
  if (found == StampState::damaged) {
    context.notes.push_back(stamp_path + ": cannot be read, so changes of the compiled files go unnoticed; --rebuild " +
                            "writes it anew");
    return;
  }
  const std::optional<FileMark> compiled_from = stamp.mark(kTextLine);
  if (compiled_from && context.rule_text_mark && !context.rule_text_mark->same_content(*compiled_from)) {
    context.notes.push_back(rule_file + ": is not the text that " + rules +
                            " was compiled from, though it is not newer; --rebuild compiles it");
  }
  note_altered(context.compiled_rules, stamp, kRulesLine, context);
  if (!context.rebuild_matrix) note_altered(context.compiled_matrix, stamp, kMatrixLine, context);
  context.rules_refused = stamp.number(kRefusedLine);
  if (const std::int64_t refused = context.rules_refused.value_or(0); refused > 0) {
    context.notes.push_back(rules + ": " + std::to_string(refused) + (refused == 1 ? " rule was" : " rules were") +
                            " refused when these were compiled; --rebuild tells them again");
  }
}

// ---- Putting the files in their place

// Against what it held when it was opened. A text that is gone has changed.
bool text_has_changed(const RunContext& context) {
  if (!context.rule_text_mark) return false;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(regular_file_open(context.rule_text_path, "rb"),
                                                               std::fclose);
  return stream == nullptr || file_mark(stream.get()) != context.rule_text_mark;
}

// The matrix belongs to the rules that were loaded: beside others it would be taken for theirs.
void finish_matrix(RunContext& context, bool succeeded) {
  const CompiledFile& rules = context.compiled_rules;
  if (!succeeded) {
    compiled_file_empty(context.compiled_matrix);
  } else if (rules.stream != nullptr && is_file_at(rules.stream, rules.path)) {
    context.matrix_unwritten = !compiled_file_finish(context.compiled_matrix);
  }
}

// A text that has changed while it was converted gets rules that are as old as what was read of it.
std::optional<FileTime> date_of_rules(const RunContext& context) {
  return text_has_changed(context) ? std::optional(context.rule_text_mark->time) : std::nullopt;
}

// Taken before the file is put in place, while its stream is open.
std::optional<FileMark> mark_of_written(std::FILE* stream) {
  return stream != nullptr && std::fflush(stream) == 0 ? file_mark(stream) : std::nullopt;
}

void write_stamp(const RunContext& context, const std::optional<FileMark>& rules,
                 const std::optional<FileMark>& matrix) {
  if (!rules || !matrix) return;
  Stamp stamp;
  if (context.rule_text_mark) stamp.put(kTextLine, *context.rule_text_mark);
  stamp.put(kRulesLine, *rules);
  stamp.put(kMatrixLine, *matrix);
  if (context.rules_refused) stamp.put(kRefusedLine, *context.rules_refused);
  // Without one nothing is noted.
  static_cast<void>(stamp_write(context.stamp_path, stamp, true));
}

// Rules first, then the matrix, then the stamp. Who looks in between finds rules whose matrix is older, and makes it
// anew; never a matrix beside rules that it does not belong to.
void finish_pair(RunContext& context, bool succeeded) {
  CompiledFile& rules = context.compiled_rules;
  CompiledFile& matrix = context.compiled_matrix;
  std::remove(context.stamp_path.c_str());  // first, so that it never stands beside others
  if (!context.rules_are_whole) {
    compiled_file_empty(rules);
    return compiled_file_empty(matrix);
  }
  const std::optional<FileMark> rules_mark = mark_of_written(rules.stream);
  const std::optional<FileMark> matrix_mark = mark_of_written(matrix.stream);
  std::optional<FileTime> date = date_of_rules(context);
  context.rules_unwritten = !compiled_file_finish(rules, date);
  if (context.rules_unwritten) return compiled_file_close(matrix);
  if (!succeeded) return compiled_file_empty(matrix);
  context.matrix_unwritten = !compiled_file_finish(matrix);
  // The text may have changed while the files were written out.
  if (!date) {
    date = date_of_rules(context);
    if (date) file_time_set(rules.path, *date);
  }
  if (!context.matrix_unwritten) write_stamp(context, rules_mark, matrix_mark);
}

}  // namespace

CompiledPaths compiled_paths_of(const std::string& rule_file) {
  if (rule_file.empty()) return {};
  const PathParts parts = path_split(rule_file);
  const std::string stem = parts.folder + parts.name;
  return {stem + ".rul", stem + ".mtx", stem + ".rul.stamp"};
}

std::string rule_files_open(const RunSettings& settings, RunContext& context) {
  const Expanding how = settings.in_memory ? Expanding::in_memory
                        : settings.rebuild ? Expanding::anew
                                           : Expanding::when_changed;
  context.source = expand_beside(settings.rule_file, how);
  if (context.source.expansion.has_errors()) return settings.rule_file + ": cannot be expanded";
  if (!context.source.fault.empty()) return context.source.fault;
  const std::string& rule_file = context.source.is_source ? context.source.text_path : settings.rule_file;
  const std::string extension = path_split(rule_file).extension;
  const CompiledPaths paths = compiled_paths_of(rule_file);
  context.in_memory = settings.in_memory;
  context.compiled_rules.path = paths.rules;
  context.compiled_matrix.path = paths.matrix;
  context.stamp_path = paths.stamp;
  if (extension != ".rul") {
    context.rule_text_path = rule_file;
  }
  const bool lies_in_memory = context.source.is_source && settings.in_memory;
  if (!context.rule_text_path.empty() && !lies_in_memory) {
    context.rule_text = text_open(rule_file, context.session.stop_requested);
    if (context.rule_text == nullptr) return cannot_open(kGenerationRule, rule_file);
    context.rule_text_mark = file_mark(context.rule_text);
  }
  Stamp stamp;
  StampState found = StampState::missing;
  std::string reason;
  // As long as another run puts its pair between the look and the opening, both are done again.
  constexpr int kTries = 20;
  for (int i = 0; i < kTries; ++i) {
    close_both(context);
    std::string message = decide_and_open(settings, extension, context);
    if (!message.empty()) {
      close_both(context);
      return message;
    }
    if (!context.convert) found = stamp_read(paths.stamp, stamp);
    if (found == StampState::unopened) reason = std::strerror(errno);
    if (is_one_pair(context)) break;
  }
  if (!context.convert) note_by_stamp(rule_file, paths.stamp, found, reason, stamp, context);
  return {};
}

// Only where there is a text. Rules that cannot be written are used all the same.
bool rule_files_make_anew(RunContext& context, const std::string& why) {
  if (context.rule_text == nullptr) return false;
  close_both(context);
  context.convert = context.rebuild_matrix = true;
  context.notes.push_back(why + "; the rules are compiled anew from " + context.rule_text_path);
  const bool may_write =
      compiled_file_open_write(context.compiled_rules) && compiled_file_open_write(context.compiled_matrix);
  if (may_write) return true;
  close_both(context);
  context.in_memory = true;
  context.notes.push_back(context.compiled_rules.path + ": cannot be written, so the next run compiles them again");
  return true;
}

void rule_files_finish(RunContext& context, bool succeeded) {
  const bool writes = context.rebuild_matrix && !context.in_memory;
  if (writes) {
    // Two runs that finish at once would mix their pairs.
    const FolderLock lock(context.compiled_rules.path);
    left_drafts_remove(context.compiled_rules.path);
    if (context.convert) {
      finish_pair(context, succeeded);
    } else {
      finish_matrix(context, succeeded);
    }
    folder_sync(context.compiled_rules.path);
  }
  close_both(context);
}

// A cancelled conversion leaves no compiled file, not even the one of before.
void rule_files_cancel(RunContext& context) {
  close_both(context);
  if (!context.convert || context.in_memory) return;
  for (const std::string* path : {&context.stamp_path, &context.compiled_rules.path, &context.compiled_matrix.path}) {
    std::remove(path->c_str());
  }
}

}  // namespace lexon
