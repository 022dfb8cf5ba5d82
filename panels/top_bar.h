#pragma once

#include "platform/accessibility.h"
#include "toolkit/widget.h"

/// The band of transport and page buttons.  Main thread.
namespace kwo {

void BuildTopBar();
/// With `wait` these return when the slide has ended; the redraw thread must be running then.
void ShowTopBar(int wait);
void HideTopBar(int wait);

/// Whether the widget is a button of the transport, whose press is then carried out.
bool PressTransport(const Widget* widget);

void ListTopBar(platform::ControlList& list);

}  // namespace kwo
