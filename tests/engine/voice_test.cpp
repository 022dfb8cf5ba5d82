// Voices and the mixer against plain ones that follow their description step by step, over random
// songs, rates, volumes, pans, ramps and ends.

#include <cmath>
#include <random>

#include "tests/engine/engine_fixture.h"

namespace kwo {
namespace {

struct PlainRamp {
  int kind = 0;
  float step = 0, target = 0;
  bool stop = false;
};

struct PlainMixer {
  float volume = 1, pan = 0, speed = 1;
  bool limiter = false;
  float compensation = 1;  // the equaliser is always on
  std::vector<float> history;
  float windowMin = 1, limiterGain = 1;
  std::vector<float> mix = std::vector<float>(kBlock);
  bool anyVoice = false;
  std::vector<Event> events;
};

struct PlainSong {
  std::string path;
  std::vector<float> values;
  int channels = 0, rate = 0;
  bool mpeg = false;
};

struct PlainVoice {
  const PlainSong* song = nullptr;
  const PlainSong* following = nullptr;
  std::size_t at = 0;
  bool active = false, seeks = false;
  float volume = 1, baseVolume = 1, pan = 0, basePan = 0, position = 0, target = 0;
  float compensation = 1;  // stays while a song without a decoder plays
  PlainRamp ramps[4];

  void Open(const PlainSong& opened, const PlainMixer& m) {
    song = &opened;
    at = 0;
    if (song->mpeg) compensation = m.compensation;
  }
  void StepRamps() {
    for (PlainRamp& ramp : ramps) {
      if (ramp.kind == 0) continue;
      bool ended;
      if (ramp.kind == 1) {
        volume *= ramp.step;
        ended = (ramp.step > 1 && volume > ramp.target) ||
                (ramp.step < 1 && volume < ramp.target) || ramp.step == 1;
        if (ended) volume = ramp.target;
      } else {
        pan += ramp.step;
        if ((ramp.step > 0 && pan > ramp.target) || (ramp.step < 0 && pan < ramp.target))
          pan = ramp.target;
        ended = ramp.step == 0 || pan == ramp.target;
      }
      if (!ended) continue;
      ramp.kind = 0;
      if (ramp.stop) active = false;
    }
  }
  std::vector<float> Read(std::size_t count) {
    const std::size_t end = std::min(at + count, song->values.size());
    const std::vector<float> got(song->values.begin() + static_cast<long>(std::min(at, end)),
                                 song->values.begin() + static_cast<long>(end));
    at = end;
    return got;
  }
  void Measure(PlainMixer& m, const std::vector<float>& buffer) {
    const float peakGain = m.volume * volume * compensation;
    float high = 0, low = 0;
    for (float value : buffer) high = std::max(high, value), low = std::min(low, value);
    high *= peakGain, low *= peakGain;
    const float limitHigh = high != 0 ? 32767.0f / high : 0;
    const float limitLow = low != 0 ? -32768.0f / low : 0;
    m.history.push_back(limitLow > limitHigh && limitHigh != 0 ? limitHigh
                        : limitLow != 0                        ? limitLow
                                                               : 1.0f);
    if (m.history.size() == 32) {
      m.windowMin = std::min(1.0f, *std::min_element(m.history.begin(), m.history.end()));
      m.history.clear();
    }
    float x = m.windowMin;
    for (int i = 0; i < 4; ++i) x = (x + m.limiterGain) * 0.5f;
    m.limiterGain = x;
  }
  bool Render(PlainMixer& m) {
    if (!active) return false;
    if (seeks) {
      at = static_cast<std::size_t>(static_cast<int>(target) * song->rate * song->channels);
      seeks = false;
    }
    const int channels = song->channels;
    int n = static_cast<int>(static_cast<float>(song->rate) / 44100.0f * m.speed * kBlock);
    if (channels == 1) n /= 2;
    const auto wanted = static_cast<std::size_t>(2 * (n / 2));
    std::vector<float> buffer = Read(wanted);
    if (buffer.size() == wanted) {
      position = static_cast<float>(static_cast<double>(at) / song->rate / channels);
      m.events.push_back({EVENT_POSITION, static_cast<int>(double{position} * 100)});
    } else {
      m.events.push_back({EVENT_SOURCE_END, 0});
      if (following) {
        Open(*following, m);
        following = nullptr;
        const std::vector<float> more = Read(wanted - buffer.size());
        buffer.insert(buffer.end(), more.begin(), more.end());
      }
      if (buffer.empty()) return false;
    }
    if (m.limiter) Measure(m, buffer);
    if (channels == 1) {
      std::vector<float> pairs;
      for (float value : buffer) pairs.insert(pairs.end(), {value, value});
      buffer = pairs;
    }
    float gain = m.volume * volume * compensation;
    if (m.limiter) gain *= m.limiterGain;
    const float panSum = std::clamp(m.pan + pan, -1.0f, 1.0f);
    const float left = panSum > 0 && channels == 2 ? gain * (1.0f - panSum) : gain;
    const float right = panSum < 0 && channels == 2 ? gain * (1.0f + panSum) : gain;
    for (std::size_t i = 0; i < buffer.size(); ++i) buffer[i] *= i % 2 ? right : left;
    const std::size_t got = buffer.size();
    for (int i = 0; i < 3; ++i) buffer.push_back(buffer[got - 1]);
    const auto step = static_cast<float>(static_cast<double>(got) / kBlock * 2.0);
    double pos = 0;
    std::size_t index = 0;
    for (std::size_t i = 0; i < kBlock; i += 2) {
      for (std::size_t side = 0; side < 2; ++side)
        m.mix[i + side] = (m.anyVoice ? m.mix[i + side] : 0.0f) + buffer[index + side];
      pos += step;
      index = 2 * static_cast<std::size_t>(static_cast<int>(pos) / 2);
    }
    return m.anyVoice = true;
  }
};

class PlainVoices : public Engine {
 protected:
  PlainSong WavSong(int channels, int rate, std::size_t seconds, unsigned seed) {
    const auto count = seconds * static_cast<std::size_t>(rate * channels) + 2 * seed;
    const auto noise = test::Noise(count, seed);
    return {Wav(noise, channels, rate), {noise.begin(), noise.end()}, channels, rate, false};
  }
  static PlainSong MpegSong(const char* name) {
    AudioSource source;
    source.Open(test::DataFile(name).c_str());
    std::vector<float> values(1000000);
    values.resize(static_cast<std::size_t>(source.Read(values.data(), 4000000) / 4));
    return {test::DataFile(name), values, source.channels, source.sampleRate, true};
  }
  float Between(double low, double high) {
    return static_cast<float>(std::uniform_real_distribution<>(low, high)(random));
  }
  // What a user, the transport or the DJ may do to a voice, to both.
  void Disturb(Voice& voice, PlainVoice& plain) {
    switch (random() % 6) {
      case 0:
        voice.SetVolume(plain.volume = plain.baseVolume = Between(0, 1.5));
        break;
      case 1:
        voice.SetPan(plain.pan = plain.basePan = Between(-1.2, 1.2));
        break;
      case 2:
        voice.ResetRamps();
        for (auto& ramp : plain.ramps) ramp.kind = 0;
        plain.volume = plain.baseVolume;
        plain.pan = plain.basePan;
        break;
      case 3:
        if (plain.song->mpeg) break;
        voice.Seek(plain.position = plain.target = Between(0, 2.9));
        plain.seeks = true;
        break;
      default: {
        const int slot = static_cast<int>(random() % 5);  // there is no fifth
        const bool still = random() % 5 == 0, stop = random() % 4 == 0;
        const PlainRamp ramp =
            random() % 3 ? PlainRamp{1, still ? 1.0f : Between(0.8, 1.3), Between(0.01, 1.2), stop}
                         : PlainRamp{3, still ? 0.0f : Between(-0.3, 0.3), Between(-1, 1), stop};
        const auto set = ramp.kind == 1 ? &Voice::SetVolumeRamp : &Voice::SetPanRamp;
        (voice.*set)(slot, ramp.step, ramp.target, stop);
        if (slot < 4) plain.ramps[slot] = ramp;
      }
    }
  }

  std::mt19937 random{3};
};

TEST_F(PlainVoices, RenderWhatTheVoicesRender) {
  const std::vector<PlainSong> songs = {
      WavSong(2, 44100, 2, 1),  WavSong(2, 44100, 1, 2), WavSong(1, 44100, 2, 3),
      WavSong(2, 48000, 2, 4),  WavSong(1, 11025, 3, 5), WavSong(2, 22050, 2, 6),
      MpegSong("joint128.mp3"), MpegSong("mono8.mp3"),   MpegSong("lsf22.mp3")};
  PlainMixer m;
  PlainVoice plain[2];
  for (int round = 0; round < 150; ++round) {
    const bool neutral = round % 5 == 0;
    mixer.volume = m.volume = neutral ? 1 : Between(0, 2);
    mixer.pan = m.pan = neutral ? 0 : Between(-1, 1);
    mixer.speed = m.speed = neutral ? 1 : Between(0.75, 1.25);
    m.limiter = !neutral && random() % 2;
    mixer.limiter = m.limiter;
    const float master = neutral ? 1.0f : Between(0.55, 1.45);
    mixer.eqValues[16] = master;
    mixer.eqSwitch = random() % 2;
    m.compensation = mixer.eqSwitch ? (1.0f - master) * 2.0f + 1.0f : 1.0f;
    for (int slot = 0; slot < 2; ++slot) {
      const PlainSong& song = songs[random() % songs.size()];
      plain[slot].Open(song, m);
      V(slot).Stop();
      V(slot).Open(song.path.c_str());
      plain[slot].active = slot == 0 || random() % 2;
      if (plain[slot].active) V(slot).Start();
    }
    // The song that follows on voice 0, if any, is of as many channels.
    const PlainSong& following = songs[random() % songs.size()];
    const bool follows = following.channels == plain[0].song->channels && !plain[1].active;
    plain[0].following = follows ? &following : nullptr;
    nextSong = follows ? following.path : "";
    for (int block = 0; block < 70; ++block) {
      if (!neutral)
        for (int slot = 0; slot < 2; ++slot)
          if (random() % 4 == 0) Disturb(V(slot), plain[slot]);
      m.anyVoice = false;
      for (PlainVoice& voice : plain) {
        voice.StepRamps();
        voice.Render(m);
      }
      ASSERT_EQ(m.anyVoice, mixer.RenderBlock() != 0) << round << ' ' << block;
      for (std::size_t i = 0; m.anyVoice && i < kBlock; ++i) {
        const float mixed = mixer.MixBuffer()[i];
        ASSERT_FLOAT_EQ(m.mix[i], mixed) << round << ' ' << block << ' ' << i;
        ASSERT_EQ(std::clamp(std::nearbyint(mixed), -32768.0f, 32767.0f), mixer.Block()[i]);
      }
      for (int slot = 0; slot < 2; ++slot) {
        const PlainVoice& p = plain[slot];
        ASSERT_EQ(p.active, V(slot).active != 0) << round << ' ' << block;
        for (const auto& [expected, got] : {std::pair{p.volume, float{V(slot).volume}},
                                            {p.pan, V(slot).pan},
                                            {p.position, V(slot).position}})
          ASSERT_FLOAT_EQ(expected, got) << round << ' ' << block;
      }
      ASSERT_EQ(m.events, events) << round << ' ' << block;
      m.events.clear();
      events.clear();
    }
  }
}

}  // namespace
}  // namespace kwo
