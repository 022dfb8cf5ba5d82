// What the user has outlives a kill, a second player and a save that fails.

#include "app/running_copy.h"

#include <cstring>

#include "panels/equaliser_presets.h"
#include "platform/messages.h"
#include "platform/owned_file.h"
#include "tests/app/program_fixture.h"

namespace kwo::test {
namespace {

class RunningCopy : public Program {
 protected:
  std::vector<std::string> Copies() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
      if (entry.path().extension() == ".KWO") names.push_back(entry.path().string());
    return names;
  }
  std::string Copy() const { return Copies().size() == 1 ? ReadBytes(Copies()[0]) : ""; }
  int Start(std::function<void(const Hands&)> user) {
    ClearList();
    return Run(std::move(user));
  }
  // As if the last run had never been, but for what it has left among its copies.
  void Forget() {
    for (const char* file : {"HISTORY.PLA", "EQ.SET"}) std::filesystem::remove(folder.File(file));
    headless::UseRegistryFile("");
  }
};

TEST_F(RunningCopy, IsWhereTheNextStartGoesOnAfterAKill) {
  std::string first, killed;
  Start([&](const Hands& hands) {
    first = Copy();
    hands.Drop(Songs(3));
    OpenPage(hands, PAGE_PLAYLIST);
    Press(hands, WIDGET_ROW + 1);
    SliderVol = 77;
    std::strcpy(EqPresetNames[5], "Night");
    EqPresetValues[5][3] = 0.75f;
    hands.Wait(5000);
    killed = Copy();
  });
  EXPECT_TRUE(Copies().empty()) << "an ordinary end needs none";
  Forget();
  WriteBytes(folder.File("RUNNING-1.KWO"), killed);
  WriteBytes(folder.File("RUNNING-2.KWO"), first);
  const auto now = std::filesystem::last_write_time(folder.File("RUNNING-1.KWO"));
  std::filesystem::last_write_time(folder.File("RUNNING-2.KWO"), now - std::chrono::seconds(1));
  platform::OwnedFile living;
  living.Begin(folder.File("RUNNING-3.KWO"));
  ASSERT_TRUE(living.Replace(first));
  Start([&](const Hands&) {
    EXPECT_EQ("0 *1 2 ", Names());
    EXPECT_EQ(2, playlist.currentSong);
    EXPECT_EQ(77, SliderVol);
    EXPECT_STREQ("Night", EqPresetNames[5]);
    EXPECT_EQ(0.75f, EqPresetValues[5][3]);
    EXPECT_EQ(2u, Copies().size()) << "the living one's and its own";
    for (const char* file : {"HISTORY.PLA", "EQ.SET"})
      EXPECT_FALSE(std::filesystem::exists(folder.File(file)));
  });
  living.Remove();
  EXPECT_TRUE(Copies().empty());
  Start([](const Hands&) { EXPECT_EQ("0 *1 2 ", Names()) << "by now in its own place"; });
}

TEST_F(RunningCopy, DamagedOrForeignOneChangesNothing) {
  std::string whole;
  Start([&](const Hands& hands) {
    hands.Drop(Songs(2));
    hands.Wait(5000);
    whole = Copy();
  });
  for (const std::string& bytes :
       {std::string(), std::string("KWO"), std::string("KWO 1 2 3\n"), whole + "more",
        whole.substr(0, whole.size() / 2), std::string("KWO 18446744073709551615 1 3\nabc"),
        std::string("KWO -1 -1 5 0 0\nabc"), std::string("KWO 1 1 1\nabc")}) {
    WriteBytes(folder.File("RUNNING-1.KWO"), bytes);
    Start([&](const Hands&) { EXPECT_EQ("0 1 ", Names()) << bytes.size(); });
    EXPECT_TRUE(Copies().empty());
  }
}

TEST_F(RunningCopy, StaysWhereTheListCannotBeSaved) {
  Start([this](const Hands& hands) {
    // Where the copy itself can't be written for a while, it is tried again.
    const auto moved = [this](const std::string& name) { return folder.Path() + name; };
    std::filesystem::rename(folder.Path(), moved("-away"));
    hands.Drop(Songs(3));
    WriteBytes(folder.Path(), "no folder");
    hands.Wait(5000);
    std::filesystem::remove(folder.Path());
    std::filesystem::rename(moved("-away"), folder.Path());
    Songs(3);
    hands.Wait(5000);
    EXPECT_NE(std::string::npos, Copy().find("song2"));
    std::filesystem::create_symlink("/proc/version", folder.File("HISTORY.PLA"));
  });
  EXPECT_EQ(1u, Copies().size());
  std::filesystem::remove(folder.File("HISTORY.PLA"));
  Start([](const Hands&) { EXPECT_EQ("0 1 2 ", Names()); });
  EXPECT_TRUE(Copies().empty());
}

TEST_F(RunningCopy, StartThatDoesNotGetTheListSavesNone) {
  Start([this](const Hands& hands) { hands.Drop(Songs(3)); });
  const std::string before = ReadBytes(folder.File("HISTORY.PLA"));
  const auto nobody = [](const Hands&) { ADD_FAILURE() << "there is no list to show"; };
  headless::SetStandingFolder(platform::FromMachinePath(folder.File("HISTORY")));
  EXPECT_EQ(1, Start(nobody));
  headless::SetStandingFolder("");
  platform::PostQuitMessage(0);
  EXPECT_EQ(1, Start(nobody)) << "told to end meanwhile";
  EXPECT_EQ(before, ReadBytes(folder.File("HISTORY.PLA")));
  EXPECT_TRUE(Copies().empty());
  Start([](const Hands&) { EXPECT_EQ("0 1 2 ", Names()); });
}

TEST_F(RunningCopy, FolderInTheListIsWalkedWithTheWindowUp) {
  int current = -1;
  Start([&](const Hands& hands) {
    hands.Drop(Songs(3));
    OpenPage(hands, PAGE_PLAYLIST);
    Press(hands, WIDGET_ROW + 1);
    current = playlist.currentSong;
  });
  const auto list = [this](const std::vector<std::string>& lines) {
    std::string text = "VERSION 10\r\n";
    for (const std::string& line : lines)
      text += (line == "SELECTED" ? "" : "ADD ") +
              (line == "SELECTED" ? line : platform::FromMachinePath(folder.File(line).c_str())) +
              "\r\n";
    WriteBytes(folder.File("HISTORY.PLA"), text);
    return text;
  };
  std::filesystem::create_directories(folder.File("album"));
  for (const char* song : {"song4.mp3", "song5.mp3"})
    std::filesystem::copy(folder.File("song0.mp3"), folder.File(std::string("album/") + song));
  list({"album", "SELECTED", "song0.mp3"});
  Start([&](const Hands&) {
    EXPECT_EQ("4 *5 0 ", Names());
    EXPECT_EQ(current, playlist.currentSong);
  });
  const std::string kept = list({"song1.mp3", "album"});
  headless::SetStandingFolder(platform::FromMachinePath(folder.File("album").c_str()));
  platform::Thread* end = platform::StartThread(
      [](void*) {
        while (playlist.count != 1) platform::Sleep(10);
        const std::vector<std::uint8_t> picture = headless::WindowPixels();
        platform::Sleep(500);
        EXPECT_NE(picture, headless::WindowPixels()) << "it goes on meanwhile";
        platform::PostQuitMessage(0);
      },
      nullptr, "end");
  EXPECT_EQ(1, Start([](const Hands&) { ADD_FAILURE() << "there is no list to show"; }));
  platform::JoinThread(end);
  headless::SetStandingFolder("");
  EXPECT_EQ(kept, ReadBytes(folder.File("HISTORY.PLA")));
  EXPECT_TRUE(Copies().empty());
}

TEST_F(RunningCopy, DeepFolderKeepsWhatTheUserHas) {
  std::string deep = folder.File(std::string(100, 'd'));
  deep += '/' + std::string(250 - deep.size(), 'e');
  std::filesystem::create_directories(deep);
  std::filesystem::create_directory_symlink(folder.File("skin"), deep + "/skin");
  headless::SetExecutablePath(deep + "/kwo");
  Start([this](const Hands& hands) {
    hands.Drop(Songs(2));
    std::strcpy(EqPresetNames[1], "Deep");
  });
  Start([](const Hands&) {
    EXPECT_EQ("0 1 ", Names());
    EXPECT_STREQ("Deep", EqPresetNames[1]);
  });
}

TEST_F(RunningCopy, TwoPlayersKeepTwoLists) {
  const auto files = [&] {
    return ReadBytes(folder.File("HISTORY-OLD.PLA")) + ReadBytes(folder.File("EQ-OLD.SET"));
  };
  Start([](const Hands&) {});
  Start([](const Hands&) {});
  EXPECT_EQ("", files()) << "one after the other";
  Start([&](const Hands& hands) {
    hands.Drop(Songs(1));
    for (const char* file : {"HISTORY.PLA", "EQ.SET"}) WriteBytes(folder.File(file), file);
  });
  EXPECT_EQ("HISTORY.PLAEQ.SET", files());
  // One is killed, another ends behind it, and a third goes on from the first one's copy.
  std::string killed;
  Start([&](const Hands& hands) {
    hands.Drop(Songs(2));
    hands.Wait(5000);
    killed = Copy();
  });
  WriteBytes(folder.File("RUNNING-1.KWO"), killed);
  for (const char* file : {"HISTORY", "EQ"}) {
    const bool list = file[0] == 'H';
    WriteBytes(folder.File(std::string(file) + (list ? ".PLA" : ".SET")), "the other's");
  }
  Start([](const Hands&) { EXPECT_EQ("0 1 ", Names()); });
  EXPECT_EQ("the other's", ReadBytes(folder.File("HISTORY-OLD-2.PLA")));
  EXPECT_EQ("the other's", ReadBytes(folder.File("EQ-OLD-2.SET")));
  EXPECT_NE(std::string::npos, ReadBytes(folder.File("HISTORY.PLA")).find("song0"));
}

}  // namespace
}  // namespace kwo::test
