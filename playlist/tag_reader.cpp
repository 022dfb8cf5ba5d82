#include "playlist/tag_reader.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "platform/file_worker.h"
#include "playlist/file_wait.h"
#include "playlist/hooks.h"

namespace kwo {
namespace {

using platform::FileWorker;

constexpr std::size_t kTitleOffset = 3, kArtistOffset = 33, kAlbumOffset = 63;
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

// The reading beside the message loop.
struct Reading {
  FileWorker files;
  FileWorker::Asked asked;
  std::vector<std::string> paths;
  std::size_t next = 0;
};
std::unique_ptr<Reading> reading;

// The first record of a path whose tag has not been read; the list may have changed since it was
// asked for.
PlaylistEntry* UnreadEntry(const PlaylistReader& reader, const std::string& path, int likely) {
  const auto fits = [&](int index) {
    const PlaylistEntry* entry = reader.Entry(index);
    return entry && entry->tagUnread && path == entry->path;
  };
  if (fits(likely)) return reader.Entry(likely);
  for (int i = 0; i < playlist.count; ++i)
    if (fits(i)) return reader.Entry(i);
  return nullptr;
}

}  // namespace

void TakeTag(PlaylistEntry& entry, const std::string& end) {
  std::string tag = end;
  tag.resize(kTagBytes);  // a shorter file is read from its start
  if (!tag.starts_with("TAG")) tag.assign(kTagBytes, '\0');
  TakeField(tag.data() + kTitleOffset, entry.title);
  TakeField(tag.data() + kArtistOffset, entry.artist);
  TakeField(tag.data() + kAlbumOffset, entry.album);
  entry.tagUnread = false;
}

void ReadAllTags() {
  FileWait wait;
  const FileWorker::Asked asked = AskForTags(wait.files);
  const PlaylistReader reader;
  for (int i = 0; i < playlist.count; ++i) {
    PlaylistEntry& entry = *reader.Entry(i);
    const FileWorker::Answer& answer = wait.Wait(asked, static_cast<std::size_t>(i));
    entry.selected = 0;
    entry.displayName.Store("");
    if (answer.answered) TakeTag(entry, answer.bytes);
  }
}

void BeginReadingTags() {
  reading = std::make_unique<Reading>();
  reading->asked = AskForTags(reading->files);
  const PlaylistReader reader;
  for (int i = 0; i < playlist.count; ++i) reading->paths.emplace_back(reader.Entry(i)->path);
}

bool GoOnReadingTags() {
  if (!reading) return false;
  const std::size_t first = reading->next;
  const PlaylistReader reader;
  for (std::size_t& next = reading->next; next < reading->paths.size(); ++next) {
    const FileWorker::Answer* answer = reading->files.Find(reading->asked, next);
    if (!answer) break;
    PlaylistEntry* entry = UnreadEntry(reader, reading->paths[next], static_cast<int>(next));
    if (entry && answer->answered) TakeTag(*entry, answer->bytes);
  }
  if (reading->next == reading->paths.size()) reading.reset();
  if ((!reading || reading->next != first) && hooks.refreshPlaylistPage) RefreshDisplays();
  return reading != nullptr;
}

void EndReadingTags() {
  reading.reset();
}

}  // namespace kwo
