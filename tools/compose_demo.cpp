// Composes and synthesises the demo song: a minute of music for headphones, with a deep bass, bells
// that wander from side to side, and hats to show the treble.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <numbers>
#include <random>
#include <vector>

#include "tools/wav_writer.h"

namespace {

constexpr char kUsage[] =
    "usage: compose_demo OUT.wav\n"
    "Writes the demo song as a 44,100 Hz stereo WAV file, the same one each time.\n";

constexpr int kRate = 44100;
constexpr double kBeat = 60.0 / 92;
constexpr double kBar = 4 * kBeat;
constexpr int kBars = 24;
constexpr double kTail = 4.0;
constexpr double kTwoPi = 2 * std::numbers::pi;

// Each bar's chord as a bass note and four upper notes, in MIDI numbers: a walk in D minor that
// ends where it begins.
constexpr int kChords[8][5] = {
    {38, 62, 65, 69, 76},  // Dm9
    {34, 62, 65, 69, 72},  // Bbmaj7
    {41, 60, 65, 69, 76},  // Fmaj7
    {36, 60, 64, 67, 74},  // C9
    {43, 62, 65, 70, 74},  // Gm7
    {38, 62, 65, 69, 72},  // Dm7
    {34, 58, 65, 69, 74},  // Bbmaj7
    {33, 61, 64, 67, 76},  // A7
};

// Which of the chord's notes the bells play on the sixteenths of a bar; -1 rests.
constexpr int kBells[2][16] = {
    {0, -1, 2, 1, 3, -1, 2, -1, 1, 3, -1, 2, 0, -1, 3, 2},
    {3, 2, -1, 1, 0, -1, 2, 3, -1, 1, 2, -1, 3, 1, -1, 0},
};

double Frequency(double note) {
  return 440.0 * std::exp2((note - 69) / 12);
}

class Canvas {
 public:
  Canvas() : left_(kSamples), right_(kSamples) {}

  // Adds `voice(t)` from `start` on for `length` seconds; `pan` from -1 to 1, at equal power.
  template <typename Voice>
  void Add(double start, double length, double pan, Voice voice) {
    const double angle = (pan + 1) * std::numbers::pi / 4;
    const double l = std::cos(angle), r = std::sin(angle);
    const auto first = static_cast<std::size_t>(start * kRate);
    const auto count = static_cast<std::size_t>(length * kRate);
    for (std::size_t i = 0; i < count && first + i < kSamples; ++i) {
      const double sample = voice(static_cast<double>(i) / kRate);
      left_[first + i] += l * sample;
      right_[first + i] += r * sample;
    }
  }

  // A cross-fed echo, so that what is heard on one side comes back from the other.
  void Echo(double delay, double feedback) {
    const auto gap = static_cast<std::size_t>(delay * kRate);
    for (std::size_t i = gap; i < kSamples; ++i) {
      left_[i] += feedback * right_[i - gap];
      right_[i] += feedback * left_[i - gap];
    }
  }

  void AddTo(Canvas& other, double gain) const {
    for (std::size_t i = 0; i < kSamples; ++i) {
      other.left_[i] += gain * left_[i];
      other.right_[i] += gain * right_[i];
    }
  }

  // 16-bit values with a soft knee, interleaved.
  std::vector<std::int16_t> Render() const {
    std::vector<std::int16_t> pcm;
    for (std::size_t i = 0; i < kSamples; ++i)
      for (double sample : {left_[i], right_[i]})
        pcm.push_back(static_cast<std::int16_t>(std::lround(30000 * std::tanh(1.5 * sample))));
    return pcm;
  }

 private:
  static constexpr std::size_t kSamples = static_cast<std::size_t>((kBars * kBar + kTail) * kRate);
  std::vector<double> left_, right_;
};

double FadeInOut(double t, double attack, double length, double release) {
  return std::clamp(t / attack, 0.0, 1.0) * std::clamp((length - t) / release, 0.0, 1.0);
}

void AddPad(Canvas& canvas, double start, const int* chord) {
  const double length = kBar + 0.6;
  for (int i = 1; i < 5; ++i) {
    for (int side = -1; side <= 1; side += 2) {
      const double f = Frequency(chord[i]) * (1 + 0.0017 * side);
      canvas.Add(start, length, 0.8 * side, [=](double t) {
        double sum = 0;
        for (int k = 1; k <= 6; ++k) sum += std::sin(kTwoPi * f * k * t + k * i) / (k * k);
        return 0.035 * FadeInOut(t, 0.5, length, 0.9) * sum;
      });
    }
  }
}

void AddBass(Canvas& canvas, double start, double length, int note) {
  const double f = Frequency(note);
  canvas.Add(start, length, 0, [=](double t) {
    const double body = std::sin(kTwoPi * f * t) + 0.35 * std::sin(2 * kTwoPi * f * t) +
                        0.12 * std::exp(-6 * t) * std::sin(3 * kTwoPi * f * t);
    return 0.3 * FadeInOut(t, 0.008, length, 0.06) * std::exp(-0.9 * t) * body;
  });
}

void AddBell(Canvas& canvas, double start, int note, double pan, double gain) {
  const double f = Frequency(note);
  canvas.Add(start, 1.6, pan, [=](double t) {
    const double modulation = 2.2 * std::exp(-7 * t) * std::sin(kTwoPi * 3.5 * f * t);
    return gain * FadeInOut(t, 0.002, 1.6, 0.3) * std::exp(-3.2 * t) *
           std::sin(kTwoPi * f * t + modulation);
  });
}

void AddKick(Canvas& canvas, double start) {
  canvas.Add(start, 0.35, 0, [](double t) {
    return 0.55 * FadeInOut(t, 0.001, 0.35, 0.1) * std::exp(-9 * t) *
           std::sin(kTwoPi * (46 * t + 2.4 * (1 - std::exp(-38 * t))));
  });
}

// High-passed noise: each value less the one before it.
void AddNoise(Canvas& canvas, double start, double length, double pan, double gain, double decay,
              std::mt19937& random) {
  double before = 0;
  canvas.Add(start, length, pan, [&](double t) {
    const double noise = static_cast<double>(random()) / 2147483648.0 - 1;
    const double high = noise - before;
    before = noise;
    return gain * std::exp(-decay * t) * FadeInOut(t, 0.001, length, 0.01) * high;
  });
}

void AddDrums(Canvas& canvas, double start, bool full, std::mt19937& random) {
  for (int eighth = 0; eighth < 8; ++eighth) {
    const double at = start + eighth * kBeat / 2;
    if (eighth == 0 || eighth == 5) AddKick(canvas, at);
    if (full && (eighth == 2 || eighth == 6)) AddNoise(canvas, at, 0.22, 0.1, 0.13, 20, random);
    AddNoise(canvas, at + (eighth % 2 ? 0.02 : 0), 0.08, eighth % 2 ? 0.5 : -0.4,
             eighth % 2 ? 0.05 : 0.08, 60, random);
  }
}

std::vector<std::int16_t> Compose() {
  std::mt19937 random(1);
  Canvas song, bells;
  for (int bar = 0; bar < kBars; ++bar) {
    const double start = bar * kBar;
    const int* chord = kChords[bar % 8];
    const bool last = bar == kBars - 1;
    AddPad(song, start, bar == kBars - 1 ? kChords[0] : chord);
    if (last) {
      AddBass(song, start, kBar, kChords[0][0]);
      AddBell(bells, start, kChords[0][1] + 12, 0, 0.16);
      break;
    }
    if (bar >= 4) {
      AddBass(song, start, 1.4 * kBeat, chord[0]);
      AddBass(song, start + 1.5 * kBeat, 0.9 * kBeat, chord[0] + 12);
      AddBass(song, start + 2.5 * kBeat, 1.4 * kBeat, chord[0]);
    }
    if (bar >= 6) AddDrums(song, start, bar >= 8, random);
    for (int i = 0; i < 16; ++i) {
      const int which = kBells[bar % 2][i];
      if (which < 0 || (bar < 2 && i % 4 != 0)) continue;
      const double wander = std::sin(kTwoPi * (bar * 16 + i) / 40.0);
      const int octave = bar >= 16 && i % 3 == 0 ? 24 : 12;
      AddBell(bells, start + i * kBeat / 4, chord[1 + which] + octave, 0.85 * wander, 0.11);
    }
  }
  bells.Echo(0.75 * kBeat, 0.42);
  bells.AddTo(song, 1.0);
  return song.Render();
}

}  // namespace

int main(int argc, char** argv) {
  const bool help = argc == 2 && (!std::strcmp(argv[1], "-h") || !std::strcmp(argv[1], "--help"));
  if (argc != 2 || help) {
    std::fputs(kUsage, help ? stdout : stderr);
    return help ? 0 : 2;
  }
  kwo::tools::WavWriter wav(argv[1], kRate, 2);
  wav.Write(Compose());
  if (wav.Close()) return 0;
  std::fprintf(stderr, "compose_demo: %s: cannot be written\n", argv[1]);
  return 1;
}
