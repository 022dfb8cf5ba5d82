#pragma once

#include <QVariant>

class QWindow;

namespace kwo::platform {

/// Takes the token of a launch out of what the launcher says of its desktop (a{sv}), for the next
/// time the window is made active.
void NoteStartupToken(const QVariant& platformData);
/// The token that has been noted, once; empty for none.
QString TakeStartupToken();

/// Tells the desktop that the launch has come to its window, so that it may come to the front and
/// the launcher's sign of waiting goes.  A token of no launch does nothing.
void EndStartup(const QWindow& window, const QString& token);

}  // namespace kwo::platform
