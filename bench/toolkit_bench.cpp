#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <vector>

#include "app/application.h"
#include "panels/panel_tools.h"
#include "panels/visualisers.h"
#include "platform/clock.h"
#include "platform/headless/headless.h"
#include "platform/threads.h"
#include "toolkit/blits.h"

namespace kwo {
namespace {

constexpr int kWidth = 420, kHeight = 260;

struct Pictures {
  Pictures() : source(RowBytes(kWidth) * kHeight, 0x55), target(source.size(), 0x22) {
    for (std::size_t i = 0; i < source.size(); ++i) source[i] = static_cast<std::uint8_t>(i * 7);
  }
  BlitSource Source() const { return {source.data(), 0, 0, RowBytes(kWidth)}; }
  BlitTarget Target() { return {target.data(), 0, 0, RowBytes(kWidth)}; }
  std::vector<std::uint8_t> source, target;
};

void SetBytes(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * 3 * kWidth * kHeight);
}

void PlainMemcpy(benchmark::State& state) {
  Pictures p;
  for (auto _ : state) {
    std::memcpy(p.target.data(), p.source.data(), p.source.size());
    benchmark::ClobberMemory();
  }
  SetBytes(state);
}
BENCHMARK(PlainMemcpy);

void Copy(benchmark::State& state) {
  Pictures p;
  for (auto _ : state) {
    BlitCopy(p.Source(), kWidth, kHeight, p.Target());
    benchmark::ClobberMemory();
  }
  SetBytes(state);
}
BENCHMARK(Copy);

void Bright(benchmark::State& state) {
  Pictures p;
  for (auto _ : state) {
    BlitBright(p.Source(), kWidth, kHeight, p.Target(), -40);
    benchmark::ClobberMemory();
  }
  SetBytes(state);
}
BENCHMARK(Bright);

// By blend mode; with brightness and key, without either.
void Blended(benchmark::State& state) {
  Pictures p;
  const int brightness = state.range(1) ? 40 : 0;
  const std::uint32_t key = state.range(1) ? 0x090009 : 0xFFFFFFFF;
  for (auto _ : state) {
    BlitBlend(p.Source(), kWidth, kHeight, p.Target(), brightness, static_cast<int>(state.range(0)),
              key);
    benchmark::ClobberMemory();
  }
  SetBytes(state);
}
BENCHMARK(Blended)->ArgsProduct({{0, 1, 2, 3}, {0, 1}});

// A frame of the default skin's main page with its first visualiser.
void Frame(benchmark::State& state) {
  headless::SetExecutablePath(KWO_SOURCE "/kwo");
  headless::UseRegistryFile("");
  if (!StartUp()) {
    state.SkipWithError("no skin");
    return;
  }
  TheSkinHost->StopRedraw();
  for (auto _ : state) TheSkinHost->RedrawFrame();
}
BENCHMARK(Frame)->Unit(benchmark::kMicrosecond);

// By number, at the skin's size and at 1,024 columns.
void Visualiser(benchmark::State& state) {
  SkinBitmap bitmap;
  const bool wide = state.range(1);
  bitmap.CreateBlank(wide ? kMaxColumns : 408, wide ? 600 : 106, 0);
  std::vector<std::int16_t> sound(4608);
  for (std::size_t i = 0; i < sound.size(); ++i) sound[i] = static_cast<std::int16_t>(i * 997);
  for (auto _ : state) kVisualiserTable[state.range(0)](bitmap, sound.data(), 4608);
}
BENCHMARK(Visualiser)->ArgsProduct({{0, 1, 2, 3, 4, 5, 6}, {0, 1}})->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace kwo
