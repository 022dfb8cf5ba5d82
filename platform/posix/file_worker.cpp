#include "platform/file_worker.h"

#include <sys/stat.h>

#include <algorithm>
#include <deque>
#include <mutex>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/posix/file_worker_probe.h"
#include "platform/posix/passed_over.h"

namespace kwo::platform {

std::atomic<void (*)(const std::string& path)> beforeLook = nullptr;

struct FileWorker::Job {
  std::vector<Question> questions;
  std::vector<Answer> answers;
  std::vector<bool> done;
  std::size_t next = 0;  // the question that is looked at, or will be
};

// What the two threads share.  One that has been given up keeps its own, and finds out by `left`.
struct FileWorker::Desk {
  std::mutex lock;
  std::deque<Asked> jobs;
  Question looksAt;  // what the thread is at; an empty path for nothing
  std::uint64_t answers = 0;
  bool left = false;
};

namespace {

constexpr unsigned kPatience = 2000;       // milliseconds
constexpr std::size_t kMostSilences = 32;  // each costs a thread
constexpr int kIdleMilliseconds = 1;

using Question = FileWorker::Question;
using Answer = FileWorker::Answer;

std::string EndOf(int file, std::size_t size) {
  std::string bytes(size, '\0');
  SeekFile(file, std::max<std::int64_t>(0, FileSize(file) - static_cast<std::int64_t>(size)));
  const int got = ReadFile(file, bytes.data(), static_cast<int>(size));
  bytes.resize(static_cast<std::size_t>(std::max(got, 0)));
  return bytes;
}

Answer LookAt(const Question& question) {
  if (const auto before = beforeLook.load()) before(question.path);
  Answer answer;
  answer.answered = true;
  const char* path = question.path.c_str();
  answer.attributes = FileAttributes(path);
  struct stat status;
  if (stat(ToMachinePath(path).c_str(), &status) != 0) return answer;
  answer.identity = std::to_string(status.st_dev) + ' ' + std::to_string(status.st_ino);
  switch (question.look) {
    case FileWorker::Look::kFile:
    case FileWorker::Look::kSong: {
      const int file = OpenFile(path, FileAccess::kRead, FileCreate::kNever);
      answer.opens = file >= 0;
      if (!answer.opens) break;
      if (question.look == FileWorker::Look::kSong) answer.bytes = EndOf(file, question.size);
      CloseFile(file);
      if (question.look == FileWorker::Look::kSong && !answer.bytes.starts_with("TAG"))
        answer.longTag = ReadLongTag(path);
      break;
    }
    case FileWorker::Look::kNames:
      answer.names = ListFolder(path);
      std::erase_if(answer.names,
                    [&](const std::string& name) { return IsPassedOver(path, name); });
      break;
    case FileWorker::Look::kWhole:
      answer.opens = ReadWholeFile(path, answer.bytes, question.size);
      if (!answer.opens) answer.bytes.clear();
      break;
  }
  return answer;
}

// The folder that a question asks.
std::string FolderOf(const Question& question) {
  const std::string& path = question.path;
  return question.look == FileWorker::Look::kNames ? path + '\\'
                                                   : path.substr(0, path.rfind('\\') + 1);
}

}  // namespace

FileWorker::FileWorker() = default;

FileWorker::~FileWorker() {
  End();
}

void FileWorker::Begin() {
  if (!desk_) desk_ = std::make_shared<Desk>();
  since_ = GetTickCount();
  // The thread's own hold on the desk, which may outlive this object.
  auto* held = new std::shared_ptr<Desk>(desk_);
  thread_ = StartThread(
      [](void* argument) {
        const std::unique_ptr<std::shared_ptr<Desk>> own(
            static_cast<std::shared_ptr<Desk>*>(argument));
        Desk& desk = **own;
        for (;;) {
          Asked job;
          Question question;
          {
            const std::lock_guard guard(desk.lock);
            if (desk.left) return;
            if (!desk.jobs.empty()) {
              job = desk.jobs.front();
              question = job->questions[job->next];
            }
            desk.looksAt = question;
          }
          if (!job) {
            Sleep(kIdleMilliseconds);
            continue;
          }
          Answer answer = LookAt(question);
          const std::lock_guard guard(desk.lock);
          if (desk.left) return;
          desk.looksAt = {};
          job->answers[job->next] = std::move(answer);
          job->done[job->next] = true;
          ++desk.answers;
          while (job->next < job->done.size() && job->done[job->next]) ++job->next;
          if (job->next == job->done.size()) std::erase(desk.jobs, job);
        }
      },
      held, "kwo files");
  if (!thread_) delete held;
}

// Whether it is at work or in a look that never ends: nobody waits for the thread.
void FileWorker::End() {
  if (desk_) {
    const std::lock_guard guard(desk_->lock);
    desk_->left = true;
    desk_->jobs.clear();
  }
  desk_.reset();
  LeaveThread(thread_);
  thread_ = nullptr;
}

FileWorker::Asked FileWorker::Ask(std::vector<Question> questions) {
  if (!thread_ && silent_.size() < kMostSilences) Begin();
  if (!thread_ || questions.empty()) return nullptr;
  auto job = std::make_shared<Job>();
  job->answers.resize(questions.size());
  job->done.resize(questions.size());
  job->questions = std::move(questions);
  PassSilent(*job);
  if (job->next == job->done.size()) return job;
  const std::lock_guard guard(desk_->lock);
  if (desk_->jobs.empty()) since_ = GetTickCount();
  desk_->jobs.push_back(job);
  return job;
}

const FileWorker::Answer* FileWorker::Find(const Asked& asked, std::size_t index) {
  static const Answer kNone;
  if (!asked || !desk_) return &kNone;
  {
    const std::lock_guard guard(desk_->lock);
    if (asked->done[index]) return &asked->answers[index];
    if (desk_->answers != seen_) {
      seen_ = desk_->answers;
      since_ = GetTickCount();
    }
    // A thread that is not looking has not been let run.
    if (desk_->looksAt.path.empty()) since_ = GetTickCount();
    if (GetTickCount() - since_ <= kPatience) return nullptr;
    // From here on the thread stores nothing more.
    desk_->left = true;
  }
  GiveUp();
  return nullptr;
}

// Nobody answers for a folder that has kept silent or what lies below a silent path, nor anything
// where there is no thread.
void FileWorker::PassSilent(Job& job) const {
  for (std::size_t i = job.next; i < job.questions.size(); ++i) {
    const Question& question = job.questions[i];
    const auto silences = [&](const Question& silent) {
      return FolderOf(question) == FolderOf(silent) ||
             question.path.starts_with(silent.path + '\\');
    };
    if (!thread_ || std::any_of(silent_.begin(), silent_.end(), silences)) job.done[i] = true;
  }
  while (job.next < job.done.size() && job.done[job.next]) ++job.next;
}

void FileWorker::Forget(const Asked& asked) {
  if (!asked || !desk_) return;
  const std::lock_guard guard(desk_->lock);
  std::erase(desk_->jobs, asked);
}

// The thread is left where it hangs; another one goes on with what lies in other folders.
void FileWorker::GiveUp() {
  silent_.push_back(desk_->looksAt);
  std::deque<Asked> jobs = std::move(desk_->jobs);
  End();
  if (silent_.size() < kMostSilences) Begin();
  for (const Asked& job : jobs) PassSilent(*job);
  std::erase_if(jobs, [](const Asked& job) { return job->next == job->done.size(); });
  if (!thread_) {
    // Nobody answers any more, but what has been answered can still be found.
    if (!desk_) desk_ = std::make_shared<Desk>();
    return;
  }
  const std::lock_guard guard(desk_->lock);
  desk_->jobs = std::move(jobs);
  seen_ = desk_->answers;
}

}  // namespace kwo::platform
