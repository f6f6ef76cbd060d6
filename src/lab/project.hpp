// Grammar and input as the commands of the workbench want them.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "api/inside.hpp"
#include "lab/options.hpp"
#include "lab/overlay.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// A place in a rule text; line 0: not known.
struct RulePlace {
  std::string file{};
  std::uint32_t line = 0;
  std::uint32_t column = 0;  // of the rule's first character, in bytes from 1
};

// The rules of a text are read as text even where compiled files stand beside it, since these do not tell lines; rules
// that are given compiled get their lines from the text beside them, if it says the same. No file is written.
struct Project {
  GrammarFiles files;
  Grammar grammar;

  // Throws Fault when it is not usable; tells the messages on standard error otherwise.
  explicit Project(GrammarFiles of);
  // The same with the rules as `text` has them, in place of what stands in their file.
  Project(GrammarFiles of, std::string_view text);
  // The same with unsaved texts in the place of the rules, or of the source and what it includes. The dictionaries are
  // files: `BuiltWords` makes one of unsaved entries.
  Project(GrammarFiles of, const Overlay& unsaved);
  // What `kept` (of `Inside`) names is that of `before`, which need not live on, and is not read again.
  Project(GrammarFiles of, const std::string_view* text, const Project& before, unsigned kept);
  // Of a grammar that was loaded from these files and is usable. Its messages are not told.
  Project(GrammarFiles of, Grammar made);
  [[nodiscard]] const LoadedGrammar& loaded() const { return *Inside::loaded(grammar); }
  // "rules.txt:12", for a rule of this grammar; without a line for one from a compiled file without its text.
  [[nodiscard]] std::string place_of(const Rule& rule) const;
  [[nodiscard]] RulePlace line_of(const Rule& rule) const;
  // Is it made from a grammar source, in which several rules can come from one line?
  [[nodiscard]] bool has_source() const { return !loaded().source.lines.empty(); }
  // The file that the lines are counted in; of a source, the one that was named.
  [[nodiscard]] const std::string& rule_text() const { return rule_text_; }
  // The rules that "203" or "rules.txt:203" names. Throws Fault, which names the lines nearby, if there are none.
  [[nodiscard]] std::vector<const Rule*> rules_at(const std::string& place) const;
  // The rule in its canonical form, without a line end.
  [[nodiscard]] std::string text_of(const Rule& rule) const;

 private:
  void begin();
  void prepare();
  void lines_from_text_beside();

  std::string rule_text_;                    // see `rule_text()`
  std::map<const Rule*, RulePlace> places_;  // of rules from a compiled file; others know their lines
  std::unique_ptr<Session> printer_;         // whose output `text_of` writes into
};

// One sentence of an input, as it stands there: with the comments and empty lines between it and the one before.
struct GraphText {
  std::string file;
  std::int64_t line = 0;    // of the first line of `text`, from 1
  std::int64_t number = 0;  // from 1, over all inputs
  std::string label;        // "[S:3]" without brackets; may be empty
  std::string text;

  // "input.txt:12": the line that opens the sentence, which is where a reader looks for it.
  [[nodiscard]] std::string place() const;
  // A message about the text, with its line counted in the file.
  [[nodiscard]] Message placed(Message message) const;
};

// The label of the sentence in a text: "S:3" of "[S:3]"; empty if it has none.
[[nodiscard]] std::string label_of(std::string_view text);

// Is the sentence meant by this label ("S:3", "[S:3]" or "3"), by its place ("#2"), or by this number if it has no label?
[[nodiscard]] bool is_asked_for(const std::string& wanted, const GraphText& sentence);

// Reads the inputs sentence by sentence, whatever their size, and hands on those that are asked for. Tells on standard
// error if there is none. Throws Fault for a file that cannot be read, and for a sentence that was asked for and is in
// none. Unsaved texts stand for their files.
void for_each_sentence(const RenderOptions& options, const std::function<void(const GraphText&)>& use,
                       const Overlay* unsaved = nullptr);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
