#pragma once

#include <cstdint>

#include "base/shared.h"

namespace kwo {

/// The sound last played, as interleaved 16-bit values.  The wave output's thread writes, the
/// redraw thread reads; neither looks at the other's index, and a reader that is overtaken sees a
/// torn wave.
class PcmRing {
 public:
  static constexpr int kValues = 18432;

  /// `count` is at most kValues.
  void Write(const std::int16_t* data, int count);
  /// Copies what was written since the last call, or the whole ring if that is nothing, to
  /// `values`, which holds kValues, and gives how many they are.
  int Read(std::int16_t* values);

 private:
  Shared<int> ringRead, ringWrite;
  std::int16_t samples[kValues] = {};
};

}  // namespace kwo
