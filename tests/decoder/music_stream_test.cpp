#include "decoder/music_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

#include "decoder/song_stream.h"
#include "tests/decoder/bytes_stream.h"
#include "tests/support.h"

namespace kwo {
namespace {

using test::DataFile;
using test::ReadBytes;

template <typename Stream>
std::vector<float> ReadSamples(Stream& stream, std::size_t count = 1 << 24) {
  std::vector<float> all, part(30000);
  while (all.size() < count) {
    const auto wanted = std::min(part.size(), count - all.size());
    const int got = stream.Read(part.data(), static_cast<int>(wanted) * 4) / 4;
    if (got == 0) break;
    all.insert(all.end(), part.begin(), part.begin() + got);
  }
  return all;
}

// The whole chain over the bytes of a file.
struct Music {
  std::string bytes;
  test::BytesStream file;
  std::unique_ptr<SongStream> song = std::make_unique<SongStream>();
  std::unique_ptr<MpegDecoder> decoder = std::make_unique<MpegDecoder>();
  MusicStream stream;
  int rate = 0, channels = 0, result;

  explicit Music(const std::string& whole) : bytes(whole), file(bytes.data(), bytes.size()) {
    song->Open(&file);
    result = stream.Open(decoder.get(), song.get(), &rate, &channels, 0, 0);
  }
  ~Music() {
    stream.Shutdown();
    decoder->Shutdown();
    song->Shutdown();
  }
  std::int64_t Length() { return stream.Control(CTL_LENGTH) / 4 / channels; }
  std::int64_t Seek(std::int64_t sample) {
    return stream.Seek(sample * channels * 4) / 4 / channels;
  }
  std::vector<float> Read(std::size_t samples = 1 << 20) {
    return ReadSamples(stream, samples * static_cast<std::size_t>(channels));
  }
};

std::vector<float> DecodeWhole(const std::string& bytes) {
  test::BytesStream file(bytes.data(), bytes.size());
  auto decoder = std::make_unique<MpegDecoder>();
  int rate, channels;
  decoder->Open(&file, &rate, &channels);
  auto all = ReadSamples(*decoder);
  decoder->Shutdown();
  return all;
}

std::vector<float> Part(const std::vector<float>& all, std::size_t from, std::size_t count) {
  return {all.begin() + static_cast<long>(from), all.begin() + static_cast<long>(from + count)};
}

// Puts a frame that tells of the song in front of constant-rate frames of joint128.mp3, as LAME
// does.
std::string WithInfoFrame(const std::string& song, int frames, int bytes, int delay, int padding,
                          const char* tag = "Info", const char* encoder = "LAME3.100") {
  std::string frame = "\xff\xfb\x90\x44" + std::string(413, 0);
  const auto put = [&](std::size_t at, const std::string& text) {
    frame.replace(at, text.size(), text);
  };
  const auto bigEndian = [](int value) {
    std::string text = test::LittleEndian(static_cast<std::uint32_t>(value), 4);
    std::reverse(text.begin(), text.end());
    return text;
  };
  put(36, tag + std::string(3, 0) + "\3" + bigEndian(frames) + bigEndian(bytes));
  put(52, encoder);
  put(52 + 21, bigEndian(delay << 12 | padding).substr(1));
  return frame + song;
}

class InfoFrame : public testing::Test {
 protected:
  const std::string song = ReadBytes(DataFile("joint128.mp3"));
  const int frames = 116;
  const int bytes = static_cast<int>(song.size()) + 417;
};

TEST_F(InfoFrame, TellsWhereTheMusicBeginsAndEnds) {
  const std::string file = WithInfoFrame(song, frames, bytes, 576, 1000);
  const auto whole = DecodeWhole(file);
  Music music(file);
  const std::size_t samples = 116 * 1152 - 576 - 1000;
  EXPECT_EQ(static_cast<std::int64_t>(samples), music.Length());
  EXPECT_EQ(Part(whole, 2 * (1152 + 576 + 529), 2 * samples), music.Read());
  EXPECT_EQ(music.Length() * 8, music.stream.Control(CTL_READ_POSITION));
  for (const char* encoder : {"Lavc58.54", "Lavf58.29"})
    EXPECT_EQ(static_cast<std::int64_t>(samples),
              Music(WithInfoFrame(song, frames, bytes, 576, 1000, "Info", encoder)).Length());
}

TEST_F(InfoFrame, EndHoldsOnlyForASongOfTheBytesThatItTells) {
  const auto told = std::int64_t{116} * 1152 - 576 - 1000;
  for (int off : {-417, 417})
    EXPECT_EQ(told, Music(WithInfoFrame(song, frames, bytes + off, 576, 1000)).Length());
  for (int off : {-418, 418, 9000}) {
    const std::string file = WithInfoFrame(song, frames, bytes + off, 576, 1000);
    const auto whole = DecodeWhole(file);
    Music music(file);
    EXPECT_EQ(117 * 1152 - 1152 - 576 - 529, music.Length()) << "what the bytes make";
    EXPECT_EQ(Part(whole, 2 * 2257, whole.size() - 2 * 2257), music.Read());
  }
}

TEST_F(InfoFrame, ThatTellsNothingLeavesAllToBePlayed) {
  const std::string silent[] = {
      WithInfoFrame(song, frames, bytes, 0, 0),
      WithInfoFrame(song, frames, bytes, 576, 1000, "Info", "GOGO3.100"),
      WithInfoFrame(song, frames, bytes, 576, 1000, "Isnt"),
  };
  for (const auto& file : silent) EXPECT_EQ(DecodeWhole(file), Music(file).Read());
  // One of the two is enough.
  EXPECT_EQ(116 * 1152 - 5, Music(WithInfoFrame(song, frames, bytes, 0, 5)).Length());
}

TEST_F(InfoFrame, OfAnotherRateDoesNotLeadSeeksAstray) {
  std::string file = WithInfoFrame(song, frames, bytes + 209, 576, 1000);
  file[2] = '\xb0';  // 192 kbit/s, 626 bytes
  file.insert(417, 209, '\0');
  const auto whole = Music(file).Read();
  Music music(file);
  for (int sample : {20000, 60000, 100000}) {
    EXPECT_EQ(sample, music.Seek(sample));
    EXPECT_EQ(Part(whole, 2 * static_cast<std::size_t>(sample), 20000), music.Read(10000));
  }
}

TEST(MusicStream, HasTheLengthThatWasEncoded) {
  // Three seconds were given to the encoder.
  EXPECT_EQ(3 * 44100, Music(ReadBytes(DataFile("vbr.mp3"))).Length());
  EXPECT_EQ(3 * 22050, Music(ReadBytes(DataFile("vbr-lsf.mp3"))).Length());
  EXPECT_EQ(3u * 22050 * 2, Music(ReadBytes(DataFile("vbr-lsf.mp3"))).Read().size());
}

TEST(MusicStream, SeeksEqualStraightDecoding) {
  std::mt19937 random(5);
  // How many half frames beside its place a seek may land; none where all frames have one size.
  constexpr std::pair<const char*, long> kSongs[] = {
      {"joint128.mp3", 0}, {"joint320.mp3", 0}, {"lsf22.mp3", 0},  {"mono8.mp3", 0},
      {"layer2.mp2", 2},   {"vbr.mp3", 8},      {"vbr-lsf.mp3", 8}};
  for (const auto& [name, most] : kSongs) {
    Music music(ReadBytes(DataFile(name)));
    const auto straight = music.Read();
    const long channels = music.channels, samples = music.Length();
    for (int i = 0; i < 150; ++i) {
      const long sample = static_cast<long>(random() % static_cast<unsigned>(samples - 6000));
      ASSERT_EQ(sample, music.Seek(sample));
      const auto part = music.Read(2000);
      bool found = false;
      for (long halves = -most; halves <= most && !found; ++halves) {
        const long at = (sample + halves * 576) * channels;
        found = at >= 0 && std::equal(part.begin(), part.end(), straight.begin() + at);
      }
      ASSERT_TRUE(found) << name << " sample " << sample;
    }
  }
}

TEST(MusicStream, SongOfVariableRateEndsWithItsMusicAfterAnySeek) {
  const std::string bytes = ReadBytes(DataFile("vbr.mp3"));
  Music music(bytes);
  const auto straight = music.Read();
  for (int sample = 3000; sample < 120000; sample += 7919) {
    music.Seek(sample);
    const auto rest = music.Read();
    ASSERT_GE(rest.size(), 4000u) << sample;
    EXPECT_TRUE(std::equal(rest.end() - 4000, rest.end(), straight.end() - 4000)) << sample;
  }
}

TEST(MusicStream, SeekToTheEndOrBehindItEndsTheMusic) {
  for (const char* name : {"joint128.mp3", "vbr.mp3", "layer2.mp2"}) {
    Music music(ReadBytes(DataFile(name)));
    const std::int64_t length = music.Length();
    for (const std::int64_t sample : {length, length + 100000}) {
      EXPECT_EQ(length, music.Seek(sample));
      EXPECT_TRUE(music.Read(100).empty());
      music.Seek(4000);
      EXPECT_FALSE(music.Read(100).empty());
    }
  }
}

// A burst is what a false sync or a frame without its reservoir gives.
TEST(MusicStream, CutSongsNeverShriek) {
  std::mt19937 random(7);
  for (const char* name : {"joint128.mp3", "vbr.mp3", "lsf22.mp3", "layer2.mp2"}) {
    const std::string good = ReadBytes(DataFile(name));
    const auto loudest = [](const std::vector<float>& values) {
      float most = 0;
      for (float value : values) most = std::max(most, std::fabs(value));
      return most;
    };
    const float whole = loudest(Music(good).Read());
    for (int i = 0; i < 40; ++i) {
      const std::size_t from = random() % (good.size() / 2);
      const std::size_t count = 3000 + random() % (good.size() / 2 - 3000);
      const std::string hole = good.substr(0, from) + good.substr(from + 1 + random() % 2000);
      std::string flipped = hole;
      for (int flips = 0; flips < 1 << i % 12; ++flips) flipped[random() % hole.size()] ^= 0x40;
      Music damaged(flipped);
      EXPECT_LT(damaged.Read().size(), 1u << 21) << "it ends";
      if (damaged.result == 0) damaged.Seek(static_cast<std::int64_t>(random() % 100000));
      EXPECT_LT(damaged.Read().size(), 1u << 21);
      for (const auto& cut : {good.substr(from), good.substr(0, count), hole})
        ASSERT_LE(loudest(Music(cut).Read()), 1.25f * whole) << name << " " << from << " " << count;
    }
  }
}

TEST(MusicStream, JoinedSongsArePlayedWhole) {
  const std::string song = ReadBytes(DataFile("vbr.mp3"));
  const auto one = Music(song).Read();
  const auto both = Music(song + "TAG" + std::string(125, ' ') + song).Read();
  EXPECT_EQ(Part(one, 0, one.size() - 4000), Part(both, 0, one.size() - 4000));
  const auto second = std::search(both.begin() + static_cast<long>(one.size()), both.end(),
                                  one.end() - 20000, one.end() - 4000);
  EXPECT_NE(both.end(), second);
}

}  // namespace
}  // namespace kwo
