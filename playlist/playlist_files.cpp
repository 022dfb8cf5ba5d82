#include "playlist/playlist_files.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "platform/ascii.h"
#include "platform/files.h"
#include "playlist/playlist.h"

namespace kwo {
namespace {

constexpr std::size_t kLargestFile = 16 << 20;
constexpr std::size_t kKeywordSize = 32;

// The folders and playlist files that are being added, outermost first: one that contains itself,
// directly or through others or through links, is passed over.
std::vector<std::string> underWay;

class Entering {
 public:
  explicit Entering(const char* path) {
    const std::string name = platform::CanonicalPath(path);
    entered_ = std::find(underWay.begin(), underWay.end(), name) == underWay.end();
    if (entered_) underWay.push_back(name);
  }
  ~Entering() {
    if (entered_) underWay.pop_back();
  }
  Entering(const Entering&) = delete;
  Entering& operator=(const Entering&) = delete;
  explicit operator bool() const { return entered_; }

 private:
  bool entered_;
};

// Carries one line of a playlist file out and gives the songs added.
int TakeLine(const std::string& keyword, const std::string& value) {
  if (keyword.size() >= kKeywordSize) return 0;
  const std::string word = platform::UpperCased(keyword);
  if (word == "PLAY" || word == "ADD") return AddPath(value.c_str());
  if (word == "SELECTED" && playlist.count >= 1) {
    const PlaylistReader reader;
    if (PlaylistEntry* last = reader.Entry(playlist.count - 1)) last->selected = 1;
  }
  return 0;
}

}  // namespace

int AddPath(const char* path) {
  if (std::strlen(path) >= kPathSize) return 0;
  // A folder with any further attribute, as a hidden one, does not count as a folder.
  if (platform::FileAttributes(path) == platform::kAttributeFolder) return AddDirectory(path);
  const std::string upper = platform::UpperCased(path);
  if (upper.ends_with(".MP3") || upper.ends_with(".MP2")) return AddSong(path);
  if (upper.ends_with(".PLA")) return LoadPlaylistFile(path);
  return upper.ends_with(".M3U") ? EnterM3uDirectory(path) : 0;
}

int AddDirectory(const char* path) {
  if (!*path) return 0;
  const Entering entering(path);
  if (!entering) return 0;
  std::string folder(path);
  if (folder.back() != '\\') folder += '\\';
  int added = 0;
  for (const std::string& name : platform::ListFolder(folder.c_str()))
    added += AddPath((folder + name).c_str());
  return added;
}

int LoadPlaylistFile(const char* path) {
  const Entering entering(path);
  std::string text;
  if (!entering || !platform::ReadWholeFile(path, text, kLargestFile)) return 0;
  return AddPlaylistText(std::move(text));
}

int AddPlaylistText(std::string text) {
  text.resize(std::strlen(text.c_str()));
  int added = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find_first_of("\r\n", at), text.size());
    const std::size_t blank = std::min(text.find(' ', at), end);
    const std::size_t value = std::min(text.find_first_not_of(' ', blank), end);
    added += TakeLine(text.substr(at, blank - at), text.substr(value, end - value));
    at = std::min(text.find_first_not_of("\r\n", end), text.size());
  }
  return added;
}

std::string PlaylistText() {
  std::string text = "VERSION 10\r\n";
  const PlaylistReader reader;
  for (int i = 0; i < playlist.count; ++i) {
    const PlaylistEntry& entry = *reader.Entry(i);
    text += std::string("ADD ") + entry.path + "\r\n";
    if (entry.selected) text += "SELECTED\r\n";
  }
  return text;
}

bool SavePlaylistFile(const char* path, platform::KeptFile* kept) {
  const std::string text = PlaylistText();
  return kept ? kept->Replace(path, text) : platform::ReplaceFile(path, text);
}

int EnterM3uDirectory(const char* path) {
  const char* last = std::strrchr(path, '\\');
  if (last) platform::SetCurrentFolder(std::string(path, last).c_str());
  return 0;
}

}  // namespace kwo
