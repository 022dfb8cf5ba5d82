// How many times faster than real time songs are decoded, and what the stages cost.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "decoder/kernels.h"
#include "engine/audio_source.h"

namespace kwo {
namespace {

void DecodeSong(benchmark::State& state, const char* name) {
  std::vector<float> samples(9 * 2304);
  double seconds = 0;
  AudioSource source;
  for (auto _ : state) {
    source.Open((std::string(KWO_TEST_DATA "/") + name).c_str());
    for (int got; (got = source.Read(samples.data(), static_cast<int>(samples.size()) * 4)) > 0;)
      seconds += got / (4.0 * source.channels * source.sampleRate);
  }
  state.counters["x_real_time"] = benchmark::Counter(seconds, benchmark::Counter::kIsRate);
}
BENCHMARK_CAPTURE(DecodeSong, joint_128, "joint128.mp3");
BENCHMARK_CAPTURE(DecodeSong, joint_320, "joint320.mp3");
BENCHMARK_CAPTURE(DecodeSong, vbr, "vbr.mp3");
BENCHMARK_CAPTURE(DecodeSong, layer2_192, "layer2.mp2");

// One decoder frame of one channel on each set of kernels: 0 plain, then the wider ones.
void SynthesizeFrame(benchmark::State& state) {
  const DecoderKernels* kernels = AllKernels()[state.range(0)];
  if (!kernels) return state.SkipWithError("not on this machine");
  SynthesisHistory history = {};
  SynthesisWeights weights = {};
  std::vector<float> subbands(36 * 32, 0.1f), pcm(1152);
  std::vector<double> secants(32, 0.5);
  for (auto _ : state)
    kernels->synthesize(pcm.data(), subbands.data(), history, weights, secants.data(), 0);
}
BENCHMARK(SynthesizeFrame)->DenseRange(0, 2);

void TransformSubbands(benchmark::State& state) {
  const DecoderKernels* kernels = AllKernels()[state.range(0)];
  if (!kernels) return state.SkipWithError("not on this machine");
  std::vector<float> lines(8 * 18, 0.1f), out(18 * 32), overlap(18 * 32);
  for (auto _ : state)
    kernels->imdct(out.data(), lines.data(), overlap.data(), static_cast<int>(state.range(1)));
}
BENCHMARK(TransformSubbands)->ArgsProduct({{0, 1, 2}, {0, 2}});

}  // namespace
}  // namespace kwo
