#pragma once

#include <atomic>
#include <string>

namespace kwo::platform {

/// Called on a file worker's thread in front of each look, for file systems that keep silent; null
/// otherwise.
extern std::atomic<void (*)(const std::string& path)> beforeLook;

}  // namespace kwo::platform
