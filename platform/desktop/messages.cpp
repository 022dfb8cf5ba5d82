#include "platform/messages.h"

#include <condition_variable>
#include <deque>
#include <mutex>

namespace kwo::platform {
namespace {

std::mutex lock;
std::condition_variable arrived;
std::deque<Message> queue;

}  // namespace

void PostMessage(const Message& message) {
  std::lock_guard guard(lock);
  queue.push_back(message);
  arrived.notify_one();
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
  std::unique_lock guard(lock);
  arrived.wait(guard, [] { return !queue.empty(); });
}

bool GetMessage(Message& message) {
  WaitMessage();
  std::lock_guard guard(lock);
  message = queue.front();
  queue.pop_front();
  return message.id != kMessageQuit;
}

}  // namespace kwo::platform
