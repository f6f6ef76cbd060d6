// Nodes, lists and misses as the workbench shows them.
#pragma once

#include <string>
#include <string_view>

#include "lab/project.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// A node in a list: its surface form once a rule has touched it; before, in brackets, what the graph calls it. A boundary
// is "|", a blank "' '", a word that writes nothing "''".
[[nodiscard]] std::string node_text(const Node* node);
// The same as it was before this candidate fitted.
[[nodiscard]] std::string node_text_before(const Node* node, const RuleCandidate& candidate);
// The list of the window from end to end: "| the dog [sleep] |".
[[nodiscard]] std::string list_text(const Session& session, const Window& window);
// The same as it was before this candidate fitted and has brought in the node `inserted`; null: none.
[[nodiscard]] std::string list_text_before(const Session& session, const Window& window, const RuleCandidate& candidate,
                                           const Node* inserted);
// Its two places: "dog + [sleep]".
[[nodiscard]] std::string window_text(const Window& window);

// What was missing, in words: "the right word \"dog\" (N,SG) lacks PL".
[[nodiscard]] std::string miss_text(const Project& project, const Miss& miss);
// All of them, the first one first, joined by "; and ".
[[nodiscard]] std::string misses_text(const Project& project, const std::vector<Miss>& misses);

// The word as a line of entry text, without its end.
[[nodiscard]] std::string entry_line(const WordEntry& word);

// Does standard output go to a terminal whose user takes colours?
[[nodiscard]] bool wants_colours();

// "3 rules", "1 rule".
[[nodiscard]] std::string count_text(std::int64_t count, std::string_view noun);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
