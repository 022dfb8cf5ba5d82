#include "playlist/tag_reader.h"

#include <algorithm>
#include <cstring>

#include "platform/files.h"

namespace kwo {
namespace {

constexpr int kTagBytes = 128;
constexpr int kTitleOffset = 3, kArtistOffset = 33, kAlbumOffset = 63;
constexpr std::size_t kFieldBytes = 30;

// A field without its closing blanks; its last byte never counts.
void TakeField(const char* tag, SharedText<kTagSize>& text) {
  char field[kFieldBytes];
  std::memcpy(field, tag, sizeof field);
  field[kFieldBytes - 1] = 0;
  std::size_t length = std::strlen(field);
  while (length > 0 && field[length - 1] == ' ') field[--length] = 0;
  text.Store(field);
}

}  // namespace

void ReadTag(PlaylistEntry& entry) {
  char tag[kTagBytes] = {};
  const int file =
      platform::OpenFile(entry.path, platform::FileAccess::kRead, platform::FileCreate::kNever);
  if (file >= 0) {
    // A shorter file is read from its start.
    platform::SeekFile(file, std::max<std::int64_t>(0, platform::FileSize(file) - kTagBytes));
    platform::ReadFile(file, tag, kTagBytes);
    platform::CloseFile(file);
  }
  if (std::memcmp(tag, "TAG", 3) != 0) std::memset(tag, 0, sizeof tag);
  entry.selected = 0;
  entry.displayName.Store("");
  TakeField(tag + kTitleOffset, entry.title);
  TakeField(tag + kArtistOffset, entry.artist);
  TakeField(tag + kAlbumOffset, entry.album);
}

void ReadAllTags() {
  const PlaylistReader reader;
  for (int i = 0; i < playlist.count; ++i) ReadTag(*reader.Entry(i));
}

}  // namespace kwo
