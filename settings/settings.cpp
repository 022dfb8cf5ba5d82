#include "settings/settings.h"

#include <cstdint>
#include <cstring>
#include <string>

#include "base/upper_cased.h"
#include "platform/decoding.h"
#include "platform/registry.h"

namespace kwo {
namespace {

constexpr char kKey[] = "Software\\KWO";
constexpr std::size_t kTextSize = platform::kMostBytes + 1;

}  // namespace

int GetSettingInt(const char* name, int fallback, int force) {
  const std::string folded = UpperCased(name);
  std::string bytes;
  std::int32_t value = 0;
  if (!force && platform::ReadRegistry(kKey, folded.c_str(), bytes) &&
      bytes.size() <= sizeof value) {
    std::memcpy(&value, bytes.data(), bytes.size());
    return value;
  }
  value = fallback;
  platform::WriteRegistry(kKey, folded.c_str(), platform::RegistryType::kDword, &value,
                          sizeof value);
  return fallback;
}

const char* GetSettingString(const char* name, const char* fallback, int force) {
  static char text[kTextSize];
  const std::string folded = UpperCased(name);
  std::string bytes;
  if (!force && platform::ReadRegistry(kKey, folded.c_str(), bytes) && bytes.size() < kTextSize) {
    std::memcpy(text, bytes.data(), bytes.size());
    text[bytes.size()] = 0;
    return text;
  }
  platform::WriteRegistry(kKey, folded.c_str(), platform::RegistryType::kString, fallback,
                          std::strlen(fallback));
  return fallback;
}

void SetSettingInt(const char* name, int value) {
  GetSettingInt(name, value, 1);
}

void SetSettingString(const char* name, const char* value) {
  GetSettingString(name, value, 1);
}

bool FlushSettings() {
  return platform::FlushRegistry();
}

}  // namespace kwo
