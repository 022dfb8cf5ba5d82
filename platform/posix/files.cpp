#include "platform/files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "platform/collation.h"
#include "platform/posix/executable.h"

namespace kwo::platform {
namespace {

std::string toldExecutable;

int OpenFlags(FileAccess access, FileCreate create) {
  int flags = access == FileAccess::kRead    ? O_RDONLY
              : access == FileAccess::kWrite ? O_WRONLY
                                             : O_RDWR;
  if (create == FileCreate::kIfAbsent) flags |= O_CREAT;
  if (create == FileCreate::kTruncate) flags |= O_CREAT | O_TRUNC;
  if (create == FileCreate::kExclusive) flags |= O_CREAT | O_EXCL;
  // Without O_NONBLOCK the open of a pipe would wait for its other end before it could be refused.
  return flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
}

template <typename Transfer>
int MoveAll(int count, Transfer transfer) {
  int moved = 0;
  while (moved < count) {
    ssize_t got = transfer(moved);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    moved += static_cast<int>(got);
  }
  return moved;
}

}  // namespace

std::string ToMachinePath(const char* path) {
  std::string machine(path);
  std::replace(machine.begin(), machine.end(), '\\', '/');
  return machine;
}

std::string FromMachinePath(std::string path) {
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

int OpenFile(const char* path, FileAccess access, FileCreate create) {
  int file = open(ToMachinePath(path).c_str(), OpenFlags(access, create), S_IRUSR | S_IWUSR);
  if (file < 0) return -1;
  struct stat status;
  if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
    close(file);
    return -1;
  }
  return file;
}

int ReadFile(int file, void* buffer, int count) {
  return MoveAll(count, [&](int done) {
    return read(file, static_cast<char*>(buffer) + done, static_cast<std::size_t>(count - done));
  });
}

int WriteFile(int file, const void* buffer, int count) {
  return MoveAll(count, [&](int done) {
    return write(file, static_cast<const char*>(buffer) + done,
                 static_cast<std::size_t>(count - done));
  });
}

std::int64_t SeekFile(int file, std::int64_t position) {
  return lseek(file, position, SEEK_SET);
}

std::int64_t SeekFileBy(int file, std::int64_t delta) {
  return lseek(file, delta, SEEK_CUR);
}

std::int64_t FileSize(int file) {
  struct stat status;
  return fstat(file, &status) == 0 ? status.st_size : 0;
}

bool TruncateFile(int file, std::int64_t size) {
  return ftruncate(file, size) == 0;
}

void CloseFile(int file) {
  close(file);
}

bool ReadWholeFile(const char* path, std::string& contents, std::size_t limit) {
  contents.clear();
  int file = OpenFile(path, FileAccess::kRead, FileCreate::kNever);
  if (file < 0) return false;
  char piece[16384];
  int got;
  while ((got = ReadFile(file, piece, sizeof piece)) > 0 && contents.size() <= limit)
    contents.append(piece, static_cast<std::size_t>(got));
  CloseFile(file);
  return contents.size() <= limit;
}

int FileAttributes(const char* path) {
  struct stat status;
  if (stat(ToMachinePath(path).c_str(), &status) != 0) return -1;
  return S_ISDIR(status.st_mode) ? kAttributeFolder : 0;
}

std::vector<std::string> ListFolder(const char* path) {
  std::vector<std::string> names;
  DIR* folder = opendir(ToMachinePath(path).c_str());
  if (!folder) return names;
  while (const dirent* entry = readdir(folder)) {
    const char* name = entry->d_name;
    if (std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0 && !std::strchr(name, '\\'))
      names.emplace_back(name);
  }
  closedir(folder);
  std::sort(names.begin(), names.end());  // those that the language takes for equal
  std::vector<std::string> sorted;
  sorted.reserve(names.size());
  for (const std::size_t place : SortedOrder(names)) sorted.push_back(std::move(names[place]));
  return sorted;
}

std::string CanonicalPath(const char* path) {
  char* real = realpath(ToMachinePath(path).c_str(), nullptr);
  if (!real) return path;
  std::string canonical = FromMachinePath(real);
  std::free(real);
  return canonical;
}

bool FolderExists(const char* path) {
  struct stat status;
  return stat(ToMachinePath(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool MakeFolder(const char* path) {
  const std::string machine = ToMachinePath(path);
  for (std::size_t slash = machine.find('/', 1); slash != std::string::npos;
       slash = machine.find('/', slash + 1))
    mkdir(machine.substr(0, slash).c_str(), S_IRWXU);
  return mkdir(machine.c_str(), S_IRWXU) == 0 || FolderExists(path);
}

std::string CurrentFolder() {
  char folder[4096];
  if (!getcwd(folder, sizeof folder)) return "\\";
  std::string ours = FromMachinePath(folder);
  if (ours.back() != '\\') ours += '\\';
  return ours;
}

bool SetCurrentFolder(const char* path) {
  return chdir(ToMachinePath(path).c_str()) == 0;
}

void TellExecutablePath(const std::string& path) {
  toldExecutable = path;
}

std::string ExecutablePath() {
  if (!toldExecutable.empty()) return toldExecutable;
  char path[4096];
  ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
  if (length <= 0) return CurrentFolder() + "kwo";
  path[length] = 0;
  return FromMachinePath(path);
}

}  // namespace kwo::platform
