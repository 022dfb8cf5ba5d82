#include "tools/tool_engine.h"

#include <cstring>

#include "base/hooks.h"
#include "engine/shuffle_master.h"
#include "engine/transport.h"
#include "platform/files.h"
#include "playlist/playlist_files.h"

namespace kwo::tools {
namespace {

// A setting's name and where its value goes.
struct Setting {
  const char* name;
  void (*apply)(int value);
};
constexpr Setting kSettings[] = {
    {"SliderVol", [](int v) { TheMixer->volume = static_cast<float>(v) / 100; }},
    {"SliderPan", [](int v) { TheMixer->pan = static_cast<float>(v) / 100; }},
    {"SliderSpd", [](int v) { TheMixer->speed = static_cast<float>(v) / 100; }},
    {"EffectCR", [](int v) { TheMixer->crystalizer = v; }},
    {"EffectTE", [](int v) { TheMixer->enhancer = v; }},
    {"EffectVR", [](int v) { TheMixer->vocalReducer = v; }},
    {"EffectCE", [](int v) { TheMixer->wideStereo = v; }},
    {"EffectLT", [](int v) { TheMixer->limiter = v; }},
    {"EffectEQSwitch", [](int v) { TheMixer->eqSwitch = v; }},
    {"ModePlay", [](int v) { transport.playMode = v; }},
    {"ModeRepeat", [](int v) { transport.repeatOn = v; }},
    {"ModeShuffle",
     [](int v) {
       transport.shuffleOn = v;
       if (v) BuildShuffleTable();
     }},
    {"ModeDJ",
     [](int v) {
       transport.djMode = v;
       DjSetMode(v);
     }},
};

}  // namespace

bool MakeEngine() {
  TheMixer = new Mixer;
  if (!TheMixer->Prepare(OnMixerEvent)) return false;
  hooks.transportStop = TransportStop;
  return true;
}

bool StartEngine() {
  if (!MakeEngine()) return false;
  TheMixer->StartThread();
  return true;
}

void StopEngine() {
  DjEnd();
  ClearList();
  TheMixer->StopThread();
  delete TheMixer;
  TheMixer = nullptr;
}

bool AddArgument(const std::string& path) {
  return AddPath(platform::FromMachinePath(path.c_str()).c_str()) > 0;
}

std::function<void(int)> FindSetting(const std::string& name) {
  for (const Setting& setting : kSettings) {
    if (name != setting.name) continue;
    return [&setting](int value) {
      setting.apply(value);
      TheMixer->Slot(0)->ApplyMixerParameters();
    };
  }
  return {};
}

}  // namespace kwo::tools
