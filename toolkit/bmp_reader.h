#pragma once

#include <string_view>

#include "toolkit/skin_bitmap.h"

namespace kwo {

/// A picture of the BMP format, uncompressed, of 8, 24 or 32 bits a pixel, stored from either end.
struct BmpPicture {
  int width, height;
  int bitsPerPixel;
  bool topDown;
  std::string_view palette;  ///< four bytes a colour: blue, green, red, 0
  std::string_view pixels;   ///< as stored, rows padded to four bytes
};

/// Reads the headers.  False for anything that isn't such a picture, whole: a size beyond
/// kMaxBmpSide, fewer pixels or colours in the file than the headers promise.
bool ReadBmpHeaders(std::string_view file, BmpPicture& picture);

/// Turns the pixels into those of `bitmap`, which has the picture's size.
void ConvertBmpPixels(const BmpPicture& picture, SkinBitmap& bitmap);

constexpr int kMaxBmpSide = 8192;

}  // namespace kwo
