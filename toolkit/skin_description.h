#pragma once

#include <cstdint>
#include <string_view>

#include "platform/window.h"

/// What a skin's ui.txt says.  Filled once at start-up, on the main thread, before others start.
namespace kwo {

/// 0x00RRGGBB; the other colours are 0x00BBGGRR.
extern std::uint32_t TransparentColor;
extern std::uint32_t FontColor;
extern std::uint32_t SelectedSongColor;
/// Kept only: the current row is marked by its pulse.
extern std::uint32_t CurrentSongColor;

/// Blend modes of the group boxes.
extern int TopEffect, MainEffect, PlaylistEffect, MixerEffect;
/// Not 0: the pages' tiles pulse.
extern int BackgroundEffect;

/// Fills the variables from the text of a ui.txt; any text at all is one, and what it does not
/// mention gets its default.  `window` gets the rectangle of the interface, and keeps what it held
/// if the text has no whole WINDOW statement.
void ParseSkinDescription(std::string_view text, platform::Rectangle& window);

}  // namespace kwo
