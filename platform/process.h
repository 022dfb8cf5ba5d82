#pragma once

namespace kwo::platform {

/// Runs `body` as the program on the desktop, and gives the exit code: its result, or 1, with a
/// line on stderr, where there is no desktop.  What ends a program from outside (its signals, the
/// end of the desktop's session) is posted as the quit message, and closes menus and dialogs.
/// `save` runs on the main thread where the process ends or may end without more: the display is
/// lost, or the session ends.
int RunProcess(int count, char** arguments, int (*body)(), void (*save)());

}  // namespace kwo::platform
