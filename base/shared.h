#pragma once

#include <atomic>
#include <type_traits>

/// Marks the few plain loops that move pixels or samples which another thread may be writing: by
/// agreement such memory may tear, and the next frame shows it whole.
#define KWO_MAY_TEAR __attribute__((no_sanitize("thread")))

namespace kwo {

/// A word that several threads read and write without a lock.  Each access moves the whole word;
/// plain reads and writes are relaxed, which is all that a parameter needs.  A write that makes
/// other memory visible uses `Publish`, and its reader uses `Acquire`.
template <typename T>
class Shared {
  static_assert(sizeof(std::atomic<T>) == 4 || std::is_pointer_v<T>,
                "a shared word is four bytes or a pointer");
  static_assert(std::atomic<T>::is_always_lock_free);

 public:
  constexpr Shared(T value = T{}) : word_(value) {}
  Shared(const Shared&) = delete;
  /// The other's value, as it is now.
  Shared& operator=(const Shared& other) {
    *this = T{other};
    return *this;
  }

  operator T() const { return word_.load(std::memory_order_relaxed); }
  T operator=(T value) {
    word_.store(value, std::memory_order_relaxed);
    return value;
  }

  /// Stores `value` so that a thread that `Acquire`s it also sees all that was written before.
  void Publish(T value) { word_.store(value, std::memory_order_release); }
  T Acquire() const { return word_.load(std::memory_order_acquire); }

  /// Stores `value` if the word still holds `expected`: for a thread that moves a value on while
  /// another may set it afresh, so that the fresh one stays.
  bool Replace(T expected, T value) {
    return word_.compare_exchange_strong(expected, value, std::memory_order_acq_rel);
  }

 private:
  std::atomic<T> word_;
};

/// A shared flag that a thread can lower without undoing that another has raised it anew.
class SharedFlag {
 public:
  SharedFlag() = default;
  SharedFlag(const SharedFlag&) = delete;
  SharedFlag& operator=(const SharedFlag&) = delete;

  /// 1 while raised, else 0.
  operator int() const { return static_cast<int>(word_.load(std::memory_order_relaxed) & 1); }
  void Raise() {
    unsigned word = word_.load(std::memory_order_relaxed);
    while (!word_.compare_exchange_weak(word, (word + 2) | 1, std::memory_order_acq_rel)) {
    }
  }
  void Lower() { word_.fetch_and(~1u, std::memory_order_acq_rel); }

  /// Tells this raising from all others.
  unsigned Raising() const { return word_.load(std::memory_order_acquire); }
  /// Lowers the flag if it has not been raised since.
  void LowerIf(unsigned raising) {
    word_.compare_exchange_strong(raising, raising & ~1u, std::memory_order_acq_rel);
  }

 private:
  std::atomic<unsigned> word_ = 0;  // the lowest bit is the flag, the others count the raisings
};

}  // namespace kwo
