// What a grammar and a generator of the library hold.
#pragma once

#include <string>
#include <vector>

#include "api/core.hpp"

namespace lexon {
inline namespace v1 {

struct LoadedGrammar {
  core::Grammar rules;
  Dictionary words;
  Dictionary cooccurrence;  // not open when there is none
  SourceMap source;         // of rules from a grammar source; else empty
  std::vector<Message> messages;
  std::string printed;    // by the rule step
  std::string expansion;  // of a grammar source; else empty
  bool is_usable = false;
};

struct Grammar::Body : LoadedGrammar {};

// What the workbench sees of a grammar and of a generator besides their public faces.
struct Inside {
  // Null for a grammar without rules; valid as long as any copy of the grammar.
  [[nodiscard]] static const LoadedGrammar* loaded(const Grammar& grammar);
  // As `Grammar::load`, with these texts in the place of the rules, or of the source and what it includes. Dictionaries
  // are files.
  [[nodiscard]] static Grammar load(const GrammarFiles& files, const TextLookup& unsaved);
  // The session that the generator's thread works with. Not to be touched while it renders, but by what is called from
  // there.
  [[nodiscard]] static Session& session(Generator& generator);
};

}  // namespace v1
}  // namespace lexon
