// Sources, voices and the mixer, block by block and without a device.

#include <cmath>
#include <memory>

#include "engine/equaliser.h"
#include "tests/allocations.h"
#include "tests/decoder/opened_song.h"
#include "tests/engine/engine_fixture.h"

namespace kwo {
namespace {

TEST_F(Engine, ConversionRoundsToNearestEvenAndSaturates) {
  const struct {
    float value;
    std::int16_t pcm;
  } kCases[] = {{0.5f, 0},           {1.5f, 2},         {-0.5f, 0},          {-1.5f, -2},
                {2.5f, 2},           {32766.5f, 32766}, {32767.4f, 32767},   {-0.0f, 0},
                {-32768.4f, -32768}, {40000.0f, 32767}, {-40000.0f, -32768}, {8388607.0f, 32767},
                {9.78e7f, 32767},    {-1e38f, -32768}};
  for (const auto& [value, pcm] : kCases) {
    std::int16_t got;
    ConvertToPcm(&value, &got, 1);
    EXPECT_EQ(pcm, got) << value;
  }
}

TEST_F(Engine, TwoVoicesAddAndClip) {
  const std::vector<std::int16_t> loud(kBlock, 30000), quiet(kBlock, -40);
  Play(Wav(loud), 0);
  Play(Wav(loud), 2);
  mixer.RenderBlock();
  EXPECT_EQ(60000.0f, mixer.MixBuffer()[7]);
  EXPECT_EQ(32767, mixer.Block()[7]);
  Play(Wav(quiet), 1);
  mixer.RenderBlock();
  EXPECT_EQ(-40, mixer.Block()[7]);
}

TEST_F(Engine, ExcessiveRatesAreHeldToTheWorkBuffer) {
  Play(Wav(test::Noise(100000), 2, 65535));
  mixer.speed = 50.0f;
  EXPECT_EQ(1, mixer.RenderBlock());
  mixer.speed = -1.0f;
  EXPECT_EQ(0, mixer.RenderBlock());
  mixer.speed = NAN;
  mixer.RenderBlock();
}

TEST_F(Engine, SongEndInABlockIsFilledFromTheNextWithoutAGap) {
  const auto first = test::Noise(kBlock + 1000, 1), second = test::Noise(kBlock * 2, 2);
  Play(Wav(first));
  nextSong = Wav(second);
  mixer.RenderBlock();
  events.clear();
  mixer.RenderBlock();
  ASSERT_EQ(1u, events.size()) << "no position for a block that met the end";
  for (int i = 0; i < kBlock; ++i)
    ASSERT_EQ(i < 1000 ? first[static_cast<std::size_t>(kBlock + i)]
                       : second[static_cast<std::size_t>(i - 1000)],
              mixer.Block()[i]);
  mixer.RenderBlock();
  EXPECT_EQ(second[static_cast<std::size_t>(kBlock - 1000)], mixer.Block()[0]);
}

TEST_F(Engine, BadSongEndsAtOnceAndTheNextOneFillsTheBlock) {
  const auto noise = test::Noise(kBlock);
  Play(folder.File("absent.mp3"));
  nextSong = Wav(noise);
  EXPECT_EQ(1, mixer.RenderBlock());
  EXPECT_EQ(noise[5], mixer.Block()[5]);
}

TEST_F(Engine, SongOfOtherChannelsInsideABlockCountsFromTheNextBlock) {
  const auto stereo = test::Noise(kBlock + 8, 3), mono = test::Noise(3 * kBlock - 10, 4);
  Play(Wav(stereo));
  nextSong = Wav(mono, 1);
  mixer.RenderBlock();
  mixer.RenderBlock();
  EXPECT_EQ(stereo[kBlock + 7], mixer.MixBuffer()[7]);
  EXPECT_EQ(mono[0], mixer.MixBuffer()[8]);
  EXPECT_EQ(mono[kBlock - 9], mixer.MixBuffer()[kBlock - 1]);
  mixer.RenderBlock();
  EXPECT_EQ(mono[kBlock - 8], mixer.MixBuffer()[0]);
  EXPECT_EQ(mono[kBlock - 8], mixer.MixBuffer()[1]);

  std::vector<std::int16_t> sides;
  for (int i = 0; i < 2 * kBlock; ++i) sides.push_back(i % 2 ? -9 : 9);
  Play(Wav({mono.begin(), mono.end() - 1}, 1));
  for (int block = 0; block < 5; ++block) mixer.RenderBlock();
  nextSong = Wav(sides);
  EXPECT_EQ(1, mixer.RenderBlock()) << "the last values of the mono song and 11 behind them";
  EXPECT_EQ(1, mixer.RenderBlock());
  EXPECT_EQ(9, mixer.Block()[0]) << "left is left, though an odd number of values was missing";
  EXPECT_EQ(-9, mixer.Block()[1]);

  Play(Wav({mono.begin(), mono.begin() + 2303}, 1));
  nextSong = Wav(sides);
  ASSERT_EQ(1, mixer.RenderBlock()) << "a single value was missing";
  EXPECT_EQ(mono[2302], mixer.MixBuffer()[4604]);
  EXPECT_EQ(9, mixer.MixBuffer()[4606]);
  EXPECT_EQ(1, mixer.RenderBlock());
  EXPECT_EQ(9, mixer.Block()[0]);
  EXPECT_EQ(-9, mixer.Block()[1]);
}

TEST_F(Engine, RampsEndAfterTheirBlockCounts) {
  struct Case {
    float start, step, target;
    int blocks;
  };
  for (const Case& c : {Case{0.01f, 1.2f, 1.0f, 26},
                        {0.01f, 1.1f, 1.0f, 49},
                        {0.01f, 1.3f, 1.0f, 18},
                        {1.0f, 0.9f, 0.01f, 44},
                        {1.0f, 0.8f, 0.01f, 21},
                        {1.0f, 0.95f, 0.01f, 90},
                        {1.0f, 0.97f, 0.05f, 99},
                        {0.5f, 1.0f, 0.9f, 1}}) {
    V().SetVolume(c.start);
    V().SetVolumeRamp(0, c.step, c.target, 0);
    int blocks = 0;
    for (; !V().ramps[0].Idle(); ++blocks) V().StepRamps();
    EXPECT_EQ(c.blocks, blocks) << c.step;
    EXPECT_EQ(c.target, V().volume);
  }
  for (const Case& c : {Case{-1, 0.005f, 0, 201}, {0, 0.01f, 1, 101}, {0, -0.25f, -1, 4}}) {
    V().SetPan(c.start);
    V().SetPanRamp(2, c.step, c.target, 0);
    int blocks = 0;
    for (; !V().ramps[2].Idle(); ++blocks) V().StepRamps();
    EXPECT_NEAR(c.blocks, blocks, c.blocks > 10 ? 1 : 0) << c.step;
    EXPECT_EQ(c.target, V().pan);
  }
}

TEST_F(Engine, SlotsRotate) {
  Voice *a = &V(0), *b = &V(1), *c = &V(2);
  mixer.RotateSlots(2, 2);
  mixer.RotateSlots(2, 0);
  mixer.RotateSlots(0, 128);
  mixer.RotateSlots(-1, 2);
  EXPECT_EQ(a, mixer.Slot(0));
  mixer.RotateSlots(0, 2);
  EXPECT_EQ(c, mixer.Slot(0));
  EXPECT_EQ(a, mixer.Slot(1));
  EXPECT_EQ(b, mixer.Slot(2));
}

struct Effect {
  const char* name;
  void (*inMixer)(Mixer& mixer, int on);
  void (*inDecoder)(MpegDecoder& decoder);
};

const Effect kEffects[] = {
    {"crystalizer", [](Mixer& m, int on) { m.crystalizer = on; },
     [](MpegDecoder& d) { d.SetCrystalizer(1); }},
    {"enhancer 1", [](Mixer& m, int on) { m.enhancer = on; },
     [](MpegDecoder& d) { d.SetEnhancer(1); }},
    {"enhancer 2", [](Mixer& m, int on) { m.enhancer = 2 * on; },
     [](MpegDecoder& d) { d.SetEnhancer(2); }},
    {"vocal reducer", [](Mixer& m, int on) { m.vocalReducer = on; },
     [](MpegDecoder& d) { d.SetVocalReducer(1); }},
    {"wide stereo", [](Mixer& m, int on) { m.wideStereo = on; },
     [](MpegDecoder& d) { d.SetWideStereo(1); }},
    {"equaliser",
     [](Mixer& m, int on) {
       m.eqSwitch = on;
       m.eqValues[4] = on ? 1.4f : 1.0f;
     },
     [](MpegDecoder& d) {
       float bands[16], gains[kLines];
       std::fill_n(bands, 16, 1.0f);
       bands[4] = 1.4f;
       EqualiserLineGains(bands, gains);
       d.SetLineGains(gains);
       d.SetEqualiserSwitch(1);
     }},
};

TEST_F(Engine, EveryEffectReachesTheSongAtItsOpenAndLaterAndGoesAgain) {
  const std::string song = test::DataFile("joint128.mp3");
  const auto decode = [&](void (*set)(MpegDecoder&)) {
    OpenedSong opened(song);
    set(*opened.decoder);
    return opened.ReadAll();
  };
  const auto hear = [&](int blocks) {
    std::vector<float> heard;
    for (int block = 0; block < blocks; ++block) {
      EXPECT_EQ(1, mixer.RenderBlock());
      heard.insert(heard.end(), mixer.MixBuffer(), mixer.MixBuffer() + kBlock);
    }
    return heard;
  };
  const std::vector<float> plain = decode([](MpegDecoder&) {});
  Play(song);
  const std::vector<float> first = hear(1);
  // The decoder begins with what the encoder put before the music.
  const auto start = std::search(plain.begin(), plain.end(), first.begin(), first.begin() + 1000);
  ASSERT_NE(plain.end(), start);
  constexpr int kSettle = 4;  // blocks in which an echo builds and ends
  const auto compare = [&](const std::vector<float>& expected, const std::vector<float>& heard,
                           int fromBlock) {
    const auto at = expected.begin() + (start - plain.begin()) + fromBlock * kBlock;
    const long skipped = kSettle * kBlock;
    return std::equal(heard.begin() + skipped, heard.end(), at + skipped);
  };
  for (const Effect& effect : kEffects) {
    const std::vector<float> changed = decode(effect.inDecoder);
    for (const bool atOpen : {true, false}) {
      effect.inMixer(mixer, atOpen);
      Play(song);
      if (!atOpen) {
        EXPECT_TRUE(compare(plain, hear(10), 0)) << effect.name;
        effect.inMixer(mixer, 1);
        V().ApplyMixerParameters();
      }
      EXPECT_TRUE(compare(changed, hear(15), atOpen ? 0 : 10)) << effect.name << atOpen;
      effect.inMixer(mixer, 0);
      V().ApplyMixerParameters();
      EXPECT_TRUE(compare(plain, hear(15), atOpen ? 15 : 25)) << effect.name << atOpen;
    }
    EXPECT_NE(plain, changed) << effect.name;
  }
  for (const Effect& effect : kEffects) effect.inMixer(mixer, 1);
  const auto noise = test::Noise(kBlock * 5);
  Play(Wav(noise));
  const std::vector<float> wav = hear(5);
  EXPECT_TRUE(std::equal(wav.begin(), wav.end(), noise.begin())) << "a WAV song has no decoder";
}

TEST_F(Engine, ThreeSongsRenderWithoutAskingForMemory) {
  mixer.limiter = mixer.crystalizer = mixer.vocalReducer = mixer.wideStereo = mixer.eqSwitch = 1;
  mixer.enhancer = 2;
  Play(test::DataFile("joint128.mp3"), 0);
  Play(test::DataFile("vbr-lsf.mp3"), 1);
  Play(test::DataFile("layer2.mp2"), 2);
  mixer.RenderBlock();
  events.reserve(1000);
  const long before = test::Allocations();
  for (int block = 0; block < 40; ++block) {
    mixer.RenderBlock();
    V().ApplyMixerParameters();
  }
  V().Seek(1.0f);
  mixer.RenderBlock();
  EXPECT_EQ(before, test::Allocations());
}

TEST(Equaliser, CurveRunsThroughItsBandsInStepsOfThreeLines) {
  float bands[16], gains[576];
  std::fill_n(bands, 16, 1.0f);
  EqualiserLineGains(bands, gains);
  for (float gain : gains) ASSERT_EQ(1.0f, gain);
  bands[2] = 1.5f;   // lifted by 5.4 times the half
  bands[9] = 0.5f;   // cut by one and a half times the half
  bands[15] = 1.2f;  // holds to the last line, towards the boost of its end
  EqualiserLineGains(bands, gains);
  EXPECT_EQ(1.0f, gains[2]);
  EXPECT_EQ(1.0f, gains[5]);
  for (int line = 6; line < 9; ++line) EXPECT_NEAR(3.7f, gains[line], 1e-5);
  EXPECT_EQ(1.0f, gains[9]);
  EXPECT_NEAR(0.25f, gains[75], 1e-5);
  EXPECT_EQ(gains[78], gains[80]);
  EXPECT_NEAR(0.25 + 0.75 * 15 / 30, gains[90], 1e-5);
  EXPECT_NEAR(1 + 0.2 * 8.4, gains[345], 1e-5);
  EXPECT_NEAR(2.68 + (2.0 - 2.68) * 228 / 231, gains[575], 1e-5);
}

TEST(AudioSource, EndingsPickTheReader) {
  test::TempFolder folder;
  AudioSource source;
  const std::string song = test::ReadBytes(test::DataFile("joint128.mp3"));
  test::WriteBytes(folder.File("a.mP3"), song);
  test::WriteBytes(folder.File("a.ogg"), song);
  test::WriteBytes(folder.File("b.wav"), song);
  EXPECT_EQ(1, source.Open(folder.File("a.mP3").c_str()));
  const int words[INFO_WORDS] = {1, 1, 3, 128000, 2, 44100, 3};
  for (int word = 0; word < INFO_WORDS; ++word) EXPECT_EQ(words[word], source.info[word]) << word;
  EXPECT_EQ(1, source.Open(folder.File("a.ogg").c_str()));
  float value;
  EXPECT_EQ(0, source.info[INFO_KIND]);
  EXPECT_EQ(0, source.Read(&value, 4));
  EXPECT_EQ(0, source.Length());
  EXPECT_EQ(0, source.Open(folder.File("b.wav").c_str()));
  EXPECT_EQ(0, source.Read(&value, 4));
  EXPECT_EQ(1, source.Open("mp3"));
  EXPECT_EQ(0, source.Open((std::string(300, 'x') + ".mp3").c_str()));
  EXPECT_EQ(1, source.Open(test::DataFile("vbr.mp3").c_str()));
  EXPECT_EQ(0, source.info[INFO_BIT_RATE]) << "a length header hides the first frame's rate";
  source.Open(test::DataFile("lsf22.mp3").c_str());
  EXPECT_EQ(2, source.info[INFO_MPEG_VERSION]);
  source.Open(test::DataFile("layer2.mp2").c_str());
  EXPECT_EQ(2, source.info[INFO_LAYER]);
}

TEST(AudioSource, SongSoundsTheSameWhateverTaggersPutAroundIt) {
  const std::string bare = test::ReadBytes(test::DataFile("vbr.mp3"));
  const std::string cover(100000, '\xff');  // beyond what the decoder itself searches
  test::TempFolder folder;
  const std::string path = folder.File("song.mp3");
  test::WriteBytes(path, "ID3\3" + std::string(3, 0) + "\6\x0d\x20" + cover + bare + "TAG" +
                             std::string(125, '\xfb'));
  AudioSource source, plain;
  ASSERT_EQ(1, source.Open(path.c_str()));
  ASSERT_EQ(1, plain.Open(test::DataFile("vbr.mp3").c_str()));
  EXPECT_EQ(3 * 44100 * 8, source.Length());
  EXPECT_EQ(3, source.info[INFO_SECONDS]);
  std::vector<float> got(2 * 3 * 44100 + 1), expected(got.size());
  for (const int seconds : {0, 2}) {
    source.Seek(seconds);
    plain.Seek(seconds);
    EXPECT_EQ(seconds * 44100 * 8, source.Position());
    const int bytes = source.Read(got.data(), static_cast<int>(got.size()) * 4);
    EXPECT_GT(bytes, 0);
    EXPECT_EQ(bytes, plain.Read(expected.data(), static_cast<int>(got.size()) * 4));
    EXPECT_EQ(expected, got);
  }
}

TEST(WavReader, ReadsLengthsAndSeeks) {
  test::TempFolder folder;
  const std::string path = folder.File("a.wav");
  AudioSource source;
  test::WriteBytes(
      path,
      test::WavBytes(1, 11025, 8, std::string("\x80\x00\xff", 3) + std::string(22047, '\x81')));
  ASSERT_EQ(1, source.Open(path.c_str()));
  EXPECT_EQ(3, source.info[INFO_KIND]);
  EXPECT_EQ(1, source.info[INFO_CHANNELS]);
  EXPECT_EQ(2, source.info[INFO_SECONDS]);
  float values[4];
  EXPECT_EQ(12, source.Read(values, 12));
  EXPECT_EQ(0.0f, values[0]);
  EXPECT_EQ(-32768.0f, values[1]);
  EXPECT_EQ(32512.0f, values[2]);
  EXPECT_EQ(12, source.Position());

  std::string big = test::WavBytes(2, 44100, 16, test::Raw16(test::Noise(10)));
  big.replace(40, 4, test::LittleEndian(176400000, 4));
  test::WriteBytes(path, big);
  ASSERT_EQ(1, source.Open(path.c_str()));
  EXPECT_EQ(352800000, source.Length());
  EXPECT_EQ(1000, source.info[INFO_SECONDS]);
  EXPECT_EQ(1764000, source.Seek(10));
  EXPECT_EQ(3528000, source.Position());
  EXPECT_EQ(0, source.Read(values, 16));
}

TEST(WavReader, SlidesToTheDataWithinItsReach) {
  test::TempFolder folder;
  const std::string path = folder.File("a.wav");
  for (int gap : {0, 1, 34, 99, 100, 101, 208}) {
    test::WriteBytes(path, test::WavBytes(2, 44100, 16, "abcd",
                                          std::string(static_cast<std::size_t>(gap), 'L')));
    EXPECT_EQ(gap <= 100, AudioSource().Open(path.c_str())) << gap;
  }
  // What follows the data chunk is played too; a last odd byte is not.
  test::WriteBytes(path, test::WavBytes(2, 44100, 16, "abcd") + "LISTx");
  AudioSource source;
  source.Open(path.c_str());
  float values[16];
  EXPECT_EQ(16, source.Read(values, sizeof values));
  EXPECT_GT(source.Position(), source.Length());
}

TEST(WavReader, RefusesFormsThatItCannotPlay) {
  test::TempFolder folder;
  const std::string path = folder.File("a.wav");
  struct Case {
    int channels, rate, bits, opens;
  };
  for (const Case& c : {Case{0, 44100, 16, 0},
                        {2, 0, 16, 0},
                        {2, 44100, 24, 0},
                        {2, 44100, 0, 0},
                        {6, 44100, 16, 1},
                        {1, 96000, 16, 1}}) {
    test::WriteBytes(path, test::WavBytes(c.channels, c.rate, c.bits, "abcdefgh"));
    AudioSource source;
    EXPECT_EQ(c.opens, source.Open(path.c_str())) << c.channels << ' ' << c.bits;
    EXPECT_TRUE(!c.opens || c.rate % 65536 == source.sampleRate) << "16 bits are looked at";
  }
  const std::string good = test::WavBytes(2, 44100, 16, "abcd");
  for (std::size_t size = 0; size < 44; ++size) {
    test::WriteBytes(path, good.substr(0, size));
    EXPECT_EQ(0, AudioSource().Open(path.c_str())) << size;
  }
}

}  // namespace
}  // namespace kwo
