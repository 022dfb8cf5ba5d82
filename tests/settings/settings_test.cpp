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

TEST_F(Settings, AbsentValueIsCreatedUnderItsFoldedNameAndReadBack) {
  EXPECT_EQ(100, GetSettingInt("SliderPan", 100, 0));
  EXPECT_EQ(100, GetSettingInt("SLIDERPAN", 7, 0));
  EXPECT_EQ(-40, GetSettingInt("SliderPan", -40, 1));
  EXPECT_EQ(-40, GetSettingInt("sliderpan", 9, 0));
  EXPECT_EQ("\xd8\xff\xff\xff", Stored("SLIDERPAN"));
  const char* fallback = "c:\\music\\";
  EXPECT_EQ(fallback, GetSettingString("DirOpen", fallback, 0));
  const char* stored = GetSettingString("DirOpen", "other", 0);
  EXPECT_STREQ(fallback, stored);
  EXPECT_NE(fallback, stored);
  EXPECT_STREQ("new", GetSettingString("DirOpen", "new", 1));
  EXPECT_EQ("new", Stored("DIROPEN"));
}

TEST_F(Settings, ValueIsReplacedWhereItDoesNotFit) {
  GetSettingString("Value", "abcde", 1);
  EXPECT_EQ(5, GetSettingInt("Value", 5, 0));
  EXPECT_EQ(5, GetSettingInt("Value", 6, 0));
  GetSettingString("Value", "ab", 1);
  EXPECT_EQ('a' | 'b' << 8, GetSettingInt("Value", 6, 0));
  const std::string longest(1020, 'x');
  GetSettingString("Text", (longest + 'x').c_str(), 1);
  EXPECT_STREQ("short", GetSettingString("Text", "short", 0));
  GetSettingString("Text", longest.c_str(), 1);
  EXPECT_EQ(longest, GetSettingString("Text", "short", 0));
}

TEST_F(Settings, RestartFindsTheLastFlushAndNoHarmInBrokenFiles) {
  test::TempFolder folder;
  for (const char* unusable : {"no/such/folder/settings", "/proc/settings"}) {
    headless::UseRegistryFile(folder.File(unusable));
    EXPECT_EQ(1, GetSettingInt("A", 1, 0));
    FlushSettings();
    EXPECT_EQ(1, GetSettingInt("A", 2, 0));
  }
  const std::string path = folder.File("settings"), odd = "a=b%c\n\\ \xff\x01";
  test::WriteBytes(path, "junk\n=\nSoftware\\KWO\\A=dword:zz\nSoftware\\KWO\\B=string:%4\nX=");
  headless::UseRegistryFile(path);
  EXPECT_EQ(0, GetSettingInt("A", 9, 0));
  EXPECT_STREQ("%4", GetSettingString("B", "", 0));
  GetSettingInt("A", -2, 1);
  GetSettingString("B", odd.c_str(), 1);
  FlushSettings();
  EXPECT_NE(std::string::npos, test::ReadBytes(path).find("A=dword:fffffffe"));
  GetSettingInt("A", 3, 1);
  GetSettingInt("C", 4, 1);
  headless::UseRegistryFile(path);  // the process died before its next flush
  EXPECT_EQ(-2, GetSettingInt("A", 0, 0));
  EXPECT_EQ(odd, GetSettingString("B", "", 0));
  EXPECT_EQ(0, GetSettingInt("C", 0, 0));
}

}  // namespace
}  // namespace kwo
