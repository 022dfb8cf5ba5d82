#pragma once

#include <atomic>

#include "engine/mixer.h"
#include "playlist/playlist.h"

/// What the buttons Play, Stop, Previous and Next do, and the play order: free operations over
/// process-wide words.  Every fade is a ramp on a voice, and nothing here waits for one to end.
///
/// The buttons come from the main thread.  `OnMixerEvent` runs on the render thread, `AdvanceSong`
/// there and on the ShuffleMaster's thread too; a step that two threads take at once costs a song
/// at most, and `currentSong` stays within the list.
namespace kwo {

enum PlayMode : int { PLAY_ALL = 0, PLAY_SELECTED = 1, PLAY_UNSELECTED = 2 };

/// What the transport is doing.  All words are shared; each says who writes it.
struct TransportState {
  SharedFlag playing;          ///< a song is under way; stays 1 during a pause.  Any thread
  Shared<int> paused;          ///< the last toggle was a pause; outlives a stop.  Main thread
  Shared<unsigned> pausedRun;  ///< the raising of `playing` that it paused.  Main thread
  Shared<int> playMode;        ///< a PlayMode.  Main thread
  Shared<int> repeatOn;        ///< Main thread
  Shared<int> shuffleOn;       ///< Main thread
  Shared<int> djMode;          ///< 0 "DJ - None", 1 "DJ - ShuffleMaster".  Main thread
  Shared<int> shuffleTable[kPlaylistSlots];  ///< whoever steps
  Shared<int> shufflePosition;               ///< whoever steps
  std::atomic<unsigned> jumps = 0;           ///< of the time: whoever makes it jump
  /// The song that was opened last as the current one, by its number, and its whole seconds.
  /// Whoever opens it
  Shared<unsigned> openedSong;
  Shared<int> openedSeconds;
  /// A drag of the time is under way: the render thread's times are held off.  Main thread
  Shared<int> SeekActive;
};
extern TransportState transport;

/// Starts the current song, or the next one of the play mode; while one plays, toggles the pause.
void TransportPlay();
void TransportStop();
void TogglePause();
void TransportNext();
void TransportPrevious();
/// Opens the current song, as Next does on a player that has stopped.
void TransportLoad();
/// Goes on at `seconds` of the current song: with fades where it is sounding.
void TransportSeek(float seconds, bool sounding);

/// The music under way is silent by a pause.  Main thread.
bool IsPaused();

/// Opens a song of the list on a voice as the current one; false if there is none.  Waits as
/// `Voice::Open` does.
bool OpenSong(Voice& voice, int index);

/// Steps to the next or previous song of the play order and gives its index, or -1 where there is
/// none: the list is empty, no song is in the play mode, or, going forward without Repeat, the list
/// has run out.
int AdvanceSong();
int RetreatSong();

/// A new random order of all songs.
void BuildShuffleTable();

/// The Mixer's event callback.
int OnMixerEvent(Mixer* mixer, int event, Voice* voice, int a, int b, int c);

}  // namespace kwo
