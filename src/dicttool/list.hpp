// Listing a finished dictionary.
#pragma once

#include <cstdio>
#include <string>

namespace lexon {

struct Session;

// Writes every record as a line of entry text, in the order of the file; built again, the text gives the same bytes.
// False, with messages in `log`, if something cannot be read or has no text form; the rest is written all the same.
[[nodiscard]] bool dictionary_list(Session& session, const std::string& path, std::FILE* out, std::FILE* log);

}  // namespace lexon
