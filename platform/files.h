#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Files and folders.  Paths inside the system separate folders by backslashes; this layer turns
/// them into the machine's form and back, and takes both separators coming in.  Names are bytes.
/// Any thread may call everything here; one open file belongs to one thread at a time.
namespace kwo::platform {

enum class FileAccess { kRead, kWrite, kReadWrite };

enum class FileCreate {
  kNever,     ///< the file must exist
  kIfAbsent,  ///< made if it is missing
  kTruncate,  ///< made if it is missing, emptied otherwise
  kExclusive  ///< made, and the open fails if it exists
};

/// Opens a regular file and gives its descriptor, or -1.  Folders, pipes and devices are refused,
/// so that no later read can wait for another program.
int OpenFile(const char* path, FileAccess access, FileCreate create);

/// Moves up to `count` bytes and gives the bytes moved; 0 at the end of the file or on an error.
int ReadFile(int file, void* buffer, int count);
int WriteFile(int file, const void* buffer, int count);

/// Moves the file position and gives it, counted from the start, or -1.
std::int64_t SeekFile(int file, std::int64_t position);
std::int64_t SeekFileBy(int file, std::int64_t delta);

std::int64_t FileSize(int file);
bool TruncateFile(int file, std::int64_t size);
void CloseFile(int file);

/// The whole contents of a regular file of at most `limit` bytes; false if it can't be read or
/// is longer.
bool ReadWholeFile(const char* path, std::string& contents, std::size_t limit);

/// Writes `contents` beside `path` and renames it into place: after a crash, a full disk or a kill
/// the file holds the old contents or the new ones, whole, also when another process saves it at
/// the same moment.  It keeps its owner and its permissions but for read-only, and a link to it
/// stays a link.  What is no file there or can't be read, so that nobody knows what is lost with
/// it, stays beside the new one as NAME-OLD.EXT, or NAME-OLD-2.EXT to NAME-OLD-9.EXT.  False leaves
/// the old file as it was.
bool ReplaceFile(const char* path, std::string_view contents);

/// Removes from a folder, given with its trailing backslash, what saves that were killed have left.
void RemoveAbandonedFiles(const char* folder);

/// Sixteen letters and digits that nobody can guess.
std::string RandomName();

/// When a file was written, in nanoseconds; -1 if there is none.
std::int64_t FileTime(const char* path);

constexpr int kAttributeFolder = 0x10;

/// Attribute bits of a file or folder, 0 for a plain file, or -1 if there is none.
int FileAttributes(const char* path);

/// The names in a folder, without "." and "..", in the order in which the user's language sorts
/// them: the machine's own may be that of a hash, in which nobody wants to hear an album.  A name
/// that our paths can't hold, since it has a backslash in it, is left out.
std::vector<std::string> ListFolder(const char* path);

/// One name for a file or folder whatever links lead to it; the path itself if it can't be told.
std::string CanonicalPath(const char* path);

bool FolderExists(const char* path);
/// Also makes the folders that it lies in.
bool MakeFolder(const char* path);

/// The current folder, with a trailing backslash.
std::string CurrentFolder();
bool SetCurrentFolder(const char* path);

/// The full path of the running program.
std::string ExecutablePath();

/// Between the system's paths and the machine's.
std::string ToMachinePath(const char* path);
std::string FromMachinePath(std::string path);

}  // namespace kwo::platform
