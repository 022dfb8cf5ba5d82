#pragma once

#include <atomic>

/// How a thread that must never wait is kept out of what another one changes.
///
/// The one that never waits works in turns: it raises `inside`, then looks at the other's word, and
/// leaves this turn out where that says so.  The other one writes its word, then waits until
/// `inside` is down.  Each writes its own word before it reads the other's, and all four accesses
/// lie in one total order that both see (sequential consistency, the default of std::atomic): so at
/// least one of them sees the other, and a turn and a change never overlap.
namespace kwo {

/// Begins a turn; false, where `word` is not `open`: this turn is left out.
inline bool EnterTurn(std::atomic<int>& inside, const std::atomic<int>& word, int open) {
  inside = 1;
  if (word == open) return true;
  inside = 0;
  return false;
}

inline void LeaveTurn(std::atomic<int>& inside) {
  inside = 0;
}

/// Waits until no turn is under way; `rest` sleeps for a moment.  Behind the write of the word.
template <typename Rest>
void AwaitTurnsEnd(const std::atomic<int>& inside, Rest rest) {
  while (inside) rest();
}

}  // namespace kwo
