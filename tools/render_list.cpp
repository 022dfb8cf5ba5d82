// Renders what a listener would hear of a list, with the whole engine and without a device, faster
// than real time: the headless clock jumps from sleep to sleep.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "engine/transport.h"
#include "platform/clock.h"
#include "platform/headless/headless.h"
#include "tools/tool_engine.h"
#include "tools/wav_writer.h"

namespace {

constexpr char kUsage[] =
    "usage: render_list LIST OUT.wav [--seconds N] [--set NAME=VALUE]... [--at SECONDS ACTION]...\n"
    "LIST is a playlist file, a folder or a song.  Renders until the list ends, or N seconds.\n"
    "ACTION: play, stop, next, previous, pause, seek=S, or a setting NAME=VALUE.  Settings have\n"
    "the names of the saved ones: SliderVol, SliderPan, SliderSpd, EffectCR, EffectTE, EffectVR,\n"
    "EffectCE, EffectLT, EffectEQSwitch, ModePlay, ModeRepeat, ModeShuffle, ModeDJ.\n";

constexpr int kStepMilliseconds = 50;
constexpr int kTailMilliseconds = 3000;  // the device plays its queue out

struct Action {
  double seconds;
  std::string what;
};

struct Options {
  std::string list, out;
  double seconds = -1;
  std::vector<Action> actions;
};

void SeekTo(double seconds) {
  kwo::TransportStop();
  kwo::TheMixer->Slot(0)->Seek(static_cast<float>(seconds));
  kwo::TransportPlay();
}

bool Carry(const std::string& what) {
  using namespace kwo;
  const std::size_t equals = what.find('=');
  const std::string name = what.substr(0, equals);
  if (equals != std::string::npos) {
    const double value = std::atof(what.c_str() + equals + 1);
    if (name != "seek") return tools::ApplySetting(name, static_cast<int>(value));
    SeekTo(value);
    return true;
  }
  static constexpr struct {
    const char* name;
    void (*act)();
  } kActions[] = {{"play", TransportPlay},
                  {"stop", TransportStop},
                  {"next", TransportNext},
                  {"previous", TransportPrevious},
                  {"pause", TogglePause}};
  for (const auto& action : kActions) {
    if (what != action.name) continue;
    action.act();
    return true;
  }
  return false;
}

bool Parse(int argc, char** argv, Options& options) {
  std::vector<std::string> names;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--seconds" && i + 1 < argc) {
      options.seconds = std::atof(argv[++i]);
    } else if (word == "--set" && i + 1 < argc) {
      options.actions.push_back({-1, argv[++i]});
    } else if (word == "--at" && i + 2 < argc) {
      const double seconds = std::atof(argv[++i]);
      options.actions.push_back({seconds, argv[++i]});
    } else if (word.starts_with("--")) {
      return false;
    } else {
      names.push_back(word);
    }
  }
  if (names.size() != 2) return false;
  options.list = names[0];
  options.out = names[1];
  std::stable_sort(options.actions.begin(), options.actions.end(),
                   [](const Action& a, const Action& b) { return a.seconds < b.seconds; });
  return true;
}

int Fail(const std::string& what) {
  std::fprintf(stderr, "render_list: %s\n", what.c_str());
  return 1;
}

bool Sounding() {
  if (kwo::playing) return true;
  for (int slot = 0; slot < 3; ++slot)
    if (kwo::TheMixer->Slot(slot)->active) return true;
  return false;
}

// Carries the actions out in their time and writes the sound as it is played.
int Render(const Options& options, kwo::tools::WavWriter& wav) {
  auto next = options.actions.begin();
  auto carryUntil = [&](double seconds) {
    for (; next != options.actions.end() && next->seconds <= seconds; ++next)
      if (!Carry(next->what)) return false;
    return true;
  };
  if (!carryUntil(-1)) return Fail("no such action: " + next->what);
  kwo::TransportPlay();
  double now = 0;
  while (options.seconds < 0 ? Sounding() || next != options.actions.end()
                             : now < options.seconds) {
    if (!carryUntil(now)) return Fail("no such action: " + next->what);
    kwo::platform::Sleep(kStepMilliseconds);
    now += kStepMilliseconds / 1000.0;
    wav.Write(kwo::headless::TakePlayedSound());
  }
  kwo::platform::Sleep(kTailMilliseconds);
  wav.Write(kwo::headless::TakePlayedSound());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && (!std::strcmp(argv[1], "-h") || !std::strcmp(argv[1], "--help"))) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  Options options;
  if (!Parse(argc, argv, options)) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  if (!kwo::tools::StartEngine()) return Fail("no memory");
  if (!kwo::tools::AddArgument(options.list)) return Fail(options.list + ": no songs there");
  kwo::tools::WavWriter wav(options.out.c_str(), 44100, 2);
  int result = Render(options, wav);
  kwo::tools::StopEngine();
  if (!wav.Close() && result == 0) result = Fail(options.out + ": cannot be written");
  return result;
}
