#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "app/application.h"
#include "engine/transport.h"
#include "panels/mixer_page.h"
#include "panels/panel_tools.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/headless/headless.h"
#include "platform/threads.h"
#include "playlist/playlist.h"
#include "tests/support.h"
#include "tools/window_hands.h"

/// The whole program on the headless platform, for the tests of it.
namespace kwo::test {

using enum headless::Button;
using tools::Hands;

constexpr int kPaneX = 34, kPaneY = 30;

// The whole program in a folder of its own, with a user before it.
class Program : public testing::Test {
 protected:
  void SetUp() override {
    headless::UseRegistryFile("");
    headless::SetScreenSize({1280, 800});
    headless::SetWaveDevicePresent(true);
    headless::MovePointer({640, 790});
    headless::SetExecutablePath(folder.File("kwo"));
    for (const char* data : {"skin", "music"})
      std::filesystem::create_directory_symlink(std::string(KWO_SOURCE) + "/" + data,
                                                folder.File(data));
    ClearList();
    playlist.displayMode = 0;
    transport.paused = 0;
  }
  void TearDown() override {
    headless::SetExecutablePath("");
    EXPECT_EQ(0, headless::LostMenuAnswers());
  }

  // Runs the program from start to quit, and `user` before it once it is up.
  int Run(std::function<void(const Hands&)> user) {
    script = std::move(user);
    finished = 0;
    platform::Thread* thread = platform::StartThread(
        [](void* self) { static_cast<Program*>(self)->FollowScript(); }, this, "user");
    const int result = RunApplication();
    finished = 1;
    platform::JoinThread(thread);
    headless::ForgetMessages();
    return result;
  }

  void FollowScript() {
    while (!AppReady && !finished) platform::Sleep(10);
    if (finished) return;
    Hands hands;
    hands.Wait(300);
    script(hands);
    platform::PostQuitMessage(0);
  }

  // Copies of an MPEG song of some seconds, by the system's paths.
  std::vector<std::string> Songs(int count) {
    std::vector<std::string> paths;
    for (int i = 0; i < count; ++i) {
      const std::string path = folder.File("song" + std::to_string(i) + ".mp3");
      std::string bytes;
      for (int j = 0; j < 20; ++j) bytes += ReadBytes(DataFile("joint128.mp3"));
      WriteBytes(path, bytes);
      paths.push_back(platform::FromMachinePath(path.c_str()));
    }
    return paths;
  }

  // The same of the demo song: a minute without a seam.
  std::vector<std::string> LongSongs(int count) {
    std::vector<std::string> paths;
    for (int i = 0; i < count; ++i) {
      const std::string path = folder.File("song" + std::to_string(i) + ".mp3");
      WriteBytes(path, ReadBytes(std::string(KWO_SOURCE) + "/music/one-horizon.mp3"));
      paths.push_back(platform::FromMachinePath(path.c_str()));
    }
    return paths;
  }

  TempFolder folder;
  std::function<void(const Hands&)> script;
  Shared<int> finished;
};

inline platform::Point Middle(int index) {
  const Widget& widget = *Find(index);
  const WidgetGroup& group = Group(widget.group);
  const int height = widget.frameCount ? std::min<int>(widget.height, 12) : int{widget.height};
  return {group.rawX + widget.x - widget.offsetX + widget.width / 2,
          group.rawY + widget.y - widget.offsetY + height / 2};
}

inline void Press(const Hands& hands, int index, headless::Button button = kLeft) {
  const platform::Point place = Middle(index);
  hands.Press(place.x, place.y, button);
}

inline void OpenPage(const Hands& hands, int page) {
  Press(hands, PageButton(page));
  hands.Wait(1000);
  EXPECT_EQ(page, CurrentPage);
}

inline void OpenSubPage(const Hands& hands, int page) {
  Press(hands, WIDGET_SUB_PAGE + page);
  hands.Wait(1000);
  EXPECT_EQ(page, MixerSubPage);
}

inline void Choose(const Hands& hands, int button, const char* item) {
  const platform::Point place = Middle(button);
  hands.Choose(place.x, place.y, item);
}

// What is written on a widget, line by line.
inline std::string Text(int index) {
  std::string text;
  for (const headless::TextLine& line : headless::TextOn(Find(index)->image->bits))
    text += (text.empty() ? "" : "\n") + line.text;
  return text;
}

inline bool Inside(int index) {
  const platform::Point place = Middle(index);
  return Group(GROUP_INTERFACE).Contains(place.x, place.y);
}

inline std::string Names() {
  std::string names;
  PlaylistReader reader;
  for (int i = 0; i < playlist.count; ++i) {
    const PlaylistEntry& entry = *reader.Entry(i);
    names += entry.selected ? "*" : "";
    names += std::filesystem::path(entry.fileName).stem().string().substr(4) + " ";
  }
  return names;
}

inline int Time() {
  int hundredths = 0;
  constexpr int kWeights[] = {60000, 6000, 1000, 100, 10, 1};
  for (int i = 0; i < kDigits; ++i) hundredths += kWeights[i] * Find(WIDGET_DIGIT + i)->frame;
  return hundredths;
}

}  // namespace kwo::test
