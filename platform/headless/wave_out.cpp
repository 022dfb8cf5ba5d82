#include "platform/wave_out.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "platform/headless/headless.h"
#include "platform/headless/scheduler.h"
#include "platform/threads.h"

namespace kwo::platform {

struct QueuedBuffer {
  WaveHeader* header;  // null once the device has been closed
  std::int64_t arrival, bytes;
  std::vector<std::int16_t> samples;  // from then on
};

std::vector<std::int16_t> SamplesOf(const WaveHeader& header) {
  auto* samples = reinterpret_cast<const std::int16_t*>(header.data);
  return {samples, samples + header.bufferLength / 2};
}

struct WaveDevice {
  WaveFormat format;
  WaveDoneCallback callback;
  std::deque<QueuedBuffer> queue;
  std::int64_t playedUntil = -1;  // in microseconds, when the last buffer ended; -1 for none yet
  bool calling = false, closing = false, cut = false, ended = false;
  headless::Task* task = nullptr;
  Thread* thread = nullptr;
};

namespace {

std::mutex lock;
bool devicePresent = true;
bool deviceStanding = false;
int openCount = 0;
std::int64_t gap = 0;
std::vector<std::int16_t> played;

// The device that was closed last, and plays on.
WaveDevice* closed = nullptr;
constexpr int kLongestEnd = 6000;  // milliseconds

std::int64_t Duration(const WaveDevice& device, const QueuedBuffer& buffer) {
  return 1000000 * buffer.bytes / device.format.averageBytesPerSecond;
}

// When the first buffer of the queue will have been played: it starts behind the one before it, or
// when it arrived if that is later.
std::int64_t EndOfFront(const WaveDevice& device) {
  if (device.queue.empty() || deviceStanding) return headless::kForever;
  const QueuedBuffer& front = device.queue.front();
  return std::max(device.playedUntil, front.arrival) + Duration(device, front);
}

WaveHeader* TakeFront(WaveDevice& device) {
  const QueuedBuffer& front = device.queue.front();
  WaveHeader* header = front.header;
  if (device.playedUntil >= 0) gap += std::max<std::int64_t>(0, front.arrival - device.playedUntil);
  device.playedUntil = EndOfFront(device);
  // What lies in the buffer now: nobody may have written to it since.
  const std::vector<std::int16_t> samples = header ? SamplesOf(*header) : front.samples;
  played.insert(played.end(), samples.begin(), samples.end());
  device.queue.pop_front();
  return header;
}

void PlayQueue(void* argument) {
  auto& device = *static_cast<WaveDevice*>(argument);
  std::unique_lock guard(lock);
  device.task = &headless::CurrentTask();
  while (!device.cut && !(device.closing && device.queue.empty())) {
    const std::int64_t end = EndOfFront(device);
    guard.unlock();
    headless::RestUntil(end);
    guard.lock();
    if (device.cut || headless::Now() < EndOfFront(device)) continue;
    WaveHeader* header = TakeFront(device);
    if (!header) continue;
    device.calling = true;
    guard.unlock();
    device.callback(*header);
    header->flags.Publish(kWavePrepared | kWaveDone);
    guard.lock();
    device.calling = false;
  }
  device.ended = true;
}

bool EndClosed(bool cut, int patience) {
  if (!closed) return true;
  for (;;) {
    {
      std::lock_guard guard(lock);
      closed->cut = closed->cut || cut;
      if (closed->task) headless::Wake(*closed->task);
      if (closed->ended) break;
    }
    if (patience-- <= 0) return false;
    Sleep(1);
  }
  JoinThread(closed->thread);
  delete closed;
  closed = nullptr;
  return true;
}

}  // namespace

WaveDevice* OpenWave(const WaveFormat& format, int, int, WaveDoneCallback callback) {
  EndClosed(true, kLongestEnd);
  {
    std::lock_guard guard(lock);
    if (!devicePresent) return nullptr;
    ++openCount;
  }
  auto* device = new WaveDevice;
  device->format = format;
  device->callback = callback;
  device->thread = StartThread(PlayQueue, device, "kwo sound");
  return device;
}

void WriteWave(WaveDevice* device, WaveHeader& header) {
  std::lock_guard guard(lock);
  device->queue.push_back({&header, headless::Now(), header.bufferLength, {}});
  if (device->task) headless::Wake(*device->task);
}

int SleepUntilPlayed(WaveDevice*, int stepMilliseconds) {
  Sleep(stepMilliseconds);
  return stepMilliseconds;
}

void CloseWave(WaveDevice* device) {
  for (bool calling = true; calling;) {
    {
      std::lock_guard guard(lock);
      device->closing = true;
      calling = device->calling;
      for (QueuedBuffer& buffer : device->queue) {
        if (!buffer.header) continue;
        buffer.samples = SamplesOf(*buffer.header);
        buffer.header->flags.Publish(kWavePrepared | kWaveDone);
        buffer.header = nullptr;
      }
      if (device->task) headless::Wake(*device->task);
    }
    if (calling) Sleep(1);
  }
  closed = device;
}

bool WaveFinished() {
  return EndClosed(false, 0);
}

}  // namespace kwo::platform

namespace kwo::headless {

void SetWaveDevicePresent(bool present) {
  std::lock_guard guard(platform::lock);
  platform::devicePresent = present;
}

void SetWaveDeviceStanding(bool standing) {
  std::lock_guard guard(platform::lock);
  platform::deviceStanding = standing;
}

std::vector<std::int16_t> PlayedSound() {
  std::lock_guard guard(platform::lock);
  return platform::played;
}

std::vector<std::int16_t> TakePlayedSound() {
  std::lock_guard guard(platform::lock);
  return std::exchange(platform::played, {});
}

int WaveOpenCount() {
  std::lock_guard guard(platform::lock);
  return platform::openCount;
}

std::int64_t WaveGap() {
  std::lock_guard guard(platform::lock);
  return platform::gap;
}

void ClearPlayedSound() {
  std::lock_guard guard(platform::lock);
  platform::played.clear();
  platform::gap = 0;
  platform::openCount = 0;
}

}  // namespace kwo::headless
