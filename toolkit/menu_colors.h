#pragma once

#include "platform/shell.h"

namespace kwo {

/// The menus' colours from those of `skin`: its text on its selected row's colour, put back towards
/// black or white.  Where a skin's own two are too near each other to be read, the ground gives
/// way.
platform::MenuColors SkinMenuColors();

}  // namespace kwo
