// What the driver hands to the steps of a run.
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
#include "source/expand.hpp"

namespace lexon {

// Lives for the whole run. While a step runs it belongs to the thread of the rule step, or to those of the sentences as
// `Batch` shares it out; to the driver between the steps. Who watches may read what is atomic.
struct RunContext {
  Session session;  // of the rule step, and of the sentences on one thread; the output lies in it
  Grammar grammar;
  Dictionary dictionary;
  Dictionary cr_dictionary;        // not open when the run has none
  File output;                     // null until it is open
  std::FILE* input = nullptr;      // the sentence position lives in this stream
  bool input_waits = false;        // for who writes it: a pipe, a terminal
  std::FILE* rule_text = nullptr;  // null when nothing is converted, or from memory
  bool post_edit = true;
  CompiledFile compiled_rules;
  CompiledFile compiled_matrix;
  std::string stamp_path;
  std::string rule_text_path;                 // of a grammar source its expansion; empty without a text
  ExpandedFile source;                        // what a grammar source has expanded to
  std::optional<FileMark> rule_text_mark;     // what the open text held at first; none for a pipe
  std::optional<std::int64_t> rules_refused;  // of the text; none if nobody has counted
  bool convert = false;                       // the rule text is to be parsed
  bool rebuild_matrix = false;
  bool in_memory = false;           // no compiled file is written
  bool rules_are_whole = false;     // all rules of the text have been written to the draft
  bool rules_unwritten = false;     // the compiled rules could not be written; the run goes on
  bool matrix_unwritten = false;    // likewise
  bool rules_failed = false;        // the rule step has failed; the run goes on
  bool rules_without_room = false;  // the rule step ended for want of memory
  RuleNotes rule_notes;             // of the text, when it was parsed
  InputNotes input_notes;
  std::int64_t skipped = 0;                // sentences that were passed over
  std::atomic<std::int64_t> number{0};     // of the sentence that is to be closed next; 0 in the rule step
  std::atomic<std::int64_t> done{0};       // sentences
  std::atomic<std::int64_t> failed{0};     // sentences
  std::atomic<std::int64_t> over_time{0};  // sentences
  bool input_ended = false;                // the run came to the end of the input
  bool target_left = false;                // in front of the sentences, and then behind them: the forced target
  std::int64_t starved = 0;                // sentences that failed for want of memory
  bool file_is_short = false;              // a file could not be read or written to its end
  std::vector<std::string> notes;          // what the user ought to know beside the output

  // Sentences that were begun and closed.
  [[nodiscard]] std::int64_t tried() const { return done + failed + over_time; }
};

}  // namespace lexon
