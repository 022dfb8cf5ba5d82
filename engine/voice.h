#pragma once

#include <atomic>
#include <memory>

#include "base/shared.h"
#include "engine/audio_source.h"

namespace kwo {

class Mixer;
class Voice;

/// Events of the Mixer.  `a`, `b`, `c` depend on the event; so does the result.
enum MixerEvent : int {
  /// The song has ended.  A result other than 0: the source has been given more to read.
  EVENT_SOURCE_END = 0,
  /// `a` is the voice's position in hundredths of a second.
  EVENT_POSITION = 1,
};

using MixerCallback = int (*)(Mixer* mixer, int event, Voice* voice, int a, int b, int c);

enum class RampKind : unsigned { kIdle = 0, kVolume = 1, kSpeed = 2, kPan = 3 };

/// A movement of a parameter, one step a block.  Any thread sets it and clears it; the render
/// thread carries it out and ends it.  A ramp that is set while another one ends is not lost.
class VoiceRamp {
 public:
  struct Program {
    RampKind kind;
    float step;  ///< factor (volume) or addend (speed, pan)
    float target;
    bool stopAtEnd;
    unsigned word;  ///< which program this is
  };

  void Set(RampKind kind, float step, float target, bool stopAtEnd);
  void Clear() { word_.Publish(0); }
  bool Idle() const { return word_ == 0; }
  Program Get() const;
  /// Makes the ramp idle; false if `program` is no longer the one that runs.
  bool End(const Program& program) { return word_.Replace(program.word, 0); }

 private:
  // The last programs; `word_` is 0 or tells which one runs, its kind and its end.
  static constexpr unsigned kPrograms = 8;
  struct Steps {
    Shared<float> step, target;
  };
  Steps steps_[kPrograms];
  Shared<unsigned> word_;
  std::atomic<unsigned> tickets_ = 0;
};

/// One slot of the Mixer: pulls a block from its AudioSource, applies speed, gain and pan, and adds
/// it to the mix buffer.  Ramps are the only means of fading.
///
/// `StepRamps` and `Render` run on the render thread and never allocate, lock or wait.  All other
/// operations may come from any thread, and what they set holds from the next block on.
class Voice {
 public:
  /// Makes the source and the work buffer; 0 if either can't be had.  Once, before the voice is
  /// used.
  int Create(Mixer* owner, int blockSize);

  /// Opens a song; 1, or 0 if the voice has no source.  A song that can't be opened ends at its
  /// first block.  Waits, for one block at most, until the render thread has left this voice; from
  /// inside the Mixer's callback it runs at once.
  int Open(const char* path);

  /// Hands the Mixer's effects to the source at the next block.
  void ApplyMixerParameters();

  void Start();
  void Stop();
  /// Moves the song to `seconds` at the next block; `position` says so at once.
  void Seek(float seconds);
  void ClearRamps();
  /// Ends all ramps and puts volume, speed and pan back to rest.
  void ResetRamps();
  void SetVolume(float value);
  void SetPan(float value);
  /// Sets ramp `slot` (0 to 3; others are ignored) to multiply the volume by `step` once a block
  /// until it has passed `target`.
  void SetVolumeRamp(int slot, float step, float target, int stopAtEnd);
  /// The same for the pan, by adding `step`.
  void SetPanRamp(int slot, float step, float target, int stopAtEnd);
  /// Sleeps 100 ms at a time until the ramp has ended.
  void WaitRamp(int slot);

  /// Moves all ramps by one step; the Mixer calls it for every voice right before `Render`.
  void StepRamps();

  /// Renders one block of `count` interleaved values into `mix`.  Gives `count`, or 0 when nothing
  /// was mixed.
  int Render(float* mix, int count);

  AudioSource* Source() const { return source.get(); }

  SharedFlag active;
  Shared<float> volume = 1.0f, baseVolume = 1.0f;
  Shared<float> speed = 1.0f, baseSpeed = 1.0f;
  Shared<float> pan = 0.0f, basePan = 0.0f;
  VoiceRamp ramps[4];
  Shared<int> seekPending;
  Shared<float> seekTarget;
  Shared<float> position;  ///< seconds, as the last full block or the last seek left it

 private:
  void SetRamp(int slot, RampKind kind, float step, float target, int stopAtEnd);
  void StepRamp(VoiceRamp& ramp);
  bool EnterRender();
  void LeaveRender();
  int RenderEntered(float* mix, int count);
  void HandOverParameters();
  int WantedValues(int count, int channels) const;
  int ContinueAtEnd(int got, int wanted);
  void UpdatePosition();
  float Gain() const;
  void ApplyGain(int got, int channels);
  void Mix(float* mix, int count, int got);

  Mixer* mixer = nullptr;
  std::unique_ptr<AudioSource> source;
  std::unique_ptr<float[]> buffer;
  int capacity = 0;
  Shared<int> parametersPending;
  std::atomic<int> opening = 0;
  std::atomic<int> rendering = 0;
};

}  // namespace kwo
