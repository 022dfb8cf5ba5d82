// The program from start to end, and what comes back at the next start.

#include <algorithm>
#include <climits>

#include "engine/transport.h"
#include "panels/equaliser_presets.h"
#include "panels/main_page.h"
#include "settings/settings.h"
#include "tests/app/program_fixture.h"

namespace kwo::test {
namespace {

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
  EXPECT_EQ(8448u, ReadBytes(folder.File("EQ.SET")).size());
  EXPECT_NE(std::string::npos, ReadBytes(folder.File("HISTORY.PLA")).find("one-horizon"));
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
    EXPECT_NE(std::string::npos, ReadBytes(folder.File("HISTORY.PLA")).find("song1"));
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
                for (int stands : {EffectLT, EffectTE, int{djMode}, int{playMode}})
                  EXPECT_EQ(value, stands);
                EXPECT_FLOAT_EQ(static_cast<float>(value), SliderVol);
                EXPECT_EQ(0, Find(WIDGET_ENHANCER)->frame);
                OpenSubPage(hands, 2);
                Press(hands, WIDGET_ENHANCER);
                OpenSubPage(hands, 3);
                Press(hands, WIDGET_DJ);
                Press(hands, WIDGET_PLAY_MODE);
                for (int gone : {EffectTE, int{djMode}, int{playMode}}) EXPECT_EQ(0, gone);
              }));
    EXPECT_EQ(std::min(value, 2147483520), GetSettingInt("SliderVol", 0, 0))
        << "the largest of 32 bits that a float holds";
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
  WriteBytes(skin("ui.txt"), "WINDOW 1 2");
  EXPECT_EQ(1, Run([](const Hands&) { ADD_FAILURE(); }));
  WriteBytes(skin("background.bmp"), "BM and no more");
  EXPECT_EQ(1, Run([](const Hands&) { ADD_FAILURE(); }));

  std::filesystem::copy_file(std::string(KWO_SOURCE) + "/skin/default/background.bmp",
                             skin("background.bmp"),
                             std::filesystem::copy_options::overwrite_existing);
  WriteBytes(skin("tile-ma.bmp"), "no picture");
  for (const char* text :
       {"WINDOW 1 2", "WINDOW -5 -5 99999 99999", "WINDOW 480 300 8 2", "\xff\xfe"}) {
    WriteBytes(skin("ui.txt"), text);
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
}  // namespace kwo::test
