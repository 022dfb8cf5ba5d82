// The automatic DJ, second by second and block by block: its thread runs on the headless clock,
// and the ramps are stepped by hand.

#include "engine/shuffle_master.h"

#include <cstdlib>

#include "platform/clock.h"
#include "tests/engine/transport_fixture.h"

namespace kwo {
namespace {

class Dj : public Transport {
 protected:
  void SetUp() override {
    Transport::SetUp();
    for (int i = 0; i < 3; ++i)
      AddSong((std::string(KWO_TEST_DATA) + "/../../music/one-horizon.mp3").c_str());
    refreshes = 0;
    hooks.refreshSongLine = [] { ++refreshes; };
    transport.djMode = 1;
  }
  // Blocks until a ramp of the voice has ended.
  static int Blocks(Voice& voice, int ramp) {
    int blocks = 0;
    for (; !voice.ramps[ramp].Idle(); ++blocks) voice.StepRamps();
    return blocks;
  }
  void Expect(const Voice& voice, int slot, const char* what) {
    EXPECT_EQ(&voice, &V(slot)) << what;
  }
  inline static int refreshes;
};

TEST_F(Dj, CrossfadesByItsTable) {
  std::srand(7);
  const int place = std::rand() % 100 + 30;
  std::srand(7);
  TransportPlay();
  Voice &spare = V(2), &old = V(0), &before = V(1);
  spare.Start();
  DjSetMode(1);
  refreshes = 0;
  platform::Sleep(40990);
  Expect(old, 0, "41 seconds of play");
  EXPECT_EQ(1, spare.active);
  platform::Sleep(20);
  Expect(spare, 0, "the new song's voice");
  Expect(old, 1, "the old song's");
  Expect(before, 2, "the one before");
  EXPECT_EQ(1, playlist.currentSong);
  EXPECT_EQ(1, refreshes);
  EXPECT_EQ(static_cast<float>(place), spare.seekTarget);
  EXPECT_TRUE(spare.seekPending && spare.active && old.active);
  EXPECT_EQ(0.01f, spare.volume);
  EXPECT_EQ(-1.0f, spare.pan);
  EXPECT_EQ(1.0f, spare.baseVolume) << "what the next fade begins from";
  EXPECT_EQ(0.0f, spare.basePan);
  EXPECT_EQ(49, Blocks(spare, 0));
  EXPECT_EQ(1.0f, spare.volume);
  EXPECT_EQ(201, 49 + Blocks(spare, 2));
  EXPECT_EQ(0.0f, spare.pan);
  EXPECT_EQ(1, spare.active);
  platform::Sleep(1450);
  EXPECT_TRUE(old.ramps[0].Idle() && old.ramps[2].Idle()) << "it holds for a second and a half";
  old.pan = -0.5f;
  platform::Sleep(60);
  EXPECT_EQ(0.0f, old.pan);
  EXPECT_EQ(99, Blocks(old, 0));
  EXPECT_EQ(0, old.active);
  EXPECT_EQ(101, 99 + Blocks(old, 2));
  EXPECT_EQ(1.0f, old.pan);
  // The next transition comes 41 ticks behind the end of this one.
  platform::Sleep(40900);
  Expect(spare, 0, "not yet");
  platform::Sleep(200);
  Expect(before, 0, "the next");
}

TEST_F(Dj, CountsTheSecondsThatPlay) {
  DjSetMode(1);
  platform::Sleep(60500);
  TransportPlay();
  platform::Sleep(20000);
  TransportStop();
  platform::Sleep(60000);
  TransportPlay();
  TogglePause();  // a pause counts as play
  const Voice& voice = V();
  platform::Sleep(20000);
  Expect(voice, 0, "40 seconds so far");
  platform::Sleep(1000);
  Expect(voice, 1, "41 have gone");
  EXPECT_EQ(1, transport.paused);
}

TEST_F(Dj, FadesTheLastSongUnlessTheListRepeats) {
  // With no song in the play mode nothing more happens, and the old song plays on.
  struct Case {
    int repeat, mode, song, playing, fresh, before, refreshes, fade;
  };
  for (const Case& c :
       {Case{0, 0, 0, 0, 0, 0, 1, 90}, {1, 0, 0, 1, 1, 1, 1, 0}, {1, 1, -1, 1, 0, 1, 0, 0}}) {
    transport.playMode = 0;
    playlist.currentSong = 2;
    TransportPlay();
    Voice &old = V(0), &before = V(1);
    before.Start();
    transport.repeatOn = c.repeat;
    transport.playMode = c.mode;
    DjSetMode(1);
    refreshes = 0;
    platform::Sleep(41100);
    DjSetMode(0);
    Expect(old, 1, "rotated in any case");
    EXPECT_EQ(c.song, playlist.currentSong);
    EXPECT_EQ(c.playing, transport.playing);
    EXPECT_EQ(c.fresh, V(0).active);
    EXPECT_EQ(c.before, before.active);
    EXPECT_EQ(c.refreshes, refreshes);
    EXPECT_EQ(1, old.active);
    EXPECT_EQ(c.fade, Blocks(old, 0));
    EXPECT_EQ(c.fade == 0, old.active != 0);
    TransportStop();
  }
}

TEST_F(Dj, SwitchedOffInTheOverlapLeavesBothSongs) {
  TransportPlay();
  Voice& old = V();
  DjSetMode(1);
  platform::Sleep(42000);
  const unsigned start = platform::GetTickCount();
  DjSetMode(0);
  EXPECT_LE(platform::GetTickCount() - start, 60u);
  platform::Sleep(60000);
  Expect(old, 1, "no further transition");
  EXPECT_TRUE(old.active && V(0).active);
  EXPECT_TRUE(old.ramps[0].Idle());
  EXPECT_EQ(1.0f, old.volume);
}

}  // namespace
}  // namespace kwo
