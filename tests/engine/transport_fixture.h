#pragma once

#include <gtest/gtest.h>

#include <string>

#include "base/hooks.h"
#include "engine/shuffle_master.h"
#include "engine/transport.h"
#include "platform/clock.h"
#include "platform/headless/headless.h"
#include "tests/support.h"

namespace kwo {

constexpr int kBlock = kBlockValues;
inline int shownTime;

class Transport : public testing::Test {
 protected:
  void SetUp() override {
    headless::ClearPlayedSound();
    headless::SetWaveDevicePresent(true);
    hooks = Hooks();
    RemoveAll();
    hooks.transportStop = TransportStop;
    hooks.showSongTime = [](int time) { shownTime = time; };
    transport.playing.Lower();
    transport.paused = transport.playMode = transport.repeatOn = transport.shuffleOn =
        transport.djMode = transport.shufflePosition = transport.SeekActive = 0;
    playlist.currentSong = -1;
    shownTime = -1;
    TheMixer = new Mixer;
    TheMixer->Prepare(OnMixerEvent);
  }
  void TearDown() override {
    DjEnd();
    RemoveAll();
    TheMixer->StopThread();
    delete TheMixer;
    TheMixer = nullptr;
    hooks = Hooks();
  }
  // A song by a name of the list's kinds; its sound is the test song's.
  void AddSongs(int count) {
    for (int i = 0; i < count; ++i) AddSong(test::DataFile("joint128.mp3").c_str());
  }
  Voice& V(int slot = 0) { return *TheMixer->Slot(slot); }
};

}  // namespace kwo
