#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <functional>
#include <memory>

#include "app/application.h"
#include "app/shell_services.h"
#include "engine/transport.h"
#include "panels/equaliser_presets.h"
#include "panels/main_page.h"
#include "panels/menus.h"
#include "panels/mixer_page.h"
#include "panels/panel_tools.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/headless/headless.h"
#include "platform/threads.h"
#include "playlist/playlist.h"
#include "playlist/playlist_files.h"
#include "settings/settings.h"
#include "tests/support.h"
#include "tools/window_hands.h"

namespace kwo {
namespace {

using enum headless::Button;
using tools::Hands;

constexpr int kPaneX = 34, kPaneY = 30;

// The whole program in a folder of its own, with a user before it.
class Program : public testing::Test {
 protected:
  void SetUp() override {
    headless::UseRegistryFile("");
    headless::SetScreenSize({1280, 800});
    headless::MovePointer({640, 790});
    headless::SetExecutablePath(folder.File("kwo"));
    for (const char* data : {"skin", "music"})
      std::filesystem::create_directory_symlink(std::string(KWO_SOURCE) + "/" + data,
                                                folder.File(data));
    ClearList();
    playlist.displayMode = 0;
  }
  void TearDown() override { headless::SetExecutablePath(""); }

  // Runs the program from start to quit, and `user` before it once it is up.
  int Run(std::function<void(const Hands&)> user) {
    script = std::move(user);
    finished = 0;
    platform::Thread* thread = platform::StartThread(
        [](void* self) { static_cast<Program*>(self)->FollowScript(); }, this);
    const int result = RunApplication();
    finished = 1;
    platform::JoinThread(thread);
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
      for (int j = 0; j < 20; ++j) bytes += test::ReadBytes(test::DataFile("joint128.mp3"));
      test::WriteBytes(path, bytes);
      paths.push_back(platform::FromMachinePath(path.c_str()));
    }
    return paths;
  }

  test::TempFolder folder;
  std::function<void(const Hands&)> script;
  Shared<int> finished;
};

platform::Point Middle(int index) {
  const Widget& widget = *Find(index);
  const WidgetGroup& group = Group(widget.group);
  const int height = widget.frameCount ? std::min<int>(widget.height, 12) : int{widget.height};
  return {group.rawX + widget.x - widget.offsetX + widget.width / 2,
          group.rawY + widget.y - widget.offsetY + height / 2};
}

void Press(const Hands& hands, int index, headless::Button button = kLeft) {
  const platform::Point place = Middle(index);
  hands.Press(place.x, place.y, button);
}

void OpenPage(const Hands& hands, int page) {
  Press(hands, PageButton(page));
  hands.Wait(1000);
  EXPECT_EQ(page, CurrentPage);
}

void OpenSubPage(const Hands& hands, int page) {
  Press(hands, WIDGET_SUB_PAGE + page);
  hands.Wait(1000);
  EXPECT_EQ(page, MixerSubPage);
}

void ChooseCommand(const Hands& hands, int button, int command) {
  const platform::Point place = Middle(button);
  hands.Choose(place.x, place.y, command);
}

bool Inside(int index) {
  const platform::Point place = Middle(index);
  return Group(GROUP_INTERFACE).Contains(place.x, place.y);
}

std::string Names() {
  std::string names;
  PlaylistReader reader;
  for (int i = 0; i < playlist.count; ++i) {
    const PlaylistEntry& entry = *reader.Entry(i);
    names += entry.selected ? "*" : "";
    names += std::filesystem::path(entry.fileName).stem().string().substr(4) + " ";
  }
  return names;
}

int Time() {
  int hundredths = 0;
  constexpr int kWeights[] = {60000, 6000, 1000, 100, 10, 1};
  for (int i = 0; i < kDigits; ++i) hundredths += kWeights[i] * Find(WIDGET_DIGIT + i)->frame;
  return hundredths;
}

TEST_F(Program, FirstRunHoldsTheDemoSongAndLeavesEverythingSaved) {
  GetSettingString("Skin", "glass", 1);
  const int result = Run([](const Hands&) {
    EXPECT_EQ(1, playlist.count);
    EXPECT_EQ(0, playlist.currentSong);
    EXPECT_EQ("one-horizon.mp3", headless::Window().caption);
    EXPECT_EQ(396, headless::Window().place.x);
    EXPECT_EQ(249, headless::Window().place.y);
    EXPECT_TRUE(headless::Tray().shown);
    EXPECT_EQ("KWO", headless::Tray().tip);
    for (int index : std::initializer_list<int>{WIDGET_PLAY, WIDGET_DIGIT + 5, WIDGET_SONG_TEXT,
                                                WIDGET_VISUALISER})
      EXPECT_TRUE(Inside(index)) << index;
    EXPECT_FALSE(Inside(WIDGET_ROW));
  });
  EXPECT_EQ(0, result);
  EXPECT_EQ(nullptr, TheMixer);
  EXPECT_EQ(nullptr, TheSkinHost);
  EXPECT_FALSE(headless::Window().exists);
  EXPECT_FALSE(headless::Tray().shown);
  EXPECT_STREQ("default", GetSettingString("Skin", "", 0));
  EXPECT_EQ(396, GetSettingInt("X", -7, 0));
  EXPECT_EQ(100, GetSettingInt("SliderVol", -7, 0));
  EXPECT_EQ(396, GetSettingInt("POS_X", -7, 0));
  EXPECT_EQ(8448u, test::ReadBytes(folder.File("EQ.SET")).size());
  EXPECT_NE(std::string::npos, test::ReadBytes(folder.File("HISTORY.PLA")).find("one-horizon"));
}

TEST_F(Program, WindowHasTheShapeOfItsBackground) {
  Run([](const Hands&) {
    SkinBitmap picture;
    ASSERT_TRUE(
        picture.LoadFromFile((std::string(KWO_SOURCE) + "/skin/default/background.bmp").c_str()));
    const std::vector<std::uint8_t> pixels = headless::WindowPixels();
    for (int y = 0; y < picture.height; ++y) {
      for (int x = 0; x < picture.width; ++x) {
        const std::uint8_t* p = picture.bits + (picture.height - 1 - y) * picture.stride + 3 * x;
        const bool key = p[0] == 9 && p[1] == 0 && p[2] == 9;
        ASSERT_EQ(key ? 0 : 255, pixels[static_cast<std::size_t>(4 * (y * picture.width + x) + 3)]);
      }
    }
  });
}

TEST_F(Program, TransportButtonsPlayPauseStepAndStop) {
  Run([this](const Hands& hands) {
    hands.Drop(Songs(3));
    EXPECT_EQ(0, playing);
    EXPECT_EQ("song2.mp3", headless::Window().caption) << "each song of a drop is stepped to";
    Press(hands, WIDGET_PREVIOUS);
    headless::ClearPlayedSound();
    Press(hands, WIDGET_PLAY);
    EXPECT_EQ(1, playing);
    EXPECT_GT(Time(), 20);
    EXPECT_GT(headless::PlayedSound().size(), 20000u);
    Press(hands, WIDGET_PLAY);
    EXPECT_EQ(1, paused);
    hands.Wait(2000);
    const int rested = Time();
    hands.Wait(1000);
    EXPECT_EQ(rested, Time());
    Press(hands, WIDGET_PLAY, kRight);
    EXPECT_EQ(0, paused);
    Press(hands, WIDGET_NEXT);
    EXPECT_EQ("song2.mp3", headless::Window().caption);
    Press(hands, WIDGET_PREVIOUS);
    EXPECT_EQ("song1.mp3", headless::Window().caption);
    Press(hands, WIDGET_STOP);
    EXPECT_EQ(0, playing);
    hands.Wait(3000);
    EXPECT_EQ(0, TheMixer->Slot(0)->active);
  });
}

TEST_F(Program, PagesSlideInAndOutUnderTheirButtons) {
  constexpr int kShown[PAGE_COUNT] = {WIDGET_SONG_TEXT, WIDGET_ROW,       WIDGET_VOLUME,
                                      WIDGET_PAGE_MAIN, WIDGET_PAGE_MAIN, WIDGET_QUIT};
  Run([&](const Hands& hands) {
    for (int page : {1, 2, 3, 4, 5, 0}) {
      OpenPage(hands, page);
      for (int other : {0, 1, 2, 5})
        EXPECT_EQ(other == page, Inside(kShown[other])) << page << " " << other;
      EXPECT_EQ(page, TheSkinHost->currentTile);
      EXPECT_EQ(page == 0 ? 1 : 0, TheSkinHost->VisualiserMode);
      for (int button = 0; button < PAGE_COUNT; ++button)
        EXPECT_EQ(button == page ? 0 : -1, Find(PageButton(button))->ProgramInSlot(0));
    }
    headless::MinimiseByUser();
    hands.Wait(2000);
    EXPECT_EQ(0, TheSkinHost->active);
    EXPECT_FALSE(Inside(WIDGET_PLAY));
    headless::RestoreByUser();
    hands.Wait(2000);
    EXPECT_TRUE(Inside(WIDGET_PLAY));
    EXPECT_TRUE(Inside(WIDGET_SONG_TEXT));
  });
}

TEST_F(Program, MixerSlidersMoveByCapThumbAndLabel) {
  Run([](const Hands& hands) {
    OpenPage(hands, PAGE_MIXER);
    const Widget& slider = *Find(WIDGET_VOLUME);
    const platform::Point middle = Middle(WIDGET_VOLUME);
    const int left = middle.x - slider.width / 2;
    hands.Press(left + 9, middle.y);
    hands.Press(left + 9, middle.y, kRight);
    EXPECT_EQ(98.0f, SliderVol);
    hands.Press(left + slider.width - 5, middle.y);
    EXPECT_EQ(99.0f, SliderVol);
    EXPECT_FLOAT_EQ(0.99f, TheMixer->volume);
    EXPECT_TRUE(headless::Window().pointerShown);

    hands.Move(middle.x, middle.y);
    hands.Down();
    EXPECT_FALSE(headless::Window().pointerShown);
    EXPECT_TRUE(headless::Window().captured);
    hands.Move(0, middle.y + 40);
    EXPECT_EQ(0.0f, SliderVol);
    EXPECT_EQ(headless::Window().place.x + left + slider.CellSize(), headless::PointerPlace().x)
        << "pinned at the track's end";
    hands.Move(480, middle.y);
    EXPECT_EQ(200.0f, SliderVol);
    hands.Up();
    EXPECT_EQ(headless::Window().place.y + middle.y, headless::PointerPlace().y);
    EXPECT_TRUE(headless::Window().pointerShown);
    EXPECT_FALSE(headless::Window().captured);
    Press(hands, WIDGET_VOLUME_LABEL);
    EXPECT_EQ(100.0f, SliderVol);
    EXPECT_NEAR(0.5f, Find(WIDGET_VOLUME)->value, 0.01f);

    const platform::Point pan = Middle(WIDGET_PAN);
    hands.Drag(pan.x, pan.y, 0, pan.y);
    EXPECT_EQ(-100.0f, SliderPan);
    EXPECT_FLOAT_EQ(-1.0f, TheMixer->pan);
    const platform::Point speed = Middle(WIDGET_SPEED);
    hands.Drag(speed.x, speed.y, 480, speed.y);
    EXPECT_EQ(125.0f, SliderSpd);
    hands.Press(speed.x + Find(WIDGET_SPEED)->width / 2 - 5, speed.y);
    EXPECT_EQ(125.0f, SliderSpd);
  });
}

TEST_F(Program, EffectsAndModesReachTheEngine) {
  Run([](const Hands& hands) {
    OpenPage(hands, PAGE_MIXER);
    OpenSubPage(hands, 2);
    for (int index : {WIDGET_CRYSTALIZER, WIDGET_VOCAL_REDUCER, WIDGET_WIDE_STEREO, WIDGET_LIMITER})
      Press(hands, index);
    EXPECT_TRUE(TheMixer->crystalizer && TheMixer->vocalReducer && TheMixer->wideStereo &&
                TheMixer->limiter);
    Press(hands, WIDGET_LIMITER, kRight);
    EXPECT_EQ(0, TheMixer->limiter);
    for (int expected : {1, 2, 0}) {
      Press(hands, WIDGET_ENHANCER);
      EXPECT_EQ(expected, TheMixer->enhancer);
      EXPECT_EQ(expected != 0, Find(WIDGET_ENHANCER)->frame != 0);
    }
    OpenSubPage(hands, 3);
    Press(hands, WIDGET_REPEAT);
    Press(hands, WIDGET_SHUFFLE);
    Press(hands, WIDGET_PLAY_MODE);
    Press(hands, WIDGET_DJ);
    EXPECT_TRUE(repeatOn && shuffleOn && djMode);
    EXPECT_EQ(1, playMode);
    Press(hands, WIDGET_DJ);
    EXPECT_EQ(0, djMode);
  });
}

TEST_F(Program, EqualiserIsDrawnSteppedResetAndNamed) {
  Run([](const Hands& hands) {
    OpenPage(hands, PAGE_MIXER);
    OpenSubPage(hands, 1);
    const int shown = Find(WIDGET_CURVE)->visible ? WIDGET_CURVE : WIDGET_CURVE + 1;
    const Widget& curve = *Find(shown);
    const int left = kPaneX + curve.x, top = kPaneY + curve.y;
    hands.Drag(left + 6, top + 2, left + 186, top + 2);
    for (int band = 0; band < 16; ++band)
      EXPECT_GT(EqPresetValues[0][band], band % 2 ? 0.99f : 0.9f) << band;
    EXPECT_NEAR(1.48f, EqPresetValues[0][0], 0.02f);
    EXPECT_NEAR(1.48f, TheMixer->eqValues[15], 0.02f);
    EXPECT_EQ(1.0f, EqPresetValues[0][16]);
    hands.Drag(left + 96, top + 50, left + 96, top + 94, kRight);
    EXPECT_EQ(0.55f, EqPresetValues[0][16]);
    Press(hands, WIDGET_EQ_SWITCH);
    EXPECT_EQ(1, TheMixer->eqSwitch);

    Press(hands, WIDGET_PRESET_BACK);
    EXPECT_EQ(0, EffectEQCurrent);
    Press(hands, WIDGET_PRESET_FORWARD);
    EXPECT_EQ(1, EffectEQCurrent);
    EXPECT_EQ(1.0f, TheMixer->eqValues[0]);
    Press(hands, WIDGET_PRESET_NAME);
    EXPECT_TRUE(headless::Window().editFocused);
    headless::TypeText("\b\b\b\b\b\b\b\b\b\b\bWarm " + std::string(100, 'x'));
    headless::MoveCaret(0);
    hands.Wait(200);
    Press(hands, WIDGET_PRESET_BACK);
    EXPECT_FALSE(headless::Window().editFocused);
    EXPECT_EQ(1, EffectEQCurrent) << "the press only ends the editing";
    EXPECT_EQ("Warm " + std::string(58, 'x'), EqPresetNames[1]);
    Press(hands, WIDGET_PRESET_BACK);
    Press(hands, WIDGET_EQ_RESET);
    for (float value : EqPresetValues[0]) EXPECT_EQ(1.0f, value);
    EXPECT_STREQ("User Preset", EqPresetNames[0]);
  });
}

TEST_F(Program, RowsSelectPlayScrollAndMove) {
  Run([this](const Hands& hands) {
    hands.Drop(Songs(30));
    OpenPage(hands, PAGE_PLAYLIST);
    EXPECT_EQ(10, playlist.visibleRows);
    Press(hands, WIDGET_ROW + 2);
    headless::SetKey(platform::Key::kShift, true);
    Press(hands, WIDGET_ROW + 4);
    headless::SetKey(platform::Key::kShift, false);
    headless::SetKey(platform::Key::kControl, true);
    Press(hands, WIDGET_ROW + 3);
    headless::SetKey(platform::Key::kControl, false);
    EXPECT_EQ("0 1 *2 3 *4 5 ", Names().substr(0, 14));
    Press(hands, WIDGET_ITEM_UP);
    EXPECT_EQ("0 *2 1 *4 3 5 ", Names().substr(0, 14));
    Press(hands, WIDGET_ITEM_DOWN);
    EXPECT_EQ("0 1 *2 3 *4 5 ", Names().substr(0, 14));

    // The page has followed the songs that moved.
    EXPECT_EQ(1, playlist.topIndex);
    const platform::Point row = Middle(WIDGET_ROW + 4);
    hands.DoublePress(row.x, row.y);
    EXPECT_EQ(5, playlist.currentSong);
    EXPECT_EQ(1, playing);
    EXPECT_EQ("song5.mp3", headless::Window().caption);
    EXPECT_EQ(3, Find(WIDGET_ROW + 4)->ProgramInSlot(2));

    const platform::Point bar = Middle(WIDGET_SCROLL_BAR);
    const int half = Find(WIDGET_SCROLL_BAR)->height / 2;
    hands.Press(bar.x, bar.y + half - 4);
    EXPECT_EQ(2, playlist.topIndex);
    hands.Press(bar.x, bar.y - half + 4);
    hands.Press(bar.x, bar.y - half + 4);
    hands.Press(bar.x, bar.y - half + 4);
    EXPECT_EQ(0, playlist.topIndex);
    hands.Drag(bar.x, bar.y, bar.x, bar.y + 200);
    EXPECT_EQ(20, playlist.topIndex);
    EXPECT_FLOAT_EQ(1.0f, Find(WIDGET_SCROLL_BAR)->value);
    ChooseCommand(hands, WIDGET_FUNCTION, 40015);
    ChooseCommand(hands, WIDGET_REMOVE, 40007);
    EXPECT_EQ(0, playlist.count);
    EXPECT_EQ(0, playlist.topIndex);
    EXPECT_EQ("KWO", headless::Window().caption);
    Press(hands, WIDGET_ROW);
    EXPECT_EQ(0, playing);
  });
}

TEST_F(Program, MenusDoWhatTheySay) {
  Run([this](const Hands& hands) {
    const std::vector<std::string> songs = Songs(3);
    OpenPage(hands, PAGE_PLAYLIST);
    headless::AnswerDialog({"", {songs[2], songs[0]}});
    ChooseCommand(hands, WIDGET_ADD, 40001);
    EXPECT_EQ("2 0 ", Names());
    headless::AnswerDialog({"", {songs[1]}});
    ChooseCommand(hands, WIDGET_ADD, 40004);
    EXPECT_EQ("2 0 1 ", Names());
    ChooseCommand(hands, WIDGET_ADD, 40004);
    EXPECT_EQ("2 0 1 ", Names()) << "a cancelled dialog changes nothing";
    ChooseCommand(hands, WIDGET_FUNCTION, 40024);
    EXPECT_EQ("0 1 2 ", Names());
    ChooseCommand(hands, WIDGET_FUNCTION, 40015);
    EXPECT_EQ("*0 *1 *2 ", Names());
    ChooseCommand(hands, WIDGET_FUNCTION, 40016);
    EXPECT_EQ("0 1 2 ", Names());
    constexpr std::pair<int, int> kNameModes[] = {
        {40019, 1}, {40018, 2}, {40021, 3}, {40022, 4}, {40020, 0}};
    for (auto [command, mode] : kNameModes) {
      ChooseCommand(hands, WIDGET_FUNCTION, command);
      EXPECT_EQ(mode, playlist.displayMode);
      ChooseCommand(hands, WIDGET_FUNCTION, 0);
      EXPECT_EQ('*', headless::LastMenu()[static_cast<std::size_t>(6 + mode)][0]);
    }
    std::filesystem::remove(folder.File("song1.mp3"));
    ChooseCommand(hands, WIDGET_FUNCTION, 40023);
    ChooseCommand(hands, WIDGET_REMOVE, 40008);
    EXPECT_EQ("0 2 ", Names());
    Press(hands, WIDGET_ROW);
    ChooseCommand(hands, WIDGET_REMOVE, 40009);
    EXPECT_EQ("*0 ", Names());
    ChooseCommand(hands, WIDGET_REMOVE, 40006);
    EXPECT_EQ("", Names());
    std::filesystem::create_directory(folder.File("more"));
    std::filesystem::rename(folder.File("song2.mp3"), folder.File("more/song7.mp3"));
    headless::AnswerDialog({"", {folder.File("more")}});
    ChooseCommand(hands, WIDGET_ADD, 40002);
    EXPECT_EQ("7 ", Names());
  });
}

TEST_F(Program, DropReplacesTheListAndShiftAddsToIt) {
  Run([this](const Hands& hands) {
    const std::vector<std::string> songs = Songs(3);
    Press(hands, WIDGET_PLAY);
    EXPECT_EQ(1, playing);
    hands.Drop({songs[0], folder.File("nothing.txt")});
    EXPECT_EQ(0, playing);
    EXPECT_EQ("0 ", Names());
    EXPECT_EQ(0, playlist.currentSong);
    hands.Drop({songs[1], songs[2]}, true);
    EXPECT_EQ("0 1 2 ", Names());
    EXPECT_EQ(2, playlist.currentSong);
  });
}

TEST_F(Program, TimeIsDraggedToSeek) {
  Run([](const Hands& hands) {
    const platform::Point digit = Middle(WIDGET_DIGIT);
    hands.Move(digit.x, digit.y);
    const platform::Point before = headless::PointerPlace();
    hands.Down();
    EXPECT_EQ(1, SeekActive);
    EXPECT_FALSE(headless::Window().pointerShown);
    hands.Move(digit.x + 20, digit.y + 90);
    EXPECT_EQ(2000, Time());
    hands.Move(digit.x + 300, digit.y);
    EXPECT_EQ(6600, Time()) << "not beyond the song's length";
    hands.Move(digit.x + 30, digit.y);
    hands.Up();
    EXPECT_EQ(0, SeekActive);
    EXPECT_EQ(before, headless::PointerPlace());
    EXPECT_TRUE(headless::Window().pointerShown);
    EXPECT_EQ(3000, Time());
    Press(hands, WIDGET_PLAY);
    hands.Wait(1000);
    EXPECT_GT(Time(), 3100);
    hands.Drag(digit.x + 20, digit.y, digit.x, digit.y);
    hands.Wait(500);
    EXPECT_NEAR(1300, Time(), 250);
    EXPECT_EQ(1, playing);
    hands.Drag(digit.x, digit.y, 0, digit.y);
    EXPECT_LT(Time(), 150);
  });
}

TEST_F(Program, BothButtonsAtOnceLeaveThePointerShown) {
  Run([](const Hands& hands) {
    const auto pressBoth = [&](platform::Point place) {
      hands.Move(place.x, place.y);
      hands.Down();
      EXPECT_FALSE(headless::Window().pointerShown);
      hands.Down(kRight);
      hands.Up();
      hands.Up(kRight);
      EXPECT_TRUE(headless::Window().pointerShown);
    };
    pressBoth(Middle(WIDGET_DIGIT));
    EXPECT_EQ(0, SeekActive);
    OpenPage(hands, PAGE_MIXER);
    pressBoth(Middle(WIDGET_VOLUME));
    hands.Down();
    hands.Move(10, 10);
    hands.Down(kRight);
    EXPECT_TRUE(headless::Window().pointerShown) << "the second press lies on nothing";
    hands.Up(kRight);
    hands.Up();
  });
}

TEST_F(Program, DisplayModesAndVisualisersGoRound) {
  Run([](const Hands& hands) {
    const platform::Point mode = Middle(WIDGET_DISPLAY_MODE);
    const Widget& before = *Find(WIDGET_VISUALISER);
    const int y = before.y, width = before.width, height = before.height;
    hands.Press(mode.x, mode.y);
    EXPECT_EQ(BLEND_COPY, Find(WIDGET_VISUALISER)->blendMode);
    hands.Press(mode.x, mode.y);
    EXPECT_EQ(WIDGET_VISUALISER, TheSkinHost->currentTile);
    OpenPage(hands, PAGE_WINDOW);
    EXPECT_EQ(WIDGET_VISUALISER, TheSkinHost->currentTile);
    EXPECT_EQ(2, TheSkinHost->VisualiserMode);
    OpenPage(hands, PAGE_MAIN);
    hands.Press(mode.x, mode.y);
    EXPECT_EQ(420, Find(WIDGET_VISUALISER)->width);
    hands.Press(kPaneX + 210, kPaneY + 180);
    hands.Wait(1500);
    EXPECT_FALSE(Inside(WIDGET_PLAY));
    hands.Press(kPaneX + 210, kPaneY + 180);
    hands.Wait(1500);
    EXPECT_TRUE(Inside(WIDGET_PLAY));
    hands.Press(mode.x, mode.y);
    hands.Wait(1500);
    EXPECT_EQ(0, MainDisplayMode);
    EXPECT_EQ(PAGE_MAIN, TheSkinHost->currentTile);
    EXPECT_EQ(y, Find(WIDGET_VISUALISER)->y);
    EXPECT_EQ(width, Find(WIDGET_VISUALISER)->width);
    EXPECT_EQ(height, Find(WIDGET_VISUALISER)->height);
    for (int visualiser : {1, 2, 3, 4, 5, 6, 0}) {
      Press(hands, WIDGET_VISUALISER_MODE);
      EXPECT_EQ(visualiser, MainSAMode);
    }
  });
}

TEST_F(Program, WindowPageSetsTheWindowsWays) {
  Run([](const Hands& hands) {
    OpenPage(hands, PAGE_WINDOW);
    Press(hands, WIDGET_ON_TOP);
    EXPECT_TRUE(headless::Window().topmost);
    Press(hands, WIDGET_ON_TOP);
    EXPECT_FALSE(headless::Window().topmost);
    Press(hands, WIDGET_AUTO);
    EXPECT_EQ(AUTO_HIDE, CurrentAutoMode());
    EXPECT_TRUE(headless::Window().topmost);
    Press(hands, WIDGET_ON_TOP);
    EXPECT_EQ(1, WindowFlags) << "no effect while hiding by itself";

    hands.Wait(1000);
    EXPECT_TRUE(headless::Window().visible);
    headless::MovePointer({5, 5});
    hands.Wait(1000);
    EXPECT_FALSE(headless::Window().visible);
    headless::MovePointer({1279, 0});
    hands.Wait(1500);
    EXPECT_TRUE(headless::Window().visible);
    EXPECT_EQ(1280 - 488, headless::Window().place.x);
    headless::MovePointer({1000, 20});
    hands.Wait(1500);

    Press(hands, WIDGET_MINIMISE);
    hands.Wait(500);
    EXPECT_FALSE(headless::Window().visible);
    headless::MovePointer({100, 700});
    headless::PressTray(kLeft);
    hands.Wait(200);
    EXPECT_TRUE(headless::Window().visible);
    EXPECT_EQ(0, headless::Window().place.x);
    EXPECT_EQ(800 - 302, headless::Window().place.y);
    headless::MovePointer({200, 700});
    hands.Wait(2000);

    Press(hands, WIDGET_AUTO);
    EXPECT_EQ(AUTO_MINIMISE, CurrentAutoMode());
    headless::SetWindowActive(false);
    hands.Wait(300);
    EXPECT_TRUE(headless::Window().minimised);
    headless::PressTray(kLeft);
    hands.Wait(1500);
    EXPECT_FALSE(headless::Window().minimised);
    Press(hands, WIDGET_AUTO);
    EXPECT_EQ(0, WindowFlags);
    Press(hands, WIDGET_MINIMISE);
    hands.Wait(1500);
    EXPECT_TRUE(headless::Window().minimised);
    headless::RestoreByUser();
    hands.Wait(1500);
    Press(hands, WIDGET_QUIT);
    hands.Wait(500);
    EXPECT_EQ(0, AppReady);
  });
}

TEST_F(Program, TrayMenuOpensHelpInTheBrowser) {
  headless::SetClassRegistry(".html", "page");
  headless::SetClassRegistry("page\\shell\\open\\command", "\"web view\" \"%1\" -new");
  Run([](const Hands& hands) {
    headless::AnswerMenu(COMMAND_HELP);
    headless::PressTray(kRight);
    hands.Wait(200);
    EXPECT_EQ((std::vector<std::string>{"Tavarine", "Help", "-", "Exit"}), headless::LastMenu());
    ASSERT_FALSE(headless::CommandLines().empty());
    EXPECT_EQ("\"web view\" " + std::string(AppDir) + "help\\index.htm -new",
              headless::CommandLines().back());
    headless::SetClassRegistry("page\\shell\\open\\command", "");
    headless::SetClassRegistry("http\\shell\\open\\command", "view");
    EXPECT_EQ(0, OpenInBrowser("here"));
    EXPECT_EQ("view here", headless::CommandLines().back());
    headless::SetClassRegistry("page\\shell\\open\\command", std::string(520, 'x'));
    EXPECT_EQ(0, OpenInBrowser("there"));
    EXPECT_EQ("view there", headless::CommandLines().back()) << "half a command is none";
    headless::SetClassRegistry("page\\shell\\open\\command", "");
    headless::SetClassRegistry("http\\shell\\open\\command", "");
    EXPECT_EQ(static_cast<int>(0x80070002), OpenInBrowser("here"));
    headless::AnswerMenu(COMMAND_EXIT);
    headless::PressTray(kRight);
    hands.Wait(500);
    EXPECT_EQ(0, AppReady);
  });
}

TEST_F(Program, RestartFindsEverythingAsItWas) {
  Run([this](const Hands& hands) {
    hands.Drop(Songs(12));
    for (int i = 0; i < 6; ++i) Press(hands, WIDGET_PREVIOUS);
    Press(hands, WIDGET_DISPLAY_MODE);
    Press(hands, WIDGET_VISUALISER_MODE);
    OpenPage(hands, PAGE_MIXER);
    const platform::Point volume = Middle(WIDGET_VOLUME);
    hands.Drag(volume.x, volume.y, volume.x + 30, volume.y);
    OpenSubPage(hands, 1);
    Press(hands, WIDGET_PRESET_FORWARD);
    Press(hands, WIDGET_PRESET_NAME);
    headless::MoveCaret(0);
    headless::TypeText("My ");
    hands.Wait(100);
    OpenPage(hands, PAGE_PLAYLIST);
    ChooseCommand(hands, WIDGET_FUNCTION, 40018);
    Press(hands, WIDGET_ROW + 1);
    Press(hands, WIDGET_ITEM_DOWN);
    hands.Drag(100, 15, 40, 5);
  });
  const int top = playlist.topIndex;
  EXPECT_EQ(1, top);
  const float volume = SliderVol;
  const platform::Point place{GetSettingInt("POS_X", 0, 0), GetSettingInt("POS_Y", 0, 0)};
  EXPECT_EQ(336, place.x);
  ClearList();
  SliderVol = 1;
  EqPresetNames[1][0] = 0;
  Run([&](const Hands& hands) {
    EXPECT_EQ(12, playlist.count);
    EXPECT_EQ(5, playlist.currentSong);
    EXPECT_EQ(0, playing);
    EXPECT_EQ("*1", Names().substr(4, 2));
    EXPECT_EQ(top, playlist.topIndex);
    EXPECT_EQ(volume, SliderVol);
    EXPECT_GT(volume, 100.0f);
    EXPECT_FLOAT_EQ(volume * 0.01f, TheMixer->volume);
    EXPECT_EQ(1, EffectEQCurrent);
    EXPECT_STREQ("My User Preset", EqPresetNames[1]);
    EXPECT_EQ(1, MainDisplayMode);
    EXPECT_EQ(1, MainSAMode);
    EXPECT_EQ(2, playlist.displayMode);
    EXPECT_EQ(place.x, headless::Window().place.x);
    EXPECT_EQ(place.y, headless::Window().place.y);
    headless::CloseByUser();
    hands.Wait(100);
  });
}

TEST_F(Program, QuitFadesTheMusicOutBeforeItEnds) {
  Run([](const Hands& hands) {
    Press(hands, WIDGET_PLAY);
    hands.Wait(1000);
    headless::ClearPlayedSound();
  });
  const std::vector<std::int16_t> sound = headless::PlayedSound();
  ASSERT_GT(sound.size(), 20000u);
  int loudest = 0;
  for (std::size_t i = sound.size() - 4608; i < sound.size(); ++i)
    loudest = std::max(loudest, std::abs(int{sound[i]}));
  EXPECT_LT(loudest, 2000);
}

TEST_F(Program, DisplayLostDuringTheLastFadeFindsEverythingSaved) {
  Run([this](const Hands& hands) {
    Press(hands, WIDGET_PLAY);
    hands.Drop(Songs(2));
    SliderVol = 77;
    headless::CloseByUser();
    hands.Wait(1500);
    ASSERT_EQ(0, AppReady);
    EXPECT_EQ(100, GetSettingInt("SliderVol", 0, 0)) << "the fade is still under way";
    SaveState();
    EXPECT_EQ(77, GetSettingInt("SliderVol", 0, 0));
    EXPECT_NE(std::string::npos, test::ReadBytes(folder.File("HISTORY.PLA")).find("song1"));
  });
  std::filesystem::remove(folder.File("HISTORY.PLA"));
  SaveState();
  EXPECT_FALSE(std::filesystem::exists(folder.File("HISTORY.PLA"))) << "nothing is due any more";
}

TEST_F(Program, PositionsFromBeyondTheScreenAreGivenUp) {
  constexpr struct {
    int saved, place;
  } kCases[] = {{-488, -488}, {-489, 0}, {1280, 1280}, {1281, 0}, {INT_MIN, 0}, {INT_MAX, 0}};
  for (const auto& c : kCases) {
    GetSettingInt("POS_X", c.saved, 1);
    Run([&](const Hands&) { EXPECT_EQ(c.place, headless::Window().place.x) << c.saved; });
  }
}

TEST_F(Program, SettingsBeyondTheirRangesDoNoHarm) {
  for (int value : {INT_MIN, -2, 7, INT_MAX}) {
    headless::UseRegistryFile("");
    for (const char* name : {"MainDisplayMode",
                             "MainSAMode",
                             "PlaylistDisplayMode",
                             "PlaylistTopIndex",
                             "PlaylistCurrentSong",
                             "EffectEQCurrent",
                             "EffectEQSwitch",
                             "SliderVol",
                             "SliderPan",
                             "SliderSpd",
                             "EffectCR",
                             "EffectTE",
                             "EffectVR",
                             "EffectCE",
                             "EffectLT",
                             "ModeDJ",
                             "ModePlay",
                             "ModeRepeat",
                             "ModeShuffle",
                             "POS_Z"})
      GetSettingInt(name, value, 1);
    EXPECT_EQ(0, Run([&](const Hands& hands) {
                Press(hands, WIDGET_PLAY);
                OpenPage(hands, PAGE_MIXER);
                EXPECT_EQ(value < 0 ? -2 : 7, std::clamp(EffectLT, -2, 7))
                    << "a switch stands as it is";
              }));
  }
}

TEST_F(Program, SavedSongBeyondTheListFallsBackToTheFirst) {
  constexpr std::pair<int, int> kCases[] = {{5, 0}, {2, 2}, {3, 0}};
  Run([this](const Hands& hands) { hands.Drop(Songs(3)); });
  for (const auto& c : kCases) {
    GetSettingInt("PlaylistCurrentSong", c.first, 1);
    ClearList();
    Run([&](const Hands&) { EXPECT_EQ(c.second, playlist.currentSong) << c.first; });
  }
}

TEST_F(Program, BrokenSkinEndsInOrderOrShowsWhatIsThere) {
  const auto skin = [this](const std::string& name) { return folder.File("skin/default/" + name); };
  std::filesystem::remove(folder.File("skin"));
  EXPECT_EQ(1, Run([](const Hands&) { ADD_FAILURE() << "no skin, no window"; }));
  EXPECT_FALSE(std::filesystem::exists(folder.File("HISTORY.PLA"))) << "nothing is overwritten";

  std::filesystem::create_directories(folder.File("skin/default"));
  test::WriteBytes(skin("ui.txt"), "WINDOW 1 2");
  EXPECT_EQ(1, Run([](const Hands&) { ADD_FAILURE(); }));
  test::WriteBytes(skin("background.bmp"), "BM and no more");
  EXPECT_EQ(1, Run([](const Hands&) { ADD_FAILURE(); }));

  std::filesystem::copy_file(std::string(KWO_SOURCE) + "/skin/default/background.bmp",
                             skin("background.bmp"),
                             std::filesystem::copy_options::overwrite_existing);
  test::WriteBytes(skin("tile-ma.bmp"), "no picture");
  for (const char* text :
       {"WINDOW 1 2", "WINDOW -5 -5 99999 99999", "WINDOW 480 300 8 2", "\xff\xfe"}) {
    test::WriteBytes(skin("ui.txt"), text);
    EXPECT_EQ(0, Run([](const Hands& hands) {
                for (int x = 1; x < 488; x += 122)
                  for (int y = 1; y < 302; y += 122) hands.Press(x, y);
              }));
  }
  headless::SetWindowPossible(false);
  EXPECT_EQ(1, Run([](const Hands&) { ADD_FAILURE(); }));
  headless::SetWindowPossible(true);
}

TEST_F(Program, AbsentDeviceNeitherStopsTheWindowNorTheQuit) {
  headless::SetWaveDevicePresent(false);
  EXPECT_EQ(0, Run([](const Hands& hands) {
              Press(hands, WIDGET_PLAY);
              OpenPage(hands, PAGE_PLAYLIST);
            }));
  headless::SetWaveDevicePresent(true);
}

}  // namespace
}  // namespace kwo
