// The settings file, read, changed and written back.

#include "settings/settings.h"

#include <cstdlib>

#include "fuzz/temp_file.h"
#include "platform/headless/headless.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static kwo::fuzz::TempFile file("fuzz.settings");
  const std::string path = file.Fill(data, size);
  kwo::headless::UseRegistryFile(path);
  kwo::GetSettingInt("SliderVol", 100, 0);
  kwo::GetSettingString("DirOpen", "x", 0);
  kwo::GetSettingInt("Extra", 7, 1);
  kwo::FlushSettings();
  kwo::headless::UseRegistryFile(path);
  if (kwo::GetSettingInt("Extra", 0, 0) != 7) std::abort();
  return 0;
}
