// Hours of music in minutes, block by block on a clock that is stepped, with a listener who does
// something every second or two.  Every value of the mix must be a number; the memory in use is
// printed, and should stand still.
// usage: engine_soak HOURS [SEED]

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "engine/transport.h"
#include "platform/clock.h"
#include "tests/engine/engine_monkey.h"
#include "tests/support.h"
#include "tools/tool_engine.h"

namespace {

constexpr int kBlockMilliseconds = 52;
constexpr int kBlocksPerAction = 30;

int ResidentKiB() {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word)
    if (word == "RssAnon:") return status >> word ? std::atoi(word.c_str()) : 0;
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  using namespace kwo;
  const double hours = count > 1 ? std::atof(arguments[1]) : 0.1;
  const unsigned seed = count > 2 ? static_cast<unsigned>(std::atoi(arguments[2])) : 1;
  const test::TempFolder folder;
  if (!tools::MakeEngine()) return 1;
  test::BeginToPlay(seed, folder.Path());
  const auto blocks = static_cast<long>(hours * 3600 * 1000 / kBlockMilliseconds);
  long heard = 0;
  for (long block = 0; block < blocks; ++block) {
    if (test::Below(kBlocksPerAction) == 0) test::ActAtRandom();
    if (TheMixer->RenderBlock()) {
      ++heard;
      const float* mix = TheMixer->MixBuffer();
      if (!std::all_of(mix, mix + TheMixer->blockSize, [](float v) { return std::isfinite(v); })) {
        std::printf("engine_soak: block %ld has a value that is no sound\n", block);
        return 1;
      }
    }
    platform::Sleep(kBlockMilliseconds);
    if (block % (blocks / 10 + 1) == 0)
      std::printf("%5.2f h, %d KiB\n",
                  static_cast<double>(block) * hours / static_cast<double>(blocks), ResidentKiB());
    std::fflush(stdout);
  }
  tools::StopEngine();
  std::printf("engine_soak: %ld blocks, %ld with sound, every value finite\n", blocks, heard);
  return heard > blocks / 4 ? 0 : 1;
}
