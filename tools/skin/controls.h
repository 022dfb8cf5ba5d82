#pragma once

#include "tools/skin/picture.h"

/// The frame, the group boxes and the small controls.
namespace kwo::tools {

/// The body with its pane, in which `tile` stands.
Picture PaintBackground(const Picture& tile);

/// What is taken from the picture behind the shore.
Picture TopGroupBox();
/// The first rows of a tile; where the main page's time stands, with the dots between its digits.
Picture GroupBox(const Picture& tile, int height, bool dots);

Picture Lamp();
Picture Toggles();
Picture HorizontalSlider();
Picture VerticalSlider();
/// The chevrons beside the preset's name, each with a hairline that fades in from its outer side.
Picture PresetStep(bool forward);

}  // namespace kwo::tools
