#pragma once

#include <string>

namespace kwo::tools {

/// Paints the program's icon, `size` pixels square with soft edges, into a PNG file; false if it
/// can't be written.
bool SaveAppIcon(const std::string& path, int size);

}  // namespace kwo::tools
