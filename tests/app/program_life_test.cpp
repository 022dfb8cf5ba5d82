// The program from start to end.

#include <algorithm>

#include "engine/transport.h"
#include "settings/settings.h"
#include "tests/app/program_fixture.h"

namespace kwo::test {
namespace {

TEST_F(Program, QuitFadesTheMusicOutBeforeItEnds) {
  Run([](const Hands& hands) {
    Press(hands, WIDGET_PLAY);
    hands.Wait(1000);
    headless::ClearPlayedSound();
  });
  const std::vector<std::int16_t> sound = headless::PlayedSound();
  ASSERT_GT(sound.size(), 20000u);
  const auto loudest = [](auto begin, auto end) {
    return std::max(-*std::min_element(begin, end), int{*std::max_element(begin, end)});
  };
  EXPECT_GT(loudest(sound.begin(), sound.begin() + 20000), 6000);
  EXPECT_LT(loudest(sound.end() - 4608, sound.end()), 2000);
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

TEST_F(Program, BrokenSkinEndsInOrderOrShowsWhatIsThere) {
  const auto skin = [this](const std::string& name) { return folder.File("skin/default/" + name); };
  const auto nobody = [](const Hands&) { ADD_FAILURE() << "no skin, no window"; };
  std::filesystem::remove(folder.File("skin"));
  EXPECT_EQ(1, Run(nobody));
  EXPECT_FALSE(std::filesystem::exists(folder.File("HISTORY.PLA"))) << "nothing is overwritten";

  std::filesystem::create_directories(folder.File("skin/default"));
  WriteBytes(skin("ui.txt"), "WINDOW 1 2");
  EXPECT_EQ(1, Run(nobody));
  WriteBytes(skin("background.bmp"), "BM and no more");
  EXPECT_EQ(1, Run(nobody));

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
  EXPECT_EQ(1, Run(nobody));
  headless::SetWindowPossible(true);
}

TEST_F(Program, AbsentDeviceNeitherStopsTheWindowNorTheQuit) {
  headless::SetWaveDevicePresent(false);
  EXPECT_EQ(0, Run([](const Hands& hands) {
              Press(hands, WIDGET_PLAY);
              OpenPage(hands, PAGE_PLAYLIST);
            }));
}

}  // namespace
}  // namespace kwo::test
