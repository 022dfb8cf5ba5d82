#include "app/desktop_requests.h"

#include <algorithm>
#include <utility>

#include "app/main_events.h"
#include "app/shell_services.h"
#include "engine/transport.h"
#include "panels/application_state.h"
#include "panels/main_page.h"
#include "panels/mixer_page.h"
#include "panels/pages.h"
#include "panels/playlist_page.h"
#include "platform/desktop_request.h"
#include "platform/media_controls.h"
#include "platform/messages.h"
#include "playlist/playlist.h"
#include "playlist/playlist_files.h"

namespace kwo {
namespace {

using platform::Ask;
using platform::DesktopRequest;
using platform::Playback;

constexpr double kMicroseconds = 1e6;

double Position() {
  return TheMixer ? double{TheMixer->Slot(0)->position} : 0;
}

// Of what is heard: a pause outlives a stop, and the next song sounds all the same.
Playback CurrentPlayback() {
  if (!transport.playing) return Playback::kStopped;
  return IsPaused() ? Playback::kPaused : Playback::kPlaying;
}

void Pause() {
  // The first toggle of such a song ends the pause that it does not keep.
  if (transport.playing && transport.paused && !IsPaused()) TogglePause();
  if (CurrentPlayback() == Playback::kPlaying) TogglePause();
}

void Play() {
  if (CurrentPlayback() != Playback::kPlaying) TransportPlay();
}

void PlayPause() {
  if (CurrentPlayback() == Playback::kPlaying) {
    Pause();
  } else {
    Play();
  }
}

// The length of the current song, in seconds; 0 where there is none.
int CurrentLength(const platform::MediaState& state) {
  return state.song != 0 && transport.openedSong == state.song ? int{transport.openedSeconds} : 0;
}

platform::MediaState CurrentState() {
  platform::MediaState state;
  state.playback = CurrentPlayback();
  state.volume = double{SliderVol} / 100;
  state.speed = double{SliderSpd} / 100;
  state.repeat = transport.repeatOn != 0;
  state.shuffle = transport.shuffleOn != 0;
  state.anySong = playlist.count > 0;
  state.jumps = transport.jumps;
  const PlaylistReader reader;
  const int song = playlist.currentSong;
  const PlaylistEntry* entry = song >= 0 && song < playlist.count ? reader.Entry(song) : nullptr;
  if (!entry) return state;
  state.song = entry->number;
  state.seconds = CurrentLength(state);
  state.title = entry->title.empty() ? std::string(entry->fileName) : entry->title;
  state.artist = entry->artist;
  state.album = entry->album;
  state.path = entry->path;
  return state;
}

void SeekTo(double seconds) {
  SeekSong(static_cast<float>(std::max(seconds, 0.0)), CurrentPlayback() == Playback::kPlaying);
}

void SeekBy(double seconds) {
  const int length = CurrentState().seconds;
  const double target = Position() + seconds;
  if (length == 0) return;
  if (seconds > 0 && target > length) {
    TransportNext();
  } else {
    SeekTo(target);
  }
}

void SeekWithin(double seconds, unsigned song) {
  const platform::MediaState state = CurrentState();
  if (state.song != 0 && song == state.song && seconds >= 0 && seconds <= state.seconds)
    SeekTo(seconds);
}

void SetRate(double rate) {
  if (rate == 0) {
    Pause();
  } else {
    SetSpeed(rate * 100);
  }
}

void Open(std::vector<std::string> paths) {
  if (!paths.empty()) {
    // A place that was sought in a song that stands still is not the next one's.
    if (!transport.playing) SeekSong(0, false);
    TakeSongs(std::move(paths), false);
    if (playlist.count > 0) PlaySong(0);
  }
  BringUp();
}

// Table of what is asked -> what is done.
constexpr struct {
  Ask ask;
  void (*carryOut)(DesktopRequest& request);
} kAnswers[] = {
    {Ask::kRaise, [](DesktopRequest&) { BringUp(); }},
    {Ask::kPlay, [](DesktopRequest&) { Play(); }},
    {Ask::kPause, [](DesktopRequest&) { Pause(); }},
    {Ask::kPlayPause, [](DesktopRequest&) { PlayPause(); }},
    {Ask::kStop, [](DesktopRequest&) { TransportStop(); }},
    {Ask::kNext, [](DesktopRequest&) { TransportNext(); }},
    {Ask::kPrevious, [](DesktopRequest&) { TransportPrevious(); }},
    {Ask::kSeekBy,
     [](DesktopRequest& request) {
       SeekBy(static_cast<double>(request.microseconds) / kMicroseconds);
     }},
    {Ask::kSeekTo,
     [](DesktopRequest& request) {
       SeekWithin(static_cast<double>(request.microseconds) / kMicroseconds, request.song);
     }},
    {Ask::kVolume, [](DesktopRequest& request) { SetVolume(request.value * 100); }},
    {Ask::kSpeed, [](DesktopRequest& request) { SetRate(request.value); }},
    {Ask::kRepeat, [](DesktopRequest& request) { SetRepeat(request.value != 0); }},
    {Ask::kShuffle, [](DesktopRequest& request) { SetShuffle(request.value != 0); }},
    {Ask::kOpen, [](DesktopRequest& request) { Open(std::move(request.paths)); }},
    {Ask::kHelp, [](DesktopRequest&) { OpenHelp(); }},
    {Ask::kPress, [](DesktopRequest& request) { PressControl(request.control); }},
    {Ask::kToggle, [](DesktopRequest& request) { PressControl(request.control); }},
    {Ask::kSetValue, [](DesktopRequest& request) { SetControl(request.control, request.value); }},
    {Ask::kStepValue, [](DesktopRequest& request) { StepControl(request.control, request.value); }},
};

}  // namespace

void OpenToDesktop() {
  platform::OpenMediaControls(Position);
  ShowStateToDesktop();
}

void TakeSongs(std::vector<std::string> paths, bool keep) {
  TouchList();
  if (!keep) {
    TransportStop();
    ClearList();
    playlist.currentSong = -1;
  }
  const int before = playlist.count;
  bool stepped = false;
  AddPaths(std::move(paths), [&stepped](int) {
    // While nothing plays, the steps to all but the last would show nothing.
    if (transport.playing) {
      TransportNext();
    } else {
      stepped = true;
      AdvanceSong();
    }
  });
  if (stepped && !transport.playing) TransportLoad();
  if (transport.shuffleOn && playlist.count != before) BuildShuffleTable();
  RefreshSongLine();
  RefreshPlaylistPage();
}

void OnDesktopRequest(int number) {
  // One that has waited for the end of a walk, which the program's end has cut short, is for the
  // next player.
  if (platform::EndAsked()) return;
  std::optional<DesktopRequest> request = platform::TakeDesktopRequest(number);
  if (!request) return;
  for (const auto& answer : kAnswers)
    if (answer.ask == request->ask) answer.carryOut(*request);
}

void ShowStateToDesktop() {
  if (AppReady) platform::ShowMediaState(CurrentState());
}

}  // namespace kwo
