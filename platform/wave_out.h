#pragma once

#include "base/shared.h"

/// The wave output: a device that plays queued buffers in order, with no gap.
namespace kwo::platform {

struct WaveFormat {
  unsigned short formatTag;  ///< 1, PCM
  unsigned short channels;
  unsigned samplesPerSecond;
  unsigned averageBytesPerSecond;
  unsigned short blockAlign;  ///< bytes of a sample frame
  unsigned short bitsPerSample;
  unsigned short extraSize;
};

/// The whole of a buffer's state lies in its flags: 0 free, `kWavePrepared` handed to the device,
/// with `kWaveDone` played.
constexpr unsigned kWaveDone = 1;
constexpr unsigned kWavePrepared = 2;

struct WaveHeader {
  const char* data = nullptr;
  unsigned bufferLength = 0;  ///< bytes, a whole number of sample frames
  Shared<unsigned> flags;
};

/// Called once for each buffer when it has been played, or one buffer later while the window is out
/// of sight, on the device's own thread, right before its done flag is set.  It may not call the
/// device and must return soon.
using WaveDoneCallback = void (*)(WaveHeader& header);

struct WaveDevice;

/// Opens the system's default device for a caller with so many buffers of so many bytes; null if it
/// is absent or busy.  A device that vanishes later is reopened by the layer with its queue kept.
/// Where more lies in the device than these buffers hold, a buffer counts as played once its room
/// is needed. The operations below come from one thread. Once it is open they ask for no memory.
WaveDevice* OpenWave(const WaveFormat& format, int buffers, int bufferBytes,
                     WaveDoneCallback callback);

/// Sets the prepared flag.
inline void PrepareWave(WaveDevice*, WaveHeader& header) {
  header.flags = header.flags | kWavePrepared;
}

/// Queues a prepared buffer.  Its memory and its header belong to the device until it is done.
void WriteWave(WaveDevice* device, WaveHeader& header);

/// Clears the prepared flag of a played buffer; false, and nothing changed, while it is queued.
inline bool UnprepareWave(WaveDevice*, WaveHeader& header) {
  const unsigned flags = header.flags.Acquire();
  if (!(flags & kWaveDone)) return false;
  header.flags = flags & ~kWavePrepared;
  return true;
}

/// Sleeps by whole `stepMilliseconds` until the end of one by which a buffer will have been played,
/// as far as that is known: of one step where it is not, and of a second's steps at most.  Gives
/// the milliseconds.
int SleepUntilPlayed(WaveDevice* device, int stepMilliseconds);

/// Closes the device and marks all queued buffers done, without a call for them: no callback comes
/// once it has returned, and their memory is the caller's again.  What they hold is played to its
/// end all the same, unless that takes more than six seconds or the device is opened again.
void CloseWave(WaveDevice* device);

/// Whether a device that has been closed has played to its end, as far as it may.  Any thread, once
/// the one of the operations above has ended.
bool WaveFinished();

}  // namespace kwo::platform
