#pragma once

#include <string>

namespace kwo::platform {

/// What names a song, as its bytes stand.
struct SongTag {
  std::string title, artist, album;
};

/// The words of an ID3v2 tag in front of a song; all empty if there is none, it is larger than
/// 32 MB, or nothing here can read it.  Any thread.
SongTag ReadLongTag(const char* path);

}  // namespace kwo::platform
