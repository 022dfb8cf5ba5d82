// The render thread and the device, on the headless backend's clock.

#include <algorithm>

#include "base/hooks.h"
#include "engine/pcm_device.h"
#include "platform/clock.h"
#include "platform/headless/headless.h"
#include "platform/wave_out.h"
#include "tests/engine/engine_fixture.h"

namespace kwo {
namespace {

constexpr double kBlockMilliseconds = 52.24;

template <typename Action>
int MillisecondsOf(Action action) {
  const unsigned start = platform::GetTickCount();
  action();
  return static_cast<int>(platform::GetTickCount() - start);
}

class RenderThread : public Engine {
 protected:
  RenderThread() {
    headless::ClearPlayedSound();
    headless::SetWaveDevicePresent(true);
  }
  ~RenderThread() override { hooks = Hooks(); }
  // So far, as blocks.
  static double Played() { return static_cast<double>(headless::PlayedSound().size()) / kBlock; }
};

TEST_F(RenderThread, DeviceIsHeldWhileThereIsSound) {
  mixer.StartThread();
  mixer.StartThread();
  platform::Sleep(5000);
  EXPECT_EQ(0, headless::WaveOpenCount());
  Play(Wav(test::Noise(kBlock * 400)));
  platform::Sleep(1000);
  V().SetVolumeRamp(0, 0.8f, 0.01f, 1);
  platform::Sleep(6000);
  // Full blocks until the ramp, which the device's queue hides from the listener, then 20 of it.
  const auto played = headless::PlayedSound();
  EXPECT_NEAR(1000 / kBlockMilliseconds + 24 + 20, Played(), 5);
  const auto [low, high] = std::minmax_element(played.end() - kBlock, played.end());
  EXPECT_LT(std::max(-*low, int{*high}), 32768 * 0.05);
  platform::Sleep(1000);
  EXPECT_EQ(played.size(), headless::PlayedSound().size());
  EXPECT_EQ(1, headless::WaveOpenCount());
  V().SetVolume(1.0f);
  V().Start();
  platform::Sleep(1000);
  EXPECT_EQ(2, headless::WaveOpenCount());
}

TEST_F(RenderThread, SongComesOutWholeInOrderWithoutAGapAndIsShownAsItSounds) {
  static int shown;
  hooks.pushSamples = [](const std::int16_t*, int count) { shown += count == kBlock; };
  for (int run = 0; run < 2; ++run) {
    headless::ClearPlayedSound();
    shown = 0;
    const auto noise = test::Noise(kBlock * 60);
    Play(Wav(noise));
    mixer.StartThread();
    platform::Sleep(1000);
    EXPECT_NEAR(19, shown, 1);
    platform::Sleep(1200);
    EXPECT_NEAR(2200 / kBlockMilliseconds, Played(), 2);
    // The song is in the queue by now, and the device closed.
    mixer.StopThread();
    EXPECT_EQ(noise, headless::PlayedSound());
    EXPECT_EQ(1, headless::WaveOpenCount());
    EXPECT_EQ(0, headless::WaveGap());
  }
}

TEST_F(RenderThread, AbsentDeviceIsTriedAgainAndAStandingOneWaitedForUnlessTheThreadIsToStop) {
  const auto stop = [&] { mixer.StopThread(); };
  headless::SetWaveDevicePresent(false);
  const auto noise = test::Noise(kBlock * 100);
  Play(Wav(noise));
  mixer.StartThread();
  platform::Sleep(3500);
  EXPECT_EQ(0, Played());
  headless::SetWaveDevicePresent(true);
  platform::Sleep(2000);
  headless::SetWaveDeviceStanding(true);
  platform::Sleep(10000);
  const auto played = headless::PlayedSound();
  EXPECT_NEAR(1500 / kBlockMilliseconds, Played(), 2);
  EXPECT_TRUE(std::equal(played.begin(), played.end(), noise.begin())) << "nothing was lost";
  EXPECT_NEAR(6000, MillisecondsOf(stop), 150) << "nobody waits longer for the end";
  headless::SetWaveDeviceStanding(false);
  headless::SetWaveDevicePresent(false);
  mixer.StartThread();
  platform::Sleep(100);
  EXPECT_LE(MillisecondsOf(stop), 1200);
}

TEST_F(RenderThread, IdleEngineStillStepsRamps) {
  V().SetVolumeRamp(0, 0.8f, 0.01f, 1);
  mixer.StartThread();
  EXPECT_NEAR(21 * 200, MillisecondsOf([&] { V().WaitRamp(0); }), 300);
}

TEST_F(RenderThread, WriteWaitsForABufferAndCloseForNothing) {
  const std::vector<std::int16_t> block(kBlock, 1);
  const auto open = [] { return PcmDevice::Open(44100, 2, 16, kBlock * 2, 24); };
  const auto write = [&](int bytes, int times) {
    return MillisecondsOf([&] {
      for (int i = 0; i < times; ++i) EXPECT_EQ(bytes, PcmDevice::Write(block.data(), bytes, 1));
    });
  };
  ASSERT_EQ(1, open());
  EXPECT_LE(MillisecondsOf(PcmDevice::Close), 2) << "nothing queued, nothing to wait for";
  ASSERT_EQ(1, open());
  write(0, 1);
  EXPECT_EQ(0, write(kBlock * 2, 24));
  EXPECT_NEAR(62, write(kBlock * 2, 1), 12);
  write(kBlock, 1);  // a part of a buffer is never handed over
  EXPECT_LE(MillisecondsOf(PcmDevice::Close), 2) << "the queue plays on by itself";
  const auto finish = [] {
    while (!platform::WaveFinished()) platform::Sleep(1);
  };
  EXPECT_NEAR(1200, MillisecondsOf(finish), 60) << "24 buffers";
  EXPECT_EQ(25, Played());
  ASSERT_EQ(1, open());
  write(kBlock * 2, 24);
  PcmDevice::Close();
  platform::Sleep(500);
  ASSERT_EQ(1, open());
  platform::Sleep(2000);
  EXPECT_NEAR(25 + 500 / kBlockMilliseconds, Played(), 1) << "a new open ends it";
  PcmDevice::Close();
  headless::SetWaveDevicePresent(false);
  EXPECT_EQ(0, open());
}

}  // namespace
}  // namespace kwo
