#include <algorithm>
#include <cmath>

#include "toolkit/skin_host.h"
#include "toolkit/widget.h"

namespace kwo {
namespace {

constexpr int kCells = 7;
constexpr int kNudgeSlot = 1;
constexpr int kNudgeProgram = 2;

// The cells of a slider's picture, from the bottom or from the left.
enum SliderCell {
  CELL_THUMB_DRAGGED,
  CELL_THUMB,
  CELL_LOW_PRESSED,
  CELL_LOW,
  CELL_TRACK,
  CELL_HIGH,
  CELL_HIGH_PRESSED,
};

// Which piece of a slider is drawn pressed.
constexpr float kFirstPressed = 1.0f;   // top or left cap
constexpr float kSecondPressed = 2.0f;  // bottom or right cap
constexpr float kThumbPressed = 3.0f;

// Twice the way is as good as any position beyond its end, and a no-number counts as its start.
float Held(float position) {
  return std::fmin(std::fmax(position, 0.0f), 2.0f);
}

// A slider's measures along its way, in pixels.
struct SliderWay {
  SliderWay(int size, int cellSize) : whole(size), cell(cellSize) {}
  float Length() const { return static_cast<float>(whole - 3 * cell); }
  float HalfEnd() const { return 1.5f * static_cast<float>(cell); }
  int At(float position) const { return static_cast<int>(position * Length() + HalfEnd()); }
  int Hold(int center) const {
    center = std::max(center, static_cast<int>(HalfEnd()));
    return std::min(center, static_cast<int>(static_cast<float>(whole) - HalfEnd()));
  }
  int ThumbStart(int center) const {
    return static_cast<int>(static_cast<float>(center) - 0.5f * static_cast<float>(cell));
  }
  int whole, cell;
};

// A cell's picture does not fit a canvas that is shorter than its parts; what sticks out is cut.
struct SliderPainter {
  const SkinBitmap& cells;
  SkinBitmap& canvas;
  SliderWay way;
  bool upright;

  void Cell(int cell, int start, int size, bool keyed = false) const {
    size = std::min({size, way.cell, way.whole - start});
    if (start < 0 || size < 1) return;
    const int from = cell * way.cell;
    const BlitSource source = upright ? cells.Source(0, from) : cells.Source(from, 0);
    const BlitTarget target = upright ? canvas.Target(0, start) : canvas.Target(start, 0);
    const int width = upright ? std::min(cells.width, canvas.width) : size;
    const int height = upright ? size : std::min(cells.height, canvas.height);
    if (keyed) {
      BlitKeyed(source, width, height, target, cells.key);
    } else {
      BlitCopy(source, width, height, target);
    }
  }

  void Track() const {
    int start = way.cell;
    for (; start < way.whole - 2 * way.cell; start += way.cell) Cell(CELL_TRACK, start, way.cell);
    Cell(CELL_TRACK, start, way.whole - way.cell - start);
  }

  void Caps(float part, float lowPart, float highPart) const {
    if (part < 0) return;
    Cell(part == lowPart ? CELL_LOW_PRESSED : CELL_LOW, 0, way.cell);
    Cell(part == highPart ? CELL_HIGH_PRESSED : CELL_HIGH, way.whole - way.cell, way.cell);
  }

  void Thumb(float part, int center) const {
    Cell(part == kThumbPressed ? CELL_THUMB_DRAGGED : CELL_THUMB, way.ThumbStart(center), way.cell,
         true);
  }
};

}  // namespace

int Widget::CellSize() const {
  if (!cap) return 0;
  return (kind == VERTICAL_SLIDER ? cap->height : cap->width) / kCells;
}

float Widget::ApplyValue(float part, float newValue) {
  if (!image || !cap) return 0.0f;
  float result = 0.0f;
  if (IsSlider() && part <= 0 && heldPart != 0) part = static_cast<float>(int{heldPart});
  switch (kind) {
    case BUTTON_WIDGET:
      RunProgram(kNudgeSlot, kNudgeProgram);
      break;
    case CHECK_WIDGET:
      result = ApplyCheck(part < 0 ? static_cast<float>(value) : part, newValue);
      break;
    case VERTICAL_SLIDER:
      result = PaintVerticalSlider(part, newValue < 0 ? static_cast<float>(value) : newValue);
      break;
    case HORIZONTAL_SLIDER:
      result = PaintHorizontalSlider(part, newValue < 0 ? static_cast<float>(value) : newValue);
      break;
    default:
      break;
  }
  value = result;
  return result;
}

float Widget::ApplyCheck(float part, float newValue) {
  if (newValue != 0.0f) RunProgram(kNudgeSlot, kNudgeProgram);
  if (part == 2.0f) part = frame != 0 ? 0.0f : 1.0f;
  if (part != 0.0f && part != 1.0f) return 0.0f;
  SetFrame(static_cast<int>(part));
  return part;
}

float Widget::PaintVerticalSlider(float part, float position) {
  const SliderPainter painter{*cap, *image, {image->height, CellSize()}, true};
  const SliderWay& way = painter.way;
  if (way.cell < 1 || way.Length() < 1) return 0.0f;
  // Rows count from the bottom, values from the top.
  const int center = way.Hold(way.whole - way.At(Held(position)));
  painter.Caps(part, kSecondPressed, kFirstPressed);
  painter.Track();
  painter.Thumb(part, center);
  return (static_cast<float>(way.whole - center) - way.HalfEnd()) / way.Length();
}

float Widget::PaintHorizontalSlider(float part, float position) {
  const SliderPainter painter{*cap, *image, {image->width, CellSize()}, false};
  const SliderWay& way = painter.way;
  if (way.cell < 1 || way.Length() < 1) return 0.0f;
  const int center = way.Hold(way.At(Held(position)));
  painter.Caps(part, kFirstPressed, kSecondPressed);
  painter.Track();
  painter.Thumb(part, center);
  return (static_cast<float>(center) - way.HalfEnd()) / way.Length();
}

}  // namespace kwo
