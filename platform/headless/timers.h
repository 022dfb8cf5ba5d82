#pragma once

#include <cstdint>
#include <vector>

namespace kwo::headless {

/// When the next timer of the window is due, in the backend's time; kForever if none runs.
std::int64_t NextTimer();

/// Takes the timers that are due, and sets them to their next turn.
void CollectTimers(std::vector<int>& ids);

}  // namespace kwo::headless
