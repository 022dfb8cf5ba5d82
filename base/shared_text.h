#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

namespace kwo {

/// A text that one thread may write while another reads: a reader can get a mix of two texts, but
/// never runs over the end, whose last byte is always NUL.
class SharedText {
 public:
  /// With room for so many bytes, the closing NUL among them.
  explicit SharedText(std::size_t size)
      : bytes_(std::make_unique<std::atomic<char>[]>(size)), size_(size) {}

  /// Stores as much of `text` as fits.
  void Store(const char* text) {
    std::size_t i = 0;
    for (; i + 1 < size_ && text[i]; ++i) bytes_[i].store(text[i], std::memory_order_relaxed);
    bytes_[i].store(0, std::memory_order_relaxed);
  }
  /// Copies the text into `text`, which has the same room, and gives its length.
  std::size_t Load(char* text) const {
    std::size_t i = 0;
    while (i + 1 < size_ && (text[i] = bytes_[i].load(std::memory_order_relaxed))) ++i;
    text[i] = 0;
    return i;
  }
  bool Empty() const { return bytes_[0].load(std::memory_order_relaxed) == 0; }

 private:
  std::unique_ptr<std::atomic<char>[]> bytes_;
  std::size_t size_;
};

}  // namespace kwo
