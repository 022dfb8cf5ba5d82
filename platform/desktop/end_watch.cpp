#include "platform/desktop/end_watch.h"

#include <signal.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <system_error>
#include <thread>

namespace kwo::platform {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds kUntilServed{3000}, kUntilEnd{4900}, kPoll{10};

std::atomic<bool> asked = false, served = false;

sigset_t EndSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&signals, signal);
  return signals;
}

void Watch(void (*wake)(), void (*finish)()) {
  const sigset_t signals = EndSignals();
  int signal;
  while (sigwait(&signals, &signal) != 0) continue;
  const auto begin = Clock::now();
  asked = true;
  wake();
  while (!served && Clock::now() - begin < kUntilServed) std::this_thread::sleep_for(kPoll);
  if (!served) {
    finish();
    if (!served) std::_Exit(1);
  }
  std::this_thread::sleep_until(begin + kUntilEnd);
  std::_Exit(0);
}

}  // namespace

bool WatchForEnd(void (*wake)(), void (*finish)()) {
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);  // a save past the limit fails as on a full disk
  // A handler would wait for a thread that the system can run; the main thread may not be one.
  const sigset_t signals = EndSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  try {
    std::thread watch(Watch, wake, finish);
    pthread_setname_np(watch.native_handle(), "kwo end");
    watch.detach();
  } catch (const std::system_error&) {
    return false;
  }
  return true;
}

void UnblockEndSignals() {
  const sigset_t signals = EndSignals();
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

bool EndSignalled() {
  return asked.exchange(false);
}

void EndServed() {
  served = true;
}

}  // namespace kwo::platform
