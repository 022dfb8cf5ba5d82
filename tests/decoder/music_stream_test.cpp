#include "decoder/music_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "decoder/song_stream.h"
#include "tests/decoder/bytes_stream.h"
#include "tests/support.h"

namespace kwo {
namespace {

using namespace std::string_literals;
using test::DataFile;
using test::LittleEndian;
using test::ReadAll;
using test::ReadBytes;
using Samples = std::vector<float>;

// The whole chain over the bytes of a file.
struct Music {
  test::BytesStream file;
  SongStream song;
  MpegDecoder decoder;
  MusicStream stream;
  int rate = 0, channels = 0, result;

  explicit Music(const std::string& bytes) : file(bytes) {
    song.Open(&file);
    result = stream.Open(&decoder, &song, &rate, &channels, 0, 0);
  }
  ~Music() { stream.Shutdown(); }
  long Length() { return stream.Control(CTL_LENGTH) / 4 / channels; }
  long Seek(long sample) { return stream.Seek(sample * channels * 4) / 4 / channels; }
  Samples Read(int most = 1 << 20) { return ReadAll<Samples>(stream, 30000, most * channels); }
  // What the decoder makes of all frames.
  Samples Decode() {
    decoder.Open(&song, &rate, &channels);
    return ReadAll<Samples>(decoder);
  }
};

// Puts a frame that tells of the song in front of joint128.mp3, as LAME does.  The song has 116
// frames of one size; `moreBytes` than it has are told.
std::string WithInfoFrame(int moreBytes = 0, int delay = 576, int padding = 1000,
                          const char* tag = "Info", const char* encoder = "LAME3.100") {
  const std::string song = ReadBytes(DataFile("joint128.mp3"));
  const auto told = static_cast<std::uint32_t>(417 + song.size() + moreBytes);
  const auto reversed = [](std::string text) { return std::string(text.rbegin(), text.rend()); };
  const std::string counts = LittleEndian(told, 4) + LittleEndian(116, 4) + "\3\0\0\0"s;
  std::string frame = "\xff\xfb\x90\x44" + std::string(32, 0) + tag + reversed(counts) + encoder +
                      std::string(12, 0) + reversed(LittleEndian(delay << 12 | padding, 3));
  frame.resize(417);
  return frame + song;
}

TEST(MusicStream, BeginsAndEndsWhereTheInfoFrameTellsIfItKnowsTheSong) {
  constexpr int kBegin = 1152 + 576 + 529, kLength = 116 * 1152 - 576 - 1000;
  std::string faster = WithInfoFrame(209);
  faster[2] = '\xb0';  // 192 kbit/s, 626 bytes
  faster.insert(417, 209, '\0');
  const struct {
    std::string file;
    int begin, length, seek;  // a length of 0 is what the bytes make
  } kRows[] = {
      {WithInfoFrame(), kBegin, kLength, 100},
      {WithInfoFrame(-418), kBegin, 0, 30000},
      {WithInfoFrame(418), kBegin, 0, 70000},
      {WithInfoFrame(0, 0, 0), 0, 0, 90000},
      {WithInfoFrame(0, 0, 5), 1152 + 529, 116 * 1152 - 5, 110000},
      {WithInfoFrame(0, 576, 1000, "Isnt"), 0, 0, 10000},
      {WithInfoFrame(0, 576, 1000, "Info", "GOGO3.100"), 0, 0, 20000},
      {WithInfoFrame(-417, 576, 1000, "Info", "Lavc58.54"), kBegin, kLength, 30000},
      {WithInfoFrame(417, 576, 1000, "Info", "Lavf58.29"), kBegin, kLength, 40000},
      {faster, kBegin, kLength, 20000},
      {faster, kBegin, kLength, 100000},
      // Three seconds were given to the encoder.
      {ReadBytes(DataFile("vbr.mp3")), 1152 + 576 + 529, 3 * 44100, 0},
      {ReadBytes(DataFile("vbr-lsf.mp3")), 576 + 576 + 529, 3 * 22050, 0},
  };
  for (const auto& row : kRows) {
    const Samples whole = Music(row.file).Decode();
    const auto begin = whole.begin() + 2 * row.begin;
    Music music(row.file);
    EXPECT_EQ(row.length ? row.length : 117 * 1152 - row.begin, music.Length()) << &row - kRows;
    EXPECT_TRUE(music.Read() == Samples(begin, row.length ? begin + 2 * row.length : whole.end()))
        << &row - kRows;
    EXPECT_EQ(row.seek, music.Seek(row.seek));
    const auto place = begin + 2 * row.seek;
    EXPECT_TRUE(music.Read(10000) == Samples(place, place + 20000)) << &row - kRows;
  }
}

TEST(MusicStream, SeeksEqualStraightDecodingToTheEndAndNoFurther) {
  std::mt19937 random(5);
  // How many half frames beside its place a seek may land; none where all frames have one size.
  constexpr std::pair<const char*, int> kSongs[] = {
      {"joint128.mp3", 0}, {"joint320.mp3", 0}, {"lsf22.mp3", 0},  {"mono8.mp3", 0},
      {"layer2.mp2", 2},   {"vbr.mp3", 8},      {"vbr-lsf.mp3", 8}};
  for (const auto& [name, most] : kSongs) {
    Music music(ReadBytes(DataFile(name)));
    const auto straight = music.Read();
    const auto length = music.Length();
    for (int i = 0; i < 150; ++i) {
      if (i % 50 == 0) {
        EXPECT_EQ(length, music.Seek(length + 1000 * i));
        EXPECT_TRUE(music.Read(100).empty());
      }
      const long sample = static_cast<long>(random() % (length - 9000));
      ASSERT_EQ(sample, music.Seek(sample));
      const auto part = music.Read(2000);
      ASSERT_EQ(2000 * music.channels, part.size()) << name << " sample " << sample;
      bool found = false;
      for (int halves = -most; halves <= most && !found; ++halves) {
        const long at = (sample + halves * 576) * music.channels;
        found = at >= 0 && std::equal(part.begin(), part.end(), straight.begin() + at);
      }
      ASSERT_TRUE(found) << name << " sample " << sample;
      // Half a frame beside its place, the lower rate's end is half a frame beside its own.
      if (i % 10 > 0 || name == "vbr-lsf.mp3"s) continue;
      const auto rest = music.Read();
      ASSERT_GE(rest.size(), 4000) << name;
      ASSERT_TRUE(std::equal(rest.end() - 4000, rest.end(), straight.end() - 4000)) << name;
    }
  }
}

// A burst is what a false sync or a frame without its reservoir gives.
TEST(MusicStream, CutSongsNeverShriekAndDamagedOnesEnd) {
  std::mt19937 random(7);
  const auto loudest = [](const std::string& bytes) {
    float most = 0;
    for (float value : Music(bytes).Read()) most = std::max(most, std::fabs(value));
    return most;
  };
  for (const char* name : {"joint128.mp3", "vbr.mp3", "lsf22.mp3", "layer2.mp2"}) {
    const std::string good = ReadBytes(DataFile(name));
    const float whole = loudest(good);
    for (int i = 0; i < 40; ++i) {
      const std::size_t from = random() % (good.size() / 2);
      const std::size_t count = 3000 + random() % (good.size() / 2 - 3000);
      std::string hole = good.substr(0, from) + good.substr(from + 1 + random() % 2000);
      for (const auto& cut : {good.substr(from), good.substr(0, count), hole})
        ASSERT_LE(loudest(cut), 1.25f * whole) << name << " " << from << " " << count;
      for (int flips = 0; flips < 1 << i % 12; ++flips) hole[random() % hole.size()] ^= 0x40;
      Music damaged(hole);
      if (damaged.result == 0 && i % 2) damaged.Seek(static_cast<long>(random() % 100000));
      EXPECT_LT(damaged.Read().size(), 1 << 21);
    }
  }
}

TEST(MusicStream, JoinedSongsArePlayedWhole) {
  const std::string song = ReadBytes(DataFile("vbr.mp3"));
  const Samples one = Music(song).Read();
  const Samples both = Music(song + "TAG" + std::string(125, ' ') + song).Read();
  EXPECT_TRUE(std::equal(one.begin(), one.end() - 4000, both.begin()));
  EXPECT_NE(both.end(), std::search(both.begin() + static_cast<long>(one.size()), both.end(),
                                    one.end() - 20000, one.end() - 4000));
}

}  // namespace
}  // namespace kwo
