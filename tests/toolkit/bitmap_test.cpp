#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <tuple>

#include "tests/pixel_at.h"
#include "tests/support.h"
#include "toolkit/bmp_reader.h"
#include "toolkit/menu_colors.h"
#include "toolkit/skin_bitmap.h"
#include "toolkit/skin_description.h"
#include "toolkit/skin_host.h"
#include "toolkit/window_shape.h"

namespace kwo {
namespace {

using test::PixelAt;

TEST(SkinBitmap, RowsBeginAtMultiplesOfFourBytesAndWithoutASizeThereAreNone) {
  for (auto [width, height, stride] :
       {std::tuple{1, 2, 4}, {4, 1, 12}, {5, 2, 16}, {8192, 1, 24576}, {8193, 1, 0}, {0, 0, 0}}) {
    SkinBitmap bitmap;
    EXPECT_EQ(stride ? 1 : 0, bitmap.CreateBlank(width, height, 0));
    EXPECT_EQ(stride, bitmap.stride);
    EXPECT_EQ(stride ? width : 0, bitmap.width);
    bitmap.FillSolid(0xFF);
    bitmap.FillAndText("text", nullptr, 0, 0, 0, 0);
    bitmap.PresentToWindow(0, 0, 10, 10);
  }
}

TEST(SkinBitmap, RectanglesAreCountedFromTheTopAndCut) {
  SkinBitmap source, target;
  source.CreateBlank(4, 4, 0x445566);
  target.CreateBlank(4, 4, 0);
  source.FillRectangle(-1, 0, 3, 1, 0x112233);
  target.CopyFrom(&source, 1, -5, 100, 6);
  target.CopyFrom(nullptr, 0, 0, 4, 4);
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 4; ++x) {
      EXPECT_EQ(y == 0 && x < 2 ? 0x112233u : 0x445566u, PixelAt(source, x, y));
      EXPECT_EQ(y == 0 && x > 0 ? PixelAt(source, x, y) : 0, PixelAt(target, x, y));
    }
}

// A BMP file of 5 by 3 whose pixel (x, y) from the top has blue x, green y, red 7.
std::string BmpFile(int bits, bool topDown, int compression = 0) {
  const auto number = [](std::size_t value, int size = 4) {
    return test::LittleEndian(static_cast<std::uint32_t>(value), size);
  };
  const auto pixel = [](int x, int y) {
    return std::string{static_cast<char>(x), static_cast<char>(y), 7, '\x55'};
  };
  std::string colors, rows;
  if (compression == 3) colors = number(0xFF0000) + number(0xFF00) + number(0xFF);
  for (int i = 0; bits == 8 && i < 256; ++i) colors += pixel(i % 16, i / 16);
  for (int line = 0; line < 3; ++line) {
    const int y = topDown ? line : 2 - line;
    for (int x = 0; x < 5; ++x)
      rows += bits == 8 ? number(16 * y + x, 1) : pixel(x, y).substr(0, bits / 8);
    while (rows.size() % 4) rows += '\0';
  }
  return "BM" + std::string(8, '\0') + number(54 + colors.size()) + number(40) + number(5) +
         number(topDown ? -3 : 3) + number(1, 2) + number(bits, 2) + number(compression) +
         std::string(20, '\0') + colors + rows;
}

// The picture of such a file.
struct LoadedBmp : SkinBitmap {
  LoadedBmp(const std::string& bytes) {
    test::TempFolder folder;
    test::WriteBytes(folder.File("a.bmp"), bytes);
    EXPECT_EQ(1, LoadFromFile(folder.File("a.bmp").c_str()));
  }
};

TEST(BmpReader, EveryKindIsReadFromEitherEndAndKept) {
  for (int bits : {8, 24, 32}) {
    for (bool topDown : {false, true}) {
      LoadedBmp bitmap(BmpFile(bits, topDown, bits == 32 && topDown ? 3 : 0));
      EXPECT_EQ(1, bitmap.LoadFromFile("none")) << "a bitmap that holds a picture keeps it";
      EXPECT_STREQ("none", bitmap.fileName);
      EXPECT_EQ(bits == 8 ? 15u : 0u, bitmap.indices.size());
      ASSERT_TRUE(bitmap.width == 5 && bitmap.height == 3);
      for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x) EXPECT_EQ(x << 16 | y << 8 | 7u, PixelAt(bitmap, x, y));
    }
  }
}

TEST(BmpReader, LyingHeadersAndShortFilesAreRefused) {
  const std::string sound = BmpFile(24, false);
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

TEST(SkinDescription, StatementsAmongFreeTextReplaceTheDefaults) {
  const std::pair<const char*, std::vector<long>> kTextsAndResults[] = {
      {"a skin for\tevenings COLOR FONT 1 2 3 COLOR TRANSPARENT 255 256 511\n"
       "color FONT 9 9 9 COLOR NOTHING 5 6 7 EFFECT TOGB SUB\nEFFECT MAGB AVE EFFECT BK 1 "
       "EFFECT PLGB ODD EFFECT ELSE ADD WINDOW 34\n30 420 -260 COLOR SELECTEDSONG 4 5 6 trailing",
       {0x030201, 0xFF00FF, 0x060504, 0xFF0000, 2, 3, 0, 0, 1, 34, 30, 420, -260}},
      // The token that stopped the numbers is read as any other.
      {"COLOR FONT 1 2 EFFECT TOGB ADD EFFECT MIGB AVE WINDOW 1 2 3 x WINDOW",
       {0x00FF00, 0xFFFF00, 0x64FF64, 0xFF0000, 1, 0, 0, 3, 0, 5, 6, 7, 8}},
      {"", {0x00FF00, 0xFFFF00, 0x64FF64, 0xFF0000, 0, 0, 0, 0, 0, 5, 6, 7, 8}},
  };
  for (const auto& [text, expected] : kTextsAndResults) {
    platform::Rectangle window{5, 6, 7, 8};
    ParseSkinDescription(text, window);
    EXPECT_EQ(expected,
              (std::vector<long>{skin.FontColor, skin.TransparentColor, skin.SelectedSongColor,
                                 skin.CurrentSongColor, skin.TopEffect, skin.MainEffect,
                                 skin.PlaylistEffect, skin.MixerEffect, skin.BackgroundEffect,
                                 window.x, window.y, window.width, window.height}));
  }
}

// Relative luminance by the web's rules for contrast, of 0x00BBGGRR.
double Luminance(std::uint32_t color) {
  double sum = 0;
  for (const double weight : {0.2126, 0.7152, 0.0722}) {
    const double value = (color & 255) / 255.0;
    sum += weight * (value > 0.04045 ? std::pow((value + 0.055) / 1.055, 2.4) : value / 12.92);
    color >>= 8;
  }
  return sum;
}

TEST(MenuColors, AreTheSkinsAsFarAsTheyCanBeRead) {
  const auto contrast = [](std::uint32_t color, std::uint32_t other) {
    const double one = Luminance(color) + 0.05, two = Luminance(other) + 0.05;
    return std::max(one / two, two / one);
  };
  skin.FontColor = 0xF6ECD8, skin.SelectedSongColor = 0x563A10, skin.CurrentSongColor = 0x66B8FF;
  platform::MenuColors colors = SkinMenuColors();
  EXPECT_EQ((std::vector<std::uint32_t>{0xF6ECD8, 0x2B1D08, 0xF6ECD8, 0x563A10, 0x66B8FF}),
            (std::vector<std::uint32_t>{colors.text, colors.ground, colors.pointedText,
                                        colors.pointedGround, colors.mark}));
  std::minstd_rand random(7);
  for (int i = 0; i < 2000; ++i) {
    for (std::uint32_t* color : {&skin.FontColor, &skin.SelectedSongColor, &skin.CurrentSongColor})
      *color = random() & 0xFFFFFF;
    if (i % 3 == 0) skin.SelectedSongColor = skin.FontColor ^ (random() & 0x0F0F0F);
    colors = SkinMenuColors();
    EXPECT_EQ(skin.FontColor, colors.text);
    EXPECT_GE(contrast(colors.text, colors.ground), 4.5) << std::hex << skin.FontColor;
    EXPECT_GE(contrast(colors.pointedText, colors.pointedGround), 4.5)
        << std::hex << skin.FontColor;
    EXPECT_GE(contrast(colors.mark, colors.ground), 4.5) << std::hex << skin.CurrentSongColor;
    EXPECT_GE(contrast(colors.pointedGround, colors.ground), 1.2) << std::hex << skin.FontColor;
  }
}

// The shape's runs, each as x,y+width.
std::string Shape(const SkinBitmap& bitmap, std::uint32_t transparent) {
  std::string runs;
  for (const platform::Rectangle& run : FindShape(bitmap, transparent))
    runs += std::to_string(run.x) + ',' + std::to_string(run.y) + '+' + std::to_string(run.width) +
            (run.height == 1 ? " " : "? ");
  return runs;
}

TEST(WindowShape, IsTheUnionOfTheRunsThatAreNotKey) {
  SkinBitmap bitmap;
  bitmap.CreateBlank(6, 3, 0x00FFFF);  // 0x00RRGGBB: FFFF00
  EXPECT_EQ("", Shape(bitmap, 0xFFFF00));
  bitmap.FillRectangle(1, 0, 2, 1, 0);
  bitmap.FillRectangle(5, 0, 1, 1, 0);
  bitmap.FillRectangle(0, 2, 6, 1, 0);
  EXPECT_EQ("1,0+2 5,0+1 0,2+6 ", Shape(bitmap, 0xFFFF00));
  // Of an 8-bit picture the indices count; 0x12 stands at (2, 1) alone.
  EXPECT_EQ("0,0+5 0,1+2 3,1+2 0,2+5 ", Shape(LoadedBmp(BmpFile(8, false)), 0x12));
  SkinBitmap checkered;
  checkered.CreateBlank(1000, 66, 0x00FFFF);
  for (int y = 0; y < 66; ++y)
    for (int x = 1; x < 1000; x += 2) checkered.FillRectangle(x, y, 1, 1, 0);
  const auto rows = FindShape(checkered, 0xFFFF00);
  EXPECT_EQ(66u, rows.size());
  EXPECT_EQ((platform::Rectangle{1, 65, 999, 1}), rows.back());
}

}  // namespace
}  // namespace kwo
