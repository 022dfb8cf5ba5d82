#pragma once

namespace kwo::platform {

/// Runs `body` as the program on the desktop, and gives the exit code: its result, or 1, with a
/// line on stderr, where there is no desktop.  What ends a program from outside (its signals, the
/// end of the desktop's session) is posted as the quit message, and closes menus and dialogs.
/// `save` runs on the main thread where the process ends without more, as the display is lost, and
/// where it may: whoever ends it from outside need not wait for it.  A signal ends the process
/// within five seconds, whatever the main thread does; where that does not serve it, `finish` runs
/// on another one and has two seconds to end what is being written.
int RunProcess(int count, char** arguments, int (*body)(), void (*save)(), void (*finish)());

}  // namespace kwo::platform
