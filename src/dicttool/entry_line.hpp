// Writing a record as a line of entry text that is read back as the same record.
#pragma once

#include <string>

#include "dicttool/record_view.hpp"

namespace lexon {

struct Session;

// Writes the line, with its line feed. Unlike the form of the trace it holds every field: escapes in the surface form,
// the frequency unsigned, the second language mark and both extra texts. False if no line stands for this record, as
// can be with records that were not made from text.
[[nodiscard]] bool entry_line_write(Session& session, const RecordView& record, std::string& line);

}  // namespace lexon
