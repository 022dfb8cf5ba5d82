#pragma once

#include <string>

#include "playlist/playlist.h"

namespace kwo {

/// Length of an ID3v1 tag, the last bytes of its file.
constexpr std::size_t kTagBytes = 128;

/// Fills a record's tag fields from the last bytes of its file; without a tag in them the fields
/// are empty.  Main thread.
void TakeTag(PlaylistEntry& entry, const std::string& end);

/// Reads every song's tag and clears the rest of its record but the path.
void ReadAllTags();

/// Begins to read the tags of songs that were listed without, and goes on with it: false once all
/// have been read, or are not to be.  Never waits.
void BeginReadingTags();
bool GoOnReadingTags();
void EndReadingTags();

}  // namespace kwo
