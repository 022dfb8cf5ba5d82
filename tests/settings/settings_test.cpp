#include "settings/settings.h"

#include <gtest/gtest.h>

#include "platform/headless/headless.h"
#include "platform/registry.h"
#include "tests/support.h"

namespace kwo {
namespace {

class Settings : public testing::Test {
 protected:
  void SetUp() override { headless::UseRegistryFile(""); }
  std::string Stored(const char* name) {
    std::string bytes = "absent";
    platform::ReadRegistry("Software\\KWO", name, bytes);
    return bytes;
  }
};

TEST_F(Settings, AbsentValueIsCreatedAndReadBack) {
  EXPECT_EQ(100, GetSettingInt("SliderVol", 100, 0));
  EXPECT_EQ(100, GetSettingInt("SLIDERVOL", 7, 0));
  EXPECT_EQ(7, GetSettingInt("SliderVol", 7, 1));
  EXPECT_EQ(7, GetSettingInt("slidervol", 9, 0));
  EXPECT_EQ(test::LittleEndian(7, 4), Stored("SLIDERVOL"));
  EXPECT_EQ("absent", Stored("SliderVol"));
}

TEST_F(Settings, NegativeNumbersKeepTheirSign) {
  GetSettingInt("SliderPan", -40, 1);
  EXPECT_EQ(-40, GetSettingInt("SliderPan", 0, 0));
  EXPECT_EQ("\xd8\xff\xff\xff", Stored("SLIDERPAN"));
}

TEST_F(Settings, ValueOfAnotherSizeIsReplacedWhereItDoesNotFit) {
  GetSettingString("Value", "longer than four", 1);
  EXPECT_EQ(5, GetSettingInt("Value", 5, 0));
  EXPECT_EQ(5, GetSettingInt("Value", 6, 0));
  GetSettingString("Value", "ab", 1);
  EXPECT_EQ('a' | 'b' << 8, GetSettingInt("Value", 6, 0));
  GetSettingString("Text", std::string(263, 'x').c_str(), 1);
  EXPECT_EQ(std::string(263, 'x'), GetSettingString("Text", "short", 0));
  GetSettingString("Text", std::string(264, 'x').c_str(), 1);
  EXPECT_STREQ("short", GetSettingString("Text", "short", 0));
}

TEST_F(Settings, TextComesFromTheDefaultOrTheBuffer) {
  const char* fallback = "c:\\music\\";
  EXPECT_EQ(fallback, GetSettingString("DirOpen", fallback, 0));
  const char* stored = GetSettingString("DirOpen", "other", 0);
  EXPECT_STREQ(fallback, stored);
  EXPECT_NE(fallback, stored);
  EXPECT_STREQ("new", GetSettingString("DirOpen", "new", 1));
  EXPECT_EQ("new", Stored("DIROPEN"));
}

TEST_F(Settings, LastFlushIsWhatARestartFinds) {
  test::TempFolder folder;
  const std::string path = folder.File("settings");
  headless::UseRegistryFile(path);
  const std::string odd = "a=b%c\n\\ \xff\x01";
  GetSettingInt("A", -2, 1);
  GetSettingString("B", odd.c_str(), 1);
  FlushSettings();
  GetSettingInt("A", 3, 1);
  GetSettingInt("C", 4, 1);
  headless::UseRegistryFile(path);  // the process died before its next flush
  EXPECT_EQ(-2, GetSettingInt("A", 0, 0));
  EXPECT_EQ(odd, GetSettingString("B", "", 0));
  EXPECT_EQ(0, GetSettingInt("C", 0, 0));
}

TEST_F(Settings, FileThatCannotBeWrittenOrReadChangesNothing) {
  test::TempFolder folder;
  headless::UseRegistryFile(folder.File("no/such/folder/settings"));
  EXPECT_EQ(1, GetSettingInt("A", 1, 0));
  FlushSettings();
  EXPECT_EQ(1, GetSettingInt("A", 2, 0));
  headless::UseRegistryFile(folder.Path());
  EXPECT_EQ(2, GetSettingInt("A", 2, 0));
  const std::string path = folder.File("settings");
  test::WriteBytes(path, "junk\n=\nSoftware\\KWO\\A=dword:zz\nSoftware\\KWO\\B=string:%4\nX=");
  headless::UseRegistryFile(path);
  EXPECT_EQ(0, GetSettingInt("A", 9, 0));
  EXPECT_STREQ("%4", GetSettingString("B", "", 0));
  test::WriteBytes(test::SavedBeside(path), "left by a crash");
  GetSettingInt("A", 5, 1);
  FlushSettings();
  EXPECT_NE(std::string::npos, test::ReadBytes(path).find("A=dword:00000005"));
}

}  // namespace
}  // namespace kwo
