#pragma once

#include <cstdint>

#include "decoder/input_stream.h"

namespace kwo {

/// A piece of a stream in memory, moved along as it is looked at.  What is changed in it stays
/// changed as long as looks go forward.
class ByteWindow {
 public:
  static constexpr int kCapacity = 16384;

  /// Looks at `seekable`, which stays the caller's, and shows nothing at `end` or behind it.
  void Begin(InputStream* seekable, std::int64_t end);
  void SetEnd(std::int64_t end) { end_ = end; }
  /// Reads everything anew.
  void Forget() { bytes_ = 0; }
  std::int64_t End() const { return end_; }

  /// Gives `wanted` bytes (at most `kCapacity`) at `offset` and all that lies behind them in
  /// memory, or null where there are not as many.
  unsigned char* Look(std::int64_t offset, int wanted);
  /// How many bytes from `offset` on the last `Look` has brought into memory.
  int BytesFrom(std::int64_t offset) const { return static_cast<int>(start_ + bytes_ - offset); }

 private:
  InputStream* source_ = nullptr;
  std::int64_t end_ = 0;
  std::int64_t start_ = 0;
  int bytes_ = 0;
  unsigned char data_[kCapacity];
};

}  // namespace kwo
