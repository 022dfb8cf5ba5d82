#include "panels/mixer_page.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "engine/shuffle_master.h"
#include "engine/transport.h"
#include "panels/equaliser_curve.h"
#include "panels/equaliser_presets.h"
#include "panels/panel_tools.h"
#include "panels/preset_name_edit.h"
#include "toolkit/skin_description.h"

namespace kwo {

float SliderVol = 100, SliderPan = 0, SliderSpd = 100;
int EffectCR, EffectTE, EffectVR, EffectCE, EffectLT;

namespace {

constexpr int kNameWidth = 160;

// The sub-pages' measures, beyond those of every page.
struct MixerLayout : Layout {
  explicit MixerLayout(int groupBoxHeight)
      : boxHeight(groupBoxHeight),
        top(margin + boxHeight),
        area(Bottom() - top),
        labelWidth(width / 5 * 2),
        curveHeight(area / 3 * 2),
        presetY(top + curveHeight + margin) {}
  int boxHeight, top, area, labelWidth, curveHeight, presetY;
};

void MakeButton(int index, const char* text, int width, const MixerLayout& layout, int x, int y,
                int kind = BUTTON_WIDGET) {
  const char* file = kind == CHECK_WIDGET ? "cc-checkbox.bmp" : "cc-button.bmp";
  TheSkinHost->CreateImageWidget(index, file, width, layout.fontHeight, kind, GROUP_INTERFACE);
  Label(index, text);
  Find(index)->SetFlyIn(x, y);
}

void HangByMiddle(Widget& widget) {
  widget.offsetX = 0;
  widget.offsetY = widget.height / 2;
}

// The next of `count` states that go round; the first behind one that a setting brought from
// beyond.
int NextState(int state, int count) {
  return state >= 0 && state < count - 1 ? state + 1 : 0;
}

// One of a row's texts; for a number that a setting brought from beyond them, the first.
template <std::size_t kCount>
const char* TextFor(const char* const (&texts)[kCount], int number) {
  return texts[number >= 0 && number < static_cast<int>(kCount) ? number : 0];
}

void SetCheck(int index, int state) {
  Find(index)->ApplyValue(state != 0 ? CHECK_ON : CHECK_OFF, 0);
}

// The sliders, each with a label that is its button.
struct SliderRow {
  int label, slider;
  const char* name;
  float* variable;
  float least, most, rest;
  float Range() const { return most - least; }
};

enum SliderPlace : int { SLIDER_VOLUME, SLIDER_PAN, SLIDER_SPEED };
const SliderRow kSliders[] = {
    {WIDGET_VOLUME_LABEL, WIDGET_VOLUME, "Volume", &SliderVol, 0, 200, 100},
    {WIDGET_PAN_LABEL, WIDGET_PAN, "Pan", &SliderPan, -100, 100, 0},
    {WIDGET_SPEED_LABEL, WIDGET_SPEED, "Speed", &SliderSpd, 75, 125, 100},
};

void BuildSliders(const MixerLayout& layout) {
  const int pitch = (layout.height - layout.bandHeight - layout.boxHeight) / 4;
  int y = layout.boxHeight;
  for (const SliderRow& row : kSliders) {
    y += pitch;
    MakeButton(row.label, row.name, layout.labelWidth, layout, layout.margin, y);
    TheSkinHost->CreateImageWidget(row.slider, "cc-sliderh.bmp", layout.width / 2, 0,
                                   HORIZONTAL_SLIDER, GROUP_INTERFACE);
    Widget& slider = *Find(row.slider);
    slider.SetFlyIn(layout.width / 2 - layout.margin, y);
    slider.ApplyValue(PART_REST, 0);
    HangByMiddle(*Find(row.label));
    HangByMiddle(slider);
  }
}

void MoveSliders(int program) {
  for (const SliderRow& row : kSliders) {
    Move(row.label, program);
    Move(row.slider, program);
  }
}

std::string SliderText(const SliderRow& row) {
  char text[64];
  std::snprintf(text, sizeof text, "%s = %d", row.name, static_cast<int>(*row.variable));
  return text;
}

void ApplySliders() {
  for (const SliderRow& row : kSliders) {
    Find(row.slider)->ApplyValue(PART_REST, (*row.variable - row.least) / row.Range());
    Label(row.label, SliderText(row).c_str());
  }
  TheMixer->volume = SliderVol * 0.01f;
  TheMixer->pan = SliderPan * 0.01f;
  TheMixer->speed = SliderSpd * 0.01f;
}

void ListSliders(platform::ControlList& list) {
  for (const SliderRow& row : kSliders) {
    ListWidget(list, row.label, SliderText(row), Named::kByLabel);
    platform::Control* slider = ListWidget(list, row.slider, row.name, Named::kByLabel);
    if (!slider) continue;
    slider->value = static_cast<int>(*row.variable);
    slider->least = row.least;
    slider->most = row.most;
  }
}

void StepSlider(const Widget* widget, float by) {
  for (const SliderRow& row : kSliders) {
    if (widget != Find(row.slider)) continue;
    *row.variable =
        by < 0 ? std::max(*row.variable + by, row.least) : std::min(*row.variable + by, row.most);
    ApplyMixerPage();
  }
}

void DragSlider(const Widget* widget, float position) {
  for (const SliderRow& row : kSliders) {
    if (widget != Find(row.slider)) continue;
    *row.variable = static_cast<float>(static_cast<int>(position * row.Range() + row.least));
    ApplyMixerPage();
  }
}

void PressSliderLabel(const Widget* widget) {
  for (const SliderRow& row : kSliders) {
    if (widget != Find(row.label)) continue;
    *row.variable = row.rest;
    ApplyMixerPage();
  }
}

void SetSlider(const SliderRow& row, double percent) {
  *row.variable = static_cast<float>(std::lround(std::clamp<double>(percent, row.least, row.most)));
  ApplyMixerPage();
}

// The equaliser: the curve's pair, the buttons below it, and the preset's line.

void StepPreset(int by) {
  EffectEQCurrent = std::clamp(EffectEQCurrent + by, 0, kPresets - 1);
  DrawEqualiser();
  Dip();
}

// While a name is being typed, the buttons of its line only end that.
template <auto press>
void UnlessTyping() {
  if (platform::EditHasFocus()) {
    EndNameEdit();
  } else {
    press();
  }
}

void ResetCurve() {
  std::fill_n(EqPresetValues[EffectEQCurrent], kPresetValues, 1.0f);
  DrawEqualiser();
  Dip();
}

void SwitchEqualiser() {
  EffectEQSwitch = !EffectEQSwitch;
  DrawEqualiser();
  Dip();
}

constexpr struct {
  int index;
  void (*press)();
} kEqualiserWidgets[] = {
    {WIDGET_CURVE, nullptr},
    {WIDGET_CURVE + 1, nullptr},
    {WIDGET_EQ_SWITCH, SwitchEqualiser},
    {WIDGET_EQ_RESET, ResetCurve},
    {WIDGET_PRESET_NAME, UnlessTyping<BeginNameEdit>},
    {WIDGET_PRESET_BACK, UnlessTyping<[] { StepPreset(-1); }>},
    {WIDGET_PRESET_FORWARD, UnlessTyping<[] { StepPreset(1); }>},
};

void MakeStepButton(int index, const char* file) {
  TheSkinHost->CreateImageWidget(index, file, 0, 0, BUTTON_WIDGET, GROUP_INTERFACE);
}

void BuildEqualiser(const MixerLayout& layout) {
  BuildCurve(layout.top, layout.curveHeight);
  MakeStepButton(WIDGET_PRESET_BACK, "mi-prev.bmp");
  MakeStepButton(WIDGET_PRESET_FORWARD, "mi-next.bmp");
  Widget& back = *Find(WIDGET_PRESET_BACK);
  Widget& forward = *Find(WIDGET_PRESET_FORWARD);
  back.SetFlyIn(layout.margin, layout.presetY);
  forward.SetFlyIn(layout.width - forward.width - layout.margin, layout.presetY);
  TheSkinHost->CreateCanvasWidget(WIDGET_PRESET_NAME, kLabelFill, kNameWidth, layout.fontHeight,
                                  BUTTON_WIDGET, GROUP_INTERFACE);
  Find(WIDGET_PRESET_NAME)
      ->SetFlyIn((layout.width - kNameWidth) / 2,
                 layout.presetY + (back.height - layout.fontHeight) / 2);
  const int y = layout.presetY + layout.margin + layout.fontHeight;
  MakeButton(WIDGET_EQ_SWITCH, "ON", layout.labelWidth, layout, layout.margin, y);
  MakeButton(WIDGET_EQ_RESET, "RESET", layout.labelWidth, layout,
             layout.width - layout.labelWidth - layout.margin, y);
}

void ListEqualiser(platform::ControlList& list) {
  ListCurve(list);
  ListWidget(list, WIDGET_PRESET_BACK, "Previous preset", Named::kByTip);
  ListWidget(list, WIDGET_PRESET_NAME, PresetLabel(), Named::kByLabel);
  ListWidget(list, WIDGET_PRESET_FORWARD, "Next preset", Named::kByTip);
  if (platform::Control* box = ListWidget(list, WIDGET_EQ_SWITCH, "Equaliser", Named::kByLabel)) {
    box->role = platform::Role::kCheckBox;
    box->checked = EffectEQSwitch != 0;
  }
  ListWidget(list, WIDGET_EQ_RESET, "RESET", Named::kByLabel);
}

void MoveEqualiser(int program) {
  for (const auto& row : kEqualiserWidgets) Move(row.index, program);
}

void PressEqualiser(const Widget* widget) {
  for (const auto& row : kEqualiserWidgets)
    if (row.press && widget == Find(row.index)) row.press();
}

// The check boxes and buttons of the last two sub-pages.
struct Control {
  int index, kind;
  const char* text;                    ///< at the start
  void (*press)(int state);            ///< of a check box, the new state
  void (*apply)(int index);            ///< brings the control and what it controls into line
  void (*then)() = nullptr;            ///< once a press has been applied
  const char* (*textNow)() = nullptr;  ///< of one whose text changes
  const char* Text() const { return textNow ? textNow() : text; }
};

// A check box that is its variable, and the Mixer's parameter that follows it.
template <int& variable, Shared<int> Mixer::*parameter>
constexpr Control EffectBox(int index, const char* text) {
  return {index, CHECK_WIDGET, text, [](int state) { variable = state; },
          [](int box) {
            SetCheck(box, variable);
            TheMixer->*parameter = variable;
          }};
}

constexpr const char* kEnhancerTexts[] = {"T. Enhancer", "T. Enhancer-1", "T. Enhancer-2"};
constexpr const char* kDjTexts[] = {"DJ - None", "DJ - ShuffleMaster"};
constexpr const char* kPlayModeTexts[] = {"Play Mode - All", "Play Mode - Selected",
                                          "Play Mode - Unselected"};

// The enhancer's three states go round, whatever the box says.
void PressEnhancer(int) {
  EffectTE = NextState(EffectTE, static_cast<int>(std::size(kEnhancerTexts)));
}

const char* EnhancerText() {
  return TextFor(kEnhancerTexts, EffectTE);
}
const char* DjText() {
  return TextFor(kDjTexts, transport.djMode);
}
const char* PlayModeText() {
  return TextFor(kPlayModeTexts, transport.playMode);
}

void ApplyEnhancer(int index) {
  SetCheck(index, EffectTE == 1 || EffectTE == 2);
  Label(index, EnhancerText());
  TheMixer->enhancer = EffectTE;
}

constexpr Control kEffects[] = {
    EffectBox<EffectCR, &Mixer::crystalizer>(WIDGET_CRYSTALIZER, "Crystalizer"),
    {WIDGET_ENHANCER, CHECK_WIDGET, "T. Enhancer", PressEnhancer, ApplyEnhancer, nullptr,
     EnhancerText},
    EffectBox<EffectVR, &Mixer::vocalReducer>(WIDGET_VOCAL_REDUCER, "Vocal Reducer"),
    EffectBox<EffectCE, &Mixer::wideStereo>(WIDGET_WIDE_STEREO, "Wide Stereo"),
    EffectBox<EffectLT, &Mixer::limiter>(WIDGET_LIMITER, "Limiter"),
};

constexpr Control kPlayOrder[] = {
    {WIDGET_DJ, BUTTON_WIDGET, "DJ - None", [](int) { transport.djMode = !transport.djMode; },
     [](int index) { Label(index, DjText()); }, [] { DjSetMode(transport.djMode); }, DjText},
    {WIDGET_PLAY_MODE, BUTTON_WIDGET, "Play Mode - Unselected",
     [](int) {
       transport.playMode =
           NextState(transport.playMode, static_cast<int>(std::size(kPlayModeTexts)));
     },
     [](int index) { Label(index, PlayModeText()); }, nullptr, PlayModeText},
    {WIDGET_REPEAT, CHECK_WIDGET, "Repeat", [](int state) { transport.repeatOn = state; },
     [](int index) { SetCheck(index, transport.repeatOn); }},
    {WIDGET_SHUFFLE, CHECK_WIDGET, "Shuffle", [](int state) { transport.shuffleOn = state; },
     [](int index) { SetCheck(index, transport.shuffleOn); },
     [] {
       if (transport.shuffleOn) BuildShuffleTable();
     }},
};

void BuildEffects(const MixerLayout& layout) {
  int y = layout.boxHeight - layout.fontHeight;
  for (const Control& row : kEffects) {
    y += layout.area / 5;
    MakeButton(row.index, row.text, layout.width / 2, layout, layout.width / 4, y, row.kind);
  }
}

void BuildPlayOrder(const MixerLayout& layout) {
  int y = layout.top - layout.margin - layout.fontHeight;
  for (const Control& row : kPlayOrder) {
    y += layout.area / 4;
    MakeButton(row.index, row.text, 4 * (layout.width / 6), layout, layout.width / 6, y, row.kind);
  }
}

template <const auto& controls>
void MoveControls(int program) {
  for (const Control& row : controls) Move(row.index, program);
}

template <const auto& controls>
void ApplyControls() {
  for (const Control& row : controls) row.apply(row.index);
}

template <const auto& controls>
void ListControls(platform::ControlList& list) {
  for (const Control& row : controls) ListWidget(list, row.index, row.Text(), Named::kByLabel);
}

void PressControl(const Widget* widget, int state) {
  const auto press = [&](const Control& row) {
    if (widget != Find(row.index)) return;
    row.press(state);
    ApplyMixerPage();
    if (row.then) row.then();
  };
  std::for_each(std::begin(kEffects), std::end(kEffects), press);
  std::for_each(std::begin(kPlayOrder), std::end(kPlayOrder), press);
}

constexpr struct {
  const char *file, *name;
  void (*build)(const MixerLayout& layout);
  void (*move)(int program);
  void (*apply)();
  void (*list)(platform::ControlList& list);
} kSubPages[] = {
    {"mi-page-sl.bmp", "Sliders", BuildSliders, MoveSliders, ApplySliders, ListSliders},
    {"mi-page-eq.bmp", "Equaliser page", BuildEqualiser, MoveEqualiser, [] {}, ListEqualiser},
    {"mi-page-ef.bmp", "Effects", BuildEffects, MoveControls<kEffects>, ApplyControls<kEffects>,
     ListControls<kEffects>},
    {"mi-page-dj.bmp", "DJ and play order", BuildPlayOrder, MoveControls<kPlayOrder>,
     ApplyControls<kPlayOrder>, ListControls<kPlayOrder>},
};
constexpr int kSubPageCount = static_cast<int>(std::size(kSubPages));

void RunMixerPage(int program, int wait) {
  PulsePageButton(PAGE_MIXER, program);
  MoveGroup(GROUP_SUB_PAGES, program);
  Move(WIDGET_MIXER_BOX, program);
  if (program == kEnterProgram) {
    ShowMixerSubPage();
  } else {
    HideMixerSubPage();
  }
  if (wait) Find(WIDGET_WIDE_STEREO)->WaitSlot(kMoveSlot);
}

void ChooseSubPage(const Widget* widget) {
  for (int page = 0; page < kSubPageCount; ++page) {
    if (widget != Find(WIDGET_SUB_PAGE + page) || page == MixerSubPage) continue;
    HideMixerSubPage();
    for (int i = 0; i < kSubPageCount; ++i) PutBack(WIDGET_SUB_PAGE + i);
    MixerSubPage = page;
    ShowMixerSubPage();
    return;
  }
}

}  // namespace

void BuildMixerPage() {
  MakeImage(TileOf(PAGE_MIXER), "tile-mi.bmp", GROUP_INTERFACE);
  const Widget* box = MakeGroupBox(WIDGET_MIXER_BOX, "mi-groupbox.bmp", skin.MixerEffect);
  const MixerLayout layout(box->height);
  int x = 0;
  for (int page = 0; page < kSubPageCount; ++page) {
    Widget& button = *MakeImage(WIDGET_SUB_PAGE + page, kSubPages[page].file, GROUP_SUB_PAGES);
    button.SetPlace(x, 0);
    SetPulse(button, 150, 30.0f);
    button.visible = 1;
    x += button.width;
  }
  PlaceStrip(GROUP_SUB_PAGES, LAYER_BOXES, x, layout.height / 2, (layout.width - x) / 2);
  for (const auto& page : kSubPages) page.build(layout);
}

void ShowMixerSubPage() {
  Move(WIDGET_SUB_PAGE + MixerSubPage, kEnterProgram);
  kSubPages[MixerSubPage].move(kEnterProgram);
}

void HideMixerSubPage() {
  Move(WIDGET_SUB_PAGE + MixerSubPage, kNoProgram);
  kSubPages[MixerSubPage].move(kLeaveProgram);
}

void ShowMixerPage(int wait) {
  RunMixerPage(kEnterProgram, wait);
}

void HideMixerPage(int wait) {
  // A name that is being typed is kept when the page goes.
  EndNameEdit();
  RunMixerPage(kLeaveProgram, wait);
}

void ListMixerPage(platform::ControlList& list) {
  for (int page = 0; page < kSubPageCount; ++page) {
    platform::Control* button =
        ListWidget(list, WIDGET_SUB_PAGE + page, kSubPages[page].name, Named::kByTip);
    if (button) button->pressed = page == MixerSubPage;
  }
  kSubPages[MixerSubPage].list(list);
}

void SetOnMixerPage(int control, double value) {
  for (const SliderRow& row : kSliders)
    if (row.slider == control) SetSlider(row, value);
  SetOnCurve(control, value);
}

void ApplyMixerPage() {
  for (const auto& page : kSubPages) page.apply();
  // The last, since it hands the Mixer's parameters on to the song.
  DrawEqualiser();
}

void SetVolume(double percent) {
  SetSlider(kSliders[SLIDER_VOLUME], percent);
}

void SetSpeed(double percent) {
  SetSlider(kSliders[SLIDER_SPEED], percent);
}

void SetRepeat(bool on) {
  PressControl(Find(WIDGET_REPEAT), on);
}

void SetShuffle(bool on) {
  if (on == (transport.shuffleOn != 0)) return;
  PressControl(Find(WIDGET_SHUFFLE), on);
}

void MixerPageHandler(unsigned event, Widget* widget, float a, float b) {
  switch (event) {
    case EVENT_HORIZONTAL_LEFT:
      StepSlider(widget, -1);
      break;
    case EVENT_HORIZONTAL_RIGHT:
      StepSlider(widget, 1);
      break;
    case EVENT_HORIZONTAL_THUMB:
      DragSlider(widget, a);
      break;
    case EVENT_CHECK:
      PressControl(widget, static_cast<int>(a));
      break;
    case EVENT_IMAGE:
      ChooseSubPage(widget);
      break;
    case EVENT_BUTTON:
      PressSliderLabel(widget);
      PressEqualiser(widget);
      PressControl(widget, 0);
      break;
    case platform::kMessageLeftDown:
      BeginCurveDrag(widget, CurveDrag::kBands, a, b);
      break;
    case platform::kMessageRightDown:
      BeginCurveDrag(widget, CurveDrag::kMaster, a, b);
      break;
    case platform::kMessageMouseMove:
      MoveCurveDrag(a, b);
      break;
    case platform::kMessageLeftUp:
    case platform::kMessageRightUp:
      EndCurveDrag();
      break;
    case platform::kMessageCommand:
      if (a == static_cast<float>(platform::kEditLostFocus)) EndNameEdit();
      break;
    case kTick:
      ShowNameEdit();
      break;
    default:
      break;
  }
}

}  // namespace kwo
