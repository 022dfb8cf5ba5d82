#pragma once

namespace kwo::platform {

struct Thread;

enum class ThreadPriority { kNormal, kTimeCritical };

/// Starts `body(argument)` on a new thread and gives its handle, or null if none could be made.
/// Every handle is given to `JoinThread` or `LeaveThread` once.  The name, of 15 bytes at most, is
/// what the system's tools show.
Thread* StartThread(void (*body)(void*), void* argument, const char* name);

/// Waits until the thread's body has returned, and frees the handle.
void JoinThread(Thread* thread);

/// Frees the handle of a thread that may never end: nobody waits for it.
void LeaveThread(Thread* thread);

/// Asks for a priority for the calling thread.  Where the system does not allow it, nothing
/// changes.
void SetThreadPriority(ThreadPriority priority);

}  // namespace kwo::platform
