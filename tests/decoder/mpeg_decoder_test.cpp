#include "decoder/mpeg_decoder.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/decoder/opened_song.h"

namespace kwo {
namespace {

using test::DataFile;

using Song = OpenedSong;

// An MPEG-1 Layer III header of 128 kbit/s at 44,100 Hz, stereo, without CRC.
std::string Header(int bitRateIndex = 9, int rateIndex = 0, int mode = 0) {
  return {'\xff', '\xfb', static_cast<char>(bitRateIndex << 4 | rateIndex << 2),
          static_cast<char>(mode << 6)};
}

// A frame whose granules hold no values.
std::string SilentFrame() {
  return Header() + std::string(413, 0);
}

std::string SilentFrames(int count) {
  std::string bytes;
  for (int i = 0; i < count; ++i) bytes += SilentFrame();
  return bytes;
}

struct File {
  test::TempFolder folder;
  std::string path = folder.File("song.mp3");
  explicit File(const std::string& bytes) { test::WriteBytes(path, bytes); }
};

TEST(MpegDecoder, ReckonsLengthAndFramePlaces) {
  std::string bytes = SilentFrames(20);
  bytes.resize(4000000);
  File file(bytes);
  Song song(file.path);
  ASSERT_EQ(0, song.result);
  EXPECT_EQ(44100, song.rate);
  EXPECT_EQ(2, song.channels);
  EXPECT_EQ(88197120, song.decoder->Control(CTL_LENGTH));
  EXPECT_EQ(9216000, song.decoder->Seek(9216000));
  EXPECT_EQ(417959, song.file.Control(CTL_READ_POSITION));
  EXPECT_EQ(88197120, song.decoder->Seek(99999999));
}

TEST(MpegDecoder, FindsTheFirstHeaderBehindATagOrDoesNotOpen) {
  // Free format and Layer I without CRC are passed over.
  const std::pair<std::string, int> kFronts[] = {{std::string(32768 - 4, 'x'), 0},
                                                 {std::string(32768 - 3, 'x'), -1},
                                                 {Header(0) + std::string(200, 0), 0},
                                                 {"\xff\xff", 0},
                                                 {"\xff\xff\x90" + std::string(40000, 0), -1}};
  for (const auto& [front, result] : kFronts)
    EXPECT_EQ(result, Song(File(front + SilentFrames(5)).path).result) << front.size();
  for (const std::string& hopeless : {std::string(), std::string(100000, 0), std::string("\xff")})
    EXPECT_EQ(-1, Song(File(hopeless).path).result);
  const test::TempFolder folder;
  for (const std::string& path : {folder.Path(), folder.File("absent.mp3")})
    EXPECT_EQ(-1, Song(path).result);
}

TEST(MpegDecoder, SkipsFramesOfAnotherKindAsNoise) {
  const std::string other = Header(9, 1) + std::string(380, 0);
  const std::string mono = Header(9, 0, 3) + std::string(413, 0);
  const std::string joint = Header(9, 0, 1) + std::string(413, 0);
  File file(SilentFrame() + other + SilentFrame() + mono + joint + SilentFrame());
  Song song(file.path);
  // Four frames and the tail.
  EXPECT_EQ(5u * 2 * kFrameSamples, song.ReadAll().size());
  EXPECT_EQ(1, song.decoder->Control(CTL_POSITION_AT_END));
  EXPECT_EQ(1, song.decoder->Control(CTL_READ_SHORT));
}

TEST(MpegDecoder, PieceOfAReadDoesNotMatter) {
  for (const char* name : {"joint128.mp3", "lsf22.mp3", "layer2.mp2", "mono8.mp3", "vbr.mp3"}) {
    const auto whole = Song(DataFile(name)).ReadAll(100000);
    EXPECT_GT(whole.size(), 20000u);
    for (int piece : {1000, 2304, 4609}) EXPECT_EQ(whole, Song(DataFile(name)).ReadAll(piece));
  }
}

TEST(MpegDecoder, PeekConsumesNothingAndNeverCrossesAFrame) {
  Song song(DataFile("joint128.mp3"));
  const auto expected = Song(DataFile("joint128.mp3")).ReadAll();
  std::vector<float> peeked(5000), read(2000);
  song.decoder->Read(read.data(), 8000);
  EXPECT_EQ(9216 - 8000, song.decoder->RawPeek(peeked.data(), 20000));
  song.decoder->Read(read.data(), 1216);
  EXPECT_EQ(peeked[0], read[0]);
  EXPECT_EQ(expected[2000], read[0]);
  EXPECT_EQ(9216, song.decoder->RawPeek(peeked.data(), 20000));
}

TEST(MpegDecoder, LengthHeaderWithoutItsFieldsStillGivesALength) {
  const std::string bytes = test::ReadBytes(DataFile("vbr.mp3"));
  const std::size_t at = bytes.find("Xing");
  ASSERT_NE(std::string::npos, at);
  for (int flags = 0; flags < 16; ++flags) {
    std::string changed = bytes;
    changed[at + 7] = static_cast<char>(flags);
    File file(changed);
    Song song(file.path);
    ASSERT_EQ(0, song.result);
    const auto length = song.decoder->Control(CTL_LENGTH);
    EXPECT_GT(length, 0);
    const auto middle = length / 2 / song.FrameBytes() * song.FrameBytes();
    EXPECT_EQ(middle, song.decoder->Seek(middle));
    EXPECT_GT(song.file.Control(CTL_READ_POSITION), 0);
    EXPECT_FALSE(song.ReadAll().empty());
  }
}

TEST(MpegDecoder, SeekByTheLengthHeaderGoesBetweenItsHundredPoints) {
  const std::string bytes = test::ReadBytes(DataFile("vbr.mp3"));
  const std::size_t toc = bytes.find("Xing") + 16;
  const auto point = [&](int percent) {
    return percent < 100 ? static_cast<unsigned char>(bytes[toc + std::size_t(percent)]) : 256;
  };
  Song song(DataFile("vbr.mp3"));
  for (int frame : {7, 58, 100, 115}) {
    song.decoder->Seek(std::int64_t{frame} * song.FrameBytes());
    const double percent = 100.0 * frame / 116;
    const int whole = static_cast<int>(percent);
    const double share =
        (point(whole) + (point(whole + 1) - point(whole)) * (percent - whole)) / 256;
    EXPECT_NEAR(share * static_cast<double>(bytes.size()),
                static_cast<double>(song.file.Control(CTL_READ_POSITION)), 1)
        << frame;
  }
}

TEST(MpegDecoder, SeekWithinTheFrameInHandMovesNoFile) {
  Song song(DataFile("joint128.mp3"));
  const auto whole = Song(DataFile("joint128.mp3")).ReadAll();
  float value;
  const auto place = song.file.Control(CTL_READ_POSITION);
  EXPECT_EQ(4000, song.decoder->Seek(4000));
  song.decoder->Read(&value, 4);
  EXPECT_EQ(whole[1000], value);
  EXPECT_EQ(place, song.file.Control(CTL_READ_POSITION));
  // A frame that went straight to the reader is not in hand: the seek decodes it again.
  std::vector<float> frames(4 * 2304);
  song.decoder->Seek(0);
  song.decoder->Read(frames.data(), 3 * 9216);
  EXPECT_EQ(2 * 9216 + 400, song.decoder->Seek(2 * 9216 + 400));
  EXPECT_NE(place, song.file.Control(CTL_READ_POSITION));
}

TEST(MpegDecoder, LowerRatesAndIntegersFollowTheFullRate) {
  const auto full = Song(DataFile("joint128.mp3")).ReadAll();
  Song half(DataFile("joint128.mp3"), 0, 1);
  EXPECT_EQ(22050, half.rate);
  EXPECT_EQ(full.size() / 2, half.ReadAll().size());
  Song quarter(DataFile("joint128.mp3"), 0, 2, 1);
  EXPECT_EQ(11025, quarter.rate);
  EXPECT_EQ(full.size() / 8, quarter.ReadAll().size());
  Song integers(DataFile("joint128.mp3"), 1);
  std::vector<std::int16_t> values(full.size());
  EXPECT_EQ(static_cast<int>(full.size() * 2),
            integers.decoder->Read(values.data(), static_cast<int>(full.size() * 2)));
  for (std::size_t i = 0; i < full.size(); ++i)
    ASSERT_EQ(static_cast<int>(std::clamp(full[i], -32768.0f, 32767.0f)), values[i]);
}

TEST(MpegDecoder, SettingsReachTheSound) {
  const auto plain = Song(DataFile("joint128.mp3")).ReadAll();
  auto energy = [](const std::vector<float>& values) {
    double sum = 0;
    for (float value : values) sum += double{value} * value;
    return sum;
  };
  Song gained(DataFile("joint128.mp3"));
  std::vector<float> gains(kLines, 0.5f);
  gained.decoder->SetLineGains(gains.data());
  gained.decoder->SetEqualiserSwitch(1);
  EXPECT_NEAR(0.25, energy(gained.ReadAll()) / energy(plain), 0.01);
  Song neutral(DataFile("joint128.mp3"));
  neutral.decoder->SetEqualiserSwitch(1);
  EXPECT_EQ(plain, neutral.ReadAll());
  Song layer2(DataFile("layer2.mp2"));
  const auto before = Song(DataFile("layer2.mp2")).ReadAll();
  layer2.decoder->Control(CTL_LINE_GAINS, gains.data());
  EXPECT_NEAR(0.25, energy(layer2.ReadAll()) / energy(before), 0.02);
}

TEST(MpegDecoder, SparseFileOfThreeGigabytesKeepsItsLength) {
  File file(SilentFrames(30));
  std::filesystem::resize_file(file.path, 3000000000);
  Song song(file.path);
  ASSERT_EQ(0, song.result);
  EXPECT_NEAR(187500.0, static_cast<double>(song.decoder->Control(CTL_LENGTH)) / (8.0 * 44100), 1);
  EXPECT_EQ(60000000000, song.decoder->Seek(60000000000));
}

}  // namespace
}  // namespace kwo
