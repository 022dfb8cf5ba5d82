// Renders what a listener would hear of a list, with the whole engine and without a device, faster
// than real time: the headless clock jumps from sleep to sleep.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
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
constexpr double kBeforePlay = -1;
constexpr double kLargestNumber = 1e6;

struct Action {
  double seconds;
  std::function<void()> act;
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

constexpr struct {
  const char* name;
  void (*act)();
} kButtons[] = {{"play", kwo::TransportPlay},
                {"stop", kwo::TransportStop},
                {"next", kwo::TransportNext},
                {"previous", kwo::TransportPrevious},
                {"pause", kwo::TogglePause}};

bool ReadNumber(const std::string& text, double& number) {
  char* end = nullptr;
  number = std::strtod(text.c_str(), &end);
  return !text.empty() && *end == 0 && std::fabs(number) <= kLargestNumber;
}

// What an action does; empty where there is no such action.
std::function<void()> FindAct(const std::string& what) {
  for (const auto& button : kButtons)
    if (what == button.name) return button.act;
  const std::size_t equals = what.find('=');
  double value;
  if (equals == std::string::npos || !ReadNumber(what.substr(equals + 1), value)) return {};
  const std::string name = what.substr(0, equals);
  if (name == "seek") return [value] { SeekTo(value); };
  const auto set = kwo::tools::FindSetting(name);
  if (!set) return {};
  return [set, value] { set(static_cast<int>(value)); };
}

int Fail(const std::string& what) {
  std::fprintf(stderr, "render_list: %s\n", what.c_str());
  return 1;
}

int Usage() {
  std::fputs(kUsage, stderr);
  return 2;
}

bool ReadSeconds(const std::string& text, double& seconds) {
  if (ReadNumber(text, seconds) && seconds >= 0) return true;
  Fail("no number of seconds: " + text);
  return false;
}

bool AddAction(Options& options, double seconds, const std::string& what) {
  options.actions.push_back({seconds, FindAct(what)});
  if (options.actions.back().act) return true;
  Fail("no such action or setting: " + what);
  return false;
}

// Takes the whole command line, so that a mistake shows before anything is rendered; gives 0 or the
// exit code.
int Parse(int argc, char** argv, Options& options) {
  std::vector<std::string> names;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const int behind = argc - 1 - i;
    double seconds;
    if (word == "--seconds" && behind >= 1) {
      if (!ReadSeconds(argv[++i], options.seconds)) return 1;
    } else if (word == "--set" && behind >= 1) {
      if (!AddAction(options, kBeforePlay, argv[++i])) return 1;
    } else if (word == "--at" && behind >= 2) {
      if (!ReadSeconds(argv[++i], seconds) || !AddAction(options, seconds, argv[++i])) return 1;
    } else if (word.starts_with("--")) {
      return Usage();
    } else {
      names.push_back(word);
    }
  }
  if (names.size() != 2) return Usage();
  options.list = names[0];
  options.out = names[1];
  std::stable_sort(options.actions.begin(), options.actions.end(),
                   [](const Action& a, const Action& b) { return a.seconds < b.seconds; });
  return 0;
}

bool Sounding() {
  if (kwo::transport.playing) return true;
  for (int slot = 0; slot < 3; ++slot)
    if (kwo::TheMixer->Slot(slot)->active) return true;
  return false;
}

// Carries the actions out in their time and writes the sound as it is played.
void Render(const Options& options, kwo::tools::WavWriter& wav) {
  auto next = options.actions.begin();
  const auto actUntil = [&](double seconds) {
    for (; next != options.actions.end() && next->seconds <= seconds; ++next) next->act();
  };
  actUntil(kBeforePlay);
  kwo::TransportPlay();
  double now = 0;
  while (options.seconds < 0 ? Sounding() || next != options.actions.end()
                             : now < options.seconds) {
    actUntil(now);
    kwo::platform::Sleep(kStepMilliseconds);
    now += kStepMilliseconds / 1000.0;
    wav.Write(kwo::headless::TakePlayedSound());
  }
  kwo::platform::Sleep(kTailMilliseconds);
  wav.Write(kwo::headless::TakePlayedSound());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && (!std::strcmp(argv[1], "-h") || !std::strcmp(argv[1], "--help"))) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  Options options;
  if (const int code = Parse(argc, argv, options)) return code;
  if (!kwo::tools::AddArgument(options.list)) return Fail(options.list + ": no songs there");
  kwo::tools::WavWriter wav(options.out.c_str(), 44100, 2);
  if (!wav.IsOpen()) return Fail(options.out + ": cannot be written");
  if (!kwo::tools::StartEngine()) return Fail("no memory");
  Render(options, wav);
  kwo::tools::StopEngine();
  if (wav.Close()) return 0;
  return Fail(options.out + (wav.IsTooLong() ? ": its header can't tell of more than 4 GiB"
                                             : ": cannot be written"));
}
