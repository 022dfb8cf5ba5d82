#pragma once

/// Where the program begins and ends.  Main thread.
namespace kwo {

/// Brings the program up: engine, window, skin, pages, saved state; 1, or 0 if there is no skin or
/// no window to show it in.  `ShutDown` may follow either.
int StartUp();

/// Saves everything as it stands, for a program that may be cut off: nothing before start-up has
/// ended, and once shutdown has begun what that has not saved yet.
void SaveState();

/// Fades the music out, saves everything and takes the program down; always 1.
int ShutDown();

/// The whole life of the process: start-up, message loop, shutdown.  Gives the exit code: 0, or 1
/// for a program that could not come up.
int RunApplication();

}  // namespace kwo
