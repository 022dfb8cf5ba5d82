// The whole program with its threads side by side, and a user who presses and drags wherever he
// likes.  What is looked for is found by the sanitizers, and by the end that must come.
// usage: window_stress [ACTIONS [SEED]]

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

#include "app/application.h"
#include "panels/application_state.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/headless/headless.h"
#include "platform/threads.h"
#include "tests/support.h"

namespace kwo {
namespace {

using headless::Button;

int actions = 400;
unsigned seed = 1;
std::string songs;

constexpr const char* kMenuItems[] = {
    "Select All",    "Deselect All",         "Sort",
    "Show : Title",  "Read Tag Information", "Show : Artist - Album - Title",
    "Open Files",    "Open Directory",       "Add Files",
    "Add Directory", "Remove Selected",      "Remove Unselected",
    "Remove All",    "Remove Dead Links",    "Help",
};

class Monkey {
 public:
  Monkey() : random_(seed) {}

  void Act() {
    headless::AnswerMenu(kMenuItems[Number(std::size(kMenuItems))]);
    headless::AnswerDialog(
        {platform::FromMachinePath(songs.c_str()), {platform::FromMachinePath(songs.c_str())}});
    const Button button = Number(4) ? Button::kLeft : Button::kRight;
    switch (Number(16)) {
      case 0:
        headless::SetKey(platform::Key::kShift, Number(2));
        headless::SetKey(platform::Key::kControl, Number(2));
        break;
      case 1:
        headless::DropFiles({platform::FromMachinePath(songs.c_str())});
        break;
      case 2:
        headless::PressTray(button);
        break;
      case 3:
        headless::MinimiseByUser();
        break;
      case 4:
      case 5:
        headless::RestoreByUser();
        headless::PressTray(Button::kLeft);
        break;
      case 6:
        headless::SetWindowActive(Number(2));
        break;
      case 7:
        headless::TypeText(std::string(Number(40), 'w'));
        break;
      case 8:
        headless::SetWaveDevicePresent(Number(3));
        break;
      default:
        PressSomewhere(button);
        break;
    }
    platform::Sleep(Number(120));
  }

 private:
  int Number(std::size_t range) { return static_cast<int>(random_() % range); }

  void PressSomewhere(Button button) {
    const platform::Rectangle place = headless::Window().place;
    const auto somewhere = [&] {
      // Half the presses go to the transport and page buttons.
      const int x = Number(488), y = Number(2) ? Number(302) : 268;
      return platform::Point{place.x + x, place.y + y};
    };
    platform::Point at = somewhere();
    // Not where the window page has its QUIT.
    if (at.y - place.y > 160 && at.y - place.y < 190) at.y = place.y + 60;
    headless::MovePointer(at);
    headless::PressButton(button);
    for (int steps = Number(5); steps > 0; --steps) {
      platform::Sleep(Number(20));
      headless::MovePointer(somewhere());
    }
    headless::ReleaseButton(button);
  }

  std::mt19937 random_;
};

void FollowMonkey(void*) {
  while (!AppReady) platform::Sleep(10);
  Monkey monkey;
  for (int i = 0; i < actions && AppReady; ++i) monkey.Act();
  platform::PostQuitMessage(0);
}

int Main(int count, char** arguments) {
  if (count > 1) actions = std::atoi(arguments[1]);
  if (count > 2) seed = static_cast<unsigned>(std::atoi(arguments[2]));
  test::TempFolder folder;
  for (const char* data : {"skin", "music"})
    std::filesystem::create_directory_symlink(std::string(KWO_SOURCE) + "/" + data,
                                              folder.File(data));
  songs = folder.File("songs");
  std::filesystem::create_directory(songs);
  std::string longer;
  for (int i = 0; i < 10; ++i) longer += test::ReadBytes(test::DataFile("joint128.mp3"));
  for (int i = 0; i < 15; ++i) test::WriteBytes(songs + "/" + std::to_string(i) + ".mp3", longer);
  test::WriteBytes(songs + "/broken.mp3", longer.substr(0, 700));

  headless::SetExecutablePath(folder.File("kwo"));
  headless::UseRunningClock(20);
  platform::Thread* user = platform::StartThread(FollowMonkey, nullptr);
  const int result = RunApplication();
  platform::JoinThread(user);
  const bool saved = std::filesystem::exists(folder.File("HISTORY.PLA")) &&
                     std::filesystem::file_size(folder.File("EQ.SET")) == 8448;
  std::printf("window_stress: %d actions, exit code %d, %s\n", actions, result,
              saved ? "everything saved" : "NOT SAVED");
  return result || !saved;
}

}  // namespace
}  // namespace kwo

int main(int count, char** arguments) {
  return kwo::Main(count, arguments);
}
