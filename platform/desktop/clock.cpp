#include "platform/clock.h"

#include <chrono>
#include <thread>

#include "platform/desktop/main_loop.h"

namespace kwo::platform {
void Sleep(int milliseconds) {
  if (mainLoop.sleep && mainLoop.onMainThread()) {
    mainLoop.sleep(milliseconds);
    return;
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

unsigned GetTickCount() {
  // The steady clock of this system counts from the machine's start.
  const auto passed = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<unsigned>(
      std::chrono::duration_cast<std::chrono::milliseconds>(passed).count());
}

}  // namespace kwo::platform
