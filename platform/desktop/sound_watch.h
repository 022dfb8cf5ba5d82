#pragma once

#include <atomic>

namespace kwo::platform {

/// Whether the window shows what is heard.  While it does not, the device tells of two buffers at
/// once, which spares every second waking of those who hear of them.  The main thread writes it,
/// the device's reads it.
extern std::atomic<bool> soundIsWatched;

}  // namespace kwo::platform
