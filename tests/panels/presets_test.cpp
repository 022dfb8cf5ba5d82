#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>

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
  }
  test::TempFolder folder;
  const std::string file = folder.File("EQ.SET");
};

TEST_F(Presets, FileHoldsAllNamesThenAllValuesAndOutlivesAFailedSave) {
  LoadEqPresets();
  SaveEqPresets();
  std::string flat;
  for (int i = 0; i < 64; ++i) flat += "User Preset" + std::string(53, '\0');
  for (int i = 0; i < 64 * 17; ++i) flat += test::LittleEndian(0x3F800000, 4);  // 1.0
  EXPECT_EQ(flat, test::ReadBytes(file));
  std::strcpy(EqPresetNames[63], "\xed\x95\x9c");
  EqPresetValues[5][16] = 1.4499999f;
  SaveEqPresets();
  LoadEqPresets();
  EXPECT_STREQ("\xed\x95\x9c", EqPresetNames[63]);
  EXPECT_EQ(1.4499999f, EqPresetValues[5][16]);
  std::filesystem::remove(file);
  std::filesystem::create_symlink("/proc/version", file);  // where nothing can be saved
  const std::string old = test::ReadBytes(file);
  EXPECT_FALSE(SaveEqPresets());
  EXPECT_TRUE(std::filesystem::is_symlink(file) && test::ReadBytes(file) == old);
}

TEST_F(Presets, FileGivesAsMuchAsItHoldsAndWhatIsNoNameOrCurveIsMended) {
  test::WriteBytes(file, "mine");
  LoadEqPresets();
  EXPECT_STREQ("mine Preset", EqPresetNames[0]);
  const float kWritten[] = {1.7f, -3.0f, 10.0f, 10.01f, -10.01f, NAN, -INFINITY};
  const float kExpected[] = {1.7f, -3.0f, 10.0f, 1, 1, 1, 1, 1};  // one more than the file has
  const std::string values(reinterpret_cast<const char*>(kWritten), sizeof kWritten);
  test::WriteBytes(file, std::string(4096, 'n') + values);
  LoadEqPresets();
  for (int i : {0, 63}) EXPECT_EQ(std::string(63, 'n'), EqPresetNames[i]);
  for (int i = 0; i < 8; ++i) EXPECT_EQ(kExpected[i], EqPresetValues[0][i]);
}

}  // namespace
}  // namespace kwo
