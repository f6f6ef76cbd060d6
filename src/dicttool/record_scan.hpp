// Walking over all records of a dictionary file.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>

#include "dict/dictionary.hpp"
#include "dicttool/record_view.hpp"

namespace lexon {

// Gets a record and its place in the file. False: no more are wanted.
using RecordTaker = std::function<bool(const RecordView& record, std::int64_t offset)>;

// Hands every record to `take`, in order of the surface forms, until that returns false. What is damaged is told in
// `log` and passed over; the result is false then. The view ends with the call.
[[nodiscard]] bool records_scan(const Dictionary& opened, std::FILE* log, const RecordTaker& take);

}  // namespace lexon
