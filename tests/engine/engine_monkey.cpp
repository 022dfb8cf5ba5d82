#include "tests/engine/engine_monkey.h"

#include <filesystem>
#include <random>
#include <vector>

#include "engine/shuffle_master.h"
#include "engine/transport.h"
#include "playlist/hooks.h"
#include "playlist/playlist_files.h"
#include "playlist/tag_reader.h"
#include "tests/support.h"

namespace kwo::test {
namespace {

std::mt19937 chance;
std::vector<std::string> songs;

// Some songs end every few blocks; others are long enough for the DJ's crossfades.
void MakeSongs(const std::string& folder) {
  const auto add = [&](const std::string& name, const std::string& bytes) {
    songs.push_back(folder + "/" + name);
    WriteBytes(songs.back(), bytes);
  };
  for (const auto& file : std::filesystem::directory_iterator(KWO_TEST_DATA)) {
    if (!file.is_regular_file()) continue;
    const std::string name = file.path().filename().string();
    const std::string bytes = ReadBytes(file.path().string());
    std::string repeated;
    while (repeated.size() < 30 * bytes.size()) repeated += bytes;
    add(name, bytes);
    add("long-" + name, repeated);
    // Every thousandth byte or so is another one, and the end is missing.
    std::string damaged = repeated.substr(0, 4 * bytes.size() - chance() % 400);
    for (std::size_t i = 0; i < damaged.size(); i += 1 + chance() % 2000)
      damaged[i] = static_cast<char>(chance());
    add("damaged-" + name, damaged);
  }
  add("loud.wav", WavBytes(2, 48000, 16, Raw16(Noise(400000))));
  add("small.wav", WavBytes(1, 8000, 8, std::string(20000, 'a')));
  add("fast.wav", WavBytes(2, 65535, 16, Raw16(Noise(300000))));
  add("cut.wav", WavBytes(2, 44100, 16, "").substr(0, 30));
  add("empty.mp3", "");
  add("noise.mp3", Raw16(Noise(200000, 7)));
  songs.push_back(folder + "/absent.mp3");
}

void AddSome() {
  for (int i = 0; i < 1 + Below(30); ++i) AddPath(songs[chance() % songs.size()].c_str());
}

void ClickSome() {
  for (int i = 0; i < 5 && playlist.count > 0; ++i)
    ClickSong(Below(playlist.count), Below(3) == 0, Below(2) == 0);
}

void ChangeModes() {
  playMode = Below(3);
  repeatOn = Below(4) > 0;
  shuffleOn = Below(2);
  if (shuffleOn) BuildShuffleTable();
  DjSetMode(djMode = Below(2));
}

void TurnKnobs() {
  Mixer& mixer = *TheMixer;
  const auto near = [](float middle, int hundredths) {
    return middle + static_cast<float>(Below(2 * hundredths + 1) - hundredths) / 100;
  };
  mixer.volume = near(1, 100);
  mixer.pan = near(0, 100);
  mixer.speed = near(1, 25);
  for (auto& value : mixer.eqValues) value = near(1, 50);
  for (auto* knob : {&mixer.eqSwitch, &mixer.crystalizer, &mixer.wideStereo, &mixer.vocalReducer,
                     &mixer.limiter})
    *knob = Below(2);
  mixer.enhancer = Below(3);
  mixer.Slot(0)->ApplyMixerParameters();
}

void SeekSome() {
  TransportStop();
  TheMixer->Slot(0)->Seek(static_cast<float>(Below(Below(2) ? 4 : 150)));
  TransportPlay();
}

constexpr void (*kActions[])() = {
    AddSome,           AddSome,        ClickSome,        ClickSome,          ChangeModes,
    TurnKnobs,         TurnKnobs,      SeekSome,         SortList,           RemoveSelected,
    RemoveUnselected,  MoveSelectedUp, MoveSelectedDown, MoveSelectedPageUp, MoveSelectedPageDown,
    RemoveDeadLinks,   ClearList,      RemoveAll,        ReadAllTags,        SelectAll,
    DeselectAll,       TransportPlay,  TransportPlay,    TransportNext,      TransportNext,
    TransportPrevious, TransportStop,  TogglePause,      ChangeModes,
};

}  // namespace

int Below(int limit) {
  return static_cast<int>(chance() % static_cast<unsigned>(limit));
}

void BeginToPlay(unsigned seed, const std::string& folder) {
  chance.seed(seed);
  MakeSongs(folder);
  hooks.refreshPlaylistPage = BuildDisplayNames;
  AddSome();
  repeatOn = 1;
  TransportPlay();
}

void ActAtRandom() {
  kActions[chance() % std::size(kActions)]();
  if (playlist.count == 0) AddSome();
  if (!playing) TransportPlay();
}

}  // namespace kwo::test
