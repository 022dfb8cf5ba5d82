#pragma once

namespace kwo::platform {

/// Runs `body` as the program on the desktop, and gives the exit code: its result, or 1, with a
/// line on stderr, where there is no desktop.  What ends a program from outside (its signals, the
/// end of the desktop's session) is posted as the quit message, and closes menus and dialogs; where
/// the display itself is lost, which ends the process at once, `onLoss` runs first, on the main
/// thread.
int RunProcess(int count, char** arguments, int (*body)(), void (*onLoss)());

}  // namespace kwo::platform
