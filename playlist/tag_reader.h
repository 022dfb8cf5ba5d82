#pragma once

#include <string>

#include "platform/file_worker.h"
#include "playlist/playlist.h"

namespace kwo {

/// Length of an ID3v1 tag, the last bytes of its file.
constexpr std::size_t kTagBytes = 128;

/// The tag of a song by the last bytes of its file; without one in them, by what the desktop knows
/// of another tag.
platform::SongTag TagOf(const platform::FileWorker::Answer& answer);

/// Reads every song's tag and clears the rest of its record but the path.
void ReadAllTags();

/// Begins to read the tags of songs that were listed without, and goes on with it: false once all
/// have been read, or are not to be.  Never waits.
void BeginReadingTags();
bool GoOnReadingTags();
void EndReadingTags();

}  // namespace kwo
