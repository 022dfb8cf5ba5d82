// Short streams of every layer, rate and mode, made of random bits, against the samples that an
// independent decoder of double precision made of them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "tests/decoder/opened_song.h"

namespace kwo {
namespace {

TEST(ExpectedSamples, EveryKindOfStreamDecodesToItsOwn) {
  int streams = 0;
  for (const auto& file : std::filesystem::directory_iterator(test::DataFile("random"))) {
    if (file.path().extension() == ".f32") continue;
    ++streams;
    const std::string bytes = test::ReadBytes(std::filesystem::path(file).replace_extension("f32"));
    std::vector<float> expected(bytes.size() / sizeof(float));
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(expected.data()));
    const auto got = OpenedSong(file.path()).ReadAll();
    ASSERT_GE(got.size(), expected.size()) << file.path();
    ASSERT_LE(got.size(), expected.size() + 2 * kFrameSamples) << file.path() << ": its tail";
    double squares = 0, largest = 0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
      const double error = std::fabs(double{got[i]} - expected[i]);
      squares += error * error;
      largest = std::max(largest, error);
    }
    EXPECT_LT(std::sqrt(squares / static_cast<double>(expected.size())), 0.0004) << file.path();
    EXPECT_LT(largest, 0.005) << file.path();
  }
  EXPECT_EQ(20, streams);
}

}  // namespace
}  // namespace kwo
