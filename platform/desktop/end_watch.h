#pragma once

namespace kwo::platform {

/// Has a thread of its own take SIGTERM, SIGINT and SIGHUP for the main thread, and see to it that
/// the process ends within five seconds of the first, whatever the main thread does.  `wake` is
/// called on that thread, and `finish` too, which has two seconds for what is still being written,
/// if the main thread has not served the signal in three.  Before other threads start; false if
/// there can be none.
bool WatchForEnd(void (*wake)(), void (*finish)());

/// Gives the signals back to a process that is to become another program.
void UnblockEndSignals();

/// Whether a signal has come, once.  Main thread.
bool EndSignalled();

/// Everything has been saved.  Main thread.
void EndServed();

}  // namespace kwo::platform
