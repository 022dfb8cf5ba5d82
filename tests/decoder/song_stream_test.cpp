#include "decoder/song_stream.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "tests/decoder/bytes_stream.h"
#include "tests/support.h"

namespace kwo {
namespace {

using test::DataFile;
using test::LittleEndian;
using test::ReadBytes;

// A song as it stands in `bytes`.
struct Song {
  std::string bytes;
  test::BytesStream file;
  std::unique_ptr<SongStream> stream = std::make_unique<SongStream>();

  explicit Song(const std::string& whole) : bytes(whole), file(bytes.data(), bytes.size()) {
    stream->Open(&file);
  }
  ~Song() { stream->Shutdown(); }
  std::int64_t Length() { return stream->Control(CTL_LENGTH); }
  std::string Read(int piece = 5000) {
    std::string all, part(static_cast<std::size_t>(piece), 0);
    int got;
    while ((got = stream->Read(part.data(), piece)) > 0)
      all.append(part, 0, static_cast<std::size_t>(got));
    return all;
  }
};

std::string Shown(const std::string& bytes) {
  return Song(bytes).Read();
}

std::string Noise(std::size_t count, unsigned seed = 1) {
  return test::Raw16(test::Noise(count / 2, seed));
}

// 417 bytes of MPEG-1 Layer III: 128 kbit/s, 44,100 Hz, stereo, no CRC.  Its granules begin
// `mainDataBegin` bytes in front of it; its main data is full of `fill`.
std::string Frame(int mainDataBegin = 0, char fill = 'm', int rateField = 0) {
  std::string side(32, 's');
  side[0] = static_cast<char>(mainDataBegin >> 1);
  side[1] = static_cast<char>(mainDataBegin << 7 | 0x35);
  const int bytes = rateField == 0 ? 417 : 384;
  return std::string("\xff\xfb") + static_cast<char>(0x90 | rateField << 2) + '\0' + side +
         std::string(static_cast<std::size_t>(bytes - 36), fill);
}

std::string Frames(int count) {
  std::string bytes;
  for (int i = 0; i < count; ++i) bytes += Frame(0, static_cast<char>('a' + i % 26));
  return bytes;
}

std::string FreeFormatFrame(int bytes, bool padded) {
  std::string frame("\xff\xfb");
  frame += padded ? '\x02' : '\0';
  return frame.append(static_cast<std::size_t>(bytes - 3 + padded), 'f');
}

std::string SyncSafe(std::size_t size) {
  std::string bytes;
  for (int shift = 21; shift >= 0; shift -= 7) bytes += static_cast<char>(size >> shift & 127);
  return bytes;
}

std::string Id3v2(const std::string& body, char version = 3, bool footer = false) {
  const std::string rest =
      std::string{version, '\0', static_cast<char>(footer ? 0x10 : 0)} + SyncSafe(body.size());
  return "ID3" + rest + body + (footer ? "3DI" + rest : "");
}

std::string Id3v1() {
  return "TAG" + Noise(250).substr(0, 125);
}

std::string Ape(std::size_t size, bool header, std::uint32_t told = 0) {
  const std::string items = LittleEndian(static_cast<std::uint32_t>(size), 4) + LittleEndian(0, 4) +
                            "Cover" + std::string(1, 0) + Noise(size);
  const auto edge = [&](std::uint32_t flags) {
    const auto bytes = told ? told : static_cast<std::uint32_t>(items.size() + 32);
    return "APETAGEX" + LittleEndian(2000, 4) + LittleEndian(bytes, 4) + LittleEndian(1, 4) +
           LittleEndian(flags | (header ? 1u << 31 : 0), 4) + std::string(8, 0);
  };
  return (header ? edge(1u << 29) : "") + items + edge(0);
}

std::string Lyrics1() {
  return "LYRICSBEGINla la \xff\xfb\x90 la" + Frames(1) + "LYRICSEND";
}

std::string Lyrics2() {
  const std::string text = "LYRICSBEGININD0000200LYR00417" + Frames(1);
  return text + "000" + std::to_string(text.size()) + "LYRICS200";
}

// As a picture may be: full of headers that nothing confirms, since 417 is no multiple of 13.
std::string FalseHeaders(std::size_t count) {
  std::string bytes;
  for (std::size_t i = 0; i < count; ++i) bytes += "\xff\xfb\x90ten bytes.";
  return bytes;
}

std::string Utf16Title() {
  return "TIT2" + std::string(3, 0) + "\x0f" + std::string(2, 0) + "\x01\xff\xfeG" +
         std::string(1, 0) + "\xff" + std::string(1, 0) + "\xfe\xff";
}

TEST(SongStream, ShowsTheSongWithoutAnyTags) {
  const std::string fronts[] = {
      "",
      Id3v2(Utf16Title()),
      Id3v2("TT2" + std::string(3, 0), 2),
      Id3v2(std::string(30, 0), 4, true),
      Id3v2(Utf16Title()) + Id3v2(FalseHeaders(3000), 4),
      Id3v2(Noise(200000)),
      Ape(500, true),
  };
  const std::string backs[] = {
      "",
      Id3v1(),
      Ape(300, true),
      Ape(100000, false),
      Lyrics2() + Id3v1(),
      Lyrics1() + Id3v1(),
      Ape(50, true) + Lyrics2() + Id3v1(),
      Lyrics2() + Ape(5000, false) + Id3v1(),
      Id3v1() + Ape(20, true),
      Ape(100000, true) + "TAG+" + std::string(223, 'x') + Id3v1(),
      Id3v2(Utf16Title(), 4, true),
      std::string(9000, 0),
  };
  for (const char* name : {"joint128.mp3", "layer2.mp2", "mono8.mp3", "vbr-lsf.mp3"}) {
    const std::string song = ReadBytes(DataFile(name));
    for (std::size_t front = 0; front < std::size(fronts); ++front) {
      for (std::size_t back = 0; back < std::size(backs); ++back) {
        Song tagged(fronts[front] + song + backs[back]);
        ASSERT_EQ(static_cast<std::int64_t>(song.size()), tagged.Length())
            << name << " front " << front << " back " << back;
        ASSERT_TRUE(tagged.Read() == song) << name << " front " << front << " back " << back;
      }
    }
  }
}

TEST(SongStream, OpeningReadsALittleOfAnySong) {
  const std::string song = Id3v2(Noise(16000000)) + Frames(20000) + Ape(100000, true) + Id3v1();
  Song opened(song);
  EXPECT_LT(opened.file.bytesRead, 200000);
  EXPECT_EQ(20000 * 417, opened.Length());
}

TEST(SongStream, SizesThatLieAreIgnored) {
  const std::string song = Frames(100);
  const std::string beyond = "ID3\3" + std::string(2, 0) + "\x7f\x7f\x7f\x7f";
  const std::string noSize = "ID3\3" + std::string(2, 0) + "\x80\x80\x80\x80";
  const std::string small = "ID3\3" + std::string(5, 0) + "\5" + Utf16Title();
  for (const auto& front : {beyond, noSize, small}) EXPECT_TRUE(Shown(front + song) == song);
  // A tag that claims a part of the song takes it, and no more.
  EXPECT_TRUE(Shown("ID3\3" + std::string(2, 0) + SyncSafe(417 * 50 + 3) + song) ==
              song.substr(417 * 51));
  for (std::uint32_t told : {0xffffffffu, 200000u, 20000u})
    EXPECT_TRUE(Shown(song + Ape(100, false, told)) == song) << told;
  const std::string noItems = "APETAGEX" + LittleEndian(2000, 4) + LittleEndian(20000, 4);
  EXPECT_TRUE(Shown(song + noItems + std::string(16, 0)) == song);
  EXPECT_TRUE(Shown(song + "LYRICSBEGIN009999LYRICS200") == song);
  EXPECT_TRUE(Shown(song + "3DI\4" + std::string(4, 0) + "\x10\x10") == song);
  for (const auto& nothing : {Id3v1(), Ape(9, true), Id3v2("none") + Id3v1(), std::string()})
    EXPECT_EQ("", Shown(nothing));
}

TEST(SongStream, RubbishInFrontIsPassedOver) {
  const std::string song = Frames(50);
  for (std::size_t count : {1u, 30000u, 1000000u}) {
    EXPECT_TRUE(Shown(Noise(2 * count).substr(0, count) + song) == song) << count;
    EXPECT_TRUE(Shown(std::string(count, 0) + song) == song) << count;
    EXPECT_TRUE(Shown(std::string(count, '\xff') + song) == song) << count;
  }
  EXPECT_TRUE(Shown(FalseHeaders(20000) + song) == song);
  const std::size_t limit = 2 << 20;
  EXPECT_TRUE(Shown(std::string(limit - 1, 0) + song) == song);
  const std::string lost = std::string(limit, 0) + song;
  EXPECT_TRUE(Shown(Id3v2(Utf16Title()) + lost + Id3v1()) == lost) << "all as it stands";
}

TEST(SongStream, BeginsAndEndsWithWholeFrames) {
  const std::string song = Frames(60);
  for (std::size_t cut : {1u, 4u, 200u, 416u})
    EXPECT_TRUE(Shown(song.substr(cut)) == song.substr(417)) << cut;
  for (std::size_t cut : {1u, 3u, 413u, 416u}) {
    const std::string whole = song.substr(0, song.size() - 417);
    EXPECT_TRUE(Shown(song.substr(0, song.size() - cut)) == whole) << cut;
    EXPECT_TRUE(Shown(song.substr(0, song.size() - cut) + Id3v1()) == whole) << cut;
  }
  EXPECT_EQ(Frame(), Shown(Frame())) << "the song's end confirms a single frame";
}

TEST(SongStream, FreeFormatIsAnEmptySong) {
  std::string song;
  for (int i = 0; i < 30; ++i) song += FreeFormatFrame(500, i % 3 == 0);
  for (const auto& front : {std::string(), Id3v2(Utf16Title()), std::string(1000, 0)})
    EXPECT_EQ("", Shown(front + song + Id3v1()));
  // Two prove nothing, and neither do three at two distances.
  const std::string two = FreeFormatFrame(500, false) + FreeFormatFrame(500, false);
  EXPECT_TRUE(Shown(two + Frames(9)) == Frames(9));
  EXPECT_TRUE(Shown(two + "xy" + FreeFormatFrame(500, false) + Frames(9)) == Frames(9));
}

TEST(SongStream, WhatLiesBetweenFramesIsZeros) {
  const std::string gaps[] = {
      std::string("junk \xff\xfb\x90\x40 more"),
      Id3v1() + Id3v2(FalseHeaders(9000)),
      Ape(40000, true) + Id3v1(),
      Frame(0, 'o', 1) + Frame(0, 'o', 1),
  };
  for (const auto& gap : gaps) {
    // The frame in front of something that is no header and no tag has lost its end.
    const bool known = gap.starts_with("TAG") || gap.starts_with("APE") || gap[0] == '\xff';
    const std::string hidden =
        (known ? Frame(0, 'z') : std::string(417, 0)) + std::string(gap.size(), 0);
    EXPECT_TRUE(Shown(Frames(9) + Frame(0, 'z') + gap + Frames(60)) ==
                Frames(9) + hidden + Frames(60));
  }
  // Where nothing follows for long, the song ends.
  Song ended(Frames(10) + Noise(3 << 20) + Frames(60));
  EXPECT_TRUE(ended.Read() == Frames(9));
  EXPECT_EQ(9 * 417, ended.Length());
  std::string other;
  for (int i = 0; i < 200; ++i) other += Frame(0, 'o', 1);
  EXPECT_TRUE(Shown(Frames(20) + other) == Frames(20)) << "a song of another kind is not heard";
}

TEST(SongStream, FrameWithoutTheBytesItRefersToIsSilentAndKeepsItsOwn) {
  // 381 bytes of main data a frame: the second frame lacks some, the third none.
  const std::string bytes = Frame(400) + Frame(500) + Frame(511) + Frame(100);
  const std::string shown = Shown(bytes);
  ASSERT_EQ(bytes.size(), shown.size());
  const auto silent = [&](std::size_t frame, int mainDataBegin) {
    std::string expected = bytes.substr(frame * 417, 417);
    expected.replace(4, 32, 32, 0);
    expected[4] = static_cast<char>(mainDataBegin >> 1);
    expected[5] = static_cast<char>(mainDataBegin << 7);
    return expected;
  };
  EXPECT_EQ(silent(0, 0), shown.substr(0, 417));
  EXPECT_EQ(silent(1, 381), shown.substr(417, 417));
  EXPECT_EQ(bytes.substr(2 * 417), shown.substr(2 * 417));
  EXPECT_EQ(Frame(0) + Frame(381), Shown(Frame(0) + Frame(381)));
  EXPECT_NE(Frame(0) + Frame(382), Shown(Frame(0) + Frame(382)));
  // A lost frame in the middle takes the bytes with it.
  std::string damaged = Frames(3) + Frame(381) + Frame(381) + Frame(5);
  damaged[2 * 417] = 'x';
  const std::string mended = Shown(damaged);
  EXPECT_EQ(std::string(417, 0), mended.substr(417, 417));
  EXPECT_EQ(std::string(32, 0), mended.substr(3 * 417 + 4, 32));
  EXPECT_EQ(damaged.substr(4 * 417), mended.substr(4 * 417));
}

TEST(SongStream, SeekGoesToTheFrameThatBeginsThereOrBehind) {
  Song song(Id3v2(Utf16Title()) + Frames(100));
  constexpr struct {
    int target, reached;
  } kSeeks[] = {{0, 0},         {1, 0},        {5, 417},   {417, 417},        {418, 417},
                {421, 417},     {422, 834},    {416, 417}, {20000, 417 * 48}, {41283, 41283},
                {41288, 41700}, {50000, 41700}};
  for (const auto& seek : kSeeks) {
    EXPECT_EQ(seek.reached, song.stream->Seek(seek.target)) << seek.target;
    song.stream->Seek(41700);
  }
  // A frame that was silent for want of the one before is whole behind it.
  const std::string chained = Frame() + Frame(381) + Frame(381) + Frame(381);
  Song again(chained);
  again.stream->Seek(834);
  EXPECT_NE(chained.substr(834), again.Read());
  again.stream->Seek(417);
  again.stream->Seek(0);
  EXPECT_EQ(chained, again.Read());
}

TEST(SongStream, PiecesOfAReadDoNotMatter) {
  const std::string song = ReadBytes(DataFile("vbr.mp3"));
  for (int piece : {1, 7, 4096, 100000}) EXPECT_TRUE(Song(song).Read(piece) == song) << piece;
}

}  // namespace
}  // namespace kwo
