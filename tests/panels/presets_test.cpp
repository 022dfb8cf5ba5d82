#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "panels/application_state.h"
#include "panels/equaliser_presets.h"
#include "platform/files.h"
#include "tests/support.h"

namespace kwo {
namespace {

class Presets : public testing::Test {
 protected:
  void SetUp() override {
    std::snprintf(AppDir, sizeof AppDir, "%s\\",
                  platform::FromMachinePath(folder.Path().c_str()).c_str());
    file = folder.File("EQ.SET");
  }
  test::TempFolder folder;
  std::string file;
};

TEST_F(Presets, WithoutAFileAllAreFlatUserPresets) {
  LoadEqPresets();
  for (int i = 0; i < kPresets; ++i) {
    EXPECT_STREQ("User Preset", EqPresetNames[i]);
    for (float value : EqPresetValues[i]) EXPECT_EQ(1.0f, value);
  }
}

TEST_F(Presets, SavedFileReadsBackBitForBit) {
  LoadEqPresets();
  std::strcpy(EqPresetNames[63], "\xed\x95\x9c");
  EqPresetValues[5][16] = 1.4499999f;
  SaveEqPresets();
  const std::string saved = test::ReadBytes(file);
  EXPECT_EQ(8448u, saved.size());
  LoadEqPresets();
  EXPECT_EQ(1.4499999f, EqPresetValues[5][16]);
  SaveEqPresets();
  EXPECT_EQ(saved, test::ReadBytes(file));
}

TEST_F(Presets, ShortFileOverwritesAsMuchAsItHolds) {
  test::WriteBytes(file, std::string(4096, 'n'));
  LoadEqPresets();
  EXPECT_EQ(std::string(63, 'n'), EqPresetNames[0]);
  EXPECT_EQ(1.0f, EqPresetValues[63][16]);
  test::WriteBytes(file, "mine");
  LoadEqPresets();
  EXPECT_STREQ("mine Preset", EqPresetNames[0]);
}

TEST_F(Presets, ValuesThatAreNoCurvesBecomeNeutral) {
  std::string bytes(4096, '\0');
  for (float value : {1.7f, -3.0f, NAN, INFINITY, 1e30f})
    bytes += std::string(reinterpret_cast<const char*>(&value), sizeof value);
  test::WriteBytes(file, bytes);
  LoadEqPresets();
  const float expected[] = {1.7f, -3.0f, 1, 1, 1};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(expected[i], EqPresetValues[0][i]);
}

TEST_F(Presets, FailedSaveLeavesTheOldFile) {
  test::WriteBytes(file, "old");
  std::filesystem::create_directory(test::SavedBeside(file));
  LoadEqPresets();
  SaveEqPresets();
  EXPECT_EQ("old", test::ReadBytes(file));
}

}  // namespace
}  // namespace kwo
