#pragma once

#include "playlist/playlist.h"

namespace kwo {

/// Fills a record from the ID3v1 tag at the end of its file, and clears the rest of it but the
/// path.  A file without a tag, or that can't be read, leaves the tag fields empty.  Main thread.
void ReadTag(PlaylistEntry& entry);

/// `ReadTag` on every song.
void ReadAllTags();

}  // namespace kwo
