#pragma once

#include "platform/desktop_request.h"

namespace kwo::platform {

/// Keeps what the desktop asks for the logic, which gets its message; while a menu or a dialog is
/// open, beside that.
void PostDesktopRequest(DesktopRequest request);

/// Carries out what has been asked beside a menu or a dialog.
void ServeBesideDialog();

/// The Open or Raise that still waits.
std::optional<DesktopRequest> TakeWaitingBringUp();

/// The program ends from outside: what waits, and what is still to come, is for nobody.
void DropDesktopRequests();

}  // namespace kwo::platform
