#include <cstddef>
#include <utility>

#include "toolkit/skin_host.h"

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

bool Loads(SkinBitmap& bitmap, const std::string& folder, const char* fileName) {
  return bitmap.LoadFromFile((folder + fileName).c_str()) != 0;
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

int LoadSkinPicture(const SkinHost& host, SkinBitmap& bitmap, const char* fileName) {
  if (Loads(bitmap, host.skinPath, fileName)) return 1;
  return Loads(bitmap, host.defaultSkinPath, fileName) ? 2 : 0;
}

int SkinHost::LoadBackground(const char* fileName, std::uint32_t transparentColor) {
  auto picture = std::make_unique<SkinBitmap>();
  if (!LoadSkinPicture(*this, *picture, fileName)) return 0;
  auto blank = std::make_unique<SkinBitmap>();
  if (!blank->CreateBlank(picture->width, picture->height, 0)) return 0;
  background = std::move(picture);
  canvas = std::move(blank);
  background->key = kNoKey;
  windowWidth = background->width;
  windowHeight = background->height;
  platform::ResizeWindow({windowWidth, windowHeight});
  groups[0].PlaceGroup(nullptr, 0, 0, 0, windowWidth, windowHeight, 0, 0);
  platform::SetWindowShape(FindShape(*background, transparentColor));
  canvas->CopyFrom(background.get(), 0, 0, windowWidth, windowHeight);
  return 1;
}

}  // namespace kwo
