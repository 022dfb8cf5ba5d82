#pragma once

#include "tools/skin/picture.h"

/// The tiles: five hours over the water, and once below it.
namespace kwo::tools {

constexpr int kPaneWidth = 420;
constexpr int kPaneHeight = 260;
/// The row of light that every tile has in the same place.
constexpr int kHorizon = 56;
/// The row from which the shore is black.
constexpr int kShore = 212;

enum Hour { FIRST_LIGHT, MOON, AFTERGLOW, SUNSET, AURORA };

/// Rounded, as the file holds it.
Picture PaintHour(Hour hour);
/// The light under the surface; seamless in both directions.
Picture PaintCaustics();

/// The mean of a tile's row between two columns: what an icon's soft edge is blended with.
Color MeanOfRow(const Picture& tile, int y, int left, int right);

/// The letters of the product's short name, `height` high from `top` down, centred at x.
void DrawWordmark(Picture& picture, double x, double top, double height, double spacing,
                  double stroke, Color color);

}  // namespace kwo::tools
