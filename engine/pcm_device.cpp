#include "engine/pcm_device.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "base/hooks.h"
#include "platform/clock.h"
#include "platform/wave_out.h"

namespace kwo {

namespace PcmDevice {
namespace {

constexpr int kPollMilliseconds = 20;
constexpr int kStillMilliseconds = 1000;

platform::WaveDevice* waveHandle = nullptr;
int bufferCount = 0;
int bufferSize = 0;
std::unique_ptr<char[]> bufferMemory;
std::unique_ptr<platform::WaveHeader[]> headers;
int currentBuffer = 0;
int fillOffset = 0;  // 0: no buffer is being filled

void PassPlayed(platform::WaveHeader& header) {
  hooks.pushSamples(reinterpret_cast<const std::int16_t*>(header.data),
                    static_cast<int>(header.bufferLength / 2));
}

// The lowest-numbered buffer that the device does not hold, or -1.
int FindFree() {
  for (int i = 0; i < bufferCount; ++i)
    if (headers[i].flags.Acquire() & platform::kWaveDone)
      platform::UnprepareWave(waveHandle, headers[i]);
  for (int i = 0; i < bufferCount; ++i)
    if (!(headers[i].flags & platform::kWavePrepared)) return i;
  return -1;
}

// False if it was given up.
bool WaitForFree(const Shared<int>& wanted) {
  for (int waited = 0; (currentBuffer = FindFree()) < 0;) {
    if (!wanted && waited >= kStillMilliseconds) return false;
    waited += platform::SleepUntilPlayed(waveHandle, kPollMilliseconds);
  }
  return true;
}

void HandOver(platform::WaveHeader& header) {
  header.data = bufferMemory.get() + currentBuffer * bufferSize;
  header.bufferLength = static_cast<unsigned>(bufferSize);
  header.flags = 0;
  platform::PrepareWave(waveHandle, header);
  platform::WriteWave(waveHandle, header);
  fillOffset = 0;
}

}  // namespace

int Open(int rate, unsigned short channels, unsigned short bits, int bufferBytes,
         int buffersWanted) {
  Close();
  platform::WaveFormat format{};
  format.formatTag = 1;
  format.channels = channels;
  format.samplesPerSecond = static_cast<unsigned>(rate);
  format.bitsPerSample = bits;
  format.blockAlign = static_cast<unsigned short>(channels * bits / 8);
  format.averageBytesPerSecond = format.blockAlign * format.samplesPerSecond;
  bufferMemory.reset(new (std::nothrow) char[static_cast<std::size_t>(bufferBytes) *
                                             static_cast<std::size_t>(buffersWanted)]);
  headers.reset(new (std::nothrow) platform::WaveHeader[static_cast<std::size_t>(buffersWanted)]);
  if (bufferMemory && headers)
    waveHandle = platform::OpenWave(format, buffersWanted, bufferBytes, PassPlayed);
  if (!waveHandle) {
    bufferMemory.reset();
    headers.reset();
    return 0;
  }
  bufferSize = bufferBytes;
  bufferCount = buffersWanted;
  fillOffset = 0;
  return 1;
}

void Close() {
  if (!waveHandle) return;
  platform::CloseWave(waveHandle);
  waveHandle = nullptr;
  bufferMemory.reset();
  headers.reset();
}

int Write(const void* data, int bytes, const Shared<int>& wanted) {
  int taken = 0;
  while (taken < bytes) {
    if (fillOffset == 0 && !WaitForFree(wanted)) break;
    const int piece = std::min(bufferSize - fillOffset, bytes - taken);
    std::memcpy(bufferMemory.get() + currentBuffer * bufferSize + fillOffset,
                static_cast<const char*>(data) + taken, static_cast<std::size_t>(piece));
    fillOffset += piece;
    taken += piece;
    if (fillOffset == bufferSize) HandOver(headers[currentBuffer]);
  }
  return taken;
}

}  // namespace PcmDevice
}  // namespace kwo
