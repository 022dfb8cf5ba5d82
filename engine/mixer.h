#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "base/shared.h"
#include "engine/voice.h"
#include "platform/threads.h"

namespace kwo {

/// What the program's mixer has.
constexpr int kBlockValues = 4608;
constexpr int kOutputRate = 44100;
constexpr int kOutputChannels = 2;
constexpr int kVoices = 3;

/// Turns voices into sound: 128 slots, a float mix buffer, the 16-bit block, and the render thread
/// that keeps the PcmDevice fed.
///
/// Three threads come here.  The render thread runs `RenderBlock` and all below it, and may not
/// allocate, lock or wait there.  The main thread writes the parameters, which hold from the next
/// block on, and starts and stops the thread.  The ShuffleMaster's thread rotates slots.  No voice
/// is deleted while the render thread runs.
///
/// The thread never stops rendering while there is a device: to play is to start a voice.
class Mixer {
 public:
  static constexpr int kSlots = 128;

  Mixer() = default;
  ~Mixer();
  Mixer(const Mixer&) = delete;
  Mixer& operator=(const Mixer&) = delete;

  /// Frees everything and puts every field back to its start value.  Not while the thread runs.
  void Reset();
  /// `blockSize` in float values.  Always 1; without memory the Mixer renders nothing.
  int Init(int blockValues, int rate, int channelCount, MixerCallback eventCallback);
  /// The same for the program's block and output, with its voices; false without memory for these.
  bool Prepare(MixerCallback eventCallback);
  /// Replaces the voice in a slot; 0 if it can't be made.  Not while the thread runs.
  int CreateVoice(int slot, int capacity);
  void DeleteVoice(int slot);
  /// The voice at `last` moves to `first`, and those between move up by one; nothing unless
  /// 0 <= first < last < 128.  Any thread but the render thread: a second one waits for the first.
  void RotateSlots(int first, int last);
  /// False if there can be no thread.
  bool StartThread();
  /// Lets the thread finish its block and close the device, and waits until that has played to its
  /// end.  False if the thread hangs for six seconds: then the Mixer must outlive it.
  bool StopThread();

  /// Renders one block; not 0 if `Block` holds new sound.  Render thread only.
  int RenderBlock();
  /// `blockSize` 16-bit values.
  const std::int16_t* Block() const { return pcmBlock.get(); }
  const float* MixBuffer() const { return mixBuffer.get(); }

  /// The voice in a slot, or null.  Any thread.
  Voice* Slot(int slot) const { return slots[slot].load(std::memory_order_acquire); }

  MixerCallback callback = nullptr;
  Shared<int> sampleRate = kOutputRate;
  int channels = 0;
  int blockSize = 0;
  int anyVoice = 0;  ///< some voice has written to the mix buffer in this block; render thread
  Shared<float> volume = 1.0f;
  Shared<float> pan = 0.0f;
  Shared<float> speed = 1.0f;
  Shared<int> crystalizer;
  Shared<int> enhancer;
  Shared<int> vocalReducer;
  Shared<int> wideStereo;
  Shared<int> limiter;
  Shared<int> eqSwitch;
  Shared<float> eqValues[kEqualiserValues] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};

 private:
  static void RunThread(void* mixer);
  void RenderLoop();
  bool OpenDevice();

  std::unique_ptr<std::int16_t[]> pcmBlock;
  std::unique_ptr<float[]> mixBuffer;
  std::atomic<Voice*> slots[kSlots] = {};
  std::atomic<int> rotating = 0;  // two rotations at once would leave one voice in two slots
  Shared<int> running;
  Shared<int> threadAlive;
  platform::Thread* thread = nullptr;
};

/// The single mixer; null before start-up and after shutdown.
extern Mixer* TheMixer;

/// Plain rounding to nearest, ties to even, with saturation at 16 bits.
void ConvertToPcm(const float* values, std::int16_t* pcm, int count);

}  // namespace kwo
