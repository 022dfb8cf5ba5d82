#include "platform/wave_out.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <mutex>
#include <utility>

#include "platform/headless/headless.h"
#include "platform/headless/scheduler.h"
#include "platform/threads.h"

namespace kwo::platform {

struct QueuedBuffer {
  WaveHeader* header;
  std::int64_t arrival;
};

struct WaveDevice {
  WaveFormat format;
  WaveDoneCallback callback;
  std::deque<QueuedBuffer> queue;
  std::int64_t playedUntil = -1;  // in microseconds, when the last buffer ended; -1 for none yet
  bool closing = false;
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

std::int64_t Duration(const WaveDevice& device, const WaveHeader& header) {
  return std::int64_t{1000000} * header.bufferLength / device.format.averageBytesPerSecond;
}

// When the first buffer of the queue will have been played: it starts behind the one before it, or
// when it arrived if that is later.
std::int64_t EndOfFront(const WaveDevice& device) {
  if (device.queue.empty() || deviceStanding) return headless::kForever;
  const QueuedBuffer& front = device.queue.front();
  return std::max(device.playedUntil, front.arrival) + Duration(device, *front.header);
}

WaveHeader& TakeFront(WaveDevice& device) {
  const auto [header, arrival] = device.queue.front();
  if (device.playedUntil >= 0) gap += std::max<std::int64_t>(0, arrival - device.playedUntil);
  device.playedUntil = EndOfFront(device);
  device.queue.pop_front();
  auto* samples = reinterpret_cast<const std::int16_t*>(header->data);
  played.insert(played.end(), samples, samples + header->bufferLength / 2);
  return *header;
}

void PlayQueue(void* argument) {
  auto& device = *static_cast<WaveDevice*>(argument);
  std::unique_lock guard(lock);
  device.task = &headless::CurrentTask();
  while (!device.closing) {
    const std::int64_t end = EndOfFront(device);
    guard.unlock();
    headless::RestUntil(end);
    guard.lock();
    if (device.closing || headless::Now() < EndOfFront(device)) continue;
    WaveHeader& header = TakeFront(device);
    guard.unlock();
    device.callback(header);
    header.flags.Publish(kWavePrepared | kWaveDone);
    guard.lock();
  }
}

}  // namespace

WaveDevice* OpenWave(const WaveFormat& format, WaveDoneCallback callback) {
  {
    std::lock_guard guard(lock);
    if (!devicePresent) return nullptr;
    ++openCount;
  }
  auto* device = new WaveDevice;
  device->format = format;
  device->callback = callback;
  device->thread = StartThread(PlayQueue, device);
  return device;
}

void PrepareWave(WaveDevice*, WaveHeader& header) {
  header.flags = header.flags | kWavePrepared;
}

void WriteWave(WaveDevice* device, WaveHeader& header) {
  std::lock_guard guard(lock);
  device->queue.push_back({&header, headless::Now()});
  if (device->task) headless::Wake(*device->task);
}

bool UnprepareWave(WaveDevice*, WaveHeader& header) {
  const unsigned flags = header.flags.Acquire();
  if (!(flags & kWaveDone)) return false;
  header.flags = flags & ~kWavePrepared;
  return true;
}

void ResetWave(WaveDevice* device) {
  std::lock_guard guard(lock);
  for (const QueuedBuffer& buffer : device->queue)
    buffer.header->flags.Publish(kWavePrepared | kWaveDone);
  device->queue.clear();
}

void CloseWave(WaveDevice* device) {
  {
    std::lock_guard guard(lock);
    device->closing = true;
    if (device->task) headless::Wake(*device->task);
  }
  JoinThread(device->thread);
  delete device;
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
