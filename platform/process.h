#pragma once

namespace kwo::platform {

/// Runs `body` as the program on the desktop, and gives the exit code: its result, or 1, with a
/// line on stderr, where there is no desktop.  What ends a program from outside (its signals, the
/// end of the desktop's session) is posted as the quit message, and closes menus and dialogs.
/// `save` runs on the main thread where the process ends without more, as the display is lost, and
/// where it may: whoever ends it from outside need not wait for it.
int RunProcess(int count, char** arguments, int (*body)(), void (*save)());

}  // namespace kwo::platform
