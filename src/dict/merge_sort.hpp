// Sorting the lines of a text file on disk, with memory use that does not depend on the file's size.
#pragma once

#include <cstdio>

namespace lexon {

// Sorts `input` into `output`: whole lines by unsigned bytes, or with `dictionary_mode` entry lines by their surface
// form; the sort is stable. `unique` drops neighbouring equal lines. A line of 1024 characters or more counts as two.
//
// Messages go to `log`, which may be null: in dictionary mode comments, lines that begin with ";", are printed there,
// and lines that are no entries behind ";;"; neither are sorted. Returns the number of lines of the result, 0 for an
// input without a line (no output file is made then), -1 on failure, or if `must_leave` asks for it. A null `input` is
// a failure like others; `output` is never null.
[[nodiscard]] int merge_sort_file(bool unique, bool dictionary_mode, const char* input, const char* output,
                                  std::FILE* log);

}  // namespace lexon
