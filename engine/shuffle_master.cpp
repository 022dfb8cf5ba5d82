#include "engine/shuffle_master.h"

#include <cstdlib>

#include "base/hooks.h"
#include "engine/transport.h"
#include "platform/clock.h"
#include "platform/threads.h"

namespace kwo {
namespace {

constexpr int kTickMilliseconds = 1000;
constexpr int kTicksPerSong = 40;
constexpr int kOverlapMilliseconds = 1500;
constexpr int kPollMilliseconds = 50;

// A movement of volume or pan over a transition.
struct Slide {
  float start, step, end;
  int stopAtEnd;
};
constexpr Slide kNewVolume = {0.01f, 1.1f, 1.0f, 0};
constexpr Slide kNewPan = {-1.0f, 0.005f, 0.0f, 0};
constexpr Slide kOldPan = {0.0f, 0.01f, 1.0f, 0};
// These begin wherever the volume stands.
constexpr Slide kOldVolume = {0, 0.97f, 0.05f, 1};
constexpr Slide kLastVolume = {0, 0.95f, 0.01f, 1};

platform::Thread* djThread = nullptr;
Shared<int> djWanted;

Voice& DjVoice(int slot) {
  return *TheMixer->Slot(slot);
}

void DjVolumeRamp(int slot, const Slide& slide) {
  DjVoice(slot).SetVolumeRamp(0, slide.step, slide.end, slide.stopAtEnd);
}

void DjPanRamp(int slot, const Slide& slide) {
  // One voice for all, also where the main thread rotates the slots meanwhile.
  Voice& voice = DjVoice(slot);
  voice.SetPan(slide.start);
  // Its next song comes from the middle again.
  voice.basePan = 0.0f;
  voice.SetPanRamp(2, slide.step, slide.end, slide.stopAtEnd);
}

int DjLoad(int slot, int index) {
  if (index < 0 || index >= playlist.count) return 0;
  DjVoice(slot).Stop();
  return OpenSong(DjVoice(slot), index);
}

// Sleeps in pieces; false if the thread is to end.
bool DjSleep(int milliseconds) {
  for (int slept = 0; slept < milliseconds && djWanted; slept += kPollMilliseconds)
    platform::Sleep(kPollMilliseconds);
  return djWanted != 0;
}

// `run` is what was playing as the transition began; one that the user has begun since is not ours
// to end.
void EndOfList(unsigned run) {
  if (transport.playing.Raising() != run) return;
  DjVoice(0).Stop();
  DjVolumeRamp(1, kLastVolume);
  DjVoice(2).Stop();
  transport.playing.LowerIf(run);
  RefreshDisplays();
}

void CrossFade() {
  Voice& voice = DjVoice(0);
  voice.ResetRamps();
  voice.Seek(static_cast<float>(std::rand() % 100 + 30));
  ++transport.jumps;
  voice.SetVolume(kNewVolume.start);
  // What the next stop fades from.
  voice.baseVolume = 1.0f;
  DjVolumeRamp(0, kNewVolume);
  DjPanRamp(0, kNewPan);
  DjVoice(0).Start();
  SongChanged();
  // The new song is heard on the left beside the old one.
  if (!DjSleep(kOverlapMilliseconds)) return;
  DjVolumeRamp(1, kOldVolume);
  DjPanRamp(1, kOldPan);
}

void Transition() {
  const unsigned run = transport.playing.Raising();
  DjVoice(2).Stop();
  DjVoice(2).ResetRamps();
  TheMixer->RotateSlots(0, 2);
  const int result = AdvanceSong();
  const int index = playlist.currentSong;
  if (result < 0 && !transport.repeatOn) {
    EndOfList(run);
  } else if (index >= 0 && DjLoad(0, index)) {
    CrossFade();
  }
}

void RunDj(void*) {
  int ticks = 0;
  while (djWanted) {
    if (ticks > kTicksPerSong && transport.playing) {
      Transition();
      ticks = 0;
    }
    if (!DjSleep(kTickMilliseconds)) return;
    if (transport.playing) ++ticks;
  }
}

}  // namespace

bool DjSetMode(int mode) {
  DjEnd();
  if (mode != 1) return true;
  djWanted = 1;
  djThread = platform::StartThread(RunDj, nullptr, "kwo dj");
  return djThread != nullptr;
}

void DjEnd() {
  djWanted = 0;
  platform::JoinThread(djThread);
  djThread = nullptr;
}

}  // namespace kwo
