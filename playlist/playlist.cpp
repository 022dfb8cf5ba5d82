#include "playlist/playlist.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "playlist/file_wait.h"
#include "playlist/hooks.h"
#include "playlist/tag_reader.h"

namespace kwo {

PlaylistState playlist;
Hooks hooks;

namespace {

std::atomic<int> readers = 0;

// Records out of the list that a reader may still look at.
std::vector<PlaylistEntry*> retired;

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

void RefreshPage() {
  if (hooks.refreshPlaylistPage) hooks.refreshPlaylistPage();
}

void StopMusic() {
  if (hooks.transportStop) hooks.transportStop();
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
  StopMusic();
  if (playlist.count <= playlist.currentSong) playlist.currentSong = 0;
  if (playlist.count <= 0) playlist.currentSong = -1;
  if (hooks.refreshSongLine) hooks.refreshSongLine();
}

template <typename Test>
void RemoveWhere(Test chosen) {
  for (int i = playlist.count - 1; i >= 0; --i)
    if (chosen(i)) RemoveAt(i);
  FreeRetired();
  // The number is not followed while songs below it go: where it now names none, none is current.
  if (playlist.currentSong >= playlist.count) {
    playlist.currentSong = -1;
    if (hooks.refreshSongLine) hooks.refreshSongLine();
  }
  playlist.selectionAnchor = -1;
  RefreshPage();
}

void MoveTop(int delta) {
  const int lowest = playlist.count - playlist.visibleRows;
  int top = playlist.topIndex + delta;
  if (delta > 0) top = std::min(top, lowest);
  playlist.topIndex = std::max(top, 0);
  RefreshPage();
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

// The order of a string sort: symbols, digits, letters without regard to case, then all bytes of
// other alphabets.
int SortClass(unsigned char c) {
  if (c >= 0x80) return 3;
  if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) return 2;
  return c >= '0' && c <= '9' ? 1 : 0;
}

int SortWeight(char byte) {
  const auto c = static_cast<unsigned char>(byte);
  return SortClass(c) << 8 | (c >= 'A' && c <= 'Z' ? c + 32 : c);
}

// Small letters come before their capitals where nothing else differs.
bool SortsBefore(const std::string& a, const std::string& b) {
  const auto [x, y] = std::mismatch(a.begin(), a.end(), b.begin(), b.end(),
                                    [](char p, char q) { return SortWeight(p) == SortWeight(q); });
  if (x != a.end() && y != b.end()) return SortWeight(*x) < SortWeight(*y);
  if (a.size() != b.size()) return a.size() < b.size();
  return a > b;
}

// Appends as much of `text` as fits.
void Append(char* name, const char* text) {
  const std::size_t used = std::strlen(name);
  const std::size_t size = std::min(std::strlen(text), kPathSize - 1 - used);
  std::memcpy(name + used, text, size);
  name[used + size] = 0;
}

void BuildDisplayName(PlaylistEntry& entry, int mode) {
  char title[kTagSize], artist[kTagSize], album[kTagSize];
  const char* t = entry.title.Load(title) ? title : entry.fileName;
  const char* r = entry.artist.Load(artist) ? artist : "(n/a)";
  const char* l = entry.album.Load(album) ? album : "(n/a)";
  const char* const parts[5][3] = {
      {entry.fileName, "", ""}, {t, "", ""}, {t, r, ""}, {r, t, ""}, {r, l, t}};
  char name[kPathSize] = {};
  for (int i = 0; mode >= 0 && mode <= 4 && i < 3 && *parts[mode][i]; ++i) {
    if (i > 0) Append(name, "-");
    Append(name, parts[mode][i]);
  }
  entry.displayName.Store(name);
}

}  // namespace

void RefreshDisplays() {
  if (hooks.refreshSongLine) hooks.refreshSongLine();
  RefreshPage();
}

void SongChanged() {
  if (hooks.followSong) hooks.followSong();
  RefreshDisplays();
}

PlaylistReader::PlaylistReader() {
  readers.fetch_add(1);
}

PlaylistReader::~PlaylistReader() {
  readers.fetch_sub(1);
}

PlaylistEntry* PlaylistReader::Entry(int index) const {
  return index >= 0 && index < kPlaylistSlots ? At(index) : nullptr;
}

bool CopyPath(int index, char (&path)[kPathSize]) {
  const PlaylistReader reader;
  const PlaylistEntry* entry = reader.Entry(index);
  if (entry) std::memcpy(path, entry->path, kPathSize);
  return entry != nullptr;
}

int AddSong(const char* path, const std::string* end) {
  const std::size_t length = std::strlen(path);
  // A line end in a path would break the list's file apart, and what stands before it could be read
  // back as a folder, with all that lies in it.
  if (playlist.count >= kMaxSongs || length >= kPathSize || std::strpbrk(path, "\r\n")) return 0;
  auto* entry = new (std::nothrow) PlaylistEntry{};
  if (!entry) return 0;
  std::memcpy(entry->path, path, length + 1);
  const char* last = std::strrchr(path, '\\');
  const char* name = last ? last + 1 : path;
  std::memcpy(entry->fileName, name, std::strlen(name) + 1);
  if (end) TakeTag(*entry, *end);
  Put(playlist.count, entry);
  playlist.count = playlist.count + 1;
  return 1;
}

void ClearList() {
  StopMusic();
  FreeAll();
}

void BuildDisplayNames() {
  const PlaylistReader reader;
  const int mode = playlist.displayMode;
  for (int i = 0; i < playlist.count; ++i)
    if (PlaylistEntry* entry = reader.Entry(i)) BuildDisplayName(*entry, mode);
}

void SortList() {
  std::vector<std::pair<std::string, PlaylistEntry*>> songs;
  const PlaylistReader reader;
  PlaylistEntry* current = reader.Entry(playlist.currentSong);
  for (int i = 0; i < playlist.count; ++i) {
    char name[kPathSize];
    const std::size_t size = At(i)->displayName.Load(name);
    songs.emplace_back(std::string(name, size), At(i));
  }
  std::stable_sort(songs.begin(), songs.end(),
                   [](const auto& a, const auto& b) { return SortsBefore(a.first, b.first); });
  for (int i = 0; i < playlist.count; ++i) {
    PlaylistEntry* entry = songs[static_cast<std::size_t>(i)].second;
    Put(i, entry);
    if (entry == current) playlist.currentSong = i;
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
  StopMusic();
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
