#pragma once

#include <cstdint>

#include "platform/accessibility.h"
#include "toolkit/widget.h"

/// The page in front at start: the time that is also the seek control, the song's text, and the
/// visualiser.  Main thread, but for what says otherwise.
namespace kwo {

extern Shared<int> MainDisplayMode;  ///< 0 to 3: how the visualiser sits in the window
extern Shared<int> MainSAMode;       ///< 0 to 6: which visualiser runs

void BuildMainPage();
void ShowMainPage(int wait);
void HideMainPage(int wait);
void MainPageHandler(unsigned event, Widget* widget, float a, float b);
void ListMainPage(platform::ControlList& list);
void SetOnMainPage(int control, double value);

/// Sets the six digits.  Any thread.
void ShowSongTime(int hundredths);
/// Redraws the song's text and the caption.  Any thread.
void RefreshSongLine();
/// Takes a played buffer for the visualiser.  Wave output's thread.
void PushSamples(const std::int16_t* samples, int count);

/// Goes on at `seconds` of the current song, with fades where it is sounding.
void SeekSong(float seconds, bool sounding);
/// Ends a drag of the time without a seek.
void CancelSeek();

void SetMainDisplayMode(int mode);
void SetMainSAMode(int mode);
/// The display mode is one in which the visualiser is the window's tile on every page.
bool VisualiserFillsWindow();
/// What a press on the visualiser does: where it is all of the window, bars and page go or come.
void PressVisualiser();

}  // namespace kwo
