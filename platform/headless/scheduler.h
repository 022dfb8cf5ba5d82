#pragma once

#include <condition_variable>
#include <cstdint>

namespace kwo::headless {

/// A thread as the backend's clock sees it.
struct Task {
  std::condition_variable turn;
  std::int64_t deadline = 0;
  std::uint64_t order = 0;
  bool woken = false;
  bool finished = false;
};

constexpr std::int64_t kForever = INT64_MAX;

/// The calling thread's task.
Task& CurrentTask();

/// Lets the calling thread rest until the backend's time reaches `deadline`, or until `Wake`.
void RestUntil(std::int64_t deadline);

/// Ends another task's rest.  A wake of a task that does not rest ends its next rest at once.
void Wake(Task& task);

}  // namespace kwo::headless
