#pragma once

#include <string>

/// The desktop's media controls: they are told how the player stands, and what they ask comes as
/// kMessageDesktop.  Main thread.
namespace kwo::platform {

enum class Playback { kStopped, kPlaying, kPaused };

struct MediaState {
  Playback playback = Playback::kStopped;
  double volume = 1, speed = 1;  ///< 1 for all of it, and for the song's own
  bool repeat = false, shuffle = false;
  bool anySong = false;  ///< in the list
  /// The current song: another number for each song of the list, 0 for none.
  unsigned song = 0;
  int seconds = 0;                         ///< 0 for a length that is not known
  std::string title, artist, album, path;  ///< bytes of no told encoding; empty for none
  unsigned jumps = 0;                      ///< of the time
  bool operator==(const MediaState&) const = default;
};

/// Offers the controls.  `position` gives the song's time in seconds whenever it is asked for.
void OpenMediaControls(double (*position)());
/// Tells what has changed since the last call.
void ShowMediaState(const MediaState& state);
void CloseMediaControls();

}  // namespace kwo::platform
