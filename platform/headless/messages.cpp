#include "platform/messages.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <vector>

#include "base/shared.h"
#include "platform/headless/headless.h"
#include "platform/headless/scheduler.h"
#include "platform/headless/timers.h"

namespace kwo::platform {
namespace {

std::mutex lock;
std::deque<Message> queue;
unsigned keysOfTaken = 0;  // of the message taken last
headless::Task* waiting = nullptr;
Shared<unsigned> keys;  // held now

void PostTimers() {
  std::vector<int> ids;
  headless::CollectTimers(ids);
  std::lock_guard guard(lock);
  for (int id : ids) {
    const bool waits = std::any_of(queue.begin(), queue.end(), [id](const Message& message) {
      return message.id == kMessageTimer && message.wParam == id;
    });
    if (!waits) queue.push_back({kMessageTimer, id, 0});
  }
}

}  // namespace

void PostMessage(const Message& message) {
  std::lock_guard guard(lock);
  queue.push_back(message);
  if (waiting) headless::Wake(*waiting);
}

void PostQuitMessage(int exitCode) {
  PostMessage({kMessageQuit, exitCode, 0});
}

bool EndAsked() {
  std::lock_guard guard(lock);
  return std::any_of(queue.begin(), queue.end(), IsEnd);
}

bool PeekMessage(Message& message) {
  PostTimers();
  std::lock_guard guard(lock);
  if (queue.empty()) return false;
  message = queue.front();
  return true;
}

void WaitMessage() {
  headless::Task& self = headless::CurrentTask();
  for (;;) {
    PostTimers();
    {
      std::lock_guard guard(lock);
      waiting = queue.empty() ? &self : nullptr;
      if (!waiting) return;
    }
    headless::RestUntil(headless::NextTimer());
  }
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

namespace kwo::headless {

void ForgetMessages() {
  std::lock_guard guard(platform::lock);
  platform::queue.clear();
}

void SetKey(platform::Key key, bool down) {
  const unsigned bit = platform::KeyBit(key), held = platform::keys;
  platform::keys = down ? held | bit : held & ~bit;
}

unsigned HeldKeys() {
  return platform::keys;
}

}  // namespace kwo::headless
