#include "tools/skin/shape.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

namespace kwo::tools {
namespace {

constexpr int kCurvePieces = 24;

double LineDistance(Place p, Place a, Place b) {
  const double dx = b.x - a.x, dy = b.y - a.y;
  const double square = dx * dx + dy * dy;
  const double t =
      square > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / square, 0.0, 1.0) : 0;
  return std::hypot(p.x - a.x - t * dx, p.y - a.y - t * dy);
}

// Letters as strokes on a grid: a point is two digits, x and y; y is 2 on the base line, 7 at the
// top of small letters, 9 at that of capitals and 0 below the line.
struct Glyph {
  char letter;
  int advance;
  const char* strokes;
};

constexpr Glyph kGlyphs[] = {
    {'a', 6, "4247 4637170603123243"},
    {'b', 6, "0902 0617374643321203"},
    {'c', 6, "4637170603123243"},
    {'d', 6, "4942 4637170603123243"},
    {'e', 6, "05454637170603123243"},
    {'f', 4, "39291812 0737"},
    {'g', 6, "4741301001 4637170603123243"},
    {'h', 6, "0902 0617374642"},
    {'i', 2, "0702 0909"},
    {'k', 5, "0902 4704 2542"},
    {'l', 2, "0902"},
    {'m', 8, "0702 0617273632 3647576662"},
    {'n', 6, "0702 0617374642"},
    {'o', 6, "061737464332120306"},
    {'p', 6, "0700 0617374643321203"},
    {'r', 4, "0702 051737"},
    {'s', 6, "46371706153443321203"},
    {'t', 5, "19132232 0737"},
    {'u', 6, "0703123243 4742"},
    {'v', 6, "072247"},
    {'w', 8, "0712375267"},
    {'x', 6, "0742 4702"},
    {'y', 6, "0722 47211000"},
    {'B', 6, "02093948473606 3645433202"},
    {'D', 6, "02092947442202"},
    {'H', 6, "0209 4249 0646"},
    {'M', 8, "0209356962"},
    {'N', 6, "02094249"},
    {'P', 6, "02093948463505"},
    {'R', 6, "02093948463505 2542"},
    {'S', 6, "483919080716354443321203"},
    {'T', 6, "0949 2922"},
    {'V', 6, "092249"},
    {',', 3, "1301"},
    {'.', 3, "1212"},
    {'/', 5, "0139"},
    {':', 3, "1313 1616"},
    {' ', 3, ""},
};

const Glyph* FindGlyph(char letter) {
  for (const Glyph& glyph : kGlyphs)
    if (glyph.letter == letter) return &glyph;
  return nullptr;
}

}  // namespace

Shape Stroke(std::vector<Line> lines, double width) {
  return [lines = std::move(lines), width](Place p) {
    double nearest = std::numeric_limits<double>::max();
    for (const Line& line : lines)
      for (std::size_t i = 0; i < line.size(); ++i)
        nearest =
            std::min(nearest, LineDistance(p, line[i], line[std::min(i + 1, line.size() - 1)]));
    return nearest - width / 2;
  };
}

Shape Polygon(Line corners, double radius) {
  return [corners = std::move(corners), radius](Place p) {
    double nearest = std::numeric_limits<double>::max();
    bool inside = false;
    for (std::size_t i = 0, j = corners.size() - 1; i < corners.size(); j = i++) {
      const Place a = corners[i], b = corners[j];
      nearest = std::min(nearest, LineDistance(p, a, b));
      if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x)
        inside = !inside;
    }
    return (inside ? -nearest : nearest) - radius;
  };
}

Shape Disc(Place centre, double radius) {
  return [=](Place p) { return std::hypot(p.x - centre.x, p.y - centre.y) - radius; };
}

Shape Ring(Place centre, double radius, double width) {
  return [=](Place p) {
    return std::fabs(std::hypot(p.x - centre.x, p.y - centre.y) - radius) - width / 2;
  };
}

Shape RoundBox(Place centre, double halfWidth, double halfHeight, double radius) {
  return [=](Place p) {
    const double x = std::fabs(p.x - centre.x) - halfWidth + radius;
    const double y = std::fabs(p.y - centre.y) - halfHeight + radius;
    return std::hypot(std::max(x, 0.0), std::max(y, 0.0)) + std::min(std::max(x, y), 0.0) - radius;
  };
}

Shape BoxOutline(Place centre, double halfWidth, double halfHeight, double radius, double width) {
  return [box = RoundBox(centre, halfWidth, halfHeight, radius), width](Place p) {
    return std::fabs(box(p)) - width / 2;
  };
}

Shape Union(std::vector<Shape> shapes) {
  return [shapes = std::move(shapes)](Place p) {
    double nearest = std::numeric_limits<double>::max();
    for (const Shape& shape : shapes) nearest = std::min(nearest, shape(p));
    return nearest;
  };
}

Shape Mirrored(const Shape& shape, double x) {
  return [=](Place p) { return shape({2 * x - p.x, p.y}); };
}

Line Arc(Place centre, double radiusX, double radiusY, double from, double to) {
  Line line;
  for (int i = 0; i <= kCurvePieces; ++i) {
    const double angle = (from + (to - from) * i / kCurvePieces) * std::numbers::pi / 180;
    line.push_back({centre.x + radiusX * std::cos(angle), centre.y + radiusY * std::sin(angle)});
  }
  return line;
}

Line Bend(Place a, Place b, Place c) {
  Line line;
  for (int i = 0; i <= kCurvePieces; ++i) {
    const double t = static_cast<double>(i) / kCurvePieces, s = 1 - t;
    line.push_back(
        {s * s * a.x + 2 * s * t * b.x + t * t * c.x, s * s * a.y + 2 * s * t * b.y + t * t * c.y});
  }
  return line;
}

double Coverage(double distance) {
  return std::clamp(0.5 - distance, 0.0, 1.0);
}

Shape Text(std::string_view text, Place place, double unit, double width) {
  std::vector<Line> lines;
  for (char letter : text) {
    const Glyph* glyph = FindGlyph(letter);
    if (!glyph) continue;
    lines.emplace_back();
    for (const char* digit = glyph->strokes; *digit; ++digit) {
      if (*digit == ' ') {
        lines.emplace_back();
        continue;
      }
      const int x = digit[0] - '0', y = digit[1] - '0';
      lines.back().push_back({place.x + x * unit, place.y - (y - 2) * unit});
      ++digit;
    }
    place.x += glyph->advance * unit;
  }
  std::erase_if(lines, [](const Line& line) { return line.empty(); });
  return Stroke(std::move(lines), width);
}

}  // namespace kwo::tools
