// A listener who presses whatever comes to his mind, for the sanitizers: threads side by side on a
// running clock, with songs that end every few blocks and an automatic DJ, while the main thread
// works on the list, the transport and every knob.  Or hours of music in minutes, block by block on
// a clock that is stepped: every value of the mix must be a number, and the memory in use, which is
// printed, should stand still.
// usage: engine_stress [ACTIONS [SEED]]
//        engine_stress soak [HOURS [SEED]]

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "base/hooks.h"
#include "engine/shuffle_master.h"
#include "engine/transport.h"
#include "platform/clock.h"
#include "platform/headless/headless.h"
#include "platform/threads.h"
#include "playlist/playlist_files.h"
#include "playlist/tag_reader.h"
#include "tests/support.h"
#include "tools/tool_engine.h"

namespace kwo {
namespace {

std::mt19937 chance;
std::vector<std::string> songs;

// 0 to `limit` - 1.
int Below(int limit) {
  return static_cast<int>(chance() % static_cast<unsigned>(limit));
}

// Some songs end every few blocks; others are long enough for the DJ's crossfades.
void MakeSongs(const std::string& folder) {
  const auto add = [&](const std::string& name, const std::string& bytes) {
    songs.push_back(folder + "/" + name);
    test::WriteBytes(songs.back(), bytes);
  };
  for (const auto& file : std::filesystem::directory_iterator(KWO_TEST_DATA)) {
    if (!file.is_regular_file()) continue;
    const std::string name = file.path().filename().string();
    const std::string bytes = test::ReadBytes(file.path().string());
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
  add("loud.wav", test::WavBytes(2, 48000, 16, test::Raw16(test::Noise(400000))));
  add("fast.wav", test::WavBytes(1, 65535, 8, std::string(200000, 'a')));
  add("cut.wav", test::WavBytes(2, 44100, 16, "").substr(0, 30));
  add("empty.mp3", "");
  add("noise.mp3", test::Raw16(test::Noise(200000, 7)));
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
  transport.playMode = Below(3);
  transport.repeatOn = Below(4) > 0;
  transport.shuffleOn = Below(2);
  if (transport.shuffleOn) BuildShuffleTable();
  DjSetMode(transport.djMode = Below(2));
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

void BeginToPlay(const std::string& folder) {
  MakeSongs(folder);
  hooks.refreshPlaylistPage = BuildDisplayNames;
  AddSome();
  transport.repeatOn = 1;
  TransportPlay();
}

void ActAtRandom() {
  kActions[chance() % std::size(kActions)]();
  if (playlist.count == 0) AddSome();
  if (!transport.playing) TransportPlay();
}

// Two threads rotate the slots at once; the voices must stay three.
bool RotationsKeepTheVoices() {
  const auto rotate = [](void*) {
    for (int i = 0; i < 1000000; ++i) TheMixer->RotateSlots(0, 2);
  };
  for (auto* rotator :
       {platform::StartThread(rotate, nullptr, "a"), platform::StartThread(rotate, nullptr, "b")})
    platform::JoinThread(rotator);
  const Voice *a = TheMixer->Slot(0), *b = TheMixer->Slot(1), *c = TheMixer->Slot(2);
  return a != b && b != c && c != a;
}

bool Stress(int actions) {
  TheMixer->StartThread();
  std::size_t played = 0;
  for (int i = 0; i < actions; ++i) {
    ActAtRandom();
    platform::Sleep(Below(400));
    played += headless::TakePlayedSound().size();
  }
  std::printf("%d actions, %zu values played\n", actions, played);
  return played > 0;
}

int ResidentKiB() {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word)
    if (word == "RssAnon:") return status >> word ? std::atoi(word.c_str()) : 0;
  return 0;
}

bool Soak(double hours) {
  constexpr int kBlockMilliseconds = 52, kBlocksPerAction = 30;
  const auto blocks = static_cast<long>(hours * 3600 * 1000 / kBlockMilliseconds);
  long heard = 0;
  for (long block = 0; block < blocks; ++block) {
    if (Below(kBlocksPerAction) == 0) ActAtRandom();
    const bool sounds = TheMixer->RenderBlock();
    const float* mix = TheMixer->MixBuffer();
    if (!std::all_of(mix, mix + TheMixer->blockSize, [](float v) { return std::isfinite(v); })) {
      std::printf("block %ld has a value that is no sound\n", block);
      return false;
    }
    heard += sounds;
    platform::Sleep(kBlockMilliseconds);
    if (block % (blocks / 10 + 1) == 0)
      std::printf("block %ld of %ld, %d KiB\n", block, blocks, ResidentKiB());
  }
  std::printf("%ld blocks, %ld with sound, every value finite\n", blocks, heard);
  return heard > blocks / 4;
}

}  // namespace
}  // namespace kwo

int main(int count, char** arguments) {
  using namespace kwo;
  const bool soaks = count > 1 && arguments[1] == std::string("soak");
  const int first = soaks ? 2 : 1;
  const double amount = count > first ? std::atof(arguments[first]) : soaks ? 0.1 : 1500;
  if (count > first + 1) chance.seed(static_cast<unsigned>(std::atoi(arguments[first + 1])));
  if (!soaks) headless::UseRunningClock(100.0);
  const test::TempFolder folder;
  if (!tools::MakeEngine()) return 1;
  BeginToPlay(folder.Path());
  const bool sound =
      soaks ? Soak(amount) : RotationsKeepTheVoices() && Stress(static_cast<int>(amount));
  tools::StopEngine();
  return sound ? 0 : 1;
}
