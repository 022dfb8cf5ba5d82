// A mixer block with everything on, as a share of the 52 ms that it plays.

#include <benchmark/benchmark.h>

#include "engine/mixer.h"

namespace kwo {
namespace {

int StartAgain(Mixer*, int event, Voice* voice, int, int, int) {
  return event == EVENT_SOURCE_END ? voice->Open(KWO_TEST_DATA "/joint128.mp3") : 0;
}

void MixThreeSongs(benchmark::State& state) {
  Mixer mixer;
  mixer.Prepare(StartAgain);
  mixer.limiter = mixer.crystalizer = mixer.vocalReducer = mixer.wideStereo = mixer.eqSwitch = 1;
  mixer.enhancer = 2;
  mixer.speed = 1.1f;
  mixer.pan = 0.2f;
  for (int slot = 0; slot < kVoices; ++slot) mixer.Slot(slot)->Start();
  for (auto _ : state) mixer.RenderBlock();
  state.counters["share_of_block"] =
      benchmark::Counter(2304.0 / 44100 * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(MixThreeSongs);

}  // namespace
}  // namespace kwo
