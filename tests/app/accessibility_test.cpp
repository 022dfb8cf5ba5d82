#include <algorithm>
#include <cctype>
#include <cmath>
#include <set>

#include "panels/equaliser_presets.h"
#include "panels/main_page.h"
#include "tests/app/program_fixture.h"

namespace kwo::test {
namespace {

using enum platform::Ask;
using enum platform::ControlNews;
using platform::Control;
using platform::ControlList;
using platform::Role;

class Accessibility : public Program {
 protected:
  static Control Named(const std::string& name) {
    for (const Control& control : headless::Controls().controls)
      if (control.name == name) return control;
    ADD_FAILURE() << "no control is named " << name;
    return {};
  }

  static bool Has(const std::string& name) {
    const ControlList list = headless::Controls();
    return std::any_of(list.controls.begin(), list.controls.end(),
                       [&](const Control& control) { return control.name == name; });
  }

  // What a client does to the control of a name, and time for it to come to rest.
  static void Do(const Hands& hands, platform::Ask ask, const std::string& name, double value = 0) {
    headless::AskOfPlayer({.ask = ask, .value = value, .control = Named(name).id});
    hands.Wait(700);
  }

  static void PressPage(const Hands& hands, const std::string& name) {
    Do(hands, kPress, name);
    EXPECT_TRUE(Named(name).pressed) << name;
  }

  // Of the news since the last call, those of a kind, by the controls' names now.
  static std::string News(platform::ControlNews news) {
    std::string names;
    const ControlList list = headless::Controls();
    for (const platform::ControlChange& change : headless::TakeControlNews()) {
      if (change.news != news) continue;
      const Control* control = list.Find(change.id);
      names += (control ? control->name : std::to_string(change.id)) + ";";
    }
    return names;
  }

  // A press of the mouse on a widget does something.
  static bool TakesPresses(int index) {
    for (int picture : {WIDGET_TOP_BOX, WIDGET_MAIN_BOX, WIDGET_PLAYLIST_BOX, WIDGET_MIXER_BOX,
                        WIDGET_SONG_TEXT, WIDGET_VISUALISER})
      if (index == picture) return false;
    const bool row = index >= WIDGET_ROW && index < WIDGET_ROW + kMaxRows;
    if (row && playlist.topIndex + index - WIDGET_ROW >= playlist.count) return false;
    return index >= WIDGET_PAGE_MAIN;
  }

  static void ExpectInWords(const Control& control) {
    EXPECT_TRUE(std::any_of(control.name.begin(), control.name.end(), [](char letter) {
      return std::isalpha(static_cast<unsigned char>(letter)) != 0;
    })) << control.id;
    EXPECT_FALSE(control.place.Empty()) << control.name;
    EXPECT_EQ(control.place, control.place.Intersected(Group(GROUP_INTERFACE).Shown()))
        << control.name;
    const bool bounded = control.least <= control.value && control.value <= control.most;
    EXPECT_TRUE(control.role != Role::kSlider || bounded) << control.name;
  }

  // Everything that a pointer can press is told, at the place where it can, and nothing else but
  // labels, the list and the visualiser; all of it in words, within the window.
  static void ExpectWholePage() {
    const ControlList list = headless::Controls();
    EXPECT_TRUE(list.atRest);
    std::set<int> ids, pressed;
    for (const Control& control : list.controls) {
      EXPECT_TRUE(ids.insert(control.id).second) << control.name;
      ExpectInWords(control);
    }
    for (int index = 0; index < SkinHost::kWidgets; ++index) {
      const Widget* widget = Find(index);
      if (!widget || !TakesPresses(index) || !Inside(index)) continue;
      const platform::Point place = Middle(index);
      if (TheSkinHost->HitTest(place.x, place.y) != widget) continue;
      const Control* control = list.At(place);
      ASSERT_TRUE(control) << index;
      const bool curve = index == WIDGET_CURVE || index == WIDGET_CURVE + 1;
      const bool digit = index >= WIDGET_DIGIT && index < WIDGET_DIGIT + kDigits;
      EXPECT_EQ(curve ? CONTROL_CURVE + kBands / 2 : digit ? WIDGET_DIGIT : index, control->id);
      pressed.insert(control->id);
      for (int value = 0; curve && value < kPresetValues; ++value)
        pressed.insert(CONTROL_CURVE + value);
    }
    for (int other : {WIDGET_SONG_TEXT, WIDGET_VISUALISER, WIDGET_PLAYLIST_BOX})
      if (list.Find(other)) pressed.insert(other);
    EXPECT_EQ(ids, pressed);
  }
};

TEST_F(Accessibility, EveryControlOfEveryPageAndModeIsToldInWordsWhereAPointerFindsIt) {
  const std::vector<std::string> songs = Songs(12);
  Run([&](const Hands& hands) {
    hands.Drop(songs);
    hands.Wait(1000);
    for (int mode = 0; mode < 4; ++mode) {
      SCOPED_TRACE(testing::Message() << "display mode " << mode);
      for (const char* page :
           {"Playlist page", "Mixer page", "Equaliser page", "Effects", "DJ and play order",
            "Sliders", "Info page", "Config page", "Window page"}) {
        if (mode == 1 || mode == 2) continue;  // the other pages are as in the modes beside
        SCOPED_TRACE(page);
        PressPage(hands, page);
        ExpectWholePage();
      }
      PressPage(hands, "Main page");
      ExpectWholePage();
      if (mode == 3) {
        headless::MinimiseByUser();
        hands.Wait(1000);
        EXPECT_TRUE(headless::Controls().controls.empty());
        headless::RestoreByUser();
        hands.Wait(1000);
        Do(hands, kPress, "Visualiser");
        EXPECT_EQ(1u, headless::Controls().controls.size());
        ExpectWholePage();
        Do(hands, kPress, "Visualiser");
      }
      Do(hands, kPress, "Next display mode");
    }
    Do(hands, kPress, "Window page");
    Do(hands, kPress, "ALWAYS ON TOP [OFF]");
    hands.Move(Middle(WIDGET_QUIT).x, Middle(WIDGET_QUIT).y);
    Do(hands, kPress, "AUTO [OFF]");
    EXPECT_TRUE(Has("ALWAYS ON TOP [ON]") && Has("AUTO [HIDE]"));
    Do(hands, kPress, "QUIT");
    hands.Wait(3000);
    EXPECT_FALSE(AppReady);
    EXPECT_TRUE(headless::Controls().controls.empty());
  });
  WindowFlags = 0;
}

TEST_F(Accessibility, AChangeOfThePageIsToldOnceWhenTheMotionHasEnded) {
  Run([&](const Hands& hands) {
    hands.Move(Middle(PageButton(PAGE_WINDOW)).x, Middle(PageButton(PAGE_WINDOW)).y);
    headless::TakeControlNews();
    hands.Down();
    // The list itself is that of the page to come, at its places of rest.
    EXPECT_FALSE(Has("Next visualiser"));
    const platform::Rectangle quit = Named("QUIT").place;
    EXPECT_TRUE(headless::TakeControlNews().empty());
    hands.Up();
    hands.Wait(1000);
    EXPECT_EQ(quit, Named("QUIT").place);
    std::vector<platform::ControlChange> news = headless::TakeControlNews();
    const auto count = [&](platform::ControlNews kind) {
      return std::count_if(news.begin(), news.end(),
                           [kind](const auto& change) { return change.news == kind; });
    };
    EXPECT_EQ(5, count(kGone));
    EXPECT_EQ(4, count(kAppeared));
    EXPECT_EQ(2, count(kState));
    hands.Wait(1000);
    EXPECT_TRUE(headless::TakeControlNews().empty());
    // A row without a song is none.
    PressPage(hands, "Playlist page");
    news = headless::TakeControlNews();
    EXPECT_EQ(5 + 1 + 1 + 1, count(kAppeared));
  });
}

TEST_F(Accessibility, SongsAreSelectedAndPlayedAndTheListIsScrolled) {
  const std::vector<std::string> songs = Songs(15);
  Run([&](const Hands& hands) {
    hands.Drop(songs);
    PressPage(hands, "Playlist page");
    const int rows = playlist.visibleRows;
    Do(hands, kToggle, "2. song1.mp3");
    Do(hands, kToggle, "4. song3.mp3");
    EXPECT_TRUE(Named("2. song1.mp3").selected && Named("4. song3.mp3").selected);
    Do(hands, kToggle, "2. song1.mp3");
    EXPECT_FALSE(Named("2. song1.mp3").selected);
    EXPECT_TRUE(Named("4. song3.mp3").selected);
    headless::TakeControlNews();
    Do(hands, kPress, "3. song2.mp3");
    EXPECT_FALSE(headless::Window().captured);
    EXPECT_EQ(2, playlist.currentSong);
    EXPECT_TRUE(Named("3. song2.mp3").current && Named("3. song2.mp3").selected);
    EXPECT_TRUE(Named("Play").pressed && transport.playing);
    EXPECT_NE(std::string::npos, News(kState).find("Play;"));
    Do(hands, kPress, "Play");
    EXPECT_FALSE(Named("Play").pressed);

    Do(hands, kSetValue, "First song shown", 4);
    EXPECT_EQ(3, playlist.topIndex);
    Do(hands, kStepValue, "First song shown", -1);
    EXPECT_EQ(2, playlist.topIndex);
    Do(hands, kSetValue, "First song shown", 1e9);
    EXPECT_EQ(15 - rows, playlist.topIndex);
    EXPECT_EQ(16 - rows, Named("First song shown").value);
    EXPECT_FALSE(Has("1. song0.mp3"));

    headless::AnswerMenu("Select All");
    Do(hands, kPress, "List functions");
    EXPECT_TRUE(Named("15. song14.mp3").selected);
    // What has gone with its page can't be pressed any more.
    const int row = Named("15. song14.mp3").id;
    PressPage(hands, "Main page");
    headless::AskOfPlayer({.ask = kPress, .control = row});
    hands.Wait(500);
    EXPECT_EQ(2, playlist.currentSong);
  });
}

TEST_F(Accessibility, SlidersBoxesPresetsAndNamesAreSetAsByTheMouse) {
  Run([&](const Hands& hands) {
    PressPage(hands, "Mixer page");
    Do(hands, kSetValue, "Volume", 150);
    EXPECT_FLOAT_EQ(1.5f, TheMixer->volume);
    Do(hands, kSetValue, "Volume", NAN);
    EXPECT_TRUE(Has("Volume = 150"));
    Do(hands, kStepValue, "Pan", -1);
    EXPECT_FLOAT_EQ(-0.01f, TheMixer->pan);
    Do(hands, kPress, "Volume = 150");
    EXPECT_EQ(100, Named("Volume").value);
    // A hand that holds a thumb lets go of it, as at any other press.
    hands.Move(Middle(WIDGET_VOLUME).x, Middle(WIDGET_VOLUME).y);
    hands.Down();
    hands.Wait(100);
    EXPECT_FALSE(headless::Window().pointerShown);
    PressPage(hands, "Effects");
    EXPECT_TRUE(headless::Window().pointerShown);
    hands.Up();
    Do(hands, kToggle, "Crystalizer");
    EXPECT_TRUE(Named("Crystalizer").checked && TheMixer->crystalizer);
    Do(hands, kToggle, "T. Enhancer");
    EXPECT_TRUE(Named("T. Enhancer-1").checked);

    PressPage(hands, "Equaliser page");
    Do(hands, kSetValue, "Band 7, 804 Hz", 120);
    Do(hands, kSetValue, "Equaliser level", 0);
    const float* values = EqPresetValues[EffectEQCurrent];
    EXPECT_FLOAT_EQ(1.2f, values[6]);
    EXPECT_FLOAT_EQ(0.55f, values[kMasterValue]);
    EXPECT_FLOAT_EQ(1.2f, TheMixer->eqValues[6]);
    Do(hands, kToggle, "Equaliser");
    EXPECT_EQ(EffectEQSwitch != 0, Named("Equaliser").checked);
    const int preset = EffectEQCurrent;
    Do(hands, kPress, "Next preset");
    EXPECT_EQ(preset + 1, EffectEQCurrent);
    const std::string button = std::to_string(preset + 2) + ". ";
    Do(hands, kPress, button + EqPresetNames[EffectEQCurrent]);
    EXPECT_TRUE(headless::Window().editFocused);
    headless::TypeText("!");
    hands.Wait(200);
    Do(hands, kPress, button + EqPresetNames[EffectEQCurrent]);
    EXPECT_EQ('!', std::string(EqPresetNames[EffectEQCurrent]).back());
    EXPECT_TRUE(Has(button + EqPresetNames[EffectEQCurrent]));
  });
}

TEST_F(Accessibility, TheSongsLineTellsItsChangesAndTheTimeOnlyWhereTheFocusIs) {
  const std::vector<std::string> songs = LongSongs(2);
  Run([&](const Hands& hands) {
    hands.Drop(songs);
    hands.Wait(500);
    headless::TakeControlNews();
    Do(hands, kPress, "Play");
    hands.Wait(3000);
    EXPECT_EQ("", News(kName));
    Do(hands, kPress, "Previous");
    EXPECT_EQ(0u, News(kName).find("song"));
    const auto time = [] { return headless::Controls().Find(WIDGET_DIGIT)->name; };
    headless::FocusControl(WIDGET_DIGIT);
    headless::TakeControlNews();
    hands.Wait(1000);
    EXPECT_EQ(time() + ";", News(kName));
    EXPECT_EQ("", News(kName));
    Do(hands, kSetValue, time(), 30);
    EXPECT_EQ(0u, time().find("Time 0:3"));
  });
}

TEST_F(Accessibility, ControlsWithoutALabelHaveTheirNameAsATip) {
  Run([&](const Hands& hands) {
    const auto tip = [](int index) { return headless::TipAt(Middle(index)); };
    EXPECT_EQ("Play", tip(WIDGET_PLAY));
    EXPECT_EQ("Next visualiser", tip(WIDGET_VISUALISER_MODE));
    EXPECT_EQ("", tip(WIDGET_SONG_TEXT));
    OpenPage(hands, PAGE_MIXER);
    EXPECT_EQ("", tip(WIDGET_VOLUME));
    OpenSubPage(hands, 1);
    EXPECT_EQ("Band 9, 1952 Hz", tip(WIDGET_CURVE));
    EXPECT_EQ("Previous preset", tip(WIDGET_PRESET_BACK));
    EXPECT_EQ("", tip(WIDGET_EQ_RESET));
  });
}

}  // namespace
}  // namespace kwo::test
