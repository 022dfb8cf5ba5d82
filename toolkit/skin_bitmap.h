#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/shared.h"
#include "platform/text.h"
#include "platform/window.h"
#include "toolkit/blits.h"

namespace kwo {

constexpr std::uint32_t kNoKey = 0xFFFFFFFF;

/// A 24-bit bitmap through which every pixel of the interface passes.
///
/// A pixel is blue, green, red; memory row 0 is the bottom line of the picture, and each row begins
/// at a multiple of four bytes.  A bitmap that could not be made or loaded is empty: 0 by 0,
/// nothing to draw.  Pixels may be painted on one thread while another reads them; all else belongs
/// to one thread at a time.
class SkinBitmap {
 public:
  SkinBitmap() = default;
  SkinBitmap(const SkinBitmap&) = delete;
  SkinBitmap& operator=(const SkinBitmap&) = delete;

  /// Takes a new key, and looks once whether any pixel has it: a picture without, whose pixels must
  /// not change from then on, is drawn as one that has no key.
  void SetKey(std::uint32_t newKey);
  /// The key by which to draw.
  std::uint32_t DrawnKey() const { return keyless ? kNoKey : key; }

  /// Gives up the pixels.
  void ReleaseHandle();

  /// Makes a picture of one colour (0x00BBGGRR).  1, or 0 if it would have no size or the memory is
  /// not to be had.
  int CreateBlank(int newWidth, int newHeight, std::uint32_t fillColor);

  /// Loads a BMP file.  1, or 0 if it can't be read.  A bitmap that holds a picture keeps it, and
  /// only notes the new path.
  int LoadFromFile(const char* path);

  /// Tells one state of the pixels from all others, of any bitmap.  Those who draw the bitmap take
  /// it before they read the pixels.
  std::uint32_t Version() const { return version.Acquire(); }
  /// Tells that the pixels have been painted; the bitmap's own operations do.
  void Touch();

  void FillSolid(std::uint32_t color);
  /// The same within a rectangle, counted from the top and cut to the bitmap.
  void FillRectangle(int x, int y, int rectWidth, int rectHeight, std::uint32_t color);

  /// Fills the bitmap, unless `fillColor` is above 0xFFFFFF, and writes a line of text at (x, y)
  /// counted from the top; without a font only the fill happens.
  void FillAndText(const char* text, const platform::Font* font, std::uint32_t textColor,
                   std::uint32_t fillColor, int x, int y);

  /// Puts a rectangle, counted from the top and cut to the bitmap, on the window at the same place.
  void PresentToWindow(int x, int y, int rectWidth, int rectHeight) const;

  /// Copies a rectangle, counted from the top, from the same place of another bitmap; what lies
  /// outside either is left out.
  void CopyFrom(const SkinBitmap* source, int x, int y, int rectWidth, int rectHeight);

  BlitSource Source(int x, int row) const { return {bits, x, row, stride}; }
  BlitTarget Target(int x, int row) { return {bits, x, row, stride}; }

  std::unique_ptr<std::uint8_t[]> handle;  ///< owns the pixel memory
  std::uint8_t* bits = nullptr;
  /// The palette index of each pixel, for a picture that came from an 8-bit file: row by row from
  /// the bottom, without padding.  Empty for all others.
  std::vector<std::uint8_t> indices;
  int stride = 0;
  std::uint32_t key = kNoKey;  ///< a value above 0xFFFFFF means none
  char fileName[128] = {};
  int width = 0;
  int height = 0;

 private:
  Shared<std::uint32_t> version;
  bool keyless = false;
  bool Allocate(int newWidth, int newHeight);
  platform::Rectangle Cut(const platform::Rectangle& area) const;
};

/// Bytes from one row of 24-bit pixels to the next.
constexpr int RowBytes(int width) {
  return (3 * width + 3) / 4 * 4;
}

}  // namespace kwo
