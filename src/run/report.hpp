// What is told of a sentence besides its output: one row of a report.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lexon {

struct Session;

struct SentenceReport {
  std::string label;   // the line that opened the sentence, without its end; may be empty
  std::string status;  // "done", "failed", "over time"; "over steps" and "stopped" where there are such limits
  double milliseconds = 0;
  std::int64_t steps = 0;                     // passes of the search
  std::int64_t steps_back = 0;                // steps that were taken back
  std::vector<std::string> unused_relations;  // "agn(sleep(>rest), dog(>animal))", ":01" for a scope
  std::vector<std::string> unknown_words;     // words of the graph that the dictionary does not have
  std::string text;                           // the sentence without relation marks; empty unless done
  std::string fallback;                       // its words in an order that needs no rules; empty if done
};

// The finished sentence as it is at trace level 0, where relations that are left over do not show. `printed` is what it
// was at the level of the session.
[[nodiscard]] std::string plain_sentence(Session& session, const char* printed);

// Fills in label, relations and words from what the sentence has left in the session; to be called before its pool is
// released.
void report_leftovers(const Session& session, SentenceReport& report);

}  // namespace lexon
