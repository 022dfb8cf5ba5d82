#pragma once

#include <cstdint>

namespace kwo {

/// What the list and the engine tell the layers above them.  Each does nothing until it is set, is
/// set before the threads start, and may be called on any thread but where it says otherwise.
struct Hooks {
  void (*refreshSongLine)() = [] {};
  void (*refreshPlaylistPage)() = [] {};
  /// What the desktop is told of the player may be otherwise now.  Never waits.
  void (*stateChanged)() = [] {};
  /// The play order has moved on to another song, whose row may be out of sight.
  void (*followSong)() = [] {};
  /// A menu or dialog is about to wait for the user.  Main thread.
  void (*beforeChoice)() = [] {};
  /// In hundredths of a second.
  void (*showSongTime)(int hundredths) = [](int) {};
  /// A block of `count` interleaved 16-bit values that has just been played.  Comes on the wave
  /// output's thread and must return soon.
  void (*pushSamples)(const std::int16_t* samples, int count) = [](const std::int16_t*, int) {};
  /// Stops the music before the song under way leaves the list.  Main thread.
  void (*transportStop)() = [] {};
};

extern Hooks hooks;

/// `refreshSongLine`, `refreshPlaylistPage`, `stateChanged`.
void RefreshDisplays();
/// `followSong`, then the same.
void SongChanged();

}  // namespace kwo
