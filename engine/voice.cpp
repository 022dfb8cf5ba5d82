#include "engine/voice.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "base/handshake.h"
#include "engine/limiter.h"
#include "engine/mixer.h"
#include "platform/clock.h"

namespace kwo {
namespace {

constexpr int kPollMilliseconds = 100;
constexpr int kResampleMargin = 3;  // values written behind the block by the resampler

// The voice that this thread is inside of, so that an `Open` from the Mixer's callback knows that
// it has the voice already.
thread_local const Voice* renderedHere = nullptr;

}  // namespace

// The steps are written before the word that leads to them, and are not written again until eight
// more ramps have been set.
void VoiceRamp::Set(RampKind kind, float step, float target, bool stopAtEnd) {
  const unsigned ticket = tickets_.fetch_add(1);
  Steps& steps = steps_[ticket % kPrograms];
  steps.step = step;
  steps.target = target;
  word_.Publish(ticket << 3 | (stopAtEnd ? 4u : 0u) | static_cast<unsigned>(kind));
}

VoiceRamp::Program VoiceRamp::Get() const {
  const unsigned word = word_.Acquire();
  const Steps& steps = steps_[(word >> 3) % kPrograms];
  return {static_cast<RampKind>(word & 3), steps.step, steps.target, (word & 4) != 0, word};
}

int Voice::Create(Mixer* owner, int blockSize) {
  mixer = owner;
  capacity = blockSize;
  source.reset(new (std::nothrow) AudioSource);
  buffer.reset(new (std::nothrow) float[2 * static_cast<std::size_t>(blockSize)]());
  return source && buffer;
}

// Open and Render are kept apart by a hand-shake: the render thread leaves the voice out of a block
// while it is being opened; only the opener waits.
int Voice::Open(const char* path) {
  if (!source) return 0;
  const bool inside = renderedHere == this;
  if (!inside) {
    while (opening.exchange(1) != 0) platform::Sleep(1);
    AwaitTurnsEnd(rendering, [] { platform::Sleep(1); });
  }
  source->Open(path);
  HandOverParameters();
  if (!inside) opening.store(0);
  return 1;
}

bool Voice::EnterRender() {
  if (!EnterTurn(rendering, opening, 0)) return false;
  renderedHere = this;
  return true;
}

void Voice::LeaveRender() {
  renderedHere = nullptr;
  LeaveTurn(rendering);
}

void Voice::ApplyMixerParameters() {
  parametersPending.Publish(1);
}

void Voice::HandOverParameters() {
  source->SetCrystalizer(mixer->crystalizer);
  source->SetEnhancer(mixer->enhancer);
  source->SetVocalReducer(mixer->vocalReducer);
  source->SetWideStereo(mixer->wideStereo);
  source->SetEqualiserSwitch(mixer->eqSwitch);
  float curve[kEqualiserValues];
  for (int i = 0; i < kEqualiserValues; ++i) curve[i] = mixer->eqValues[i];
  source->SetEqualiserCurve(curve);
}

void Voice::Start() {
  active.Raise();
}

void Voice::Stop() {
  active.Lower();
}

void Voice::Seek(float seconds) {
  seekTarget = seconds;
  position = seconds;
  // Last, so that the render thread never takes an old target.
  seekPending.Publish(1);
}

void Voice::ClearRamps() {
  for (auto& ramp : ramps) ramp.Clear();
}

void Voice::ResetRamps() {
  ClearRamps();
  volume = float{baseVolume};
  speed = float{baseSpeed};
  pan = float{basePan};
}

void Voice::SetVolume(float value) {
  volume = value;
  baseVolume = value;
}

void Voice::SetPan(float value) {
  pan = value;
  basePan = value;
}

void Voice::SetVolumeRamp(int slot, float step, float target, int stopAtEnd) {
  SetRamp(slot, RampKind::kVolume, step, target, stopAtEnd);
}

void Voice::SetPanRamp(int slot, float step, float target, int stopAtEnd) {
  SetRamp(slot, RampKind::kPan, step, target, stopAtEnd);
}

void Voice::SetRamp(int slot, RampKind kind, float step, float target, int stopAtEnd) {
  if (slot >= 0 && slot <= 3) ramps[slot].Set(kind, step, target, stopAtEnd != 0);
}

void Voice::WaitRamp(int slot) {
  while (slot >= 0 && slot <= 3 && !ramps[slot].Idle()) platform::Sleep(kPollMilliseconds);
}

void Voice::StepRamps() {
  for (auto& ramp : ramps) StepRamp(ramp);
}

void Voice::StepRamp(VoiceRamp& ramp) {
  // Read before the ramp: whoever sets a new one and then starts the voice is not stopped by the
  // end of the old one.
  const unsigned start = active.Raising();
  const VoiceRamp::Program program = ramp.Get();
  if (program.kind == RampKind::kIdle) return;
  const float step = program.step, target = program.target;
  bool ended;
  if (program.kind == RampKind::kVolume) {
    const float old = volume;
    const float moved = old * step;
    ended = (step > 1.0f && moved > target) || (step < 1.0f && moved < target) || step == 1.0f;
    volume.Replace(old, ended ? target : moved);
  } else {
    Shared<float>& field = program.kind == RampKind::kSpeed ? speed : pan;
    const float old = field;
    float moved = old + step;
    if ((step > 0 && moved > target) || (step < 0 && moved < target)) moved = target;
    ended = step == 0.0f || moved == target;
    field.Replace(old, moved);
  }
  if (ended && ramp.End(program) && program.stopAtEnd) active.LowerIf(start);
}

int Voice::Render(float* mix, int count) {
  if (!active || !source || !EnterRender()) return 0;
  const int mixed = RenderEntered(mix, count);
  LeaveRender();
  return mixed;
}

int Voice::RenderEntered(float* mix, int count) {
  // Taken by one exchange: what is set behind it is seen at the next block.
  if (parametersPending.Replace(1, 0)) HandOverParameters();
  if (seekPending.Replace(1, 0)) source->Seek(static_cast<int>(seekTarget));
  // A song that the callback opens in the middle of this block is heard with its own channels and
  // rate from the next block on: the buffer was measured for these.
  const int channels = source->channels;
  const int wanted = WantedValues(count, channels);
  if (wanted == 0) return 0;
  int got = source->Read(buffer.get(), wanted * 4) / 4;
  if (got == wanted) {
    UpdatePosition();
  } else {
    got = ContinueAtEnd(got, wanted);
    if (got == 0) return 0;
  }
  if (mixer->limiter) {
    const float compensation = source->eqSwitch ? source->eqCompensation : 1.0f;
    Limiter::Measure(buffer.get(), got, mixer->volume * volume * compensation);
  }
  if (channels == 1) {
    for (int i = got - 1; i >= 0; --i) buffer[2 * i] = buffer[2 * i + 1] = buffer[i];
    got *= 2;
  }
  ApplyGain(got, channels);
  Mix(mix, count, got);
  return count;
}

// Values to read for one block, always even.  A source of an uncommon rate is held to what the work
// buffer takes, and then plays slower than it should.
int Voice::WantedValues(int count, int channels) const {
  const float ratio = static_cast<float>(source->sampleRate) /
                      static_cast<float>(static_cast<int>(mixer->sampleRate)) * speed *
                      mixer->speed;
  const double values = static_cast<double>(ratio) * count;
  const int room = 2 * capacity - kResampleMargin - 1;
  // In this order also a rate that is no number becomes none.
  int n = static_cast<int>(std::fmin(std::fmax(values, 0.0), static_cast<double>(room)));
  if (channels == 1) n /= 2;
  return 2 * (n / 2);
}

// The source has ended after `got` values: the callback may have opened the next song on this
// voice, which then fills the block without a gap.  Gives the values there are now.
int Voice::ContinueAtEnd(int got, int wanted) {
  const int more = mixer->callback ? mixer->callback(mixer, EVENT_SOURCE_END, this, 0, 0, 0) : 0;
  if (!more) return got;
  const int missing = wanted - got;
  // Whole frames, so that a stereo song behind an odd number of mono values keeps its sides: the
  // value too many falls behind the block.
  const int asked = missing + (source->channels == 1 ? 0 : missing % 2);
  const int read = source->Read(buffer.get() + got, asked * 4) / 4;
  if (read == 0) return 0;
  if (read < missing) std::fill_n(buffer.get() + got + read, missing - read, 0.0f);
  return wanted;
}

void Voice::UpdatePosition() {
  const double length = static_cast<double>(source->Length());
  const double bytesPerSecond = 4.0 * source->sampleRate * source->channels;
  if (length > 0)
    position = static_cast<float>(static_cast<double>(source->Position()) / length *
                                  (length / bytesPerSecond));
  const double hundredths = std::min(double{position} * 100.0, 2147483647.0);
  if (mixer->callback)
    mixer->callback(mixer, EVENT_POSITION, this, static_cast<int>(hundredths), 0, 0);
}

float Voice::Gain() const {
  float gain = mixer->volume * volume;
  if (source->eqSwitch) gain *= source->eqCompensation;
  if (mixer->limiter) gain *= Limiter::Gain();
  return gain;
}

// The pan law is linear and never boosts; a source of one channel has no sides.
void Voice::ApplyGain(int got, int channels) {
  const float gain = Gain();
  float panSum = mixer->pan + pan;
  if (gain == 1.0f && panSum == 0.0f) return;
  panSum = std::clamp(panSum, -1.0f, 1.0f);
  float left = gain, right = gain;
  if (channels == 2) {
    if (panSum > 0) left = gain * (1.0f - panSum);
    if (panSum < 0) right = gain * (1.0f + panSum);
  }
  for (int i = 0; i + 1 < got; i += 2) {
    buffer[i] *= left;
    buffer[i + 1] *= right;
  }
}

void Voice::Mix(float* mix, int count, int got) {
  const bool adding = mixer->anyVoice != 0;
  float* values = buffer.get();
  if (got == count) {
    if (adding) {
      for (int i = 0; i < count; ++i) mix[i] += values[i];
    } else {
      std::copy_n(values, count, mix);
    }
    return;
  }
  // Nearest earlier frame; a short block is stretched over the whole one.
  for (int i = 0; i < kResampleMargin; ++i) values[got + i] = values[got - 1];
  const float step = static_cast<float>(static_cast<double>(got) / count * 2.0);
  double at = 0.0;
  int index = 0;
  for (int i = 0; i + 1 < count; i += 2) {
    mix[i] = adding ? mix[i] + values[index] : values[index];
    mix[i + 1] = adding ? mix[i + 1] + values[index + 1] : values[index + 1];
    at += step;
    index = 2 * (static_cast<int>(at) / 2);
  }
}

}  // namespace kwo
