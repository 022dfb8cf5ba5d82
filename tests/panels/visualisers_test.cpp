#include "panels/visualisers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "tests/allocations.h"
#include "tests/support.h"

namespace kwo {
namespace {

constexpr int kWidth = 100, kHeight = 60, kMiddle = kHeight / 2;

class Visualisers : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(bitmap.CreateBlank(kWidth, kHeight, 0)); }

  void Draw(VisualiserFunction draw, const std::vector<std::int16_t>& sound) {
    EXPECT_EQ(1, draw(bitmap, sound.data(), static_cast<int>(sound.size())));
  }
  const std::uint8_t* Pixel(int x, int row) const {
    return bitmap.bits + row * bitmap.stride + 3 * x;
  }
  bool Dark(int x, int row) const {
    return std::max({Pixel(x, row)[0], Pixel(x, row)[1], Pixel(x, row)[2]}) == 0;
  }
  // The highest row of a column that is not black, or -1.
  int Top(int x) const {
    int row = kHeight - 1;
    while (row >= 0 && Dark(x, row)) --row;
    return row;
  }

  SkinBitmap bitmap;
};

const std::vector<std::int16_t> kSilence(4608, 0);

TEST_F(Visualisers, SilenceIsAFlatLineInTheMiddle) {
  for (VisualiserFunction draw : {DrawSmoke, DrawGlow, DrawBands}) {
    bitmap.FillSolid(0);
    Draw(draw, kSilence);
    for (int x = 0; x < kWidth; ++x) ASSERT_EQ(kMiddle, Top(x));
  }
  Draw(DrawWalker, kSilence);
  for (int x = 0; x < kWidth; ++x) ASSERT_EQ(-1, Top(x));
}

TEST_F(Visualisers, FullSwingReachesTheEdgesAndGoesNoFurther) {
  constexpr std::pair<int, int> kCases[] = {{32767, kHeight - 1}, {-32768, 0}};
  for (auto [value, row] : kCases) {
    bitmap.FillSolid(0);
    Draw(DrawGlow, std::vector<std::int16_t>(4608, static_cast<std::int16_t>(value)));
    for (int x = 0; x < kWidth; ++x) ASSERT_EQ(row, Top(x));
  }
}

TEST_F(Visualisers, ColumnsTakeTheirSamplesInOrder) {
  std::vector<std::int16_t> sound(4608, -20000);
  // 46 values a column: the first half of the columns is loud, the second quiet.
  std::fill_n(sound.begin(), 46 * 50, 20000);
  Draw(DrawBands, sound);
  for (int x = 0; x < kWidth; ++x) {
    // Sum of 46 values over 45, over 65535 / 60, from the middle.
    const int level = (x < 50 ? 1 : -1) * (46 * 20000 / 45 / 1092) + kMiddle;
    ASSERT_EQ(level, Top(x)) << x;
  }
}

TEST_F(Visualisers, SmokeRisesAndDims) {
  Draw(DrawSmoke, std::vector<std::int16_t>(4608, 16384));
  const int level = Top(0);
  const int brightest = Pixel(0, level)[2];
  Draw(DrawSmoke, std::vector<std::int16_t>(4608, -32768));
  EXPECT_EQ(level + kHeight / 8, Top(0));
  EXPECT_EQ(brightest - 40, Pixel(0, Top(0))[2]);
}

TEST_F(Visualisers, SplitIsBlueBelowAndRedAbove) {
  Draw(DrawSplit, kSilence);
  EXPECT_EQ(255, Pixel(5, kMiddle)[0]);
  EXPECT_EQ(0, Pixel(5, kMiddle)[2]);
  EXPECT_EQ(255, Pixel(5, kMiddle + 1)[2]);
  EXPECT_EQ(0, Pixel(5, kMiddle + 1)[0]);
  EXPECT_EQ(255 - 160 / kMiddle, Pixel(5, kMiddle - 1)[0]);
  const int green = Pixel(5, 0)[1];
  Draw(DrawSplit, kSilence);
  EXPECT_EQ(4, std::abs(Pixel(5, 0)[1] - green));
}

TEST_F(Visualisers, TwinLevelsPartFourColoursByBothWaves) {
  const std::vector<std::int16_t> noise = test::Noise(4608);
  std::vector<std::int16_t> sound = noise;
  for (std::size_t i = 0; i < sound.size(); ++i)
    sound[i] = static_cast<std::int16_t>(noise[i / 92 * 2 + i % 2]);
  Draw(DrawTwinLevels, sound);
  for (int x = 0; x < kWidth; ++x) {
    const auto level = [&](int channel, int rest) {
      std::int64_t sum = 0;
      for (int i = 0; i < 23; ++i)
        sum += sound[static_cast<std::size_t>(2 * (23 * x + i) + channel)];
      return std::clamp(static_cast<int>(sum / 22 / (65535 / kMiddle)) + rest, 0, kHeight - 1);
    };
    const int left = level(0, 15), right = level(1, 45);
    std::vector<std::array<int, 3>> column(kHeight, {0, 0, 0});
    const auto paint = [&](int from, int to, int channel) {
      for (int row = from; row < to; ++row) column[static_cast<std::size_t>(row)][channel] = 155;
    };
    paint(0, left, 0);
    paint(right, kHeight, 2);
    paint(left, kMiddle, 1);
    paint(left, kMiddle, 2);
    paint(kMiddle, right, 0);
    paint(kMiddle, right, 1);
    for (int row = 0; row < kHeight; ++row)
      for (int channel = 0; channel < 3; ++channel)
        ASSERT_EQ(column[static_cast<std::size_t>(row)][channel], Pixel(x, row)[channel])
            << x << "," << row;
  }
}

TEST_F(Visualisers, RasterFillsTheBitmapInSilence) {
  bitmap.FillSolid(0x010101);
  Draw(DrawRaster, kSilence);
  for (int x = 0; x < kWidth; ++x)
    for (int row = 0; row < kHeight; ++row) ASSERT_GE(Pixel(x, row)[1], 20) << x << "," << row;
  bitmap.FillSolid(0x010101);
  Draw(DrawRaster, std::vector<std::int16_t>(4608, -32768));
  EXPECT_EQ(1, Pixel(0, kHeight - 1)[1]) << "short runs leave the old picture";
}

TEST_F(Visualisers, AnySizeAndSoundStayWithinTheBitmapAndTakeNoMemory) {
  constexpr std::pair<int, int> kSizes[] = {{1, 1},   {1, 2},    {2, 3},
                                            {7, 500}, {1024, 3}, {1025, 10}};
  for (auto [width, height] : kSizes) {
    SkinBitmap odd;
    ASSERT_TRUE(odd.CreateBlank(width, height, 0));
    for (int count : {4608, 13824, 18432}) {
      const std::vector<std::int16_t> sound = test::Noise(static_cast<std::size_t>(count));
      const long before = test::Allocations();
      for (VisualiserFunction draw : kVisualiserTable)
        for (int frame = 0; frame < 10; ++frame) draw(odd, sound.data(), count);
      EXPECT_EQ(before, test::Allocations());
    }
  }
}

}  // namespace
}  // namespace kwo
