#include <cstddef>
#include <cstdint>

#include "toolkit/bmp_reader.h"
#include "toolkit/skin_bitmap.h"

// A picture of any bytes: refused, or converted whole.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view file(reinterpret_cast<const char*>(data), size);
  kwo::BmpPicture picture;
  if (!kwo::ReadBmpHeaders(file, picture)) return 0;
  kwo::SkinBitmap bitmap;
  if (bitmap.CreateBlank(picture.width, picture.height, 0))
    kwo::ConvertBmpPixels(picture, bitmap.bits, bitmap.stride, bitmap.indices);
  return 0;
}
