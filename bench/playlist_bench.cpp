// The list at its full size.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "engine/transport.h"
#include "playlist/playlist_files.h"

namespace kwo {
namespace {

constexpr int kSongs = 4000;

std::string NumberedName(int number) {
  char name[32];
  std::snprintf(name, sizeof name, "Song number %04d.mp3", number);
  return name;
}

void FillInReverse() {
  RemoveAll();
  for (int i = kSongs; i > 0; --i) AddSong(NumberedName(i).c_str());
  BuildDisplayNames();
}

void AddFolder(benchmark::State& state) {
  const auto folder = std::filesystem::temp_directory_path() / "kwo-bench-songs";
  std::filesystem::create_directory(folder);
  for (int i = 0; i < kSongs; ++i)
    std::ofstream(folder / NumberedName(i))
        << std::string(1000, 'x') << "TAG" << std::string(125, 't');
  std::string path = folder.string();
  for (auto _ : state) {
    state.PauseTiming();
    RemoveAll();
    state.ResumeTiming();
    benchmark::DoNotOptimize(AddPath(path.c_str()));
  }
  if (playlist.count != kSongs) state.SkipWithError("not all songs were added");
  std::filesystem::remove_all(folder);
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
  repeatOn = 1;
  shuffleOn = static_cast<int>(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(AdvanceSong());
  shuffleOn = 0;
}
BENCHMARK(StepToNext)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BuildShuffle(benchmark::State& state) {
  FillInReverse();
  for (auto _ : state) BuildShuffleTable();
}
BENCHMARK(BuildShuffle)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kwo
