#pragma once

#include <string>

#include "base/shared.h"
#include "engine/equaliser.h"
#include "platform/kept_file.h"

/// The 64 presets of the equaliser, each a name and a curve, kept in EQ.SET beside the program.
/// Main thread.
namespace kwo {

constexpr int kPresets = 64;
constexpr int kPresetNameSize = 64;  ///< with the closing NUL
constexpr int kBands = kEqualiserBands;
constexpr int kMasterValue = kBands;
constexpr int kPresetValues = kEqualiserValues;  ///< the bands, then the master value

/// Which preset holds, and whether the equaliser is on.
extern Shared<int> EffectEQCurrent;
extern int EffectEQSwitch;

extern char EqPresetNames[kPresets][kPresetNameSize];
/// 1.0 is neutral.
extern float EqPresetValues[kPresets][kPresetValues];

/// Sets the defaults, and over them as much as the file holds.
void LoadEqPresets();
/// Writes the file in one step; false, after a failed save, leaves the old file.  One that another
/// program has written since the load is set aside.
bool SaveEqPresets();

/// The file, as it was when it was loaded or saved last.
extern platform::KeptFile EqPresetFile;

/// What the file holds, and the taking of as much as there is of it.
std::string PresetBytes();
void LoadPresetBytes(const std::string& bytes);

}  // namespace kwo
