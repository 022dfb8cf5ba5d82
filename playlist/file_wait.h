#pragma once

#include "platform/clock.h"
#include "platform/file_worker.h"

namespace kwo {

/// Questions to the file system and the waiting for their answers, for one operation on the list.
/// Main thread.
class FileWait {
 public:
  using Answer = platform::FileWorker::Answer;
  using Asked = platform::FileWorker::Asked;

  /// The answer to a question, waited for: frames go on, and the rows are refreshed twice a second.
  /// One of nothing if the program is asked to end meanwhile.
  const Answer& Wait(const Asked& asked, std::size_t index);

  platform::FileWorker files;

 private:
  unsigned refreshed_ = platform::GetTickCount();
};

/// Asks for the last bytes of every song in the list, in its order, as many as a tag has.
platform::FileWorker::Asked AskForTags(platform::FileWorker& files);

}  // namespace kwo
