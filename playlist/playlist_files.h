#pragma once

#include <string>

#include "platform/kept_file.h"

/// From paths to songs: files, folders and playlist files.  Main thread.
namespace kwo {

/// Adds what a path names: a song, all songs of a folder, or those of a playlist file.  Gives the
/// number of songs added.  Paths of more than 255 bytes add nothing.
int AddPath(const char* path);
int AddDirectory(const char* path);

/// Reads a PLA file: a line for each song, `ADD path`, and `SELECTED` behind a selected one.
int LoadPlaylistFile(const char* path);

/// The same from its text, up to a NUL.
int AddPlaylistText(std::string text);

/// The whole list as a PLA file's text.
std::string PlaylistText();

/// Writes it in one step; false, after a failed save, leaves the old file.  With `kept`, what
/// another program has written there since that was noted is set aside.
bool SavePlaylistFile(const char* path, platform::KeptFile* kept = nullptr);

/// Makes the folder of an M3U file current; its songs are not read.  0.
int EnterM3uDirectory(const char* path);

/// The dialogs of "Open Files" and "Open Directory" (`clearFirst` 1), "Add Files" and "Add
/// Directory" (0).
void OpenFilesDialog(int clearFirst);
void OpenDirectoryDialog(int clearFirst);

}  // namespace kwo
