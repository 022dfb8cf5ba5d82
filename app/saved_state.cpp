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

std::vector<Setting> PageSettings() {
  return {{"MainDisplayMode", MainDisplayMode},
          {"MainSAMode", MainSAMode},
          {"PlaylistDisplayMode", playlist.displayMode},
          {"PlaylistTopIndex", playlist.topIndex},
          {"PlaylistCurrentSong", playlist.currentSong}};
}

std::vector<Setting> MixerAndWindowSettings() {
  const platform::Rectangle window = platform::WindowRectangle();
  return {{"EffectEQCurrent", EffectEQCurrent},
          {"EffectEQSwitch", EffectEQSwitch},
          {"SliderVol", static_cast<int>(SliderVol)},
          {"SliderPan", static_cast<int>(SliderPan)},
          {"SliderSpd", static_cast<int>(SliderSpd)},
          {"EffectCR", EffectCR},
          {"EffectTE", EffectTE},
          {"EffectVR", EffectVR},
          {"EffectCE", EffectCE},
          {"EffectLT", EffectLT},
          {"ModeDJ", djMode},
          {"ModePlay", playMode},
          {"ModeRepeat", repeatOn},
          {"ModeShuffle", shuffleOn},
          {"POS_X", window.x},
          {"POS_Y", window.y},
          {"POS_Z", WindowFlags}};
}

void Write(const std::vector<Setting>& settings) {
  for (const Setting& setting : settings) GetSettingInt(setting.name, setting.value, 1);
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

bool WriteSettings() {
  Write(PageSettings());
  const bool saved = SaveEqPresets();
  Write(MixerAndWindowSettings());
  return saved;
}

std::vector<Setting> CurrentSettings() {
  std::vector<Setting> settings = PageSettings();
  for (const Setting& setting : MixerAndWindowSettings()) settings.push_back(setting);
  return settings;
}

}  // namespace kwo
