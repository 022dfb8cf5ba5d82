#pragma once

#include <vector>

#include "platform/window.h"

/// The settings behind the pages' variables.  Main thread.
namespace kwo {

// Reading, in the order of start-up.  An index outside its range becomes the nearest sound one; a
// level, a mode or a switch stands as it is until the user changes it.
void ReadDisplaySettings();
/// Gives the index of the song that was current.
int ReadPlaylistSettings();
void ReadMixerSettings();
/// `place` is what stands without a setting.
void ReadWindowSettings(platform::Point& place);

/// All of them, in the order of shutdown, with the presets in between; false if those can't be.
bool WriteSettings();

struct Setting {
  const char* name;
  int value;
};
/// All of them as they stand, in the same order.
std::vector<Setting> CurrentSettings();

}  // namespace kwo
