#include "engine/transport.h"

#include <algorithm>
#include <bitset>
#include <cstdlib>

#include "base/hooks.h"
#include "platform/clock.h"

namespace kwo {

TransportState transport;

namespace {

// Every song comes up within two rounds; a list that another thread changes meanwhile must not hold
// the search up for ever.
constexpr int kLongestSearch = 2 * kPlaylistSlots;

struct FadeIn {
  float start, step;
};
constexpr FadeIn kResume = {0.01f, 1.2f};
constexpr FadeIn kUnpause = {0.01f, 1.3f};

void StartFadeIn(Voice& voice, const FadeIn& fade) {
  voice.SetVolume(fade.start);
  // What the next fade begins from.
  voice.baseVolume = 1.0f;
  voice.SetVolumeRamp(0, fade.step, 1.0f, 0);
}

bool InPlayMode(const PlaylistEntry& entry) {
  if (transport.playMode == PLAY_SELECTED) return entry.selected != 0;
  return transport.playMode != PLAY_UNSELECTED || entry.selected == 0;
}

bool AnySongInPlayMode(const PlaylistReader& reader) {
  for (int i = 0; i < playlist.count; ++i) {
    const PlaylistEntry* entry = reader.Entry(i);
    if (entry && InPlayMode(*entry)) return true;
  }
  return false;
}

// A song has taken the place of one that ended, and has not told its time yet.
Shared<int> songBegins;

enum class Way { kForward, kBack };

struct Step {
  int song;
  bool wrapped;  // over the list's end
};

Step StepForward() {
  const int count = playlist.count;
  if (!transport.shuffleOn) {
    const int next = playlist.currentSong + 1;
    return next < count ? Step{next, false} : Step{0, true};
  }
  const int place = transport.shufflePosition + 1;
  if (place < count) {
    transport.shufflePosition = place;
    return {transport.shuffleTable[place], false};
  }
  BuildShuffleTable();
  transport.shufflePosition = 0;
  return {transport.shuffleTable[0], true};
}

Step StepBack() {
  const int last = playlist.count - 1;
  if (!transport.shuffleOn) {
    const int previous = playlist.currentSong - 1;
    return {previous < 0 || previous > last ? last : previous, false};
  }
  const int place = transport.shufflePosition - 1;
  transport.shufflePosition = place < 0 || place > last ? last : place;
  return {transport.shuffleTable[transport.shufflePosition], false};
}

// Steps until a song of the play mode comes up, and makes it current; none, where there is none.
Step StepToSong(Way way) {
  const PlaylistReader reader;
  bool wrapped = false;
  const bool any = playlist.count > 0 && AnySongInPlayMode(reader);
  for (int tries = 0; any && tries < kLongestSearch; ++tries) {
    const Step step = way == Way::kForward ? StepForward() : StepBack();
    wrapped = wrapped || step.wrapped;
    if (step.song < 0 || step.song >= playlist.count) continue;
    playlist.currentSong = step.song;
    const PlaylistEntry* entry = reader.Entry(step.song);
    if (entry && InPlayMode(*entry)) return {step.song, wrapped};
  }
  playlist.currentSong = -1;
  return {-1, wrapped};
}

// What Next and Previous do: the music goes on with the song stepped to.
void StepAndPlay(int (*step)()) {
  if (playlist.count <= 0) {
    RefreshDisplays();
    return;
  }
  const bool wasPlaying = transport.playing != 0;
  if (wasPlaying) TransportStop();
  const int index = step();
  if (index < 0) {
    TransportStop();
  } else if (wasPlaying) {
    TransportPlay();
  } else {
    OpenSong(*TheMixer->Slot(0), playlist.currentSong);
  }
  SongChanged();
}

// Makes the song current that Play begins with; false if there is none.
bool ChooseSong() {
  // A number that names no song is none, whoever left it.
  if (playlist.currentSong >= playlist.count) playlist.currentSong = -1;
  if (playlist.currentSong < 0 && playlist.count > 0) TransportNext();
  if (playlist.currentSong < 0) return false;
  const PlaylistReader reader;
  const PlaylistEntry* entry = reader.Entry(playlist.currentSong);
  if (entry && !InPlayMode(*entry)) TransportNext();
  return entry != nullptr;
}

void StartSong() {
  const int song = playlist.currentSong;
  if (song < 0) return;
  Voice& voice = *TheMixer->Slot(0);
  voice.ResetRamps();
  if (!OpenSong(voice, song)) return;
  if (voice.position != 0.0f) {
    StartFadeIn(voice, kResume);
  } else {
    voice.SetVolume(1.0f);
  }
  // In this order: a song that ends at once must find what it has to lower.
  transport.playing.Raise();
  voice.Start();
}

void ShowTimeZero(Mixer* mixer) {
  OnMixerEvent(mixer, EVENT_POSITION, mixer->Slot(0), 0, 0, 0);
}

// The song in slot 0 has ended.  Not 0: the voice has more to read, or nothing is left to play.
int OnSourceEnd(Mixer* mixer, Voice* voice) {
  // Read before the slot: a stop and a new play in between make either another one.
  const unsigned run = transport.playing.Raising();
  // The ShuffleMaster owns the order then, and the voice stays silent until its next crossfade.
  if (transport.djMode != 0) return 1;
  // A fading voice simply runs out.
  if (voice != mixer->Slot(0)) return 0;
  if (playlist.count <= 0) {
    RefreshDisplays();
    return 0;
  }
  if (AdvanceSong() >= 0) {
    OpenSong(*voice, playlist.currentSong);
    songBegins = 1;
  } else {
    voice->Stop();
    voice->Seek(0.0f);
    ++transport.jumps;
    ShowTimeZero(mixer);
    transport.playing.LowerIf(run);
  }
  SongChanged();
  return 1;
}

}  // namespace

void TransportPlay() {
  // Whatever the current song's number has come to.
  if (transport.playing) {
    TogglePause();
  } else if (ChooseSong()) {
    StartSong();
  }
}

void TransportStop() {
  if (!transport.playing) return;
  transport.playing.Lower();
  for (int slot = 0; slot < 2; ++slot) {
    Voice& voice = *TheMixer->Slot(slot);
    voice.ResetRamps();
    voice.SetVolumeRamp(0, 0.9f, 0.01f, 1);
  }
  TheMixer->Slot(2)->ResetRamps();
  TheMixer->Slot(2)->Stop();
  // The silent voice comes to the front, so that a new song can start while the old one fades.
  TheMixer->RotateSlots(0, 2);
  TheMixer->Slot(0)->Seek(0.0f);
  ++transport.jumps;
  ShowTimeZero(TheMixer);
}

void TogglePause() {
  if (!transport.playing) return;
  Voice& voice = *TheMixer->Slot(0);
  if (!transport.paused) {
    voice.SetVolume(1.0f);
    voice.SetVolumeRamp(0, 0.8f, 0.01f, 1);
    transport.paused = 1;
    transport.pausedRun = transport.playing.Raising();
  } else {
    StartFadeIn(voice, kUnpause);
    voice.Start();
    transport.paused = 0;
  }
}

void TransportNext() {
  StepAndPlay(AdvanceSong);
}

void TransportPrevious() {
  StepAndPlay(RetreatSong);
}

void TransportLoad() {
  OpenSong(*TheMixer->Slot(0), playlist.currentSong);
  SongChanged();
}

void TransportSeek(float seconds, bool sounding) {
  if (sounding) TransportStop();
  TheMixer->Slot(0)->Seek(seconds);
  ++transport.jumps;
  if (sounding) TransportPlay();
}

bool IsPaused() {
  return transport.paused && transport.pausedRun == transport.playing.Raising();
}

bool OpenSong(Voice& voice, int index) {
  char path[kPathSize];
  unsigned song = 0;
  if (!CopyPath(index, path, &song) || !voice.Open(path)) return false;
  // The number last: until then the current song is another one.
  transport.openedSeconds = voice.Source()->info[INFO_SECONDS];
  transport.openedSong = song;
  return true;
}

int AdvanceSong() {
  const Step step = StepToSong(Way::kForward);
  return step.wrapped && !transport.repeatOn ? -1 : step.song;
}

int RetreatSong() {
  return StepToSong(Way::kBack).song;
}

void BuildShuffleTable() {
  const int count = playlist.count;
  if (count <= 0) return;
  std::srand(platform::GetTickCount());
  std::bitset<kPlaylistSlots> taken;
  for (int i = 0; i < count; ++i) {
    int song;
    do {
      song = std::rand() % count;
    } while (taken[static_cast<std::size_t>(song)]);
    taken.set(static_cast<std::size_t>(song));
    transport.shuffleTable[i] = song;
  }
  transport.shufflePosition = 0;
}

int OnMixerEvent(Mixer* mixer, int event, Voice* voice, int a, int b, int) {
  if (event == EVENT_SOURCE_END) return OnSourceEnd(mixer, voice);
  if (event != EVENT_POSITION || voice != mixer->Slot(0)) return 1;
  // A song that has taken another's place tells its own time from here on.
  if (b == 0 && songBegins.Replace(1, 0)) {
    ++transport.jumps;
    hooks.stateChanged();
  }
  // The main page gives its own times with b = 1.
  if (transport.SeekActive && b == 0) return 1;
  hooks.showSongTime(a);
  return 1;
}

}  // namespace kwo
