#pragma once

#include <string>
#include <vector>

namespace kwo::platform {

/// Whether a path ends as the name of a song or of a playlist file does.
bool BearsSong(const std::string& path);

/// What of a drop the program is given: none of it where no path bears the name of a song or of a
/// playlist file, and no folder holds one.  A look into folders ends at the first, after 10,000
/// names or 0.2 s, and then counts as found.  A path with a NUL in it, or of more than 255 bytes,
/// is left out.  Any thread.
std::vector<std::string> DroppedSongs(std::vector<std::string> paths);

}  // namespace kwo::platform
