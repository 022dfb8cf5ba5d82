// What a run leaves for the next one.

#include "app/saved_state.h"

#include <climits>
#include <set>

#include "engine/transport.h"
#include "panels/equaliser_presets.h"
#include "panels/main_page.h"
#include "settings/settings.h"
#include "tests/app/program_fixture.h"

namespace kwo::test {
namespace {

struct Setting {
  const char* name;
  int fallback, odd;
  int (*get)();
  void (*set)(int);
};

template <auto& variable>
constexpr Setting Of(const char* name, int fallback, int odd) {
  return {name, fallback, odd, [] { return static_cast<int>(variable); },
          [](int value) { variable = static_cast<decltype(+variable)>(value); }};
}

platform::Rectangle Place() {
  return headless::Window().place;
}

const Setting kSettings[] = {
    Of<MainDisplayMode>("MainDisplayMode", 0, 1),
    Of<MainSAMode>("MainSAMode", 0, 5),
    {"PlaylistDisplayMode", 0, 3, [] { return int{playlist.displayMode}; },
     [](int value) { playlist.displayMode = value; }},
    {"PlaylistTopIndex", 0, 2, [] { return int{playlist.topIndex}; },
     [](int value) { playlist.topIndex = value; }},
    {"PlaylistCurrentSong", 0, 7, [] { return int{playlist.currentSong}; },
     [](int value) { playlist.currentSong = value; }},
    Of<EffectEQCurrent>("EffectEQCurrent", 0, 41),
    Of<EffectEQSwitch>("EffectEQSwitch", 0, 1),
    Of<SliderVol>("SliderVol", 100, 173),
    Of<SliderPan>("SliderPan", 0, -61),
    Of<SliderSpd>("SliderSpd", 100, 89),
    Of<EffectCR>("EffectCR", 0, 1),
    Of<EffectTE>("EffectTE", 0, 2),
    Of<EffectVR>("EffectVR", 0, 1),
    Of<EffectCE>("EffectCE", 0, 1),
    Of<EffectLT>("EffectLT", 0, 1),
    {"ModeDJ", 0, 1, [] { return int{transport.djMode}; },
     [](int value) { transport.djMode = value; }},
    {"ModePlay", 0, 2, [] { return int{transport.playMode}; },
     [](int value) { transport.playMode = value; }},
    {"ModeRepeat", 0, 1, [] { return int{transport.repeatOn}; },
     [](int value) { transport.repeatOn = value; }},
    {"POS_X", 396, 111, [] { return Place().x; },
     [](int value) {
       platform::MoveWindow({value, Place().y});
     }},
    {"POS_Y", 249, 77, [] { return Place().y; },
     [](int value) {
       platform::MoveWindow({Place().x, value});
     }},
    Of<WindowFlags>("POS_Z", 0, 6),
};

TEST_F(Program, EachControlThatKeepsAStateHasASetting) {
  Run([](const Hands& hands) {
    int seen = 0;
    OpenPage(hands, PAGE_MIXER);
    for (int page = 0; page < 4; ++page) {
      if (page != MixerSubPage) OpenSubPage(hands, page);
      for (int index = 0; index < SkinHost::kWidgets; ++index) {
        const Widget* widget = Find(index);
        if (!widget || (widget->kind != CHECK_WIDGET && widget->kind != HORIZONTAL_SLIDER) ||
            !Inside(index))
          continue;
        const auto values = [] {
          std::vector<int> all;
          for (const kwo::Setting& setting : CurrentSettings()) all.push_back(setting.value);
          return all;
        };
        const std::vector<int> before = values();
        const platform::Point place = Middle(index);
        hands.Press(place.x - (widget->kind == HORIZONTAL_SLIDER ? widget->width / 3 : 0), place.y);
        EXPECT_NE(before, values()) << index;
        ++seen;
      }
    }
    EXPECT_LE(10, seen) << "three sliders, five effects, Repeat and Shuffle";
  });
}

// What is found at the next start; none of the settings is -777.
int Stored(const char* name) {
  return GetSettingInt(name, -777, 0);
}

TEST_F(Program, FirstRunHoldsTheDemoSongAndSavesEveryDefault) {
  GetSettingString("Skin", "glass", 1);
  const int result = Run([](const Hands&) {
    EXPECT_EQ(1, playlist.count);
    EXPECT_EQ("one-horizon.mp3", headless::Window().caption);
    EXPECT_TRUE(headless::Tray().shown);
    EXPECT_EQ("KWO", headless::Tray().tip);
    for (const Setting& setting : kSettings)
      EXPECT_EQ(setting.fallback, setting.get()) << setting.name;
  });
  EXPECT_EQ(0, result);
  EXPECT_EQ(nullptr, TheMixer);
  EXPECT_EQ(nullptr, TheSkinHost);
  EXPECT_FALSE(headless::Window().exists);
  EXPECT_FALSE(headless::Tray().shown);
  EXPECT_STREQ("default", GetSettingString("Skin", "", 0));
  EXPECT_EQ(396, Stored("X"));
  EXPECT_EQ(249, Stored("Y"));
  EXPECT_EQ(0, Stored("ModeShuffle"));
  for (const Setting& setting : kSettings)
    EXPECT_EQ(setting.fallback, Stored(setting.name)) << setting.name;
  EXPECT_EQ(8448u, ReadBytes(folder.File("EQ.SET")).size());
  EXPECT_NE(std::string::npos, ReadBytes(folder.File("HISTORY.PLA")).find("one-horizon"));
}

TEST_F(Program, EverySettingComesBackAndReachesItsPlace) {
  Run([this](const Hands& hands) {
    hands.Drop(Songs(14));
    OpenPage(hands, PAGE_MIXER);
    OpenSubPage(hands, 1);
    for (const Setting& setting : kSettings) setting.set(setting.odd);
    EqPresetValues[41][5] = 1.25f;
    Press(hands, WIDGET_PRESET_NAME);
    headless::MoveCaret(0);
    headless::TypeText("My ");
    hands.Wait(100);
    ClickSong(4, false, false);
  });
  for (const Setting& setting : kSettings) {
    EXPECT_EQ(setting.odd, Stored(setting.name)) << setting.name;
    setting.set(setting.fallback);
  }
  ClearList();
  EqPresetNames[41][0] = 0;
  Run([](const Hands& hands) {
    for (const Setting& setting : kSettings) EXPECT_EQ(setting.odd, setting.get()) << setting.name;
    EXPECT_EQ("0 1 2 3 *4 5 6 7 8 9 10 11 12 13 ", Names());
    EXPECT_STREQ("My User Preset", EqPresetNames[41]);
    EXPECT_EQ(0, transport.playing);
    EXPECT_EQ(PAGE_MAIN, TheSkinHost->currentTile) << "the visualiser stands on the page's tile";
    EXPECT_EQ(BLEND_COPY, Find(WIDGET_VISUALISER)->blendMode);
    EXPECT_TRUE(headless::Window().topmost);
    const Mixer& mixer = *TheMixer;
    EXPECT_FLOAT_EQ(1.73f, mixer.volume);
    EXPECT_FLOAT_EQ(-0.61f, mixer.pan);
    EXPECT_FLOAT_EQ(0.89f, mixer.speed);
    EXPECT_TRUE(mixer.crystalizer && mixer.vocalReducer && mixer.wideStereo && mixer.limiter);
    EXPECT_EQ(2, mixer.enhancer);
    EXPECT_EQ(1, mixer.eqSwitch);
    EXPECT_EQ(1.25f, mixer.eqValues[5]);
    Press(hands, WIDGET_PLAY);
    hands.Wait(44000);
    EXPECT_EQ(8, playlist.currentSong) << "the DJ has begun with the program";
  });
}

TEST_F(Program, ShuffleComesBackWithAnOrderOfItsOwn) {
  Run([this](const Hands& hands) {
    hands.Drop(Songs(14));
    transport.shuffleOn = 1;
  });
  transport.shuffleOn = 0;
  ClearList();
  for (auto& song : transport.shuffleTable) song = 0;
  Run([](const Hands&) {
    EXPECT_EQ(1, transport.shuffleOn);
    EXPECT_EQ(1, transport.shufflePosition);
    EXPECT_EQ(playlist.currentSong, transport.shuffleTable[1]);
    EXPECT_EQ(14u, std::set<int>(transport.shuffleTable, transport.shuffleTable + 14).size());
  });
}

TEST_F(Program, PositionsFromBeyondTheScreenAreGivenUp) {
  constexpr platform::Point kStand[] = {{-488, 0}, {1280, 0}, {0, -302}, {0, 800}},
                            kGone[] = {{-489, 9}, {1281, 9},    {9, -303},
                                       {9, 801},  {INT_MIN, 9}, {9, INT_MAX}};
  const auto placeOf = [this](platform::Point saved) {
    GetSettingInt("POS_X", saved.x, 1);
    GetSettingInt("POS_Y", saved.y, 1);
    platform::Point place{};
    Run([&](const Hands&) { place = {Place().x, Place().y}; });
    return place;
  };
  for (const platform::Point& saved : kStand) EXPECT_EQ(saved, placeOf(saved));
  for (const platform::Point& saved : kGone)
    EXPECT_EQ((platform::Point{0, 0}), placeOf(saved)) << saved.x << ',' << saved.y;
}

TEST_F(Program, SettingsBeyondTheirRangesDoNoHarm) {
  for (int value : {INT_MIN, -2, 7, INT_MAX}) {
    headless::UseRegistryFile("");
    for (const Setting& setting : kSettings)
      if (setting.name != std::string("POS_X") && setting.name != std::string("POS_Y"))
        GetSettingInt(setting.name, value, 1);
    GetSettingInt("ModeShuffle", value, 1);
    EXPECT_EQ(
        0, Run([&](const Hands& hands) {
          Press(hands, WIDGET_PLAY);
          OpenPage(hands, PAGE_MIXER);
          for (int stands : {EffectLT, EffectTE, int{transport.djMode}, int{transport.playMode}})
            EXPECT_EQ(value, stands);
          EXPECT_FLOAT_EQ(static_cast<float>(value), SliderVol);
          EXPECT_EQ(0, Find(WIDGET_ENHANCER)->frame);
          OpenSubPage(hands, 2);
          Press(hands, WIDGET_ENHANCER);
          OpenSubPage(hands, 3);
          Press(hands, WIDGET_DJ);
          Press(hands, WIDGET_PLAY_MODE);
          for (int gone : {EffectTE, int{transport.djMode}, int{transport.playMode}})
            EXPECT_EQ(0, gone);
        }));
    EXPECT_EQ(std::min(value, 2147483520), Stored("SliderVol"))
        << "the largest of 32 bits that a float holds";
  }
}

TEST_F(Program, WindowComesUpBeforeTheSongsAnswer) {
  const std::vector<std::string> songs = Songs(3);
  const std::string first = folder.File("song0.mp3");
  WriteBytes(first, ReadBytes(first) + Tag("Dawn", "", ""));
  Run([&](const Hands& hands) {
    hands.Drop(songs);
    playlist.displayMode = 1;
  });
  ClearList();
  headless::SetStandingFolder(songs[2]);
  const unsigned start = platform::GetTickCount();
  Run([&](const Hands& hands) {
    EXPECT_LT(platform::GetTickCount() - start, 6000u);
    EXPECT_EQ(2, playlist.currentSong);
    OpenPage(hands, PAGE_PLAYLIST);
    EXPECT_EQ("1. Dawn", Text(WIDGET_ROW));
    EXPECT_EQ("3. song2.mp3", Text(WIDGET_ROW + 2));
    headless::SetStandingFolder("");
    Press(hands, WIDGET_ROW);
    EXPECT_EQ("*0 1 2 ", Names());
  });
}

TEST_F(Program, SavedSongBeyondTheListFallsBackToTheFirst) {
  Run([this](const Hands& hands) { hands.Drop(Songs(3)); });
  for (auto [stored, first] : {std::pair{5, 0}, {2, 2}, {3, 0}}) {
    GetSettingInt("PlaylistCurrentSong", stored, 1);
    ClearList();
    Run([saved = stored, song = first](const Hands&) {
      EXPECT_EQ(song, playlist.currentSong) << saved;
    });
  }
}

}  // namespace
}  // namespace kwo::test
