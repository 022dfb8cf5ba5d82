#pragma once

#include <iterator>

#include "toolkit/skin_host.h"

/// The paintings of the sound last played: each draws its wave, averaged into columns, on a
/// bitmap of at most kMaxColumns columns; on a wider one, or one of fewer than two rows, it draws
/// nothing.  `count` is 4,608 at least.  Redraw thread; they keep their drifting colours from frame
/// to frame.
namespace kwo {

constexpr int kMaxColumns = 1024;

int DrawSmoke(SkinBitmap& bitmap, const std::int16_t* samples, int count);
int DrawGlow(SkinBitmap& bitmap, const std::int16_t* samples, int count);
int DrawBands(SkinBitmap& bitmap, const std::int16_t* samples, int count);
int DrawSplit(SkinBitmap& bitmap, const std::int16_t* samples, int count);
int DrawTwinLevels(SkinBitmap& bitmap, const std::int16_t* samples, int count);
int DrawWalker(SkinBitmap& bitmap, const std::int16_t* samples, int count);
int DrawRaster(SkinBitmap& bitmap, const std::int16_t* samples, int count);

/// By the number of the setting.
constexpr VisualiserFunction kVisualiserTable[] = {DrawSmoke,      DrawGlow,   DrawBands, DrawSplit,
                                                   DrawTwinLevels, DrawWalker, DrawRaster};
constexpr int kVisualisers = static_cast<int>(std::size(kVisualiserTable));

}  // namespace kwo
