#pragma once

#include "platform/accessibility.h"
#include "toolkit/widget.h"

/// The equaliser's curve on its pair of canvases, of which one is shown, and the drawing of it by
/// drag.  Main thread.
namespace kwo {

/// Makes the canvases, `height` high, at rest `top` below the interface's upper edge.
void BuildCurve(int top, int height);

/// The current preset to curve, switch, name, Mixer and decoder.
void DrawEqualiser();

/// The dip of the curve's brightness that answers a change.
void Dip();

enum class CurveDrag { kNone, kBands, kMaster };

// A drag that begins on the curve draws the bands' values or the master value; places are relative
// to the canvas.
void BeginCurveDrag(const Widget* widget, CurveDrag mode, float x, float y);
void MoveCurveDrag(float x, float y);
void EndCurveDrag();

/// The bands and the master value as sliders, in percent; 100 is neutral.
void ListCurve(platform::ControlList& list);
void SetOnCurve(int control, double value);

}  // namespace kwo
