#include "platform/wave_out.h"

#include <alsa/asoundlib.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>

#include "platform/threads.h"

namespace kwo::platform {

// One device thread feeds ALSA's "default" PCM.  `queue` holds every buffer from WriteWave until
// it has been heard; the first `fed` bytes of it have been given to the PCM already.
struct WaveDevice {
  WaveFormat format;
  WaveDoneCallback callback;
  std::mutex lock;
  std::condition_variable arrived;
  std::deque<WaveHeader*> queue;
  std::uint64_t fed = 0;
  bool closing = false;
  bool resetWanted = false;
  snd_pcm_t* pcm = nullptr;  // device thread only, once it runs; null while the device is gone
  Thread* thread = nullptr;
};

namespace {

constexpr snd_pcm_uframes_t kPeriods = 8;
// Half a buffer of the mixer: often enough that no period is missed, and no busier than that.
constexpr int kPollMilliseconds = 26;
constexpr auto kReopenPause = std::chrono::seconds(1);

void IgnoreError(const char*, int, const char*, int, const char*, ...) {}

// The sound starts once two periods are there, and the device holds eight: enough to ride out a
// busy machine, and short enough for a stop to be heard soon.
bool Configure(snd_pcm_t* pcm, const WaveFormat& format) {
  snd_pcm_hw_params_t* hardware;
  snd_pcm_hw_params_alloca(&hardware);
  unsigned rate = format.samplesPerSecond;
  snd_pcm_uframes_t period = format.samplesPerSecond / 20;
  snd_pcm_uframes_t size = period * kPeriods;
  if (snd_pcm_hw_params_any(pcm, hardware) < 0 ||
      snd_pcm_hw_params_set_rate_resample(pcm, hardware, 1) < 0 ||
      snd_pcm_hw_params_set_access(pcm, hardware, SND_PCM_ACCESS_RW_INTERLEAVED) < 0 ||
      snd_pcm_hw_params_set_format(pcm, hardware, SND_PCM_FORMAT_S16) < 0 ||
      snd_pcm_hw_params_set_channels(pcm, hardware, format.channels) < 0 ||
      snd_pcm_hw_params_set_rate(pcm, hardware, rate, 0) < 0 ||
      snd_pcm_hw_params_set_buffer_size_near(pcm, hardware, &size) < 0 ||
      snd_pcm_hw_params_set_period_size_near(pcm, hardware, &period, nullptr) < 0 ||
      snd_pcm_hw_params(pcm, hardware) < 0)
    return false;
  snd_pcm_sw_params_t* software;
  snd_pcm_sw_params_alloca(&software);
  return snd_pcm_sw_params_current(pcm, software) >= 0 &&
         snd_pcm_sw_params_set_start_threshold(pcm, software, std::min(2 * period, size)) >= 0 &&
         snd_pcm_sw_params_set_avail_min(pcm, software, period) >= 0 &&
         snd_pcm_sw_params(pcm, software) >= 0;
}

snd_pcm_t* OpenPcm(const WaveFormat& format) {
  snd_pcm_t* pcm = nullptr;
  if (snd_pcm_open(&pcm, "default", SND_PCM_STREAM_PLAYBACK, SND_PCM_NONBLOCK) < 0) return nullptr;
  if (Configure(pcm, format)) return pcm;
  snd_pcm_close(pcm);
  return nullptr;
}

// Gives the PCM as much of the queue as it takes.  False if the device has failed.
bool FeedPcm(WaveDevice& device, std::unique_lock<std::mutex>& guard) {
  std::uint64_t start = 0;
  for (std::size_t i = 0; i < device.queue.size(); ++i) {
    const WaveHeader& header = *device.queue[i];
    while (device.fed < start + header.bufferLength) {
      const std::uint64_t offset = device.fed - start;
      const auto frames =
          static_cast<snd_pcm_uframes_t>((header.bufferLength - offset) / device.format.blockAlign);
      guard.unlock();
      snd_pcm_sframes_t taken = snd_pcm_writei(device.pcm, header.data + offset, frames);
      if (taken == -EPIPE || taken == -ESTRPIPE || taken == -EINTR)
        taken = snd_pcm_recover(device.pcm, static_cast<int>(taken), 1);
      guard.lock();
      if (device.resetWanted || device.closing || taken == -EAGAIN) return true;
      if (taken < 0) return false;
      device.fed += static_cast<std::uint64_t>(taken) * device.format.blockAlign;
    }
    start += header.bufferLength;
  }
  // A sound shorter than the start threshold would never begin by itself.
  if (device.fed > 0 && snd_pcm_state(device.pcm) == SND_PCM_STATE_PREPARED)
    snd_pcm_start(device.pcm);
  return true;
}

// Marks the buffers whose last frame has left the device.  False if the device has failed.
bool FinishHeard(WaveDevice& device, std::unique_lock<std::mutex>& guard) {
  if (device.fed == 0) return true;
  snd_pcm_sframes_t waiting = 0;
  const snd_pcm_state_t state = snd_pcm_state(device.pcm);
  if (state == SND_PCM_STATE_DISCONNECTED) return false;
  // After an underrun all that was fed has been heard.
  if (state != SND_PCM_STATE_XRUN) {
    const int result = snd_pcm_delay(device.pcm, &waiting);
    if (result < 0 && result != -EPIPE) return false;
    if (result < 0 || waiting < 0) waiting = 0;
  }
  const std::uint64_t unheard = static_cast<std::uint64_t>(waiting) * device.format.blockAlign;
  while (!device.queue.empty() && device.fed >= device.queue.front()->bufferLength &&
         device.fed - device.queue.front()->bufferLength >= unheard) {
    WaveHeader& header = *device.queue.front();
    device.queue.pop_front();
    device.fed -= header.bufferLength;
    guard.unlock();
    device.callback(header);
    header.flags.Publish(kWavePrepared | kWaveDone);
    guard.lock();
    if (device.resetWanted) return true;
  }
  return true;
}

void ClosePcm(WaveDevice& device) {
  snd_pcm_drop(device.pcm);
  snd_pcm_close(device.pcm);
  device.pcm = nullptr;
}

void Reset(WaveDevice& device) {
  if (device.pcm) {
    snd_pcm_drop(device.pcm);
    snd_pcm_prepare(device.pcm);
  }
  for (WaveHeader* header : device.queue) header->flags.Publish(kWavePrepared | kWaveDone);
  device.queue.clear();
  device.fed = 0;
  device.resetWanted = false;
  device.arrived.notify_all();
}

void PlayQueue(void* argument) {
  auto& device = *static_cast<WaveDevice*>(argument);
  SetThreadPriority(ThreadPriority::kTimeCritical);
  std::unique_lock guard(device.lock);
  while (!device.closing) {
    if (device.resetWanted) Reset(device);
    if (!device.pcm) {
      device.arrived.wait_for(guard, kReopenPause,
                              [&] { return device.closing || device.resetWanted; });
      if (device.closing || device.resetWanted) continue;
      guard.unlock();
      snd_pcm_t* reopened = OpenPcm(device.format);
      guard.lock();
      // What had been fed but not heard is fed again.
      device.pcm = reopened;
      device.fed = 0;
      continue;
    }
    if (device.queue.empty()) {
      device.arrived.wait(
          guard, [&] { return device.closing || device.resetWanted || !device.queue.empty(); });
      continue;
    }
    if (!FeedPcm(device, guard) || !FinishHeard(device, guard)) {
      guard.unlock();
      ClosePcm(device);
      guard.lock();
      continue;
    }
    device.arrived.wait_for(guard, std::chrono::milliseconds(kPollMilliseconds),
                            [&] { return device.closing || device.resetWanted; });
  }
  if (device.pcm) ClosePcm(device);
}

}  // namespace

WaveDevice* OpenWave(const WaveFormat& format, WaveDoneCallback callback) {
  snd_lib_error_set_handler(IgnoreError);
  snd_pcm_t* pcm = OpenPcm(format);
  if (!pcm) return nullptr;
  auto* device = new WaveDevice;
  device->format = format;
  device->callback = callback;
  device->pcm = pcm;
  device->thread = StartThread(PlayQueue, device);
  if (device->thread) return device;
  ClosePcm(*device);
  delete device;
  return nullptr;
}

void PrepareWave(WaveDevice*, WaveHeader& header) {
  header.flags = header.flags | kWavePrepared;
}

void WriteWave(WaveDevice* device, WaveHeader& header) {
  std::lock_guard guard(device->lock);
  device->queue.push_back(&header);
  device->arrived.notify_all();
}

bool UnprepareWave(WaveDevice*, WaveHeader& header) {
  const unsigned flags = header.flags.Acquire();
  if (!(flags & kWaveDone)) return false;
  header.flags = flags & ~kWavePrepared;
  return true;
}

void ResetWave(WaveDevice* device) {
  std::unique_lock guard(device->lock);
  device->resetWanted = true;
  device->arrived.notify_all();
  device->arrived.wait(guard, [&] { return !device->resetWanted; });
}

void CloseWave(WaveDevice* device) {
  {
    std::lock_guard guard(device->lock);
    device->closing = true;
    device->arrived.notify_all();
  }
  JoinThread(device->thread);
  delete device;
}

}  // namespace kwo::platform
