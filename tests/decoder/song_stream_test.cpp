#include "decoder/song_stream.h"

#include <gtest/gtest.h>

#include "tests/decoder/bytes_stream.h"
#include "tests/support.h"

namespace kwo {
namespace {

using namespace std::string_literals;
using test::LittleEndian;

// The song in a file of these bytes.
struct Song : SongStream {
  test::BytesStream file;

  explicit Song(const std::string& bytes) : file(bytes) { Open(&file); }
  ~Song() override { Shutdown(); }
};

// What is shown of a file, which has the length that is told when it is opened.
std::string Shown(const std::string& bytes, std::size_t piece = 5000) {
  Song song(bytes);
  const std::int64_t length = song.Control(CTL_LENGTH);
  const std::string shown = test::ReadAll(song, piece);
  EXPECT_EQ(length, shown.size());
  return shown;
}

std::string Noise(std::size_t count) {
  return test::Raw16(test::Noise(count)).substr(0, count);
}

// 417 bytes of MPEG-1 Layer III: 128 kbit/s, 44,100 Hz, stereo, no CRC.  Its granules begin
// `mainDataBegin` bytes in front of it.
std::string Frame(int mainDataBegin = 0, char side = 's') {
  std::string frame = "\xff\xfb\x90\0"s + std::string(32, side) + std::string(381, 'm');
  frame[4] = static_cast<char>(mainDataBegin >> 1);
  frame[5] = static_cast<char>(mainDataBegin << 7 | (side & 0x7f));
  return frame;
}

// Told apart by their last bytes.
std::string Frames(int count, std::string frame = Frame()) {
  std::string bytes;
  for (int i = 0; i < count; ++i) {
    frame.back() = static_cast<char>('a' + i % 26);
    bytes += frame;
  }
  return bytes;
}

std::string Id3v2(const std::string& body, bool footer = false) {
  std::string rest{4, 0, footer ? '\x10' : '\0'};
  for (int shift : {21, 14, 7, 0}) rest += static_cast<char>(body.size() >> shift & 127);
  return "ID3" + rest + body + (footer ? "3DI" + rest : "");
}

std::string Ape(std::uint32_t size, bool header, std::uint32_t told = 0) {
  const std::string items = LittleEndian(size, 4) + "\0\0\0\0Cover\0"s + Noise(size);
  const auto edge = [&](std::uint32_t flags) {
    const auto bytes = told ? told : static_cast<std::uint32_t>(items.size() + 32);
    return "APETAGEX" + LittleEndian(2000, 4) + LittleEndian(bytes, 4) + LittleEndian(1, 4) +
           LittleEndian(flags | (header ? 1u << 31 : 0), 4) + "\0\0\0\0\0\0\0\0"s;
  };
  return (header ? edge(1u << 29) : "") + items + edge(0);
}

// Shown of a frame that refers to more than the 0 or 381 bytes in front of it.
const std::string kSilentFrame = Frame(0, 0), kSilentFrame381 = Frame(381, 0);
const std::string kFrameAt48000 = "\xff\xfb\x94" + std::string(381, 0);
const std::string kFreeFormat = "\xff\xfb\0"s + std::string(497, 'f');
// Nothing confirms a row of these, as pictures may have them: 417 is no multiple of 13.
const std::string kFalseHeader = "\xff\xfb\x90ten bytes.";
const std::string kUtf16Title = Id3v2("TIT2\0\0\0\x0f\0\0\x01\xff\xfeG\0\xff\0\xfe\xff"s);
const std::string kId3v1 = "TAG" + Noise(125);
const std::string kLyrics1 = "LYRICSBEGINla la \xff\xfb\x90 la" + Frame() + "LYRICSEND";
const std::string kLyrics2 = "LYRICSBEGININD0000200LYR00417" + Frame() + "000446LYRICS200";

TEST(SongStream, ShowsTheSongWithoutAnyTagsInPiecesOfAnySize) {
  const std::string fronts[] = {
      "",
      kUtf16Title + Id3v2(Frames(3000, kFalseHeader)),
      Id3v2("\0\0\0\0\0"s, true),
      Id3v2(Noise(200000) + Frames(9)),
      Ape(500, true),
  };
  const std::string backs[] = {
      "",
      Ape(100000, false),
      kLyrics1 + kId3v1,
      Ape(50, true) + kLyrics2 + kId3v1,
      kLyrics2 + Ape(5000, false) + kId3v1,
      kId3v1 + Ape(20, true),
      Ape(100000, true) + "TAG+" + std::string(223, 'x') + kId3v1,
      Id3v2(Frames(60), true),
      std::string(9000, 0),
  };
  for (const char* name : {"joint128.mp3", "layer2.mp2", "mono8.mp3", "vbr-lsf.mp3"}) {
    const std::string song = test::ReadBytes(test::DataFile(name));
    for (const auto& front : fronts)
      for (const auto& back : backs)
        ASSERT_TRUE(Shown(front + song + back, 1 + (front.size() + back.size()) % 9001) == song)
            << name << " tags of " << front.size() << " and " << back.size();
  }
}

TEST(SongStream, OpeningReadsALittleOfAnySong) {
  Song opened(Id3v2(Noise(16000000)) + Frames(20000) + Ape(100000, true) + kId3v1);
  EXPECT_LT(opened.file.bytesRead, 200000);
  EXPECT_EQ(20000 * 417, opened.Control(CTL_LENGTH));
}

TEST(SongStream, IsFoundAmongRubbishCutFramesAndTagsThatLie) {
  const std::string song = Frames(50);
  std::vector<std::string> files = {
      "ID3\3\0\0\x7f\x7f\x7f\x7f"s + song,
      "ID3\3\0\0\x80\x80\x80\x80"s + song,
      "ID3\3\0\0\0\0\0\5"s + kUtf16Title.substr(10) + song,
      Frames(20000, kFalseHeader) + song,
      Frames(2, kFreeFormat) + song,                       // two prove nothing,
      Frames(2, kFreeFormat) + "xy" + kFreeFormat + song,  // nor do three at two distances
      std::string((2 << 20) - 1, 0) + song,
      song + Ape(100, false, 0xffffffff),
      song + Ape(100, false, 20000),
      song + "APETAGEX" + LittleEndian(2000, 4) + LittleEndian(20000, 4) + std::string(16, 0),
      song + "LYRICSBEGIN009999LYRICS200",
      song + "3DI\4\0\0\0\0\x10\x10"s,
  };
  for (std::size_t count : {1, 30000, 1000000})
    for (const auto& front : {Noise(count), std::string(count, 0), std::string(count, '\xff')})
      files.push_back(front + song);
  for (std::size_t cut : {1, 4, 200, 413, 416}) {
    files.push_back(Frame().substr(cut) + song);
    files.push_back(song + Frame().substr(0, cut));
    files.push_back(song + Frame().substr(0, cut) + kId3v1);
  }
  for (const auto& file : files) EXPECT_TRUE(Shown(file) == song) << &file - files.data();
  EXPECT_EQ(Frame(), Shown(Frame())) << "the song's end confirms a single frame";
  const std::string lost = std::string(2 << 20, 0) + song;
  EXPECT_TRUE(Shown(kUtf16Title + lost + kId3v1) == lost) << "all as it stands";
}

TEST(SongStream, IsEmptyWithoutFramesAndInFreeFormat) {
  const std::string song =
      Frames(10, "\xff\xfb\2" + std::string(498, 'f') + Frames(2, kFreeFormat));
  for (const auto& front : {""s, Ape(9, true), kUtf16Title, std::string(1000, 0) + song})
    for (const auto& back : {""s, kId3v1, song + kId3v1}) EXPECT_EQ("", Shown(front + back));
}

TEST(SongStream, WhatLiesBetweenItsFramesIsZeros) {
  for (const auto& gap : {kId3v1 + Id3v2(Frames(9000, kFalseHeader)), Ape(40000, true) + kId3v1,
                          Frames(2, kFrameAt48000)})
    EXPECT_TRUE(Shown(Frames(9) + gap + Frames(60)) ==
                Frames(9) + std::string(gap.size(), 0) + Frames(60));
  // The frame in front of something that is no header and no tag has lost its end.
  EXPECT_TRUE(Shown(Frames(10) + "junk \xff\xfb\x90\x40 more" + Frames(60)) ==
              Frames(9) + std::string(417 + 14, 0) + Frames(60));
  // Where no other frame of its kind follows for long, the song ends.
  Song noise(Frames(10) + Noise(3 << 20) + Frames(60));
  EXPECT_TRUE(test::ReadAll(noise) == Frames(9));
  EXPECT_EQ(9 * 417, noise.Control(CTL_LENGTH));
  Song other(Frames(20) + Frames(200, kFrameAt48000));
  EXPECT_TRUE(test::ReadAll(other) == Frames(20));
}

TEST(SongStream, FrameWithoutTheBytesItRefersToIsSilentAndKeepsItsOwn) {
  // 381 bytes of main data a frame: the second frame lacks some, the third none.
  EXPECT_EQ(kSilentFrame + kSilentFrame381 + Frame(511) + Frame(100),
            Shown(Frame(400) + Frame(500) + Frame(511) + Frame(100)));
  EXPECT_EQ(Frame() + Frame(381), Shown(Frame() + Frame(381)));
  EXPECT_EQ(Frame() + kSilentFrame381, Shown(Frame() + Frame(382)));
  // A lost frame in the middle takes the bytes with it.
  const std::string lost = 'x' + Frame().substr(1);
  EXPECT_EQ(Frame() + std::string(2 * 417, 0) + kSilentFrame + Frame(381) + Frame(5),
            Shown(Frame() + Frame() + lost + Frame(381) + Frame(381) + Frame(5)));
}

TEST(SongStream, SeekGoesToTheFrameThatBeginsThereOrBehind) {
  Song song(kUtf16Title + Frames(100));
  constexpr std::pair<int, int> kSeeks[] = {{4, 0},         {5, 417},      {417, 417},
                                            {421, 417},     {422, 834},    {41287, 41283},
                                            {41288, 41700}, {50000, 41700}};
  for (const auto& [target, reached] : kSeeks) {
    EXPECT_EQ(reached, song.Seek(target)) << target;
    song.Seek(41700);
  }
  // A frame that was silent for want of the one before is whole behind it.
  Song again(Frame() + Frame(381));
  again.Seek(417);
  EXPECT_EQ(kSilentFrame, test::ReadAll(again));
  again.Seek(0);
  EXPECT_EQ(Frame() + Frame(381), test::ReadAll(again));
}

}  // namespace
}  // namespace kwo
