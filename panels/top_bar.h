#pragma once

#include "toolkit/widget.h"

/// The band of transport and page buttons, and the switches that hand a call to the page in front.
/// Main thread, but for what says otherwise.
namespace kwo {

void BuildTopBar();
/// With `wait` these return when the slide has ended; the redraw thread must be running then.
void ShowTopBar(int wait);
void HideTopBar(int wait);

void ShowCurrentPage(int wait);
void HideCurrentPage(int wait);

/// Gives an event to the top bar, else to the page in front.  The redraw thread calls it too, with
/// kTick.
void DispatchEvent(unsigned event, Widget* widget, float a, float b);

/// Told of each event before it is handed on, on the event's own thread: the main thread's, or the
/// redraw thread's for kTick.  For tests, which set it before the program starts; empty otherwise.
using EventWatcher = void (*)(unsigned event, const Widget* widget, float a, float b);
extern EventWatcher eventWatcher;

/// 1 if the event was the top bar's own.
int TopBarHandler(unsigned event, Widget* widget, float a, float b);

void BuildInfoPage();
void BuildConfigPage();

}  // namespace kwo
