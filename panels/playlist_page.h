#pragma once

#include "platform/accessibility.h"
#include "toolkit/widget.h"

/// The page with a window of up to ten rows onto the list.  Main thread, but for what says
/// otherwise.
namespace kwo {

/// Also sets how many rows are visible.
void BuildPlaylistPage();
void ShowPlaylistPage(int wait);
void HidePlaylistPage(int wait);
void PlaylistPageHandler(unsigned event, Widget* widget, float a, float b);
void ListPlaylistPage(platform::ControlList& list);
void SetOnPlaylistPage(int control, double value);

/// Rebuilds the display names and redraws rows and scroll bar.  Any thread.
void RefreshPlaylistPage();

/// Makes a song of the list current and plays it, from where a player that stands still has been
/// put.
void PlaySong(int song);

/// The user's hands are on the list: for the next 30 seconds it stays as they leave it.
void TouchList();
/// Scrolls by the least that shows the current song's row, unless hands are on the list.  Any
/// thread.
void FollowSong();

/// The row that a widget is, or -1.
int RowOf(const Widget* widget);

}  // namespace kwo
