// The list at its full size.

#include <benchmark/benchmark.h>

#include <string>

#include "engine/transport.h"
#include "playlist/playlist_files.h"
#include "tests/support.h"

namespace kwo {
namespace {

constexpr int kSongs = 4000;

// All of one length, so that they sort by their numbers.
std::string NumberedName(int number) {
  return "Song number " + std::to_string(10000 + number) + ".mp3";
}

void FillInReverse() {
  RemoveAll();
  for (int i = kSongs; i > 0; --i) AddSong(NumberedName(i).c_str());
  BuildDisplayNames();
}

void AddFolder(benchmark::State& state) {
  const test::TempFolder folder;
  const std::string song = std::string(1000, 'x') + "TAG" + std::string(125, 't');
  for (int i = 0; i < kSongs; ++i) test::WriteBytes(folder.File(NumberedName(i)), song);
  for (auto _ : state) {
    state.PauseTiming();
    RemoveAll();
    state.ResumeTiming();
    benchmark::DoNotOptimize(AddPath(folder.Path().c_str()));
  }
  if (playlist.count != kSongs) state.SkipWithError("not all songs were added");
}
BENCHMARK(AddFolder)->Unit(benchmark::kMillisecond);

void SortReversed(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    FillInReverse();
    state.ResumeTiming();
    SortList();
  }
}
BENCHMARK(SortReversed)->Unit(benchmark::kMillisecond);

void RefreshNames(benchmark::State& state) {
  FillInReverse();
  playlist.displayMode = static_cast<int>(state.range(0));
  for (auto _ : state) BuildDisplayNames();
  playlist.displayMode = 0;
}
BENCHMARK(RefreshNames)->Arg(0)->Arg(4)->Unit(benchmark::kMillisecond);

void StepToNext(benchmark::State& state) {
  FillInReverse();
  transport.repeatOn = 1;
  transport.shuffleOn = static_cast<int>(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(AdvanceSong());
  transport.shuffleOn = 0;
}
BENCHMARK(StepToNext)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BuildShuffle(benchmark::State& state) {
  FillInReverse();
  for (auto _ : state) BuildShuffleTable();
}
BENCHMARK(BuildShuffle)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kwo
