#pragma once

#include "engine/transport.h"

/// The process-wide variables, and where the program begins and ends.  Main thread, but for the
/// words marked as shared.
namespace kwo {

/// Folder of the executable, with its trailing backslash.
extern char AppDir[256];

/// Name of the skin folder under `skin\`.
extern char SkinName[256];

/// Mirror of the text in the hidden edit.
extern char InputText[256];

/// The page in front: 0 main, 1 playlist, 2 mixer, 3 info, 4 config, 5 window.
extern int CurrentPage;

/// Sub-page of the mixer page, 0 to 3.
extern int MixerSubPage;

/// The window's on-top, auto hide and auto minimise settings.
extern int WindowFlags;

/// 1 from the very end of start-up until the first step of shutdown.
extern Shared<int> AppReady;

/// Brings the program up; 1, or 0 if it can't run.
int StartUp();

/// Takes the program down; always 1.
int ShutDown();

/// The whole life of the process: start-up, message loop, shutdown.  Gives the exit code.
int RunApplication();

}  // namespace kwo
