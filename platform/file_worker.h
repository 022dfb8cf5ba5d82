#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/song_tag.h"
#include "platform/threads.h"

namespace kwo::platform {

/// Looks at files on a thread of its own, so that a file system that does not answer holds up
/// nobody.  The thread sees paths and gives bytes.  Main thread.
class FileWorker {
 public:
  enum class Look {
    kFile,   ///< whether it can be opened
    kSong,   ///< the same, and its tags: its last `size` bytes, or what `ReadLongTag` gives
    kNames,  ///< the names in a folder that a walk goes on with, as `ListFolder` gives them
    kWhole,  ///< all bytes of a file that has no more than `size`
  };
  struct Question {
    std::string path;
    Look look;
    std::size_t size = 0;
  };
  struct Answer {
    bool answered = false;  ///< false: the file system has kept silent for too long
    int attributes = -1;    ///< as `FileAttributes` gives them
    bool opens = false;
    std::string identity;  ///< the same for all paths that lead to one folder or file
    std::string bytes;
    SongTag longTag;  ///< where `bytes` do not begin with "TAG"
    std::vector<std::string> names;
  };
  struct Job;
  using Asked = std::shared_ptr<Job>;

  FileWorker();
  ~FileWorker();
  FileWorker(const FileWorker&) = delete;
  FileWorker& operator=(const FileWorker&) = delete;

  /// Asks questions, which are answered in their order, behind all that were asked before.  Null,
  /// whose answers are all of nothing, if there can be no thread.
  Asked Ask(std::vector<Question> questions);

  /// The answer to a question, or null as long as there is none.  A question that has not been
  /// answered in two seconds never is, nor are those behind it that ask the same folder or about
  /// what lies below its path; after 32 such silences nothing more is asked.  The answer lives as
  /// long as `asked` does.
  const Answer* Find(const Asked& asked, std::size_t index);

  /// What has not been answered yet need not be.
  void Forget(const Asked& asked);

 private:
  struct Desk;
  void GiveUp();
  void PassSilent(Job& job) const;
  void Begin();
  void End();

  std::shared_ptr<Desk> desk_;
  Thread* thread_ = nullptr;
  std::uint64_t seen_ = 0;        // answers so far
  unsigned since_ = 0;            // when the last of them came
  std::vector<Question> silent_;  // that have not been answered
};

}  // namespace kwo::platform
