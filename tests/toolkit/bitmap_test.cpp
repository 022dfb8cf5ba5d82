#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "tests/support.h"
#include "toolkit/bmp_reader.h"
#include "toolkit/skin_bitmap.h"
#include "toolkit/skin_description.h"
#include "toolkit/skin_host.h"

namespace kwo {
namespace {

// One pixel through the blit's steps, as a loop that knows nothing of rows or vectors would take
// it.
void BlendPixel(const std::uint8_t* source, std::uint8_t* target, int brightness, int mode,
                std::uint32_t key) {
  const auto joined = static_cast<std::uint32_t>(source[2] | source[1] << 8 | source[0] << 16);
  if (joined == key) return;
  for (int i = 0; i < 3; ++i) {
    const int s = std::clamp(source[i] + brightness, 0, 255), d = target[i];
    const int blended = mode == 1   ? std::min(d + s, 255)
                        : mode == 2 ? std::max(d - s, 0)
                        : mode == 3 ? (d + s) / 2
                                    : s;
    target[i] = static_cast<std::uint8_t>(blended);
  }
}

void FillWithNoise(SkinBitmap& bitmap, unsigned seed, std::uint32_t key) {
  std::mt19937 random(seed);
  for (int row = 0; row < bitmap.height; ++row) {
    for (int x = 0; x < bitmap.width; ++x) {
      std::uint8_t* pixel = bitmap.bits + row * bitmap.stride + 3 * x;
      for (int i = 0; i < 3; ++i) pixel[i] = static_cast<std::uint8_t>(random());
      // Whole keys, and colours that share one or two of the key's bytes.
      const unsigned shared = random() % 8;
      for (unsigned i = 0; i < 3; ++i)
        if (shared == 7 || shared == i) pixel[i] = static_cast<std::uint8_t>(key >> (16 - 8 * i));
    }
  }
}

std::vector<std::uint8_t> Bytes(const SkinBitmap& bitmap) {
  return {bitmap.bits, bitmap.bits + bitmap.stride * bitmap.height};
}

TEST(Blits, EveryKindMatchesThePixelByPixelReckoning) {
  constexpr std::uint32_t kKey = 0x123456;
  const int brightnesses[] = {0, 1, -20, 100, -255, -260, 300, 255};
  SkinBitmap source, target;
  ASSERT_TRUE(source.CreateBlank(71, 9, 0));
  FillWithNoise(source, 1, kKey);
  for (std::uint32_t key : {kKey, kNoKey}) {
    for (int mode = 0; mode < 5; ++mode) {
      for (int brightness : brightnesses) {
        for (int width : {0, 1, 15, 16, 17, 50, 64}) {
          ASSERT_TRUE(target.CreateBlank(90, 12, 0));
          FillWithNoise(target, 2, kKey);
          std::vector<std::uint8_t> expected = Bytes(target);
          for (int row = 0; row < 7; ++row)
            for (int x = 0; x < width; ++x)
              BlendPixel(source.bits + (1 + row) * source.stride + 3 * (5 + x),
                         expected.data() + (2 + row) * target.stride + 3 * (9 + x), brightness,
                         mode, key);
          if (mode != 0 || (brightness && key <= 0xFFFFFF)) {
            BlitBlend(source.Source(5, 1), width, 7, target.Target(9, 2), brightness, mode, key);
          } else if (brightness) {
            BlitBright(source.Source(5, 1), width, 7, target.Target(9, 2), brightness);
          } else if (key <= 0xFFFFFF) {
            BlitKeyed(source.Source(5, 1), width, 7, target.Target(9, 2), key);
          } else {
            BlitCopy(source.Source(5, 1), width, 7, target.Target(9, 2));
          }
          ASSERT_EQ(expected, Bytes(target)) << mode << " " << brightness << " " << width;
        }
      }
    }
  }
}

TEST(SkinBitmap, RowsBeginAtMultiplesOfFourBytes) {
  const std::pair<int, int> kWidthsAndStrides[] = {{1, 4}, {4, 12}, {5, 16}};
  for (auto [width, stride] : kWidthsAndStrides) {
    SkinBitmap bitmap;
    ASSERT_EQ(1, bitmap.CreateBlank(width, 2, 0));
    EXPECT_EQ(stride, bitmap.stride);
  }
}

TEST(SkinBitmap, BitmapWithoutSizeStaysEmptyAndUsable) {
  SkinBitmap bitmap;
  EXPECT_EQ(0, bitmap.CreateBlank(0, 0, 0));
  EXPECT_EQ(0, bitmap.CreateBlank(kMaxBmpSide + 1, 1, 0));
  bitmap.FillSolid(0xFF);
  bitmap.FillAndText("text", nullptr, 0, 0, 0, 0);
  bitmap.PresentToWindow(0, 0, 10, 10);
  EXPECT_EQ(0, bitmap.width);
}

TEST(SkinBitmap, ColourIsStoredBlueFirstAndMatchesItsOwnKey) {
  SkinBitmap source, target;
  source.CreateBlank(1, 1, 0x0000FF);
  target.CreateBlank(1, 1, 0x112233);
  EXPECT_EQ(255, source.bits[2]);
  EXPECT_EQ(0, source.bits[0]);
  BlitKeyed(source.Source(0, 0), 1, 1, target.Target(0, 0), 0x0000FF);
  EXPECT_EQ(0x33, target.bits[2]);
}

TEST(SkinBitmap, RectanglesAreCountedFromTheTopAndCut) {
  SkinBitmap source, target;
  source.CreateBlank(4, 4, 0);
  target.CreateBlank(4, 4, 0);
  source.FillRectangle(-1, 0, 3, 1, 0xFFFFFF);
  EXPECT_EQ(255, source.bits[3 * source.stride]) << "the top line is the last row";
  target.CopyFrom(&source, 1, -5, 100, 100);
  EXPECT_EQ(255, target.bits[3 * target.stride + 3]);
  EXPECT_EQ(0, target.bits[3 * target.stride]);
  target.CopyFrom(nullptr, 0, 0, 4, 4);
}

TEST(SkinBitmap, TextFillsTheLineUnlessTheFillIsNone) {
  platform::Font* font = platform::CreateFont("any", 12);
  SkinBitmap bitmap;
  bitmap.CreateBlank(60, 12, 0x010203);
  bitmap.FillAndText("", font, 0xFFFFFF, 0x000000, 0, 0);
  EXPECT_EQ(0, *std::max_element(bitmap.bits, bitmap.bits + bitmap.stride * 12));
  bitmap.FillAndText("KWO \xed\x95\x9c long text beyond the edge", font, 0xFFFFFF, kNoKey, 0, 0);
  EXPECT_EQ(255, *std::max_element(bitmap.bits, bitmap.bits + bitmap.stride * 12));
  platform::DeleteFont(font);
}

// A BMP file of the given kind whose pixel (x, y) from the top has blue x, green y, red 7.
std::string BmpFile(int width, int height, int bits, bool topDown, std::uint32_t compression = 0) {
  const int stride = (width * bits / 8 + 3) / 4 * 4;
  const std::string palette = bits == 8 ? std::string(1024, '\0') : "";
  const std::string masks = compression == 3
                                ? test::LittleEndian(0xFF0000, 4) + test::LittleEndian(0xFF00, 4) +
                                      test::LittleEndian(0xFF, 4)
                                : "";
  const auto start = static_cast<std::uint32_t>(54 + palette.size() + masks.size());
  std::string file =
      "BM" + std::string(8, '\0') + test::LittleEndian(start, 4) + test::LittleEndian(40, 4) +
      test::LittleEndian(static_cast<std::uint32_t>(width), 4) +
      test::LittleEndian(static_cast<std::uint32_t>(topDown ? -height : height), 4) +
      test::LittleEndian(1, 2) + test::LittleEndian(static_cast<std::uint32_t>(bits), 2) +
      test::LittleEndian(compression, 4) + std::string(20, '\0');
  std::string colors = palette;
  for (std::size_t i = 0; i < colors.size() / 4; ++i) {
    colors[4 * i] = static_cast<char>(i % 16);
    colors[4 * i + 1] = static_cast<char>(i / 16);
    colors[4 * i + 2] = 7;
  }
  file += masks + colors;
  for (int line = 0; line < height; ++line) {
    const int y = topDown ? line : height - 1 - line;
    std::string row;
    for (int x = 0; x < width; ++x) {
      if (bits == 8) {
        row += static_cast<char>(16 * y + x);
      } else {
        row += {static_cast<char>(x), static_cast<char>(y), 7};
        if (bits == 32) row += '\x55';
      }
    }
    row.resize(static_cast<std::size_t>(stride));
    file += row;
  }
  return file;
}

TEST(BmpReader, ReadsEveryKindFromEitherEnd) {
  test::TempFolder folder;
  for (int bits : {8, 24, 32}) {
    for (bool topDown : {false, true}) {
      const std::string path = folder.File(std::to_string(bits) + (topDown ? "t" : "b"));
      test::WriteBytes(path, BmpFile(5, 3, bits, topDown, bits == 32 && topDown ? 3 : 0));
      SkinBitmap bitmap;
      ASSERT_EQ(1, bitmap.LoadFromFile(path.c_str())) << bits;
      EXPECT_EQ(5, bitmap.width);
      EXPECT_EQ(3, bitmap.height);
      EXPECT_EQ(bits == 8 ? 15u : 0u, bitmap.indices.size());
      for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 5; ++x) {
          const std::uint8_t* pixel = bitmap.bits + (2 - y) * bitmap.stride + 3 * x;
          EXPECT_EQ(x, pixel[0]);
          EXPECT_EQ(y, pixel[1]);
          EXPECT_EQ(7, pixel[2]);
        }
      }
    }
  }
}

TEST(BmpReader, LyingHeadersAndShortFilesAreRefused) {
  const std::string sound = BmpFile(5, 3, 24, false);
  BmpPicture picture;
  ASSERT_TRUE(ReadBmpHeaders(sound, picture));
  for (std::size_t length = 0; length < sound.size(); ++length)
    EXPECT_FALSE(ReadBmpHeaders(std::string_view(sound).substr(0, length), picture)) << length;
  const std::pair<std::size_t, std::uint32_t> kLies[] = {
      {10, 20},         {10, 0xFFFFFFF0}, {14, 12},         {14, 4000}, {18, 0},
      {18, 0xFFFFFFFF}, {18, 6000},       {18, 0x7FFFFFFF}, {22, 0},    {22, 5},
      {22, 0x80000000}, {26, 0x180000},   {28, 4},          {30, 1}};
  for (auto [offset, value] : kLies) {
    std::string file = sound;
    file.replace(offset, 4, test::LittleEndian(value, 4));
    EXPECT_FALSE(ReadBmpHeaders(file, picture)) << offset << " " << value;
  }
}

TEST(SkinBitmap, BitmapThatHoldsAPictureKeepsIt) {
  test::TempFolder folder;
  test::WriteBytes(folder.File("a.bmp"), BmpFile(5, 3, 24, false));
  SkinBitmap bitmap;
  bitmap.CreateBlank(2, 2, 0);
  EXPECT_EQ(1, bitmap.LoadFromFile(folder.File("a.bmp").c_str()));
  EXPECT_EQ(2, bitmap.width);
  EXPECT_NE(nullptr, std::strstr(bitmap.fileName, "a.bmp"));
  SkinBitmap absent;
  EXPECT_EQ(0, absent.LoadFromFile(folder.File("none.bmp").c_str()));
}

TEST(SkinDescription, ReadsStatementsAmongFreeText) {
  platform::Rectangle window{1, 2, 3, 4};
  ParseSkinDescription(
      "a skin for\tevenings COLOR FONT 1 2 3 COLOR TRANSPARENT 255 256 511\n"
      "color FONT 9 9 9 COLOR NOTHING 5 6 7 EFFECT TOGB SUB\nEFFECT MAGB AVE EFFECT BK 1 "
      "EFFECT PLGB ODD EFFECT ELSE ADD WINDOW 34\n30 420 -260 COLOR SELECTEDSONG 4 5 6 trailing",
      window);
  EXPECT_EQ(0x030201u, FontColor);
  EXPECT_EQ(0xFF00FFu, TransparentColor);
  EXPECT_EQ(0x060504u, SelectedSongColor);
  EXPECT_EQ(0xFF0000u, CurrentSongColor);
  EXPECT_EQ(2, TopEffect);
  EXPECT_EQ(3, MainEffect);
  EXPECT_EQ(0, PlaylistEffect);
  EXPECT_EQ(1, BackgroundEffect);
  EXPECT_EQ(34, window.x);
  EXPECT_EQ(-260, window.height);
}

TEST(SkinDescription, WhatIsMissingOrBrokenKeepsItsDefault) {
  platform::Rectangle window{1, 2, 3, 4};
  ParseSkinDescription("COLOR FONT 1 2 EFFECT TOGB ADD WINDOW 1 2 3 x WINDOW", window);
  EXPECT_EQ(0x00FF00u, FontColor);
  EXPECT_EQ(1, TopEffect) << "the token that stopped the numbers is read as any other";
  EXPECT_EQ(4, window.height);
  ParseSkinDescription("", window);
  EXPECT_EQ(0xFFFF00u, TransparentColor);
  EXPECT_EQ(0, TopEffect);
}

TEST(WindowShape, IsTheUnionOfTheRunsThatAreNotKey) {
  SkinBitmap bitmap;
  bitmap.CreateBlank(6, 3, 0x00FFFF);  // 0x00RRGGBB: FFFF00
  bitmap.FillRectangle(1, 0, 2, 1, 0);
  bitmap.FillRectangle(5, 0, 1, 1, 0);
  bitmap.FillRectangle(0, 2, 6, 1, 0);
  const std::vector<platform::Rectangle> runs = FindShape(bitmap, 0xFFFF00);
  ASSERT_EQ(3u, runs.size());
  EXPECT_TRUE(runs[0].x == 1 && runs[0].y == 0 && runs[0].width == 2);
  EXPECT_TRUE(runs[1].x == 5 && runs[1].y == 0 && runs[1].width == 1);
  EXPECT_TRUE(runs[2].x == 0 && runs[2].y == 2 && runs[2].width == 6);
  bitmap.FillSolid(0x00FFFF);
  EXPECT_TRUE(FindShape(bitmap, 0xFFFF00).empty());
}

TEST(WindowShape, EightBitBackgroundComparesItsIndices) {
  test::TempFolder folder;
  test::WriteBytes(folder.File("b.bmp"), BmpFile(5, 3, 8, false));
  SkinBitmap bitmap;
  bitmap.LoadFromFile(folder.File("b.bmp").c_str());
  const std::vector<platform::Rectangle> runs = FindShape(bitmap, 0x12);
  ASSERT_EQ(4u, runs.size()) << "index 18 stands at (2, 1) alone";
  EXPECT_EQ(2, runs[1].width);
  EXPECT_EQ(3, runs[2].x);
}

}  // namespace
}  // namespace kwo
