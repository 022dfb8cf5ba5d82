#pragma once

#include <string>

namespace kwo::platform {

/// Whether a walk through a folder, with or without its trailing backslash, goes past a name in it:
/// folders of programs, directly in the user's home folder behind a dot, and the desktop's waste.
/// Any other dot in front hides nothing: it may be an album's.
bool IsPassedOver(const std::string& folder, const std::string& name);

}  // namespace kwo::platform
