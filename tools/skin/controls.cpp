#include "tools/skin/controls.h"

#include <algorithm>
#include <cmath>

#include "tools/skin/hours.h"
#include "tools/skin/icons.h"
#include "tools/skin/shape.h"

namespace kwo::tools {
namespace {

constexpr int kBodyLeft = 22, kBodyRight = 466, kWindowWidth = 488, kWindowHeight = 302;
constexpr int kPaneX = 34, kPaneY = 30, kLine = kPaneY + kHorizon;

constexpr Color kAmber = Hex(0xffb866);
constexpr Color kIce = Hex(0xe4f2fa);
constexpr Color kTrack = Hex(0x5f9cc0);

Color BodyColor(int x, int y, double depth) {
  Color color = Mix(Hex(0x1b2230), Hex(0x0a0d14), static_cast<double>(y) / kWindowHeight);
  // The frame takes the line's light on both sides of the pane.
  const double beside = std::max(
      {0.0, static_cast<double>(kPaneX - x), static_cast<double>(x - kPaneX - kPaneWidth + 1)});
  if (beside > 0)
    color = color + Hex(0x1c4258) * (1.1 * std::exp(-std::pow(std::abs(y - kLine) / 13.0, 1.4)));
  // The rim: two pixels inside the upper edge, and faintly all the way round.
  const double rim = std::exp(-std::pow((depth - 2.4) / 0.8, 2));
  color = color + Hex(0x6f8aa6) * (rim * (0.10 + 0.62 * std::max(0.0, 1 - y / 40.0)));
  return depth < 1.6 ? color * 0.25 : color;
}

// The needle's light at a distance from the body, on its own row.
void DrawNeedle(Picture& picture, int from, int step) {
  for (int i = 0; i < kBodyLeft; ++i) {
    const Color light = Mix(Hex(0x72abc2), Hex(0x1d4a62), static_cast<double>(i) / (kBodyLeft - 1));
    const int x = from + step * i;
    picture.Set(x, kLine, light);
    if (i >= 10) continue;
    for (int y : {kLine - 1, kLine + 1}) picture.Set(x, y, light * (0.45 * (1 - i / 12.0)));
  }
}

// A line of light across the frame, from the pane's edge to the needle.
void DrawFrameLine(Picture& picture) {
  for (int i = 0; i < kPaneX - kBodyLeft; ++i) {
    const Color light = Mix(Hex(0xb4def0), Hex(0x72abc2), i / 11.0);
    for (int x : {kPaneX - 1 - i, kPaneX + kPaneWidth + i}) {
      picture.Set(x, kLine, light);
      for (int y : {kLine - 1, kLine + 1}) picture.Set(x, y, picture.Get(x, y) + light * 0.3);
    }
  }
}

Shape Chevron(Place c, double acrossX, double acrossY) {
  // The tip lies at c + across, the arms go back and to both sides.
  return Stroke({{{c.x - acrossX + 1.7 * acrossY, c.y - acrossY + 1.7 * acrossX},
                  {c.x + acrossX, c.y + acrossY},
                  {c.x - acrossX - 1.7 * acrossY, c.y - acrossY - 1.7 * acrossX}}},
                1.9);
}

// The cells of a slider in their order: thumb dragged, thumb, low cap pressed, low cap, track, high
// cap, high cap pressed.  `Paint` gets the cell's number and draws it.
constexpr int kCells = 7;

void DrawCell(Picture& picture, int cell, bool upright, int left, int top, int width, int height) {
  const Place c{width / 2.0, height / 2.0};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const Place p{x + 0.5, y + 0.5};
      const double fromTrack = std::fabs(upright ? p.x - c.x : p.y - c.y);
      Color color;
      const bool onTrack = cell == 0 || cell == 1 || cell == 4;
      if (onTrack)
        color = kTrack * (0.78 * Coverage(fromTrack - 1) + 0.22 * std::exp(-fromTrack / 1.6));
      if (cell <= 1) {
        const double radius = cell == 0 ? 5.8 : 5;
        const double distance = std::hypot(p.x - c.x, p.y - c.y) - radius;
        const Color halo = cell == 0 ? Hex(0xff7a1c) : Hex(0x3a86c8);
        color = color + halo * (0.5 * std::exp(-std::max(0.0, distance) / 1.5));
        color = Mix(color, cell == 0 ? Hex(0xffd7b0) : Color{255, 255, 255}, Coverage(distance));
      } else if (cell != 4) {
        const bool low = cell == 2 || cell == 3;
        const double reach = 2.1;
        // The low end lies at the left, or at the bottom.
        const double sign = upright == low ? 1 : -1;
        const Shape shape = upright ? Chevron(c, 0, sign * reach) : Chevron(c, sign * reach, 0);
        const double distance = shape(p);
        const bool pressed = cell == 2 || cell == 6;
        const Color ink = pressed ? kAmber : kIce * 0.86;
        color = (pressed ? Hex(0xff7a1c) : Hex(0x1c4a70)) *
                (0.45 * std::exp(-std::max(0.0, distance) / 1.6));
        color = Mix(color, ink, Coverage(distance));
      }
      picture.Set(left + x, top + y, color);
    }
  }
}

}  // namespace

Picture PaintBackground(const Picture& tile) {
  Picture picture(kWindowWidth, kWindowHeight);
  const Shape body = RoundBox({(kBodyLeft + kBodyRight) / 2.0, kWindowHeight / 2.0},
                              (kBodyRight - kBodyLeft) / 2.0, kWindowHeight / 2.0, 18);
  const Shape pane = RoundBox({kPaneX + kPaneWidth / 2.0, kPaneY + kPaneHeight / 2.0},
                              kPaneWidth / 2.0, kPaneHeight / 2.0, 6);
  const Shape joint = RoundBox({kPaneX + kPaneWidth / 2.0, kPaneY + kPaneHeight / 2.0},
                               kPaneWidth / 2.0 + 2, kPaneHeight / 2.0 + 2, 7);
  for (int y = 0; y < kWindowHeight; ++y) {
    for (int x = 0; x < kWindowWidth; ++x) {
      const Place p{x + 0.5, y + 0.5};
      const double distance = body(p);
      if (distance > 0) continue;
      Color color = BodyColor(x, y, -distance);
      // A faint light on the lower lip of the joint, and the joint itself.
      const double lip = joint(p);
      if (lip > 0 && y > kLine) color = color + Hex(0x2a3a4c) * (0.5 * std::exp(-lip / 0.9));
      color = color * (1 - Coverage(lip));
      const double inside = Coverage(pane(p));
      if (inside > 0)
        color = color + tile.Get(std::clamp(x - kPaneX, 0, kPaneWidth - 1),
                                 std::clamp(y - kPaneY, 0, kPaneHeight - 1)) *
                            inside;
      picture.Set(x, y, color);
    }
  }
  DrawFrameLine(picture);
  DrawNeedle(picture, kBodyLeft - 1, -1);
  DrawNeedle(picture, kBodyRight, 1);
  DrawWordmark(picture, kWindowWidth / 2.0, 11.2, 8.6, 21, 1.25, Hex(0xa9bfd2));
  return picture;
}

Picture TopGroupBox() {
  constexpr int kEdge[] = {0, 0, 4, 5, 6, 8, 9, 11, 13, 26, 35, 63, 108, 173};
  Picture picture(kPaneWidth, 48);
  for (int y = 0; y < picture.height; ++y) {
    const double taken = y < 14 ? kEdge[y] : 255;
    for (int x = 0; x < picture.width; ++x) picture.Set(x, y, {taken, taken, taken});
  }
  return picture;
}

Picture GroupBox(const Picture& tile, int height, bool dots) {
  Picture picture(tile.width, height);
  const Shape shape =
      Union({Disc({180, 25.5}, 1.9), Disc({180, 40.5}, 1.9), Disc({240, 45.2}, 1.9)});
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < tile.width; ++x) {
      const double dot = dots ? Coverage(shape({x + 0.5, y + 0.5})) : 0;
      picture.Set(x, y, Mix(tile.Get(x, y), Color{255, 255, 255}, dot));
    }
  }
  return picture;
}

Picture Lamp() {
  Picture picture(14, 14);
  Ink ink{Hex(0x9ce6fb), Hex(0x9ce6fb), Hex(0x2c7ea6), 0.9};
  ink.threshold = 0.10;
  DrawInk(picture, RoundBox({7, 7}, 1, 5, 1), ink, 0, 0, 14, 14);
  return picture;
}

Picture Toggles() {
  Picture picture(32, 28);
  const Place c{14.5, 7};
  const Shape track = RoundBox(c, 11.5, 5, 5);
  for (int state = 0; state < 2; ++state) {
    for (int y = 0; y < 14; ++y) {
      for (int x = 0; x < 32; ++x) {
        const Place p{x + 0.5, y + 0.5};
        const double distance = track(p);
        Color color;
        if (state == 0) {
          color = Mix(color, Hex(0x142436), Coverage(distance));
          color = Mix(color, Hex(0x6a8eb0), Coverage(std::fabs(distance + 0.6) - 0.6));
          color = Mix(color, Hex(0x9fbcd4), Coverage(std::hypot(p.x - 8.4, p.y - 7) - 2.3));
        } else {
          color = Hex(0xff7a1c) * (0.4 * std::exp(-std::max(0.0, distance) / 1.5));
          color = Mix(color, Mix(Hex(0x8a4c18), Hex(0xe8963f), (p.x - 3) / 23), Coverage(distance));
          color = Mix(color, Hex(0xfff2dc), Coverage(std::hypot(p.x - 21, p.y - 7) - 3.6));
        }
        picture.Set(x, state * 14 + y, color);
      }
    }
  }
  return picture;
}

Picture HorizontalSlider() {
  Picture picture(18 * kCells, 18);
  for (int cell = 0; cell < kCells; ++cell) DrawCell(picture, cell, false, 18 * cell, 0, 18, 18);
  return picture;
}

Picture VerticalSlider() {
  Picture picture(16, 18 * kCells);
  for (int cell = 0; cell < kCells; ++cell)
    DrawCell(picture, cell, true, 0, 18 * (kCells - 1 - cell), 16, 18);
  return picture;
}

Picture PresetStep(bool forward) {
  constexpr int kWidth = 118, kHeight = 18, kTip = 104;
  Picture picture(kWidth, kHeight);
  const Shape chevron = Chevron({kTip, kHeight / 2.0}, -2.1, 0);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const double distance = chevron({x + 0.5, y + 0.5});
      Color color = Hex(0x4a3a90) * (0.5 * std::exp(-std::max(0.0, distance) / 1.7));
      if (y == kHeight / 2 && x < kTip - 12) color = Hex(0x7a68c8) * (0.8 * x / (kTip - 12.0));
      color = Mix(color, kIce * 0.92, Coverage(distance));
      picture.Set(forward ? kWidth - 1 - x : x, y, color);
    }
  }
  return picture;
}

}  // namespace kwo::tools
