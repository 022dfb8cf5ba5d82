#pragma once

namespace kwo::platform {

/// How the main thread waits in a program with a window.  All empty in one without, which waits for
/// messages and time alone.
struct MainLoop {
  /// Serves the desktop until something has happened.  Main thread.
  void (*wait)() = nullptr;
  /// Ends a `wait`.  Any thread; never waits.
  void (*wake)() = nullptr;
  /// Lets time pass while the window stays alive on the screen.  Main thread.
  void (*sleep)(int milliseconds) = nullptr;
  bool (*onMainThread)() = nullptr;
};

extern MainLoop mainLoop;

/// Whether `PostStateChanged` has been called, once.  Main thread.
bool TakeStateChanged();

}  // namespace kwo::platform
