#include "toolkit/window_shape.h"

#include <cstddef>
#include <utility>

namespace kwo {
namespace {

// The pixel's value in the sense of 0x00RRGGBB, or its palette index.
std::uint32_t ShapeValue(const SkinBitmap& bitmap, int x, int row) {
  if (!bitmap.indices.empty())
    return bitmap.indices[static_cast<std::size_t>(row) * static_cast<std::size_t>(bitmap.width) +
                          static_cast<std::size_t>(x)];
  const std::uint8_t* pixel = bitmap.bits + std::ptrdiff_t{row} * bitmap.stride + 3 * x;
  return pixel[0] | static_cast<std::uint32_t>(pixel[1]) << 8 |
         static_cast<std::uint32_t>(pixel[2]) << 16;
}

// More runs than this bring window systems down.
constexpr std::size_t kMostRuns = 32768;

// One run a row, from its first to its last.
void JoinRows(std::vector<platform::Rectangle>& runs) {
  std::vector<platform::Rectangle> rows;
  for (const platform::Rectangle& run : runs) {
    if (rows.empty() || rows.back().y != run.y) rows.push_back(run);
    rows.back().width = run.x + run.width - rows.back().x;
  }
  runs = std::move(rows);
}

}  // namespace

std::vector<platform::Rectangle> FindShape(const SkinBitmap& bitmap,
                                           std::uint32_t transparentColor) {
  std::vector<platform::Rectangle> runs;
  for (int y = 0; y < bitmap.height; ++y) {
    int start = -1;
    for (int x = 0; x <= bitmap.width; ++x) {
      const bool opaque =
          x < bitmap.width && ShapeValue(bitmap, x, bitmap.height - 1 - y) != transparentColor;
      if (opaque && start < 0) start = x;
      if (!opaque && start >= 0) {
        runs.push_back({start, y, x - start, 1});
        start = -1;
      }
    }
  }
  if (runs.size() > kMostRuns) JoinRows(runs);
  return runs;
}

}  // namespace kwo
