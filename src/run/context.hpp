// What the driver hands to the workers, and the one word they share besides.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "data/session.hpp"
#include "data/stamp.hpp"
#include "dict/dictionary.hpp"
#include "graph/reader.hpp"
#include "rules/grammar.hpp"
#include "rules/rule_notes.hpp"
#include "run/compiled_file.hpp"

namespace lexon {

// Lives for the whole run. Touched by the worker alone while it runs and by the driver alone
// between steps.
struct RunContext {
  Session session;
  Grammar grammar;
  std::atomic<std::int32_t> run_status{0};  // where the step stands; see run_state
  Dictionary dictionary;
  Dictionary cr_dictionary;        // not open when the run has none
  File output;                     // null until it is open
  std::FILE* input = nullptr;      // the sentence position lives in this stream
  std::FILE* rule_text = nullptr;  // null when nothing is converted
  bool post_edit = true;
  CompiledFile compiled_rules;
  CompiledFile compiled_matrix;
  std::string stamp_path;
  std::string rule_text_path;                 // empty without a text
  std::optional<FileMark> rule_text_mark;     // what the open text held at first; none for a pipe
  std::optional<std::int64_t> rules_refused;  // of the text; none if nobody has counted
  bool convert = false;                       // the rule text is to be parsed
  bool rebuild_matrix = false;
  bool in_memory = false;           // no compiled file is written
  bool rules_are_whole = false;     // all rules of the text have been written to the draft
  bool rules_unwritten = false;     // the compiled rules could not be written; the run goes on
  bool matrix_unwritten = false;    // likewise
  bool rule_step_done = false;      // every step from now on is a sentence
  bool rules_without_room = false;  // the rule step ended for want of memory
  RuleNotes rule_notes;             // of the text, when it was parsed
  InputNotes input_notes;
  std::int64_t skipped = 0;        // sentences that were passed over
  std::int64_t tried = 0;          // sentences that were begun
  bool input_ended = false;        // the run came to the end of the input
  std::int64_t starved = 0;        // sentences that failed for want of memory
  bool file_is_short = false;      // a file could not be read or written to its end
  std::vector<std::string> notes;  // what the user ought to know beside the output
};

// Where a step stands.
namespace run_state {
inline constexpr std::int32_t running = 0;
inline constexpr std::int32_t finished = 1;
inline constexpr std::int32_t failed = -1;
inline constexpr std::int32_t end_of_input = -10;
inline constexpr std::int32_t over_time = -11;
}  // namespace run_state

}  // namespace lexon
