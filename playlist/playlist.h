#pragma once

#include <atomic>
#include <string>

#include "platform/shared.h"
#include "playlist/shared_text.h"

/// The one list of songs, process-wide.
///
/// The main thread alone changes the list.  The render thread and the ShuffleMaster's thread read
/// it and step `currentSong`; they look at records only under a `PlaylistReader`, and neither side
/// ever waits for the other: a record that leaves the list is freed once no reader is left that can
/// have seen it.  While a sort or a move is under way a reader may meet a song twice or not at all.
namespace kwo {

constexpr int kPlaylistSlots = 4096;
constexpr int kMaxSongs = kPlaylistSlots - 1;
constexpr std::size_t kPathSize = 256;  ///< with the closing NUL
constexpr std::size_t kTagSize = 32;

struct PlaylistEntry {
  SharedText<kTagSize> title;
  SharedText<kTagSize> artist;
  SharedText<kTagSize> album;
  SharedText<kPathSize> displayName;
  char path[kPathSize];      ///< as it was added; never changes
  char fileName[kPathSize];  ///< behind the path's last backslash; never changes
  Shared<int> selected;
  bool tagUnread = true;  ///< the main thread's
};

struct PlaylistState {
  std::atomic<PlaylistEntry*> entries[kPlaylistSlots];
  Shared<int> count;
  Shared<int> currentSong = -1;
  Shared<int> topIndex;
  Shared<int> visibleRows;  ///< of the playlist page, at most 10
  Shared<int> displayMode;  ///< 0 file name, 1 title, 2 title-artist, 3 artist-title, 4 all three
  Shared<int> selectionAnchor = -1;
};

extern PlaylistState playlist;

/// Keeps every record that is in the list alive.  Any thread; never waits.
class PlaylistReader {
 public:
  PlaylistReader();
  ~PlaylistReader();
  PlaylistReader(const PlaylistReader&) = delete;
  PlaylistReader& operator=(const PlaylistReader&) = delete;

  /// The song at an index, or null where there is none.
  PlaylistEntry* Entry(int index) const;
};

/// Copies the path of a song into `path`; false if there is no such song.  Any thread.
bool CopyPath(int index, char (&path)[kPathSize]);

// The operations below belong to the main thread, but for BuildDisplayNames.

/// Appends a song; 1, or 0 if the list is full or the path too long or broken by a line end.  Its
/// tag is taken from `end`, the last bytes of its file, or stays unread where they are not known.
int AddSong(const char* path, const std::string* end = nullptr);
void ClearList();
/// Rebuilds all display names by the display mode.  Any thread.
void BuildDisplayNames();
/// Sorts by display name, keeping the order of equal ones.
void SortList();
void SelectAll();
void DeselectAll();
/// A click on the row of an existing song.
void ClickSong(int index, bool shift, bool control);
void RemoveSelected();
void RemoveUnselected();
void RemoveDeadLinks();
void RemoveAll();
void MoveSelectedUp();
void MoveSelectedDown();
void MoveSelectedPageUp();
void MoveSelectedPageDown();

}  // namespace kwo
