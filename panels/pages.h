#pragma once

#include "platform/accessibility.h"
#include "toolkit/widget.h"

/// All pages behind their bar, and the switches that hand a call to the page in front.  Main
/// thread, but for what says otherwise.
namespace kwo {

/// Makes the bar, then every page.
void BuildPages();

/// With `wait` these return when the last slide has ended; the redraw thread must be running then.
void ShowCurrentPage(int wait);
void HideCurrentPage(int wait);

/// Gives an event to the top bar, else to the page in front.  The redraw thread calls it too, with
/// kTick.
void DispatchEvent(unsigned event, Widget* widget, float a, float b);

/// Told of each event before it is handed on, on the event's own thread: the main thread's, or the
/// redraw thread's for kTick.  For tests, which set it before the program starts; empty otherwise.
using EventWatcher = void (*)(unsigned event, const Widget* widget, float a, float b);
extern EventWatcher eventWatcher;

/// What is on the screen: the bar and the page in front.  Nothing while the window is not shown.
platform::ControlList ListControls();
/// Set the value of a control of the page in front, within its range, as its slider would.
void SetControl(int id, double value);
void StepControl(int id, double steps);

/// 1 if the event was the top bar's own.
int TopBarHandler(unsigned event, Widget* widget, float a, float b);

}  // namespace kwo
