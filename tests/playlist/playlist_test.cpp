#include "playlist/playlist.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <random>

#include "base/hooks.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/headless/headless.h"
#include "playlist/file_dialogs.h"
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
    ReadAllTags();
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
  test::TempFolder folder;
};

TEST_F(List, NamesSongsInFiveForms) {
  Add({Song("a.mp3", "xx" + test::Tag("Title", "Artist", "Album")), "c:\\x\\b.mp3"});
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

TEST_F(List, NamesHave255Characters) {
  std::string name;
  for (int i = 0; i < 251; ++i) name += "\xF0\x9F\x8E\xB5";  // a note, four bytes
  Add({name + ".mp3"});
  EXPECT_EQ(0, AddPath((name + "x.mp3").c_str()));
  EXPECT_EQ(1,
            LoadPlaylistFile(Song("x.pla", "ADD " + name + ".mp3\nADD x" + name + ".mp3").c_str()));
  playlist.displayMode = 2;
  BuildDisplayNames();
  EXPECT_EQ(name + ".mp3", Display(0)) << "cut before the hyphen";
  playlist.displayMode = 3;
  BuildDisplayNames();
  EXPECT_EQ("(n/a)-" + name.substr(0, std::size_t{4} * 249), Display(0));
}

TEST_F(List, SongsWithoutTheShortTagAreNamedByTheLongOne) {
  const std::string both = Song("both.mp3", "xx" + test::Tag("Short", "", "")),
                    one = Song("one.mp3");
  for (const std::string& path : {both, one})
    headless::SetLongTag(path, {"Заря", "Artist", std::string(256, 'x')});
  playlist.displayMode = 4;
  Add({both, one});
  BuildDisplayNames();
  EXPECT_EQ("(n/a)-(n/a)-Short", Display(0)) << "of the short one all is taken as it stands";
  EXPECT_EQ("Artist-(n/a)-Заря", Display(1)) << "what is too long is left out whole";
  headless::SetLongTag(one, {"New", "", ""});
  ReadAllTags();
  EXPECT_EQ("(n/a)-(n/a)-New", Display(1));
}

TEST_F(List, LineBehindAnM3uMeansTheFolderThatIsCurrentThen) {
  std::filesystem::create_directories(folder.File("here/there"));
  Song("here/there/a.mp3");
  const std::string here = platform::CurrentFolder();
  AddPlaylistText("ADD 1.mp3\nADD 2.mp3\nADD 3.mp3\nADD " + folder.File("here/x.m3u") +
                  "\nADD there\nADD 4.mp3\n");
  platform::SetCurrentFolder(here.c_str());
  EXPECT_EQ("1.mp3 2.mp3 3.mp3 a.mp3 4.mp3", Look());
}

TEST_F(List, PlaylistsMayHaveSlashes) {
  const std::string path = folder.File("sub/a b.mp3");
  AddPlaylistText("ADD " + path + "\nplay " + path + "\n");
  EXPECT_EQ("a b.mp3 a b.mp3", Look());
  EXPECT_EQ(platform::FromMachinePath(path), PlaylistReader().Entry(0)->path);
}

TEST_F(List, TagsLoseTheirLastByteAndTheirBlanks) {
  const std::string thirty = "123456789012345678901234567890", blanks(30, ' ');
  Add({Song("a.mp3", test::Tag(thirty, blanks, "x\0y")), Song("b.mp3", "short"),
       Song("c.mp3", test::Tag(thirty.substr(0, 28) + " 0", "Zo\xeb  ", ""))});
  playlist.displayMode = 4;
  BuildDisplayNames();
  EXPECT_EQ("(n/a)-x-" + thirty.substr(0, 29), Display(0));
  EXPECT_EQ("(n/a)-(n/a)-b.mp3", Display(1));
  EXPECT_EQ("Zo\xeb-(n/a)-" + thirty.substr(0, 28), Display(2));
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

// The list as its description has it, operation by operation, on a vector.
struct PlainList {
  struct Song {
    std::string name;
    bool selected;
  };
  std::vector<Song> songs;
  int current = -1, top = 0, rows = 10, anchor = -1;
  int stops = 0, songLines = 0, pages = 0;

  std::array<int, 7> Told() const {
    return {Count(), current, anchor, top, stops, songLines, pages};
  }
  // As the fixture's.
  std::string Look() {
    std::string look;
    for (int i = 0; i < Count(); ++i) {
      if (i > 0) look += ' ';
      look += At(i).selected ? '[' + At(i).name + ']' : At(i).name;
      if (i == current) look += '*';
    }
    return look;
  }
  int Count() const { return static_cast<int>(songs.size()); }
  Song& At(int i) { return songs[static_cast<std::size_t>(i)]; }

  void Click(int index, bool shift, bool control) {
    if (shift && anchor >= 0) {
      for (int i = 0; i < Count(); ++i)
        At(i).selected = (anchor <= i && i <= index) || (index <= i && i <= anchor);
      return;
    }
    if (control) {
      At(index).selected = !At(index).selected;
    } else {
      for (int i = 0; i < Count(); ++i) At(i).selected = i == index;
    }
    anchor = index;
  }
  void Exchange(int i, int j) {
    std::swap(At(i), At(j));
    current = current == i ? j : current == j ? i : current;
  }
  void Sort() {
    for (int i = 0; i + 1 < Count();) {
      if (At(i).name > At(i + 1).name) {
        Exchange(i, i + 1);
        i = 0;
      } else {
        ++i;
      }
    }
  }
  void Remove(const std::function<bool(const Song&)>& chosen) {
    for (int i = Count() - 1; i >= 0; --i) {
      if (!chosen(At(i))) continue;
      songs.erase(songs.begin() + i);
      if (current != i) continue;
      ++stops;
      if (Count() <= current) current = 0;
      if (Count() <= 0) current = -1;
      ++songLines;
    }
    if (current >= Count()) current = -1, ++songLines;
    anchor = -1;
    ++pages;
  }
  void Scroll(bool moved, int by) {
    if (!moved) return;
    top = std::max(0, by > 0 ? std::min(top + by, Count() - rows) : top + by);
    ++pages;
  }
  void MoveOne(int by) {
    bool moved = false;
    for (int n = 1; n < Count(); ++n) {
      const int i = by < 0 ? n : Count() - 1 - n;
      if (At(i + by).selected || !At(i).selected) continue;
      Exchange(i, i + by);
      moved = true;
    }
    Scroll(moved, by);
  }
  void MovePage(int by) {
    bool moved = false;
    for (int n = by < 0 ? 1 : 0; n < Count(); ++n) {
      const int i = by < 0 ? n : Count() - 1 - n;
      if (!At(i).selected) continue;
      int d = rows;
      while (d > 0 && (i + by * d < 0 || i + by * d >= Count() || At(i + by * d).selected)) --d;
      const int to = i + by * d;
      const Song song = At(i);
      songs.erase(songs.begin() + i);
      songs.insert(songs.begin() + to, song);
      if (current == i) {
        current = to;
      } else if (by < 0 && current < i && to <= current) {
        ++current;
      } else if (by > 0 && current > i && to >= current) {
        --current;
      }
      moved = true;
    }
    Scroll(moved, by * rows);
  }
};

TEST_F(List, ThousandsOfRandomOperationsGiveThePlainList) {
  static int songLines, pages;
  songLines = pages = 0;
  hooks.refreshSongLine = [] { ++songLines; };
  hooks.refreshPlaylistPage = [] { ++pages; };
  std::vector<std::string> names;
  for (char letter = 'a'; letter <= 'z'; ++letter) {
    names.push_back(std::string(1, letter));
    if (letter % 2) test::WriteBytes(folder.File(names.back()), "");
  }
  const std::string here = platform::FromMachinePath((folder.Path() + "/").c_str());
  std::mt19937 random(5);
  const auto next = [&random](int range) {
    return static_cast<int>(random() % static_cast<unsigned>(std::max(range, 1)));
  };
  PlainList plain;
  const auto add = [&] {
    if (plain.Count() == 40) return;
    const std::string& name = names[random() % 26];
    EXPECT_EQ(1, AddSong((here + name).c_str()));
    plain.songs.push_back({name, false});
  };
  const auto click = [&] {
    if (plain.Count() == 0) return;
    const int index = next(plain.Count());
    const bool shift = next(3) == 0, control = next(2);
    ClickSong(index, shift, control);
    plain.Click(index, shift, control);
  };
  const auto clear = [&] {
    const bool all = next(2);
    (all ? RemoveAll : ClearList)();
    plain.songs.clear();
    plain.current = -1;
    if (all) plain.anchor = -1;
    ++plain.stops;
    plain.songLines += all, plain.pages += all;
  };
  const auto mark = [&] {
    const bool all = next(2);
    (all ? SelectAll : DeselectAll)();
    for (auto& song : plain.songs) song.selected = all;
  };
  const auto look = [&] {
    playlist.currentSong = plain.current = next(plain.Count() + 1) - 1;
    playlist.visibleRows = plain.rows = 1 + next(10);
    playlist.topIndex = plain.top = next(plain.Count());
  };
  using Chosen = bool (*)(const PlainList::Song&);
  const auto remove = [&](void (*operation)(), Chosen chosen) {
    if (next(4) != 0) return;  // or the list would never be long
    operation();
    plain.Remove(chosen);
  };
  const std::pair<const char*, std::function<void()>> kOperations[] = {
      {"add", add},
      {"add", add},
      {"add", add},
      {"add", add},
      {"click", click},
      {"click", click},
      {"click", click},
      {"look", look},
      {"mark", mark},
      {"up", [&] { MoveSelectedUp(), plain.MoveOne(-1); }},
      {"down", [&] { MoveSelectedDown(), plain.MoveOne(1); }},
      {"page up", [&] { MoveSelectedPageUp(), plain.MovePage(-1); }},
      {"page down", [&] { MoveSelectedPageDown(), plain.MovePage(1); }},
      {"sort", [&] { BuildDisplayNames(), SortList(), plain.Sort(); }},
      {"selected", [&] { remove(RemoveSelected, [](const auto& song) { return song.selected; }); }},
      {"others", [&] { remove(RemoveUnselected, [](const auto& s) { return !s.selected; }); }},
      {"dead", [&] { remove(RemoveDeadLinks, [](const auto& s) { return s.name[0] % 2 == 0; }); }},
      {"clear", [&] { next(20) == 0 ? clear() : add(); }},
  };
  for (int round = 0; round < 20000; ++round) {
    const auto& [operation, act] = kOperations[random() % std::size(kOperations)];
    act();
    ASSERT_EQ(plain.Look(), Look()) << round << ' ' << operation;
    ASSERT_EQ(nullptr, PlaylistReader().Entry(plain.Count()));
    const int told[] = {playlist.count,
                        playlist.currentSong,
                        playlist.selectionAnchor,
                        playlist.topIndex,
                        stops,
                        songLines,
                        pages};
    ASSERT_TRUE(std::ranges::equal(plain.Told(), told)) << round << ' ' << operation;
  }
}

TEST_F(List, FullListRefusesMoreAndSavesWhatItHas) {
  for (int i = 0; i < kMaxSongs; ++i) ASSERT_EQ(1, AddSong("x.mp3"));
  EXPECT_EQ(0, AddSong("y.mp3"));
  EXPECT_EQ(0, AddPath("y.mp3"));
  EXPECT_EQ(4095, playlist.count);
  const std::string history = Song("HISTORY.PLA");
  SavePlaylistFile(history.c_str());
  RemoveAll();
  EXPECT_EQ(4095, AddPath(history.c_str()));
  const PlaylistReader reader;
  EXPECT_EQ("x.mp3", reader.Entry(4094)->path);
  for (int none : {-1, 4095, 5000}) EXPECT_EQ(nullptr, reader.Entry(none));
}

TEST_F(List, RecordsLiveAsLongAsTheirReaders) {
  Add({"a", "b"});
  const PlaylistReader reader;
  const PlaylistEntry* entry = reader.Entry(1);
  RemoveAll();
  EXPECT_EQ("b", entry->path);
}

TEST_F(List, AddsFilesFoldersAndNothingElse) {
  for (const char* name : {"sub/.5", ".Trash", "sub/.Trash-7", "sub/.Trash-", "home/.cache"})
    std::filesystem::create_directories(folder.File(name));
  setenv("HOME", folder.File("home").c_str(), 1);
  std::filesystem::create_directory_symlink(folder.Path(), folder.File("sub/loop"));
  for (const char* name :
       {"a.mp3", "sub/b.Mp2", "sub/.5/c.mp3", ".Trash/t.mp3", "sub/.Trash-7/t.mp3",
        "sub/.Trash-/x.mp3", "home/.cache/h.mp3", "home/.h.mp3", "d.wav", "e.ogg", "mp3",
        "back\\slash.mp3", "ADD sub\nADD .mp3"})
    Song(name);
  for (const char* name : {"zz.mp3", "Sub2.mp3", "B.mp3", "sub/A.mp3"}) Song(name);
  EXPECT_EQ(9, AddPath(platform::FromMachinePath(folder.Path().c_str()).c_str()));
  EXPECT_EQ("a.mp3 B.mp3 .h.mp3 c.mp3 x.mp3 A.mp3 b.Mp2 Sub2.mp3 zz.mp3", Look());
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
  EXPECT_EQ(1, LoadPlaylistFile(Song("w.pla", "SELECTED\nADD i.mp3\nSELECTED\n").c_str()));
  EXPECT_EQ("[i.mp3]", Look());
  RemoveAll();
  const std::string text =
      "SELECTED\r\nversion 99\r\n// add c.mp3\r\n\r\nADD a b.mp3\n\n\radd   c.mp3\rSELECTED\n"
      " ADD skipped.mp3\nADD\nADD \nPLAY d.mp2\nADDITION e.mp3\n" +
      std::string(500, 'k') + " f.mp3\nADD " + std::string(300, 'v') +
      ".mp3\nselected x\nADD g.mp3";
  EXPECT_EQ(4, LoadPlaylistFile(Song("x.pla", text).c_str()));
  EXPECT_EQ("a b.mp3 [c.mp3] [d.mp2] g.mp3", Look());
  SavePlaylistFile(Song("saved.pla").c_str());
  EXPECT_EQ(
      "VERSION 10\r\nADD a b.mp3\r\nADD c.mp3\r\nSELECTED\r\nADD d.mp2\r\nSELECTED\r\n"
      "ADD g.mp3\r\n",
      test::ReadBytes(folder.File("saved.pla")));
  EXPECT_EQ(1, LoadPlaylistFile(Song("y.pla", std::string("ADD h.mp3\0ADD i.mp3", 19)).c_str()));
  EXPECT_EQ(0, LoadPlaylistFile(Song("z.pla", "").c_str()));
  EXPECT_EQ(0, LoadPlaylistFile("absent.pla"));
}

TEST_F(List, FoldersAndPlaylistFilesCountOnceInAnAdd) {
  std::string first;
  for (int i = 40; i > 0; --i) {
    const std::string twice = first.empty() ? "" : "ADD " + first + "\nADD " + first + "\n";
    first = Song(std::to_string(i) + ".pla", twice + "ADD " + std::to_string(i) + ".mp3\n");
  }
  test::WriteBytes(folder.File("40.pla"), "ADD " + first + "\nADD 40.mp3");
  EXPECT_EQ(40, AddPath(first.c_str())) << "also where they name each other";
  RemoveAll();
  // Ten folders, each with links to all.
  for (int i = 0; i < 10; ++i) {
    const std::string name(1, static_cast<char>('a' + i));
    std::filesystem::create_directory(folder.File(name));
    Song(name + "/" + name + ".mp3");
    for (int j = 0; j < 10; ++j)
      std::filesystem::create_directory_symlink(folder.File(std::string(1, char('a' + j))),
                                                folder.File(name + "/to" + std::to_string(j)));
  }
  EXPECT_EQ(10, AddPath(platform::FromMachinePath(folder.File("d")).c_str()));
  EXPECT_EQ(1, AddPath((Song("x.pla", "ADD " + folder.File("b/b.mp3"))).c_str()));
}

TEST_F(List, ThousandsOfPathsAreAddedAtOnce) {
  std::vector<std::string> paths{"", std::string(300, 'x') + ".mp3", Song("folder.txt")};
  for (int i = 0; i < 2000; ++i) paths.push_back(std::to_string(i) + ".mp3");
  int times = 0;
  const unsigned start = platform::GetTickCount();
  AddPaths(paths, [&times](int songs) { times += songs; });
  EXPECT_LT(platform::GetTickCount() - start, 300u);
  EXPECT_TRUE(times == 2000 && playlist.count == 2000);
}

TEST_F(List, WalkHasAnEnd) {
  std::string text = "ADD " + std::string(4 << 20, 'x');
  EXPECT_EQ(0, LoadPlaylistFile(Song("long.pla", text).c_str()));
  EXPECT_EQ(0, LoadPlaylistFile(Song("long.pla", text.substr(4)).c_str()));
  text.clear();
  for (int i = 0; i < 200000; ++i) text += "ADD x\n";
  EXPECT_EQ(0, LoadPlaylistFile(Song("names.pla", text + "ADD a.mp3\n").c_str()));
  EXPECT_EQ(1, LoadPlaylistFile(Song("names.pla", text.substr(6) + "ADD a.mp3\n").c_str()));
}

TEST_F(List, FileSystemThatDoesNotAnswerHoldsNobodyUp) {
  for (const char* name : {"a", "c"}) std::filesystem::create_directory(folder.File(name));
  const std::string good = Song("a/1.mp3", test::Tag("One", "", ""));
  Song("c/2.mp3", test::Tag("Two", "", ""));
  Song("c/z.mp3", test::Tag("Last", "", ""));
  for (const char* name : {"b1.mp3", "b2.mp3", "b3.jpg"})
    Song(std::string("c/") + name, test::Tag("Dead", "", ""));
  const std::string dead = platform::FromMachinePath(folder.File("c/b"));
  headless::SetStandingFolder(dead);
  playlist.displayMode = 1;
  const auto add = [&](const std::string& path) {
    RemoveAll();
    const unsigned start = platform::GetTickCount();
    const int added = AddPath(path.c_str());
    const int seconds = static_cast<int>(platform::GetTickCount() - start) / 1000;
    BuildDisplayNames();
    std::string names = std::to_string(added) + " in " + std::to_string(seconds) + " s:";
    for (int i = 0; i < playlist.count; ++i) names += ' ' + Display(i);
    return names;
  };
  EXPECT_EQ("5 in 2 s: One Two b1.mp3 b2.mp3 z.mp3", add(platform::FromMachinePath(folder.Path())))
      << "the rest of the folder counts as unreadable";
  EXPECT_EQ("2 in 2 s: b1.mp3 One", add(Song("x.pla", "ADD " + dead + "1.mp3\nADD " + good)))
      << "another folder does not";
  headless::SetStandingFolder(platform::FromMachinePath(folder.File("c")));
  EXPECT_EQ("1 in 2 s: One", add(platform::FromMachinePath(folder.Path())));
  RemoveAll();
  AddPath(dead.c_str());
  AddSong((dead + "1.mp3").c_str());
  AddSong("nowhere.mp3");
  AddSong(good.c_str());
  RemoveDeadLinks();
  EXPECT_EQ("b1.mp3 1.mp3", Look()) << "what keeps silent is not dead";
  ReadAllTags();
  BuildDisplayNames();
  EXPECT_EQ("One", Display(1));
  headless::SetStandingFolder("");
  ReadAllTags();
  BuildDisplayNames();
  EXPECT_EQ("Dead", Display(0));
}

TEST_F(List, DialogsOpenWhereTheLastOneChose) {
  headless::UseRegistryFile("");
  const std::string here = platform::CurrentFolder();
  const std::string shown = platform::FromMachinePath((folder.Path() + "/").c_str());
  OpenFilesDialog(1);
  EXPECT_EQ(here, headless::LastDialogFolder());
  headless::AnswerDialog({shown, {Song("a.mp3"), Song("b.mp3")}});
  OpenFilesDialog(0);
  EXPECT_EQ("a.mp3 b.mp3", Look());
  OpenFilesDialog(1);
  EXPECT_EQ("a.mp3 b.mp3", Look()) << "cancelled";
  EXPECT_EQ(shown, headless::LastDialogFolder());
  EXPECT_EQ(shown, GetSettingString("DirOpen", "", 0));
  EXPECT_EQ(0, AddPath((shown + "list.m3u").c_str()));
  EXPECT_EQ(platform::CanonicalPath(shown.c_str()) + "\\", platform::CurrentFolder());
  platform::SetCurrentFolder(here.c_str());
}

}  // namespace
}  // namespace kwo
