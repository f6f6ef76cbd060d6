#include "front/gui/recent.hpp"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

#include <algorithm>
#include <array>
#include <filesystem>

#include "front/gui/controls.hpp"

namespace lexon {

namespace {

// Names in the user's settings, like those below.
constexpr const char* kProjects = "projects";
constexpr const char* kLastFolder = "last-folder";

// The name of a field in the user's settings. What is kept there outlives versions: names are added, not changed.
struct PathKey {
  const char* key;
  std::string RunSettings::*field;
};
constexpr std::array<PathKey, 5> kPaths{{{"dictionary", &RunSettings::dictionary_file},
                                         {"cr-dictionary", &RunSettings::cr_dictionary_file},
                                         {"rules", &RunSettings::rule_file},
                                         {"input", &RunSettings::input_file},
                                         {"output", &RunSettings::output_file}}};

struct NumberKey {
  const char* key;
  std::int32_t RunSettings::*field;
};
constexpr std::array<NumberKey, 4> kNumbers{{{"start", &RunSettings::start_sentence},
                                             {"count", &RunSettings::sentence_count},
                                             {"time", &RunSettings::max_time_per_sentence},
                                             {"level", &RunSettings::trace_level}}};

constexpr const char* kOrganisation = "lexon";
constexpr const char* kProgram = "lexon-gui";

// What makes two projects one: their files, not their numbers.
bool are_same_files(const RunSettings& one, const RunSettings& other) {
  return std::ranges::all_of(kPaths, [&](const PathKey& path) { return one.*path.field == other.*path.field; });
}

void write_projects(QSettings& settings, const QList<RunSettings>& projects) {
  // A shorter list must not leave the end of the longer one.
  settings.remove(kProjects);
  settings.beginWriteArray(kProjects, static_cast<int>(projects.size()));
  for (int i = 0; i < projects.size(); ++i) {
    settings.setArrayIndex(i);
    // Paths are bytes.
    for (const PathKey& path : kPaths) settings.setValue(path.key, QByteArray::fromStdString(projects[i].*path.field));
    for (const NumberKey& number : kNumbers) settings.setValue(number.key, projects[i].*number.field);
    settings.setValue("conversion-only", projects[i].rules_conversion_only);
  }
  settings.endArray();
}

}  // namespace

// What cannot be read is as in a new program: the file is the user's, and may hold anything.
QList<RunSettings> recent_projects() {
  QSettings settings(kOrganisation, kProgram);
  QList<RunSettings> projects;
  const int size = std::min(settings.beginReadArray(kProjects), kRecentProjects);
  for (int i = 0; i < size; ++i) {
    settings.setArrayIndex(i);
    RunSettings project;
    for (const PathKey& path : kPaths) project.*path.field = settings.value(path.key).toByteArray().toStdString();
    for (const NumberKey& number : kNumbers) {
      project.*number.field = settings.value(number.key, project.*number.field).toInt();
    }
    project.rules_conversion_only = settings.value("conversion-only").toBool();
    projects << project;
  }
  return projects;
}

// In front of the others. A project with the same files is the same one, with other numbers.
void remember_project(const RunSettings& settings) {
  RunSettings project = settings;
  for (const PathKey& path : kPaths) {
    std::string& field = project.*path.field;
    // Relative paths would mean something else in another folder.
    std::error_code error;
    if (!field.empty()) field = std::filesystem::absolute(field, error).string();
  }
  QList<RunSettings> projects = recent_projects();
  projects.removeIf([&project](const RunSettings& other) { return are_same_files(project, other); });
  projects.prepend(project);
  projects.resize(std::min<qsizetype>(projects.size(), kRecentProjects));
  QSettings kept(kOrganisation, kProgram);
  write_projects(kept, projects);
}

// The folder that was last in use stays.
void forget_projects() {
  QSettings(kOrganisation, kProgram).remove(kProjects);
}

// Short enough for a menu: the folder of the rules, and names without folders.
QString project_name(const RunSettings& settings) {
  const QFileInfo rules(to_text(settings.rule_file));
  const QFileInfo input(to_text(settings.input_file));
  const QFileInfo output(to_text(settings.output_file));
  return rules.dir().dirName() + "/" + rules.fileName() + ", " + input.fileName() + " → " + output.fileName();
}

// A folder that is gone is none.
QString last_folder() {
  const QString folder = QSettings(kOrganisation, kProgram).value(kLastFolder).toString();
  return QFileInfo(folder).isDir() ? folder : QString();
}

// Of whichever file dialog: users keep what belongs together in one folder.
void remember_folder(const QString& folder) {
  QSettings(kOrganisation, kProgram).setValue(kLastFolder, folder);
}

}  // namespace lexon
