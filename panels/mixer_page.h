#pragma once

#include "platform/accessibility.h"
#include "toolkit/widget.h"

/// The page of four sub-pages: sliders, equaliser, effects, DJ and play mode.  Whatever the user
/// changes lands in a variable, and `ApplyMixerPage` brings controls, labels and Mixer into line.
/// Main thread, but for what says otherwise.
namespace kwo {

// Whole numbers: percent of the volume, of the pan (-100 to 100) and of the speed.
extern float SliderVol, SliderPan, SliderSpd;
extern int EffectCR, EffectTE, EffectVR, EffectCE, EffectLT;

void BuildMixerPage();
void ShowMixerPage(int wait);
void HideMixerPage(int wait);
void ShowMixerSubPage();
void HideMixerSubPage();
/// The redraw thread calls it too, with kTick.
void MixerPageHandler(unsigned event, Widget* widget, float a, float b);
void ListMixerPage(platform::ControlList& list);
void SetOnMixerPage(int control, double value);

void ApplyMixerPage();

/// What the controls would do: percent, held to the slider's range, and the boxes' states.
void SetVolume(double percent);
void SetSpeed(double percent);
void SetRepeat(bool on);
void SetShuffle(bool on);

}  // namespace kwo
