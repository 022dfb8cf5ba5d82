#pragma once

#include "engine/mixer.h"
#include "playlist/playlist.h"

/// What the buttons Play, Stop, Previous and Next do, and the play order: free operations over
/// process-wide words.  Every fade is a ramp on a voice, and nothing here waits for one to end.
///
/// The buttons come from the main thread.  `OnMixerEvent` runs on the render thread, `AdvanceSong`
/// there and on the ShuffleMaster's thread too; a step that two threads take at once costs a song
/// at most, and `currentSong` stays within the list.
namespace kwo {

/// The single mixer; null before start-up and after shutdown.
extern Mixer* TheMixer;

extern SharedFlag playing;    ///< a song is under way; stays 1 during a pause
extern Shared<int> paused;    ///< the last toggle was a pause
extern Shared<int> playMode;  ///< 0 All, 1 Selected, 2 Unselected
extern Shared<int> repeatOn;
extern Shared<int> shuffleOn;
extern Shared<int> djMode;  ///< 0 "DJ - None", 1 "DJ - ShuffleMaster"
extern Shared<int> shuffleTable[kPlaylistSlots];
extern Shared<int> shufflePosition;

/// A drag of the time is under way: the render thread's times are held off.
extern Shared<int> SeekActive;

void TransportPlay();
void TransportStop();
void TogglePause();
void TransportNext();
void TransportPrevious();
/// Opens the current song, as Next does on a player that has stopped.
void TransportLoad();

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
