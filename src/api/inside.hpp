// What a grammar and a generator of the library hold.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "api/core.hpp"

namespace lexon {
inline namespace v1 {

// What several grammars can share, since it was made from files that have not changed; null: to be made.
struct GrammarParts {
  std::shared_ptr<core::Grammar> rules;
  std::shared_ptr<Dictionary> words;
  std::shared_ptr<Dictionary> cooccurrence;
};

// Read-only once it is loaded: any number of generators look at it at the same time.
struct LoadedGrammar {
  GrammarParts parts;  // whole
  core::Grammar& rules = *parts.rules;
  Dictionary& words = *parts.words;
  Dictionary& cooccurrence = *parts.cooccurrence;  // not open when there is none
  SourceMap source;                                // of rules from a grammar source; else empty
  std::vector<Message> messages;
  std::string printed;           // by the rule step
  std::string expansion;         // of a grammar source; else empty
  bool has_mixed_names = false;  // the dictionaries have names of two kinds, and `words` took on the other one
  bool is_usable = false;

  explicit LoadedGrammar(const GrammarParts& kept = {});
  LoadedGrammar(const LoadedGrammar&) = delete;
  LoadedGrammar& operator=(const LoadedGrammar&) = delete;
};

// The public class names its contents and does not show them.
struct Grammar::Body : LoadedGrammar {
  using LoadedGrammar::LoadedGrammar;
};

// What the workbench sees of a grammar and of a generator besides their public faces.
struct Inside {
  // Null for a grammar without rules; valid as long as any copy of the grammar.
  [[nodiscard]] static const LoadedGrammar* loaded(const Grammar& grammar);
  // As `Grammar::load`, with these texts in the place of the rules, or of the source and what it includes. Dictionaries
  // are files.
  [[nodiscard]] static Grammar load(const GrammarFiles& files, const TextLookup& unsaved);
  // As `Grammar::load`, or with `text` as `Grammar::from_text`; reads only what is not kept of a usable grammar that
  // was loaded before. Its messages are those of what was read.
  enum Kept : unsigned { none = 0, words = 1, cooccurrence = 2, rules = 4 };
  [[nodiscard]] static Grammar load_changed(const GrammarFiles& files, const std::string_view* text,
                                            const Grammar& before, unsigned kept);
  // The session that the generator's thread works with. Not to be touched while it renders, but by what is called from
  // there.
  [[nodiscard]] static Session& session(Generator& generator);
};

}  // namespace v1
}  // namespace lexon
