#include "tools/skin/icons.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

#include "tools/skin/hours.h"

namespace kwo::tools {
namespace {

constexpr double kStroke = 1.9;

struct Named {
  const char* name;
  Shape shape;
};

const Shape& Find(const std::vector<Named>& icons, const std::string& name) {
  for (const Named& icon : icons)
    if (icon.name == name) return icon.shape;
  std::abort();
}

Picture Draw(int width, int height, const Shape& shape, const Ink& ink) {
  Picture picture(width, height);
  DrawInk(picture, shape, ink, 0, 0, width, height);
  return picture;
}

// Two triangles and a bar, pointing right, about a centre.
Shape SkipShape(Place c) {
  const auto triangle = [&](double x) {
    return Polygon({{x, c.y - 7.2}, {x + 8.6, c.y}, {x, c.y + 7.2}}, 0.7);
  };
  return Union(
      {triangle(c.x - 10), triangle(c.x - 1.4), RoundBox({c.x + 8.9, c.y}, 1.5, 7.8, 0.8)});
}

Shape GearShape(Place c) {
  std::vector<Line> teeth;
  teeth.reserve(8);
  for (int i = 0; i < 8; ++i) {
    const Line spoke = Arc(c, 1, 1, 45 * i, 45 * i);
    const double x = spoke[0].x - c.x, y = spoke[0].y - c.y;
    teeth.push_back({{c.x + 6.4 * x, c.y + 6.4 * y}, {c.x + 8.7 * x, c.y + 8.7 * y}});
  }
  return Union({Stroke(teeth, 2.3), Ring(c, 6.1, kStroke), Ring(c, 2.2, 1.5)});
}

// Sliders with their knobs, upright or lying: three ways of 17 pixels, 7 apart.
Shape FaderShape(Place c, bool upright) {
  std::vector<Shape> parts;
  constexpr double kKnobs[] = {3.2, -3.6, 1.4};
  for (int i = 0; i < 3; ++i) {
    const double across = 7.0 * (i - 1), knob = upright ? kKnobs[i] : -kKnobs[i];
    const auto at = [&](double along) {
      return upright ? Place{c.x + across, c.y + along} : Place{c.x + along, c.y + across};
    };
    parts.push_back(Stroke({{at(-8.3), at(knob - 2.6)}, {at(knob + 2.6), at(8.3)}}, 1.7));
    parts.push_back(Ring(at(knob), 2.1, 1.6));
  }
  return Union(parts);
}

Line Star(Place c, double reach, double waist) {
  Line corners;
  for (int i = 0; i < 8; ++i) {
    const double r = i % 2 ? waist : reach;
    const Place place = Arc(c, r, r, 45.0 * i, 45.0 * i)[0];
    corners.push_back(place);
  }
  return corners;
}

}  // namespace

void DrawInk(Picture& picture, const Shape& shape, const Ink& ink, int left, int top, int width,
             int height) {
  for (int y = top; y < top + height; ++y) {
    const Color below =
        ink.under ? MeanOfRow(*ink.under, ink.underTop + y - top, 60, 360) : Color{};
    const Color color =
        Mix(ink.top, ink.bottom, static_cast<double>(y - top) / std::max(1, height - 1));
    for (int x = left; x < left + width; ++x) {
      const double distance = shape({x - left + 0.5, y - top + 0.5});
      const double cover = Coverage(distance);
      const double rim = ink.outline > 0 ? Coverage(distance - 1) : cover;
      const double glow =
          ink.haloReach > 0 ? 0.55 * std::exp(-std::max(0.0, distance) / ink.haloReach) : 0;
      if (std::max({cover, rim, glow}) < ink.threshold) continue;
      const Color ground = below * (1 - ink.outline * rim) + ink.halo * glow;
      picture.Set(x, y, Mix(ground, color, cover));
    }
  }
}

Picture TransportIcon(const char* name) {
  const std::vector<Named> icons = {
      {"prev", Mirrored(SkipShape({24, 16}), 24)},
      {"stop", RoundBox({22, 16}, 7, 7, 1.6)},
      {"play", Polygon({{16, 7.6}, {31, 16}, {16, 24.4}}, 1.0)},
      {"next", SkipShape({20, 16})},
  };
  Ink ink{Hex(0xf2faff), Hex(0xd2e8f6), Hex(0x2c6cb4) * 0.72, 2.6};
  if (std::string(name) == "play") ink = {Hex(0xffcc86), Hex(0xff9e42), Hex(0xff7a1c) * 0.8, 3.0};
  return Draw(44, 38, Find(icons, name), ink);
}

Picture PageIcon(const char* name) {
  const Place c{18, 16};
  const std::vector<Named> icons = {
      {"ma", Stroke({{{8.6, 16.5},
                      {12.4, 16.5},
                      {14.4, 12.6},
                      {17, 22.6},
                      {19.6, 9.6},
                      {21.9, 18.4},
                      {23.2, 16.5},
                      {27.4, 16.5}}},
                    kStroke)},
      {"pl", Union({Stroke({{{14, 9.5}, {27, 9.5}}, {{14, 16}, {27, 16}}, {{14, 22.5}, {27, 22.5}}},
                           kStroke),
                    Disc({9.6, 9.5}, 1.4), Disc({9.6, 16}, 1.4), Disc({9.6, 22.5}, 1.4)})},
      {"mi", FaderShape(c, true)},
      {"in", Union({Ring(c, 8.4, kStroke), Disc({18, 11.9}, 1.25),
                    Stroke({{{18, 15.4}, {18, 20.4}}}, 2.0)})},
      {"co", GearShape(c)},
      {"wi",
       Union({BoxOutline(c, 8.7, 7.2, 2.2, kStroke), Stroke({{{10, 13.2}, {26, 13.2}}}, 1.6)})},
  };
  Ink ink{Hex(0x6a8eb0), Hex(0x6a8eb0)};
  ink.threshold = 0.16;
  return Draw(36, 38, Find(icons, name), ink);
}

Picture PlaylistIcon(const char* name, const Picture& tile) {
  const double x = 32, y = 28;
  const std::vector<Named> icons = {
      {"function", Stroke({{{x - 9, y - 6.5}, {x + 9, y - 6.5}},
                           {{x - 9, y}, {x + 9, y}},
                           {{x - 9, y + 6.5}, {x + 3, y + 6.5}}},
                          2)},
      {"add", Stroke({{{x - 8.5, y}, {x + 8.5, y}}, {{x, y - 8.5}, {x, y + 8.5}}}, 2)},
      {"remove", Stroke({{{x - 8.5, y}, {x + 8.5, y}}}, 2)},
      {"itemup",
       Stroke({{{x, y + 8.8}, {x, y - 8.6}}, {{x - 7, y - 1.6}, {x, y - 8.6}, {x + 7, y - 1.6}}},
              2)},
      {"itemdown",
       Stroke({{{x, y - 8.8}, {x, y + 8.6}}, {{x - 7, y + 1.6}, {x, y + 8.6}, {x + 7, y + 1.6}}},
              2)},
  };
  Ink ink{Hex(0xd4e6f2), Hex(0xd4e6f2)};
  ink.under = &tile;
  ink.outline = 0.3;
  return Draw(64, 54, Find(icons, name), ink);
}

Picture MixerIcon(const char* name, const Picture& tile) {
  const Place c{36, 28};
  const std::vector<Named> icons = {
      {"sl", FaderShape(c, false)},
      {"eq",
       Stroke(
           {Bend({26.6, 34}, {30, 34.4}, {31.6, 26}), Bend({31.6, 26}, {33.4, 17}, {36, 26}),
            Bend({36, 26}, {38.4, 35}, {40.4, 29.6}), Bend({40.4, 29.6}, {42, 25}, {45.4, 33.4})},
           kStroke)},
      {"ef", Union({Polygon(Star({34.6, 29}, 8.6, 2.2), 0.7),
                    Stroke({{{43, 19.2}, {43, 24.8}}, {{40.2, 22}, {45.8, 22}}}, 1.5)})},
      {"dj", Union({Ring(c, 8.5, kStroke), Ring(c, 2.2, 1.6),
                    Stroke({Arc(c, 5.3, 5.3, -75, -15), Arc(c, 5.3, 5.3, 105, 165)}, 1.4)})},
  };
  // Light enough that the pulse of the one in front, a hundred down, never takes it to black.
  Ink ink{Hex(0xb4aee0), Hex(0xb4aee0)};
  ink.under = &tile;
  ink.threshold = 0.16;
  return Draw(72, 54, Find(icons, name), ink);
}

Picture MainIcon(const char* name, const Picture& tile) {
  std::vector<Line> bars;
  bars.reserve(6);
  constexpr double kHalves[] = {2.4, 5.4, 8.6, 6.4, 8.0, 3.6};
  for (int i = 0; i < 6; ++i)
    bars.push_back({{15.25 + 3.5 * i, 33 - kHalves[i]}, {15.25 + 3.5 * i, 33 + kHalves[i]}});
  const std::vector<Named> icons = {
      {"mode",
       Union({BoxOutline({24, 33}, 9.2, 7.4, 2.4, kStroke), RoundBox({28, 35.6}, 3, 2.3, 0.7)})},
      {"wave", Stroke(bars, 1.8)},
  };
  Ink ink{Hex(0xa8c8dc), Hex(0xa8c8dc)};
  ink.under = &tile;
  ink.outline = 0.3;
  return Draw(48, 66, Find(icons, name), ink);
}

Picture Digits(const Picture& tile) {
  constexpr int kWidth = 26, kHeight = 40, kStripTop = 13;
  // The centre lines of strokes 2.5 wide in the box 5.2 to 20.8 by 4.6 to 35.4.
  constexpr double l = 6.45, r = 19.55, t = 5.85, b = 34.15, m = 13, rx = 6.55, ry = 7.07;
  const double upper = t + ry, lower = b - ry;
  const Shape six =
      Stroke({Arc({m, 26.4}, rx, 7.75, 0, 360), Bend({17.6, t}, {l + .2, 13.4}, {l, 26.4})}, 2.5);
  const std::vector<Shape> digits = {
      BoxOutline({m, 20}, rx, (b - t) / 2, rx, 2.5),
      Stroke({{{9.2, 9.6}, {14.6, t}, {14.6, b}}}, 2.5),
      Stroke({Arc({m, 12.4}, rx, 6.55, 180, 395),
              Bend({18.5, 16.1}, {15.4, 21.6}, {l, b}),
              {{l, b}, {r, b}}},
             2.5),
      Stroke({Arc({m, upper}, rx - .4, ry, 195, 450), Arc({m, lower}, rx, ry, -90, 165)}, 2.5),
      Stroke({{{15.2, t}, {l, 26.2}, {r + .4, 26.2}}, {{16, 18.4}, {16, b}}}, 2.5),
      Stroke({{{18.6, t}, {8.2, t}, {7.2, 18.6}}, Arc({12.8, 25.6}, 6.75, 8.55, 215, 512)}, 2.5),
      six,
      Stroke({{{l, t}, {r, t}, {10.6, b}}}, 2.5),
      Stroke({Arc({m, upper}, rx - .5, ry, 0, 360), Arc({m, lower}, rx, ry, 0, 360)}, 2.5),
      [six](Place p) {
        return six({2 * m - p.x, 40 - p.y});
      },
  };
  Picture picture(kWidth, 10 * kHeight);
  Ink ink{Hex(0xffffff), Hex(0xcfeaf8)};
  ink.under = &tile;
  ink.underTop = kStripTop;
  ink.outline = 0.3;
  for (int i = 0; i < 10; ++i)
    DrawInk(picture, digits[static_cast<std::size_t>(i)], ink, 0, i * kHeight, kWidth, kHeight);
  return picture;
}

}  // namespace kwo::tools
