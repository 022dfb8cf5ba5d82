#include "tools/drive_script.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support.h"

namespace kwo::tools {
namespace {

TEST(DriveScript, IsCheckedWholeAndNamesTheWrongLine) {
  struct Case {
    const char *text, *error;
  };
  for (const Case& c : {Case{"", ""},
                        {"# note\n\n  wait 0\r\nshot \"a b.png\"\ntype  two  words\ndialog", ""},
                        {"wait 86400000", ""},
                        {"wait 86400001", "1: wrong arguments for wait"},
                        {"wait -1", "1: wrong arguments for wait"},
                        {"print\npress 10000 -10000", ""},
                        {"print\npress 10001 0", "2: wrong arguments for press"},
                        {"press 1", "1: wrong arguments for press"},
                        {"press 1 2 3", "1: too many arguments for press"},
                        {"drag 1 2 3 four", "1: wrong arguments for drag"},
                        {"caret 99999999999", "1: wrong arguments for caret"},
                        {"shift maybe", "1: wrong arguments for shift"},
                        {"tray", "1: wrong arguments for tray"},
                        {"shot", "1: wrong arguments for shot"},
                        {"close\ndance", "2: unknown command dance"}}) {
    std::vector<ScriptStep> steps;
    std::string error;
    EXPECT_EQ(*c.error == 0, ParseScript(c.text, steps, error)) << c.text;
    EXPECT_EQ(c.error, error);
  }
}

TEST(DriveScript, RunsTheProgramAndSavesWhatItShows) {
  const test::TempFolder shots;
  const std::string folder = MakeProgramFolder();
  std::vector<ScriptStep> steps;
  std::string error;
  const std::string song = test::DataFile("joint128.mp3");
  ASSERT_TRUE(ParseScript("wait 500\ndrop \"" + song + "\"\nshot a.png\n", steps, error));
  EXPECT_TRUE(RunScript(steps, folder, shots.Path(), error)) << error;
  EXPECT_EQ("\x89PNG", test::ReadBytes(shots.File("a.png")).substr(0, 4));
  EXPECT_NE(std::string::npos, test::ReadBytes(folder + "/HISTORY.PLA").find("joint128.mp3"));
  EXPECT_FALSE(RunScript(steps, folder, shots.File("absent"), error));
  EXPECT_EQ("shot a.png failed", error);
  std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace kwo::tools
