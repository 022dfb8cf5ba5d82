#include "platform/messages.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>

#include "platform/desktop/main_loop.h"

namespace kwo::platform {
namespace {

std::mutex lock;
std::condition_variable arrived;
std::deque<Message> queue;
unsigned keysOfTaken = 0;  // of the message taken last
std::atomic<bool> stateChanged = false;

bool QueueEmpty() {
  std::lock_guard guard(lock);
  return queue.empty();
}

}  // namespace

MainLoop mainLoop;

void PostMessage(const Message& message) {
  {
    std::lock_guard guard(lock);
    // Of a timer's messages one at most waits.
    if (message.id == kMessageTimer)
      std::erase_if(queue, [&](const Message& waiting) {
        return waiting.id == kMessageTimer && waiting.wParam == message.wParam;
      });
    queue.push_back(message);
  }
  arrived.notify_one();
  if (mainLoop.wake) mainLoop.wake();
}

void PostQuitMessage(int exitCode) {
  PostMessage({kMessageQuit, exitCode, 0});
}

void PostStateChanged() {
  stateChanged = true;
  if (mainLoop.wake) mainLoop.wake();
}

bool TakeStateChanged() {
  return stateChanged.exchange(false);
}

bool EndAsked() {
  std::lock_guard guard(lock);
  return std::any_of(queue.begin(), queue.end(), IsEnd);
}

bool PeekMessage(Message& message) {
  std::lock_guard guard(lock);
  if (queue.empty()) return false;
  message = queue.front();
  return true;
}

void WaitMessage() {
  if (mainLoop.wait) {
    while (QueueEmpty()) mainLoop.wait();
    return;
  }
  std::unique_lock guard(lock);
  arrived.wait(guard, [] { return !queue.empty(); });
}

bool GetMessage(Message& message) {
  WaitMessage();
  std::lock_guard guard(lock);
  message = queue.front();
  queue.pop_front();
  keysOfTaken = message.keys;
  return message.id != kMessageQuit;
}

bool KeyDown(Key key) {
  return (keysOfTaken & KeyBit(key)) != 0;
}

}  // namespace kwo::platform
