// What a careless user's hands leave behind: nothing.

#include <set>

#include "engine/transport.h"
#include "panels/equaliser_presets.h"
#include "panels/main_page.h"
#include "panels/playlist_page.h"
#include "tests/app/program_fixture.h"

namespace kwo::test {
namespace {

// Hidden, minimised, or with another page in front: no release is to come.
TEST_F(Program, DragEndsWhereTheWindowGoes) {
  Run([this](const Hands& hands) {
    OpenPage(hands, PAGE_WINDOW);
    Press(hands, WIDGET_AUTO);
    OpenPage(hands, PAGE_MIXER);
    const auto expectLetGo = [&](platform::Point back) {
      EXPECT_TRUE(headless::Window().pointerShown);
      EXPECT_FALSE(headless::Window().captured);
      const float volume = SliderVol;
      headless::ReleaseButton(kLeft);
      headless::PressTray(kLeft);
      headless::RestoreByUser();
      hands.Wait(1500);
      hands.Move(back.x - 30, back.y);
      hands.Move(back.x + 30, back.y);
      EXPECT_EQ(volume, SliderVol) << "nothing is pressed";
      EXPECT_EQ(0, Find(WIDGET_VOLUME)->heldPart);
    };
    const platform::Point thumb = Middle(WIDGET_VOLUME);
    hands.Move(thumb.x, thumb.y);
    hands.Down();
    EXPECT_FALSE(headless::Window().pointerShown);
    headless::MovePointer({1000, 790});
    hands.Wait(700);
    ASSERT_FALSE(headless::Window().visible) << "it hides in the drag";
    expectLetGo(thumb);
    hands.Move(thumb.x, thumb.y);
    hands.Down();
    headless::MinimiseByUser();
    hands.Wait(100);
    expectLetGo(thumb);

    OpenSubPage(hands, 1);
    const platform::Point curve = Middle(WIDGET_CURVE);
    hands.Move(curve.x, curve.y);
    hands.Down();
    const platform::Point sliders = Middle(WIDGET_SUB_PAGE);
    hands.Move(sliders.x, sliders.y);
    hands.Down(kRight);
    hands.Up(kRight);
    hands.Move(curve.x, curve.y - 30);
    hands.Up();
    EXPECT_FLOAT_EQ(1.0f, EqPresetValues[0][8]);
    EXPECT_FALSE(headless::Window().captured);

    hands.Drop(Songs(1));
    OpenPage(hands, PAGE_PLAYLIST);
    const platform::Point row = Middle(WIDGET_ROW), back = Middle(PageButton(PAGE_MAIN));
    hands.Move(row.x, row.y);
    hands.Down();
    hands.Move(back.x, back.y);
    hands.Down(kRight);
    EXPECT_FALSE(headless::Window().captured);
    hands.Up(kRight);
    hands.Up();
    hands.Wait(1500);
    const platform::Point digit = Middle(WIDGET_DIGIT), button = Middle(PageButton(PAGE_WINDOW));
    hands.Move(digit.x, digit.y);
    hands.Down();
    hands.Move(digit.x + 20, digit.y);
    EXPECT_EQ(2000, Time());
    hands.Move(button.x, button.y);
    hands.Down(kRight);
    EXPECT_TRUE(headless::Window().pointerShown && !transport.SeekActive);
    EXPECT_EQ(0, Time()) << "without a seek";
    hands.Up(kRight);
    hands.Up();
    Press(hands, WIDGET_PLAY);
    hands.Wait(1000);
    EXPECT_TRUE(Time() > 0 && Time() < 1000) << "it goes on, from the song's start";
  });
}

// The picture of a slider as it is held, against that painted for this part alone.
TEST_F(Program, HeldPartOfASliderLooksHeld) {
  Run([this](const Hands& hands) {
    hands.Drop(Songs(30));
    const auto expectHeld = [&](int index, int x, int y, float part) {
      Widget& slider = *Find(index);
      const auto picture = [&] {
        const SkinBitmap& image = *slider.image;
        return std::vector<std::uint8_t>(image.bits, image.bits + image.stride * image.height);
      };
      const platform::Point middle = Middle(index);
      hands.Move(middle.x + x, middle.y + y);
      hands.Down();
      hands.Wait(200);
      RefreshPlaylistPage();
      const auto held = picture();
      hands.Up();
      const auto rest = picture();
      EXPECT_NE(rest, held) << index << ' ' << part;
      slider.ApplyValue(part, -1.0f);
      EXPECT_EQ(picture(), held) << index << ' ' << part;
      slider.ApplyValue(0.0f, -1.0f);
      EXPECT_EQ(picture(), rest) << index << ' ' << part;
    };
    OpenPage(hands, PAGE_PLAYLIST);
    const int half = Find(WIDGET_SCROLL_BAR)->height / 2 - 4;
    expectHeld(WIDGET_SCROLL_BAR, 0, -half, 1);
    expectHeld(WIDGET_SCROLL_BAR, 0, half, 2);
    expectHeld(WIDGET_SCROLL_BAR, 0, 10, 3);
    OpenPage(hands, PAGE_MIXER);
    const int end = Find(WIDGET_VOLUME)->width / 2 - 4;
    expectHeld(WIDGET_VOLUME, -end, 0, 1);
    expectHeld(WIDGET_VOLUME, end, 0, 2);
    expectHeld(WIDGET_VOLUME, 30, 0, 3);
  });
}

TEST_F(Program, WheelPressesCaps) {
  Run([this](const Hands& hands) {
    hands.Drop(Songs(30));
    const auto turn = [&](int index, int way) {
      const platform::Point place = Middle(index);
      hands.Move(place.x, place.y);
      headless::TurnWheel(way);
      hands.Wait(20);
    };
    constexpr int kNotch = platform::kWheelNotch;
    OpenPage(hands, PAGE_PLAYLIST);
    const auto top = [] { return int{playlist.topIndex}; };
    turn(WIDGET_ROW, -kNotch);
    EXPECT_EQ(3, top());
    turn(WIDGET_ROW + 9, -2 * kNotch);
    EXPECT_EQ(9, top());
    turn(WIDGET_SCROLL_BAR, kNotch);
    EXPECT_EQ(6, top());
    turn(WIDGET_ADD, kNotch);
    EXPECT_EQ(6, top()) << "neither row nor slider";
    OpenPage(hands, PAGE_MIXER);
    turn(WIDGET_VOLUME, kNotch);
    turn(WIDGET_PAN, -2 * kNotch);
    turn(WIDGET_SPEED, 6 * kNotch);
    EXPECT_EQ("Volume = 105 Pan = -10 Speed = 125", Text(160) + ' ' + Text(162) + ' ' + Text(164));
    // Fine steps are summed up, unless the wheel turns back.
    for (int way : {50, 50, -100, 50, 50}) turn(WIDGET_VOLUME, way);
    EXPECT_EQ(105, SliderVol);
    turn(WIDGET_VOLUME, 30);
    EXPECT_EQ(110, SliderVol);
    hands.Move(Middle(WIDGET_MIXER_BOX).x, Middle(WIDGET_MIXER_BOX).y);
    hands.Down(kRight);
    turn(WIDGET_VOLUME, kNotch);
    EXPECT_EQ(110, SliderVol) << "while anything is held";
    hands.Up(kRight);
    turn(WIDGET_VOLUME, kNotch);
    turn(WIDGET_VOLUME, 0);
    EXPECT_EQ(115, SliderVol);
    EXPECT_EQ(0, Find(WIDGET_VOLUME)->heldPart);
  });
}

TEST_F(Program, SongsThatHaveComeAreShuffledIn) {
  Run([this](const Hands& hands) {
    OpenPage(hands, PAGE_MIXER);
    OpenSubPage(hands, 3);
    Press(hands, WIDGET_SHUFFLE);
    const std::vector<std::string> songs = Songs(14);
    // The table's first song stands behind its last.
    const auto heard = [&] {
      std::set<int> numbers;
      for (int i = 1; i < playlist.count; ++i) {
        Press(hands, WIDGET_NEXT);
        numbers.insert(playlist.currentSong);
      }
      return static_cast<int>(numbers.size());
    };
    hands.Drop({songs.begin(), songs.begin() + 3});
    EXPECT_EQ(2, heard());
    hands.Drop({songs.begin() + 3, songs.begin() + 9}, true);
    EXPECT_EQ(8, heard());
    OpenPage(hands, PAGE_PLAYLIST);
    headless::AnswerDialog({folder.Path(), {songs.begin() + 9, songs.end()}});
    Choose(hands, WIDGET_ADD, "Add Files");
    EXPECT_EQ(14, playlist.count);
    EXPECT_EQ(13, heard());
  });
}

TEST_F(Program, CurrentSongThatHasGoneIsNone) {
  Run([this](const Hands& hands) {
    OpenPage(hands, PAGE_PLAYLIST);
    const auto removeFirstTwo = [&] {
      hands.Drop(Songs(3));
      Press(hands, WIDGET_PLAY);
      Press(hands, WIDGET_ROW);
      headless::SetKey(platform::Key::kShift, true);
      Press(hands, WIDGET_ROW + 1);
      headless::SetKey(platform::Key::kShift, false);
      playlist.currentSong = 2;
      Choose(hands, WIDGET_REMOVE, "Remove Selected");
      EXPECT_EQ(1, playlist.count);
      EXPECT_EQ(-1, playlist.currentSong);
      EXPECT_EQ("KWO", headless::Window().caption);
      for (int row = 0; row < playlist.visibleRows; ++row)
        EXPECT_EQ(-1, Find(WIDGET_ROW + row)->ProgramInSlot(2)) << row;
      EXPECT_EQ(1, transport.playing);
    };
    removeFirstTwo();
    Press(hands, WIDGET_PLAY);
    EXPECT_EQ(1, transport.paused) << "what plays is paused all the same";
    Press(hands, WIDGET_STOP);
    playlist.currentSong = 7;
    Press(hands, WIDGET_PLAY);
    EXPECT_TRUE(transport.playing && playlist.currentSong == 0) << "whoever left the number";
  });
}

TEST_F(Program, PlayingRowComesIntoViewUnlessHandsAreOnTheList) {
  Run([this](const Hands& hands) {
    hands.Drop(Songs(30));
    OpenPage(hands, PAGE_PLAYLIST);
    const auto next = [&](int presses) {
      for (; presses > 0; --presses) Press(hands, WIDGET_NEXT);
      return int{playlist.topIndex};
    };
    hands.Wait(31000);
    playlist.currentSong = 0;
    EXPECT_EQ(5, next(14)) << "song 14 on the last row";
    EXPECT_EQ("15. song14.mp3", Text(WIDGET_ROW + 9));
    Press(hands, WIDGET_PREVIOUS);
    EXPECT_EQ(5, playlist.topIndex);
    const platform::Point row = Middle(WIDGET_ROW);
    hands.Move(row.x, row.y);
    headless::TurnWheel(platform::kWheelNotch);
    hands.Wait(29000);
    EXPECT_EQ(2, next(1));
    hands.Wait(1000);
    EXPECT_EQ(6, next(1));
    playlist.currentSong = 3;
    EXPECT_EQ(4, next(1)) << "on the first row";
  });
}

// The place is that of the last run where the screens are the same.
TEST_F(Program, AnyScreenIsAPlaceForTheWindow) {
  const std::vector<platform::Rectangle> two{{0, 0, 1280, 800}, {1280, 0, 1024, 768}};
  const auto place = [] {
    const platform::Rectangle window = headless::Window().place;
    return std::pair{window.x, window.y};
  };
  const auto runOn = [&](const std::vector<platform::Rectangle>& screens, auto user) {
    headless::SetScreens(screens);
    Run([&](const Hands& hands) { user(hands); });
  };
  runOn(two, [](const Hands&) { platform::MoveWindow({2000, 500}); });
  runOn(two, [&](const Hands&) {
    EXPECT_EQ(std::pair(2000, 500), place()) << "half outside, as the user has left it";
  });
  runOn({two[0]}, [&](const Hands& hands) {
    EXPECT_EQ(std::pair(0, 0), place()) << "nothing of it was to be seen";
    headless::SetScreens(two);
    platform::MoveWindow({1250, 600});
    headless::SetScreens({two[0], {1280, 100, 1024, 600}});
    hands.Wait(20);
    EXPECT_EQ(std::pair(1280, 398), place()) << "wholly on the one that it touches most";
    platform::MoveWindow({700, 300});
  });
  // As many pixels of a screen twice as dense.
  runOn({{0, 0, 640, 400}}, [&](const Hands&) { EXPECT_EQ(std::pair(0, 0), place()); });
  // The first screen need not lie at the desktop's corner.
  runOn({{1280, 100, 1024, 768}, two[0]}, [](const Hands&) { platform::MoveWindow({9000, 0}); });
  runOn({{1280, 100, 1024, 768}, two[0]},
        [&](const Hands&) { EXPECT_EQ(std::pair(1280, 100), place()) << "its corner"; });
  runOn({two[0]}, [](const Hands&) { platform::MoveWindow({600, 300}); });
  runOn({{0, 0, 640, 400}}, [&](const Hands&) { EXPECT_EQ(std::pair(152, 98), place()); });
}

}  // namespace
}  // namespace kwo::test
