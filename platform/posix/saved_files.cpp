// Saving so that nothing is lost: whole or not at all, and never over what another has written.

#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "platform/files.h"
#include "platform/kept_file.h"
#include "platform/owned_file.h"

namespace kwo::platform {
namespace {

constexpr char kNew[] = ".new", kDigits[] = "0123456789abcdef";
constexpr char kOpenFiles[] = "/proc/self/fd/";
constexpr int kNames = 9;  // under which a file may be set aside
constexpr int kLockMilliseconds = 2000, kLockPollMilliseconds = 10;

std::string FolderOf(const std::string& machinePath) {
  const std::size_t slash = machinePath.rfind('/');
  return slash == std::string::npos ? "." : machinePath.substr(0, slash + 1);
}

// A regular file that can be read, or nothing at all.
bool CanBeReplaced(const std::string& machinePath) {
  const int file = open(machinePath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) return errno == ENOENT;
  struct stat status;
  const bool regular = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
  close(file);
  return regular;
}

// A new file beside `target`, with no name yet where the system knows such files, so that a kill
// leaves nothing.  Otherwise under a name that nobody can have put there before.  It is locked: one
// that nobody holds has been abandoned.
struct NewFile {
  explicit NewFile(const std::string& target) : name(target + '.' + RandomName() + kNew) {
    // It gets its name through /proc.
    if (access(kOpenFiles, F_OK) == 0)
      file = open(FolderOf(target).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0) {
      file = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                  S_IRUSR | S_IWUSR);
      named = file >= 0;
    }
    if (file >= 0) flock(file, LOCK_EX | LOCK_NB);
  }
  ~NewFile() {
    if (named) unlink(name.c_str());
    if (file >= 0) close(file);
  }
  // Whole and on the disk, before the rename can be.
  bool Write(std::string_view contents) const {
    const int size = static_cast<int>(contents.size());
    return file >= 0 && WriteFile(file, contents.data(), size) == size && fsync(file) == 0;
  }
  bool MoveTo(const std::string& target) {
    if (!named) {
      const std::string unnamed = kOpenFiles + std::to_string(file);
      named = linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    }
    if (!named || rename(name.c_str(), target.c_str()) != 0) return false;
    named = false;
    return true;
  }
  // The file stays open with the caller.
  int Release() {
    const int released = file;
    file = -1;
    return released;
  }

  std::string name;
  int file = -1;
  bool named = false;
};

bool Exists(const std::string& machinePath) {
  struct stat status;
  return lstat(machinePath.c_str(), &status) == 0;
}

// NAME-OLD.EXT, or the first free one of its followers; the last of them where none is.
std::string NameAside(const std::string& target) {
  const std::size_t slash = target.rfind('/'), dot = target.rfind('.');
  const bool ends = dot != std::string::npos && (slash == std::string::npos || dot > slash + 1);
  const std::string front = target.substr(0, ends ? dot : target.size());
  const std::string ending = ends ? target.substr(dot) : "";
  std::string aside = front + "-OLD" + ending;
  for (int number = 2; number <= kNames && Exists(aside); ++number) {
    aside = front;
    aside += "-OLD-" + std::to_string(number) + ending;
  }
  return aside;
}

std::string Stamp(const char* path) {
  struct stat status;
  if (stat(ToMachinePath(path).c_str(), &status) != 0) return "";
  std::string stamp;
  for (const auto word :
       {static_cast<std::int64_t>(status.st_ino), std::int64_t{status.st_size},
        std::int64_t{status.st_mtim.tv_sec}, std::int64_t{status.st_mtim.tv_nsec}})
    stamp += std::to_string(word) + ' ';
  return stamp;
}

// Holds other programs' saves in a folder off while ours looks and writes.
class FolderLock {
 public:
  explicit FolderLock(const std::string& folder)
      : folder_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    for (int waited = 0; waited < kLockMilliseconds; waited += kLockPollMilliseconds) {
      if (folder_ < 0 || flock(folder_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
      usleep(kLockPollMilliseconds * 1000);
    }
  }
  ~FolderLock() {
    if (folder_ >= 0) close(folder_);
  }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  int folder_;
};

}  // namespace

std::string RandomName() {
  unsigned char bytes[8];
  if (getrandom(bytes, sizeof bytes, 0) != sizeof bytes) {
    const std::int64_t now = std::time(nullptr) ^ std::int64_t{getpid()} << 32;
    std::memcpy(bytes, &now, sizeof bytes);
  }
  std::string name;
  for (const unsigned char byte : bytes)
    for (const int digit : {byte >> 4, byte & 15}) name += kDigits[digit];
  return name;
}

std::int64_t FileTime(const char* path) {
  struct stat status;
  if (stat(ToMachinePath(path).c_str(), &status) != 0) return -1;
  return std::int64_t{status.st_mtim.tv_sec} * 1000000000 + status.st_mtim.tv_nsec;
}

bool ReplaceFile(const char* path, std::string_view contents) {
  // A link to the file stays one.
  const std::string target = ToMachinePath(CanonicalPath(path).c_str());
  NewFile fresh(target);
  struct stat old;
  if (fresh.file >= 0 && stat(target.c_str(), &old) == 0 && S_ISREG(old.st_mode)) {
    // What root saves for once stays the user's.
    [[maybe_unused]] const int given = fchown(fresh.file, old.st_uid, old.st_gid);
    fchmod(fresh.file, (old.st_mode & 0777) | S_IRUSR | S_IWUSR);
  }
  if (!fresh.Write(contents)) return false;
  if (CanBeReplaced(target)) return fresh.MoveTo(target);
  // Nobody knows what is lost with it.
  const std::string aside = NameAside(target);
  if (rename(target.c_str(), aside.c_str()) != 0) return false;
  if (fresh.MoveTo(target)) return true;
  rename(aside.c_str(), target.c_str());
  return false;
}

void RemoveAbandonedFiles(const char* folder) {
  const std::size_t tail = 1 + RandomName().size() + std::strlen(kNew);
  for (const std::string& name : ListFolder(folder)) {
    if (name.size() <= tail || !name.ends_with(kNew) || name[name.size() - tail] != '.') continue;
    const std::string digits = name.substr(name.size() - tail + 1, tail - 1 - std::strlen(kNew));
    if (digits.find_first_not_of(kDigits) != std::string::npos) continue;
    OwnedFile found;
    if (found.Adopt(folder + name)) found.Remove();
  }
}

void KeptFile::Note(const char* path) {
  stamp_ = Stamp(path);
}

bool KeptFile::Replace(const char* path, std::string_view contents) {
  const std::string target = ToMachinePath(CanonicalPath(path).c_str());
  const FolderLock lock(FolderOf(target));
  const std::string found = Stamp(path);
  const std::string aside = NameAside(target);
  const bool foreign = !found.empty() && found != stamp_;
  if (foreign && rename(target.c_str(), aside.c_str()) != 0) return false;
  if (!ReplaceFile(path, contents)) {
    if (foreign) rename(aside.c_str(), target.c_str());
    return false;
  }
  Note(path);
  return true;
}

OwnedFile::~OwnedFile() {
  Release();
}

void OwnedFile::Release() {
  if (file_ >= 0) close(file_);
  file_ = -1;
}

void OwnedFile::Begin(const std::string& path) {
  path_ = ToMachinePath(path.c_str());
}

bool OwnedFile::Replace(std::string_view contents) {
  NewFile fresh(path_);
  if (!fresh.Write(contents) || !fresh.MoveTo(path_)) return false;
  Release();
  file_ = fresh.Release();
  return true;
}

bool OwnedFile::Adopt(const std::string& path) {
  Begin(path);
  // Some file systems lock only what may be written.
  file_ = open(path_.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  struct stat held, found;
  // The owner may have put a new one in its place since: the lock of the old one is free then.
  if (file_ >= 0 && flock(file_, LOCK_EX | LOCK_NB) == 0 && fstat(file_, &held) == 0 &&
      S_ISREG(held.st_mode) && lstat(path_.c_str(), &found) == 0 && held.st_ino == found.st_ino)
    return true;
  Release();
  return false;
}

void OwnedFile::Remove() {
  if (file_ < 0) return;
  unlink(path_.c_str());
  Release();
}

}  // namespace kwo::platform
