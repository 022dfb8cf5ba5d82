#pragma once

#include "toolkit/skin_bitmap.h"

namespace kwo::test {

/// The pixel at a place counted from the top, 0x00BBGGRR.
inline std::uint32_t PixelAt(const SkinBitmap& bitmap, int x, int y) {
  const std::uint8_t* p = bitmap.bits + (bitmap.height - 1 - y) * bitmap.stride + 3 * x;
  return static_cast<std::uint32_t>(p[2] | p[1] << 8 | p[0] << 16);
}

}  // namespace kwo::test
