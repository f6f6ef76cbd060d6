// One run, as the front end wants it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "data/pool.hpp"
#include "run/borders.hpp"

namespace lexon {

inline constexpr int kPathLimit = 260;  // characters of a path
inline constexpr std::int32_t kMostBlocks = 65535;
inline constexpr std::int32_t kMostJobs = 256;

// A part of the sentences that a run would render; another run renders the rest.
struct InputRange {
  bool is_first = true;             // nothing is in front; shows what the rule step prints, and writes compiled rules
  bool begins_with_target = false;  // the sentence in front leaves a forced target that was not reached
  std::int64_t before = 0;          // sentences of the run in front of it
  std::int64_t count = 0;           // of its own
  bool to_end = false;              // and what the run does at the end of the input
  Border from;                      // a place in front of it; of no account for the first
  std::int64_t passed_over = 0;     // sentences between that place and the first

  [[nodiscard]] bool is_empty() const { return count == 0 && !to_end; }
};

// Filled by the front end; the driver only reads it.
struct RunSettings {
  std::string input_file;
  std::string output_file;  // created or truncated first of all, unless it is one of the others
  std::string rule_file;    // rule text, or a compiled file with the extension ".rul"
  std::string dictionary_file;
  std::string cr_dictionary_file;          // empty: the run has none
  std::string kb_dictionary_file;          // carried along, never opened
  std::int32_t start_sentence = 1;         // from 1
  std::int32_t sentence_count = 1;         // 0: all up to the end of the input
  std::int32_t trace_level = 1;            // the low 8 bits count, as a signed number
  std::int32_t max_time_per_sentence = 0;  // seconds; 0: limitless
  std::int32_t blocks = 200;               // of 65535 bytes, for the rules and a sentence together; to kMostBlocks
  std::int32_t jobs = 1;                   // sentences that are rendered at the same time; 0: as many as processors
  bool strict = false;                     // what is left out counts as failed
  bool run_at_once = false;
  bool show_progress = false;
  bool post_edit = true;
  bool rules_conversion_only = false;
  bool check_dictionaries = false;   // compare every byte of the dictionaries with their stamps
  bool rebuild = false;              // the compiled rules are made anew, whatever the dates say
  bool in_memory = false;            // no compiled rules are written, and none of a rule text are read
  std::optional<InputRange> range;   // none: all
  AllocationFault* fault = nullptr;  // for tests: refuses cells of the pools
  bool reserved_a = true;
  bool reserved_b = false;
};

}  // namespace lexon
