#pragma once

/// The automatic DJ: every 41 seconds of play it slides the next song in from the left at a random
/// place, and lets the old one leave to the right.  One thread of its own.
namespace kwo {

/// Ends the thread, wherever it stands, and starts a new one if `mode` is 1; false if there can be
/// none.  Main thread.
bool DjSetMode(int mode);

/// Ends the thread if there is one.  Main thread.
void DjEnd();

}  // namespace kwo
