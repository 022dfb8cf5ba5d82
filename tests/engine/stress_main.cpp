// Threads side by side on a running clock, for the sanitizers: songs that end every few blocks and
// an automatic DJ, while the main thread works on the list, the transport and every knob.

#include <cstdio>
#include <cstdlib>
#include <random>

#include "engine/shuffle_master.h"
#include "engine/transport.h"
#include "platform/clock.h"
#include "platform/headless/headless.h"
#include "playlist/hooks.h"
#include "playlist/playlist_files.h"
#include "playlist/tag_reader.h"
#include "tests/support.h"

namespace {

using namespace kwo;

std::mt19937 chance(1);

int Below(int limit) {
  return static_cast<int>(chance() % static_cast<unsigned>(limit));
}

void AddSome() {
  static const char* const kSongs[] = {"joint128.mp3", "layer2.mp2", "vbr-lsf.mp3", "absent.mp3"};
  for (int i = 0; i < 1 + Below(30); ++i) AddPath(test::DataFile(kSongs[Below(4)]).c_str());
}

void ClickSome() {
  for (int i = 0; i < 5 && playlist.count > 0; ++i)
    ClickSong(Below(playlist.count), Below(3) == 0, Below(2) == 0);
}

void ChangeOrder() {
  playMode = Below(3);
  repeatOn = Below(4) > 0;
  shuffleOn = Below(2);
  if (shuffleOn) BuildShuffleTable();
}

void TurnKnobs() {
  for (auto& value : TheMixer->eqValues) value = 0.5f + static_cast<float>(Below(100)) / 100;
  TheMixer->eqSwitch = Below(2);
  TheMixer->enhancer = Below(3);
  TheMixer->crystalizer = TheMixer->wideStereo = TheMixer->vocalReducer = Below(2);
  TheMixer->limiter = Below(2);
  TheMixer->speed = 0.75f + static_cast<float>(Below(50)) / 100;
  TheMixer->Slot(0)->ApplyMixerParameters();
}

void SeekSome() {
  TransportStop();
  TheMixer->Slot(0)->Seek(static_cast<float>(Below(4)));
  TransportPlay();
}

void SwitchDj() {
  djMode = Below(2);
  DjSetMode(djMode);
}

constexpr void (*kActions[])() = {
    AddSome,           AddSome,        ClickSome,        ClickSome,          ChangeOrder,
    TurnKnobs,         TurnKnobs,      SeekSome,         SortList,           RemoveSelected,
    RemoveUnselected,  MoveSelectedUp, MoveSelectedDown, MoveSelectedPageUp, MoveSelectedPageDown,
    RemoveDeadLinks,   ClearList,      RemoveAll,        ReadAllTags,        SelectAll,
    DeselectAll,       TransportPlay,  TransportPlay,    TransportNext,      TransportNext,
    TransportPrevious, TransportStop,  TogglePause,      SwitchDj,
};

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 1500;
  headless::UseRunningClock(100.0);
  TheMixer = new Mixer;
  TheMixer->Init(4608, 44100, 2, OnMixerEvent);
  for (int slot = 0; slot < 3; ++slot) TheMixer->CreateVoice(slot, 4608);
  hooks.transportStop = TransportStop;
  hooks.refreshPlaylistPage = BuildDisplayNames;
  TheMixer->StartThread();
  AddSome();
  repeatOn = 1;
  TransportPlay();
  for (int round = 0; round < rounds; ++round) {
    kActions[Below(static_cast<int>(std::size(kActions)))]();
    if (playlist.count == 0) AddSome();
    if (!playing) TransportPlay();
    platform::Sleep(Below(400));
  }
  DjEnd();
  ClearList();
  TheMixer->StopThread();
  delete TheMixer;
  const std::size_t played = headless::PlayedSound().size();
  std::printf("%d rounds, %zu values played\n", rounds, played);
  return played > 0 ? 0 : 1;
}
