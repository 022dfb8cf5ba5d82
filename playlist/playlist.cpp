#include "playlist/playlist.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "base/hooks.h"
#include "platform/collation.h"
#include "playlist/file_wait.h"

namespace kwo {

PlaylistState playlist;

namespace {

std::atomic<int> readers = 0;

// Records out of the list that a reader may still look at.
std::vector<PlaylistEntry*> retired;

unsigned lastNumber = 0;

PlaylistEntry* At(int index) {
  return playlist.entries[index].load();
}

void Put(int index, PlaylistEntry* entry) {
  playlist.entries[index].store(entry);
}

// A reader that starts after this has seen none finds the table without the retired records: its
// count goes up before it looks, and both sides' accesses lie in one order.
void FreeRetired() {
  if (readers.load() != 0) return;
  for (PlaylistEntry* entry : retired) delete entry;
  retired.clear();
}

void Exchange(int i, int j) {
  PlaylistEntry* first = At(i);
  Put(i, At(j));
  Put(j, first);
  if (playlist.currentSong == i) {
    playlist.currentSong = j;
  } else if (playlist.currentSong == j) {
    playlist.currentSong = i;
  }
}

void FreeAll() {
  const int count = playlist.count;
  playlist.count = 0;
  playlist.currentSong = -1;
  for (int i = 0; i < count; ++i) {
    retired.push_back(At(i));
    Put(i, nullptr);
  }
  FreeRetired();
}

void RemoveAt(int index) {
  retired.push_back(At(index));
  const int last = playlist.count - 1;
  for (int i = index; i < last; ++i) Put(i, At(i + 1));
  Put(last, nullptr);
  playlist.count = last;
  if (playlist.currentSong != index) return;
  hooks.transportStop();
  if (playlist.count <= playlist.currentSong) playlist.currentSong = 0;
  if (playlist.count <= 0) playlist.currentSong = -1;
  hooks.refreshSongLine();
}

template <typename Test>
void RemoveWhere(Test chosen) {
  for (int i = playlist.count - 1; i >= 0; --i)
    if (chosen(i)) RemoveAt(i);
  FreeRetired();
  // The number is not followed while songs below it go: where it now names none, none is current.
  if (playlist.currentSong >= playlist.count) {
    playlist.currentSong = -1;
    hooks.refreshSongLine();
  }
  playlist.selectionAnchor = -1;
  hooks.refreshPlaylistPage();
}

void MoveTop(int delta) {
  const int lowest = playlist.count - playlist.visibleRows;
  int top = playlist.topIndex + delta;
  if (delta > 0) top = std::min(top, lowest);
  playlist.topIndex = std::max(top, 0);
  hooks.refreshPlaylistPage();
}

// The farthest unselected place within a page from `index`, in steps of `direction`; 0 for none.
int PageDistance(int index, int direction) {
  for (int distance = playlist.visibleRows; distance > 0; --distance) {
    const int place = index + direction * distance;
    if (place >= 0 && place < playlist.count && !At(place)->selected) return distance;
  }
  return 0;
}

// Takes the song at `from` out and puts it in at `to`; the songs between move over.
void Relocate(int from, int to) {
  PlaylistEntry* moving = At(from);
  const int direction = to < from ? -1 : 1;
  for (int i = from; i != to; i += direction) Put(i, At(i + direction));
  Put(to, moving);
  const int current = playlist.currentSong;
  if (current == from) {
    playlist.currentSong = to;
  } else if (direction < 0 ? current < from && to <= current : current > from && to >= current) {
    playlist.currentSong = current - direction;
  }
}

struct Part {
  const char* text;
  std::size_t bytes, characters;
};
constexpr Part kUnknown{"(n/a)", 5, 5}, kNoPart{"", 0, 0};

// The parts of a song's display name, with hyphens between.
std::array<Part, 3> PartsOf(const PlaylistEntry& entry, int mode) {
  const Part file{entry.fileName, std::strlen(entry.fileName), entry.fileNameLength};
  const auto part = [](const std::string& text, std::size_t characters, const Part& otherwise) {
    return text.empty() ? otherwise : Part{text.c_str(), text.size(), characters};
  };
  const Part title = part(entry.title, entry.titleLength, file);
  const Part artist = part(entry.artist, entry.artistLength, kUnknown);
  const Part album = part(entry.album, entry.albumLength, kUnknown);
  switch (mode) {
    case 0:
      return {file, kNoPart, kNoPart};
    case 1:
      return {title, kNoPart, kNoPart};
    case 2:
      return {title, artist, kNoPart};
    case 3:
      return {artist, title, kNoPart};
    case 4:
      return {artist, album, title};
    default:
      return {kNoPart, kNoPart, kNoPart};
  }
}

constexpr int kModes = 5;

// The bytes of the longest display name that a song may get, with the closing NUL.
std::size_t RoomFor(const PlaylistEntry& entry) {
  std::size_t room = 0;
  for (int mode = 0; mode < kModes; ++mode) {
    std::size_t bytes = 0, characters = 0;
    for (const Part& part : PartsOf(entry, mode)) {
      bytes += part.bytes + 1;
      characters += part.characters + 1;
    }
    // A text that is cut may take more bytes than it had.
    room = std::max(room, characters > platform::kMostCharacters ? kPathSize : bytes);
  }
  return std::min(room, kPathSize);
}

void BuildDisplayName(PlaylistEntry& entry, int mode) {
  char name[3 * kPathSize];
  std::size_t bytes = 0, characters = 0;
  for (const Part& part : PartsOf(entry, mode)) {
    if (part.bytes == 0) continue;
    if (bytes > 0) {
      name[bytes++] = '-';
      ++characters;
    }
    std::memcpy(name + bytes, part.text, part.bytes);
    bytes += part.bytes;
    characters += part.characters;
  }
  name[bytes] = 0;
  entry.displayName.Store(
      characters > platform::kMostCharacters ? platform::FirstCharacters(name).c_str() : name);
}

const char* FileNameOf(const std::string& path) {
  return path.c_str() + (path.rfind('\\') + 1);
}

}  // namespace

PlaylistReader::PlaylistReader() {
  readers.fetch_add(1);
}

PlaylistReader::~PlaylistReader() {
  readers.fetch_sub(1);
}

PlaylistEntry* PlaylistReader::Entry(int index) const {
  return index >= 0 && index < kPlaylistSlots ? At(index) : nullptr;
}

bool CopyPath(int index, char (&path)[kPathSize], unsigned* number) {
  const PlaylistReader reader;
  const PlaylistEntry* entry = reader.Entry(index);
  if (entry) std::memcpy(path, entry->path.c_str(), entry->path.size() + 1);
  if (entry && number) *number = entry->number;
  return entry != nullptr;
}

PlaylistEntry::PlaylistEntry(std::string songPath, const platform::SongTag* tag,
                             unsigned songNumber)
    : number(songNumber),
      path(std::move(songPath)),
      fileName(FileNameOf(path)),
      title(tag ? tag->title : ""),
      artist(tag ? tag->artist : ""),
      album(tag ? tag->album : ""),
      fileNameLength(platform::CharacterCount(fileName)),
      titleLength(platform::CharacterCount(title)),
      artistLength(platform::CharacterCount(artist)),
      albumLength(platform::CharacterCount(album)),
      displayName(RoomFor(*this)),
      tagUnread(tag == nullptr) {}

int AddSong(const char* path, const platform::SongTag* tag) {
  // A line end in a path would break the list's file apart, and what stands before it could be read
  // back as a folder, with all that lies in it.
  if (playlist.count >= kMaxSongs || !platform::IsOfNameLength(path) || std::strpbrk(path, "\r\n"))
    return 0;
  Put(playlist.count, new PlaylistEntry(path, tag, ++lastNumber));
  playlist.count = playlist.count + 1;
  return 1;
}

void SetTag(int index, const platform::SongTag& tag) {
  PlaylistEntry* old = At(index);
  auto* entry = new PlaylistEntry(old->path, &tag, old->number);
  entry->selected = old->selected;
  BuildDisplayName(*entry, playlist.displayMode);
  Put(index, entry);
  retired.push_back(old);
  FreeRetired();
}

void ClearList() {
  hooks.transportStop();
  FreeAll();
}

void BuildDisplayNames() {
  const PlaylistReader reader;
  const int mode = playlist.displayMode;
  for (int i = 0; i < playlist.count; ++i)
    if (PlaylistEntry* entry = reader.Entry(i)) BuildDisplayName(*entry, mode);
}

void SortList() {
  std::vector<std::string> names;
  std::vector<PlaylistEntry*> songs;
  for (int i = 0; i < playlist.count; ++i) {
    char name[kPathSize];
    const std::size_t size = At(i)->displayName.Load(name);
    names.emplace_back(name, size);
    songs.push_back(At(i));
  }
  const int current = playlist.currentSong;
  const std::vector<std::size_t> order = platform::SortedOrder(names);
  for (int i = 0; i < playlist.count; ++i) {
    const std::size_t from = order[static_cast<std::size_t>(i)];
    Put(i, songs[from]);
    if (static_cast<int>(from) == current) playlist.currentSong = i;
  }
}

void SelectAll() {
  for (int i = 0; i < playlist.count; ++i) At(i)->selected = 1;
}

void DeselectAll() {
  for (int i = 0; i < playlist.count; ++i) At(i)->selected = 0;
}

void ClickSong(int index, bool shift, bool control) {
  if (index < 0 || index >= playlist.count) return;
  const int anchor = playlist.selectionAnchor;
  if (shift && anchor >= 0) {
    for (int i = 0; i < playlist.count; ++i)
      At(i)->selected = i >= std::min(anchor, index) && i <= std::max(anchor, index);
    return;
  }
  if (control) {
    At(index)->selected = !At(index)->selected;
  } else {
    DeselectAll();
    At(index)->selected = 1;
  }
  playlist.selectionAnchor = index;
}

void RemoveSelected() {
  RemoveWhere([](int i) { return At(i)->selected != 0; });
}

void RemoveUnselected() {
  RemoveWhere([](int i) { return At(i)->selected == 0; });
}

void RemoveDeadLinks() {
  FileWait wait;
  const FileWait::Asked asked = AskForTags(wait.files);
  // A file system that does not answer has not lost its songs.
  std::vector<bool> dead;
  for (int i = 0; i < playlist.count; ++i) {
    const auto& answer = wait.Wait(asked, static_cast<std::size_t>(i));
    dead.push_back(answer.answered && !answer.opens);
  }
  RemoveWhere([&dead](int i) { return dead[static_cast<std::size_t>(i)]; });
}

void RemoveAll() {
  FreeAll();
  playlist.selectionAnchor = -1;
  hooks.transportStop();
  RefreshDisplays();
}

void MoveSelectedUp() {
  bool moved = false;
  for (int i = 1; i < playlist.count; ++i) {
    if (At(i - 1)->selected || !At(i)->selected) continue;
    Exchange(i, i - 1);
    moved = true;
  }
  if (moved) MoveTop(-1);
}

void MoveSelectedDown() {
  bool moved = false;
  for (int i = playlist.count - 2; i >= 0; --i) {
    if (At(i + 1)->selected || !At(i)->selected) continue;
    Exchange(i, i + 1);
    moved = true;
  }
  if (moved) MoveTop(1);
}

void MoveSelectedPageUp() {
  bool moved = false;
  for (int i = 1; i < playlist.count; ++i) {
    if (!At(i)->selected) continue;
    Relocate(i, i - PageDistance(i, -1));
    moved = true;
  }
  if (moved) MoveTop(-playlist.visibleRows);
}

void MoveSelectedPageDown() {
  bool moved = false;
  for (int i = playlist.count - 1; i >= 0; --i) {
    if (!At(i)->selected) continue;
    Relocate(i, i + PageDistance(i, 1));
    moved = true;
  }
  if (moved) MoveTop(playlist.visibleRows);
}

}  // namespace kwo
