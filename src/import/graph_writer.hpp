// Writes a Meaning as a sentence of a graph file of lexon.
#pragma once

#include <map>
#include <ostream>
#include <string>

#include "import/meaning.hpp"
#include "import/roles.hpp"

namespace lexon {

// What a sentence of lexon has room for; see docs/limits.md.
constexpr std::size_t kMaxRelations = 128;
constexpr std::size_t kMaxWordText = 200;        // bytes of a word as it is written, of 259
constexpr std::size_t kMaxAttributesText = 500;  // bytes of its attributes in a line, of 1,023

struct WriterOptions {
  const RoleTable* table = nullptr;
  std::string role_prefix = ":";  // how the table begins its roles
  bool keep_inverse = true;       // an inverse role that the table knows keeps its direction
};

// Roles that the table lacks, with how often they came.
using RoleCounts = std::map<std::string, std::size_t>;

// A text as a label or comment: on one line, without the bracket that would end a label, at most 900 bytes.
std::string line_safe(std::string text);

// Writes `[S:label]` to `[/S]`, with a label that is safe already, the reference as a comment, and settles the fate of the triples that become relations
// and words. What does not fit the limits of a sentence is left out, and its triples say so.
void graph_write(Meaning& meaning, const WriterOptions& options, std::ostream& out, RoleCounts& unknown);

// A constant role that the table lists with its value (:polarity=-) becomes an attribute of its concept.
void attributes_apply(Meaning& meaning, const WriterOptions& options);

}  // namespace lexon
