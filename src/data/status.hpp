// The results that travel through every room.
#pragma once

namespace lexon {

// What a step reports. Values without a name here (22, 91 to 99, 202, 203) are failures of one room that
// pass up unchanged.
enum class Status : int {
  ok = 0,
  memory = 100,            // a pool or the heap refused, or the worker's stack is nearly used up
  rule_base = 110,         // the rule base asked for something that has no result; a ";;" line has said what
  stopped = 120,           // the host asked the worker to stop; nothing more is printed
  no_effect = -1,          // no effect, or failure of a step
  nothing_left = -2,       // every alternative has been tried
  end_of_input = -10,      // the input is exhausted
  index_unreadable = 22,   // an index block cannot be read
  not_a_key_block = 202,   // a dictionary block should hold keys and does not
  not_a_data_block = 203,  // a dictionary block should hold records and does not
};

// What rule matching reports: does the rule fit the window?
enum class Fit : int {
  no = 0,
  yes = 1,
  refused = -1,  // fits, but the window may only be backtracked from; or an inserted node ran out of words
  failed = 100,  // there is no answer: `must_leave` says why, or, where that is ok, memory is exhausted
};

[[nodiscard]] constexpr int code(Status status) {
  return static_cast<int>(status);
}
[[nodiscard]] constexpr int code(Fit fit) {
  return static_cast<int>(fit);
}

// A failure proper: a code above zero. The negative codes are answers of the search.
[[nodiscard]] constexpr bool is_failure(Status status) {
  return code(status) > 0;
}

}  // namespace lexon
