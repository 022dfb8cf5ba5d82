// The program's pages, as a user presses and drags them.

#include <array>

#include "app/shell_services.h"
#include "engine/transport.h"
#include "panels/equaliser_presets.h"
#include "panels/main_page.h"
#include "tests/app/program_fixture.h"

namespace kwo::test {
namespace {

TEST_F(Program, PagesSlideInAndOutUnderTheirButtons) {
  Run([](const Hands& hands) {
    for (int page : {1, 2, 3, 4, 5, 0}) {
      OpenPage(hands, page);
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
    EXPECT_TRUE(Inside(WIDGET_PLAY) && Inside(WIDGET_SONG_TEXT));
  });
}

TEST_F(Program, EqualiserIsDrawnByBandAndMaster) {
  struct Case {
    headless::Button button;
    int x, y, band;
    float value;
  };
  Run([](const Hands& hands) {
    OpenPage(hands, PAGE_MIXER);
    OpenSubPage(hands, 1);
    const auto shown = [] { return WIDGET_CURVE + (Find(WIDGET_CURVE)->visible ? 0 : 1); };
    const int left = kPaneX + Find(shown())->x, top = kPaneY + Find(shown())->y;
    // 192 by 94 pixels; the first column and row are not the curve's.
    for (const Case& c : {Case{kLeft, 1, 1, 0, 93 / 94.0f + 0.5f},
                          {kLeft, 11, 93, 0, 1 / 94.0f + 0.5f},
                          {kLeft, 12, 47, 1, 1.0f},
                          {kLeft, 191, 10, 15, 84 / 94.0f + 0.5f},
                          {kRight, 100, 1, 16, 1.45f},
                          {kRight, 100, 6, 16, 88 / 94.0f + 0.5f},
                          {kRight, 100, 93, 16, 0.55f}}) {
      hands.Move(left + c.x, top + c.y);
      hands.Down(c.button);
      EXPECT_FLOAT_EQ(c.value, EqPresetValues[0][c.band]) << c.x << ',' << c.y;
      EXPECT_EQ(EqPresetValues[0][c.band], TheMixer->eqValues[c.band]);
      EXPECT_TRUE(headless::Window().captured);
      hands.Up(c.button);
      EXPECT_FALSE(headless::Window().captured);
      hands.Wait(150);
      EXPECT_LT(Find(shown())->brightness, 0) << "it dips";
      hands.Wait(1000);
      EXPECT_EQ(0, Find(shown())->brightness);
    }
    // A drag goes on over the canvas that has taken the first one's place, as far as it reaches.
    hands.Drag(left + 6, top + 2, left + 186, top + 2);
    hands.Drag(left + 96, top + 50, left + 96, top + 98, kRight);
    for (int band = 0; band < 16; ++band)  // a point every 18 pixels
      EXPECT_FLOAT_EQ(band % 3 == 1 ? 1.0f : 92 / 94.0f + 0.5f, EqPresetValues[0][band]) << band;
    EXPECT_EQ(0.55f, EqPresetValues[0][16]);
    EffectEQCurrent = 62;
    const platform::Point forward = Middle(WIDGET_PRESET_FORWARD);
    hands.DoublePress(forward.x, forward.y);
    EXPECT_EQ("64. User Preset", Text(WIDGET_PRESET_NAME)) << "the last one holds";
    EffectEQCurrent = 1;
    hands.DoublePress(forward.x, forward.y);
    EXPECT_EQ("4. User Preset", Text(WIDGET_PRESET_NAME)) << "two presses";
  });
}

TEST_F(Program, PresetIsNamedByTyping) {
  Run([](const Hands& hands) {
    OpenPage(hands, PAGE_MIXER);
    OpenSubPage(hands, 1);
    Press(hands, WIDGET_PRESET_NAME);
    EXPECT_EQ("1. User Preset|", Text(WIDGET_PRESET_NAME));
    headless::TypeText("\b\b\b\b\b\b\b\b\b\b\bWarm");
    headless::MoveCaret(0);
    hands.Wait(200);
    EXPECT_EQ("1. |Warm", Text(WIDGET_PRESET_NAME));
    headless::MoveCaret(4);
    headless::TypeText(std::string(100, 'x'));
    hands.Wait(200);
    const std::string shown = Text(WIDGET_PRESET_NAME);
    EXPECT_TRUE(shown.starts_with("1. x") && shown.ends_with("x|")) << shown;
    EXPECT_LE(platform::TextWidth(shown.c_str(), *TheSkinHost->font), 160) << "typed in sight";
    Press(hands, WIDGET_PRESET_FORWARD);
    EXPECT_EQ(0, EffectEQCurrent) << "the press only ends the editing";
    EXPECT_EQ("1. Warm" + std::string(59, 'x'), Text(WIDGET_PRESET_NAME));
    EXPECT_EQ("Warm" + std::string(59, 'x'), EqPresetNames[0]);
    Press(hands, WIDGET_PRESET_NAME);
    headless::TypeText("\b\b");
    hands.Wait(200);
    headless::SetWindowActive(false);
    hands.Wait(200);
    EXPECT_EQ("1. Warm" + std::string(57, 'x'), Text(WIDGET_PRESET_NAME));
    headless::SetWindowActive(true);
    Press(hands, WIDGET_PRESET_NAME);
    headless::TypeText(std::string(61, '\b') + "€€");
    headless::MoveCaret(4);
    hands.Wait(200);
    EXPECT_EQ("1. €|€", Text(WIDGET_PRESET_NAME)) << "a stale caret parts no character";
  });
}

TEST_F(Program, RowsSelectPlayAndFollow) {
  Run([this](const Hands& hands) {
    hands.Drop(Songs(30));
    OpenPage(hands, PAGE_PLAYLIST);
    Press(hands, WIDGET_ROW + 2);
    for (const auto& [key, row] :
         {std::pair{platform::Key::kShift, 4}, {platform::Key::kControl, 3}}) {
      headless::SetKey(key, true);
      Press(hands, WIDGET_ROW + row);
      headless::SetKey(key, false);
    }
    EXPECT_EQ("0 1 *2 3 *4 5 ", Names().substr(0, 14));
    const platform::Point down = Middle(WIDGET_ITEM_DOWN);
    hands.DoublePress(down.x, down.y);
    EXPECT_EQ("0 1 3 5 *2 6 *4 ", Names().substr(0, 16)) << "two presses";
    EXPECT_EQ(2, playlist.topIndex) << "the page follows the songs that move";
    const platform::Point row = Middle(WIDGET_ROW);
    hands.Press(row.x, row.y, kRight);
    hands.Press(row.x, row.y, kRight);
    EXPECT_EQ(0, transport.playing);
    hands.DoublePress(row.x, row.y);
    EXPECT_TRUE(playlist.currentSong == 2 && transport.playing);
    EXPECT_EQ("song3.mp3", headless::Window().caption);
    EXPECT_EQ("3. song3.mp3", Text(WIDGET_ROW));
    EXPECT_EQ(3, Find(WIDGET_ROW)->ProgramInSlot(2)) << "the current row pulses";
    EXPECT_EQ(-1, Find(WIDGET_ROW + 1)->ProgramInSlot(2));
    playlist.topIndex = 19;
    const platform::Point bar = Middle(WIDGET_SCROLL_BAR);
    const int half = Find(WIDGET_SCROLL_BAR)->height / 2;
    for (int press = 0; press < 3; ++press) hands.Press(bar.x, bar.y + half - 4);
    EXPECT_EQ("30. song29.mp3", Text(WIDGET_ROW + 9)) << "no further than the last song";
    Choose(hands, WIDGET_REMOVE, "Remove Selected");
    EXPECT_EQ("29. song29.mp3", Text(WIDGET_ROW + 9));
    EXPECT_EQ(0, transport.playing);
  });
}

TEST_F(Program, DropReplacesTheListAndShiftAddsToIt) {
  Run([this](const Hands& hands) {
    const std::vector<std::string> songs = Songs(3);
    Press(hands, WIDGET_PLAY);
    EXPECT_EQ(1, transport.playing);
    WriteBytes(folder.File("cover.png"), "");
    hands.Drop({});
    for (const char* name : {"cover.png", "list.m3u", "nowhere"}) hands.Drop({folder.File(name)});
    EXPECT_TRUE(Names() == "horizon " && transport.playing) << "no song, no drop";
    hands.Drop({songs[0], folder.File("nothing.txt")});
    EXPECT_TRUE(Names() == "0 " && playlist.currentSong == 0 && !transport.playing);
    hands.Drop({songs[1], songs[2]}, true);
    EXPECT_TRUE(Names() == "0 1 2 " && playlist.currentSong == 2 && !transport.playing);
    hands.Drop({folder.File("gone.pla")});
    EXPECT_EQ("1. ------", Text(WIDGET_ROW)) << "a list with nothing in it shows nothing";
    EXPECT_EQ("KWO", headless::Window().caption);
  });
}

TEST_F(Program, DropsDuringAWalkWaitForItsEndAndNeverForTheProgramsEnd) {
  const std::vector<std::string> songs = Songs(3);
  headless::SetStandingFolder(songs[1]);
  Run([&](const Hands& hands) {
    hands.Drop({songs[0]});
    hands.Drop({songs[1]}, true);
    hands.Drop({songs[2]}, true);
    EXPECT_EQ("0 ", Names());
    platform::Sleep(2000);
    EXPECT_EQ("0 1 2 ", Names()) << "Shift was held when it was dropped";
    hands.Drop({songs[1]}, true);
    hands.Drop({songs[2]});
  });
  headless::SetStandingFolder("");
  ClearList();
  Run([](const Hands&) { EXPECT_EQ("0 1 2 1 ", Names()); });
}

TEST_F(Program, TimeIsDraggedToSeek) {
  Run([](const Hands& hands) {
    const platform::Point digit = Middle(WIDGET_DIGIT);
    hands.Move(digit.x, digit.y);
    const platform::Point before = headless::PointerPlace();
    hands.Down();
    EXPECT_EQ(1, transport.SeekActive);
    EXPECT_FALSE(headless::Window().pointerShown);
    hands.Move(digit.x + 20, digit.y + 90);
    EXPECT_EQ(2000, Time());
    hands.Move(digit.x + 300, digit.y);
    EXPECT_EQ(6600, Time()) << "not beyond the song's length";
    hands.Move(digit.x + 30, digit.y);
    hands.Up();
    EXPECT_EQ(before, headless::PointerPlace());
    EXPECT_TRUE(headless::Window().pointerShown && !transport.SeekActive);
    EXPECT_EQ(3000, Time());
    Press(hands, WIDGET_PLAY);
    hands.Wait(1000);
    EXPECT_GT(Time(), 3100);
    hands.Drag(digit.x + 20, digit.y, digit.x, digit.y);
    hands.Wait(500);
    EXPECT_NEAR(1300, Time(), 250);
    EXPECT_EQ(1, transport.playing);
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
    EXPECT_EQ(0, transport.SeekActive);
    OpenPage(hands, PAGE_MIXER);
    pressBoth(Middle(WIDGET_VOLUME));
    hands.Down();
    hands.Move(10, 10);
    hands.Down(kRight);
    EXPECT_TRUE(headless::Window().pointerShown) << "the second press lies on nothing";
    EXPECT_FALSE(headless::Window().captured);
    hands.Up(kRight);
    hands.Up();
  });
}

TEST_F(Program, DisplayModesAndVisualisersGoRound) {
  Run([](const Hands& hands) {
    const platform::Point mode = Middle(WIDGET_DISPLAY_MODE);
    const auto place = [] {
      const Widget& widget = *Find(WIDGET_VISUALISER);
      return std::array<int, 4>{widget.x, widget.y, widget.width, widget.height};
    };
    const auto before = place();
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
    EXPECT_EQ(before, place());
  });
}

// A window of 488 by 302 on a screen of 1280 by 800.
TEST_F(Program, HiddenWindowComesBackInItsCorner) {
  constexpr struct {
    platform::Point pointer;
    bool comes;
    platform::Point place;
  } kRests[] = {{{0, 0}, true, {0, 0}},     {{1279, 0}, true, {792, 0}},
                {{0, 799}, true, {0, 498}}, {{1279, 799}, true, {792, 498}},
                {{1, 0}, false, {}},        {{1278, 799}, false, {}},
                {{0, 400}, false, {}}},
    kQuarters[] = {{{639, 399}, true, {0, 0}},   {{641, 399}, true, {792, 0}},
                   {{639, 401}, true, {0, 498}}, {{641, 401}, true, {792, 498}},
                   {{640, 399}, false, {}},      {{639, 400}, false, {}}};
  Run([&](const Hands& hands) {
    OpenPage(hands, PAGE_WINDOW);
    Press(hands, WIDGET_AUTO);
    EXPECT_EQ(AUTO_HIDE, CurrentAutoMode());
    const auto hide = [&] {
      headless::MovePointer({640, 780});
      hands.Wait(700);
      EXPECT_FALSE(headless::Window().visible);
    };
    const auto expect = [&](const auto& c) {
      EXPECT_EQ(c.comes, headless::Window().visible) << c.pointer.x << ',' << c.pointer.y;
      const platform::Rectangle place = headless::Window().place;
      EXPECT_TRUE(!c.comes || c.place == (platform::Point{place.x, place.y}))
          << place.x << ',' << place.y;
    };
    for (const auto& c : kRests) {
      hide();
      headless::MovePointer(c.pointer);
      hands.Wait(320);
      EXPECT_FALSE(headless::Window().visible) << "the pointer has only just come";
      hands.Wait(600);
      expect(c);
    }
    for (const auto& c : kQuarters) {
      hide();
      platform::SetTopmost(false);
      headless::MovePointer(c.pointer);
      headless::PressTray(kLeft);
      hands.Wait(30);
      expect(c);
      EXPECT_EQ(c.comes, headless::Window().topmost);
    }
    // One look outside is not enough; the bars slide out and in with the window.
    hide();
    headless::MovePointer({1279, 799});
    hands.Wait(2000);
    EXPECT_TRUE(Inside(WIDGET_PLAY) && Inside(WIDGET_AUTO));
    headless::MovePointer({5, 5});
    hands.Wait(310);
    headless::MovePointer({1270, 790});
    hands.Wait(700);
    EXPECT_TRUE(headless::Window().visible);
    hide();
    hands.Wait(2000);
    EXPECT_FALSE(Inside(WIDGET_PLAY) || Inside(WIDGET_AUTO));
  });
}

TEST_F(Program, WindowMinimisesHidesAndQuitsOnDemand) {
  Run([](const Hands& hands) {
    const auto is = [](bool visible, bool minimised) {
      return headless::Window().visible == visible && headless::Window().minimised == minimised;
    };
    OpenPage(hands, PAGE_WINDOW);
    headless::SetWindowActive(false);
    hands.Wait(500);
    EXPECT_TRUE(is(true, false));
    Press(hands, WIDGET_MINIMISE);
    hands.Wait(1500);
    EXPECT_TRUE(is(true, true));
    headless::PressTray(kLeft);
    hands.Wait(1500);
    EXPECT_TRUE(is(true, false));
    Press(hands, WIDGET_AUTO);
    Press(hands, WIDGET_MINIMISE);
    EXPECT_TRUE(is(false, false));
    headless::MovePointer({100, 700});
    headless::PressTray(kLeft);
    headless::MovePointer({200, 700});
    hands.Wait(1500);
    Press(hands, WIDGET_AUTO);
    EXPECT_EQ(AUTO_MINIMISE, CurrentAutoMode());
    headless::SetWindowActive(false);
    hands.Wait(300);
    EXPECT_TRUE(is(true, true));
    headless::RestoreByUser();
    hands.Wait(1500);
    // A close in the middle of start or end does nothing.
    AppReady = 0;
    headless::CloseByUser();
    hands.Wait(500);
    EXPECT_TRUE(headless::Window().exists);
    AppReady = 1;
    Press(hands, WIDGET_QUIT);
    hands.Wait(500);
    EXPECT_EQ(0, AppReady);
  });
}

TEST_F(Program, TrayMenuOpensHelpInTheBrowser) {
  const auto command = [](const char* fileClass, const std::string& value) {
    headless::SetClassRegistry(std::string(fileClass) + "\\shell\\open\\command", value);
  };
  headless::SetClassRegistry(".html", "page");
  command("page", "\"web view\" \"%1\" -new");
  Run([&](const Hands& hands) {
    const auto choose = [&](const char* item) {
      headless::AnswerMenu(item);
      headless::PressTray(kRight);
      hands.Wait(500);
    };
    for (const auto& [item, page] :
         {std::pair{"Help", "help\\index.htm"}, {"Tavarine", "help\\tavarine.htm"}}) {
      choose(item);
      EXPECT_EQ((std::vector<std::string>{"Tavarine", "Help", "-", "Exit"}), headless::LastMenu());
      ASSERT_FALSE(headless::CommandLines().empty());
      EXPECT_EQ("\"web view\" " + (AppDir + std::string(page)) + " -new",
                headless::CommandLines().back());
    }
    command("http", "view");
    for (const std::string& broken : {std::string(), std::string(520, 'x')}) {
      command("page", broken);  // half a command is none
      EXPECT_EQ(0, OpenInBrowser("here" + broken));
      EXPECT_EQ("view here" + broken, headless::CommandLines().back());
    }
    command("page", "");
    command("http", "");
    EXPECT_EQ(static_cast<int>(0x80070002), OpenInBrowser("here"));
    choose("Exit");
    EXPECT_EQ(0, AppReady);
  });
}

}  // namespace
}  // namespace kwo::test
