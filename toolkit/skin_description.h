#pragma once

#include <cstdint>
#include <string_view>

#include "platform/window.h"

/// What a skin's ui.txt says.  Filled once at start-up, on the main thread, before others start.
namespace kwo {

struct SkinDescription {
  /// 0x00RRGGBB; the other colours are 0x00BBGGRR.
  std::uint32_t TransparentColor;
  std::uint32_t FontColor;
  std::uint32_t SelectedSongColor;
  /// Marks the choice in menus; the current row is marked by its pulse.
  std::uint32_t CurrentSongColor;

  /// Blend modes of the group boxes.
  int TopEffect, MainEffect, PlaylistEffect, MixerEffect;
  /// Not 0: the pages' tiles pulse.
  int BackgroundEffect;
};
extern SkinDescription skin;

/// Fills `skin` from the text of a ui.txt; any text at all is one, and what it does not
/// mention gets its default.  `window` gets the rectangle of the interface, and keeps what it held
/// if the text has no whole WINDOW statement.
void ParseSkinDescription(std::string_view text, platform::Rectangle& window);

}  // namespace kwo
