#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

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

/// Turns the pixels into rows of blue, green, red from the bottom up, `stride` bytes apart, which
/// are black before.  `indices` gets the palette index of each pixel of an 8-bit picture, without
/// padding.
void ConvertBmpPixels(const BmpPicture& picture, std::uint8_t* rows, int stride,
                      std::vector<std::uint8_t>& indices);

constexpr int kMaxBmpSide = 8192;

}  // namespace kwo
