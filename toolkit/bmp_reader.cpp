#include "toolkit/bmp_reader.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace kwo {
namespace {

constexpr std::size_t kFileHeader = 14;
constexpr std::uint32_t kInfoHeader = 40;
constexpr std::uint32_t kMaxInfoHeader = 1024;
constexpr std::uint32_t kPlain = 0;
constexpr std::uint32_t kBitFields = 3;
constexpr std::size_t kColorBytes = 4;

std::uint32_t Number(std::string_view file, std::size_t offset, int bytes) {
  std::uint32_t value = 0;
  for (int i = bytes - 1; i >= 0; --i)
    value = value << 8 | static_cast<std::uint8_t>(file[offset + static_cast<std::size_t>(i)]);
  return value;
}

// The masks of a 32-bit picture whose bytes lie as those of a plain one.
bool HasPlainMasks(std::string_view file) {
  constexpr std::size_t masks = kFileHeader + kInfoHeader;
  return file.size() >= masks + 12 && Number(file, masks, 4) == 0xFF0000 &&
         Number(file, masks + 4, 4) == 0xFF00 && Number(file, masks + 8, 4) == 0xFF;
}

std::size_t StoredRowBytes(const BmpPicture& picture) {
  const auto bits =
      static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.bitsPerPixel);
  return (bits + 31) / 32 * 4;
}

}  // namespace

bool ReadBmpHeaders(std::string_view file, BmpPicture& picture) {
  if (file.size() < kFileHeader + kInfoHeader || file.substr(0, 2) != "BM") return false;
  const std::uint32_t offset = Number(file, 10, 4);
  const std::uint32_t header = Number(file, 14, 4);
  const auto width = static_cast<std::int32_t>(Number(file, 18, 4));
  const auto height = static_cast<std::int32_t>(Number(file, 22, 4));
  const std::uint32_t planes = Number(file, 26, 2);
  const std::uint32_t bits = Number(file, 28, 2);
  const std::uint32_t compression = Number(file, 30, 4);
  if (header < kInfoHeader || header > kMaxInfoHeader || planes != 1) return false;
  if (width < 1 || width > kMaxBmpSide || height == 0 || height < -kMaxBmpSide ||
      height > kMaxBmpSide)
    return false;
  if (bits != 8 && bits != 24 && bits != 32) return false;
  const bool masked = compression == kBitFields && bits == 32 && HasPlainMasks(file);
  if (compression != kPlain && !masked) return false;
  picture = {width, std::abs(height), static_cast<int>(bits), height < 0, {}, {}};
  if (bits == 8) {
    std::uint32_t colors = Number(file, 46, 4);
    if (colors == 0) colors = 256;
    const std::size_t start = kFileHeader + header;
    if (colors > 256 || file.size() < start + colors * kColorBytes) return false;
    picture.palette = file.substr(start, colors * kColorBytes);
  }
  const std::size_t size = StoredRowBytes(picture) * static_cast<std::size_t>(picture.height);
  if (offset < kFileHeader + header || offset > file.size() || file.size() - offset < size)
    return false;
  picture.pixels = file.substr(offset, size);
  return true;
}

void ConvertBmpPixels(const BmpPicture& picture, std::uint8_t* rows, int stride,
                      std::vector<std::uint8_t>& indices) {
  const std::size_t stored = StoredRowBytes(picture);
  const auto step = static_cast<std::size_t>(picture.bitsPerPixel / 8);
  const auto width = static_cast<std::size_t>(picture.width);
  if (step == 1) indices.resize(width * static_cast<std::size_t>(picture.height));
  for (int row = 0; row < picture.height; ++row) {
    const auto from = static_cast<std::size_t>(picture.topDown ? picture.height - 1 - row : row);
    const std::string_view line = picture.pixels.substr(from * stored, stored);
    std::uint8_t* to = rows + std::ptrdiff_t{row} * stride;
    for (std::size_t x = 0; x < width; ++x, to += 3) {
      std::string_view pixel = line.substr(x * step);
      if (step == 1) {
        const auto index = static_cast<std::uint8_t>(pixel[0]);
        indices[static_cast<std::size_t>(row) * width + x] = index;
        // An index beyond the palette is black, as the row is.
        if (index * kColorBytes >= picture.palette.size()) continue;
        pixel = picture.palette.substr(index * kColorBytes);
      }
      for (std::size_t i = 0; i < 3; ++i) to[i] = static_cast<std::uint8_t>(pixel[i]);
    }
  }
}

}  // namespace kwo
