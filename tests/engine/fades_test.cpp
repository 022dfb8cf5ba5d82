// What is heard of the transport's fades, block by block, over songs of one steady value a side.

#include <cstdlib>
#include <functional>

#include "platform/clock.h"
#include "tests/engine/transport_fixture.h"

namespace kwo {
namespace {

class Fades : public Transport {
 protected:
  // 200 seconds of one value a side.
  std::string SteadySong(float left, float right) {
    constexpr int kRate = 8000, kSeconds = 200;
    std::string samples;
    for (int i = 0; i < kRate * kSeconds; ++i) {
      samples += static_cast<char>(static_cast<int>(left) / 256 + 128);
      samples += static_cast<char>(static_cast<int>(right) / 256 + 128);
    }
    const std::string path =
        folder.File(std::to_string(left) + "," + std::to_string(right) + ".wav");
    if (!std::filesystem::exists(path))
      test::WriteBytes(path, test::WavBytes(2, kRate, 8, samples));
    return path;
  }
  struct Heard {
    float left, right;
  };
  Heard NextBlock() {
    if (!TheMixer->RenderBlock()) return {0, 0};
    return {TheMixer->MixBuffer()[2000], TheMixer->MixBuffer()[2001]};
  }
  // Until no ramp moves any more.
  void Settle() {
    for (int block = 0; block < 300; ++block) TheMixer->RenderBlock();
  }
  static void SeekTo(float seconds) {
    TransportStop();
    TheMixer->Slot(0)->Seek(seconds);
    TransportPlay();
  }
  // Lets the DJ make one transition, in its own time, and switches it off again.
  void DjTransition() {
    std::srand(1);
    djMode = 1;
    TheMixer->StartThread();
    DjSetMode(1);
    platform::Sleep(44000);
    DjSetMode(0);
    djMode = 0;
    TheMixer->StopThread();
  }

  test::TempFolder folder;
};

constexpr float kLevel = 10240;  // a multiple of 256, as 8 bits have it

TEST_F(Fades, EveryFadeOutTakes44BlocksFromFullWhateverWasBefore) {
  const std::function<void()> befores[] = {
      [] {},
      [] { SeekTo(3); },
      [this] {
        TogglePause();
        Settle();
        TogglePause();
      },
      [this] { DjTransition(); },
  };
  // Stop is what the program's end does, too.
  const std::function<void()> endings[] = {
      [] { TransportStop(); },
      [] { TransportNext(); },
      [] { SeekTo(50); },
  };
  AddSong(SteadySong(kLevel, 0).c_str());
  AddSong(SteadySong(kLevel, 0).c_str());
  repeatOn = 1;
  for (std::size_t before = 0; before < std::size(befores); ++before) {
    for (std::size_t ending = 0; ending < std::size(endings); ++ending) {
      TransportPlay();
      NextBlock();
      befores[before]();
      Settle();
      EXPECT_EQ(kLevel, NextBlock().left);
      Voice* old = &V();
      endings[ending]();
      float volume = 1;
      for (int block = 1; block < 44; ++block) {
        volume *= 0.9f;
        ASSERT_GE(NextBlock().left, 0.999f * volume * kLevel);
        ASSERT_NEAR(volume, old->volume, 1e-6) << before << " " << ending << " " << block;
        ASSERT_EQ(1, old->active);
      }
      NextBlock();
      EXPECT_EQ(0, old->active);
      TransportStop();
    }
  }
}

TEST_F(Fades, StopWithinAFadeInStepsUpFirst) {
  AddSong(SteadySong(kLevel, 0).c_str());
  TransportPlay();
  SeekTo(9);
  Settle();
  SeekTo(19);
  for (int block = 0; block < 5; ++block) NextBlock();
  EXPECT_LT(V().volume, 0.03f);
  TransportStop();
  NextBlock();
  EXPECT_FLOAT_EQ(0.9f, V(1).volume);
}

TEST_F(Fades, SecondNextCutsTheSongBeforeLast) {
  for (int i = 0; i < 3; ++i) AddSong(SteadySong(kLevel, 0).c_str());
  repeatOn = 1;
  TransportPlay();
  Voice* first = &V();
  for (int block = 0; block < 10; ++block) NextBlock();
  TransportNext();
  Voice* second = &V();
  for (int block = 0; block < 10; ++block) NextBlock();
  TransportNext();
  // Both fade from full; the third voice has been silent.
  EXPECT_EQ(second, &V(1));
  EXPECT_EQ(first, &V(2));
  NextBlock();
  EXPECT_FLOAT_EQ(0.9f, second->volume);
  EXPECT_FLOAT_EQ(0.9f, first->volume);
  TransportNext();
  EXPECT_EQ(first, &V(0)) << "cut at once, to give its voice to the next song";
  EXPECT_EQ(1.0f, first->volume);
}

TEST_F(Fades, BothSidesSoundAfterTheDj) {
  AddSong(SteadySong(kLevel, kLevel).c_str());
  repeatOn = 1;
  TransportPlay();
  DjTransition();
  Settle();
  for (int voice = 0; voice < 3; ++voice) {
    TransportStop();
    Settle();
    TransportPlay();
    const Heard heard = NextBlock();
    EXPECT_EQ(kLevel, heard.left);
    EXPECT_EQ(kLevel, heard.right);
  }
}

TEST_F(Fades, PlayWhileTheListEndsStays) {
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
  EXPECT_EQ(1, playing);
  EXPECT_EQ(1, V().active);
  EXPECT_EQ(1, TheMixer->RenderBlock());
}

}  // namespace
}  // namespace kwo
