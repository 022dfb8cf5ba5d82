#pragma once

#include <atomic>
#include <cstddef>

namespace kwo {

/// A text of at most `kSize` - 1 bytes that one thread may write while another reads: a reader can
/// get a mix of two texts, but never runs over the end, whose last byte is always NUL.
template <std::size_t kSize>
class SharedText {
 public:
  /// Stores as much of `text` as fits.
  void Store(const char* text) {
    std::size_t i = 0;
    for (; i + 1 < kSize && text[i]; ++i) bytes_[i].store(text[i], std::memory_order_relaxed);
    bytes_[i].store(0, std::memory_order_relaxed);
  }
  /// Copies the text into `text`, which holds `kSize` bytes, and gives its length.
  std::size_t Load(char* text) const {
    std::size_t i = 0;
    while (i + 1 < kSize && (text[i] = bytes_[i].load(std::memory_order_relaxed))) ++i;
    text[i] = 0;
    return i;
  }
  bool Empty() const { return bytes_[0].load(std::memory_order_relaxed) == 0; }

 private:
  std::atomic<char> bytes_[kSize] = {};
};

}  // namespace kwo
