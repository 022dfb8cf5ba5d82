// What every control does under either mouse button, and what the menus do: all that changed, and
// nothing else.

#include <map>

#include "engine/transport.h"
#include "panels/equaliser_presets.h"
#include "panels/main_page.h"
#include "panels/pages.h"
#include "tests/app/program_fixture.h"
#include "toolkit/skin_description.h"

namespace kwo::test {
namespace {

using State = std::map<std::string, std::string>;

// All that a press can change.
State Everything() {
  State state;
  const auto add = [&](const char* name, auto value) { state[name] = std::to_string(value); };
  add("page", int{CurrentPage}), add("sub", MixerSubPage), add("flags", WindowFlags);
  add("display", int{MainDisplayMode}), add("visualiser", int{MainSAMode});
  add("tile", int{TheSkinHost->currentTile}), add("draws", int{TheSkinHost->VisualiserMode});
  add("vol", static_cast<int>(SliderVol)), add("pan", static_cast<int>(SliderPan));
  add("spd", static_cast<int>(SliderSpd)), add("cr", EffectCR), add("te", EffectTE);
  add("vr", EffectVR), add("ce", EffectCE), add("lt", EffectLT), add("eq", EffectEQSwitch);
  add("preset", int{EffectEQCurrent}), add("dj", int{transport.djMode}),
      add("mode", int{transport.playMode});
  add("repeat", int{transport.repeatOn}), add("shuffle", int{transport.shuffleOn});
  add("play", int{transport.playing}), add("pause", int{transport.paused});
  add("song", int{playlist.currentSong}), add("top", int{playlist.topIndex});
  add("names", int{playlist.displayMode});
  int lifted = 0;
  for (const auto& preset : EqPresetValues)
    for (float value : preset) lifted += value != 1.0f;
  add("lifted", lifted);
  const headless::WindowState window = headless::Window();
  add("topmost", window.topmost), add("visible", window.visible);
  add("minimised", window.minimised), add("captured", window.captured);
  add("pointer", window.pointerShown), add("typing", window.editFocused);
  state["list"] = Names();
  const auto menu = headless::LastMenu();
  state["menu"] = menu.empty() ? "" : menu[0];
  return state;
}

std::string Difference(State before, State after) {
  std::string difference;
  for (const auto& [name, value] : after)
    if (before[name] != value) difference += (difference.empty() ? "" : ", ") + name + '=' + value;
  return difference;
}

class Presses : public Program {
 protected:
  Presses() {
    eventWatcher = [](unsigned event, const Widget* widget, float a, float b) {
      if (!widget) return;
      told += ' ' + std::to_string(event) + ':' + std::to_string(static_cast<int>(a)) + ',' +
              std::to_string(static_cast<int>(b));
    };
  }
  ~Presses() override { eventWatcher = nullptr; }

  // What a press and release changes, after the events that they must be.  All controls but sliders
  // and pictures move under it.
  static std::string Changes(const Hands& hands, int index, headless::Button button) {
    const State before = Everything();
    const Widget& widget = *Find(index);
    const WidgetGroup& group = Group(widget.group);
    const platform::Point place = Middle(index);
    hands.Move(place.x, place.y);
    const int x = widget.x;
    const std::string local = std::to_string(place.x - group.absX - x) + ',' +
                              std::to_string(place.y - group.absY - widget.y);
    const int checked = widget.frame;
    told.clear();
    hands.Down(button);
    bool nudged = false;
    for (int frame = 0; frame < 4; ++frame) {
      hands.Wait(50);
      nudged = nudged || (widget.x != x && widget.x - x <= 3);
    }
    const bool transport = index >= WIDGET_PLAY && index <= WIDGET_PREVIOUS;
    EXPECT_EQ(transport || widget.kind == BUTTON_WIDGET || widget.kind == CHECK_WIDGET, nudged)
        << index;
    hands.Up(button);
    const int down = button == kLeft ? 513 : 516;
    const std::string press = std::to_string(down), release = std::to_string(down + 1);
    const std::string own = widget.kind == BUTTON_WIDGET ? "10:" + press + ",0"
                            : widget.kind == CHECK_WIDGET
                                ? "20:" + std::to_string(1 - checked) + ",0"
                                : "100:0,0";
    EXPECT_EQ(' ' + press + ':' + local + ' ' + own + ' ' + release + ':' + local, told) << index;
    hands.Wait(1500);
    return Difference(before, Everything());
  }
  static std::string ChangesOfMenu(const Hands& hands, int button, const char* item) {
    const State before = Everything();
    Choose(hands, button, item);
    hands.Wait(500);
    State after = Everything();
    after["menu"] = before.at("menu");
    return Difference(before, after);
  }

  inline static std::string told;  // the events of widgets
};

struct PressCase {
  int index;
  const char *left, *right;
};

TEST_F(Presses, EveryControlChangesItsOwn) {
  const std::pair<std::pair<int, int>, std::vector<PressCase>> kPages[] = {
      {{PAGE_MAIN, 0},
       {{WIDGET_PLAY, "play=1", "pause=1"},
        {WIDGET_STOP, "play=0", ""},
        {WIDGET_NEXT, "song=0", "song=1"},
        {WIDGET_PREVIOUS, "song=0", "song=4"},
        {WIDGET_PAGE_MAIN, "", ""},
        {WIDGET_DIGIT + 3, "", ""},
        {WIDGET_MAIN_BOX, "", ""},
        {WIDGET_SONG_TEXT, "", ""},
        {WIDGET_VISUALISER, "", ""},
        {WIDGET_DISPLAY_MODE, "display=1", "display=2, draws=2, tile=59"},
        {WIDGET_DISPLAY_MODE, "display=3", "display=0, draws=1, tile=0"},
        {WIDGET_VISUALISER_MODE, "visualiser=1", "visualiser=2"},
        {WIDGET_PAGE_MAIN + 1, "draws=0, page=1, tile=1", ""}}},
      {{PAGE_PLAYLIST, 0},
       {{WIDGET_ROW + 1, "list=0 *1 2 3 4 ", ""},
        {WIDGET_ROW + 5, "", ""},
        {WIDGET_ITEM_DOWN, "list=0 2 *1 3 4 ", "list=0 2 3 4 *1 , song=3"},
        {WIDGET_ITEM_UP, "list=0 2 3 *1 4 , song=4", "list=*1 0 2 3 4 "},
        {WIDGET_ITEM_DOWN, "list=0 *1 2 3 4 ", "list=0 2 3 4 *1 , song=3"},
        {WIDGET_FUNCTION, "menu=Select All", ""},
        {WIDGET_ADD, "menu=Open Files", ""},
        {WIDGET_REMOVE, "menu=Remove Selected", ""}}},
      {{PAGE_MIXER, 0},
       {{WIDGET_MIXER_BOX, "", ""},
        {WIDGET_SUB_PAGE, "", ""},
        {WIDGET_VOLUME_LABEL, "vol=100", ""},
        {WIDGET_PAN_LABEL, "pan=0", ""},
        {WIDGET_SPEED_LABEL, "spd=100", ""}}},
      {{PAGE_MIXER, 1},
       {{WIDGET_EQ_SWITCH, "eq=1", "eq=0"},
        {WIDGET_PRESET_BACK, "", ""},
        {WIDGET_PRESET_FORWARD, "preset=1", "preset=2"},
        {WIDGET_PRESET_BACK, "preset=1", "preset=0"},
        {WIDGET_EQ_RESET, "lifted=1", ""},
        {WIDGET_PRESET_NAME, "typing=1", "typing=0"}}},
      {{PAGE_MIXER, 2},
       {{WIDGET_CRYSTALIZER, "cr=1", "cr=0"},
        {WIDGET_ENHANCER, "te=1", "te=2"},
        {WIDGET_ENHANCER, "te=0", "te=1"},
        {WIDGET_VOCAL_REDUCER, "vr=1", "vr=0"},
        {WIDGET_WIDE_STEREO, "ce=1", "ce=0"},
        {WIDGET_LIMITER, "lt=1", "lt=0"}}},
      {{PAGE_MIXER, 3},
       {{WIDGET_DJ, "dj=1", "dj=0"},
        {WIDGET_PLAY_MODE, "mode=1", "mode=2"},
        {WIDGET_PLAY_MODE, "mode=0", "mode=1"},
        {WIDGET_REPEAT, "repeat=1", "repeat=0"},
        {WIDGET_SHUFFLE, "shuffle=1", "shuffle=0"}}},
      {{PAGE_INFO, 3}, {{PageButton(PAGE_INFO), "", ""}, {WIDGET_NEXT, "song=4", ""}}},
      {{PAGE_CONFIG, 3}, {{PageButton(PAGE_CONFIG), "", ""}}},
      {{PAGE_WINDOW, 3},
       {{WIDGET_ON_TOP, "flags=4, topmost=1", "flags=0, topmost=0"},
        {WIDGET_AUTO, "flags=1, topmost=1", "flags=2"},
        {WIDGET_ON_TOP, "flags=6", "flags=2"},
        {WIDGET_AUTO, "flags=0, topmost=0", "flags=1, topmost=1"},
        {WIDGET_ON_TOP, "", ""}}},
  };
  Run([&](const Hands& hands) {
    hands.Drop(Songs(5));
    for (const auto& [place, cases] : kPages) {
      if (CurrentPage != place.first) OpenPage(hands, place.first);
      if (MixerSubPage != place.second) OpenSubPage(hands, place.second);
      SliderVol = 77, SliderPan = -7, SliderSpd = 99;
      EqPresetValues[0][3] = EqPresetValues[2][3] = 1.25f;
      ApplyMixerPage();
      for (const PressCase& c : cases) {
        EXPECT_EQ(c.left, Changes(hands, c.index, kLeft)) << c.index;
        EXPECT_EQ(c.right, Changes(hands, c.index, kRight)) << c.index;
      }
    }
  });
}

// The pieces of a slider in pairs: the last pixel of one, the first of the next.
TEST_F(Presses, SlidersPartIntoCapsAndThumb) {
  struct Case {
    int at, value;
  };
  // Caps of 18 pixels; the numbers are those of the first cap, and of the second on a slider so
  // long.
  const auto eventAt = [](int at, int length, int first) {
    return std::to_string(at <= 18 ? first : at >= length - 18 ? first + 1 : first + 2) + ":0,0";
  };
  Run([&](const Hands& hands) {
    OpenPage(hands, PAGE_MIXER);
    const Widget& volume = *Find(WIDGET_VOLUME);
    const int left = kPaneX + volume.x, y = Middle(WIDGET_VOLUME).y;
    // A press, the piece's own event, and none for the release.
    const auto press = [&](int alongX, int alongY, headless::Button button) {
      told.clear();
      hands.Press(alongX, alongY, button);
      EXPECT_EQ(button == kLeft ? " 513:" : " 516:", told.substr(0, 5));
      EXPECT_TRUE(headless::Window().pointerShown);
      return told.substr(told.rfind(' ') + 1);
    };
    // Of 210 pixels with caps of 18, the thumb's middle goes from 27 to 183.
    for (const Case& c : {Case{1, 99}, {18, 99}, {19, 0}, {105, 100}, {191, 198}, {192, 101}})
      for (headless::Button button : {kLeft, kRight}) {
        SliderVol = 100;
        EXPECT_EQ(eventAt(c.at, 210, 40), press(left + c.at, y, button));
        EXPECT_EQ(c.value, static_cast<int>(SliderVol)) << c.at;
      }
    for (const auto& [label, index, end] : {std::tuple{WIDGET_PAN_LABEL, WIDGET_PAN, "Pan = -100"},
                                            {WIDGET_SPEED_LABEL, WIDGET_SPEED, "Speed = 75"}}) {
      const platform::Point middle = Middle(index);
      hands.Drag(middle.x, middle.y, 0, middle.y);
      hands.Press(kPaneX + Find(index)->x + 5, middle.y);
      EXPECT_EQ(end, Text(label)) << "no further than its end";
    }
    hands.Drop(Songs(30));
    OpenPage(hands, PAGE_PLAYLIST);
    const Widget& bar = *Find(WIDGET_SCROLL_BAR);
    const int x = Middle(WIDGET_SCROLL_BAR).x, top = kPaneY + bar.y;
    // Of 142 pixels, the thumb's middle goes from 27 to 115 for 20 places.
    for (const Case& c : {Case{1, 9}, {18, 9}, {19, 0}, {71, 10}, {123, 19}, {124, 11}}) {
      playlist.topIndex = 10;
      EXPECT_EQ(eventAt(c.at, 142, 30), press(x, top + c.at, kLeft));
      EXPECT_EQ(c.value, playlist.topIndex) << c.at;
    }
  });
}

TEST_F(Presses, ThumbIsDraggedWithinItsTrack) {
  Run([](const Hands& hands) {
    OpenPage(hands, PAGE_MIXER);
    const Widget& slider = *Find(WIDGET_VOLUME);
    const platform::Rectangle window = headless::Window().place;
    const platform::Point middle = Middle(WIDGET_VOLUME);
    const int left = kPaneX + slider.x;
    hands.Move(middle.x, middle.y);
    hands.Down();
    EXPECT_TRUE(!headless::Window().pointerShown && headless::Window().captured);
    hands.Move(left + 18 + 87, middle.y + 30);
    EXPECT_EQ(100.0f, SliderVol);
    hands.Move(0, middle.y + 40);
    EXPECT_EQ(0.0f, SliderVol);
    EXPECT_EQ(window.x + left + 18, headless::PointerPlace().x) << "pinned at the track's end";
    hands.Move(480, middle.y + 40);
    EXPECT_EQ(200.0f, SliderVol);
    hands.Move(left + 100, middle.y + 50);
    hands.Up();
    EXPECT_EQ((platform::Point{window.x + left + 100, window.y + middle.y}),
              headless::PointerPlace())
        << "beside the slider where it was taken, along it where it was left";
    EXPECT_TRUE(headless::Window().pointerShown && !headless::Window().captured);
    EXPECT_FLOAT_EQ(SliderVol * 0.01f, TheMixer->volume);
  });
}

TEST_F(Presses, EveryMenuItemDoesWhatItSays) {
  Run([this](const Hands& hands) {
    const std::vector<std::string> songs = Songs(3);
    const auto menu = [&](int button, const char* item) {
      return ChangesOfMenu(hands, button, item);
    };
    OpenPage(hands, PAGE_PLAYLIST);
    headless::AnswerDialog({"", {songs[2], songs[0]}});
    EXPECT_EQ("list=2 0 , song=-1", menu(WIDGET_ADD, "Open Files"));
    headless::AnswerDialog({"", {songs[1]}});
    transport.shuffleOn = 1, transport.shufflePosition = 2;
    EXPECT_EQ("list=2 0 1 ", menu(WIDGET_ADD, "Add Files"));
    EXPECT_EQ(0, transport.shufflePosition) << "they are shuffled in";
    transport.shuffleOn = 0;
    EXPECT_EQ("", menu(WIDGET_ADD, "Add Files")) << "a cancelled dialog changes nothing";
    EXPECT_EQ("list=0 1 2 ", menu(WIDGET_FUNCTION, "Sort"));
    EXPECT_EQ("list=*0 *1 *2 ", menu(WIDGET_FUNCTION, "Select All"));
    EXPECT_EQ("list=0 1 2 ", menu(WIDGET_FUNCTION, "Deselect All"));
    Press(hands, WIDGET_NEXT);
    const std::string first = folder.File("song0.mp3");
    WriteBytes(first, ReadBytes(first) + Tag("Dawn", "Ann", "Light"));
    menu(WIDGET_FUNCTION, "Select All");
    EXPECT_EQ("list=0 1 2 ", menu(WIDGET_FUNCTION, "Read Tag Information"));
    const struct {
      const char *item, *changes, *shown;
    } kForms[] = {{"Show : Title", "names=1", "Dawn"},
                  {"Show : Title - Artist", "names=2", "Dawn-Ann"},
                  {"Show : Artist - Title", "names=3", "Ann-Dawn"},
                  {"Show : Artist - Album - Title", "names=4", "Ann-Light-Dawn"},
                  {"Show : Filename", "names=0", "song0.mp3"}};
    for (const auto& form : kForms) {
      EXPECT_EQ(form.changes, menu(WIDGET_FUNCTION, form.item));
      const std::string shown = form.shown;
      EXPECT_EQ("1. " + shown, Text(WIDGET_ROW));
      EXPECT_EQ("4. ------", Text(WIDGET_ROW + 3));
      EXPECT_EQ(shown, Text(WIDGET_SONG_TEXT).substr(0, shown.size()));
      EXPECT_EQ(shown, headless::Window().caption);
      Choose(hands, WIDGET_FUNCTION, "");
      int marked = 0;
      for (const std::string& item : headless::LastMenu()) {
        EXPECT_EQ(item == '*' + std::string(form.item), item[0] == '*');
        marked += item[0] == '*';
      }
      EXPECT_EQ(1, marked);
      EXPECT_EQ(skin.SelectedSongColor, headless::MenuColors().pointedGround);
    }
    std::filesystem::remove(folder.File("song1.mp3"));
    EXPECT_EQ("list=0 2 ", menu(WIDGET_REMOVE, "Remove Dead Links"));
    Press(hands, WIDGET_ROW + 1);
    EXPECT_EQ("list=*2 ", menu(WIDGET_REMOVE, "Remove Unselected"));
    EXPECT_EQ("1. song2.mp3", Text(WIDGET_ROW));
    EXPECT_EQ("song2.mp3", Text(WIDGET_SONG_TEXT).substr(0, 9));
    EXPECT_EQ("list=, song=-1", menu(WIDGET_REMOVE, "Remove Selected"));
    EXPECT_EQ("1. ------", Text(WIDGET_ROW));
    EXPECT_EQ("Brightwater Music Deck\nMade with care by Tavarine", Text(WIDGET_SONG_TEXT));
    const auto lines = headless::TextOn(Find(WIDGET_SONG_TEXT)->image->bits);
    EXPECT_EQ((platform::Point{0, 13}), lines[1].place) << "under the first";
    for (const headless::TextLine& line : lines) EXPECT_EQ(skin.FontColor, line.color);
    EXPECT_EQ("KWO", headless::Window().caption);
    std::filesystem::create_directory(folder.File("more"));
    std::filesystem::rename(folder.File("song2.mp3"), folder.File("more/song7.mp3"));
    headless::AnswerDialog({"", {folder.File("more")}});
    EXPECT_EQ("list=7 ", menu(WIDGET_ADD, "Open Directory"));
    headless::AnswerDialog({"", {folder.File("more")}});
    EXPECT_EQ("list=7 7 ", menu(WIDGET_ADD, "Add Directory"));
    Press(hands, WIDGET_PLAY);
    EXPECT_EQ("list=, play=0, song=-1", menu(WIDGET_REMOVE, "Remove All"));
    EXPECT_EQ("Brightwater Music Deck\nMade with care by Tavarine", Text(WIDGET_SONG_TEXT));
  });
}

}  // namespace
}  // namespace kwo::test
