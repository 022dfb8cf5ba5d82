#include "toolkit/skin_bitmap.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <new>
#include <string>

#include "base/shared.h"
#include "platform/files.h"
#include "toolkit/bmp_reader.h"

namespace kwo {
namespace {

constexpr std::size_t kMaxFile = std::size_t{64} << 20;

std::atomic<std::uint32_t> paintings = 0;

KWO_MAY_TEAR void FillRow(std::uint8_t* row, int width, std::uint32_t color) {
  for (int x = 0; x < width; ++x, row += 3) {
    row[0] = static_cast<std::uint8_t>(color >> 16);
    row[1] = static_cast<std::uint8_t>(color >> 8);
    row[2] = static_cast<std::uint8_t>(color);
  }
}

}  // namespace

void SkinBitmap::SetKey(std::uint32_t newKey) {
  key = newKey;
  keyless = true;
  for (int row = 0; row < height && keyless; ++row) {
    const std::uint8_t* pixel = bits + std::ptrdiff_t{row} * stride;
    for (int x = 0; x < width; ++x, pixel += 3) {
      const auto color = static_cast<std::uint32_t>(pixel[2] | pixel[1] << 8 | pixel[0] << 16);
      if (color == key) keyless = false;
    }
  }
}

void SkinBitmap::ReleaseHandle() {
  handle.reset();
  indices.clear();
  bits = nullptr;
  stride = width = height = 0;
}

bool SkinBitmap::Allocate(int newWidth, int newHeight) {
  if (newWidth < 1 || newHeight < 1 || newWidth > kMaxBmpSide || newHeight > kMaxBmpSide)
    return false;
  const int rowBytes = RowBytes(newWidth);
  const auto size = static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(newHeight);
  std::unique_ptr<std::uint8_t[]> memory(new (std::nothrow) std::uint8_t[size]());
  if (!memory) return false;
  handle = std::move(memory);
  indices.clear();
  bits = handle.get();
  keyless = false;
  stride = rowBytes;
  width = newWidth;
  height = newHeight;
  Touch();
  return true;
}

void SkinBitmap::Touch() {
  version.Publish(++paintings);
}

int SkinBitmap::CreateBlank(int newWidth, int newHeight, std::uint32_t fillColor) {
  if (!Allocate(newWidth, newHeight)) return 0;
  FillSolid(fillColor);
  return 1;
}

int SkinBitmap::LoadFromFile(const char* path) {
  if (!handle) {
    std::string file;
    BmpPicture picture;
    if (!platform::ReadWholeFile(path, file, kMaxFile) || !ReadBmpHeaders(file, picture) ||
        !Allocate(picture.width, picture.height))
      return 0;
    ConvertBmpPixels(picture, bits, stride, indices);
    Touch();
  }
  std::snprintf(fileName, sizeof fileName, "%s", path);
  return 1;
}

void SkinBitmap::FillSolid(std::uint32_t color) {
  FillRectangle(0, 0, width, height, color);
}

void SkinBitmap::FillRectangle(int x, int y, int rectWidth, int rectHeight, std::uint32_t color) {
  const platform::Rectangle area = Cut({x, y, rectWidth, rectHeight});
  for (int top = area.y; top < area.Bottom(); ++top)
    FillRow(bits + std::ptrdiff_t{height - 1 - top} * stride + 3 * area.x, area.width, color);
  Touch();
}

void SkinBitmap::FillAndText(const char* text, const platform::Font* font, std::uint32_t textColor,
                             std::uint32_t fillColor, int x, int y) {
  if (fillColor <= 0xFFFFFF) FillSolid(fillColor);
  if (!font || !bits) return;
  platform::DrawTextLine({bits, stride, width, height}, text, *font, textColor, x, y);
  Touch();
}

platform::Rectangle SkinBitmap::Cut(const platform::Rectangle& area) const {
  return area.Intersected({0, 0, width, height});
}

void SkinBitmap::PresentToWindow(int x, int y, int rectWidth, int rectHeight) const {
  const platform::Rectangle area = Cut({x, y, rectWidth, rectHeight});
  if (!area.Empty()) platform::Present({bits, stride, width, height}, area);
}

void SkinBitmap::CopyFrom(const SkinBitmap* source, int x, int y, int rectWidth, int rectHeight) {
  if (!source) return;
  const platform::Rectangle area = Cut(source->Cut({x, y, rectWidth, rectHeight}));
  BlitCopy(source->Source(area.x, source->height - area.Bottom()), area.width, area.height,
           Target(area.x, height - area.Bottom()));
  Touch();
}

}  // namespace kwo
