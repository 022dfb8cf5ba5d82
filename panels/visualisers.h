#pragma once

#include <span>

#include "toolkit/skin_host.h"

/// The paintings of the sound last played: each draws its wave, averaged into columns, on a
/// bitmap of at most kMaxColumns columns; on a wider one, or one of fewer than two rows, it draws
/// nothing.  `count` is 4,608 at least.  Redraw thread; they keep their drifting colours from frame
/// to frame.
namespace kwo {

constexpr int kMaxColumns = 1024;

/// By the number of the setting: a new one is its function and its row.
extern const std::span<const VisualiserFunction> kVisualiserTable;

}  // namespace kwo
