#pragma once

#include <QPoint>

#include "platform/window.h"

namespace kwo::platform {

/// Has the window made readable for assistive programs: before it is there.
void MakeWindowReadable();

/// Shows the name of the control at a place of the window, if it has no label, beside the pointer.
void ShowTip(Point place, QPoint pointer);

}  // namespace kwo::platform
