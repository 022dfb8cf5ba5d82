// Sources, voices and the mixer, block by block and without a device.

#include <cmath>
#include <tuple>

#include "engine/equaliser.h"
#include "tests/allocations.h"
#include "tests/decoder/opened_song.h"
#include "tests/engine/engine_fixture.h"

namespace kwo {
namespace {

class Sound : public Engine {
 protected:
  std::vector<float> Hear(int blocks) {
    std::vector<float> heard;
    for (int block = 0; block < blocks; ++block) {
      EXPECT_EQ(1, mixer.RenderBlock());
      heard.insert(heard.end(), mixer.MixBuffer(), mixer.MixBuffer() + kBlock);
    }
    return heard;
  }
};

TEST_F(Engine, ConversionRoundsToNearestEvenAndSaturates) {
  std::vector<float> values = {-32768.4f, 32767.4f, 8388607.0f, 8388608.0f, 9.78e7f, -1e38f, -0.0f};
  for (int half = -70000; half <= 70000; ++half) values.push_back(static_cast<float>(half) / 2);
  std::vector<std::int16_t> pcm(values.size());
  ConvertToPcm(values.data(), pcm.data(), static_cast<int>(pcm.size()));
  for (std::size_t i = 0; i < pcm.size(); ++i)
    ASSERT_EQ(std::clamp(std::nearbyint(values[i]), -32768.0f, 32767.0f), pcm[i]) << values[i];
}

TEST_F(Engine, ExcessiveRatesAreHeldToTheWorkBuffer) {
  Play(Wav(test::Noise(100000), 2, 65535));
  mixer.speed = 50.0f;
  EXPECT_EQ(1, mixer.RenderBlock());
  EXPECT_NEAR(kBlock, V().position * 65535, 2) << "as many frames as a block has values";
  events.clear();
  for (const float speed : {-1.0f, NAN}) {
    mixer.speed = speed;
    EXPECT_EQ(0, mixer.RenderBlock());
  }
  EXPECT_TRUE(events.empty()) << "a song that stands still does not end";
}

TEST_F(Sound, BadSongEndsAtOnceAndTheNextOneFillsTheBlock) {
  const auto noise = test::Noise(kBlock);
  Play(folder.File("absent.mp3"));
  nextSong = Wav(noise);
  EXPECT_EQ(std::vector<float>(noise.begin(), noise.end()), Hear(1));
}

TEST_F(Sound, SongOfOtherChannelsInsideABlockCountsFromTheNextBlock) {
  mixer.pan = 0.5f;  // a source of one channel has no sides
  // Behind an odd number of mono values left is still left.
  const std::tuple<std::size_t, int, int> cases[] = {
      {kBlock + 8, 2, 1}, {4600, 1, 2}, {4597, 1, 2}, {2303, 1, 2}};
  for (const auto& [values, channels, following] : cases) {
    const auto first = test::Noise(values, 3), second = test::Noise(4 * kBlock, 4);
    std::vector<float> expected;
    const auto add = [&](const auto& song, std::size_t begin, std::size_t end, int of) {
      for (std::size_t i = begin; i < end; ++i)
        expected.insert(expected.end(), of == 1 ? 2 : 1,
                        of == 2 && i % 2 == 0 ? song[i] * 0.5f : song[i]);
    };
    const std::size_t block = channels == 1 ? kBlock / 2 : kBlock, missing = block - values % block;
    add(first, 0, values, channels);
    add(second, 0, missing, channels);
    add(second, missing + missing % 2, second.size(), following);
    expected.resize(3 * kBlock);
    Play(Wav(first, channels));
    nextSong = Wav(second, following);
    EXPECT_EQ(expected, Hear(3)) << values;
  }
}

TEST_F(Engine, SlotsRotate) {
  Voice *a = &V(0), *b = &V(1), *c = &V(2);
  for (const auto& [first, last] : {std::pair{2, 2}, {2, 0}, {0, 128}, {-1, 2}, {0, 2}}) {
    EXPECT_EQ(a, mixer.Slot(0)) << "only the last pair moves a voice";
    mixer.RotateSlots(first, last);
  }
  mixer.RotateSlots(0, 127);
  EXPECT_EQ(c, mixer.Slot(1));
  EXPECT_EQ(a, mixer.Slot(2));
  EXPECT_EQ(b, mixer.Slot(3));
}

const std::tuple<const char*, Shared<int> Mixer::*, int, void (MpegDecoder::*)(int)> kEffects[] = {
    {"crystalizer", &Mixer::crystalizer, 1, &MpegDecoder::SetCrystalizer},
    {"enhancer 1", &Mixer::enhancer, 1, &MpegDecoder::SetEnhancer},
    {"enhancer 2", &Mixer::enhancer, 2, &MpegDecoder::SetEnhancer},
    {"vocal reducer", &Mixer::vocalReducer, 1, &MpegDecoder::SetVocalReducer},
    {"wide stereo", &Mixer::wideStereo, 1, &MpegDecoder::SetWideStereo},
    {"equaliser", &Mixer::eqSwitch, 1, &MpegDecoder::SetEqualiserSwitch},
};

TEST_F(Sound, EveryEffectReachesTheSongAtItsOpenAndLaterAndGoesAgain) {
  constexpr int kBlocks = 15, kSettle = 4 * kBlock;  // in which an echo builds and ends
  const std::string song = test::DataFile("joint128.mp3");
  const std::vector<float> plain = OpenedSong(song).ReadAll();
  float bands[16] = {1, 1, 1, 1, 1.4f, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, gains[kLines];
  EqualiserLineGains(bands, gains);
  for (const auto& [name, knob, value, set] : kEffects) {
    OpenedSong opened(song);
    opened.decoder->SetLineGains(gains);
    (opened.decoder.get()->*set)(value);
    std::vector<float> changed = opened.ReadAll();
    EXPECT_NE(plain, changed) << name;
    if (knob == &Mixer::eqSwitch)
      for (float& sample : changed) sample *= 1.5f;  // the master's compensation
    for (const bool atOpen : {true, false}) {
      int begin = 0;
      for (const bool on : {atOpen, !atOpen, false}) {
        mixer.*knob = on ? value : 0;
        mixer.eqValues[4] = on ? 1.4f : 1.0f;
        mixer.eqValues[16] = on ? 0.75f : 1.0f;
        begin == 0 ? Play(song) : V().ApplyMixerParameters();
        const std::vector<float> heard = Hear(kBlocks);
        EXPECT_TRUE(std::equal(heard.begin() + kSettle, heard.end(),
                               (on ? changed : plain).begin() + begin + kSettle))
            << name << atOpen << begin;
        begin += kBlocks * kBlock;
      }
    }
  }
  for (const auto& [name, knob, value, set] : kEffects) mixer.*knob = value;
  const auto noise = test::Noise(kBlock * 5);
  Play(Wav(noise));
  EXPECT_EQ(std::vector<float>(noise.begin(), noise.end()), Hear(5)) << "a WAV song has no decoder";
}

TEST_F(Engine, ThreeSongsRenderWithoutAskingForMemory) {
  for (const auto& [name, knob, value, set] : kEffects) mixer.*knob = value;
  mixer.limiter = 1;
  int slot = 0;
  for (const char* song : {"joint128.mp3", "vbr-lsf.mp3", "layer2.mp2"})
    Play(test::DataFile(song), slot++);
  mixer.RenderBlock();
  events.reserve(1000);
  const long before = test::Allocations();
  for (int block = 0; block < 41; ++block) {
    if (block == 40) V().Seek(1.0f);
    mixer.RenderBlock();
    V().ApplyMixerParameters();
  }
  EXPECT_EQ(before, test::Allocations());
}

TEST(Equaliser, CurveRunsThroughItsBandsInStepsOfThreeLines) {
  float bands[16], gains[kLines];
  std::fill_n(bands, 16, 1.0f);
  EqualiserLineGains(bands, gains);
  for (float gain : gains) ASSERT_EQ(1.0f, gain);
  bands[2] = 1.5f;    // lifted by 5.4 times the half
  bands[9] = 0.5f;    // cut by one and a half times the half
  bands[15] = 1.25f;  // holds to the last line, towards the boost of its end
  EqualiserLineGains(bands, gains);
  const std::pair<int, float> cases[] = {
      {2, 1},       {5, 1},      {6, 3.7f},   {7, 3.7f},
      {8, 3.7f},    {9, 1},      {75, 0.25},  {78, 0.325f},
      {80, 0.325f}, {90, 0.625}, {345, 3.1f}, {575, 3.1f + (2.25f - 3.1f) * 228 / 231}};
  for (const auto& [line, gain] : cases) EXPECT_FLOAT_EQ(gain, gains[line]) << line;
}

class Source : public testing::Test {
 protected:
  int Open(const std::string& name, const std::string& bytes) {
    test::WriteBytes(folder.File(name), bytes);
    return source.Open(folder.File(name).c_str());
  }
  std::vector<float> Read(std::size_t most = 3 * 2 * 44100 + 1) {
    std::vector<float> values(most);
    const int bytes = source.Read(values.data(), static_cast<int>(values.size()) * 4);
    EXPECT_EQ(0, bytes % 4) << "whole samples only";
    values.resize(static_cast<std::size_t>(bytes / 4));
    return values;
  }

  test::TempFolder folder;
  AudioSource source;
};

TEST_F(Source, OpensByTheEndingOfTheNameAndTellsWhatItFound) {
  const std::string joint = test::ReadBytes(test::DataFile("joint128.mp3"));
  const std::string vbr = test::ReadBytes(test::DataFile("vbr.mp3"));
  // A cover beyond what the decoder itself searches.
  const std::string tagged = "ID3\3" + std::string(3, 0) + "\6\x0d\x20" +
                             std::string(100000, '\xff') + vbr + "TAG" + std::string(125, '\xfb');
  const std::vector<int> nothing(INFO_WORDS);
  const std::tuple<const char*, std::string, int, std::vector<int>> cases[] = {
      {"a.mP3", joint, 1, {1, 1, 3, 128000, 2, 44100, 3}},
      {"a.ogg", joint, 1, nothing},
      {"a.wav", joint, 0, nothing},
      {"a.mp3", vbr, 1, {1, 1, 3, 0, 2, 44100, 3}},
      {"a.mp3", tagged, 1, {1, 1, 3, 0, 2, 44100, 3}},
      {"a.mp3", test::ReadBytes(test::DataFile("lsf22.mp3")), 1, {1, 2, 3, 32000, 2, 22050, 3}},
      {"a.mP2", test::ReadBytes(test::DataFile("layer2.mp2")), 1, {1, 1, 2, 192000, 2, 44100, 3}},
      {"a.wav", test::WavBytes(1, 11025, 8, std::string(22050, 0)), 1, {3, 0, 0, 0, 1, 11025, 2}},
  };
  for (const auto& [name, bytes, opens, info] : cases) {
    EXPECT_EQ(opens, Open(name, bytes)) << name;
    EXPECT_EQ(info, std::vector<int>(source.info, source.info + INFO_WORDS)) << name;
    EXPECT_EQ(info == nothing, source.Length() == 0) << name;
    EXPECT_TRUE(info[0] != 1 || info[3] != 0 || source.Length() == 3 * 44100 * 8) << name;
    EXPECT_EQ(info == nothing, Read().empty()) << name;
  }
  EXPECT_EQ(1, source.Open("mp3"));
  EXPECT_EQ(1, source.Open(std::string(1020, 'x').c_str()));
  EXPECT_EQ(0, source.Open(std::string(1021, 'x').c_str()));
}

TEST_F(Source, WavReadsLengthsAndSeeks) {
  const std::string bytes = std::string("\x80\x00\xff", 3) + std::string(22047, '\x81');
  ASSERT_EQ(1, Open("a.wav", test::WavBytes(1, 11025, 8, bytes)));
  EXPECT_EQ((std::vector<float>{0, -32768, 32512, 256}), Read(4));
  EXPECT_EQ(16, source.Position());

  std::string big = test::WavBytes(2, 44100, 16, test::Raw16(test::Noise(10)));
  big.replace(40, 4, test::LittleEndian(176400000, 4));
  ASSERT_EQ(1, Open("a.wav", big));
  EXPECT_EQ(352800000, source.Length());
  EXPECT_EQ(1000, source.info[INFO_SECONDS]);
  EXPECT_EQ(1764000, source.Seek(10));
  EXPECT_EQ(3528000, source.Position());
  EXPECT_TRUE(Read().empty());
}

TEST_F(Source, WavSlidesToTheDataWithinItsReach) {
  for (const std::size_t gap : {0, 1, 34, 99, 100, 101, 208})
    EXPECT_EQ(gap <= 100,
              Open("a.wav", test::WavBytes(2, 44100, 16, "abcd", std::string(gap, 'L'))))
        << gap;
  // What follows the data chunk is played too; a last odd byte is not.
  Open("a.wav", test::WavBytes(2, 44100, 16, "abcd") + "LISTx");
  EXPECT_EQ(4u, Read().size());
  EXPECT_EQ(16, source.Position());
  EXPECT_EQ(8, source.Length());
}

TEST_F(Source, WavOfAFormThatItCannotPlayIsRefused) {
  const std::tuple<int, int, int, int> cases[] = {{0, 44100, 16, 0}, {2, 0, 16, 0},
                                                  {2, 44100, 24, 0}, {2, 44100, 0, 0},
                                                  {6, 44100, 16, 1}, {1, 96000, 16, 1}};
  for (const auto& [channels, rate, bits, opens] : cases) {
    EXPECT_EQ(opens, Open("a.wav", test::WavBytes(channels, rate, bits, "abcdefgh")))
        << rate << ' ' << bits;
    EXPECT_TRUE(!opens || rate % 65536 == source.sampleRate) << "16 bits are looked at";
  }
  const std::string good = test::WavBytes(2, 44100, 16, "abcd");
  for (std::size_t size = 0; size < 44; ++size)
    EXPECT_EQ(0, Open("a.wav", good.substr(0, size))) << size;
}

}  // namespace
}  // namespace kwo
