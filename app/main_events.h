#pragma once

#include "toolkit/skin_host.h"

namespace kwo {

constexpr int kTagsTimer = 2;

/// Turns the window's messages into the panels' events, and carries out what the desktop asks of
/// the program.  Main thread; with kTick the redraw thread.
void MainCallback(SkinHost& host, std::uint32_t message, int wParam, int lParam);

/// Forgets what is pressed, for a new start.
void ResetMainEvents();

}  // namespace kwo
