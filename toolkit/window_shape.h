#pragma once

#include <cstdint>
#include <vector>

#include "platform/window.h"
#include "toolkit/skin_bitmap.h"

namespace kwo {

/// The runs of pixels that are not `transparentColor`, line by line from the top; of a picture with
/// more of them than a window system takes, one run a line, with what lies between.
std::vector<platform::Rectangle> FindShape(const SkinBitmap& bitmap,
                                           std::uint32_t transparentColor);

}  // namespace kwo
