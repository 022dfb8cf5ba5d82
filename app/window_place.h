#pragma once

#include "platform/window.h"

/// Where the window may stand on the desktop's screens.
namespace kwo {

/// The screen to which centring and corners belong.
platform::Rectangle FirstScreen();

/// A saved place, if anything of the window can be seen there on any screen; else the first one's
/// corner.
platform::Point SeenPlace(platform::Point saved, platform::Size window);

/// The nearest place wholly on the screen that the window touches most; of screens that it touches
/// alike, and where it touches none, the first.  A window larger than the screen stands at its
/// corner.
platform::Point PlaceOnScreen(const platform::Rectangle& window);

}  // namespace kwo
