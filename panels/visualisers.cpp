#include "panels/visualisers.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace kwo {
namespace {

using Byte = std::uint8_t;

constexpr int kFullSwing = 65535;
constexpr int kLeastValues = 4608;
constexpr int kFadeRange = 160;
constexpr int kBrightest = 200;  // of the columns that grow lighter downwards

// Three colour values, red, green and blue, that wander up and down between bounds.
struct ColorDrifter {
  struct Bounds {
    int low, high;
  };
  Byte color[3];  // at the start
  int step[3];    // at the start
  Bounds bounds[3];
  int bounce[3];

  void Drift() {
    for (int i = 0; i < 3; ++i) {
      color[i] = static_cast<Byte>(color[i] + step[i]);
      if (color[i] >= bounds[i].high) {
        step[i] = -bounce[i];
      } else if (color[i] < bounds[i].low) {
        step[i] = bounce[i];
      }
    }
  }
};

// Where a column's wave lies: the rows per unit of swing, and the row of silence.
struct LevelScale {
  int scale, silence;
};

// Averages `size` + 1 values a column, `stride` apart, into rows; the sum is divided by `size`.
void ColumnLevels(const std::int16_t* samples, int stride, int size, LevelScale scale,
                  const SkinBitmap& bitmap, int* level) {
  for (int x = 0; x < bitmap.width; ++x) {
    std::int64_t sum = 0;
    for (int i = 0; i <= size; ++i, samples += stride) sum += *samples;
    const auto row = static_cast<int>(sum / std::max(size, 1) / scale.scale) + scale.silence;
    level[x] = std::clamp(row, 0, bitmap.height - 1);
  }
}

void WaveLevels(const SkinBitmap& bitmap, const std::int16_t* samples, int count, int scale,
                int* level) {
  ColumnLevels(samples, 1, count / bitmap.width - 1, {scale, bitmap.height / 2}, bitmap, level);
}

bool Paintable(const SkinBitmap& bitmap, int count) {
  return bitmap.bits && bitmap.width <= kMaxColumns && bitmap.height >= 2 && count >= kLeastValues;
}

Byte* Row(SkinBitmap& bitmap, int row) {
  return bitmap.bits + std::ptrdiff_t{row} * bitmap.stride;
}

std::size_t Bytes(const SkinBitmap& bitmap, int rows) {
  return static_cast<std::size_t>(rows) * static_cast<std::size_t>(bitmap.stride);
}

void Clear(SkinBitmap& bitmap) {
  std::memset(bitmap.bits, 0, Bytes(bitmap, bitmap.height));
}

// Bytes above `amount` lose it.
void Fade(SkinBitmap& bitmap, int fromRow, int amount) {
  Byte* bytes = Row(bitmap, fromRow);
  const std::size_t count = Bytes(bitmap, bitmap.height - fromRow);
  const auto loss = static_cast<Byte>(amount);
  for (std::size_t i = 0; i < count; ++i)
    bytes[i] = static_cast<Byte>(bytes[i] > loss ? bytes[i] - loss : bytes[i]);
}

int FadeStep(const SkinBitmap& bitmap, int least) {
  return std::max(kFadeRange / (bitmap.height / 2), least);
}

struct Rgb {
  int red, green, blue;
};

Rgb ColorOf(const ColorDrifter& drifter) {
  return {drifter.color[0], drifter.color[1], drifter.color[2]};
}

void Write(Byte* pixel, const Rgb& color) {
  pixel[0] = static_cast<Byte>(color.blue);
  pixel[1] = static_cast<Byte>(color.green);
  pixel[2] = static_cast<Byte>(color.red);
}

// Paints each column from its level down; `next` gives the colour of the row below.
template <typename Next>
void PaintColumns(SkinBitmap& bitmap, const int* level, const Rgb& start, Next next) {
  for (int x = 0; x < bitmap.width; ++x) {
    Rgb color = start;
    for (int row = level[x]; row >= 0; --row) {
      Write(Row(bitmap, row) + 3 * x, color);
      color = next(color);
    }
  }
}

// The wave over an old picture that fades slowly, as DrawGlow and DrawBands have it.
template <typename Next>
void PaintOverFaded(SkinBitmap& bitmap, const std::int16_t* samples, int count,
                    ColorDrifter& drifter, Next next) {
  constexpr int kSlowFade = 8;
  int level[kMaxColumns];
  WaveLevels(bitmap, samples, count, kFullSwing / bitmap.height, level);
  Fade(bitmap, 0, kSlowFade);
  drifter.Drift();
  const Rgb start = ColorOf(drifter);
  PaintColumns(bitmap, level, start,
               [next, start](const Rgb& color) { return next(color, start); });
}

ColorDrifter smokeDrifter{
    {140, 150, 160}, {3, 7, 11}, {{160, 251}, {160, 251}, {160, 251}}, {3, 7, 11}};

int DrawSmoke(SkinBitmap& bitmap, const std::int16_t* samples, int count) {
  if (!Paintable(bitmap, count)) return 1;
  constexpr int kSmokeFade = 40;
  int level[kMaxColumns];
  WaveLevels(bitmap, samples, count, kFullSwing / bitmap.height, level);
  const int middle = bitmap.height / 2;
  Fade(bitmap, middle, kSmokeFade);
  const int lift = bitmap.height / 8;
  // Upwards in one move: the rows overlap.
  const int lowest = bitmap.height - 2 * lift - middle;
  std::memmove(Row(bitmap, lowest + lift), Row(bitmap, lowest), Bytes(bitmap, middle + lift));
  smokeDrifter.Drift();
  const int step = FadeStep(bitmap, 2);
  PaintColumns(bitmap, level, ColorOf(smokeDrifter), [step](const Rgb& color) {
    return Rgb{std::max(color.red - step, 0), std::max(color.green - step, 0),
               std::max(color.blue - step, 0)};
  });
  return 1;
}

ColorDrifter glowDrifter{{40, 50, 60}, {3, 7, 11}, {{20, 101}, {20, 101}, {20, 101}}, {3, 7, 11}};

int DrawGlow(SkinBitmap& bitmap, const std::int16_t* samples, int count) {
  if (!Paintable(bitmap, count)) return 1;
  const int step = FadeStep(bitmap, 2);
  PaintOverFaded(bitmap, samples, count, glowDrifter, [step](const Rgb& color, const Rgb&) {
    return Rgb{std::min(color.red + step, kBrightest), std::min(color.green + step, kBrightest),
               std::min(color.blue + step, kBrightest)};
  });
  return 1;
}

ColorDrifter bandsDrifter{{40, 50, 60}, {3, 5, 7}, {{20, 101}, {20, 101}, {20, 101}}, {3, 7, 11}};

int DrawBands(SkinBitmap& bitmap, const std::int16_t* samples, int count) {
  if (!Paintable(bitmap, count)) return 1;
  const int step = std::max(kFadeRange / (bitmap.height / 2) * 2, 2);
  PaintOverFaded(bitmap, samples, count, bandsDrifter, [step](const Rgb& color, const Rgb& start) {
    const Rgb next{color.red + step, color.green + step, color.blue + step};
    return std::max({next.red, next.green, next.blue}) > kBrightest ? start : next;
  });
  return 1;
}

Byte splitGreen = 100;
int splitStep = 4;

int DrawSplit(SkinBitmap& bitmap, const std::int16_t* samples, int count) {
  if (!Paintable(bitmap, count)) return 1;
  int level[kMaxColumns];
  WaveLevels(bitmap, samples, count, kFullSwing / bitmap.height, level);
  Clear(bitmap);
  splitGreen = static_cast<Byte>(splitGreen + splitStep);
  if (splitGreen > 180) splitStep = -4;
  if (splitGreen < 50) splitStep = 4;
  const int step = FadeStep(bitmap, 2);
  for (int x = 0; x < bitmap.width; ++x) {
    int strength = 255;
    for (int row = level[x]; row >= 0; --row, strength -= step)
      Write(Row(bitmap, row) + 3 * x, {0, splitGreen, strength});
    strength = 255;
    for (int row = level[x] + 1; row < bitmap.height; ++row, strength -= step)
      Write(Row(bitmap, row) + 3 * x, {strength, splitGreen, 0});
  }
  return 1;
}

int DrawTwinLevels(SkinBitmap& bitmap, const std::int16_t* samples, int count) {
  if (!Paintable(bitmap, count)) return 1;
  constexpr int kStrength = 155;
  int left[kMaxColumns], right[kMaxColumns];
  const int half = bitmap.height / 2, quarter = half / 2;
  const int size = count / 2 / bitmap.width - 1;
  ColumnLevels(samples, 2, size, {kFullSwing / half, quarter}, bitmap, left);
  ColumnLevels(samples + 1, 2, size, {kFullSwing / half, 3 * quarter}, bitmap, right);
  // Row by row, which is the order of the memory.  In each half one wave parts two colours, and
  // where the other wave strays into it, its colour is added.
  for (int row = 0; row < bitmap.height; ++row) {
    Byte* pixel = Row(bitmap, row);
    const bool lower = row < half;
    for (int x = 0; x < bitmap.width; ++x, pixel += 3) {
      const bool belowLeft = row < left[x], belowRight = row < right[x];
      const bool red = !belowRight || (lower && !belowLeft);
      const bool green = lower ? !belowLeft : belowRight;
      const bool blue = belowLeft || (!lower && belowRight);
      Write(pixel, {red * kStrength, green * kStrength, blue * kStrength});
    }
  }
  return 1;
}

ColorDrifter walkerDrifter{{40, 50, 60}, {5, 7, 3}, {{160, 241}, {120, 241}, {20, 181}}, {5, 7, 3}};

struct Walker {
  bool placed;
  int direction, x, y;
} walker;

constexpr int kWalkerSteps = 576;

// One step of the point across the bitmap, bounced off its sides; `shift` moves it along when it
// meets the lower one.
void StepWalker(Walker& w, int width, int height, int shift) {
  constexpr struct { int x, y; } kMoves[] = {{1, -1}, {1, 1}, {-1, 1}, {-1, -1}};
  w.x += kMoves[w.direction].x;
  w.y += kMoves[w.direction].y;
  if (w.y < 0) {
    w.y = 0;
    w.direction = w.direction == 0 ? 1 : w.direction == 3 ? 2 : w.direction;
    w.x += shift;
  }
  if (w.y > height) {
    w.y = height;
    w.direction = w.direction == 1 ? 0 : w.direction == 2 ? 3 : w.direction;
  }
  if (w.x < 0) {
    w.x = 0;
    w.direction = w.direction == 3 ? 0 : w.direction == 2 ? 1 : w.direction;
  }
  if (w.x > width) {
    w.x = width;
    w.direction = w.direction == 1 ? 2 : w.direction == 0 ? 3 : w.direction;
  }
}

// A line of `length` pixels to the left, or to the right if it is negative, as far as the bitmap's
// memory goes; past a row's end it goes on in the next.
void DrawWalkerLine(SkinBitmap& bitmap, int x, int y, int length, const Rgb& color) {
  const auto size = static_cast<std::ptrdiff_t>(Bytes(bitmap, bitmap.height));
  std::ptrdiff_t place = std::ptrdiff_t{y} * bitmap.stride + 3 * std::ptrdiff_t{x};
  const int move = length > 0 ? -3 : 3;
  for (int i = length > 0 ? length : -length; i > 0; --i, place += move) {
    if (place < 0 || place > size - 3) return;
    Write(bitmap.bits + place, color);
  }
}

int DrawWalker(SkinBitmap& bitmap, const std::int16_t* samples, int count) {
  if (!Paintable(bitmap, count)) return 1;
  if (!walker.placed) walker = {true, 1, bitmap.width / 2 + 1, bitmap.height / 2};
  const int scale = 216000 / bitmap.width / 2;
  const int size = count / 1152 / 2 - 1;
  int value[kWalkerSteps];
  for (int& v : value) {
    std::int64_t sum = 0;
    for (int i = 0; i <= size; ++i) sum += *samples++;
    v = static_cast<int>(sum / std::max(size, 1) / scale);
  }
  Clear(bitmap);
  // Copies, since a pixel's bytes might be anything's.
  Walker w = walker;
  ColorDrifter drifter = walkerDrifter;
  for (int& v : value) {
    StepWalker(w, bitmap.width, bitmap.height, value[0] % 20 - 10);
    drifter.Drift();
    const int x = w.x + v;
    v /= 2;
    DrawWalkerLine(bitmap, x, w.y, v, ColorOf(drifter));
  }
  walker = w;
  walkerDrifter = drifter;
  return 1;
}

// The C library's generator takes a lock.
std::uint32_t NextRandom() {
  static std::uint32_t state = 1;
  state = state * 1664525u + 1013904223u;
  return state >> 8;
}

ColorDrifter rasterDrifter{
    {40, 50, 60}, {3, 7, 11}, {{120, 241}, {120, 241}, {120, 241}}, {3, 5, 7}};

int DrawRaster(SkinBitmap& bitmap, const std::int16_t* samples, int count) {
  if (!Paintable(bitmap, count)) return 1;
  constexpr int kDarkest = 20;
  int level[kMaxColumns];
  const int scale = kFullSwing / bitmap.height * 12;
  WaveLevels(bitmap, samples, count, bitmap.width < 240 ? scale / 2 : scale, level);
  rasterDrifter.Drift();
  const int step = FadeStep(bitmap, 1);
  int x = 0, row = 0;
  for (int column = 0; column < bitmap.width; ++column) {
    Rgb color = ColorOf(rasterDrifter);
    color.blue = static_cast<int>(NextRandom() % 255);
    for (int i = 0; i <= 2 * level[column]; ++i) {
      if (row == bitmap.height) return 1;
      Write(Row(bitmap, row) + 3 * x, color);
      color = {std::max(color.red - step, kDarkest), std::max(color.green - step, kDarkest),
               std::max(color.blue - step, kDarkest)};
      if (++x == bitmap.width) {
        x = 0;
        ++row;
      }
    }
  }
  return 1;
}

constexpr VisualiserFunction kTable[] = {DrawSmoke,      DrawGlow,   DrawBands, DrawSplit,
                                         DrawTwinLevels, DrawWalker, DrawRaster};

}  // namespace

constinit const std::span<const VisualiserFunction> kVisualiserTable = kTable;

}  // namespace kwo
