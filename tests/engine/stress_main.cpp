// Threads side by side on a running clock, for the sanitizers: songs that end every few blocks and
// an automatic DJ, while the main thread works on the list, the transport and every knob.
// usage: engine_stress [ACTIONS [SEED]]

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "engine/transport.h"
#include "platform/clock.h"
#include "platform/headless/headless.h"
#include "platform/threads.h"
#include "tests/engine/engine_monkey.h"
#include "tests/support.h"
#include "tools/tool_engine.h"

namespace {

std::atomic<int> rotatorsWaiting = 2;
std::atomic<int> rotatorsLeft = 2;

void Rotate(void* mixer) {
  --rotatorsWaiting;
  while (rotatorsWaiting != 0) {
  }
  for (int i = 0; i < 100000; ++i) static_cast<kwo::Mixer*>(mixer)->RotateSlots(0, 2);
  --rotatorsLeft;
}

// Two threads rotate the slots at once; the voices must stay three.
bool RotationsKeepTheVoices(kwo::Mixer& mixer) {
  using namespace kwo;
  platform::Thread* rotators[] = {platform::StartThread(Rotate, &mixer),
                                  platform::StartThread(Rotate, &mixer)};
  while (rotatorsLeft != 0) platform::Sleep(10);
  for (auto* rotator : rotators) platform::JoinThread(rotator);
  return mixer.Slot(0) != mixer.Slot(1) && mixer.Slot(1) != mixer.Slot(2) &&
         mixer.Slot(2) != mixer.Slot(0);
}

}  // namespace

int main(int count, char** arguments) {
  using namespace kwo;
  const int actions = count > 1 ? std::atoi(arguments[1]) : 1500;
  const unsigned seed = count > 2 ? static_cast<unsigned>(std::atoi(arguments[2])) : 1;
  headless::UseRunningClock(100.0);
  const test::TempFolder folder;
  if (!tools::MakeEngine() || !RotationsKeepTheVoices(*TheMixer)) return 1;
  test::BeginToPlay(seed, folder.Path());
  TheMixer->StartThread();
  std::size_t played = 0;
  for (int i = 0; i < actions; ++i) {
    test::ActAtRandom();
    platform::Sleep(test::Below(400));
    played += headless::TakePlayedSound().size();
  }
  tools::StopEngine();
  std::printf("%d actions, %zu values played\n", actions, played);
  return played > 0 ? 0 : 1;
}
