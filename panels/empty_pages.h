#pragma once

#include "toolkit/widget.h"

/// The info and config pages: nothing but their tile and the pulse of their button.  Main thread.
namespace kwo {

void BuildInfoPage();
void ShowInfoPage(int wait);
void HideInfoPage(int wait);

void BuildConfigPage();
void ShowConfigPage(int wait);
void HideConfigPage(int wait);

void EmptyPageHandler(unsigned event, Widget* widget, float a, float b);

}  // namespace kwo
