#include "toolkit/slider.h"

#include <algorithm>
#include <cmath>

namespace kwo {
namespace {

constexpr int kCells = 7;

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

// Twice the way is as good as any position beyond its end, and a no-number counts as its start.
float Clamped(float position) {
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

  void Caps(float part, SliderPart lowPart, SliderPart highPart) const {
    if (part < 0) return;
    Cell(IsPart(part, lowPart) ? CELL_LOW_PRESSED : CELL_LOW, 0, way.cell);
    Cell(IsPart(part, highPart) ? CELL_HIGH_PRESSED : CELL_HIGH, way.whole - way.cell, way.cell);
  }

  void Thumb(float part, int center) const {
    Cell(IsPart(part, PART_THUMB) ? CELL_THUMB_DRAGGED : CELL_THUMB, way.ThumbStart(center),
         way.cell, true);
  }
};

bool Upright(const Widget& slider) {
  return slider.kind == VERTICAL_SLIDER;
}

int Length(const Widget& slider) {
  return Upright(slider) ? slider.height : slider.width;
}

}  // namespace

int CellSize(const Widget& slider) {
  if (!slider.cap) return 0;
  return (Upright(slider) ? slider.cap->height : slider.cap->width) / kCells;
}

SliderPart HitSlider(const Widget& slider, int position) {
  const int cell = CellSize(slider);
  if (position <= cell) return PART_FIRST_CAP;
  return position >= Length(slider) - cell ? PART_SECOND_CAP : PART_THUMB;
}

float ThumbValue(const Widget& slider, int position) {
  const int cell = CellSize(slider);
  return static_cast<float>(position - cell) / static_cast<float>(Length(slider) - 2 * cell);
}

float PaintSlider(Widget& slider, float part, float position) {
  const bool upright = Upright(slider);
  SkinBitmap& canvas = *slider.image;
  const int whole = upright ? canvas.height : canvas.width;
  const SliderPainter painter{*slider.cap, canvas, {whole, CellSize(slider)}, upright};
  const SliderWay& way = painter.way;
  if (way.cell < 1 || way.Length() < 1) return 0.0f;
  // Rows count from the bottom, the values of an upright one from the top.
  const int wanted = way.At(Clamped(position));
  const int center = way.Hold(upright ? whole - wanted : wanted);
  painter.Caps(part, upright ? PART_SECOND_CAP : PART_FIRST_CAP,
               upright ? PART_FIRST_CAP : PART_SECOND_CAP);
  painter.Track();
  painter.Thumb(part, center);
  canvas.Touch();
  return (static_cast<float>(upright ? whole - center : center) - way.HalfEnd()) / way.Length();
}

}  // namespace kwo
