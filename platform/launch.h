#pragma once

/// The program as the desktop's launcher and its file manager reach it: one player runs, and songs
/// that are opened are opened by that.  What is asked comes as kMessageDesktop.  Main thread.
namespace kwo::platform {

/// Takes the desktop's calls from now on.  Where another player takes them, that goes on, and this
/// one takes its place when it ends.  Without a bus nothing happens.
void OpenLaunch();

/// Takes no more calls.  With `handOn`, songs that were to be opened and have not been are handed
/// to the player that the desktop starts for them.
void CloseLaunch(bool handOn);

}  // namespace kwo::platform
