#pragma once

#include <cstdint>

/// The four loops that move pixels from bitmap to bitmap.  None clips: both rectangles lie within
/// their bitmaps.  Pixels are blue, green, red; rows count from the bottom of the picture.  Any
/// thread; nothing here allocates or waits.
namespace kwo {

/// A place in the pixels of a bitmap.
struct BlitSource {
  const std::uint8_t* bits;
  int x, row, stride;
};
struct BlitTarget {
  std::uint8_t* bits;
  int x, row, stride;
};

enum BlendMode : int { BLEND_COPY = 0, BLEND_ADD = 1, BLEND_SUBTRACT = 2, BLEND_AVERAGE = 3 };

void BlitCopy(const BlitSource& source, int width, int height, const BlitTarget& target);

/// Adds `brightness` to every channel on the way.
void BlitBright(const BlitSource& source, int width, int height, const BlitTarget& target,
                int brightness);

/// Leaves out the pixels of the colour `key`, 0x00BBGGRR.
void BlitKeyed(const BlitSource& source, int width, int height, const BlitTarget& target,
               std::uint32_t key);

/// Key (none above 0xFFFFFF), then brightness, then the blend mode; an unknown mode copies.
void BlitBlend(const BlitSource& source, int width, int height, const BlitTarget& target,
               int brightness, int blendMode, std::uint32_t key);

}  // namespace kwo
