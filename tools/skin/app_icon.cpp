#include "tools/skin/app_icon.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "tools/png_writer.h"
#include "tools/skin/picture.h"
#include "tools/skin/shape.h"

namespace kwo::tools {
namespace {

constexpr int kSamples = 4;    // a side of a pixel
constexpr double kUnits = 64;  // a side of the icon
constexpr double kHorizon = 31;

// The light within the slab: a sky, the sun on the line, and its way over the water.
Color PaneLight(Place p) {
  const double dx = p.x - 32, u = std::fabs(p.y - kHorizon);
  const double sun = std::exp(-std::pow(std::hypot(dx / 1.7, u) / 5.5, 1.2));
  const double glow = std::exp(-u / 6.5) * std::exp(-dx * dx / 420);
  if (p.y < kHorizon)
    return Mix(Hex(0x1d4163), Hex(0x060c18), std::min(1.0, std::pow(u / 21, 0.6))) +
           Hex(0xff6c2c) * (0.85 * glow) + Hex(0xffd9a0) * sun;
  const double way = std::exp(-dx * dx / ((3 + 0.25 * u) * (3 + 0.25 * u))) * std::exp(-u / 9);
  const double broken = 0.55 + 0.45 * std::cos(u * 2.2 + 0.35 * dx);
  return Mix(Hex(0x0d2637), Hex(0x03080f), std::min(1.0, u / 18)) + Hex(0xff7c3a) * (0.32 * glow) +
         Hex(0xffc888) * (0.7 * way * broken);
}

Picture PaintLarge(int side) {
  Picture picture(side, side);
  const Shape body = RoundBox({32, 32}, 26, 24, 9);
  const Shape pane = RoundBox({32, 32}, 22.5, 20.5, 5.5);
  const Shape needle = Stroke({{{1.5, kHorizon}, {62.5, kHorizon}}}, 1.1);
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const Place p{(x + 0.5) * kUnits / side, (y + 0.5) * kUnits / side};
      const bool onNeedle = needle(p) < 0;
      if (body(p) > 0 && !onNeedle) continue;
      const double rim = std::exp(-std::pow((body(p) + 1.3) / 0.7, 2));
      Color color = Mix(Hex(0x2a3446), Hex(0x0c1018), p.y / kUnits) +
                    Hex(0x6f8aa6) * (rim * std::max(0.1, 0.8 - p.y / 40));
      if (pane(p) < 0) color = PaneLight(p);
      const double toSun = std::fabs(p.x - 32);
      if (onNeedle)
        color = Mix(Hex(0x8fd6f2) * (1.05 - toSun / 60), Color{255, 250, 240},
                    std::exp(-std::pow(toSun / 11, 1.3)));
      picture.Set(x, y, color);
    }
  }
  return picture;
}

}  // namespace

bool SaveAppIcon(const std::string& path, int size) {
  const Picture large = PaintLarge(size * kSamples);
  std::vector<std::uint8_t> pixels;
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      Color sum;
      int drawn = 0;
      for (int i = 0; i < kSamples * kSamples; ++i) {
        const int sx = x * kSamples + i % kSamples, sy = y * kSamples + i / kSamples;
        if (!large.Drawn(sx, sy)) continue;
        const Color c = large.Get(sx, sy);
        sum =
            sum + Color{std::min(c.red, 255.0), std::min(c.green, 255.0), std::min(c.blue, 255.0)};
        ++drawn;
      }
      for (double channel : {sum.red, sum.green, sum.blue})
        pixels.push_back(drawn ? static_cast<std::uint8_t>(channel / drawn + 0.5) : 0);
      pixels.push_back(static_cast<std::uint8_t>(255 * drawn / (kSamples * kSamples)));
    }
  }
  return WritePng(path, size, size, pixels);
}

}  // namespace kwo::tools
