// What is remembered from one start to the next: projects to choose from, and the folder that a file was chosen in
// last. Nothing of it comes into a run unless the user chooses it.
#pragma once

#include <QList>
#include <QString>

#include "run/settings.hpp"

namespace lexon {

inline constexpr int kRecentProjects = 10;

// The newest first. Only what the Setting dialog shows is kept of the settings.
[[nodiscard]] QList<RunSettings> recent_projects();

// Puts the project in front; the one of the same files moves there.
void remember_project(const RunSettings& settings);
void forget_projects();

// A short text for a menu: the folder and the name of the rules, the names of input and output.
[[nodiscard]] QString project_name(const RunSettings& settings);

// Empty if none is known, or it is gone.
[[nodiscard]] QString last_folder();
void remember_folder(const QString& folder);

}  // namespace lexon
