#include "tools/skin/hours.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <string_view>

#include "tools/skin/shape.h"

namespace kwo::tools {
namespace {

// One row of the palette: where the light stands and what it does to sky and water.
struct Palette {
  double sun;  // place across the pane, 0 to 1
  Color skyTop, skyLow;
  Color veil;
  double veilShare;
  Color warm;
  double warmShare, warmWidth, warmHeight;
  Color core;
  double coreShare, discRadius;
  Color waterNear, waterFar;
  Color line;
  double glitter;
};

constexpr Palette kPalettes[] = {
    {.50, Hex(0x050a15), Hex(0x17324e), Hex(0x2f7fa6), .40, Hex(0xff6c2c), 1.0, 160, 8.5,
     Hex(0xffc888), .52, 0, Hex(0x0b2030), Hex(0x03080f), Hex(0x8fd6f2), .30},
    {.84, Hex(0x070d18), Hex(0x14283c), Hex(0x5f93b8), .40, Hex(0x8fc6e6), .36, 90, 11,
     Hex(0xe8f6ff), .66, 0, Hex(0x0a1826), Hex(0x04080e), Hex(0x8fd6f2), .20},
    {.50, Hex(0x0b0a1a), Hex(0x271c40), Hex(0x7a4fc0), .42, Hex(0xe0609a), .34, 170, 11,
     Hex(0xffb0c0), .22, 0, Hex(0x171430), Hex(0x05050e), Hex(0xb9a2f4), .16},
    {.74, Hex(0x0c0a14), Hex(0x3a2030), Hex(0xb0506a), .45, Hex(0xff8038), .85, 150, 15,
     Hex(0xffcf8a), .80, 17, Hex(0x2a1a20), Hex(0x06060c), Hex(0xffb890), .60},
    {.86, Hex(0x041014), Hex(0x0d3034), Hex(0x2fa892), .30, Hex(0x58d8a8), .24, 110, 11,
     Hex(0xdcfff0), .36, 0, Hex(0x08211f), Hex(0x03090b), Hex(0x8ff0d6), .25},
};

constexpr double kWaterRows = kPaneHeight - kHorizon - 1;

// A number from -1 to 1 that depends on the place alone.
double Hash(int x, int y, unsigned seed) {
  std::uint32_t h = static_cast<std::uint32_t>(x) * 0x9E3779B1u ^
                    static_cast<std::uint32_t>(y) * 0x85EBCA77u ^ seed * 0xC2B2AE3Du;
  h = (h ^ h >> 15) * 0x2C1B3C6Du;
  h = (h ^ h >> 12) * 0x297A2D39u;
  return (h ^ h >> 15) / 2147483648.0 - 1;
}

double Ease(double t) {
  return t * t * (3 - 2 * t);
}

double SmoothNoise(double x, double y, unsigned seed) {
  const int left = static_cast<int>(std::floor(x)), top = static_cast<int>(std::floor(y));
  const double tx = Ease(x - left), ty = Ease(y - top);
  const double upper = Hash(left, top, seed) * (1 - tx) + Hash(left + 1, top, seed) * tx;
  const double lower = Hash(left, top + 1, seed) * (1 - tx) + Hash(left + 1, top + 1, seed) * tx;
  return upper * (1 - ty) + lower * ty;
}

// Dense at the line, long and flat below: the water as one sees it from low above it.
double Ripple(double x, double v) {
  const double nearX = x * 46 / (v + 22), nearY = 150 * std::log(1 + v / 7);
  return 1.25 *
         (SmoothNoise(nearX / 8, nearY / 3, 1) + 0.5 * SmoothNoise(nearX / 3, nearY / 1.7, 2));
}

Color Sky(const Palette& p, double dx, double u, int x, int y) {
  Color color = Mix(p.skyLow, p.skyTop, std::min(1.0, std::pow(u / 45, 0.55)));
  color = color + p.veil * (p.veilShare * std::exp(-u / 20) * std::exp(-dx * dx / (230 * 230)));
  color = color + p.warm * (p.warmShare * std::exp(-std::pow(std::fabs(dx) / p.warmWidth, 1.7)) *
                            std::exp(-u / p.warmHeight));
  color = color + p.core * (p.coreShare * std::exp(-std::pow(std::hypot(dx / 1.9, u) / 9, 1.25)));
  if (p.discRadius > 0)
    color = Mix(color, p.core, 0.85 * Coverage((std::hypot(dx, u) - p.discRadius) / 1.2));
  const bool aurora = &p == &kPalettes[AURORA];
  if (aurora) {
    // Curtains: light that hangs in folds, and stars between them.
    const double fold =
        SmoothNoise(x / 21.0, y / 90.0, 5) + 0.5 * SmoothNoise(x / 7.0, y / 60.0, 6);
    color = color + p.veil * (0.16 * std::max(0.0, fold) * std::exp(-(u - 16) * (u - 16) / 600));
    if (u > 8 && Hash(x, y, 9) > 0.993)
      color = color + Color{90, 110, 110} * (0.5 + 0.5 * Hash(x, y, 10));
  }
  return color;
}

Color Water(const Palette& p, double dx, double v, int x) {
  const double t = v / kWaterRows;
  const double ripple = Ripple(x + 0.5, v);
  Color color = Mix(p.waterNear, p.waterFar, std::min(1.0, std::pow(1.25 * t, 0.7)));
  const double mirrored = 0.5 * std::exp(-v / 14) * (1 + 0.45 * ripple);
  color = color +
          p.warm * (mirrored * p.warmShare * std::exp(-std::pow(std::fabs(dx) / p.warmWidth, 1.7)));
  color = color + p.veil * (mirrored * p.veilShare * std::exp(-dx * dx / (230 * 230)));
  const double swell = 2.6 * ripple * (0.35 + 0.65 * std::exp(-v / 90));
  color = color + Color{0.7, 0.9, 1.0} * swell;
  const double reach = 18 + 0.3 * v;
  const double glint = std::clamp((ripple - 0.55) / 0.5, 0.0, 1.0);
  const Color cooled = Mix(p.core, p.line, std::min(1.0, v / 90));
  return color +
         cooled * (p.glitter * glint * std::exp(-v / 62) * std::exp(-dx * dx / (reach * reach)));
}

// The light of the line at a distance from the sun.
Color LineLight(const Palette& p, double dx) {
  const double sun = std::exp(-std::pow(std::fabs(dx) / 70, 1.2));
  const Color away = p.line * (0.34 + 0.28 * std::exp(-dx * dx / (200 * 200)));
  return Mix(away, Color{255, 250, 242}, sun);
}

// Lights the corners' roundings and the outer parts less, and keeps the sky from banding.
Color Finish(Color color, int x, int y) {
  const double fromSide = std::min(x, kPaneWidth - 1 - x) / (0.15 * kPaneWidth);
  color = color * (1 - 0.33 * std::pow(std::max(0.0, 1 - fromSide), 1.5));
  const Shape pane =
      RoundBox({kPaneWidth / 2.0, kPaneHeight / 2.0}, kPaneWidth / 2.0, kPaneHeight / 2.0, 6);
  color = color * Coverage(pane({x + 0.5, y + 0.5}));
  return color + Color{1, 1, 1} * (0.5 * Hash(x, y, 3));
}

void DrawText(Picture& picture, std::string_view text, double x, double y, double unit,
              double width, Color color) {
  const Shape shape = Text(text, {x, y}, unit, width);
  const int top = static_cast<int>(y - 9 * unit), bottom = static_cast<int>(y + 4 * unit);
  for (int row = top; row < bottom; ++row) {
    for (int column = 0; column < picture.width; ++column) {
      const double ink = Coverage(shape({column + 0.5, row + 0.5}));
      if (ink > 0) picture.Set(column, row, Mix(picture.Get(column, row), color, ink));
    }
  }
}

void WriteInfo(Picture& picture) {
  const Color cream = Hex(0xffd9ae);
  DrawWordmark(picture, 88, 82, 21, 42, 1.9, cream);
  DrawText(picture, "Brightwater Music Deck", 29, 123, 0.98, 1.0, cream * 0.86);
  constexpr std::string_view kHints[] = {"Drag the time to seek, one second a pixel",
                                         "Press twice on a song to play it",
                                         "Right press on the arrows: a page at a time",
                                         "Press Volume, Pan or Speed to reset it",
                                         "Take the frame anywhere to move the window",
                                         "Help: right press on the tray icon, or help/index.htm"};
  double y = 143;
  for (std::string_view hint : kHints) {
    DrawText(picture, hint, 29, y, 0.94, 0.95, Hex(0xb09a94) * 0.82);
    y += 13;
  }
}

// The height of the surface over a place, periodic over the picture, as a sum of waves; gives its
// slope.
Place SurfaceSlope(double x, double y, double width, double height) {
  constexpr struct {
    int across, down;
    double phase, strength;
  } kWaves[] = {{5, 1, 0.3, 1.0},   {3, 4, 1.9, 1.0},   {-4, 3, 4.1, 0.9},  {7, -2, 2.6, 0.6},
                {2, 5, 5.2, 0.7},   {-6, 4, 0.9, 0.55}, {9, 3, 3.3, 0.35},  {-3, -6, 2.0, 0.45},
                {11, -4, 5.9, 0.2}, {-8, 7, 1.1, 0.2},  {13, 2, 4.7, 0.13}, {-10, -5, 0.2, 0.16}};
  Place slope{0, 0};
  for (const auto& wave : kWaves) {
    const double kx = 2 * std::numbers::pi * wave.across / width;
    const double ky = 2 * std::numbers::pi * wave.down / height;
    const double c = wave.strength / std::hypot(kx, ky) *
                     std::cos(kx * x + ky * y + wave.phase +
                              1.3 * std::sin(2 * std::numbers::pi * (2 * x / width - y / height)));
    slope.x += c * kx;
    slope.y += c * ky;
  }
  return slope;
}

}  // namespace

Picture PaintHour(Hour hour) {
  const Palette& p = kPalettes[hour];
  Picture picture(kPaneWidth, kPaneHeight);
  for (int y = 0; y < kPaneHeight; ++y) {
    for (int x = 0; x < kPaneWidth; ++x) {
      const double dx = x + 0.5 - p.sun * kPaneWidth;
      const double u = kHorizon - y, v = y - kHorizon;
      Color color = u >= 0 ? Sky(p, dx, u, x, y) : Water(p, dx, v, x);
      if (y == kHorizon) {
        color = LineLight(p, dx);
      } else if (std::abs(y - kHorizon) == 1) {
        color = color + LineLight(p, dx) * 0.25;
      }
      if (y == kShore) {
        const double toEnd = std::fabs(x + 0.5 - kPaneWidth / 2.0) / (kPaneWidth / 2.0);
        color = color + p.line * (0.3 * (1 - toEnd * toEnd));
      }
      // The line runs on into the frame, so only what lies around it darkens outwards.
      picture.Set(x, y, y == kHorizon ? color : Finish(color, x, y));
    }
  }
  if (hour == SUNSET) WriteInfo(picture);
  picture.Round();
  return picture;
}

Picture PaintCaustics() {
  constexpr int kWidth = 640, kHeight = 272, kRays = 5;
  constexpr double kDepth = 9, kMean = 26, kBrightest = 150;
  std::vector<double> landed(kWidth * kHeight);
  const auto add = [&](int x, int y, double light) {
    x = (x % kWidth + kWidth) % kWidth;
    y = (y % kHeight + kHeight) % kHeight;
    landed[static_cast<std::size_t>(y * kWidth + x)] += light;
  };
  for (int row = 0; row < kHeight * kRays; ++row) {
    for (int column = 0; column < kWidth * kRays; ++column) {
      const double x = (column + 0.5) / kRays, y = (row + 0.5) / kRays;
      const Place slope = SurfaceSlope(x, y, kWidth, kHeight);
      const double tx = x + kDepth * slope.x - 0.5, ty = y + kDepth * slope.y - 0.5;
      const int left = static_cast<int>(std::floor(tx)), top = static_cast<int>(std::floor(ty));
      const double fx = tx - left, fy = ty - top;
      add(left, top, (1 - fx) * (1 - fy));
      add(left + 1, top, fx * (1 - fy));
      add(left, top + 1, (1 - fx) * fy);
      add(left + 1, top + 1, fx * fy);
    }
  }
  Picture picture(kWidth, kHeight);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const double density = landed[static_cast<std::size_t>(y * kWidth + x)] / (kRays * kRays);
      const double light =
          kBrightest * (1 - std::exp(-std::pow(std::max(0.0, density - 0.35), 1.35) * kMean / 100));
      const Color tint =
          Mix(Hex(0x1878b8), Hex(0x86dcf8), std::min(1.0, light / 150)) * (1.0 / 255);
      picture.Set(x, y, Hex(0x030e17) + tint * light + Color{1, 1, 1} * (0.5 * Hash(x, y, 4)));
    }
  }
  DrawText(picture, "Nothing to set here: all stays as you leave it", 180, 140, 1.1, 1.05,
           Hex(0xcfeaf8) * 0.8);
  picture.Round();
  return picture;
}

Color MeanOfRow(const Picture& tile, int y, int left, int right) {
  Color sum;
  for (int x = left; x < right; ++x) sum = sum + tile.Get(x, y);
  return sum * (1.0 / (right - left));
}

void DrawWordmark(Picture& picture, double x, double top, double height, double spacing,
                  double stroke, Color color) {
  const double h = height, w = height * 0.82;
  const auto at = [&](double centre, double across, double down) {
    return Place{centre + across * w, top + down * h};
  };
  const double k = x - spacing, o = x + spacing;
  const Shape letters = Union({
      Stroke({{at(k, -.42, 0), at(k, -.42, 1)},
              {at(k, .44, 0), at(k, -.42, .62)},
              {at(k, -.14, .42), at(k, .46, 1)}},
             stroke),
      Stroke({{at(x, -.68, 0), at(x, -.34, 1), at(x, 0, .04), at(x, .34, 1), at(x, .68, 0)}},
             stroke),
      Ring({o, top + h / 2}, h / 2, stroke),
  });
  for (int row = static_cast<int>(top) - 3; row < top + h + 3; ++row) {
    for (int column = static_cast<int>(k - h); column < o + h; ++column) {
      const double ink = Coverage(letters({column + 0.5, row + 0.5}));
      if (ink > 0) picture.Set(column, row, Mix(picture.Get(column, row), color, ink));
    }
  }
}

}  // namespace kwo::tools
