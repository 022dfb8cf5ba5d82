#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/kept_file.h"

/// From paths to songs: files, folders and playlist files.  Main thread.
namespace kwo {

/// Adds what a path names: a song, all songs of a folder, or those of a playlist file.  Gives the
/// number of songs added.  Paths of more than 255 bytes add nothing.  In one add a folder or a
/// playlist file counts once, whatever leads to it; the walk ends when the list is full, after
/// 200,000 names, or when the program is asked to end.  Files are looked at on a thread of their
/// own: the window lives on meanwhile, and what does not answer in two seconds counts as
/// unreadable.
int AddPath(const char* path);
int AddDirectory(const char* path);
/// The same for several paths in one add; `onAdded` is told of each that has added songs.
void AddPaths(std::vector<std::string> paths, const std::function<void(int)>& onAdded);

/// Reads a PLA file: a line for each song, `ADD path`, and `SELECTED` behind a selected one.
int LoadPlaylistFile(const char* path);

/// The same from its text, up to a NUL.
int AddPlaylistText(std::string text);

/// The same for a list that has been saved: its songs are listed unseen, with their tags unread.
/// From the first line that is no song's on it is left to `AddPlaylistText`: the text of that.
std::string RestorePlaylist(std::string text);

/// Whether the file system that a song lies on answers.
bool SongAnswers(int index);

/// Reads a playlist file's bytes.  Silent: its file system does not answer, or the program is asked
/// to end meanwhile.
enum class PlaylistFile { kAbsent, kRead, kSilent };
PlaylistFile ReadPlaylistFile(const char* path, std::string& text);

/// The whole list as a PLA file's text.
std::string PlaylistText();

/// Writes it in one step; false, after a failed save, leaves the old file.  With `kept`, what
/// another program has written there since that was noted is set aside.
bool SavePlaylistFile(const char* path, platform::KeptFile* kept = nullptr);

/// Makes the folder of an M3U file current; its songs are not read.  0.
int EnterM3uDirectory(const char* path);

}  // namespace kwo
