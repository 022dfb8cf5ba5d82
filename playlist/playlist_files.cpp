#include "playlist/playlist_files.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/upper_cased.h"
#include "platform/decoding.h"
#include "platform/file_worker.h"
#include "platform/files.h"
#include "platform/messages.h"
#include "playlist/file_wait.h"
#include "playlist/playlist.h"
#include "playlist/tag_reader.h"

namespace kwo {
namespace {

using platform::FileWorker;

constexpr std::size_t kLargestFile = 16 << 20;
constexpr std::size_t kKeywordSize = 32;
constexpr std::size_t kMostNames = 200000;
constexpr char kAdd[] = "ADD ", kSelected[] = "SELECTED\r\n", kLineEnd[] = "\r\n";

bool IsSong(const std::string& path) {
  const std::string upper = UpperCased(path);
  return upper.ends_with(".MP3") || upper.ends_with(".MP2");
}

// What is under way from the outermost `AddPath` down.
class Walk : public FileWait {
 public:
  FileWorker::Asked Ask(const std::vector<std::string>& paths) {
    std::vector<FileWorker::Question> questions;
    questions.reserve(paths.size());
    for (const std::string& path : paths)
      questions.push_back(
          {path, IsSong(path) ? FileWorker::Look::kSong : FileWorker::Look::kFile, kTagBytes});
    return files.Ask(std::move(questions));
  }
  FileWorker::Answer Look(const char* path, FileWorker::Look look) {
    return Wait(files.Ask({{path, look, kLargestFile}}), 0);
  }
  // Whichever paths lead to a folder or a playlist file: it counts once.
  bool IsNew(const FileWorker::Answer& answer) {
    return !answer.identity.empty() && seen_.insert(answer.identity).second;
  }
  bool Ends() const {
    return playlist.count >= kMaxSongs || names_ >= kMostNames || platform::EndAsked();
  }
  void CountName() { ++names_; }

 private:
  std::set<std::string> seen_;
  std::size_t names_ = 0;
};

Walk* walk = nullptr;

// The walk that is under way, or a new one.
class Walking {
 public:
  Walking() : first_(!walk) {
    if (first_) walk = new Walk;
  }
  ~Walking() {
    if (!first_) return;
    delete walk;
    walk = nullptr;
  }
  Walking(const Walking&) = delete;
  Walking& operator=(const Walking&) = delete;

 private:
  bool first_;
};

int AddFound(const std::string& path, const FileWorker::Answer& found) {
  if (found.attributes == platform::kAttributeFolder) return AddDirectory(path.c_str());
  if (IsSong(path)) {
    if (!found.answered) return AddSong(path.c_str());
    const platform::SongTag tag = TagOf(found);
    return AddSong(path.c_str(), &tag);
  }
  if (!found.answered) return 0;
  const std::string upper = UpperCased(path);
  if (upper.ends_with(".PLA")) return LoadPlaylistFile(path.c_str());
  return upper.ends_with(".M3U") ? EnterM3uDirectory(path.c_str()) : 0;
}

// A line of a playlist file that counts: a path to add, or none for the mark of the last song.
using Line = std::string;

void TakeLine(const std::string& keyword, const std::string& value, std::vector<Line>& lines) {
  if (keyword.size() >= kKeywordSize) return;
  const std::string word = UpperCased(keyword);
  const bool adds = word == "PLAY" || word == "ADD";
  // A list made by hand may have the machine's separators.
  if (adds && !value.empty() && platform::IsOfNameLength(value))
    lines.push_back(platform::FromMachinePath(value));
  if (word == "SELECTED") lines.emplace_back();
}

std::vector<Line> LinesOf(const std::string& text) {
  std::vector<Line> lines;
  for (std::size_t at = 0; at < text.size() && lines.size() < 2 * kMostNames;) {
    const std::size_t end = std::min(text.find_first_of("\r\n", at), text.size());
    const std::string line = text.substr(at, end - at);
    const std::size_t blank = std::min(line.find(' '), line.size());
    const std::size_t value = std::min(line.find_first_not_of(' ', blank), line.size());
    TakeLine(line.substr(0, blank), line.substr(value), lines);
    at = std::min(text.find_first_not_of("\r\n", end), text.size());
  }
  return lines;
}

void MarkLastSong() {
  const PlaylistReader reader;
  if (PlaylistEntry* last = reader.Entry(playlist.count - 1)) last->selected = 1;
}

// Asks for a playlist's lines ahead of their turns: for few at first, so that one whose lines make
// other folders current again and again does not ask for its rest as often.
class LinesAhead {
 public:
  explicit LinesAhead(const std::vector<Line>& lines) : lines_(lines) {}
  ~LinesAhead() { Forget(); }
  LinesAhead(const LinesAhead&) = delete;
  LinesAhead& operator=(const LinesAhead&) = delete;

  const FileWorker::Answer& Wait(std::size_t line) {
    if (line >= end_) Ask(line);
    return walk->Wait(asked_, line - begin_);
  }
  void Forget() {
    walk->files.Forget(asked_);
    end_ = 0;
    piece_ = 1;
  }

 private:
  void Ask(std::size_t line) {
    constexpr std::size_t kLargestPiece = 1024;
    begin_ = line;
    end_ = std::min(line + piece_, lines_.size());
    piece_ = std::min(2 * piece_, kLargestPiece);
    asked_ = walk->Ask({lines_.begin() + static_cast<std::ptrdiff_t>(begin_),
                        lines_.begin() + static_cast<std::ptrdiff_t>(end_)});
  }

  const std::vector<Line>& lines_;
  FileWorker::Asked asked_;  // for the lines from `begin_` to `end_`
  std::size_t begin_ = 0, end_ = 0, piece_ = 1;
};

// Asks for all at once, and takes the answers in their order.
void AskAndAdd(const std::vector<std::string>& paths, const std::function<void(int)>& onAdded) {
  const FileWorker::Asked asked = walk->Ask(paths);
  for (std::size_t i = 0; i < paths.size() && !walk->Ends(); ++i) {
    walk->CountName();
    if (const int songs = AddFound(paths[i], walk->Wait(asked, i))) onAdded(songs);
  }
  walk->files.Forget(asked);
}

}  // namespace

int AddPath(const char* path) {
  int added = 0;
  AddPaths({path}, [&added](int songs) { added = songs; });
  return added;
}

void AddPaths(std::vector<std::string> paths, const std::function<void(int)>& onAdded) {
  std::erase_if(paths, [](const std::string& path) {
    return path.empty() || !platform::IsOfNameLength(path);
  });
  const Walking walking;
  AskAndAdd(paths, onAdded);
}

int AddDirectory(const char* path) {
  if (!*path) return 0;
  const Walking walking;
  const FileWorker::Answer folder = walk->Look(path, FileWorker::Look::kNames);
  if (!walk->IsNew(folder)) return 0;
  std::string front(path);
  if (front.back() != '\\') front += '\\';
  std::vector<std::string> paths;
  for (const std::string& name : folder.names)
    if (platform::IsOfNameLength(front + name)) paths.push_back(front + name);
  int added = 0;
  AskAndAdd(paths, [&added](int songs) { added += songs; });
  return added;
}

int LoadPlaylistFile(const char* path) {
  const Walking walking;
  const FileWorker::Answer file = walk->Look(path, FileWorker::Look::kWhole);
  return walk->IsNew(file) ? AddPlaylistText(file.bytes) : 0;
}

int AddPlaylistText(std::string text) {
  const Walking walking;
  text.resize(std::strlen(text.c_str()));
  const std::vector<Line> lines = LinesOf(text);
  LinesAhead ahead(lines);
  int added = 0;
  for (std::size_t i = 0; i < lines.size() && !walk->Ends(); ++i) {
    if (lines[i].empty()) {
      MarkLastSong();
      continue;
    }
    walk->CountName();
    const std::string here = IsSong(lines[i]) ? "" : platform::CurrentFolder();
    added += AddFound(lines[i], ahead.Wait(i));
    // What has made another folder current may have changed the meaning of the lines behind it.
    if (!IsSong(lines[i]) && here != platform::CurrentFolder()) ahead.Forget();
  }
  return added;
}

std::string RestorePlaylist(std::string text) {
  text.resize(std::strlen(text.c_str()));
  const std::vector<Line> lines = LinesOf(text);
  auto line = lines.begin();
  for (; line != lines.end() && (line->empty() || IsSong(*line)); ++line) {
    if (line->empty()) {
      MarkLastSong();
    } else {
      AddSong(line->c_str());
    }
  }
  std::string rest;
  for (; line != lines.end(); ++line) rest += line->empty() ? kSelected : kAdd + *line + kLineEnd;
  return rest;
}

bool SongAnswers(int index) {
  char path[kPathSize];
  if (!CopyPath(index, path)) return false;
  const Walking walking;
  return walk->Wait(walk->Ask({path}), 0).answered;
}

PlaylistFile ReadPlaylistFile(const char* path, std::string& text) {
  const Walking walking;
  const FileWorker::Answer file = walk->Look(path, FileWorker::Look::kWhole);
  text = file.bytes;
  if (!file.answered) return PlaylistFile::kSilent;
  return file.attributes >= 0 ? PlaylistFile::kRead : PlaylistFile::kAbsent;
}

std::string PlaylistText() {
  std::string text = "VERSION 10\r\n";
  const PlaylistReader reader;
  for (int i = 0; i < playlist.count; ++i) {
    const PlaylistEntry& entry = *reader.Entry(i);
    text += kAdd + std::string(entry.path) + kLineEnd;
    if (entry.selected) text += kSelected;
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
