#include "settings/settings.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform/registry.h"

namespace kwo {
namespace {

constexpr char kKey[] = "Software\\KWO";
constexpr std::size_t kTextSize = 264;

std::string FoldName(const char* name) {
  std::string folded(name);
  std::transform(folded.begin(), folded.end(), folded.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return folded;
}

}  // namespace

int GetSettingInt(const char* name, int fallback, int force) {
  const std::string folded = FoldName(name);
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
  const std::string folded = FoldName(name);
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

void FlushSettings() {
  platform::FlushRegistry();
}

}  // namespace kwo
