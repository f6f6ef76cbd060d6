// SIGINT, SIGTERM and SIGHUP as the user's cancel.
#pragma once

#include <atomic>

namespace lexon {

// Makes the signals ask the worker to stop, and end the program at once as long as no work has begun; a second one ends
// it at once in any case, unless it comes right behind the first. A hang-up that was ignored when the program started
// stays so.
void cancel_on_signals();

// From now on the first signal sets `flag`, which outlives the next call; null: it ends the program at once.
void signals_stop(std::atomic<bool>* flag);

// From now on the first signal is remembered alone: the work is over, and what came of it is being closed.
void signals_remember();

// The signals end the program again, as if nobody had asked for them.
void leave_signals_alone();

// Has one of the signals come?
[[nodiscard]] bool cancel_was_signalled();

}  // namespace lexon
