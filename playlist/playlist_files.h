#pragma once

/// From paths to songs: files, folders and playlist files.  Main thread.
namespace kwo {

/// Adds what a path names: a song, all songs of a folder, or those of a playlist file.  Gives the
/// number of songs added.  Paths of more than 255 bytes add nothing.
int AddPath(const char* path);
int AddDirectory(const char* path);

/// Reads a PLA file: a line for each song, `ADD path`, and `SELECTED` behind a selected one.
int LoadPlaylistFile(const char* path);

/// Writes the whole list as a PLA file, in one step: a failed save leaves the old file.
void SavePlaylistFile(const char* path);

/// Makes the folder of an M3U file current; its songs are not read.  0.
int EnterM3uDirectory(const char* path);

/// The dialogs of "Open Files" and "Open Directory" (`clearFirst` 1), "Add Files" and "Add
/// Directory" (0).
void OpenFilesDialog(int clearFirst);
void OpenDirectoryDialog(int clearFirst);

}  // namespace kwo
