#pragma once

#include "tools/skin/picture.h"
#include "tools/skin/shape.h"

/// The skin's icons and digits: one family, about 18 pixels wide.
namespace kwo::tools {

/// How an icon's ink meets what lies below it.
struct Ink {
  Color top, bottom;     ///< the ink's colour, from the icon's upper edge to its lower one
  Color halo{};          ///< light around the ink, on black
  double haloReach = 0;  ///< pixels; 0: none
  const Picture* under = nullptr;  ///< the tile below, row by row; black if there is none
  int underTop = 0;                ///< the tile's row under the icon's first
  double outline = 0;              ///< how much darker the pixel around the ink is
  double threshold = 0.06;         ///< share of ink below which a pixel is key
};

/// Draws a shape into a rectangle of a picture, whose other pixels stay as they are.
void DrawInk(Picture& picture, const Shape& shape, const Ink& ink, int left, int top, int width,
             int height);

Picture TransportIcon(const char* name);
Picture PageIcon(const char* name);
Picture PlaylistIcon(const char* name, const Picture& tile);
Picture MixerIcon(const char* name, const Picture& tile);
Picture MainIcon(const char* name, const Picture& tile);
/// Ten frames, one above the other.
Picture Digits(const Picture& tile);

}  // namespace kwo::tools
