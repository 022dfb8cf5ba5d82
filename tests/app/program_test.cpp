// The program's pages, as a user presses and drags them.

#include "app/shell_services.h"
#include "engine/transport.h"
#include "panels/equaliser_presets.h"
#include "panels/main_page.h"
#include "playlist/playlist_files.h"
#include "tests/app/program_fixture.h"

namespace kwo::test {
namespace {

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
    Choose(hands, WIDGET_FUNCTION, "Select All");
    Choose(hands, WIDGET_REMOVE, "Remove Selected");
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
    Choose(hands, WIDGET_ADD, "Open Files");
    EXPECT_EQ("2 0 ", Names());
    headless::AnswerDialog({"", {songs[1]}});
    Choose(hands, WIDGET_ADD, "Add Files");
    EXPECT_EQ("2 0 1 ", Names());
    Choose(hands, WIDGET_ADD, "Add Files");
    EXPECT_EQ("2 0 1 ", Names()) << "a cancelled dialog changes nothing";
    Choose(hands, WIDGET_FUNCTION, "Sort");
    EXPECT_EQ("0 1 2 ", Names());
    Choose(hands, WIDGET_FUNCTION, "Select All");
    EXPECT_EQ("*0 *1 *2 ", Names());
    Choose(hands, WIDGET_FUNCTION, "Deselect All");
    EXPECT_EQ("0 1 2 ", Names());
    std::filesystem::remove(folder.File("song1.mp3"));
    Choose(hands, WIDGET_FUNCTION, "Read Tag Information");
    Choose(hands, WIDGET_REMOVE, "Remove Dead Links");
    EXPECT_EQ("0 2 ", Names());
    Press(hands, WIDGET_ROW);
    Choose(hands, WIDGET_REMOVE, "Remove Unselected");
    EXPECT_EQ("*0 ", Names());
    Choose(hands, WIDGET_REMOVE, "Remove All");
    EXPECT_EQ("", Names());
    std::filesystem::create_directory(folder.File("more"));
    std::filesystem::rename(folder.File("song2.mp3"), folder.File("more/song7.mp3"));
    headless::AnswerDialog({"", {folder.File("more")}});
    Choose(hands, WIDGET_ADD, "Open Directory");
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
    headless::AnswerMenu("Help");
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
    headless::AnswerMenu("Exit");
    headless::PressTray(kRight);
    hands.Wait(500);
    EXPECT_EQ(0, AppReady);
  });
}

}  // namespace
}  // namespace kwo::test
