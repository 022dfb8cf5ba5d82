#include "platform/files.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/kept_file.h"
#include "platform/owned_file.h"
#include "platform/posix/dropped_songs.h"
#include "tests/support.h"

namespace kwo::platform {
namespace {

using std::filesystem::perms;

class ReplacedFile : public testing::Test {
 protected:
  ReplacedFile() { test::WriteBytes(file, "old"); }

  std::string Bytes(const std::string& name) const { return test::ReadBytes(folder.File(name)); }
  std::ptrdiff_t Files() const {
    return std::distance(std::filesystem::directory_iterator(folder.Path()), {});
  }

  test::TempFolder folder;
  const std::string file = folder.File("HISTORY.PLA");
  // Root, who may read and save everything, takes the part of another.
  const uid_t we = geteuid(), owner = we == 0 ? 65534 : we;
};

TEST_F(ReplacedFile, StaysAsItWasWhereTheNewOneCannotBeWritten) {
  std::filesystem::permissions(folder.Path(), perms(0555));
  ASSERT_EQ(0, seteuid(owner));
  EXPECT_FALSE(ReplaceFile(file.c_str(), "new"));
  ASSERT_EQ(0, seteuid(we));
  EXPECT_EQ("old", test::ReadBytes(file));
  std::filesystem::permissions(folder.Path(), perms::owner_all);
  std::filesystem::permissions(file, perms::owner_read);
  EXPECT_TRUE(ReplaceFile(file.c_str(), "new"));
  EXPECT_EQ("new", test::ReadBytes(file));
  rlimit old;
  getrlimit(RLIMIT_FSIZE, &old);
  const rlimit small{4, old.rlim_max};
  const auto handler = signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  EXPECT_FALSE(ReplaceFile(file.c_str(), "longer than the limit"));
  setrlimit(RLIMIT_FSIZE, &old);
  signal(SIGXFSZ, handler);
  EXPECT_EQ("new", test::ReadBytes(file));
  EXPECT_EQ(1, Files()) << "nothing is left over";
}

TEST_F(ReplacedFile, StaysBehindItsLinkWithItsPermissionsAndItsOwner) {
  const std::string link = folder.File("link");
  std::filesystem::create_symlink(file, link);
  std::filesystem::permissions(file, perms(0464));
  ASSERT_EQ(0, chown(file.c_str(), owner, static_cast<gid_t>(-1)));
  EXPECT_TRUE(ReplaceFile(FromMachinePath(link).c_str(), "new"));
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
  std::filesystem::permissions(folder.File("HISTORY-OLD.PLA"), perms::owner_read);
  EXPECT_EQ("old", Bytes("HISTORY-OLD.PLA"));
  EXPECT_EQ("new", Bytes("HISTORY.PLA"));
}

TEST_F(ReplacedFile, FolderOrPipeInItsPlaceHarmsNothingAndIsKept) {
  const auto replaces = [this](const char* text) {
    EXPECT_TRUE(ReplaceFile(file.c_str(), text)) << text;
    EXPECT_EQ(text, test::ReadBytes(file));
    std::filesystem::remove(file);
  };
  std::filesystem::remove(file);
  std::filesystem::create_directory(file);
  test::WriteBytes(file + "/song", "a");
  replaces("for a folder");
  EXPECT_EQ("a", Bytes("HISTORY-OLD.PLA/song"));
  ASSERT_EQ(0, mkfifo(file.c_str(), 0666));
  replaces("for a pipe");
  EXPECT_TRUE(std::filesystem::is_fifo(folder.File("HISTORY-OLD-2.PLA")));
  std::filesystem::create_symlink(folder.File("nowhere"), file);
  replaces("for a dead link");
}

TEST_F(ReplacedFile, WrittenByAnotherIsSetAside) {
  KeptFile kept;
  kept.Note(file.c_str());
  const auto replaces = [&](const char* text) {
    EXPECT_TRUE(kept.Replace(file.c_str(), text));
    EXPECT_EQ(text, test::ReadBytes(file));
  };
  replaces("ours");
  replaces("ours again");
  EXPECT_EQ(1, Files());
  for (int other = 1; other <= 10; ++other) {
    test::WriteBytes(file, "another's " + std::to_string(other));
    replaces("ours");
  }
  EXPECT_EQ("another's 1", Bytes("HISTORY-OLD.PLA"));
  EXPECT_EQ("another's 2", Bytes("HISTORY-OLD-2.PLA"));
  EXPECT_EQ("another's 10", Bytes("HISTORY-OLD-9.PLA")) << "the last name is used again";
  EXPECT_EQ(10, Files());
  KeptFile late;
  late.Note(folder.File("EQ.SET").c_str());
  test::WriteBytes(folder.File("EQ.SET"), "come since");
  EXPECT_TRUE(late.Replace(folder.File("EQ.SET").c_str(), "ours"));
  EXPECT_EQ("come since", Bytes("EQ-OLD.SET"));
}

TEST_F(ReplacedFile, OfALivingOwnerIsNotTaken) {
  const std::string path = folder.File("RUNNING");
  OwnedFile taken;
  {
    OwnedFile owned;
    owned.Begin(path);
    for (const char* text : {"one", "two"}) {
      EXPECT_TRUE(owned.Replace(text));
      EXPECT_EQ(text, test::ReadBytes(path));
      EXPECT_FALSE(taken.Adopt(path));
    }
  }
  std::filesystem::create_symlink(path, folder.File("link"));
  EXPECT_FALSE(taken.Adopt(folder.File("link")));
  EXPECT_FALSE(taken.Adopt(folder.File("none")));
  EXPECT_TRUE(taken.Adopt(path));
  taken.Remove();
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(ReplacedFile, AbandonedNewOnesAreRemoved) {
  const std::string left = file + '.' + RandomName() + ".new";
  OwnedFile living;
  living.Begin(file + '.' + RandomName() + ".new");
  EXPECT_TRUE(living.Replace("under way"));
  test::WriteBytes(left, "half");
  for (const char* users : {"song.new", "notes.2024-01-15_12-30.new"})
    test::WriteBytes(folder.File(users), "the user's");
  ASSERT_EQ(0, mkfifo((file + '.' + RandomName() + ".new").c_str(), 0666));
  RemoveAbandonedFiles((folder.Path() + "/").c_str());
  EXPECT_FALSE(std::filesystem::exists(left));
  EXPECT_EQ(5, Files());
}

TEST(Files, FolderIsMadeWithThoseThatItLiesIn) {
  const test::TempFolder folder;
  EXPECT_TRUE(MakeFolder(folder.File("a/b/c").c_str()));
  EXPECT_TRUE(MakeFolder(folder.File("a/b/c").c_str()));
  EXPECT_TRUE(std::filesystem::is_directory(folder.File("a/b/c")));
  test::WriteBytes(folder.File("file"), "");
  EXPECT_FALSE(MakeFolder(folder.File("file/d").c_str()));
}

TEST(DroppedSongs, AreNoneWithoutASong) {
  const test::TempFolder folder;
  const auto path = [&](const std::string& name) { return FromMachinePath(folder.File(name)); };
  const auto taken = [&](const std::string& name) { return !DroppedSongs({path(name)}).empty(); };
  for (const char* name : {"gone.mp3", "B.Mp2", "list.pla"}) EXPECT_TRUE(taken(name)) << name;
  for (const char* name : {"list.m3u", "cover.png", "song.wav", "mp3"}) EXPECT_FALSE(taken(name));
  EXPECT_FALSE(taken(std::string(250, 'x') + ".mp3")) << "nobody could open it";
  EXPECT_FALSE(taken(std::string("a\0.mp3", 6)));
  EXPECT_TRUE(DroppedSongs({}).empty());
  EXPECT_EQ(2u, DroppedSongs({path("cover.png"), path("a.mp3")}).size()) << "the rest does no harm";

  std::filesystem::create_directories(folder.File("album/deep/er"));
  for (const char* name : {"album/.Trash", "album/.Trash-1000", "...And Justice"})
    std::filesystem::create_directories(folder.File(name));
  test::WriteBytes(folder.File("album/deep/er/cover.png"), "");
  for (const char* name : {"album/.Trash/a.mp3", "album/.Trash-1000/a.mp3", "...And Justice/a.mp3"})
    test::WriteBytes(folder.File(name), "");
  std::filesystem::create_directory_symlink("..", folder.File("album/deep/back"));
  EXPECT_FALSE(taken("album"));
  test::WriteBytes(folder.File("album/deep/er/a.MP3"), "");
  EXPECT_TRUE(taken("album"));
  for (const char* name : {"album/.Trash", "...And Justice", ""})
    EXPECT_TRUE(taken(name)) << "a folder that the user names counts, and a dot hides nothing";

  std::filesystem::create_directory(folder.File("many"));
  for (int i = 0; i < 10000; ++i) test::WriteBytes(folder.File("many/" + std::to_string(i)), "");
  EXPECT_FALSE(taken("many"));
  test::WriteBytes(folder.File("many/one more"), "");
  EXPECT_TRUE(taken("many")) << "the look has an end";
}

}  // namespace
}  // namespace kwo::platform
