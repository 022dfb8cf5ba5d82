#include "app/saved_state.h"

#include <algorithm>
#include <climits>

#include "engine/transport.h"
#include "panels/application_state.h"
#include "panels/equaliser_presets.h"
#include "panels/main_page.h"
#include "panels/mixer_page.h"
#include "playlist/playlist.h"
#include "settings/settings.h"

namespace kwo {
namespace {

// Every setting once, in the order of shutdown: its name, its variable, what stands without it, and
// the range of what is an index.

template <typename Visit>
void VisitDisplay(Visit visit) {
  visit("MainDisplayMode", MainDisplayMode, 0);
  visit("MainSAMode", MainSAMode, 0);
}

template <typename Visit>
void VisitList(Visit visit) {
  visit("PlaylistDisplayMode", playlist.displayMode, 0, 0, 4);
  visit("PlaylistTopIndex", playlist.topIndex, 0, 0, kMaxSongs);
  visit("PlaylistCurrentSong", playlist.currentSong, 0, -1, kMaxSongs);
}

template <typename Visit>
void VisitMixer(Visit visit) {
  visit("EffectEQCurrent", EffectEQCurrent, 0, 0, kPresets - 1);
  visit("EffectEQSwitch", EffectEQSwitch, 0);
  visit("SliderVol", SliderVol, 100);
  visit("SliderPan", SliderPan, 0);
  visit("SliderSpd", SliderSpd, 100);
  visit("EffectCR", EffectCR, 0);
  visit("EffectTE", EffectTE, 0);
  visit("EffectVR", EffectVR, 0);
  visit("EffectCE", EffectCE, 0);
  visit("EffectLT", EffectLT, 0);
  visit("ModeDJ", transport.djMode, 0);
  visit("ModePlay", transport.playMode, 0);
  visit("ModeRepeat", transport.repeatOn, 0);
  visit("ModeShuffle", transport.shuffleOn, 0);
}

// The window's place is `place`, which also is what stands without a setting.
template <typename Visit>
void VisitWindow(platform::Point& place, Visit visit) {
  visit("POS_X", place.x, place.x);
  visit("POS_Y", place.y, place.y);
  visit("POS_Z", WindowFlags, 0);
}

void Read(const char* name, auto& variable, int fallback, int least = INT_MIN, int most = INT_MAX) {
  variable = std::clamp(GetSettingInt(name, fallback, 0), least, most);
}

// A slider's setting stands beyond the slider's own ends too, as long as it is still a whole number
// of 32 bits when it is written.
void Read(const char* name, float& level, int fallback) {
  constexpr float kUtmost = 2147483520.0f;
  level = std::min(static_cast<float>(GetSettingInt(name, fallback, 0)), kUtmost);
}

constexpr auto kReader = [](const char* name, auto& variable, auto... rest) {
  Read(name, variable, rest...);
};

constexpr auto kWriter = [](const char* name, const auto& variable, auto...) {
  SetSettingInt(name, static_cast<int>(variable));
};

platform::Point WindowPlace() {
  const platform::Rectangle window = platform::WindowRectangle();
  return {window.x, window.y};
}

}  // namespace

void ReadDisplaySettings() {
  VisitDisplay(kReader);
}

int ReadPlaylistSettings() {
  const int current = playlist.currentSong;
  VisitList(kReader);
  const int saved = playlist.currentSong;
  playlist.currentSong = current;
  return saved;
}

void ReadMixerSettings() {
  VisitMixer(kReader);
}

void ReadWindowSettings(platform::Point& place) {
  VisitWindow(place, kReader);
}

bool WriteSettings() {
  VisitDisplay(kWriter);
  VisitList(kWriter);
  const bool saved = SaveEqPresets();
  VisitMixer(kWriter);
  platform::Point place = WindowPlace();
  VisitWindow(place, kWriter);
  return saved;
}

std::vector<Setting> CurrentSettings() {
  std::vector<Setting> settings;
  const auto note = [&settings](const char* name, const auto& variable, auto...) {
    settings.push_back({name, static_cast<int>(variable)});
  };
  VisitDisplay(note);
  VisitList(note);
  VisitMixer(note);
  platform::Point place = WindowPlace();
  VisitWindow(place, note);
  return settings;
}

}  // namespace kwo
