// What the driver hands to the workers, and the one word they share besides.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "data/sentence.hpp"
#include "data/stamp.hpp"
#include "dict/index.hpp"
#include "rules/rule.hpp"
#include "run/compiled_file.hpp"

namespace lexon {

// Lives on the driver's stack for the whole run. Touched by the worker alone while it runs and by the driver alone
// between steps.
struct RunContext {
  std::FILE* dictionary = nullptr;
  std::FILE* dictionary_index = nullptr;
  std::FILE* input = nullptr;      // the sentence position lives in this stream
  std::FILE* rule_text = nullptr;  // null when nothing is converted
  Rule* rules = nullptr;           // null until a rule step has filled it
  std::array<IndexDescriptor*, kKeyFields> dictionary_slots{};
  std::FILE* cr_dictionary = nullptr;  // null, like its index, when the run has none
  std::FILE* cr_index = nullptr;
  std::array<IndexDescriptor*, kKeyFields> cr_slots{};
  bool post_edit = true;
  CompiledFile compiled_rules;
  CompiledFile compiled_matrix;
  std::string stamp_path;
  std::string rule_text_path;                 // empty without a text
  std::optional<FileMark> rule_text_mark;     // what the open text held at first; none for a pipe
  std::optional<std::int64_t> rules_refused;  // of the text; none if nobody has counted
  bool convert = false;                       // the rule text is to be parsed
  bool rebuild_matrix = false;
  bool in_memory = false;          // no compiled file is written
  bool rules_are_whole = false;    // all rules of the text have been written to the draft
  bool rules_unwritten = false;    // the compiled rules could not be written; the run goes on
  bool matrix_unwritten = false;   // likewise
  bool rule_step_done = false;     // every step from now on is a sentence
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

extern std::atomic<std::int32_t> run_status;

}  // namespace lexon
