// `check` for programs that look at a project again and again while it is being written.
#pragma once

#include <vector>

#include "lab/check.hpp"
#include "lab/project_files.hpp"
#include "lab/word_index.hpp"
#include "source/expand.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// What the expansion of a source tells, as findings (`source-syntax`).
[[nodiscard]] std::vector<Finding> source_findings(const Expansion& expansion);

// All findings about the files of a project as they stand in the overlay, those that are silenced left out. A file that
// cannot be read and a source that cannot be expanded are findings, too (`no-file`, `source-syntax`); then names are
// not judged. Files are called as in `files`. Throws std::bad_alloc alone. For one thread at a time with one cache.
[[nodiscard]] std::vector<Finding> check_project(const ProjectFiles& files, const Overlay& unsaved, CheckCache& cache);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
