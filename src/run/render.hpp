// The next sentence of the input, as one line of output.
#pragma once

#include <cstdio>

#include "data/records.hpp"
#include "data/session.hpp"
#include "data/status.hpp"
#include "graph/reader.hpp"

namespace lexon {

// Looks after the files that lookups read: what is remembered of one that was written to since the last call is
// forgotten. To be called in front of a sentence, or of some that take no time; without it a session remembers nothing.
void lookups_attend(Session& session, const DictionaryFiles& dictionary, const DictionaryFiles& cr_dictionary);

// Reads, generates, post-edits and prints one sentence. `text` is a buffer of kSentenceSize characters that receives
// the finished line. `end_of_input` when there is no further sentence; every other status but ok is a failure. `notes`
// goes to the reader.
[[nodiscard]] Status render_sentence(Session& session, const DictionaryFiles& dictionary, TextSource input, char* text,
                                     const DictionaryFiles& cr_dictionary, bool post_edit, InputNotes* notes = nullptr);

// Appends the surface forms of the list that `node` stands in, from left to right, scopes included. `cursor` moves on
// in a buffer that ends at `end`. False when the sentence does not fit.
[[nodiscard]] bool collect_sentence(Session& session, Node* node, char*& cursor, const char* end, int scope);

}  // namespace lexon
