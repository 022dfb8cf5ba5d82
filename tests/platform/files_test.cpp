#include "platform/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support.h"

namespace kwo::platform {
namespace {

using std::filesystem::perms;

class ReplacedFile : public testing::Test {
 protected:
  ReplacedFile() { test::WriteBytes(file, "old"); }

  test::TempFolder folder;
  const std::string file = folder.File("HISTORY.PLA");
  // Root, who may read and save everything, takes the part of another.
  const uid_t we = geteuid(), owner = we == 0 ? 65534 : we;
};

TEST_F(ReplacedFile, StaysAsItWasWhereTheNewOneCannotBeWritten) {
  // Where the new one is written before it is renamed.
  const std::string beside = file + '.' + std::to_string(getpid()) + ".new";
  std::filesystem::create_directory(beside);
  EXPECT_FALSE(ReplaceFile(file.c_str(), "new"));
  EXPECT_EQ("old", test::ReadBytes(file));
  std::filesystem::remove(beside);
  std::filesystem::permissions(file, perms::owner_read);
  EXPECT_TRUE(ReplaceFile(file.c_str(), "new"));
  EXPECT_EQ("new", test::ReadBytes(file));
}

TEST_F(ReplacedFile, StaysBehindItsLinkWithItsPermissionsAndItsOwner) {
  const std::string link = folder.File("link");
  std::filesystem::create_symlink(file, link);
  std::filesystem::permissions(file, perms(0464));
  ASSERT_EQ(0, chown(file.c_str(), owner, static_cast<gid_t>(-1)));
  EXPECT_TRUE(ReplaceFile(FromMachinePath(link.c_str()).c_str(), "new"));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ("new", test::ReadBytes(file));
  struct stat status;
  ASSERT_EQ(0, stat(file.c_str(), &status));
  EXPECT_EQ(0664u, status.st_mode & 0777);
  EXPECT_EQ(owner, status.st_uid);
}

TEST_F(ReplacedFile, StaysBesideTheNewOneIfItCannotBeRead) {
  ASSERT_EQ(0, chown(file.c_str(), owner, static_cast<gid_t>(-1)));
  std::filesystem::permissions(folder.Path(), perms::all);
  std::filesystem::permissions(file, perms::none);
  ASSERT_EQ(0, seteuid(owner));
  EXPECT_TRUE(ReplaceFile(file.c_str(), "new"));
  ASSERT_EQ(0, seteuid(we));
  std::filesystem::permissions(file + ".old", perms::owner_read);
  EXPECT_EQ("old", test::ReadBytes(file + ".old"));
  EXPECT_EQ("new", test::ReadBytes(file));
}

}  // namespace
}  // namespace kwo::platform
