// Threads side by side on a running clock, for the sanitizers: songs that end every few blocks
// while another thread opens, seeks, fades, rotates and turns every knob.

#include <cstdio>
#include <cstdlib>
#include <random>

#include "engine/mixer.h"
#include "platform/clock.h"
#include "platform/headless/headless.h"
#include "tests/support.h"

namespace {

std::string songs[3];

int Next(kwo::Mixer* mixer, int event, kwo::Voice* voice, int a, int, int) {
  if (event != kwo::EVENT_SOURCE_END || voice != mixer->Slot(0)) return 0;
  voice->Open(songs[a % 3].c_str());
  return 1;
}

void Act(kwo::Mixer& mixer, std::mt19937& random) {
  kwo::Voice& front = *mixer.Slot(0);
  const float unit = static_cast<float>(random() % 1000) / 1000;
  switch (random() % 10) {
    case 0:
      mixer.RotateSlots(0, 2);
      break;
    case 1:
      front.Open(songs[random() % 3].c_str());
      front.Start();
      break;
    case 2:
      front.Seek(unit * 4);
      break;
    case 3:
      front.ResetRamps();
      front.SetVolume(1.0f);
      break;
    case 4:
      front.SetVolumeRamp(0, 0.9f, 0.01f, static_cast<int>(random() % 2));
      break;
    case 5:
      front.SetPanRamp(2, 0.1f, 1.0f, 0);
      break;
    case 6:
      for (auto& value : mixer.eqValues) value = 0.5f + unit;
      mixer.eqSwitch = static_cast<int>(random() % 2);
      break;
    case 7:
      mixer.enhancer = static_cast<int>(random() % 3);
      mixer.crystalizer = mixer.wideStereo = mixer.vocalReducer = static_cast<int>(random() % 2);
      break;
    case 8:
      mixer.speed = 0.75f + unit / 2;
      mixer.limiter = static_cast<int>(random() % 2);
      break;
    default:
      front.Start();
  }
  front.ApplyMixerParameters();
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 2000;
  kwo::headless::UseRunningClock(50.0);
  songs[0] = kwo::test::DataFile("joint128.mp3");
  songs[1] = kwo::test::DataFile("layer2.mp2");
  songs[2] = kwo::test::DataFile("vbr-lsf.mp3");
  kwo::Mixer mixer;
  mixer.Init(4608, 44100, 2, Next);
  for (int slot = 0; slot < 3; ++slot) mixer.CreateVoice(slot, 4608);
  mixer.StartThread();
  std::mt19937 random(1);
  for (int round = 0; round < rounds; ++round) {
    Act(mixer, random);
    kwo::platform::Sleep(static_cast<int>(random() % 100));
  }
  mixer.StopThread();
  const std::size_t played = kwo::headless::PlayedSound().size();
  std::printf("%d rounds, %zu values played\n", rounds, played);
  return played > 0 ? 0 : 1;
}
