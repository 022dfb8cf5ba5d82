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

/// Told of each event before it is handed on, for those who watch the program; empty otherwise.
/// Set before the program starts.
using EventWatcher = void (*)(unsigned event, const Widget* widget, float a, float b);
extern EventWatcher eventWatcher;

/// 1 if the event was the top bar's own.
int TopBarHandler(unsigned event, Widget* widget, float a, float b);

void BuildInfoPage();
void BuildConfigPage();

}  // namespace kwo
