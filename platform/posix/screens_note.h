#pragma once

#include <string>
#include <vector>

#include "platform/window.h"

namespace kwo::platform {

/// Notes in the file at `path` which screens there are now.  True if it told of others before;
/// without a word from before nothing is new.
bool NoteScreens(const std::string& path, const std::vector<Rectangle>& screens);

}  // namespace kwo::platform
