#include "platform/posix/dropped_songs.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <utility>

#include "base/upper_cased.h"
#include "platform/clock.h"
#include "platform/decoding.h"
#include "platform/files.h"
#include "platform/posix/passed_over.h"

namespace kwo::platform {
namespace {

namespace fs = std::filesystem;

constexpr int kMostNames = 10000;
constexpr unsigned kLongestLook = 200;  // milliseconds

// The looks of one drop share their limits.
class Look {
 public:
  bool FindsSong(const std::string& folder) {
    std::vector<fs::path> folders{ToMachinePath(folder.c_str())};
    while (!folders.empty()) {
      const fs::path next = folders.back();
      folders.pop_back();
      if (IsNew(next) && FindsIn(next, folders)) return true;
    }
    return false;
  }

 private:
  // Links lead to folders that have been seen.
  bool IsNew(const fs::path& folder) {
    struct stat status;
    return stat(folder.c_str(), &status) == 0 && seen_.emplace(status.st_dev, status.st_ino).second;
  }

  bool FindsIn(const fs::path& folder, std::vector<fs::path>& inside) {
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::end(entry); entry.increment(error)) {
      if (++names_ > kMostNames || GetTickCount() - start_ > kLongestLook) return true;
      const std::string& path = entry->path().native();
      if (BearsSong(path) && IsOfNameLength(path)) return true;
      std::error_code unknown;
      if (!IsPassedOver(folder.native(), entry->path().filename().native()) &&
          entry->is_directory(unknown))
        inside.push_back(entry->path());
    }
    return false;
  }

  const unsigned start_ = GetTickCount();
  int names_ = 0;
  std::set<std::pair<dev_t, ino_t>> seen_;
};

}  // namespace

bool BearsSong(const std::string& path) {
  const std::string upper = UpperCased(path);
  return upper.ends_with(".MP3") || upper.ends_with(".MP2") || upper.ends_with(".PLA");
}

std::vector<std::string> DroppedSongs(std::vector<std::string> paths) {
  std::erase_if(paths, [](const std::string& path) {
    return !IsOfNameLength(path) || path.find('\0') != std::string::npos;
  });
  Look look;
  const bool songs = std::any_of(paths.begin(), paths.end(), [&look](const std::string& path) {
    return BearsSong(path) ||
           (FileAttributes(path.c_str()) == kAttributeFolder && look.FindsSong(path));
  });
  return songs ? paths : std::vector<std::string>();
}

}  // namespace kwo::platform
