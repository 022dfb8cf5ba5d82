#pragma once

#include "toolkit/skin_host.h"

namespace kwo {

constexpr int kTagsTimer = 2;

/// Turns the window's messages into the panels' events, and carries out what the desktop asks of
/// the program.  Main thread; with kTick the redraw thread.
void MainCallback(SkinHost& host, std::uint32_t message, int wParam, int lParam);

/// Shows the window and makes it active, as from minimised or hidden; one that hides by itself
/// waits until the pointer has been in it.
void BringUp();

/// What a press of the mouse on a control would do, wherever the pointer is: on a song of the list
/// two quick ones, or with Control held a single one.  Nothing for a control that is not there.
void PressControl(int id);

/// Forgets what is pressed, for a new start.
void ResetMainEvents();

}  // namespace kwo
