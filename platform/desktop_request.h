#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What the desktop asks of the player: by media keys, its panel, a lock screen, a file manager.
/// Each is something that a user could do in the window.  Main thread.
namespace kwo::platform {

enum class Ask {
  kRaise,
  kPlay,
  kPause,
  kPlayPause,
  kStop,
  kNext,
  kPrevious,
  kSeekBy,   ///< by `microseconds`
  kSeekTo,   ///< to `microseconds`, if `song` is the current one
  kVolume,   ///< to `value`, 1 for all of it
  kSpeed,    ///< to `value`, 1 for the song's own; 0 pauses
  kRepeat,   ///< `value`: 1 on, 0 off
  kShuffle,  ///< `value`: 1 on, 0 off
  kOpen,     ///< `paths`, which may be none
  kHelp,
};

struct DesktopRequest {
  Ask ask;
  std::int64_t microseconds = 0;
  double value = 0;
  unsigned song = 0;
  /// Files and folders as a drop gives them.
  std::vector<std::string> paths = {};
};

/// What a kMessageDesktop with this number stands for, once.
std::optional<DesktopRequest> TakeDesktopRequest(int number);

}  // namespace kwo::platform
