#include "platform/wave_out.h"

#include <alsa/asoundlib.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

#include "platform/clock.h"
#include "platform/desktop/sound_watch.h"
#include "platform/threads.h"

namespace kwo::platform {

std::atomic<bool> soundIsWatched = true;

// One device thread feeds ALSA's "default" PCM, and it alone calls ALSA: a sound server that hangs
// holds whoever calls it for as long as it likes.  `queue` holds every buffer from WriteWave until
// it has been heard; the first `fed` bytes of it have been given to the PCM already.
struct WaveDevice {
  WaveFormat format;
  WaveDoneCallback callback;
  std::mutex lock;  // never held over a call of ALSA
  std::condition_variable changed;
  std::vector<WaveHeader*> queue;
  std::uint64_t fed = 0;
  std::size_t buffers = 0;  // that the caller has
  bool opened = false;
  bool calling = false;  // the thread is in the callback, or at the header behind it
  bool closing = false;
  bool cut = false;    // a closed device is not to play on
  bool ended = false;  // the thread touches nothing any more
  Thread* thread = nullptr;
  // What a closed device still has to feed, but for what was on its way to the PCM: `fed` counts
  // that from then on.
  std::vector<char> rest;
  // When the thread looks at the PCM next.
  std::chrono::steady_clock::time_point nextLook;
  // The device thread's own.
  snd_pcm_t* pcm = nullptr;  // null while the device is gone
  std::vector<char> piece;   // on its way to the PCM, in memory that no caller takes away
  std::int64_t pause = 0;    // milliseconds until the next look at the PCM
  std::chrono::steady_clock::time_point fedAt;  // when the PCM was last given something
};

namespace {

// The PCM takes a second, nearly all that the engine renders ahead: enough to ride out a machine
// that stands still for most of it.  The sound starts with half of that in hand.
constexpr unsigned kPeriodsPerSecond = 10, kPeriods = 10, kPeriodsToStart = 5;
// A sound shorter than that starts once nothing more has come for this long.
constexpr auto kStartPatience = std::chrono::milliseconds(50);
// Between two looks at the PCM: from the least worth a waking to little more than one of its
// periods, in which two of the engine's buffers are heard.
constexpr std::int64_t kShortestRest = 5, kLongestRest = 110;  // milliseconds
// Where more lies in the device than the caller's buffers hold, each look gives back one at most.
constexpr std::int64_t kLateRest = 20;
// What a look takes until its buffers are marked.
constexpr auto kLookPatience = std::chrono::milliseconds(2);
constexpr auto kReopenPause = std::chrono::seconds(1);
// How long a caller waits for a sound server that does not answer.
constexpr auto kOpenPatience = std::chrono::seconds(5);
constexpr auto kCutPatience = std::chrono::milliseconds(500);
// How long a device that has been closed may play on.
constexpr auto kLongestEnd = std::chrono::seconds(6);
constexpr auto kStandstill = std::chrono::seconds(1);
constexpr auto kEndPoll = std::chrono::milliseconds(20);

// The device that was closed last: it plays on, or its server hangs.  The next one waits for it.
WaveDevice* closed = nullptr;

void IgnoreError(const char*, int, const char*, int, const char*, ...) {}

bool Configure(snd_pcm_t* pcm, const WaveFormat& format) {
  snd_pcm_hw_params_t* hardware;
  snd_pcm_hw_params_alloca(&hardware);
  unsigned rate = format.samplesPerSecond;
  snd_pcm_uframes_t period = format.samplesPerSecond / kPeriodsPerSecond;
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
         snd_pcm_sw_params_set_start_threshold(pcm, software,
                                               std::min(kPeriodsToStart * period, size)) >= 0 &&
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

// The next bytes of the queue that the PCM has not been given, of one buffer at most.
bool TakePiece(WaveDevice& device) {
  std::uint64_t start = 0;
  for (const WaveHeader* header : device.queue) {
    const std::uint64_t end = start + header->bufferLength;
    if (device.fed < end) {
      device.piece.assign(header->data + (device.fed - start), header->data + header->bufferLength);
      return true;
    }
    start = end;
  }
  return false;
}

// Frames that the PCM has taken, or an error.
snd_pcm_sframes_t WritePcm(WaveDevice& device, const char* bytes, std::size_t size) {
  const snd_pcm_sframes_t taken =
      snd_pcm_writei(device.pcm, bytes, size / device.format.blockAlign);
  // Not one that was suspended: it may have lost what it held.
  return taken == -EPIPE || taken == -EINTR
             ? snd_pcm_recover(device.pcm, static_cast<int>(taken), 1)
             : taken;
}

// Gives the PCM as much of the queue as it takes.  False if the device has failed.
bool FeedPcm(WaveDevice& device, std::unique_lock<std::mutex>& guard) {
  while (TakePiece(device)) {
    guard.unlock();
    const snd_pcm_sframes_t taken = WritePcm(device, device.piece.data(), device.piece.size());
    guard.lock();
    if (taken == -EAGAIN) return true;
    if (taken < 0) return false;
    device.fedAt = std::chrono::steady_clock::now();
    device.fed += static_cast<std::uint64_t>(taken) * device.format.blockAlign;
    if (device.closing) return true;
  }
  return true;
}

// Whether the PCM plays; starts a sound that is too short to start by itself.
bool IsStarted(const WaveDevice& device) {
  if (snd_pcm_state(device.pcm) != SND_PCM_STATE_PREPARED) return true;
  if (std::chrono::steady_clock::now() - device.fedAt < kStartPatience) return false;
  snd_pcm_start(device.pcm);
  return true;
}

// Frames that were fed and are still to be heard; negative if the device has failed.
snd_pcm_sframes_t Waiting(snd_pcm_t* pcm) {
  const snd_pcm_state_t state = snd_pcm_state(pcm);
  if (state == SND_PCM_STATE_DISCONNECTED) return -1;
  // After an underrun all that was fed has been heard.
  if (state == SND_PCM_STATE_XRUN) return 0;
  snd_pcm_sframes_t waiting = 0;
  const int result = snd_pcm_delay(pcm, &waiting);
  if (result == -EPIPE) return 0;
  return result < 0 ? -1 : std::max<snd_pcm_sframes_t>(waiting, 0);
}

std::int64_t UntilHeard(const WaveDevice& device, snd_pcm_sframes_t waiting) {
  if (device.queue.empty() || device.fed < device.queue.front()->bufferLength) return kShortestRest;
  std::uint64_t told = device.queue.front()->bufferLength;
  // What comes late must not find the PCM dry: two at once only where a third has been fed.
  if (!soundIsWatched && device.queue.size() > 2 && device.fed >= 3 * told) told *= 2;
  const std::uint64_t behind = device.fed - told;
  // Nor may a PCM that holds little more than a buffer run dry before it is fed again.
  const auto frames = std::min(
      waiting - static_cast<snd_pcm_sframes_t>(behind / device.format.blockAlign), waiting / 2);
  return std::clamp(frames * 1000 / device.format.samplesPerSecond + 1, kShortestRest,
                    kLongestRest);
}

void FinishFront(WaveDevice& device, std::unique_lock<std::mutex>& guard) {
  WaveHeader& header = *device.queue.front();
  device.queue.erase(device.queue.begin());
  device.fed -= header.bufferLength;
  device.calling = true;
  guard.unlock();
  device.callback(header);
  header.flags.Publish(kWavePrepared | kWaveDone);
  guard.lock();
  device.calling = false;
  device.changed.notify_all();
}

std::uint64_t Queued(const WaveDevice& device) {
  std::uint64_t bytes = 0;
  for (const WaveHeader* header : device.queue) bytes += header->bufferLength;
  return bytes;
}

// Marks the buffers whose last frame has left the device, and one more if the PCM has taken all
// that there is and the caller has no room for more.  False if the device has failed.
bool FinishHeard(WaveDevice& device, std::unique_lock<std::mutex>& guard) {
  device.pause = kShortestRest;
  if (device.fed == 0) return true;
  guard.unlock();
  const bool started = IsStarted(device);
  const snd_pcm_sframes_t waiting = started ? Waiting(device.pcm) : 0;
  guard.lock();
  if (!started) return true;
  if (waiting < 0) return false;
  const std::uint64_t unheard = static_cast<std::uint64_t>(waiting) * device.format.blockAlign;
  while (!device.closing && !device.queue.empty() &&
         device.fed >= device.queue.front()->bufferLength + unheard)
    FinishFront(device, guard);
  device.pause = UntilHeard(device, waiting);
  if (unheard > device.fed) device.pause = std::min(device.pause, kLateRest);
  if (!device.closing && device.queue.size() >= device.buffers && device.fed == Queued(device)) {
    FinishFront(device, guard);
    device.pause = kShortestRest;
  }
  return true;
}

void ClosePcm(WaveDevice& device) {
  if (!device.pcm) return;
  snd_pcm_drop(device.pcm);
  snd_pcm_close(device.pcm);
  device.pcm = nullptr;
}

void Reopen(WaveDevice& device, std::unique_lock<std::mutex>& guard) {
  if (device.changed.wait_for(guard, kReopenPause, [&] { return device.closing; })) return;
  guard.unlock();
  device.pcm = OpenPcm(device.format);
  guard.lock();
}

void PlayQueue(WaveDevice& device, std::unique_lock<std::mutex>& guard) {
  while (!device.closing) {
    if (!device.pcm) {
      Reopen(device, guard);
    } else if (device.queue.empty()) {
      device.changed.wait(guard, [&] { return device.closing || !device.queue.empty(); });
    } else if (!FeedPcm(device, guard) || !FinishHeard(device, guard)) {
      // What has been fed but not heard is fed again.
      device.fed = 0;
      guard.unlock();
      ClosePcm(device);
      guard.lock();
    } else {
      device.nextLook = std::chrono::steady_clock::now() + std::chrono::milliseconds(device.pause);
      device.changed.wait_until(guard, device.nextLook, [&] { return device.closing; });
    }
  }
}

// The end of a device that has been closed.
void PlayRest(WaveDevice& device, std::unique_lock<std::mutex>& guard) {
  using Clock = std::chrono::steady_clock;
  const auto begin = Clock::now();
  auto moved = begin;
  auto heard = begin;  // when the last frame will have been, by the PCM's last word on it
  snd_pcm_sframes_t waitingBefore = -1;
  while (device.pcm && !device.cut && Clock::now() - begin < kLongestEnd &&
         Clock::now() - moved < kStandstill) {
    guard.unlock();
    bool done = false;
    if (device.fed < device.rest.size()) {
      const snd_pcm_sframes_t taken =
          WritePcm(device, device.rest.data() + device.fed, device.rest.size() - device.fed);
      done = taken < 0 && taken != -EAGAIN;
      if (taken > 0) {
        moved = device.fedAt = Clock::now();
        device.fed += static_cast<std::uint64_t>(taken) * device.format.blockAlign;
      }
    } else if (IsStarted(device)) {
      const snd_pcm_sframes_t waiting = Waiting(device.pcm);
      const auto now = Clock::now();
      const auto frames = std::chrono::duration<double>(static_cast<double>(waiting) /
                                                        device.format.samplesPerSecond);
      // A PCM that has run dry says nothing of what still lies behind it.
      if (waiting > 0) heard = now + std::chrono::duration_cast<Clock::duration>(frames);
      done = waiting < 0 || (waiting == 0 && now >= heard);
      if (waiting != waitingBefore || now < heard) moved = now;
      waitingBefore = waiting;
    }
    guard.lock();
    if (done) return;
    device.changed.wait_for(guard, kEndPoll, [&] { return device.cut; });
  }
}

void RunDevice(void* argument) {
  auto& device = *static_cast<WaveDevice*>(argument);
  SetThreadPriority(ThreadPriority::kTimeCritical);
  device.pcm = OpenPcm(device.format);
  std::unique_lock guard(device.lock);
  device.opened = device.pcm != nullptr;
  if (device.opened) {
    device.changed.notify_all();
    PlayQueue(device, guard);
    PlayRest(device, guard);
  }
  guard.unlock();
  ClosePcm(device);
  guard.lock();
  device.ended = true;
  device.changed.notify_all();
}

// Frees the closed device; false if its thread has not ended in time.
bool EndClosed(bool cut, std::chrono::milliseconds patience) {
  if (!closed) return true;
  {
    std::unique_lock guard(closed->lock);
    closed->cut = closed->cut || cut;
    closed->changed.notify_all();
    if (!closed->changed.wait_for(guard, patience, [] { return closed->ended; })) return false;
  }
  JoinThread(closed->thread);
  delete closed;
  closed = nullptr;
  return true;
}

}  // namespace

WaveDevice* OpenWave(const WaveFormat& format, int buffers, int bufferBytes,
                     WaveDoneCallback callback) {
  if (!EndClosed(true, kCutPatience)) return nullptr;
  snd_lib_error_set_handler(IgnoreError);
  auto* device = new WaveDevice;
  device->format = format;
  device->buffers = static_cast<std::size_t>(buffers);
  device->queue.reserve(device->buffers);
  device->rest.reserve(device->buffers * static_cast<std::size_t>(bufferBytes));
  device->callback = callback;
  device->thread = StartThread(RunDevice, device, "kwo sound");
  if (!device->thread) {
    delete device;
    return nullptr;
  }
  {
    std::unique_lock guard(device->lock);
    device->changed.wait_for(guard, kOpenPatience, [&] { return device->opened || device->ended; });
    if (device->opened) return device;
  }
  CloseWave(device);
  return nullptr;
}

void WriteWave(WaveDevice* device, WaveHeader& header) {
  std::lock_guard guard(device->lock);
  device->queue.push_back(&header);
  // A busy device looks at its queue by itself.
  if (device->queue.size() == 1) device->changed.notify_all();
}

int SleepUntilPlayed(WaveDevice* device, int stepMilliseconds) {
  using std::chrono::milliseconds;
  const auto now = std::chrono::steady_clock::now();
  milliseconds untilLook;
  {
    std::lock_guard guard(device->lock);
    untilLook = std::chrono::ceil<milliseconds>(device->nextLook + kLookPatience - now);
  }
  const auto steps = std::clamp<std::int64_t>(
      (untilLook.count() + stepMilliseconds - 1) / stepMilliseconds, 1, 1000 / stepMilliseconds);
  const int whole = static_cast<int>(steps) * stepMilliseconds;
  Sleep(whole);
  return whole;
}

void CloseWave(WaveDevice* device) {
  std::unique_lock guard(device->lock);
  std::uint64_t fed = device->fed;
  for (WaveHeader* header : device->queue) {
    const std::uint64_t known = std::min<std::uint64_t>(fed, header->bufferLength);
    device->rest.insert(device->rest.end(), header->data + known,
                        header->data + header->bufferLength);
    fed -= known;
    header->flags.Publish(kWavePrepared | kWaveDone);
  }
  device->queue.clear();
  device->fed = 0;
  device->closing = true;
  device->changed.notify_all();
  device->changed.wait(guard, [&] { return !device->calling; });
  closed = device;
}

bool WaveFinished() {
  return EndClosed(false, {});
}

}  // namespace kwo::platform
