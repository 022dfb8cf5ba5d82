// The settings file, read, changed and written back.

#include "settings/settings.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/files.h"
#include "platform/headless/headless.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = std::tmpnam(nullptr);
  kwo::platform::ReplaceFile(path.c_str(), {reinterpret_cast<const char*>(data), size});
  kwo::headless::UseRegistryFile(path);
  kwo::GetSettingInt("SliderVol", 100, 0);
  kwo::GetSettingString("DirOpen", "x", 0);
  kwo::GetSettingInt("Extra", 7, 1);
  kwo::FlushSettings();
  kwo::headless::UseRegistryFile(path);
  if (kwo::GetSettingInt("Extra", 0, 0) != 7) std::abort();
  std::remove(path.c_str());
  return 0;
}
