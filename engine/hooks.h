#pragma once

#include <cstdint>

namespace kwo {

/// What the engine tells the layers above.  Each may be empty, is set before the threads start, and
/// may be called on any thread; it touches no engine state.
struct EngineHooks {
  void (*refreshSongLine)() = nullptr;
  void (*refreshPlaylistPage)() = nullptr;
  /// In hundredths of a second.
  void (*showSongTime)(int hundredths) = nullptr;
  /// A block of interleaved 16-bit values that has just been played; `count` values.  Comes on the
  /// wave output's thread and must return soon.
  void (*pushSamples)(const std::int16_t* samples, int count) = nullptr;
};

extern EngineHooks engineHooks;

}  // namespace kwo
