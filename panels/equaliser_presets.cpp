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

Shared<int> EffectEQCurrent;
int EffectEQSwitch;
char EqPresetNames[kPresets][kPresetNameSize];
float EqPresetValues[kPresets][kPresetValues];
platform::KeptFile EqPresetFile;

namespace {

static_assert(std::endian::native == std::endian::little, "the file's floats are little-endian");

constexpr std::size_t kFileSize = sizeof EqPresetNames + sizeof EqPresetValues;
constexpr std::size_t kLargestFile = 1 << 20;
constexpr float kUtmostValue = 10.0f;

std::string PresetFile() {
  return std::string(AppDir) + "EQ.SET";
}

// A name without an end gets one, and a value that is no curve's becomes neutral.
void RepairPresets() {
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
  const std::string path = PresetFile();
  EqPresetFile.Note(path.c_str());
  std::string bytes;
  platform::ReadWholeFile(path.c_str(), bytes, kLargestFile);
  LoadPresetBytes(bytes);
}

void LoadPresetBytes(const std::string& bytes) {
  const std::size_t names = std::min(bytes.size(), sizeof EqPresetNames);
  std::memcpy(EqPresetNames, bytes.data(), names);
  std::memcpy(EqPresetValues, bytes.data() + names,
              std::min(bytes.size() - names, sizeof EqPresetValues));
  RepairPresets();
}

std::string PresetBytes() {
  std::string bytes(kFileSize, '\0');
  std::memcpy(bytes.data(), EqPresetNames, sizeof EqPresetNames);
  std::memcpy(bytes.data() + sizeof EqPresetNames, EqPresetValues, sizeof EqPresetValues);
  return bytes;
}

bool SaveEqPresets() {
  return EqPresetFile.Replace(PresetFile().c_str(), PresetBytes());
}

}  // namespace kwo
