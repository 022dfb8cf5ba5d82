#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kwo::tools {

/// Writes red, green, blue and opacity of each pixel, from the top, as a PNG file; false if it
/// can't be written.
bool WritePng(const std::string& path, int width, int height,
              const std::vector<std::uint8_t>& pixels);

}  // namespace kwo::tools
