// Where the sentences of an input begin: what a quick pass of the reader over it finds, kept in a small file beside it.
//
// `INPUT.offsets` is a stamp (data/stamp.hpp):
//
// | key       | value                                                                                     |
// |-----------|-------------------------------------------------------------------------------------------|
// | input     | mark of the input: where its size or date is another, the file is out of date              |
// | start     | the first sentence that counts, as -S has it                                              |
// | sentences | from there on; what stands behind the last one counts as one more                          |
// | every     | so many sentences lie between two borders                                                 |
// | 0, 1, 2.. | a border: its offset, the lines in front of it, and 1 if it stands within a line          |
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "data/stamp.hpp"
#include "data/text_line.hpp"

namespace lexon {

// A place of the input, in front of a sentence.
struct Border {
  std::int64_t offset = 0;  // bytes in front of it
  std::int64_t line = 0;    // lines in front of it
  bool goes_on = false;     // the last of these is not at its end
};

struct Borders {
  FileMark input;
  std::int64_t start = 1;
  std::int64_t sentences = 0;
  std::int64_t every = 1;
  std::vector<Border> places;  // in front of sentence 0, `every`, ...

  [[nodiscard]] static std::string path_beside(const std::string& input) { return input + ".offsets"; }
};

// The borders of the input from sentence `start` on: those of the file beside it if they are of this input as it is,
// else found anew and written there. Programs that want those of one input at the same time wait for the first, which
// makes them for all. The result is empty, or why there are none: the input cannot be read, is no file, changes
// meanwhile, or `stop` was set. `is_kept` says whether they stand in the file; `is_new` makes them anew in any case.
[[nodiscard]] std::string borders_of(const std::string& input, std::int64_t start, bool is_new,
                                     const std::atomic<bool>& stop, Borders& borders, bool& is_kept);

// Has the input the size and the date that `borders` were made of?
[[nodiscard]] bool is_input_of(const std::string& input, const Borders& borders);

// Reads whole lines up to the end of the `count`th sentence. Returns how many it has passed over: fewer if the source
// ends before, or `stop` is set.
[[nodiscard]] std::int64_t skip_sentences(TextSource source, std::int64_t count, TextWatch& lines,
                                          const std::atomic<bool>& stop);

}  // namespace lexon
