#include "engine/mixer.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <new>

#include "engine/pcm_device.h"
#include "platform/clock.h"
#include "platform/wave_out.h"

namespace kwo {

Mixer* TheMixer = nullptr;

namespace {

constexpr float kBeyond16Bits = 65536.0f;
constexpr int kDeviceBuffers = 24;
constexpr int kOpenPauseMilliseconds = 1000;
constexpr int kIdleMilliseconds = 200;
constexpr int kStopPollMilliseconds = 100;
constexpr int kLongestStop = 6000;  // milliseconds

}  // namespace

void ConvertToPcm(const float* values, std::int16_t* pcm, int count) {
  for (int i = 0; i < count; ++i) {
    // A damaged song can give more than 2^23, where this form of rounding would end.
    const float magnitude = std::min(kBeyond16Bits, std::fabs(values[i])) + 8388608.0f;
    // At 2^23 one unit is the last place: the sum's low bits are the rounded magnitude.
    const int bits = std::bit_cast<std::int32_t>(magnitude) & 0x7fffff;
    const int v = values[i] < 0 ? -bits : bits;
    pcm[i] = static_cast<std::int16_t>(std::clamp(v, -32768, 32767));
  }
}

Mixer::~Mixer() {
  StopThread();
  Reset();
}

void Mixer::Reset() {
  pcmBlock.reset();
  mixBuffer.reset();
  for (int slot = 0; slot < kSlots; ++slot) DeleteVoice(slot);
  callback = nullptr;
  sampleRate = kOutputRate;
  channels = blockSize = anyVoice = 0;
  volume = speed = 1.0f;
  pan = 0.0f;
  for (auto* flag : {&crystalizer, &enhancer, &vocalReducer, &wideStereo, &limiter, &eqSwitch})
    *flag = 0;
  for (auto& value : eqValues) value = 1.0f;
}

int Mixer::Init(int blockValues, int rate, int channelCount, MixerCallback eventCallback) {
  Reset();
  blockSize = blockValues;
  sampleRate = rate;
  channels = channelCount;
  callback = eventCallback;
  pcmBlock.reset(new (std::nothrow) std::int16_t[static_cast<std::size_t>(blockValues)]());
  mixBuffer.reset(new (std::nothrow) float[static_cast<std::size_t>(blockValues)]());
  return 1;
}

bool Mixer::Prepare(MixerCallback eventCallback) {
  Init(kBlockValues, kOutputRate, kOutputChannels, eventCallback);
  for (int slot = 0; slot < kVoices; ++slot)
    if (!CreateVoice(slot, kBlockValues)) return false;
  return true;
}

int Mixer::CreateVoice(int slot, int capacity) {
  DeleteVoice(slot);
  std::unique_ptr<Voice> voice(new (std::nothrow) Voice);
  if (!voice || !voice->Create(this, capacity)) return 0;
  slots[slot].store(voice.release(), std::memory_order_release);
  return 1;
}

void Mixer::DeleteVoice(int slot) {
  delete slots[slot].exchange(nullptr);
}

// The render thread may be walking the slots: a voice may be rendered twice or left out of one
// block, which is less than a listener hears of a change of songs.
void Mixer::RotateSlots(int first, int last) {
  if (first < 0 || first >= last || last >= kSlots) return;
  while (rotating.exchange(1) != 0) platform::Sleep(1);
  Voice* moving = Slot(last);
  for (int slot = last; slot > first; --slot)
    slots[slot].store(Slot(slot - 1), std::memory_order_release);
  slots[first].store(moving, std::memory_order_release);
  rotating.store(0);
}

bool Mixer::StartThread() {
  if (running) return true;
  running.Publish(1);
  // Up before the thread can be, so that a stop right behind this waits for its end.
  threadAlive.Publish(1);
  thread = platform::StartThread(RunThread, this, "kwo render");
  if (!thread) running = threadAlive = 0;
  return thread != nullptr;
}

bool Mixer::StopThread() {
  if (!running) return !threadAlive;
  running.Publish(0);
  int waited = 0;
  for (; threadAlive.Acquire(); waited += kStopPollMilliseconds) {
    if (waited >= kLongestStop) {
      platform::LeaveThread(thread);
      return false;
    }
    platform::Sleep(kStopPollMilliseconds);
  }
  platform::JoinThread(thread);
  thread = nullptr;
  for (; waited < kLongestStop && !platform::WaveFinished(); waited += kStopPollMilliseconds)
    platform::Sleep(kStopPollMilliseconds);
  return true;
}

int Mixer::RenderBlock() {
  anyVoice = 0;
  if (!mixBuffer || !pcmBlock) return 0;
  std::fill_n(mixBuffer.get(), blockSize, 0.0f);
  for (auto& slot : slots) {
    Voice* voice = slot.load(std::memory_order_acquire);
    if (!voice) continue;
    voice->StepRamps();
    if (voice->Render(mixBuffer.get(), blockSize)) anyVoice = 1;
  }
  if (!anyVoice) return 0;
  ConvertToPcm(mixBuffer.get(), pcmBlock.get(), blockSize);
  return 1;
}

void Mixer::RunThread(void* mixer) {
  platform::SetThreadPriority(platform::ThreadPriority::kTimeCritical);
  auto* self = static_cast<Mixer*>(mixer);
  self->RenderLoop();
  self->threadAlive.Publish(0);
}

// Tries until it works or the thread is to end.
bool Mixer::OpenDevice() {
  while (running.Acquire()) {
    if (PcmDevice::Open(sampleRate, static_cast<unsigned short>(channels), 16, blockSize * 2,
                        kDeviceBuffers))
      return true;
    platform::Sleep(kOpenPauseMilliseconds);
  }
  return false;
}

void Mixer::RenderLoop() {
  bool opened = false;
  while (running.Acquire()) {
    if (RenderBlock()) {
      if (!opened && !(opened = OpenDevice())) break;
      PcmDevice::Write(pcmBlock.get(), blockSize * 2, running);
    } else if (opened) {
      opened = false;
      PcmDevice::Close();
    } else {
      platform::Sleep(kIdleMilliseconds);
    }
  }
  if (opened) PcmDevice::Close();
}

}  // namespace kwo
