#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "tools/skin/picture.h"

/// Shapes as distances, and the ink that fills them.
namespace kwo::tools {

struct Place {
  double x, y;
};

/// Distance of a place from a shape's edge in pixels, below 0 inside.
using Shape = std::function<double(Place)>;

using Line = std::vector<Place>;

/// Lines of a width, with round ends and joins.
Shape Stroke(std::vector<Line> lines, double width);
/// A filled polygon whose corners are rounded outwards by `radius`.
Shape Polygon(Line corners, double radius);
Shape Disc(Place centre, double radius);
Shape Ring(Place centre, double radius, double width);
Shape RoundBox(Place centre, double halfWidth, double halfHeight, double radius);
Shape BoxOutline(Place centre, double halfWidth, double halfHeight, double radius, double width);
Shape Union(std::vector<Shape> shapes);
/// Mirrored left to right about x.
Shape Mirrored(const Shape& shape, double x);

/// Part of an ellipse; angles in degrees, clockwise from the right.
Line Arc(Place centre, double radiusX, double radiusY, double from, double to);
/// A curve from `a` to `c` that leans towards `b`.
Line Bend(Place a, Place b, Place c);

/// How much of a pixel lies within a shape, 0 to 1, given its centre's distance.
double Coverage(double distance);

/// A line of text drawn as strokes of a width; capitals are 7 units high.  `place` is the left end
/// of the base line.
Shape Text(std::string_view text, Place place, double unit, double width);

}  // namespace kwo::tools
