// Plays songs on the real sound device, through the whole engine, with a position line.

#include <csignal>
#include <cstdio>
#include <cstring>

#include "base/hooks.h"
#include "engine/transport.h"
#include "platform/clock.h"
#include "tools/tool_engine.h"

namespace {

constexpr char kUsage[] =
    "usage: play_list PATH...\n"
    "Plays songs (.mp3, .mp2), the songs of folders, and those of playlist files (.pla) one "
    "behind\n"
    "the other without a gap, and shows the place in the song.  Control-C ends it with a fade.\n";

constexpr int kLongestFade = 35;  // in tenths of a second
constexpr int kPatience = 30;
constexpr int kFirstBlock = 10;  // hundredths that the engine renders before it opens the device

kwo::Shared<int> hundredths;
volatile std::sig_atomic_t interrupted = 0;

void ShowPosition() {
  const kwo::PlaylistReader reader;
  const kwo::PlaylistEntry* entry = reader.Entry(kwo::playlist.currentSong);
  const int seconds = hundredths / 100;
  const int length = kwo::TheMixer->Slot(0)->Source()->info[kwo::INFO_SECONDS];
  std::printf("\r%d:%02d / %d:%02d  %s\033[K", seconds / 60, seconds % 60, length / 60, length % 60,
              entry ? entry->fileName : "");
  std::fflush(stdout);
}

bool AnyVoiceActive() {
  for (int slot = 0; slot < 3; ++slot)
    if (kwo::TheMixer->Slot(slot)->active) return true;
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || !std::strcmp(argv[1], "-h") || !std::strcmp(argv[1], "--help")) {
    std::fputs(kUsage, argc < 2 ? stderr : stdout);
    return argc < 2 ? 2 : 0;
  }
  for (int i = 1; i < argc; ++i) {
    if (kwo::tools::AddArgument(argv[i])) continue;
    std::fprintf(stderr, "play_list: %s: no songs there\n", argv[i]);
    return 1;
  }
  kwo::hooks.showSongTime = [](int time) { hundredths = time; };
  if (!kwo::tools::StartEngine()) {
    std::fputs("play_list: no memory\n", stderr);
    return 1;
  }
  std::signal(SIGINT, [](int) { interrupted = 1; });
  std::signal(SIGTERM, [](int) { interrupted = 1; });
  kwo::TransportPlay();
  for (int tenths = 0; kwo::transport.playing && !interrupted; ++tenths) {
    ShowPosition();
    if (tenths == kPatience && hundredths > 0 && hundredths < kFirstBlock)
      std::fputs("\nplay_list: no sound device answers; waiting for one\n", stderr);
    kwo::platform::Sleep(100);
  }
  kwo::TransportStop();
  // The voices are silent soon, and the thread then plays what the device still holds.  Without a
  // device nothing moves, so the wait has an end.
  for (int i = 0; i < kLongestFade && AnyVoiceActive(); ++i) kwo::platform::Sleep(100);
  kwo::tools::StopEngine();
  std::putchar('\n');
  return 0;
}
