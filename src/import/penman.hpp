// Reads graphs in PENMAN notation: AMR files, and the sentence level of UMR files.
#pragma once

#include <functional>
#include <istream>
#include <string>
#include <vector>

#include "import/meaning.hpp"

namespace lexon {

// What a graph may have; one above is an error of the source. A sentence of lexon holds 128 relations.
constexpr std::size_t kMaxTriples = 4000;
constexpr std::size_t kMaxDepth = 500;

// What a source hands on: each graph with its errors, in the order of the file. The last call of a file may have
// errors and no graph (root -1).
using MeaningSink = std::function<void(Meaning&, const std::vector<SourceError>&)>;

// Reads a whole file, one graph in memory at a time. `# ::id` or `# :: snt1` gives the label, `# ::snt` or the line
// `Words:` the text; without a label it is `name` and the number of the graph. A graph that is not closed ends where
// the next one begins. The section `document level annotation` of UMR gives @past, @pres and @fut.
void penman_read(std::istream& in, const std::string& name, const MeaningSink& sink);

}  // namespace lexon
