#include "platform/messages.h"

#include <deque>
#include <mutex>

#include "platform/headless/scheduler.h"

namespace kwo::platform {
namespace {

std::mutex lock;
std::deque<Message> queue;
headless::Task* waiting = nullptr;

}  // namespace

void PostMessage(const Message& message) {
  std::lock_guard guard(lock);
  queue.push_back(message);
  if (waiting) headless::Wake(*waiting);
}

void PostQuitMessage(int exitCode) {
  PostMessage({kMessageQuit, exitCode, 0});
}

bool PeekMessage(Message& message) {
  std::lock_guard guard(lock);
  if (queue.empty()) return false;
  message = queue.front();
  return true;
}

void WaitMessage() {
  headless::Task& self = headless::CurrentTask();
  for (;;) {
    {
      std::lock_guard guard(lock);
      waiting = queue.empty() ? &self : nullptr;
      if (!waiting) return;
    }
    headless::RestUntil(headless::kForever);
  }
}

bool GetMessage(Message& message) {
  WaitMessage();
  std::lock_guard guard(lock);
  message = queue.front();
  queue.pop_front();
  return message.id != kMessageQuit;
}

}  // namespace kwo::platform
