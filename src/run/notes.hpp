// What a user ought to know of a run beside its output: what is wrong with rules and input, and what was left out.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "run/context.hpp"
#include "run/host.hpp"
#include "run/settings.hpp"

namespace lexon {

// Each tells the host what there is to tell: of the settings before the first step, of a grammar source when it has
// been expanded, of the rules behind the rule step, of the input behind the last sentence.
void note_settings(const RunSettings& settings, Host& host);
void note_source(const RunContext& context, Host& host);
void note_rules(const RunSettings& settings, const RunContext& context, Host& host);
void note_input(const RunSettings& settings, const RunContext& context, Host& host);

// What a text shows while it is read: a line of it, what is wrong there and how to put it right.
struct TextNote {
  std::int64_t line;
  std::string text;
  bool is_loss;
};

// What `text` has shown and had not shown at `before`.
[[nodiscard]] std::vector<TextNote> text_notes(const TextWatch& text, const TextWatch& before = {});

// What is wrong in a grammar source: the place, the line and a caret under it.
[[nodiscard]] std::string source_message_text(const SourceMessage& message);

// "1 rule", "2 rules".
[[nodiscard]] std::string counted(std::int64_t count, const char* one, const char* many);

}  // namespace lexon
