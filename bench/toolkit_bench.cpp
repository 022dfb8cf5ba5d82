#include <benchmark/benchmark.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "app/application.h"
#include "panels/panel_tools.h"
#include "panels/visualisers.h"
#include "platform/density.h"
#include "platform/headless/headless.h"
#include "tests/support.h"
#include "toolkit/blits.h"

namespace kwo {
namespace {

constexpr int kWidth = 420, kHeight = 260;

template <typename Blit, typename... Ways>
void MovePixels(benchmark::State& state, Blit blit, Ways... ways) {
  std::vector<std::uint8_t> source(RowBytes(kWidth) * kHeight), target(source.size(), 0x22);
  for (std::size_t i = 0; i < source.size(); ++i) source[i] = static_cast<std::uint8_t>(i * 7);
  const BlitSource from = {source.data(), 0, 0, RowBytes(kWidth)};
  const BlitTarget to = {target.data(), 0, 0, RowBytes(kWidth)};
  for (auto _ : state) {
    blit(from, kWidth, kHeight, to, ways...);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * 3 * kWidth * kHeight);
}

void CopyMemory(const BlitSource& from, int width, int height, const BlitTarget& to) {
  std::memcpy(to.bits, from.bits, RowBytes(width) * height);
}
BENCHMARK_CAPTURE(MovePixels, plain, CopyMemory)->Name("PlainMemcpy");
BENCHMARK_CAPTURE(MovePixels, copy, BlitCopy)->Name("Copy");
BENCHMARK_CAPTURE(MovePixels, bright, BlitBright, -40)->Name("Bright");

// By blend mode; without brightness and key, with both.
void Blended(benchmark::State& state) {
  const bool both = state.range(1);
  MovePixels(state, BlitBlend, both ? 40 : 0, static_cast<int>(state.range(0)),
             both ? 0x090009 : 0xFFFFFFFF);
}
BENCHMARK(Blended)->ArgsProduct({{0, 1, 2, 3}, {0, 1}});

// A frame of the default skin's main page with its first visualiser.
void Frame(benchmark::State& state) {
  // The program is not ended, and leaves its running copy.
  static const test::TempFolder folder;
  std::error_code exists;
  for (const char* data : {"skin", "music"})
    std::filesystem::create_directory_symlink(std::string(KWO_SOURCE "/") + data, folder.File(data),
                                              exists);
  headless::SetExecutablePath(folder.File("kwo"));
  headless::UseRegistryFile("");
  if (!StartUp()) return state.SkipWithError("no skin");
  TheSkinHost->StopRedraw();
  for (auto _ : state) TheSkinHost->RedrawFrame();
}
BENCHMARK(Frame)->Unit(benchmark::kMicrosecond);

// The whole window's picture, by quarters.
void Enlarge(benchmark::State& state) {
  constexpr platform::Size kWindow{488, 302};
  platform::Enlarger enlarger(platform::Density(static_cast<int>(state.range(0))), kWindow);
  const platform::Size screen = enlarger.ScreenSize();
  const std::vector<std::uint32_t> own(
      static_cast<std::size_t>(kWindow.width) * static_cast<std::size_t>(kWindow.height), 0x7F3388);
  std::vector<std::uint32_t> enlarged(static_cast<std::size_t>(screen.width) *
                                      static_cast<std::size_t>(screen.height));
  for (auto _ : state) {
    enlarger.Enlarge(own.data(), 0, kWindow.height, enlarged.data());
    benchmark::DoNotOptimize(enlarged.data());
  }
}
BENCHMARK(Enlarge)->Arg(5)->Arg(6)->Arg(7)->Arg(8)->Arg(12)->Arg(16)->Unit(benchmark::kMicrosecond);

// By number, at the skin's size and at 1,024 columns.
void Visualiser(benchmark::State& state) {
  SkinBitmap bitmap;
  const bool wide = state.range(1);
  bitmap.CreateBlank(wide ? kMaxColumns : 408, wide ? 600 : 106, 0);
  std::vector<std::int16_t> sound(4608);
  for (std::size_t i = 0; i < sound.size(); ++i) sound[i] = static_cast<std::int16_t>(i * 997);
  for (auto _ : state)
    kVisualiserTable[static_cast<std::size_t>(state.range(0))](bitmap, sound.data(), 4608);
}
BENCHMARK(Visualiser)->ArgsProduct({{0, 1, 2, 3, 4, 5, 6}, {0, 1}})->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace kwo
