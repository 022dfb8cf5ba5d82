// All seven visualisers against plain ones that follow their description word by word.

#include "panels/visualisers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <set>

#include "tests/allocations.h"
#include "tests/support.h"

namespace kwo {
namespace {

using Sound = std::vector<std::int16_t>;

struct Drifter {
  std::uint8_t color[3];
  int step[3], low[3], high[3], bounce[3];
  void Drift() {
    for (int i = 0; i < 3; ++i) {
      color[i] = static_cast<std::uint8_t>(color[i] + step[i]);
      if (color[i] >= high[i]) {
        step[i] = -bounce[i];
      } else if (color[i] < low[i]) {
        step[i] = bounce[i];
      }
    }
  }
};

// A picture, and what each visualiser keeps between frames.
class Plain {
 public:
  void SetSize(int width, int height) {
    W = width, H = height, mid = H / 2;
    stride = (3 * W + 3) / 4 * 4;
    bits.assign(static_cast<std::size_t>(stride * H), 0);
  }

  std::vector<int> Levels(const Sound& sound, int scale) const {
    const int n = static_cast<int>(sound.size()), p = n / W - 1;
    std::vector<int> level;
    for (int x = 0; x < W; ++x) {
      std::int64_t sum = 0;
      for (int i = 0; i < p + 1; ++i) sum += sound[static_cast<std::size_t>(x * (p + 1) + i)];
      level.push_back(std::clamp(static_cast<int>(sum / p / scale) + mid, 0, H - 1));
    }
    return level;
  }
  void Put(int row, int x, int red, int green, int blue) {
    std::uint8_t* pixel = &bits[static_cast<std::size_t>(row * stride + 3 * x)];
    pixel[0] = static_cast<std::uint8_t>(blue);
    pixel[1] = static_cast<std::uint8_t>(green);
    pixel[2] = static_cast<std::uint8_t>(red);
  }
  void Fade(int fromRow, int amount) {
    for (std::size_t i = static_cast<std::size_t>(fromRow * stride); i < bits.size(); ++i)
      if (bits[i] > amount) bits[i] = static_cast<std::uint8_t>(bits[i] - amount);
  }

  // Smoke, glow and bands are columns under the wave, whose colours change from row to row.
  void Columns(const Sound& sound, int number) {
    const auto level = Levels(sound, 65535 / H);
    if (number == 0) {
      Fade(mid, 40);
      const int k = H / 8;
      for (int i = 0, r = H - k - 1; i < mid + k; ++i, --r)
        std::copy_n(bits.begin() + r * stride, stride, bits.begin() + (r + k) * stride);
    } else {
      Fade(0, 8);
    }
    Drifter& drifter = columns[number];
    drifter.Drift();
    const int step = std::max(number == 2 ? 160 / mid * 2 : 160 / mid, 2);
    for (int x = 0; x < W; ++x) {
      int color[3] = {drifter.color[0], drifter.color[1], drifter.color[2]};
      for (int row = level[std::size_t(x)]; row >= 0; --row) {
        Put(row, x, color[0], color[1], color[2]);
        for (int& value : color) value += number == 0 ? -step : step;
        const bool passed = *std::max_element(color, color + 3) > 200;
        for (int i = 0; i < 3; ++i)
          color[i] = number == 2 && passed ? drifter.color[i]
                     : number == 2         ? color[i]
                                           : std::clamp(color[i], 0, number == 0 ? 255 : 200);
      }
    }
  }
  void Split(const Sound& sound) {
    const auto level = Levels(sound, 65535 / H);
    std::fill(bits.begin(), bits.end(), 0);
    g += gStep;
    if (g > 180) gStep = -4;
    if (g < 50) gStep = 4;
    const int step = std::max(160 / mid, 2);
    for (int x = 0; x < W; ++x) {
      const int top = level[std::size_t(x)];
      for (int row = top, blue = 255; row >= 0; --row, blue -= step) Put(row, x, 0, g, blue);
      for (int row = top + 1, red = 255; row < H; ++row, red -= step) Put(row, x, red, g, 0);
    }
  }
  void TwinLevels(const Sound& sound) {
    const int p = static_cast<int>(sound.size()) / 2 / W - 1, half = H / 2, quarter = half / 2;
    std::fill(bits.begin(), bits.end(), 0);
    for (int x = 0; x < W; ++x) {
      const auto levelOf = [&](int channel, int rest) {
        std::int64_t sum = 0;
        for (int i = 0; i < p + 1; ++i)
          sum += sound[static_cast<std::size_t>(2 * (x * (p + 1) + i) + channel)];
        return std::clamp(static_cast<int>(sum / p / (65535 / half)) + rest, 0, H - 1);
      };
      const int left = levelOf(0, quarter), right = levelOf(1, 3 * quarter);
      const auto add = [&](int from, int to, std::initializer_list<int> channels) {
        for (int row = from; row < to; ++row)
          for (int channel : channels)
            bits[static_cast<std::size_t>(row * stride + 3 * x + channel)] = 155;
      };
      add(0, left, {0});
      add(right, H, {2});
      add(left, half, {1, 2});
      add(half, right, {0, 1});
    }
  }
  void Walk(const Sound& sound) {
    if (direction < 0) direction = 1, walkX = W / 2 + 1, walkY = H / 2;
    const int s = 216000 / W / 2, p = static_cast<int>(sound.size()) / 1152 / 2 - 1;
    std::vector<int> value;
    for (int k = 0; k < 576; ++k) {
      std::int64_t sum = 0;
      for (int i = 0; i < p + 1; ++i) sum += sound[static_cast<std::size_t>(k * (p + 1) + i)];
      value.push_back(static_cast<int>(sum / p / s));
    }
    std::fill(bits.begin(), bits.end(), 0);
    for (std::size_t k = 0; k < 576; ++k) {
      walkX += direction < 2 ? 1 : -1;
      walkY += direction == 1 || direction == 2 ? 1 : -1;
      const auto turn = [&](int a, int aTo, int b, int bTo) {
        direction = direction == a ? aTo : direction == b ? bTo : direction;
      };
      if (walkY < 0) walkY = 0, turn(0, 1, 3, 2), walkX += value[0] % 20 - 10;
      if (walkY > H) walkY = H, turn(1, 0, 2, 3);
      if (walkX < 0) walkX = 0, turn(3, 0, 2, 1);
      if (walkX > W) walkX = W, turn(1, 2, 0, 3);
      walk.Drift();
      std::int64_t place = std::int64_t{walkY} * stride + 3 * (walkX + value[k]);
      const int h = value[k] /= 2;
      for (int i = 0; i<std::abs(h); ++i, place += h> 0 ? -3 : 3) {
        if (place < 0 || place + 3 > static_cast<std::int64_t>(bits.size())) break;
        for (std::size_t c = 0; c < 3; ++c)
          bits[static_cast<std::size_t>(place) + c] = walk.color[2 - c];
      }
    }
  }
  // The blue of each run is random: it is taken from what was drawn.
  void Raster(const Sound& sound, const std::uint8_t* drawn) {
    const int scale = 65535 / H * 12;
    const auto level = Levels(sound, W < 240 ? scale / 2 : scale);
    raster.Drift();
    const int step = std::max(160 / mid, 1);
    int at = 0;
    std::set<int> blues;
    for (int column = 0; column < W; ++column) {
      int red = raster.color[0], green = raster.color[1], blue = -1;
      for (int i = 0; i < 2 * level[std::size_t(column)] + 1 && at < W * H; ++i, ++at) {
        if (blue < 0) blue = drawn[at / W * stride + 3 * (at % W)];
        EXPECT_LT(blue, 255);
        blues.insert(blue);
        Put(at / W, at % W, red, green, blue);
        for (int* value : {&red, &green, &blue}) *value = std::max(*value - step, 20);
      }
    }
    EXPECT_GE(static_cast<int>(blues.size()), std::min(W, H) / 4) << "they are drawn by chance";
  }

  int W = 0, H = 0, stride = 0, mid = 0;
  std::vector<std::uint8_t> bits;

 private:
  Drifter columns[3] = {{{140, 150, 160}, {3, 7, 11}, {160, 160, 160}, {251, 251, 251}, {3, 7, 11}},
                        {{40, 50, 60}, {3, 7, 11}, {20, 20, 20}, {101, 101, 101}, {3, 7, 11}},
                        {{40, 50, 60}, {3, 5, 7}, {20, 20, 20}, {101, 101, 101}, {3, 7, 11}}};
  Drifter walk{{40, 50, 60}, {5, 7, 3}, {160, 120, 20}, {241, 241, 181}, {5, 7, 3}};
  Drifter raster{{40, 50, 60}, {3, 7, 11}, {120, 120, 120}, {241, 241, 241}, {3, 5, 7}};
  int g = 100, gStep = 4;
  int direction = -1, walkX = 0, walkY = 0;
};

// From silence over slow waves of every loudness to full swing.
Sound Waves(int frame, int count) {
  Sound sound;
  for (int i = 0; i < count; ++i) {
    const double swing = 4000.0 * (frame % 12), side = i % 2 ? 1.0 : 0.6;
    const double value = swing * side * std::sin(i * (0.001 + 0.0004 * frame) + i % 2);
    sound.push_back(static_cast<std::int16_t>(std::clamp(value, -32768.0, 32767.0)));
  }
  return sound;
}

void CompareAll() {
  constexpr std::pair<int, int> kSizes[] = {{408, 106}, {420, 260}, {239, 31}, {240, 34},
                                            {7, 50},    {1024, 40}, {100, 9}};
  Plain plain;
  for (auto [width, height] : kSizes) {
    for (int number = 0; number < static_cast<int>(kVisualiserTable.size()); ++number) {
      plain.SetSize(width, height);
      SkinBitmap bitmap;
      ASSERT_TRUE(bitmap.CreateBlank(width, height, 0));
      for (int frame = 0; frame < 40; ++frame) {
        const Sound sound = Waves(frame, frame % 8 == 7 ? 18432 : 4608 * (1 + frame % 3));
        const int count = static_cast<int>(sound.size());
        EXPECT_EQ(1,
                  kVisualiserTable[static_cast<std::size_t>(number)](bitmap, sound.data(), count));
        if (number <= 2) plain.Columns(sound, number);
        if (number == 3) plain.Split(sound);
        if (number == 4) plain.TwinLevels(sound);
        if (number == 5) plain.Walk(sound);
        if (number == 6) plain.Raster(sound, bitmap.bits);
        for (int row = 0; row < height; ++row)
          ASSERT_TRUE(std::equal(bitmap.bits + row * bitmap.stride,
                                 bitmap.bits + row * bitmap.stride + 3 * width,
                                 plain.bits.begin() + row * plain.stride))
              << number << " of " << width << 'x' << height << ", frame " << frame << " row "
              << row;
      }
    }
  }
}

// In a process of its own: what the visualisers keep between frames begins with the process.
TEST(VisualisersDeathTest, AllPaintWhatThePlainOnesPaint) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        CompareAll();
        std::exit(testing::Test::HasFailure());
      },
      testing::ExitedWithCode(0), "");
}

TEST(Visualisers, AnySizeAndSoundStayWithinTheBitmapAndTakeNoMemory) {
  for (auto [width, height] : {std::pair{1, 1}, {1, 2}, {2, 3}, {7, 500}, {1024, 3}, {1025, 10}}) {
    SkinBitmap odd;
    ASSERT_TRUE(odd.CreateBlank(width, height, 0));
    const Sound sound = test::Noise(18432);
    const long before = test::Allocations();
    for (VisualiserFunction draw : kVisualiserTable)
      for (int frame = 0; frame < 30; ++frame) draw(odd, sound.data(), 4608 * (1 + frame % 4));
    EXPECT_EQ(before, test::Allocations());
  }
}

}  // namespace
}  // namespace kwo
