#include "front/gui/opening.hpp"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <filesystem>

#include <spawn.h>
#include <unistd.h>

#include "front/gui/controls.hpp"

namespace lexon {

namespace {

constexpr qint64 kLooked = 65536;  // bytes of a text

// What a file can be to a run; entries are the text that a dictionary is built of, and no run reads it.
enum class Kind { unknown, words, pairs, rules, graphs, output, entries };

// Texts of functions without a window have a context of their own for translators.
QString text_for(const char* text) {
  return QCoreApplication::translate("lexon", text);
}

// What the first line that tells it says a text is. An output shows the starts of graphs too, and a comment may show
// anything.
Kind kind_of_text(const QString& path) {
  struct Sign {
    const char* pattern;
    Kind kind;
  };
  // In this order: an output shows graphs, and a line of rules may begin like an entry or a relation.
  static constexpr Sign kSigns[] = {
      {"^;;(Done|Failed|Time)", Kind::output},
      {R"(^[^;\[].*["}]\s*(\([^()]*\)\s*)?P-?\d+\s*;)", Kind::rules},
      {R"(^\[[^\]]*\]\s*\{[^}]*\}\s*")", Kind::entries},
      {R"(^\[(S|W)\b|^\w+(:\w+)?\s*\([^,()]+(\([^()]*\))?)", Kind::graphs},
  };
  // A sign that comes late in a long text is not met, and the kind stays unknown.
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return Kind::unknown;
  const QString text = QString::fromUtf8(file.read(kLooked));
  for (const Sign& sign : kSigns) {
    if (QRegularExpression(sign.pattern, QRegularExpression::MultilineOption).match(text).hasMatch()) return sign.kind;
  }
  return Kind::unknown;
}

// By the name where that is sure, else by the text.
Kind kind_of_file(const QFileInfo& file) {
  static const QRegularExpression pair_name("(^|[^a-z])(cr|cooc[a-z]*)([^a-z]|$)",
                                            QRegularExpression::CaseInsensitiveOption);
  const QString extension = file.suffix().toLower();
  if (extension == "rul" || extension == "lxr") return Kind::rules;
  if (extension == "dic") return pair_name.match(file.completeBaseName()).hasMatch() ? Kind::pairs : Kind::words;
  if (extension == "trc") return Kind::output;
  return kind_of_text(file.filePath());
}

// A second dictionary is the one for co-occurrence.
std::string* field_of(RunSettings& settings, Kind kind) {
  switch (kind) {
    case Kind::words:
      return settings.dictionary_file.empty() ? &settings.dictionary_file : &settings.cr_dictionary_file;
    case Kind::pairs: return &settings.cr_dictionary_file;
    case Kind::rules: return &settings.rule_file;
    case Kind::graphs: return &settings.input_file;
    case Kind::output: return &settings.output_file;
    default: return nullptr;
  }
}

// Why the file has come into no field; empty if it has.
QString take_file(const char* given, RunSettings& settings) {
  const std::string path = std::filesystem::absolute(given).lexically_normal().string();
  const QFileInfo file(to_text(path));
  if (!file.exists()) return text_for(QT_TRANSLATE_NOOP("lexon", "There is no such file."));
  if (file.isDir()) return text_for(QT_TRANSLATE_NOOP("lexon", "This is a folder."));
  if (path.size() > kPathLimit) return text_for(QT_TRANSLATE_NOOP("lexon", "The path has more than 260 characters."));
  const Kind kind = kind_of_file(file);
  if (kind == Kind::entries) {
    return text_for(QT_TRANSLATE_NOOP(
        "lexon", "This is the text of a dictionary: \"lexon-dict build\" makes the dictionary (.dic) of it."));
  }
  std::string* field = field_of(settings, kind);
  if (field == nullptr) {
    return text_for(
        QT_TRANSLATE_NOOP("lexon", "This is no dictionary, no rules and no graphs. Browse takes it all the same."));
  }
  if (!field->empty()) {
    return text_for(QT_TRANSLATE_NOOP("lexon", "Another file of its kind has come before it: %1")).arg(to_text(*field));
  }
  *field = path;
  return {};
}

// The new start may have another current folder.
// Empty stays empty: an argument that was not given.
std::string absolute_word(const std::string& path) {
  std::error_code error;
  return path.empty() ? path : std::filesystem::absolute(path, error).string();
}

}  // namespace

CommandLine line_of_files(std::span<const char* const> files) {
  CommandLine line;
  for (const char* file : files) {
    const QString fault = take_file(file, line.settings);
    if (!fault.isEmpty()) line.notes.push_back(std::string(file) + ": " + fault.toStdString());
  }
  return line;
}

// All that the command line can say of the settings; what a run has by itself is said as well.
std::vector<std::string> words_of(const RunSettings& settings, bool yes) {
  std::vector<std::string> words;
  // The four paths stand first, empty ones too: each has its place.
  for (const std::string* path :
       {&settings.dictionary_file, &settings.rule_file, &settings.input_file, &settings.output_file}) {
    words.push_back(absolute_word(*path));
  }
  if (!settings.cr_dictionary_file.empty())
    words.insert(words.end(), {"-C", absolute_word(settings.cr_dictionary_file)});
  const std::pair<const char*, std::int32_t> numbers[] = {
      {"-S", settings.start_sentence},        {"-N", settings.sentence_count}, {"-L", settings.trace_level},
      {"-T", settings.max_time_per_sentence}, {"-J", settings.jobs},           {"--blocks=", settings.blocks}};
  for (const auto& [name, number] : numbers) words.push_back(name + std::to_string(number));
  const std::pair<const char*, bool> flags[] = {{"-R", settings.rules_conversion_only},
                                                {"-M", settings.reserved_b},
                                                {"^A", !settings.reserved_a},
                                                {"^P", !settings.post_edit},
                                                {"-W", settings.show_progress},
                                                {"--strict", settings.strict},
                                                {"--check-dictionary", settings.check_dictionaries},
                                                {"--rebuild", settings.rebuild},
                                                {"--in-memory", settings.in_memory},
                                                {"--yes", yes}};
  for (const auto& [name, is_on] : flags) {
    if (is_on) words.emplace_back(name);
  }
  return words;
}

// The new process is not waited for, and has the environment and the streams of this one.
bool start_program(const std::string& program, const std::vector<std::string>& words) {
  // The words are not written to: the type is the system's.
  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
  argv.push_back(nullptr);
  pid_t process = 0;
  return posix_spawn(&process, program.c_str(), nullptr, nullptr, argv.data(), environ) == 0;
}

}  // namespace lexon
