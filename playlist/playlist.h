#pragma once

#include <atomic>
#include <string>

#include "base/shared.h"
#include "base/shared_text.h"
#include "platform/decoding.h"
#include "platform/song_tag.h"

/// The one list of songs, process-wide.
///
/// The main thread alone changes the list.  The render thread and the ShuffleMaster's thread read
/// it and step `currentSong`; they look at records only under a `PlaylistReader`, and neither side
/// ever waits for the other: a record that leaves the list is freed once no reader is left that can
/// have seen it.  While a sort or a move is under way a reader may meet a song twice or not at all.
namespace kwo {

constexpr int kPlaylistSlots = 4096;
constexpr int kMaxSongs = kPlaylistSlots - 1;
constexpr std::size_t kPathSize = platform::kMostBytes + 1;  ///< with the closing NUL

/// A song.  Only its display name and its selection change: a tag read anew makes a new record.
struct PlaylistEntry {
  PlaylistEntry(std::string songPath, const platform::SongTag* tag, unsigned songNumber);

  const unsigned number;       ///< this song's alone in this run, from 1 on
  const std::string path;      ///< as it was added
  const char* const fileName;  ///< the part of it behind its last backslash
  const std::string title, artist, album;
  /// Characters of these four.
  const std::size_t fileNameLength, titleLength, artistLength, albumLength;
  SharedText displayName;  ///< has room for the form that any display mode gives it
  Shared<int> selected;
  const bool tagUnread;
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

/// Copies the path of a song into `path`, and its number; false if there is no such song.  Any
/// thread.
bool CopyPath(int index, char (&path)[kPathSize], unsigned* number = nullptr);

// The operations below belong to the main thread, but for BuildDisplayNames.

/// Appends a song; 1, or 0 if the list is full or the path too long or broken by a line end.  Its
/// tag stays unread where none is given.
int AddSong(const char* path, const platform::SongTag* tag = nullptr);
/// Gives an existing song another tag.
void SetTag(int index, const platform::SongTag& tag);
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
