// The transport and the automatic DJ with the render thread running, on the headless clock.

#include "engine/transport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "engine/shuffle_master.h"
#include "platform/clock.h"
#include "tests/engine/transport_fixture.h"

namespace kwo {
namespace {

constexpr double kBlockMs = kBlock / 2 * 1000.0 / 44100;

TEST_F(Transport, PlayTogglesAndStopFadesBehindANewSong) {
  AddLongSong();
  AddLongSong();
  TransportStop();
  EXPECT_EQ(0, V().seekPending) << "a stop of nothing does not seek";
  TransportPlay();
  EXPECT_EQ(1, playing);
  EXPECT_EQ(0, playlist.currentSong);
  TheMixer->RenderBlock();
  EXPECT_EQ(5, shownTime);
  TransportPlay();
  EXPECT_EQ(1, paused);
  EXPECT_EQ(20, RenderUntilSilent()) << "21 blocks, the last of which adds nothing";
  EXPECT_EQ(1, playing);
  const float place = V().position;
  TransportPlay();
  EXPECT_EQ(0, paused);
  for (int block = 0; block < 18; ++block) TheMixer->RenderBlock();
  EXPECT_TRUE(V().ramps[0].Idle());
  EXPECT_EQ(1.0f, V().volume);
  EXPECT_NEAR(place + 18 * 2304 / 44100.0, V().position, 0.01);
  TransportNext();
  Voice* old = &V();
  TransportStop();
  EXPECT_EQ(0, playing);
  EXPECT_EQ(old, &V(1));
  EXPECT_EQ(0, shownTime);
  TransportPlay();
  EXPECT_NE(old, &V());
  EXPECT_EQ(1.0f, V().volume) << "the new song starts at full volume";
  EXPECT_EQ(1, V().active);
}

TEST_F(Transport, SeekIsStopSeekAndPlayWithAFadeIn) {
  AddLongSong();
  TransportPlay();
  TheMixer->RenderBlock();
  TransportStop();
  V().Seek(2.0f);
  TransportPlay();
  EXPECT_EQ(0.01f, V().volume);
  for (int block = 0; block < 26; ++block) TheMixer->RenderBlock();
  EXPECT_TRUE(V().ramps[0].Idle());
  EXPECT_EQ(1.0f, V().volume);
  EXPECT_NEAR(2.0 + 26 * 2304 / 44100.0, V().position, 0.06);
}

TEST_F(Transport, DragOfTheTimeHoldsOffTheRenderThread) {
  AddSongs(1);
  TransportPlay();
  SeekActive = 1;
  TheMixer->RenderBlock();
  EXPECT_EQ(-1, shownTime);
  OnMixerEvent(TheMixer, EVENT_POSITION, &V(), 777, 1, 0);
  EXPECT_EQ(777, shownTime);
  EXPECT_EQ(1, OnMixerEvent(TheMixer, 5, &V(), 0, 0, 0));
}

TEST_F(Transport, NextAndPreviousFollowRepeat) {
  AddSongs(3);
  TransportNext();
  EXPECT_EQ(0, playlist.currentSong);
  EXPECT_EQ(0, V().active) << "ready, not started";
  EXPECT_EQ(3, V().Source()->info[INFO_SECONDS]);
  TransportPrevious();
  EXPECT_EQ(2, playlist.currentSong) << "previous always wraps";
  TransportPlay();
  TransportNext();
  EXPECT_EQ(0, playlist.currentSong);
  EXPECT_EQ(0, playing) << "the list has run out";
  repeatOn = 1;
  playlist.currentSong = 2;
  TransportPlay();
  TransportNext();
  EXPECT_EQ(0, playlist.currentSong);
  EXPECT_EQ(1, playing);
}

TEST_F(Transport, SongsFollowEachOtherAndTheListEnds) {
  AddSongs(2);
  TransportPlay();
  const int blocks = RenderUntilSilent();
  EXPECT_EQ(0, playing);
  EXPECT_EQ(0, V().active);
  EXPECT_EQ(0, shownTime);
  EXPECT_NEAR(2 * 3.08 / 0.05224, blocks, 4);
  EXPECT_EQ(0, playlist.currentSong);
}

TEST_F(Transport, HalvesOfASongJoinWithoutAGap) {
  // A stream of constant rate cut at a frame border, whose reservoir the second half lacks: WAV
  // halves show the join itself.
  test::TempFolder folder;
  const auto noise = test::Noise(kBlock * 5);
  const long cut = kBlock * 2 + 1234;
  const std::vector<std::int16_t> first(noise.begin(), noise.begin() + cut),
      second(noise.begin() + cut, noise.end());
  test::WriteBytes(folder.File("1.wav"), test::WavBytes(2, 44100, 16, test::Raw16(first)));
  test::WriteBytes(folder.File("2.wav"), test::WavBytes(2, 44100, 16, test::Raw16(second)));
  AddSong(folder.File("1.wav").c_str());
  AddSong(folder.File("2.wav").c_str());
  TransportPlay();
  for (int block = 0; block < 5; ++block) {
    ASSERT_EQ(1, TheMixer->RenderBlock());
    for (int i = 0; i < kBlock; ++i)
      ASSERT_EQ(noise[static_cast<std::size_t>(block * kBlock + i)], TheMixer->Block()[i]);
  }
  EXPECT_EQ(1, playlist.currentSong);
}

TEST_F(Transport, BadSongsAreWalkedOneAPass) {
  for (int i = 0; i < 3; ++i) AddSong("absent.mp3");
  AddSongs(1);
  TransportPlay();
  for (int song = 0; song < 3; ++song) {
    EXPECT_EQ(song, playlist.currentSong);
    TheMixer->RenderBlock();
  }
  EXPECT_EQ(3, playlist.currentSong);
  EXPECT_EQ(1, TheMixer->RenderBlock());
}

TEST_F(Transport, PlayModesPassOverTheOthers) {
  AddSongs(5);
  Select({1, 3});
  repeatOn = 1;
  playMode = 1;
  EXPECT_EQ("1 3 1 3 ", Order(4, AdvanceSong));
  EXPECT_EQ("1 3 1 ", Order(3, RetreatSong));
  playMode = 2;
  EXPECT_EQ("2 4 0 2 ", Order(4, AdvanceSong));
  playMode = 1;
  playlist.currentSong = 0;
  TransportPlay();
  EXPECT_EQ(1, playlist.currentSong);
  SelectAll();
  playMode = 2;
  EXPECT_EQ(-1, AdvanceSong());
  EXPECT_EQ(-1, playlist.currentSong);
  DeselectAll();
  playMode = 1;
  EXPECT_EQ(-1, AdvanceSong());
  repeatOn = 0;
  playMode = 0;
  EXPECT_EQ("0 1 2 3 4 -1 1 ", Order(7, AdvanceSong));
}

TEST_F(Transport, ShuffleIsAPermutationOfAllSongs) {
  for (int i = 0; i < 4000; ++i) AddSong("x.mp3");
  shuffleOn = 1;
  BuildShuffleTable();
  std::set<int> seen = {shuffleTable[0]};
  bool mixed = false;
  for (int i = 1; i < 4000; ++i) {
    const int song = AdvanceSong();
    mixed = mixed || song != i;
    EXPECT_TRUE(seen.insert(song).second);
  }
  EXPECT_TRUE(mixed);
  EXPECT_EQ(0, *seen.begin());
  EXPECT_EQ(3999, *seen.rbegin());
  EXPECT_EQ(-1, AdvanceSong()) << "the table is through";
  EXPECT_EQ(shuffleTable[0], playlist.currentSong);
  RemoveAll();
  AddSongs(1);
  repeatOn = 1;
  BuildShuffleTable();
  EXPECT_EQ("0 0 0 ", Order(3, AdvanceSong));
}

TEST_F(Transport, EmptyAndShrunkenListsPlayNothing) {
  TransportPlay();
  TransportNext();
  EXPECT_EQ(0, playing);
  EXPECT_EQ(-1, AdvanceSong());
  AddSongs(3);
  playlist.currentSong = 2;
  TransportPlay();
  playlist.currentSong = 9;
  EXPECT_EQ(0, OnMixerEvent(TheMixer, EVENT_SOURCE_END, &V(1), 0, 0, 0));
  OnMixerEvent(TheMixer, EVENT_SOURCE_END, &V(), 0, 0, 0);
  EXPECT_LT(playlist.currentSong, 3);
  RemoveAll();
  EXPECT_EQ(0, playing);
  playlist.currentSong = 5;
  TransportPlay();
  EXPECT_EQ(0, playing);
}

TEST_F(Transport, DjCrossfadesByItsTable) {
  unsigned chosen = 1;
  AddLongSong();
  // The new song's place is the library generator's; one that lies in the song.
  for (unsigned seed = 1; std::srand(seed), std::rand() % 100 >= 15; ++seed) chosen = seed + 1;
  std::srand(chosen);
  repeatOn = 1;
  djMode = 1;
  TheMixer->StartThread();
  TransportPlay();
  DjSetMode(1);
  platform::Sleep(40900);
  Voice* old = &V();
  EXPECT_EQ(0.0f, V().pan);
  while (&V() == old) platform::Sleep(10);
  EXPECT_EQ(old, &V(1));
  EXPECT_NEAR(-1.0f, V().pan, 0.011f);
  EXPECT_LT(V().volume, 0.02f);
  EXPECT_GE(V().position, 29.9f);
  platform::Sleep(1400);
  EXPECT_EQ(1.0f, old->volume) << "the old song holds for a second and a half";
  // The engine renders about a second ahead of the clock; only its own blocks count.
  platform::Sleep(static_cast<int>(50 * kBlockMs));
  EXPECT_TRUE(V().ramps[0].Idle());
  EXPECT_EQ(1.0f, V().volume);
  EXPECT_GT(old->pan, 0.2f);
  platform::Sleep(static_cast<int>(100 * kBlockMs));
  EXPECT_EQ(0, old->active);
  EXPECT_EQ(1.0f, old->pan);
  platform::Sleep(static_cast<int>(60 * kBlockMs));
  EXPECT_EQ(0.0f, V().pan);
}

TEST_F(Transport, DjStopsAtTheListsEndAndOnDemand) {
  AddSongs(1);
  djMode = 1;
  TheMixer->StartThread();
  TransportPlay();
  DjSetMode(1);
  platform::Sleep(39000);
  EXPECT_EQ(1, playing) << "a song that has ended waits in silence";
  platform::Sleep(4000);
  EXPECT_EQ(0, playing);
  const unsigned start = platform::GetTickCount();
  DjSetMode(0);
  EXPECT_LE(platform::GetTickCount() - start, 60u);
  DjSetMode(0);
}

}  // namespace
}  // namespace kwo
