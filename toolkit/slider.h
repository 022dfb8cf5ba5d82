#pragma once

#include "toolkit/widget.h"

/// A slider's geometry: two caps, a track between them, and a thumb on it.  Its picture has seven
/// cells of one size.
namespace kwo {

/// Width of a slider's cells, or their height if it stands upright.
int CellSize(const Widget& slider);

/// What lies at so many pixels from the slider's left or upper end.
SliderPart HitSlider(const Widget& slider, int position);
/// The position, 0 to 1 of the way, of a thumb that is held there.
float ThumbValue(const Widget& slider, int position);

/// Paints the slider's canvas for a position, and gives the one that it shows: as whole pixels have
/// it.  `part` is a SliderPart.
float PaintSlider(Widget& slider, float part, float position);

}  // namespace kwo
