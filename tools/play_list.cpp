// Plays songs on the real sound device, through the whole engine, with a position line.

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "engine/mixer.h"
#include "platform/clock.h"

namespace {

constexpr char kUsage[] =
    "usage: play_list LIST.pla | SONG...\n"
    "Plays the songs one behind the other without a gap, and shows the place in the song.\n"
    "A list file holds a line 'ADD path' for each song.  Control-C ends it with a fade.\n";

constexpr int kLongestFade = 30;  // in tenths of a second

std::vector<std::string> songs;
std::atomic<std::size_t> current = 0;
std::atomic<bool> finished = false;
std::atomic<int> hundredths = 0;
volatile std::sig_atomic_t interrupted = 0;

// The next song that exists goes on in the same voice; behind the last one the voice stops.
int OnEvent(kwo::Mixer* mixer, int event, kwo::Voice* voice, int a, int, int) {
  if (voice != mixer->Slot(0)) return 0;
  if (event == kwo::EVENT_POSITION) hundredths = a;
  if (event != kwo::EVENT_SOURCE_END) return 1;
  if (current + 1 >= songs.size()) {
    voice->Stop();
    finished = true;
    return 0;
  }
  ++current;
  return voice->Open(songs[current].c_str());
}

bool EndsIn(const std::string& name, const char* ending) {
  const std::size_t length = std::strlen(ending);
  if (name.size() < length) return false;
  for (std::size_t i = 0; i < length; ++i)
    if (std::tolower(static_cast<unsigned char>(name[name.size() - length + i])) != ending[i])
      return false;
  return true;
}

bool TakeArgument(const std::string& name) {
  if (!EndsIn(name, ".pla")) {
    songs.push_back(name);
    return true;
  }
  std::ifstream list(name);
  if (!list) return false;
  for (std::string line; std::getline(list, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.size() > 4 && (line.starts_with("ADD ") || line.starts_with("add ")))
      songs.push_back(line.substr(line.find_first_not_of(' ', 4)));
  }
  return true;
}

void ShowPosition(const kwo::Voice& voice) {
  const std::string& song = songs[current];
  const int seconds = hundredths / 100, length = voice.Source()->info[kwo::INFO_SECONDS];
  std::printf("\r%d:%02d / %d:%02d  %s\033[K", seconds / 60, seconds % 60, length / 60, length % 60,
              song.substr(song.find_last_of("/\\") + 1).c_str());
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || !std::strcmp(argv[1], "-h") || !std::strcmp(argv[1], "--help")) {
    std::fputs(kUsage, argc < 2 ? stderr : stdout);
    return argc < 2 ? 2 : 0;
  }
  for (int i = 1; i < argc; ++i) {
    if (!TakeArgument(argv[i])) {
      std::fprintf(stderr, "play_list: %s: cannot be read\n", argv[i]);
      return 1;
    }
  }
  if (songs.empty()) {
    std::fputs("play_list: no songs\n", stderr);
    return 1;
  }
  std::signal(SIGINT, [](int) { interrupted = 1; });
  std::signal(SIGTERM, [](int) { interrupted = 1; });
  kwo::Mixer mixer;
  mixer.Init(4608, 44100, 2, OnEvent);
  if (!mixer.CreateVoice(0, 4608)) return 1;
  kwo::Voice& voice = *mixer.Slot(0);
  voice.Open(songs[0].c_str());
  voice.Start();
  mixer.StartThread();
  while (!finished && !interrupted) {
    ShowPosition(voice);
    kwo::platform::Sleep(100);
  }
  if (interrupted) voice.SetVolumeRamp(0, 0.8f, 0.01f, 1);
  // The voice is silent soon, and the thread then plays what the device still holds and closes it.
  // Without a device nothing moves, so the wait has an end.
  for (int i = 0; i < kLongestFade && voice.active; ++i) kwo::platform::Sleep(100);
  mixer.StopThread();
  std::putchar('\n');
  return 0;
}
