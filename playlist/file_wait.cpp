#include "playlist/file_wait.h"

#include <utility>

#include "base/hooks.h"
#include "platform/messages.h"
#include "playlist/tag_reader.h"

namespace kwo {

using platform::FileWorker;

const FileWait::Answer& FileWait::Wait(const Asked& asked, std::size_t index) {
  constexpr unsigned kRefreshMilliseconds = 500;
  static const Answer kNone;
  for (;;) {
    if (const Answer* answer = files.Find(asked, index)) return *answer;
    if (platform::EndAsked()) return kNone;
    platform::Sleep(1);
    const unsigned now = platform::GetTickCount();
    if (now - refreshed_ < kRefreshMilliseconds || playlist.count == 0) continue;
    refreshed_ = now;
    hooks.refreshPlaylistPage();
  }
}

FileWorker::Asked AskForTags(FileWorker& files) {
  std::vector<FileWorker::Question> questions;
  questions.reserve(static_cast<std::size_t>(playlist.count));
  const PlaylistReader reader;
  for (int i = 0; i < playlist.count; ++i)
    questions.push_back({reader.Entry(i)->path, FileWorker::Look::kSong, kTagBytes});
  return files.Ask(std::move(questions));
}

}  // namespace kwo
