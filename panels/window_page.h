#pragma once

#include "platform/accessibility.h"
#include "toolkit/widget.h"

/// The page of four buttons that set how the window behaves on the desktop.  Main thread.
namespace kwo {

void BuildWindowPage();
void ShowWindowPage(int wait);
void HideWindowPage(int wait);
void WindowPageHandler(unsigned event, Widget* widget, float a, float b);
void ListWindowPage(platform::ControlList& list);

/// Turns `WindowFlags` into labels, the window's place before others, and the auto-hide timer.
void ApplyWindowFlags();

constexpr int kAutoHideTimer = 0;

}  // namespace kwo
