// What the desktop asks of the player, and what it is told of him.

#include <limits>
#include <set>

#include "panels/main_page.h"
#include "platform/desktop_request.h"
#include "platform/posix/waiting_requests.h"
#include "tests/app/program_fixture.h"

namespace kwo::test {
namespace {

using platform::Ask;
using platform::DesktopRequest;
using platform::Playback;

constexpr std::int64_t kSecond = 1'000'000;

struct Desktop {
  const Hands& hands;
  void operator()(DesktopRequest request) const {
    headless::AskOfPlayer(std::move(request));
    hands.Wait(100);
  }
  void operator()(Ask ask) const { (*this)(DesktopRequest{ask}); }
};

platform::MediaState Told() {
  return headless::Media().state;
}

double Position() {
  return double{TheMixer->Slot(0)->position};
}

// Whether something is heard in half a second from now.
bool Sounds(const Hands& hands) {
  headless::TakePlayedSound();
  hands.Wait(500);
  for (const std::int16_t value : headless::TakePlayedSound())
    if (value > 200 || value < -200) return true;
  return false;
}

TEST_F(Program, MediaKeysDoWhatTheButtonsDo) {
  Run([this](const Hands& hands) {
    const Desktop ask{hands};
    hands.Drop(Songs(3));
    headless::MinimiseByUser();
    hands.Wait(500);
    const auto expect = [&](Playback playback, bool sounds, const char* when) {
      hands.Wait(4000);
      EXPECT_EQ(playback, Told().playback) << when;
      EXPECT_EQ(sounds, Sounds(hands)) << when;
    };
    ask(Ask::kStop);
    expect(Playback::kStopped, false, "stopped");
    const int song = playlist.currentSong;
    ASSERT_EQ(2, song);
    ask(Ask::kPause);
    expect(Playback::kStopped, false, "there is nothing to pause");
    ask(Ask::kPrevious);
    EXPECT_EQ(1, playlist.currentSong);
    ask(Ask::kNext);
    EXPECT_EQ(2, playlist.currentSong);
    expect(Playback::kStopped, false, "a stopped player stays stopped");
    for (int twice = 0; twice < 2; ++twice) {
      ask(Ask::kPlay);
      expect(Playback::kPlaying, true, "played");
    }
    for (int twice = 0; twice < 2; ++twice) {
      ask(Ask::kPause);
      expect(Playback::kPaused, false, "paused");
    }
    ask(Ask::kPlayPause);
    expect(Playback::kPlaying, true, "goes on");
    ask(Ask::kPlayPause);
    ask(Ask::kStop);
    expect(Playback::kStopped, false, "a pause ends with the song");
    ask(Ask::kPlay);
    expect(Playback::kPlaying, true, "the next one sounds, whatever came before");
    ask(Ask::kPause);
    expect(Playback::kPaused, false, "and is paused by one press");
    ask(Ask::kPrevious);
    expect(Playback::kPlaying, true, "as the button does");
    EXPECT_EQ(song - 1, playlist.currentSong);
    ask(DesktopRequest{.ask = Ask::kSpeed, .value = 0});
    expect(Playback::kPaused, false, "no speed is a pause");
    headless::SetClassRegistry("http\\shell\\open\\command", "open");
    ask(Ask::kHelp);
    ASSERT_FALSE(headless::CommandLines().empty());
    EXPECT_TRUE(headless::CommandLines().back().ends_with("help\\index.htm"));
    headless::SetClassRegistry("http\\shell\\open\\command", "");
  });
}

TEST_F(Program, TheDesktopMovesTheControlsToo) {
  Run([this](const Hands& hands) {
    const Desktop ask{hands};
    hands.Drop(Songs(5));
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    for (const auto& [value, percent] : {std::pair{0.5, 50},
                                         {0.014, 1},
                                         {0.016, 2},
                                         {-1.0, 0},
                                         {2.0, 200},
                                         {9e99, 200},
                                         {kInfinite, 200}}) {
      ask({.ask = Ask::kVolume, .value = value});
      EXPECT_EQ(percent, SliderVol) << value;
      EXPECT_FLOAT_EQ(static_cast<float>(percent) / 100, TheMixer->volume);
      EXPECT_EQ("Volume = " + std::to_string(percent), Text(WIDGET_VOLUME_LABEL));
      EXPECT_DOUBLE_EQ(percent / 100.0, Told().volume);
    }
    for (const auto& [value, percent] : {std::pair{1.1, 110}, {0.1, 75}, {3.0, 125}}) {
      ask({.ask = Ask::kSpeed, .value = value});
      EXPECT_EQ(percent, SliderSpd) << value;
      EXPECT_DOUBLE_EQ(percent / 100.0, Told().speed);
    }
    for (const bool on : {true, false}) {
      ask({.ask = Ask::kRepeat, .value = on ? 1.0 : 0.0});
      EXPECT_EQ(on, transport.repeatOn != 0);
      EXPECT_EQ(on, Find(WIDGET_REPEAT)->frame != 0);
      EXPECT_EQ(on, Told().repeat);
    }
    for (Shared<int>& place : transport.shuffleTable) place = -1;
    ask({.ask = Ask::kShuffle, .value = 1});
    EXPECT_TRUE(transport.shuffleOn && Told().shuffle);
    const int first = transport.shuffleTable[0];
    EXPECT_NE(-1, first) << "with its table";
    transport.shuffleTable[0] = -1;
    ask({.ask = Ask::kShuffle, .value = 1});
    EXPECT_EQ(-1, transport.shuffleTable[0]) << "an order under way goes on";
    transport.shuffleTable[0] = first;
    ask({.ask = Ask::kShuffle, .value = 0});
    // What hands do is told all the same.
    OpenPage(hands, PAGE_MIXER);
    const int told = headless::Media().told;
    Press(hands, WIDGET_VOLUME_LABEL);
    EXPECT_EQ(1.0, Told().volume);
    EXPECT_EQ(told + 1, headless::Media().told);
    ask({.ask = Ask::kSpeed, .value = 1});
  });
}

TEST_F(Program, TheDesktopSeeksWithinTheSong) {
  Run([this](const Hands& hands) {
    const Desktop ask{hands};
    hands.Drop(LongSongs(3));
    ask(Ask::kPrevious);
    hands.Wait(300);
    ask(Ask::kStop);
    const unsigned song = Told().song;
    const int length = Told().seconds;
    ASSERT_GT(length, 4);
    const auto seekTo = [&](std::int64_t microseconds, unsigned number) {
      ask({.ask = Ask::kSeekTo, .microseconds = microseconds, .song = number});
    };
    seekTo(2 * kSecond, song);
    EXPECT_EQ(2, Position());
    EXPECT_EQ(200, Time()) << "seen, too";
    EXPECT_EQ(Playback::kStopped, Told().playback);
    seekTo(-1, song);
    seekTo((length + 1) * kSecond, song);
    seekTo(kSecond, song + 1);
    EXPECT_EQ(2, Position());
    ask({.ask = Ask::kSeekBy, .microseconds = -5 * kSecond});
    EXPECT_EQ(0, Position());
    ask(Ask::kPlay);
    const unsigned jumps = Told().jumps;
    seekTo(3 * kSecond, song);
    EXPECT_GT(Told().jumps, jumps);
    hands.Wait(500);
    EXPECT_NEAR(3.6, Position(), 0.3);
    ask({.ask = Ask::kSeekBy, .microseconds = -kSecond});
    EXPECT_NEAR(2.1, Position(), 0.3) << "whole seconds, as by hand";
    EXPECT_TRUE(Sounds(hands));
    ask(Ask::kPause);
    seekTo(kSecond, song);
    EXPECT_EQ(Playback::kPaused, Told().playback) << "also while the pause fades";
    EXPECT_NEAR(1, Position(), 0.2);
    hands.Wait(4000);
    EXPECT_FALSE(Sounds(hands));
    ask(Ask::kPlay);
    hands.Wait(3000);
    ask({.ask = Ask::kSeekBy, .microseconds = std::numeric_limits<std::int64_t>::max()});
    EXPECT_NE(song, Told().song) << "past the end begins the next song";
    EXPECT_LT(Position(), 1);
    // The length is in whole seconds; the music goes on behind the last one.
    const unsigned next = Told().song;
    ask({.ask = Ask::kSeekTo, .microseconds = Told().seconds * kSecond, .song = next});
    while (Position() <= Told().seconds) hands.Wait(10);
    ask({.ask = Ask::kSeekBy, .microseconds = -1});
    EXPECT_EQ(next, Told().song) << "backwards is never the next song";
  });
}

TEST_F(Program, OpenedSongsTakeTheListsPlaceAndPlay) {
  Run([this](const Hands& hands) {
    const Desktop ask{hands};
    const std::vector<std::string> songs = Songs(4);
    hands.Drop({songs[3]});
    transport.shuffleOn = 1;
    ask({.ask = Ask::kOpen, .paths = {folder.File("a.txt")}});
    EXPECT_EQ(songs[3], Told().path) << "no song, no change";
    headless::MinimiseByUser();
    hands.Wait(1500);
    ask({.ask = Ask::kOpen, .paths = {songs[2], songs[0], songs[1]}});
    hands.Wait(500);
    EXPECT_EQ("2 0 1 ", Names());
    EXPECT_EQ(0, playlist.currentSong);
    EXPECT_EQ(songs[2], Told().path);
    EXPECT_EQ(Playback::kPlaying, Told().playback);
    EXPECT_TRUE(Sounds(hands));
    std::set<int> order;
    for (int i = 0; i < 3; ++i) order.insert(transport.shuffleTable[i]);
    EXPECT_EQ((std::set<int>{0, 1, 2}), order);
    EXPECT_TRUE(headless::Window().visible && !headless::Window().minimised);
    ask({.ask = Ask::kOpen, .paths = {}});
    EXPECT_EQ(3, playlist.count) << "only brings the window up";
    ask(Ask::kStop);
    ask({.ask = Ask::kSeekTo, .microseconds = 2 * kSecond, .song = Told().song});
    ask({.ask = Ask::kOpen, .paths = {songs[1]}});
    hands.Wait(500);
    EXPECT_LT(Position(), 2) << "from its beginning";
    // Opened one behind the other, the last one's songs are the list.
    for (const std::string& song : songs)
      headless::AskOfPlayer({.ask = Ask::kOpen, .paths = {song}});
    headless::AskOfPlayer({.ask = Ask::kRaise});
    hands.Wait(300);
    EXPECT_EQ("3 ", Names());
  });
}

TEST_F(Program, AWindowThatHidesWaitsForThePointer) {
  Run([](const Hands& hands) {
    const Desktop ask{hands};
    OpenPage(hands, PAGE_WINDOW);
    Press(hands, WIDGET_AUTO);
    const platform::Rectangle window = headless::Window().place;
    const auto leave = [&] {
      headless::MovePointer({5, 400});
      hands.Wait(2000);
    };
    const auto visible = [] { return headless::Window().visible; };
    leave();
    ASSERT_FALSE(visible());
    ask(Ask::kRaise);
    hands.Wait(3000);
    EXPECT_TRUE(visible());
    headless::MovePointer({window.x + 9, window.y + 9});
    hands.Wait(600);
    leave();
    EXPECT_FALSE(visible());
  });
}

TEST_F(Program, ASongsChangeIsToldOnce) {
  Run([this](const Hands& hands) {
    const Desktop ask{hands};
    const std::vector<std::string> songs = Songs(2);
    WriteBytes(folder.File("song1.mp3"),
               ReadBytes(DataFile("joint128.mp3")) + Tag("Title", "Artist", "Album"));
    hands.Drop(songs);
    ask(Ask::kStop);
    ask(Ask::kPrevious);
    headless::MinimiseByUser();
    ask(Ask::kPlay);
    const headless::MediaControls before = headless::Media();
    EXPECT_EQ("song0.mp3", before.state.title);
    EXPECT_EQ("", before.state.artist);
    hands.Wait(1000 * (before.state.seconds - 2));
    EXPECT_EQ(before.state.song, Told().song);
    EXPECT_EQ(before.told, headless::Media().told) << "nothing while nothing changes";
    while (Told().song == before.state.song) hands.Wait(10);
    hands.Wait(200);
    const headless::MediaControls after = headless::Media();
    EXPECT_EQ("Title", after.state.title);
    EXPECT_EQ("Artist", after.state.artist);
    EXPECT_EQ("Album", after.state.album);
    EXPECT_EQ(before.state.jumps + 1, after.state.jumps) << "the time begins anew";
    EXPECT_EQ(before.told + 2, after.told) << "the song, then its time";
    hands.Wait(5000);
    EXPECT_EQ(Playback::kStopped, Told().playback) << "the list has run out";
    EXPECT_LE(headless::Media().told, after.told + 2);
  });
}

TEST_F(Program, ALongPlayTellsLittle) {
  Run([this](const Hands& hands) {
    const Desktop ask{hands};
    const std::vector<std::string> songs = Songs(3);
    for (int i = 0; i < 3; ++i)
      WriteBytes(folder.File("song" + std::to_string(i) + ".mp3"),
                 ReadBytes(DataFile("joint128.mp3")));
    hands.Drop(songs);
    ask({.ask = Ask::kRepeat, .value = 1});
    headless::MinimiseByUser();
    ask(Ask::kPlay);
    hands.Wait(2000);
    const headless::MediaControls before = headless::Media();

    hands.Wait(600'000);
    const headless::MediaControls after = headless::Media();
    EXPECT_GT(after.state.jumps - before.state.jumps, 100u);
    EXPECT_LE(static_cast<unsigned>(after.told - before.told),
              2 * (after.state.jumps - before.state.jumps) + 2);
  });
}

TEST_F(Program, TheDjBeginsASongWithinIt) {
  Run([this](const Hands& hands) {
    const Desktop ask{hands};
    hands.Drop(LongSongs(2));
    ask({.ask = Ask::kRepeat, .value = 1});
    OpenPage(hands, PAGE_MIXER);
    OpenSubPage(hands, 3);
    Press(hands, WIDGET_DJ);
    headless::MinimiseByUser();
    ask(Ask::kPlay);
    const platform::MediaState before = Told();
    while (Told().song == before.song) hands.Wait(100);
    EXPECT_GE(Position(), 30);
    EXPECT_EQ(before.jumps + 1, Told().jumps) << "the time is not that of a song's beginning";
    EXPECT_EQ(66, Told().seconds);
    transport.djMode = 0;
  });
}

TEST_F(Program, ALengthIsTheOpenSongs) {
  Run([this](const Hands& hands) {
    const Desktop ask{hands};
    const std::vector<std::string> songs = Songs(3);
    WriteBytes(folder.File("song1.mp3"), ReadBytes(DataFile("joint128.mp3")));
    hands.Drop(songs);
    ask(Ask::kStop);
    const int longer = Told().seconds;
    ask(Ask::kPrevious);
    EXPECT_LT(Told().seconds, longer);
    EXPECT_GT(Told().seconds, 0);
    const unsigned song = Told().song;
    OpenPage(hands, PAGE_PLAYLIST);
    Press(hands, WIDGET_ROW + 1);
    Press(hands, WIDGET_ITEM_UP);
    EXPECT_EQ("*1 0 2 ", Names());
    EXPECT_EQ(song, Told().song) << "the same song at another place";
    Choose(hands, WIDGET_FUNCTION, "Read Tag Information");
    hands.Wait(500);
    EXPECT_EQ(song, Told().song) << "the same song with its tag read anew";
    Press(hands, WIDGET_ROW);
    Choose(hands, WIDGET_REMOVE, "Remove Selected");
    EXPECT_NE(song, Told().song);
    EXPECT_EQ(0, Told().seconds) << "none that has not been opened has one";
    Choose(hands, WIDGET_REMOVE, "Remove All");
    EXPECT_EQ(0u, Told().song);
    EXPECT_FALSE(Told().anySong);
    for (const Ask each : {Ask::kPlay, Ask::kPause, Ask::kNext, Ask::kPrevious, Ask::kStop})
      ask(each);
    ask({.ask = Ask::kSeekBy, .microseconds = kSecond});
    EXPECT_EQ(Playback::kStopped, Told().playback);
  });
}

TEST_F(Program, WhatIsOpenedAtTheEndIsForTheNextPlayer) {
  std::vector<std::string> songs;
  Run([&](const Hands& hands) {
    songs = Songs(2);
    hands.Drop({songs[0]});
    // Both before the main thread has its turn.
    headless::AskOfPlayer({.ask = Ask::kOpen, .paths = {songs[1]}});
    headless::AskOfPlayer({.ask = Ask::kRaise});
    platform::PostQuitMessage(0);
  });
  EXPECT_EQ(nullptr, headless::Media().position);
  ASSERT_TRUE(headless::HandedOn());
  EXPECT_EQ(songs[1], headless::HandedOn()->paths[0]);
  EXPECT_NE(std::string::npos, ReadBytes(folder.File("HISTORY.PLA")).find("song0"));
  Run([](const Hands&) {});
  EXPECT_FALSE(headless::HandedOn());
}

TEST(WaitingRequests, AreAsManyAsHandsCouldLeave) {
  platform::WaitingRequests waiting;
  for (std::size_t i = 0; i < platform::WaitingRequests::kMost; ++i)
    ASSERT_NE(0, waiting.Keep({.ask = Ask::kNext}));
  EXPECT_EQ(0, waiting.Keep({.ask = Ask::kNext})) << "no more";
  const int raise = waiting.Keep({.ask = Ask::kRaise});
  EXPECT_NE(0, raise) << "the window comes up all the same";
  const int first = waiting.Keep({.ask = Ask::kOpen, .paths = {"a"}});
  EXPECT_EQ(0, waiting.Keep({.ask = Ask::kOpen, .paths = {"b.mp3"}}))
      << "in the place of the first";
  EXPECT_EQ(0, waiting.Keep({.ask = Ask::kRaise})) << "is part of it";
  const int folder = waiting.Keep({.ask = Ask::kOpen, .paths = {"c"}});
  EXPECT_NE(0, folder) << "which may hold no song";
  while (waiting.Keep({.ask = Ask::kOpen, .paths = {"d"}}) != 0) {
  }
  int opens = 0;
  while (const std::optional<DesktopRequest> last = waiting.TakeBringUp()) {
    if (last->ask == Ask::kRaise) break;
    ++opens;
    EXPECT_EQ(opens == 8 ? "b.mp3" : opens == 7 ? "c" : "d", last->paths[0]);
  }
  EXPECT_EQ(8, opens);
  EXPECT_FALSE(waiting.Take(raise) || waiting.Take(first) || waiting.Take(folder)) << "once";
  EXPECT_TRUE(waiting.Take(1));
  EXPECT_NE(0, waiting.Keep({.ask = Ask::kNext})) << "there is room again";
}

}  // namespace
}  // namespace kwo::test
