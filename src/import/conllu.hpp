// Reads dependency trees in CoNLL-U: a concept for each word by its lemma, an arc for each dependency.
#pragma once

#include <istream>
#include <string>

#include "import/penman.hpp"
#include "import/roles.hpp"

namespace lexon {

// Reads a whole file, one sentence in memory at a time. `# sent_id` gives the label and `# text` the text. Categories
// and features become the attributes of `table`; those that it lacks are triples that are left out. With `enhanced`
// the arcs are those of the column DEPS, where a word has one; a word can then have several heads.
void conllu_read(std::istream& in, const std::string& name, const RoleTable& table, bool enhanced,
                 const MeaningSink& sink);

}  // namespace lexon
