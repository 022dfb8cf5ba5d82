#include "platform/headless/scheduler.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/clock.h"
#include "platform/headless/headless.h"
#include "platform/threads.h"

namespace kwo::platform {

struct Thread {
  headless::Task task;
  std::thread thread;
  bool left = false;  // it frees itself when it ends
};

}  // namespace kwo::platform

namespace kwo::headless {
namespace {

std::mutex lock;
std::vector<Task*> tasks;
Task* running = nullptr;
std::int64_t steppedNow = 0;
std::uint64_t nextOrder = 0;
double clockSpeed = 0;  // 0: stepped
std::chrono::steady_clock::time_point clockStart;
thread_local Task* currentTask = nullptr;

std::int64_t ReadClock() {
  if (clockSpeed == 0) return steppedNow;
  std::chrono::duration<double, std::micro> passed = std::chrono::steady_clock::now() - clockStart;
  return static_cast<std::int64_t>(passed.count() * clockSpeed);
}

// Gives the turn to the task whose rest ends first; equal ends go by the order of their rests.
void PassTurn() {
  auto next = std::min_element(tasks.begin(), tasks.end(), [](const Task* a, const Task* b) {
    return a->deadline != b->deadline ? a->deadline < b->deadline : a->order < b->order;
  });
  if (next == tasks.end()) return;
  if ((*next)->deadline == kForever) {
    std::fputs("headless clock: every thread waits for ever\n", stderr);
    std::abort();
  }
  steppedNow = std::max(steppedNow, (*next)->deadline);
  running = *next;
  running->turn.notify_one();
}

void Enter(Task& task) {
  task.deadline = steppedNow;
  task.order = ++nextOrder;
  tasks.push_back(&task);
}

}  // namespace

Task& CurrentTask() {
  if (!currentTask) {
    // The first thread that comes here is the main thread: it has the turn already.
    static Task mainTask;
    std::lock_guard guard(lock);
    currentTask = &mainTask;
    Enter(mainTask);
    if (!running) running = &mainTask;
  }
  return *currentTask;
}

void RestUntil(std::int64_t deadline) {
  Task& self = CurrentTask();
  std::unique_lock guard(lock);
  if (clockSpeed != 0) {
    if (deadline == kForever) {
      self.turn.wait(guard, [&] { return self.woken; });
    } else {
      std::chrono::duration<double, std::micro> offset(static_cast<double>(deadline) / clockSpeed);
      self.turn.wait_until(
          guard,
          clockStart + std::chrono::duration_cast<std::chrono::steady_clock::duration>(offset),
          [&] { return self.woken; });
    }
    self.woken = false;
    return;
  }
  self.deadline = self.woken ? steppedNow : deadline;
  self.order = ++nextOrder;
  PassTurn();
  self.turn.wait(guard, [&] { return running == &self; });
  self.woken = false;
}

void Wake(Task& task) {
  std::lock_guard guard(lock);
  task.woken = true;
  task.deadline = std::min(task.deadline, steppedNow);
  if (clockSpeed != 0) task.turn.notify_one();
}

void UseRunningClock(double speed) {
  CurrentTask();
  std::lock_guard guard(lock);
  clockSpeed = speed;
  clockStart = std::chrono::steady_clock::now();
}

std::int64_t Now() {
  std::lock_guard guard(lock);
  return ReadClock();
}

}  // namespace kwo::headless

namespace kwo::platform {

using headless::Task;

void Sleep(int milliseconds) {
  headless::CurrentTask();
  headless::RestUntil(headless::Now() + std::int64_t{1000} * milliseconds);
}

unsigned GetTickCount() {
  return static_cast<unsigned>(headless::Now() / 1000);
}

Thread* StartThread(void (*body)(void*), void* argument, const char*) {
  headless::CurrentTask();
  auto* thread = new Thread;
  {
    std::lock_guard guard(headless::lock);
    headless::Enter(thread->task);
  }
  thread->thread = std::thread([thread, body, argument] {
    Task& self = thread->task;
    headless::currentTask = &self;
    if (headless::clockSpeed == 0) {
      std::unique_lock guard(headless::lock);
      self.turn.wait(guard, [&] { return headless::running == &self; });
    }
    body(argument);
    std::lock_guard guard(headless::lock);
    std::erase(headless::tasks, &self);
    self.finished = true;
    if (headless::clockSpeed == 0) headless::PassTurn();
    if (thread->left) delete thread;
  });
  return thread;
}

void JoinThread(Thread* thread) {
  if (!thread) return;
  for (;;) {
    {
      std::lock_guard guard(headless::lock);
      if (thread->task.finished) break;
    }
    Sleep(1);
  }
  thread->thread.join();
  delete thread;
}

void LeaveThread(Thread* thread) {
  if (!thread) return;
  thread->thread.detach();
  std::lock_guard guard(headless::lock);
  if (thread->task.finished) {
    delete thread;
  } else {
    thread->left = true;
  }
}

void SetThreadPriority(ThreadPriority) {}

}  // namespace kwo::platform
