// The render thread and the device, on the headless backend's clock.

#include <gtest/gtest.h>

#include <algorithm>

#include "engine/mixer.h"
#include "engine/pcm_device.h"
#include "platform/clock.h"
#include "platform/headless/headless.h"
#include "playlist/hooks.h"
#include "tests/support.h"

namespace kwo {
namespace {

constexpr int kBlock = 4608;

class RenderThread : public testing::Test {
 protected:
  void SetUp() override {
    headless::ClearPlayedSound();
    headless::SetWaveDevicePresent(true);
    mixer.Init(kBlock, 44100, 2, nullptr);
    mixer.CreateVoice(0, kBlock);
  }
  void TearDown() override {
    mixer.StopThread();
    hooks = Hooks();
  }
  std::string Wav(const std::vector<std::int16_t>& values) {
    const std::string path = folder.File("song.wav");
    test::WriteBytes(path, test::WavBytes(2, 44100, 16, test::Raw16(values)));
    return path;
  }
  void Play(const std::vector<std::int16_t>& values) {
    mixer.Slot(0)->Open(Wav(values).c_str());
    mixer.Slot(0)->Start();
  }

  test::TempFolder folder;
  Mixer mixer;
};

TEST_F(RenderThread, DeviceIsHeldWhileThereIsSound) {
  mixer.StartThread();
  mixer.StartThread();
  platform::Sleep(5000);
  EXPECT_EQ(0, headless::WaveOpenCount());
  Play(test::Noise(kBlock * 400));
  platform::Sleep(1000);
  mixer.Slot(0)->SetVolumeRamp(0, 0.8f, 0.01f, 1);
  platform::Sleep(6000);
  // Full blocks until the ramp, which the device's queue hides from the listener, then 20 of it.
  const auto played = headless::PlayedSound();
  EXPECT_NEAR(1000 / 52.24 + 24 + 20, static_cast<double>(played.size()) / kBlock, 5);
  const auto [low, high] = std::minmax_element(played.end() - kBlock, played.end());
  EXPECT_LT(std::max(-*low, int{*high}), 32768 * 0.05);
  platform::Sleep(1000);
  EXPECT_EQ(played.size(), headless::PlayedSound().size());
  EXPECT_EQ(1, headless::WaveOpenCount());
  mixer.Slot(0)->SetVolume(1.0f);
  mixer.Slot(0)->Start();
  platform::Sleep(1000);
  EXPECT_EQ(2, headless::WaveOpenCount());
}

TEST_F(RenderThread, SongComesOutWholeInOrderAndWithoutAGap) {
  for (int run = 0; run < 2; ++run) {
    headless::ClearPlayedSound();
    const auto noise = test::Noise(kBlock * 60);
    Play(noise);
    mixer.StartThread();
    platform::Sleep(2000);
    EXPECT_NEAR(2000 / 52.24, static_cast<double>(headless::PlayedSound().size()) / kBlock, 2);
    platform::Sleep(4000);
    auto played = headless::PlayedSound();
    EXPECT_EQ(1, headless::WaveOpenCount());
    EXPECT_EQ(0, headless::WaveGap());
    // The close lets the queue play for 100 ms a buffer found in it, and cuts the rest.
    ASSERT_GE(played.size(), noise.size() - 6 * kBlock);
    EXPECT_TRUE(std::equal(played.begin(), played.end(), noise.begin()));
    mixer.Slot(0)->Stop();
    mixer.StopThread();
  }
}

TEST_F(RenderThread, PlayedBlocksReachTheVisualiserAboutASecondLater) {
  static int blocks;
  blocks = 0;
  hooks.pushSamples = [](const std::int16_t*, int count) { blocks += count == kBlock; };
  Play(test::Noise(kBlock * 100));
  mixer.StartThread();
  platform::Sleep(1000);
  EXPECT_NEAR(19, blocks, 1);
}

TEST_F(RenderThread, AbsentDeviceIsTriedAgainWithNothingLost) {
  headless::SetWaveDevicePresent(false);
  const auto noise = test::Noise(kBlock * 40);
  Play(noise);
  mixer.StartThread();
  platform::Sleep(3500);
  EXPECT_TRUE(headless::PlayedSound().empty());
  headless::SetWaveDevicePresent(true);
  platform::Sleep(2000);
  const auto played = headless::PlayedSound();
  ASSERT_GT(played.size(), 10u * kBlock);
  EXPECT_TRUE(std::equal(played.begin(), played.end(), noise.begin()));
}

TEST_F(RenderThread, StopsWhileItWaitsForADevice) {
  headless::SetWaveDevicePresent(false);
  Play(test::Noise(kBlock));
  mixer.StartThread();
  platform::Sleep(100);
  const unsigned start = platform::GetTickCount();
  mixer.StopThread();
  EXPECT_LE(platform::GetTickCount() - start, 1200u);
}

TEST_F(RenderThread, StopsWhileTheDeviceStandsStill) {
  Play(test::Noise(kBlock * 100));
  mixer.StartThread();
  platform::Sleep(500);
  headless::SetWaveDeviceStanding(true);
  platform::Sleep(10000);
  const auto played = headless::PlayedSound().size();
  EXPECT_LE(played, 11u * kBlock);
  const unsigned start = platform::GetTickCount();
  mixer.StopThread();
  // The close lets the queue play on for 100 ms a buffer.
  EXPECT_NEAR(2400, platform::GetTickCount() - start, 150);
  headless::SetWaveDeviceStanding(false);
}

TEST_F(RenderThread, IdleEngineStillStepsRamps) {
  mixer.Slot(0)->SetVolumeRamp(0, 0.8f, 0.01f, 1);
  mixer.StartThread();
  const unsigned start = platform::GetTickCount();
  mixer.Slot(0)->WaitRamp(0);
  EXPECT_NEAR(21 * 200, platform::GetTickCount() - start, 300);
}

TEST(PcmDevice, WriteWaitsForABufferAndCloseForTheQueue) {
  headless::ClearPlayedSound();
  headless::SetWaveDevicePresent(true);
  ASSERT_EQ(1, PcmDevice::Open(44100, 2, 16, kBlock * 2, 24));
  unsigned start = platform::GetTickCount();
  PcmDevice::Close();
  EXPECT_LE(platform::GetTickCount() - start, 2u) << "nothing queued, nothing to wait for";
  ASSERT_EQ(1, PcmDevice::Open(44100, 2, 16, kBlock * 2, 24));
  const std::vector<std::int16_t> block(kBlock, 1);
  const Shared<int> wanted = 1;
  EXPECT_EQ(0, PcmDevice::Write(block.data(), 0, wanted));
  start = platform::GetTickCount();
  for (int i = 0; i < 24; ++i)
    EXPECT_EQ(kBlock * 2, PcmDevice::Write(block.data(), kBlock * 2, wanted));
  EXPECT_EQ(start, platform::GetTickCount());
  PcmDevice::Write(block.data(), kBlock * 2, wanted);
  EXPECT_NEAR(62, platform::GetTickCount() - start, 12);
  PcmDevice::Write(block.data(), kBlock, wanted);  // a part of a buffer is never handed over
  start = platform::GetTickCount();
  PcmDevice::Close();
  EXPECT_LE(platform::GetTickCount() - start, 2402u);
  EXPECT_LE(headless::PlayedSound().size(), 25u * kBlock);
  headless::SetWaveDevicePresent(false);
  EXPECT_EQ(0, PcmDevice::Open(44100, 2, 16, kBlock * 2, 24));
}

}  // namespace
}  // namespace kwo
