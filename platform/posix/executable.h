#pragma once

#include <string>

namespace kwo::platform {

/// Has `ExecutablePath` tell `path` from now on; an empty one goes back to the truth.  Main thread,
/// before others are started.
void TellExecutablePath(const std::string& path);

}  // namespace kwo::platform
