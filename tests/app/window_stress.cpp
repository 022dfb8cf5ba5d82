// The whole program with its threads side by side, a user who presses and drags wherever he likes,
// and a desktop that asks without end.  What is looked for is found by the sanitizers, and by the
// end that must come.  With "twin" one thread runs at a time, and each frame, which is composed in
// parts, is composed a second time, whole. usage: window_stress [ACTIONS [SEED [twin]]]

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>

#include "base/shared.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/headless/headless.h"
#include "platform/threads.h"
#include "tests/support.h"
#include "toolkit/skin_host.h"
#include "tools/drive_script.h"

namespace kwo {
namespace {

constexpr const char* kMenuItems[] = {
    "Select All",    "Deselect All",         "Sort",
    "Show : Title",  "Read Tag Information", "Show : Artist - Album - Title",
    "Open Files",    "Open Directory",       "Add Files",
    "Add Directory", "Remove Selected",      "Remove Unselected",
    "Remove All",    "Remove Dead Links",    "Help",
};

std::string RandomScript(int actions, unsigned seed, const std::string& songs) {
  std::mt19937 random(seed);
  const auto below = [&](unsigned range) { return static_cast<int>(random() % range); };
  const auto place = [&] {
    // Half the presses go to the transport and page buttons, and none to where QUIT may be.
    int y = below(2) ? below(302) : 268;
    if (y > 160 && y < 190) y = 60;
    return ' ' + std::to_string(below(488)) + ' ' + std::to_string(y);
  };
  const auto choice = [&](const char* a, const char* b) { return std::string(below(2) ? a : b); };
  std::string script;
  for (int i = 0; i < actions; ++i) {
    script += "menu " + std::string(kMenuItems[random() % std::size(kMenuItems)]) + "\ndialog " +
              songs + '\n';
    const std::string acts[] = {choice("shift", "control") + choice(" on", " off"),
                                choice("drop ", "shiftdrop ") + songs,
                                "tray" + choice(" left", " right"),
                                "minimise",
                                "restore\ntray left",
                                "restore",
                                choice("activate", "deactivate"),
                                "type " + std::string(random() % 40, 'w'),
                                "sound" + choice(" on", " off"),
                                "rightpress" + place(),
                                "doublepress" + place(),
                                "drag" + place() + place(),
                                "rightdrag" + place() + place(),
                                "press" + place(),
                                "press" + place(),
                                "press" + place()};
    script += acts[random() % std::size(acts)] + '\n';
  }
  return script + "sound on\n";
}

struct Desktop {
  std::string songs;
  Shared<int> ended;
};

void AskWithoutEnd(void* argument) {
  const auto& desktop = *static_cast<const Desktop*>(argument);
  std::mt19937 random(1);
  while (!desktop.ended) {
    const auto ask =
        static_cast<platform::Ask>(random() % (static_cast<int>(platform::Ask::kHelp) + 1));
    platform::DesktopRequest request{ask};
    request.microseconds = static_cast<int>(random() % 60'000'000) - 30'000'000;
    request.value = static_cast<int>(random() % 5) * 0.5;
    request.song = headless::Media().state.song;
    if (random() % 2) request.paths = {desktop.songs};
    // Songs that are opened seldom enough for the user's hands to meet a list.
    if (ask != platform::Ask::kOpen || random() % 8 == 0) headless::AskOfPlayer(request);
    platform::Sleep(200);
  }
}

// The redraw thread's work in its place, with a slow twin of the canvas.
struct FrameTwin {
  Shared<int> ended;
  SkinBitmap twin;
  int frames = 0, wrong = 0;

  void Compare(const SkinHost& host) {
    const SkinBitmap& canvas = *host.canvas;
    if (twin.width != canvas.width || twin.height != canvas.height) {
      twin.ReleaseHandle();
      twin.CreateBlank(canvas.width, canvas.height, 0);
      twin.CopyFrom(&canvas, 0, 0, canvas.width, canvas.height);
    }
    host.compositor.ComposeWhole(twin);
    const auto bytes = static_cast<std::size_t>(canvas.stride * canvas.height);
    ++frames;
    if (std::memcmp(twin.bits, canvas.bits, bytes) == 0) return;
    if (wrong++ == 0) std::printf("window_stress: frame %d differs from its twin\n", frames);
    std::memcpy(twin.bits, canvas.bits, bytes);
  }

  static void Run(void* argument) {
    auto& self = *static_cast<FrameTwin*>(argument);
    while (!self.ended && !(TheSkinHost && TheSkinHost->threadAlive)) platform::Sleep(1);
    if (TheSkinHost) TheSkinHost->StopRedraw();
    while (!self.ended && TheSkinHost) {
      SkinHost& host = *TheSkinHost;
      host.RedrawFrame();
      platform::ShowPresented();
      if (host.active && host.canvas) self.Compare(host);
      platform::Sleep(1000 / host.frameRate);
      if (TheSkinHost && host.InputActiveTick && host.callback) host.callback(host, kTick, 0, 0);
    }
  }
};

int Main(int count, char** arguments) {
  const int actions = count > 1 ? std::atoi(arguments[1]) : 400;
  const unsigned seed = count > 2 ? static_cast<unsigned>(std::atoi(arguments[2])) : 1;
  const std::string folder = tools::MakeProgramFolder(), songs = folder + "/songs";
  std::filesystem::create_directory(songs);
  std::string longer;
  for (int i = 0; i < 10; ++i) longer += test::ReadBytes(test::DataFile("joint128.mp3"));
  for (int i = 0; i < 15; ++i) test::WriteBytes(songs + "/" + std::to_string(i) + ".mp3", longer);
  test::WriteBytes(songs + "/broken.mp3", longer.substr(0, 700));

  std::vector<tools::ScriptStep> steps;
  std::string error;
  const bool twin = count > 3;
  if (!twin) headless::UseRunningClock(100);
  FrameTwin frames;
  platform::Thread* redraw =
      twin ? platform::StartThread(FrameTwin::Run, &frames, "redraw") : nullptr;
  Desktop desktop{platform::FromMachinePath(songs), {}};
  platform::Thread* hands = platform::StartThread(AskWithoutEnd, &desktop, "desktop");
  const bool ran = tools::ParseScript(RandomScript(actions, seed, songs), steps, error) &&
                   tools::RunScript(steps, folder, folder, error);
  desktop.ended = 1;
  frames.ended = 1;
  platform::JoinThread(hands);
  if (redraw) platform::JoinThread(redraw);
  const bool saved = ran && std::filesystem::exists(folder + "/HISTORY.PLA") &&
                     std::filesystem::file_size(folder + "/EQ.SET") == 8448;
  std::printf("window_stress: %d actions, %s%s\n", actions,
              saved ? "everything saved" : "NOT SAVED", error.c_str());
  if (twin) std::printf("window_stress: %d frames, %d wrong\n", frames.frames, frames.wrong);
  std::filesystem::remove_all(folder);
  return !saved || frames.wrong > 0 || (twin && frames.frames < 4 * actions);
}

}  // namespace
}  // namespace kwo

int main(int count, char** arguments) {
  return kwo::Main(count, arguments);
}
