#include "panels/mixer_page.h"

#include <algorithm>
#include <cstdio>
#include <span>

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
Shared<int> EffectEQCurrent;
int EffectEQSwitch;

namespace {

constexpr int kSubPages = 4;
constexpr int kNameWidth = 160;

struct SliderRow {
  int label, slider;
  const char* name;
  float* variable;
  float least, most, rest;
  float Range() const { return most - least; }
};

const SliderRow kSliders[] = {
    {WIDGET_VOLUME_LABEL, WIDGET_VOLUME, "Volume", &SliderVol, 0, 200, 100},
    {WIDGET_PAN_LABEL, WIDGET_PAN, "Pan", &SliderPan, -100, 100, 0},
    {WIDGET_SPEED_LABEL, WIDGET_SPEED, "Speed", &SliderSpd, 75, 125, 100},
};

struct EffectRow {
  int index;
  const char* name;
  int* variable;
};

const EffectRow kEffects[] = {
    {WIDGET_CRYSTALIZER, "Crystalizer", &EffectCR},
    {WIDGET_ENHANCER, "T. Enhancer", &EffectTE},
    {WIDGET_VOCAL_REDUCER, "Vocal Reducer", &EffectVR},
    {WIDGET_WIDE_STEREO, "Wide Stereo", &EffectCE},
    {WIDGET_LIMITER, "Limiter", &EffectLT},
};

constexpr int kEnhancerStates = 3;
constexpr int kPlayModes = 3;
constexpr const char* kEnhancerTexts[] = {"T. Enhancer", "T. Enhancer-1", "T. Enhancer-2"};
constexpr const char* kDjTexts[] = {"DJ - None", "DJ - ShuffleMaster"};
constexpr const char* kPlayModeTexts[] = {"Play Mode - All", "Play Mode - Selected",
                                          "Play Mode - Unselected"};

constexpr const char* kSubPageFiles[kSubPages] = {"mi-page-sl.bmp", "mi-page-eq.bmp",
                                                  "mi-page-ef.bmp", "mi-page-dj.bmp"};

// The widgets that move with each sub-page.
constexpr int kSliderWidgets[] = {WIDGET_VOLUME_LABEL, WIDGET_VOLUME,      WIDGET_PAN_LABEL,
                                  WIDGET_PAN,          WIDGET_SPEED_LABEL, WIDGET_SPEED};
constexpr int kEqualiserWidgets[] = {WIDGET_CURVE,         WIDGET_CURVE + 1,   WIDGET_EQ_SWITCH,
                                     WIDGET_EQ_RESET,      WIDGET_PRESET_NAME, WIDGET_PRESET_BACK,
                                     WIDGET_PRESET_FORWARD};
constexpr int kEffectWidgets[] = {WIDGET_CRYSTALIZER, WIDGET_ENHANCER, WIDGET_VOCAL_REDUCER,
                                  WIDGET_WIDE_STEREO, WIDGET_LIMITER};
constexpr int kDjWidgets[] = {WIDGET_DJ, WIDGET_PLAY_MODE, WIDGET_REPEAT, WIDGET_SHUFFLE};
constexpr std::span<const int> kSubPageWidgets[kSubPages] = {kSliderWidgets, kEqualiserWidgets,
                                                             kEffectWidgets, kDjWidgets};

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
    slider.ApplyValue(0, 0);
    HangByMiddle(*Find(row.label));
    HangByMiddle(slider);
  }
}

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

void BuildEffects(const MixerLayout& layout) {
  int y = layout.boxHeight - layout.fontHeight;
  for (const EffectRow& row : kEffects) {
    y += layout.area / 5;
    MakeButton(row.index, row.name, layout.width / 2, layout, layout.width / 4, y, CHECK_WIDGET);
  }
}

void BuildDj(const MixerLayout& layout) {
  constexpr struct {
    int index;
    const char* text;
    int kind;
  } kRows[] = {
      {WIDGET_DJ, "DJ - None", BUTTON_WIDGET},
      {WIDGET_PLAY_MODE, "Play Mode - Unselected", BUTTON_WIDGET},
      {WIDGET_REPEAT, "Repeat", CHECK_WIDGET},
      {WIDGET_SHUFFLE, "Shuffle", CHECK_WIDGET},
  };
  int y = layout.top - layout.margin - layout.fontHeight;
  for (const auto& row : kRows) {
    y += layout.area / 4;
    MakeButton(row.index, row.text, 4 * (layout.width / 6), layout, layout.width / 6, y, row.kind);
  }
}

void RunMixerPage(int program, int wait) {
  Move(PageButton(PAGE_MIXER), program == kEnterProgram ? kEnterProgram : kNoProgram);
  MoveGroup(GROUP_SUB_PAGES, program);
  Move(WIDGET_MIXER_BOX, program);
  (program == kEnterProgram ? ShowMixerSubPage : HideMixerSubPage)();
  if (wait) Find(WIDGET_WIDE_STEREO)->WaitSlot(kMoveSlot);
}

void ChooseSubPage(const Widget* widget) {
  for (int page = 0; page < kSubPages; ++page) {
    if (widget != Find(WIDGET_SUB_PAGE + page) || page == MixerSubPage) continue;
    HideMixerSubPage();
    for (int i = 0; i < kSubPages; ++i) PutBack(WIDGET_SUB_PAGE + i);
    MixerSubPage = page;
    ShowMixerSubPage();
    return;
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

// The next of `count` states that go round; the first behind one that a setting brought from
// beyond.
int NextState(int state, int count) {
  return state >= 0 && state < count - 1 ? state + 1 : 0;
}

void PressCheck(const Widget* widget, int state) {
  for (const EffectRow& row : kEffects) {
    if (widget != Find(row.index)) continue;
    // The enhancer's three states go round, whatever the box says.
    *row.variable = row.index == WIDGET_ENHANCER ? NextState(EffectTE, kEnhancerStates) : state;
  }
  if (widget == Find(WIDGET_REPEAT)) repeatOn = state;
  if (widget == Find(WIDGET_SHUFFLE)) shuffleOn = state;
  ApplyMixerPage();
  if (widget == Find(WIDGET_SHUFFLE) && shuffleOn) BuildShuffleTable();
}

void StepPreset(int by) {
  EffectEQCurrent = std::clamp(EffectEQCurrent + by, 0, kPresets - 1);
  DrawEqualiser();
  Dip();
}

void PressNameOrStep(const Widget* widget) {
  if (platform::EditHasFocus()) {
    EndNameEdit();
    return;
  }
  if (widget == Find(WIDGET_PRESET_NAME)) BeginNameEdit();
  if (widget == Find(WIDGET_PRESET_BACK)) StepPreset(-1);
  if (widget == Find(WIDGET_PRESET_FORWARD)) StepPreset(1);
}

void PressButton(const Widget* widget) {
  for (const SliderRow& row : kSliders) {
    if (widget != Find(row.label)) continue;
    *row.variable = row.rest;
    ApplyMixerPage();
  }
  if (widget == Find(WIDGET_EQ_RESET)) {
    std::fill_n(EqPresetValues[EffectEQCurrent], kPresetValues, 1.0f);
    DrawEqualiser();
    Dip();
  }
  if (widget == Find(WIDGET_EQ_SWITCH)) {
    EffectEQSwitch = !EffectEQSwitch;
    DrawEqualiser();
    Dip();
  }
  if (widget == Find(WIDGET_PRESET_NAME) || widget == Find(WIDGET_PRESET_BACK) ||
      widget == Find(WIDGET_PRESET_FORWARD))
    PressNameOrStep(widget);
  if (widget == Find(WIDGET_DJ)) {
    djMode = !djMode;
    ApplyMixerPage();
    DjSetMode(djMode);
  }
  if (widget == Find(WIDGET_PLAY_MODE)) {
    playMode = NextState(playMode, kPlayModes);
    ApplyMixerPage();
  }
}

// One of a row's texts; for a number that a setting brought from beyond them, the first.
template <std::size_t kCount>
const char* TextFor(const char* const (&texts)[kCount], int number) {
  return texts[number >= 0 && number < static_cast<int>(kCount) ? number : 0];
}

void SetCheck(int index, int state) {
  Find(index)->ApplyValue(state != 0, 0);
}

void ApplySliders() {
  for (const SliderRow& row : kSliders) {
    Find(row.slider)->ApplyValue(0, (*row.variable - row.least) / row.Range());
    char text[64];
    std::snprintf(text, sizeof text, "%s = %d", row.name, static_cast<int>(*row.variable));
    Label(row.label, text);
  }
  if (!TheMixer) return;
  TheMixer->volume = SliderVol * 0.01f;
  TheMixer->pan = SliderPan * 0.01f;
  TheMixer->speed = SliderSpd * 0.01f;
}

void ApplyEffects() {
  for (const EffectRow& row : kEffects)
    if (row.index != WIDGET_ENHANCER) SetCheck(row.index, *row.variable);
  SetCheck(WIDGET_ENHANCER, EffectTE == 1 || EffectTE == 2);
  Label(WIDGET_ENHANCER, TextFor(kEnhancerTexts, EffectTE));
  if (!TheMixer) return;
  TheMixer->crystalizer = EffectCR;
  TheMixer->enhancer = EffectTE;
  TheMixer->vocalReducer = EffectVR;
  TheMixer->wideStereo = EffectCE;
  TheMixer->limiter = EffectLT;
}

}  // namespace

void BuildMixerPage() {
  MakeImage(TileOf(PAGE_MIXER), "tile-mi.bmp", GROUP_INTERFACE);
  const Widget* box = MakeGroupBox(WIDGET_MIXER_BOX, "mi-groupbox.bmp", MixerEffect);
  const MixerLayout layout(box->height);
  int x = 0;
  for (int page = 0; page < kSubPages; ++page) {
    Widget& button = *MakeImage(WIDGET_SUB_PAGE + page, kSubPageFiles[page], GROUP_SUB_PAGES);
    button.SetPlace(x, 0);
    button.SetRamp(kEnterProgram, 150, -150, 30.0f, MOTION_TO_AND_FRO);
    button.visible = 1;
    x += button.width;
  }
  PlaceStrip(GROUP_SUB_PAGES, 2, x, layout.height / 2, (layout.width - x) / 2);
  BuildSliders(layout);
  BuildEqualiser(layout);
  BuildEffects(layout);
  BuildDj(layout);
}

void ShowMixerSubPage() {
  Move(WIDGET_SUB_PAGE + MixerSubPage, kEnterProgram);
  for (int index : kSubPageWidgets[MixerSubPage]) Move(index, kEnterProgram);
}

void HideMixerSubPage() {
  Move(WIDGET_SUB_PAGE + MixerSubPage, kNoProgram);
  for (int index : kSubPageWidgets[MixerSubPage]) Move(index, kLeaveProgram);
}

void ShowMixerPage(int wait) {
  RunMixerPage(kEnterProgram, wait);
}

void HideMixerPage(int wait) {
  // A name that is being typed is kept when the page goes.
  EndNameEdit();
  RunMixerPage(kLeaveProgram, wait);
}

void ApplyMixerPage() {
  ApplySliders();
  ApplyEffects();
  DrawEqualiser();
  Label(WIDGET_DJ, TextFor(kDjTexts, djMode));
  Label(WIDGET_PLAY_MODE, TextFor(kPlayModeTexts, playMode));
  SetCheck(WIDGET_REPEAT, repeatOn);
  SetCheck(WIDGET_SHUFFLE, shuffleOn);
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
      PressCheck(widget, static_cast<int>(a));
      break;
    case EVENT_IMAGE:
      ChooseSubPage(widget);
      break;
    case EVENT_BUTTON:
      PressButton(widget);
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
