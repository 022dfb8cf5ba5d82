#include "toolkit/menu_colors.h"

#include <algorithm>
#include <cmath>

#include "toolkit/skin_description.h"

namespace kwo {
namespace {

// What small text needs to be read; black or white reaches it on any colour.
constexpr double kReadable = 4.5;
// A sixteenth of the way at a time.
constexpr int kSteps = 16, kBackground = 8;

// Relative luminance in sRGB.
double Luminance(std::uint32_t color) {
  const auto linear = [color](int shift) {
    const double value = (color >> shift & 255) / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(0) + 0.7152 * linear(8) + 0.0722 * linear(16);
}

double Contrast(std::uint32_t color, std::uint32_t other) {
  const auto [low, high] = std::minmax({Luminance(color), Luminance(other)});
  return (high + 0.05) / (low + 0.05);
}

std::uint32_t Mixed(std::uint32_t color, std::uint32_t with, int steps) {
  std::uint32_t mixed = 0;
  for (const int shift : {0, 8, 16}) {
    const int from = static_cast<int>(color >> shift & 255);
    const int to = static_cast<int>(with >> shift & 255);
    mixed |= static_cast<std::uint32_t>(from + (to - from) * steps / kSteps) << shift;
  }
  return mixed;
}

// A ground on which the text can be read, at least so many steps away from a colour.
std::uint32_t Ground(std::uint32_t color, std::uint32_t text, int steps) {
  constexpr std::uint32_t kBlack = 0, kWhite = 0xFFFFFF;
  const std::uint32_t far = Contrast(kBlack, text) > Contrast(kWhite, text) ? kBlack : kWhite;
  while (steps < kSteps && Contrast(Mixed(color, far, steps), text) < kReadable) ++steps;
  return Mixed(color, far, steps);
}

}  // namespace

platform::MenuColors SkinMenuColors() {
  const std::uint32_t text = skin.FontColor;
  const std::uint32_t ground = Ground(skin.SelectedSongColor, text, kBackground);
  const std::uint32_t pointed = Ground(skin.SelectedSongColor, text, 0);
  // Where both grounds are alike the item under the pointer has the two colours exchanged.
  constexpr double kSeen = 1.2;
  const bool seen = Contrast(pointed, ground) >= kSeen;
  const bool marked = Contrast(skin.CurrentSongColor, ground) >= kReadable;
  return {text, ground, seen ? text : ground, seen ? pointed : text,
          marked ? skin.CurrentSongColor : text};
}

}  // namespace kwo
