// SIGINT, SIGTERM and SIGHUP as the user's cancel.
#pragma once

#include <atomic>

namespace lexon {

// Makes the signals ask the worker to stop; a second one ends the program at once, unless it comes right behind the
// first. A hang-up that was ignored when the program started stays so.
void cancel_on_signals();

// From now on the first signal also sets `flag`, which outlives the next call; null: none.
void signals_stop(std::atomic<bool>* flag);

// The signals end the program again, as if nobody had asked for them.
void leave_signals_alone();

// Has one of the signals come?
[[nodiscard]] bool cancel_was_signalled();

}  // namespace lexon
