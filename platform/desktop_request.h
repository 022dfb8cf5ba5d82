#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/messages.h"

/// What the desktop asks of the player: by media keys, its panel, a lock screen, a file manager, a
/// screen reader.  Each is something that a user could do in the window.  Main thread.
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
  kPress,      ///< `control`; a list item twice, quickly
  kToggle,     ///< `control`; a list item is pressed with Control held
  kSetValue,   ///< of `control`, to `value`
  kStepValue,  ///< of `control`, by `value` of its steps
};

struct DesktopRequest {
  Ask ask;
  std::int64_t microseconds = 0;
  double value = 0;
  unsigned song = 0;
  int control = 0;  ///< of those on the screen, by its id
  /// Files and folders as a drop gives them.
  std::vector<std::string> paths = {};
};

/// What is asked of a control of the window, which waits as a press of the mouse does.
constexpr bool IsPress(Ask ask) {
  return ask == Ask::kPress || ask == Ask::kToggle || ask == Ask::kSetValue ||
         ask == Ask::kStepValue;
}
/// Of `KeyBit`: what the message carries.
constexpr unsigned KeysOf(Ask ask) {
  return ask == Ask::kToggle ? KeyBit(Key::kControl) : 0;
}

/// What a kMessageDesktop with this number stands for, once.
std::optional<DesktopRequest> TakeDesktopRequest(int number);

}  // namespace kwo::platform
