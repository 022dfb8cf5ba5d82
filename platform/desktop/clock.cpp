#include "platform/clock.h"

#include <chrono>
#include <thread>

#include "platform/desktop/main_loop.h"

namespace kwo::platform {
namespace {

const auto programStart = std::chrono::steady_clock::now();

}  // namespace

void Sleep(int milliseconds) {
  if (mainLoop.sleep && mainLoop.onMainThread()) {
    mainLoop.sleep(milliseconds);
    return;
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

unsigned GetTickCount() {
  const auto passed = std::chrono::steady_clock::now() - programStart;
  return static_cast<unsigned>(
      std::chrono::duration_cast<std::chrono::milliseconds>(passed).count());
}

}  // namespace kwo::platform
