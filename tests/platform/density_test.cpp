#include "platform/density.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace kwo::platform {
namespace {

TEST(Density, GoesInQuarterStepsFromOneToFour) {
  constexpr struct {
    double dotsPerInch;
    int quarters;
  } kSteps[] = {{1, 4},   {96, 4},  {119, 4},  {120, 5},  {143, 5}, {144, 6},
                {168, 7}, {192, 8}, {288, 12}, {384, 16}, {1e9, 16}};
  for (const auto& [dots, quarters] : kSteps)
    EXPECT_EQ(Density(quarters), Density::Of(dots)) << dots;
}

// By places as fractions, pixel by pixel.
TEST(Density, PlacesOfTheScreenAndTheWindowMeet) {
  for (int quarters = 4; quarters <= 16; ++quarters) {
    const Density density(quarters);
    const double scale = quarters / 4.0;
    for (int own = -50; own < 50; ++own) {
      EXPECT_EQ(own, density.ToOwn(density.ToScreen(own)));
      EXPECT_EQ(static_cast<int>(std::ceil(own * scale)), density.ToScreen(own));
      EXPECT_EQ(static_cast<int>(std::floor(own / scale)), density.ToOwn(own));
      const Rectangle covered = density.Covered({own, 0, 3, 1});
      for (int x = covered.x - 2; x < covered.x + covered.width + 2; ++x) {
        const double middle = (x + 0.5) / scale;
        EXPECT_EQ(own <= middle && middle < own + 3,
                  covered.x <= x && x < covered.x + covered.width)
            << quarters << ' ' << own << ' ' << x;
      }
    }
  }
}

// How much of a pixel of the window's lies within one of the screen's.
double Overlap(int own, int screen, double scale) {
  return std::max(
      0.0, std::min(own + 1.0, (screen + 1) / scale) - std::max<double>(own, screen / scale));
}

TEST(Density, EnlargedPixelIsTheMeanOfWhatItLiesUpon) {
  std::mt19937 random(3);
  for (int quarters = 4; quarters <= 16; ++quarters) {
    const double scale = quarters / 4.0;
    const int width = 5 + quarters % 3, height = 7;
    std::vector<std::uint32_t> own(static_cast<std::size_t>(width * height));
    Enlarger enlarger{Density(quarters), {width, height}};
    const auto [screenWidth, screenHeight] = enlarger.ScreenSize();
    EXPECT_EQ(std::ceil(width * scale), screenWidth);
    EXPECT_EQ(std::ceil(height * scale), screenHeight);
    std::vector<std::uint32_t> screen(static_cast<std::size_t>(screenWidth * screenHeight));
    // In parts, as rows change: also such as it has just looked at.
    for (const auto& [first, end] : {std::pair(0, 7), std::pair(5, 7), std::pair(2, 4)}) {
      for (int i = first * width; i < end * width; ++i)
        own[static_cast<std::size_t>(i)] = 0xFF000000 | static_cast<std::uint32_t>(random());
      enlarger.Enlarge(own.data(), first, end, screen.data());
    }
    for (int y = 0; y < screenHeight; ++y)
      for (int x = 0; x < screenWidth; ++x)
        for (int shift = 0; shift < 32; shift += 8) {
          double sum = 0, area = 0;
          for (int row = 0; row < height; ++row)
            for (int column = 0; column < width; ++column) {
              const double part = Overlap(column, x, scale) * Overlap(row, y, scale);
              area += part;
              sum += part * (own[static_cast<std::size_t>(row * width + column)] >> shift & 0xFF);
            }
          ASSERT_NEAR(sum / area,
                      screen[static_cast<std::size_t>(y * screenWidth + x)] >> shift & 0xFF, 0.51)
              << quarters << ": " << x << ", " << y;
        }
  }
}

}  // namespace
}  // namespace kwo::platform
