#include "playlist/tag_reader.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "base/hooks.h"
#include "platform/decoding.h"
#include "playlist/file_wait.h"

namespace kwo {
namespace {

using platform::FileWorker;

constexpr std::size_t kTitleOffset = 3, kArtistOffset = 33, kAlbumOffset = 63;
constexpr std::size_t kFieldBytes = 30;

// A field without its closing blanks; its last byte never counts.
std::string FieldAt(const std::string& tag, std::size_t offset) {
  std::string field = tag.substr(offset, kFieldBytes - 1).c_str();
  field.erase(field.find_last_not_of(' ') + 1);
  return field;
}

// A field of the other kind; one too long for a name is left out whole.
std::string Fitting(const std::string& field) {
  return platform::IsOfNameLength(field) ? field : "";
}

// The reading beside the message loop.
struct Reading {
  FileWorker files;
  FileWorker::Asked asked;
  std::vector<std::string> paths;
  std::size_t next = 0;
};
std::unique_ptr<Reading> reading;

// The first song of a path whose tag has not been read, or -1; the list may have changed since it
// was asked for.
int UnreadSong(const std::string& path, int likely) {
  const PlaylistReader reader;
  const auto fits = [&](int index) {
    const PlaylistEntry* entry = reader.Entry(index);
    return entry && entry->tagUnread && path == entry->path;
  };
  if (fits(likely)) return likely;
  for (int i = 0; i < playlist.count; ++i)
    if (fits(i)) return i;
  return -1;
}

}  // namespace

platform::SongTag TagOf(const FileWorker::Answer& answer) {
  std::string tag = answer.bytes;
  tag.resize(kTagBytes);  // a shorter file is read from its start
  if (tag.starts_with("TAG"))
    return {FieldAt(tag, kTitleOffset), FieldAt(tag, kArtistOffset), FieldAt(tag, kAlbumOffset)};
  const platform::SongTag& found = answer.longTag;
  return {Fitting(found.title), Fitting(found.artist), Fitting(found.album)};
}

void ReadAllTags() {
  FileWait wait;
  const FileWorker::Asked asked = AskForTags(wait.files);
  for (int i = 0; i < playlist.count; ++i) {
    const FileWorker::Answer& answer = wait.Wait(asked, static_cast<std::size_t>(i));
    if (answer.answered) SetTag(i, TagOf(answer));
  }
  DeselectAll();
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
  for (std::size_t& next = reading->next; next < reading->paths.size(); ++next) {
    const FileWorker::Answer* answer = reading->files.Find(reading->asked, next);
    if (!answer) break;
    const int song = UnreadSong(reading->paths[next], static_cast<int>(next));
    if (song >= 0 && answer->answered) SetTag(song, TagOf(*answer));
  }
  if (reading->next == reading->paths.size()) reading.reset();
  if (!reading || reading->next != first) RefreshDisplays();
  return reading != nullptr;
}

void EndReadingTags() {
  reading.reset();
}

}  // namespace kwo
