#include "playlist/playlist.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "platform/files.h"
#include "platform/headless/headless.h"
#include "playlist/hooks.h"
#include "playlist/playlist_files.h"
#include "playlist/tag_reader.h"
#include "settings/settings.h"
#include "tests/support.h"

namespace kwo {
namespace {

int stops;

class List : public testing::Test {
 protected:
  void SetUp() override {
    hooks = Hooks();
    RemoveAll();
    stops = 0;
    hooks.transportStop = [] { ++stops; };
    playlist.topIndex = playlist.displayMode = 0;
    playlist.visibleRows = 10;
  }
  void TearDown() override {
    hooks = Hooks();
    RemoveAll();
  }
  void Add(const std::vector<std::string>& names) {
    for (const auto& name : names) AddSong(name.c_str());
    BuildDisplayNames();
  }
  // The file names in list order, selected ones in brackets, the current one with a star.
  std::string Look() {
    std::string look;
    const PlaylistReader reader;
    for (int i = 0; i < playlist.count; ++i) {
      const PlaylistEntry& entry = *reader.Entry(i);
      look += (i ? " " : "");
      if (entry.selected) look += "[";
      look += entry.fileName;
      if (entry.selected) look += "]";
      if (i == playlist.currentSong) look += "*";
    }
    return look;
  }
  std::string Display(int index) {
    char name[kPathSize];
    PlaylistReader().Entry(index)->displayName.Load(name);
    return name;
  }
  std::string Song(const std::string& name, const std::string& tag = "") {
    const std::string path = folder.File(name);
    test::WriteBytes(path, tag);
    return platform::FromMachinePath(path.c_str());
  }
  static std::string Tag(std::string title, std::string artist, std::string album) {
    for (auto* field : {&title, &artist, &album}) field->resize(30);
    return "TAG" + title + artist + album + std::string(35, 0);
  }

  test::TempFolder folder;
};

TEST_F(List, NamesSongsInFiveForms) {
  Add({Song("a.mp3", "xx" + Tag("Title", "Artist", "Album")), "c:\\x\\b.mp3"});
  const char* expected[5][2] = {{"a.mp3", "b.mp3"},
                                {"Title", "b.mp3"},
                                {"Title-Artist", "b.mp3-(n/a)"},
                                {"Artist-Title", "(n/a)-b.mp3"},
                                {"Artist-Album-Title", "(n/a)-(n/a)-b.mp3"}};
  for (int mode = 0; mode < 5; ++mode) {
    playlist.displayMode = mode;
    BuildDisplayNames();
    EXPECT_EQ(expected[mode][0], Display(0));
    EXPECT_EQ(expected[mode][1], Display(1));
  }
  playlist.displayMode = 7;
  BuildDisplayNames();
  EXPECT_EQ("", Display(0));
  const std::string longest = std::string(251, 'y') + ".mp3";
  Add({longest});
  playlist.displayMode = 4;
  BuildDisplayNames();
  EXPECT_EQ(("(n/a)-(n/a)-" + longest).substr(0, 255), Display(2));
}

TEST_F(List, TagsLoseTheirLastByteAndTheirBlanks) {
  const std::string thirty = "123456789012345678901234567890", blanks(30, ' ');
  Add({Song("a.mp3", Tag(thirty, blanks, "x\0y")), Song("b.mp3", "short"),
       Song("c.mp3", Tag("1234567890123456789012345678 0", "Zo\xeb  ", ""))});
  const PlaylistReader reader;
  char text[kTagSize];
  reader.Entry(0)->title.Load(text);
  EXPECT_EQ(thirty.substr(0, 29), text);
  EXPECT_TRUE(reader.Entry(0)->artist.Empty());
  reader.Entry(0)->album.Load(text);
  EXPECT_STREQ("x", text);
  EXPECT_TRUE(reader.Entry(1)->title.Empty());
  reader.Entry(2)->title.Load(text);
  EXPECT_STREQ("1234567890123456789012345678", text);
  reader.Entry(2)->artist.Load(text);
  EXPECT_STREQ("Zo\xeb", text);
  SelectAll();
  ReadAllTags();
  EXPECT_EQ("a.mp3 b.mp3 c.mp3", Look()) << "reading the tags deselects every song";
}

TEST_F(List, SortsAsItShowsAndKeepsTheCurrentSong) {
  Add({"b", "B", "a10", "_z", "A2", "9", "a2", "x\\b", "\xc3\xa9t\xc3\xa9"});
  playlist.currentSong = 2;
  SortList();
  EXPECT_EQ("_z 9 a10* a2 A2 b b B \xc3\xa9t\xc3\xa9", Look());
  playlist.currentSong = -1;
  RemoveAll();
  SortList();
  EXPECT_EQ("", Look());
}

TEST_F(List, ClicksSelect) {
  Add({"a", "b", "c", "d"});
  ClickSong(1, true, false);
  EXPECT_EQ("a [b] c d", Look()) << "Shift without an anchor";
  ClickSong(3, true, true);
  EXPECT_EQ("a [b] [c] [d]", Look());
  ClickSong(0, true, false);
  EXPECT_EQ("[a] [b] c d", Look());
  ClickSong(3, false, true);
  ClickSong(0, false, true);
  EXPECT_EQ("a [b] c [d]", Look());
  ClickSong(2, false, false);
  EXPECT_EQ("a b [c] d", Look());
}

TEST_F(List, RemovalsFollowTheirRules) {
  Add({"a", "b", "c", "d"});
  ClickSong(1, false, true);
  ClickSong(3, false, true);
  playlist.currentSong = 3;
  RemoveSelected();
  EXPECT_EQ("a* c", Look()) << "the last song was current: song 0 is now";
  EXPECT_EQ(1, stops);
  EXPECT_EQ(-1, playlist.selectionAnchor);
  playlist.currentSong = 1;
  ClickSong(1, false, false);
  RemoveUnselected();
  EXPECT_EQ(1, playlist.currentSong) << "the number is not followed";
  EXPECT_EQ("[c]", Look());
  playlist.currentSong = 0;
  RemoveDeadLinks();
  EXPECT_EQ(-1, playlist.currentSong);
  Add({Song("alive.mp3"), "dead"});
  RemoveDeadLinks();
  EXPECT_EQ("alive.mp3", Look());
}

TEST_F(List, SelectedSongsMoveAsABlock) {
  Add({"a", "b", "c", "d", "e"});
  for (int i : {0, 2, 3}) ClickSong(i, false, true);
  playlist.currentSong = 3;
  playlist.topIndex = 0;
  MoveSelectedUp();
  EXPECT_EQ("[a] [c] [d]* b e", Look());
  MoveSelectedUp();
  EXPECT_EQ("[a] [c] [d]* b e", Look());
  playlist.visibleRows = 2;
  MoveSelectedDown();
  EXPECT_EQ("b [a] [c] [d]* e", Look());
  EXPECT_EQ(1, playlist.topIndex);
  MoveSelectedPageDown();
  EXPECT_EQ("b e [a] [c] [d]*", Look());
  EXPECT_EQ(3, playlist.topIndex);
  MoveSelectedPageUp();
  EXPECT_EQ("[a] [c] [d]* b e", Look());
  EXPECT_EQ(1, playlist.topIndex);
}

TEST_F(List, FullListTakesNoMoreAndKeepsWhatItHas) {
  for (int i = 0; i < kMaxSongs + 10; ++i) AddSong("x.mp3");
  EXPECT_EQ(4095, playlist.count);
  EXPECT_EQ(0, AddPath("y.mp3"));
  const PlaylistReader reader;
  EXPECT_EQ(nullptr, reader.Entry(4095));
  EXPECT_EQ(nullptr, reader.Entry(-1));
  EXPECT_EQ(nullptr, reader.Entry(5000));
}

TEST_F(List, RecordsLiveAsLongAsTheirReaders) {
  Add({"a", "b"});
  const PlaylistReader reader;
  const PlaylistEntry* entry = reader.Entry(1);
  RemoveAll();
  EXPECT_STREQ("b", entry->path);
}

TEST_F(List, AddsFilesFoldersAndNothingElse) {
  std::filesystem::create_directories(folder.File("sub/.hidden"));
  std::filesystem::create_directory_symlink(folder.Path(), folder.File("sub/loop"));
  for (const char* name : {"a.mp3", "sub/b.Mp2", "sub/.hidden/c.mp3", "d.wav", "e.ogg", "mp3",
                           "back\\slash.mp3", "ADD sub\nADD .mp3"})
    Song(name);
  for (const char* name : {"zz.mp3", "Sub2.mp3", "B.mp3", "sub/A.mp3"}) Song(name);
  EXPECT_EQ(6, AddPath(platform::FromMachinePath(folder.Path().c_str()).c_str()));
  EXPECT_EQ("a.mp3 B.mp3 A.mp3 b.Mp2 Sub2.mp3 zz.mp3", Look());
  EXPECT_EQ(1, AddPath("no\\such\\song.MP3")) << "no test that it exists";
  EXPECT_EQ(0, AddPath(""));
  EXPECT_EQ(0, AddDirectory(""));
  EXPECT_EQ(0, AddPath((std::string(252, 'x') + ".mp3").c_str()));
  EXPECT_EQ(1, AddPath((std::string(251, 'x') + ".mp3").c_str()));
}

TEST_F(List, OddNamesAreFoundAgainAfterARestart) {
  const std::vector<std::string> names = {"with blank.mp3", "\xea\xb5\xb4.mp3", "Zo\xeb.mp3",
                                          "per%cent=.mp3", std::string(200, 'n') + ".mp3"};
  for (const auto& name : names) AddPath(Song(name).c_str());
  ASSERT_EQ(5, playlist.count);
  ClickSong(2, false, false);
  const std::string before = Look();
  const std::string history = Song("HISTORY.PLA");
  SavePlaylistFile(history.c_str());
  RemoveAll();
  EXPECT_EQ(5, AddPath(history.c_str()));
  EXPECT_EQ(before, Look());
  RemoveDeadLinks();
  EXPECT_EQ(5, playlist.count);
}

TEST_F(List, ReadsPlaylistFilesOfEveryHand) {
  const std::string text =
      "SELECTED\r\nversion 99\r\n// add c.mp3\r\n\r\nADD a b.mp3\n\n\radd   c.mp3\rSELECTED\n"
      " ADD skipped.mp3\nADD\nADD \nPLAY d.mp2\nADDITION e.mp3\n" +
      std::string(500, 'k') + " f.mp3\nADD " + std::string(300, 'v') +
      ".mp3\nselected x\nADD g.mp3";
  EXPECT_EQ(4, LoadPlaylistFile(Song("x.pla", text).c_str()));
  EXPECT_EQ("a b.mp3 [c.mp3] [d.mp2] g.mp3", Look());
  EXPECT_EQ(1, LoadPlaylistFile(Song("y.pla", std::string("ADD h.mp3\0ADD i.mp3", 19)).c_str()));
  EXPECT_EQ(0, LoadPlaylistFile(Song("z.pla", "").c_str()));
  EXPECT_EQ(0, LoadPlaylistFile("absent.pla"));
}

TEST_F(List, PlaylistFilesThatNameEachOtherEnd) {
  const std::string a = Song("a.pla"), b = Song("b.pla");
  Song("a.pla", "ADD one.mp3\nADD " + a + "\nADD " + b + "\n");
  Song("b.pla", "ADD two.mp3\nADD " + a + "\n");
  EXPECT_EQ(2, AddPath(a.c_str()));
  EXPECT_EQ("one.mp3 two.mp3", Look());
}

TEST_F(List, FailedSaveLeavesTheOldFile) {
  const std::string path = Song("HISTORY.PLA", "ADD old.mp3\r\n");
  Add({"new.mp3"});
  const std::string beside = test::SavedBeside(folder.File("HISTORY.PLA"));
  std::filesystem::create_directory(beside);
  SavePlaylistFile(path.c_str());
  EXPECT_EQ("ADD old.mp3\r\n", test::ReadBytes(folder.File("HISTORY.PLA")));
  std::filesystem::remove(beside);
  std::filesystem::permissions(folder.File("HISTORY.PLA"), std::filesystem::perms::owner_read);
  SavePlaylistFile(path.c_str());
  EXPECT_EQ("VERSION 10\r\nADD new.mp3\r\n", test::ReadBytes(folder.File("HISTORY.PLA")));
}

TEST_F(List, DialogsAddWhatTheUserChooses) {
  headless::UseRegistryFile("");
  const std::string here = platform::CurrentFolder();
  const std::string a = Song("a.mp3"), b = Song("b.mp3");
  const std::string shown = platform::FromMachinePath((folder.Path() + "/").c_str());
  Add({"old.mp3"});
  OpenFilesDialog(1);
  EXPECT_EQ("old.mp3", Look()) << "cancelled";
  EXPECT_EQ(here, headless::LastDialogFolder());
  headless::AnswerDialog({shown, {a, b}});
  OpenFilesDialog(0);
  EXPECT_EQ("old.mp3 a.mp3 b.mp3", Look());
  headless::AnswerDialog({shown, {b}});
  OpenFilesDialog(1);
  EXPECT_EQ("b.mp3", Look());
  EXPECT_EQ(shown, headless::LastDialogFolder());
  EXPECT_EQ(shown, GetSettingString("DirOpen", "", 0));
  headless::AnswerDialog({"", {shown}});
  OpenDirectoryDialog(1);
  EXPECT_EQ(2, playlist.count);
  EXPECT_EQ(0, AddPath((shown + "list.m3u").c_str()));
  EXPECT_EQ(platform::CanonicalPath(shown.c_str()) + "\\", platform::CurrentFolder());
  platform::SetCurrentFolder(here.c_str());
}

TEST_F(List, SaveGoesThroughALinkAndKeepsThePermissions) {
  const std::string real = folder.File("real.pla"), link = folder.File("HISTORY.PLA");
  test::WriteBytes(real, "");
  std::filesystem::permissions(real, std::filesystem::perms(0464));
  std::filesystem::create_symlink(real, link);
  Add({"a.mp3"});
  SavePlaylistFile(platform::FromMachinePath(link.c_str()).c_str());
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ("VERSION 10\r\nADD a.mp3\r\n", test::ReadBytes(real));
  EXPECT_EQ(std::filesystem::perms(0664), std::filesystem::status(real).permissions());
}

TEST_F(List, SavedFileStaysItsOwnersAndAnUnreadableOneStays) {
  // Root, who may read and save everything, takes the part of another for a while.
  const uid_t we = geteuid(), owner = we == 0 ? 65534 : we;
  const std::string file = folder.File("HISTORY.PLA");
  const std::string history = Song("HISTORY.PLA", "ADD old.mp3\r\n");
  ASSERT_EQ(0, chown(file.c_str(), owner, static_cast<gid_t>(-1)));
  SavePlaylistFile(history.c_str());
  struct stat status;
  ASSERT_EQ(0, stat(file.c_str(), &status));
  EXPECT_EQ(owner, status.st_uid);

  std::filesystem::permissions(folder.Path(), std::filesystem::perms::all);
  std::filesystem::permissions(file, std::filesystem::perms::none);
  Add({"new.mp3"});
  ASSERT_EQ(0, seteuid(owner));
  SavePlaylistFile(history.c_str());
  ASSERT_EQ(0, seteuid(we));
  std::filesystem::permissions(file + ".old", std::filesystem::perms::owner_read);
  EXPECT_EQ("VERSION 10\r\n", test::ReadBytes(file + ".old"));
  EXPECT_EQ("VERSION 10\r\nADD new.mp3\r\n", test::ReadBytes(file));
}

}  // namespace
}  // namespace kwo
