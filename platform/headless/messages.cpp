#include "platform/messages.h"

#include <algorithm>
#include <atomic>
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
std::atomic<bool> stateChanged = false;

// What tells of itself once, however often it has come about.
void PostSingles() {
  std::vector<int> ids;
  headless::CollectTimers(ids);
  std::lock_guard guard(lock);
  if (stateChanged.exchange(false)) queue.push_back({kMessageStateChanged, 0, 0});
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

void PostStateChanged() {
  stateChanged = true;
  std::lock_guard guard(lock);
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
  PostSingles();
  std::lock_guard guard(lock);
  if (queue.empty()) return false;
  message = queue.front();
  return true;
}

void WaitMessage() {
  headless::Task& self = headless::CurrentTask();
  for (;;) {
    PostSingles();
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
  platform::stateChanged = false;
}

void SetKey(platform::Key key, bool down) {
  const unsigned bit = platform::KeyBit(key), held = platform::keys;
  platform::keys = down ? held | bit : held & ~bit;
}

unsigned HeldKeys() {
  return platform::keys;
}

}  // namespace kwo::headless
