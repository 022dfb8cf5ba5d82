#include "panels/equaliser_curve.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "engine/transport.h"
#include "panels/equaliser_presets.h"
#include "panels/panel_tools.h"
#include "panels/preset_name_edit.h"

namespace kwo {
namespace {

constexpr int kPitch = 12;  // of the bands
constexpr int kCurveWidth = kPitch * kBands;
constexpr int kDipProgram = 2;
constexpr struct { float least, most; } kBandRange{0.5f, 1.5f}, kMasterRange{0.55f, 1.45f};
constexpr double kPercent = 100;

CurveDrag EqDragMode = CurveDrag::kNone;

// A value's row on a canvas `height` high: 0.5 at the bottom, 1.5 at the top.
int CurveRow(float value, int height) {
  return static_cast<int>((1.0f - (value - 0.5f)) * static_cast<float>(height));
}

void DrawBand(SkinBitmap& canvas, int band, float value) {
  constexpr std::uint32_t kPens[] = {0xFA78A0, 0xFAA0A0, 0xFAC8A0, 0xFAF0A0};
  constexpr std::uint32_t kGrey = 0x646464;
  constexpr int kLineWidth = 10;
  const int row = CurveRow(value, canvas.height);
  for (int y = canvas.height; y >= 0; y -= 2)
    canvas.FillRectangle(1 + kPitch * band, y, kLineWidth, 1, y > row ? kPens[band / 4] : kGrey);
}

void DrawMaster(SkinBitmap& canvas, float value) {
  constexpr std::uint32_t kWhite = 0xFFFFFF;
  constexpr int kTickReach = 3;
  const int row = CurveRow(value, canvas.height);
  canvas.FillRectangle(0, row, canvas.width, 1, kWhite);
  for (int x : {0, canvas.width - 1})
    canvas.FillRectangle(x, row - kTickReach, 1, 2 * kTickReach + 1, kWhite);
}

// Changes the current preset at a point of the curve.
void ApplyCurvePoint(float a, float b) {
  const Widget& curve = *Find(WIDGET_CURVE);
  const int x = static_cast<int>(a), y = static_cast<int>(b);
  const int w = curve.width, h = curve.height;
  if (x < 0 || x > w || y < 0 || y > h || h == 0) return;
  const float value = static_cast<float>(h - y) / static_cast<float>(h) + 0.5f;
  float* values = EqPresetValues[EffectEQCurrent];
  if (EqDragMode == CurveDrag::kMaster)
    values[kMasterValue] = std::clamp(value, kMasterRange.least, kMasterRange.most);
  if (EqDragMode == CurveDrag::kBands) {
    const int band = static_cast<int>(static_cast<float>(x) / (static_cast<float>(w) * 0.0625f));
    if (band >= kBands) return;
    values[band] = value;
  }
  DrawEqualiser();
}

// Of its place among a preset's values: in a song of 44,100 samples a second for a band.
std::string ValueName(int value) {
  constexpr double kHertzPerLine = 44100.0 / 2 / 576;
  if (value == kMasterValue) return "Equaliser level";
  char name[48];
  std::snprintf(name, sizeof name, "Band %d, %ld Hz", value + 1,
                std::lround(EqualiserBandLine(value) * kHertzPerLine));
  return name;
}

bool IsCurve(const Widget* widget) {
  return widget == Find(WIDGET_CURVE) || widget == Find(WIDGET_CURVE + 1);
}

}  // namespace

void BuildCurve(int top, int height) {
  const int outside = Layout().width;
  const int x = (outside - kCurveWidth) / 2;
  for (int index = WIDGET_CURVE; index <= WIDGET_CURVE + 1; ++index) {
    TheSkinHost->CreateCanvasWidget(index, TheSkinHost->colorKey, kCurveWidth, height, IMAGE_WIDGET,
                                    GROUP_INTERFACE);
    Widget& curve = *Find(index);
    curve.SetWays({{outside, top}, {x, top}, {-kCurveWidth, top}}, 100, 3.0f, 6.0f);
    curve.SetRamp(kDipProgram, 0, -140, -20.0f, MOTION_OUT_AND_BACK);
    curve.visible = index == WIDGET_CURVE;
  }
}

void DrawEqualiser() {
  Widget& first = *Find(WIDGET_CURVE);
  Widget& second = *Find(WIDGET_CURVE + 1);
  Widget& hidden = first.visible ? second : first;
  Widget& shown = first.visible ? first : second;
  const float* values = EqPresetValues[EffectEQCurrent];
  SkinBitmap& canvas = *hidden.image;
  canvas.FillSolid(TheSkinHost->colorKey);
  for (int band = 0; band < kBands; ++band) DrawBand(canvas, band, values[band]);
  DrawMaster(canvas, values[kMasterValue]);
  for (int i = 0; i < kPresetValues; ++i) TheMixer->eqValues[i] = values[i];
  TheMixer->eqSwitch = EffectEQSwitch;
  Label(WIDGET_EQ_SWITCH, EffectEQSwitch ? "ON" : "OFF");
  ShowPresetName(EqPresetNames[EffectEQCurrent]);
  hidden.visible = 1;
  shown.visible = 0;
  TheMixer->Slot(0)->ApplyMixerParameters();
}

void Dip() {
  for (int index = WIDGET_CURVE; index <= WIDGET_CURVE + 1; ++index)
    Find(index)->RunProgram(kNudgeSlot, kDipProgram);
}

void BeginCurveDrag(const Widget* widget, CurveDrag mode, float x, float y) {
  if (!IsCurve(widget)) return;
  EqDragMode = mode;
  platform::SetCapture();
  ApplyCurvePoint(x, y);
}

void EndCurveDrag() {
  if (EqDragMode == CurveDrag::kNone) return;
  EqDragMode = CurveDrag::kNone;
  platform::ReleaseCapture();
  Dip();
}

void MoveCurveDrag(float x, float y) {
  if (EqDragMode != CurveDrag::kNone) ApplyCurvePoint(x, y);
}

void ListCurve(platform::ControlList& list) {
  const int index = Find(WIDGET_CURVE)->visible ? WIDGET_CURVE : WIDGET_CURVE + 1;
  const Widget& curve = *Find(index);
  if (!curve.OnScreen()) return;
  const platform::Rectangle place = curve.RestPlace();
  for (int value = 0; value < kPresetValues; ++value) {
    const bool master = value == kMasterValue;
    const auto& range = master ? kMasterRange : kBandRange;
    platform::Control slider;
    slider.id = CONTROL_CURVE + value;
    slider.role = platform::Role::kSlider;
    slider.name = ValueName(value);
    slider.place =
        master ? place
               : platform::Rectangle{place.x + kPitch * value, place.y, kPitch, place.height};
    slider.value = std::round(EqPresetValues[EffectEQCurrent][value] * kPercent);
    slider.least = std::round(range.least * kPercent);
    slider.most = std::round(range.most * kPercent);
    list.controls.push_back(slider);
  }
}

void SetOnCurve(int control, double value) {
  const int number = control - CONTROL_CURVE;
  if (number < 0 || number >= kPresetValues) return;
  EqPresetValues[EffectEQCurrent][number] = static_cast<float>(value / kPercent);
  DrawEqualiser();
  Dip();
}

}  // namespace kwo
