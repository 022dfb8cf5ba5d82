#include "panels/equaliser_presets.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "panels/application_state.h"
#include "platform/files.h"

namespace kwo {

char EqPresetNames[kPresets][kPresetNameSize];
float EqPresetValues[kPresets][kPresetValues];

namespace {

static_assert(std::endian::native == std::endian::little, "the file's floats are little-endian");

constexpr std::size_t kFileSize = sizeof EqPresetNames + sizeof EqPresetValues;
constexpr float kUtmostValue = 10.0f;

std::string PresetFile() {
  return std::string(AppDir) + "EQ.SET";
}

// A name without an end gets one, and a value that is no curve's becomes neutral.
void MakeSound() {
  for (auto& name : EqPresetNames) name[kPresetNameSize - 1] = 0;
  for (auto& values : EqPresetValues)
    for (float& value : values)
      if (!(std::fabs(value) <= kUtmostValue)) value = 1.0f;
}

}  // namespace

void LoadEqPresets() {
  for (int preset = 0; preset < kPresets; ++preset) {
    std::memset(EqPresetNames[preset], 0, kPresetNameSize);
    std::strcpy(EqPresetNames[preset], "User Preset");
    std::fill_n(EqPresetValues[preset], kPresetValues, 1.0f);
  }
  const int file = platform::OpenFile(PresetFile().c_str(), platform::FileAccess::kRead,
                                      platform::FileCreate::kNever);
  if (file < 0) return;
  platform::ReadFile(file, EqPresetNames, sizeof EqPresetNames);
  platform::ReadFile(file, EqPresetValues, sizeof EqPresetValues);
  platform::CloseFile(file);
  MakeSound();
}

void SaveEqPresets() {
  std::string contents(kFileSize, '\0');
  std::memcpy(contents.data(), EqPresetNames, sizeof EqPresetNames);
  std::memcpy(contents.data() + sizeof EqPresetNames, EqPresetValues, sizeof EqPresetValues);
  platform::ReplaceFile(PresetFile().c_str(), contents);
}

}  // namespace kwo
