// The transport and the play order, step by step.

#include "engine/transport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <numeric>
#include <random>
#include <sstream>

#include "tests/engine/transport_fixture.h"

namespace kwo {
namespace {

// Counts of what the hooks have told.
int songLines, pages, times;

// The transport as its description has it, over voices that only remember.
struct PlainTransport {
  struct Voice {
    int song = -1;
    bool active = false, seeks = false, ramps = false, stopAtEnd = false;
    float volume = 1, base = 1, position = 0, step = 0, target = 0;

    void SetRamp(float newStep, float newTarget, bool stop) {
      ramps = true;
      step = newStep, target = newTarget, stopAtEnd = stop;
    }
    void Reset() {
      ramps = false;
      volume = base;
    }
    void FadeIn(float by) {
      volume = 0.01f, base = 1;
      SetRamp(by, 1, false);
    }
    void Seek(float seconds) {
      seeks = true;
      position = seconds;
    }
    void StepRamp() {
      if (!ramps) return;
      volume *= step;
      if (step > 1 ? volume <= target : volume >= target) return;
      volume = target;
      ramps = false;
      if (stopAtEnd) active = false;
    }
  };
  std::array<Voice, 3> slot;
  std::vector<bool> selected;
  bool playing = false, paused = false, repeat = false, shuffle = false, dj = false;
  int current = -1, mode = 0, place = 0, lines = 0, pages = 0, times = 0;
  std::vector<int> table;

  std::string Look() const {
    std::ostringstream look;
    look.precision(9);  // a float's own
    look << playing << paused << ' ' << current << ' ' << lines << ' ' << pages << ' ' << times;
    for (const Voice& v : slot) {
      look << " | " << v.song << ' ' << v.active << v.seeks << v.ramps << ' ' << v.volume << ' '
           << v.base << ' ' << v.position;
      if (v.ramps) look << ' ' << v.step << ' ' << v.target << ' ' << v.stopAtEnd;
    }
    return look.str();
  }
  int Count() const { return static_cast<int>(selected.size()); }
  bool InMode(int song) const {
    const bool chosen = selected[static_cast<std::size_t>(song)];
    return mode == 0 || chosen == (mode == 1);
  }
  void Refresh() { ++lines, ++pages; }

  int Step(bool forward) {
    bool any = false, wrapped = false;
    for (int song = 0; song < Count(); ++song) any = any || InMode(song);
    if (!any) return current = -1;
    do {
      int& at = shuffle ? place : current;
      at += forward ? 1 : -1;
      if (at >= Count()) {
        at = 0;
        wrapped = true;
        // The table has been built anew.
        if (shuffle)
          table.assign(std::begin(transport.shuffleTable),
                       std::begin(transport.shuffleTable) + Count());
      }
      if (at < 0) at = Count() - 1;
      if (shuffle) current = table[static_cast<std::size_t>(place)];
    } while (!InMode(current));
    return forward && wrapped && !repeat ? -1 : current;
  }
  void Play() {
    if (playing) {
      if (!paused) {
        slot[0].volume = slot[0].base = 1;
        slot[0].SetRamp(0.8f, 0.01f, true);
      } else {
        slot[0].FadeIn(1.3f);
        slot[0].active = true;
      }
      paused = !paused;
      return;
    }
    if (current < 0 && Count() > 0) Next(true);
    if (current < 0) return;
    if (!InMode(current)) Next(true);
    if (current < 0) return;
    Voice& voice = slot[0];
    voice.Reset();
    voice.song = current;
    if (voice.position != 0) {
      voice.FadeIn(1.2f);
    } else {
      voice.volume = voice.base = 1;
    }
    voice.active = playing = true;
  }
  void Stop() {
    if (!playing) return;
    playing = false;
    for (int i : {0, 1}) {
      slot[std::size_t(i)].Reset();
      slot[std::size_t(i)].SetRamp(0.9f, 0.01f, true);
    }
    slot[2].Reset();
    slot[2].active = false;
    std::rotate(slot.begin(), slot.begin() + 2, slot.end());
    slot[0].Seek(0);
    ++times;
  }
  void Next(bool forward) {
    if (Count() == 0) return Refresh();
    const bool was = playing;
    Stop();
    const int song = Step(forward);
    if (song < 0) {
      Stop();
    } else if (was) {
      Play();
    } else {
      slot[0].song = song;
    }
    Refresh();
  }
  void SeekTo(float seconds) {
    const bool sounding = slot[0].active;
    if (sounding) Stop();
    slot[0].Seek(seconds);
    if (sounding) Play();
  }
  int End(int of) {
    if (dj) return 1;
    if (of != 0) return 0;
    if (Count() == 0) return Refresh(), 0;
    if (Step(true) >= 0) {
      slot[0].song = current;
    } else {
      slot[0].active = playing = false;
      slot[0].Seek(0);
      ++times;
    }
    Refresh();
    return 1;
  }
};

class TransportTwin : public Transport {
 protected:
  void SetUp() override {
    Transport::SetUp();
    songLines = pages = times = 0;
    hooks.refreshSongLine = [] { ++songLines; };
    hooks.refreshPlaylistPage = [] { ++pages; };
    hooks.showSongTime = [](int time) { times += time == 0; };
  }
  // Songs that are told apart by their seconds.
  void Add(int count, PlainTransport& plain) {
    for (int i = 1; i <= count; ++i) {
      const std::string path = folder.File(std::to_string(i) + ".wav");
      test::WriteBytes(path, test::WavBytes(1, 100, 8, std::string(std::size_t(100 * i), 'x')));
      AddSong(path.c_str());
      plain.selected.push_back(false);
    }
  }
  // What is to be seen of the transport itself, in the plain one's form.
  PlainTransport Seen(const PlainTransport& plain) {
    PlainTransport seen = plain;
    seen.playing = transport.playing != 0, seen.paused = transport.paused,
    seen.current = playlist.currentSong;
    seen.lines = songLines, seen.pages = pages, seen.times = times;
    for (int i = 0; i < 3; ++i) {
      const Voice& voice = V(i);
      const VoiceRamp::Program ramp = voice.ramps[0].Get();
      seen.slot[static_cast<std::size_t>(i)] = {voice.Source()->info[INFO_SECONDS] - 1,
                                                voice.active != 0,
                                                voice.seekPending != 0,
                                                ramp.kind != RampKind::kIdle,
                                                ramp.stopAtEnd,
                                                voice.volume,
                                                voice.baseVolume,
                                                voice.position,
                                                ramp.step,
                                                ramp.target};
    }
    return seen;
  }

  test::TempFolder folder;
};

TEST_F(TransportTwin, ThousandsOfRandomPressesGiveThePlainTransport) {
  std::mt19937 random(11);
  const auto next = [&random](int range) {
    return static_cast<int>(random() % static_cast<unsigned>(range));
  };
  PlainTransport plain;
  // Each on both.
  const std::pair<const char*, std::function<void()>> kOperations[] = {
      {"play", [&] { TransportPlay(), plain.Play(); }},
      {"stop", [&] { TransportStop(), plain.Stop(); }},
      {"next", [&] { TransportNext(), plain.Next(true); }},
      {"previous", [&] { TransportPrevious(), plain.Next(false); }},
      {"seek",
       [&] {
         const auto seconds = static_cast<float>(next(4));
         const bool sounding = V().active;
         if (sounding) TransportStop();
         V().Seek(seconds);
         if (sounding) TransportPlay();
         plain.SeekTo(seconds);
       }},
      {"double press",
       [&] {
         if (plain.Count() == 0) return;
         playlist.currentSong = plain.current = next(plain.Count());
         TransportStop(), plain.Stop();
         TransportPlay(), plain.Play();
       }},
      {"blocks",
       [&] {
         for (int step = next(60) * 3; step > 0; --step) {
           V(step % 3).StepRamps();
           plain.slot[static_cast<std::size_t>(step % 3)].StepRamp();
         }
       }},
      {"end of a song",
       [&] {
         const int of = next(3);
         transport.djMode = plain.dj = next(8) == 0;
         const int told = OnMixerEvent(TheMixer, EVENT_SOURCE_END, &V(of), 0, 0, 0);
         EXPECT_EQ(plain.End(of), told);
       }},
      {"modes",
       [&] {
         transport.playMode = plain.mode = next(3), transport.repeatOn = plain.repeat = next(2);
       }},
      {"selection",
       [&] {
         for (int song = 0; song < plain.Count(); ++song) {
           const bool chosen = next(3) == 0;
           PlaylistReader().Entry(song)->selected = chosen;
           plain.selected[static_cast<std::size_t>(song)] = chosen;
         }
       }},
      {"shuffle",
       [&] {
         transport.shuffleOn = plain.shuffle = next(2);
         BuildShuffleTable();
         plain.place = 0;
         plain.table.assign(std::begin(transport.shuffleTable),
                            std::begin(transport.shuffleTable) + plain.Count());
       }},
  };
  for (int round = 0; round < 30000; ++round) {
    if (round == 100) Add(5, plain);
    const auto& [name, act] = kOperations[random() % std::size(kOperations)];
    act();
    if (round % 8 == 0) platform::Sleep(1);  // the next table is another one
    ASSERT_EQ(plain.Look(), Seen(plain).Look()) << round << ' ' << name;
  }
}

TEST_F(Transport, DragOfTheTimeHoldsOffTheRenderThread) {
  AddSongs(1);
  TransportPlay();
  transport.SeekActive = 1;
  TheMixer->RenderBlock();
  EXPECT_EQ(-1, shownTime);
  OnMixerEvent(TheMixer, EVENT_POSITION, &V(), 777, 1, 0);
  EXPECT_EQ(777, shownTime);
  EXPECT_EQ(1, OnMixerEvent(TheMixer, EVENT_POSITION, &V(1), 888, 1, 0));
  EXPECT_EQ(777, shownTime) << "a fading voice shows no time";
  transport.SeekActive = 0;
  TheMixer->RenderBlock();
  EXPECT_EQ(10, shownTime);
  EXPECT_EQ(1, OnMixerEvent(TheMixer, 5, &V(), 0, 0, 0));
}

TEST_F(Transport, PlayWhileTheListEndsStays) {
  AddSong(test::DataFile("mono8.mp3").c_str());
  TransportPlay();
  // The time goes to zero at the list's end; there the user stops and plays again.
  static int zeros;
  zeros = 0;
  hooks.showSongTime = [](int time) {
    if (time != 0 || zeros++ != 0) return;
    TransportStop();
    TransportPlay();
  };
  while (zeros == 0 && TheMixer->RenderBlock()) {
  }
  EXPECT_EQ(1, transport.playing);
  EXPECT_EQ(1, V().active);
  EXPECT_EQ(1, TheMixer->RenderBlock());
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

TEST_F(Transport, ShuffleIsAPermutationAndAnotherOneEachTime) {
  constexpr int kSongs = 4000;
  for (int i = 0; i < kSongs; ++i) AddSong("x.mp3");
  transport.shuffleOn = 1;
  BuildShuffleTable();
  const std::vector<int> first(transport.shuffleTable, transport.shuffleTable + kSongs);
  std::vector<int> sorted = first, all(kSongs);
  std::sort(sorted.begin(), sorted.end());
  std::iota(all.begin(), all.end(), 0);
  EXPECT_EQ(all, sorted);
  EXPECT_NE(all, first);
  platform::Sleep(10);
  transport.shufflePosition = kSongs - 1;
  EXPECT_EQ(-1, AdvanceSong()) << "the table is through";
  EXPECT_EQ(transport.shuffleTable[0], playlist.currentSong);
  EXPECT_NE(first, std::vector<int>(transport.shuffleTable, transport.shuffleTable + kSongs));
  RemoveAll();
  AddSongs(1);
  transport.repeatOn = 1;
  BuildShuffleTable();
  for (int step = 0; step < 3; ++step) EXPECT_EQ(0, AdvanceSong());
}

}  // namespace
}  // namespace kwo
