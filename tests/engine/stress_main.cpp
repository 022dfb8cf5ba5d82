// Threads side by side on a running clock, for the sanitizers: songs that end every few blocks and
// an automatic DJ, while the main thread works on the list, the transport and every knob.
// usage: engine_stress [ACTIONS [SEED]]

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

using namespace kwo;

// Two threads rotate the slots at once; the voices must stay three.
bool RotationsKeepTheVoices() {
  const auto rotate = [](void*) {
    for (int i = 0; i < 1000000; ++i) TheMixer->RotateSlots(0, 2);
  };
  for (auto* rotator :
       {platform::StartThread(rotate, nullptr), platform::StartThread(rotate, nullptr)})
    platform::JoinThread(rotator);
  const Voice *a = TheMixer->Slot(0), *b = TheMixer->Slot(1), *c = TheMixer->Slot(2);
  return a != b && b != c && c != a;
}

}  // namespace

int main(int count, char** arguments) {
  const int actions = count > 1 ? std::atoi(arguments[1]) : 1500;
  const unsigned seed = count > 2 ? static_cast<unsigned>(std::atoi(arguments[2])) : 1;
  headless::UseRunningClock(100.0);
  const test::TempFolder folder;
  if (!tools::MakeEngine() || !RotationsKeepTheVoices()) return 1;
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
