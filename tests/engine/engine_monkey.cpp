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

std::string Repeated(const std::string& bytes, int times) {
  std::string result;
  for (int i = 0; i < times; ++i) result += bytes;
  return result;
}

// Every thousandth byte or so is another one, and the end is missing.
std::string Damaged(std::string bytes) {
  for (std::size_t i = 0; i < bytes.size(); i += 1 + static_cast<std::size_t>(Below(2000)))
    bytes[i] = static_cast<char>(chance());
  bytes.resize(bytes.size() - static_cast<std::size_t>(Below(400)));
  return bytes;
}

// Some songs end every few blocks; others are long enough for the DJ's crossfades.
void MakeSongs(const std::string& folder) {
  const auto add = [&](const std::string& name, const std::string& bytes) {
    songs.push_back(folder + "/" + name);
    WriteBytes(songs.back(), bytes);
  };
  for (const auto& file : std::filesystem::directory_iterator(KWO_TEST_DATA)) {
    const std::string name = file.path().filename().string();
    const std::string bytes = ReadBytes(file.path().string());
    add(name, bytes);
    add("long-" + name, Repeated(bytes, 30));
    add("damaged-" + name, Damaged(Repeated(bytes, 4)));
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
  for (int i = 0; i < 1 + Below(30); ++i)
    AddPath(songs[static_cast<std::size_t>(Below(static_cast<int>(songs.size())))].c_str());
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
  TheMixer->volume = static_cast<float>(Below(201)) / 100;
  TheMixer->pan = static_cast<float>(Below(201) - 100) / 100;
  TheMixer->speed = 0.75f + static_cast<float>(Below(51)) / 100;
}

void TurnEffects() {
  for (auto& value : TheMixer->eqValues) value = 0.5f + static_cast<float>(Below(101)) / 100;
  TheMixer->eqSwitch = Below(2);
  TheMixer->enhancer = Below(3);
  TheMixer->crystalizer = Below(2);
  TheMixer->wideStereo = Below(2);
  TheMixer->vocalReducer = Below(2);
  TheMixer->limiter = Below(2);
  TheMixer->Slot(0)->ApplyMixerParameters();
}

void SeekSome() {
  TransportStop();
  TheMixer->Slot(0)->Seek(static_cast<float>(Below(Below(2) ? 4 : 150)));
  TransportPlay();
}

void SwitchDj() {
  djMode = Below(2);
  DjSetMode(djMode);
}

constexpr void (*kActions[])() = {
    AddSome,           AddSome,        ClickSome,        ClickSome,          ChangeOrder,
    TurnKnobs,         TurnEffects,    SeekSome,         SortList,           RemoveSelected,
    RemoveUnselected,  MoveSelectedUp, MoveSelectedDown, MoveSelectedPageUp, MoveSelectedPageDown,
    RemoveDeadLinks,   ClearList,      RemoveAll,        ReadAllTags,        SelectAll,
    DeselectAll,       TransportPlay,  TransportPlay,    TransportNext,      TransportNext,
    TransportPrevious, TransportStop,  TogglePause,      SwitchDj,
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
  kActions[Below(static_cast<int>(std::size(kActions)))]();
  if (playlist.count == 0) AddSome();
  if (!playing) TransportPlay();
}

}  // namespace kwo::test
