#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz/temp_file.h"
#include "panels/application_state.h"
#include "panels/equaliser_presets.h"

// EQ.SET of any bytes: names that end, and values that a curve can be drawn from.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static kwo::fuzz::TempFile file("EQ.SET");
  file.Fill(data, size);
  std::snprintf(kwo::AppDir, sizeof kwo::AppDir, "%s/", file.folder.Path().c_str());
  kwo::LoadEqPresets();
  for (int preset = 0; preset < kwo::kPresets; ++preset) {
    if (std::strlen(kwo::EqPresetNames[preset]) >= kwo::kPresetNameSize) std::abort();
    for (float value : kwo::EqPresetValues[preset])
      if (!(std::fabs(value) <= 10)) std::abort();
  }
  return 0;
}
