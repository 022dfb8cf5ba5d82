#include "app/saved_state.h"

#include <algorithm>

#include "engine/transport.h"
#include "panels/application_state.h"
#include "panels/equaliser_presets.h"
#include "panels/main_page.h"
#include "panels/mixer_page.h"
#include "playlist/playlist.h"
#include "settings/settings.h"

namespace kwo {
namespace {

int ReadWithin(const char* name, int fallback, int least, int most) {
  return std::clamp(GetSettingInt(name, fallback, 0), least, most);
}

// A slider's setting stands beyond the slider's own ends too, as long as it is still a whole number
// of 32 bits when it is written.
float ReadSlider(const char* name, int fallback) {
  constexpr float kUtmost = 2147483520.0f;
  return std::min(static_cast<float>(GetSettingInt(name, fallback, 0)), kUtmost);
}

void Write(const char* name, int value) {
  GetSettingInt(name, value, 1);
}

void Write(const char* name, float value) {
  GetSettingInt(name, static_cast<int>(value), 1);
}

}  // namespace

void ReadDisplaySettings(int& displayMode, int& visualiser) {
  displayMode = GetSettingInt("MainDisplayMode", 0, 0);
  visualiser = GetSettingInt("MainSAMode", 0, 0);
}

int ReadPlaylistSettings() {
  playlist.displayMode = ReadWithin("PlaylistDisplayMode", 0, 0, 4);
  playlist.topIndex = ReadWithin("PlaylistTopIndex", 0, 0, kMaxSongs);
  return ReadWithin("PlaylistCurrentSong", 0, -1, kMaxSongs);
}

void ReadMixerSettings() {
  EffectEQCurrent = ReadWithin("EffectEQCurrent", 0, 0, kPresets - 1);
  EffectEQSwitch = GetSettingInt("EffectEQSwitch", 0, 0);
  SliderVol = ReadSlider("SliderVol", 100);
  SliderPan = ReadSlider("SliderPan", 0);
  SliderSpd = ReadSlider("SliderSpd", 100);
  EffectCR = GetSettingInt("EffectCR", 0, 0);
  EffectTE = GetSettingInt("EffectTE", 0, 0);
  EffectVR = GetSettingInt("EffectVR", 0, 0);
  EffectCE = GetSettingInt("EffectCE", 0, 0);
  EffectLT = GetSettingInt("EffectLT", 0, 0);
  djMode = GetSettingInt("ModeDJ", 0, 0);
  playMode = GetSettingInt("ModePlay", 0, 0);
  repeatOn = GetSettingInt("ModeRepeat", 0, 0);
  shuffleOn = GetSettingInt("ModeShuffle", 0, 0);
}

void WriteSettings() {
  Write("MainDisplayMode", int{MainDisplayMode});
  Write("MainSAMode", int{MainSAMode});
  Write("PlaylistDisplayMode", int{playlist.displayMode});
  Write("PlaylistTopIndex", int{playlist.topIndex});
  Write("PlaylistCurrentSong", int{playlist.currentSong});
  SaveEqPresets();
  Write("EffectEQCurrent", int{EffectEQCurrent});
  Write("EffectEQSwitch", EffectEQSwitch);
  Write("SliderVol", SliderVol);
  Write("SliderPan", SliderPan);
  Write("SliderSpd", SliderSpd);
  Write("EffectCR", EffectCR);
  Write("EffectTE", EffectTE);
  Write("EffectVR", EffectVR);
  Write("EffectCE", EffectCE);
  Write("EffectLT", EffectLT);
  Write("ModeDJ", int{djMode});
  Write("ModePlay", int{playMode});
  Write("ModeRepeat", int{repeatOn});
  Write("ModeShuffle", int{shuffleOn});
  const platform::Rectangle window = platform::WindowRectangle();
  Write("POS_X", window.x);
  Write("POS_Y", window.y);
  Write("POS_Z", WindowFlags);
}

}  // namespace kwo
