#include "platform/posix/registry_store.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/files.h"

namespace kwo::platform {
namespace {

constexpr std::size_t kLargestFile = 1 << 20;

std::string Escape(const std::string& text) {
  std::string escaped;
  for (unsigned char c : text) {
    char hex[4];
    std::snprintf(hex, sizeof hex, "%%%02x", c);
    escaped += c < 0x20 || c == '%' || c == '=' ? hex : std::string(1, static_cast<char>(c));
  }
  return escaped;
}

std::string Unescape(const std::string& escaped) {
  std::string text;
  for (std::size_t i = 0; i < escaped.size(); ++i) {
    if (escaped[i] == '%' && i + 2 < escaped.size()) {
      text += static_cast<char>(std::strtol(escaped.substr(i + 1, 2).c_str(), nullptr, 16));
      i += 2;
    } else {
      text += escaped[i];
    }
  }
  return text;
}

std::string FullName(const char* key, const char* name) {
  return std::string(key) + '\\' + name;
}

}  // namespace

void RegistryStore::Load(const std::string& path) {
  path_ = path;
  values_.clear();
  changed_ = false;
  std::string contents;
  if (path.empty() || !ReadWholeFile(path.c_str(), contents, kLargestFile)) return;
  for (std::size_t start = 0; start < contents.size();) {
    std::size_t end = contents.find('\n', start);
    if (end == std::string::npos) end = contents.size();
    TakeLine(contents.substr(start, end - start));
    start = end + 1;
  }
}

void RegistryStore::TakeLine(const std::string& line) {
  const std::size_t equals = line.find('=');
  if (equals == std::string::npos) return;
  const std::string name = Unescape(line.substr(0, equals));
  const std::string value = line.substr(equals + 1);
  if (value.starts_with("dword:")) {
    const auto number =
        static_cast<std::uint32_t>(std::strtoul(value.c_str() + 6, nullptr, 16) & 0xffffffff);
    values_[name] = {RegistryType::kDword,
                     std::string(reinterpret_cast<const char*>(&number), sizeof number)};
  } else if (value.starts_with("string:")) {
    values_[name] = {RegistryType::kString, Unescape(value.substr(7))};
  }
}

bool RegistryStore::Read(const char* key, const char* name, std::string& bytes) const {
  auto found = values_.find(FullName(key, name));
  if (found == values_.end()) return false;
  bytes = found->second.bytes;
  return true;
}

void RegistryStore::Write(const char* key, const char* name, RegistryType type, std::string bytes) {
  Value value{type, std::move(bytes)};
  Value& stored = values_[FullName(key, name)];
  if (stored == value) return;
  stored = std::move(value);
  changed_ = true;
}

bool RegistryStore::Flush() {
  if (path_.empty() || !changed_) return true;
  std::string contents;
  for (const auto& [name, value] : values_) {
    contents += Escape(name) + '=';
    if (value.type == RegistryType::kDword && value.bytes.size() == 4) {
      std::uint32_t number;
      std::memcpy(&number, value.bytes.data(), sizeof number);
      char text[16];
      std::snprintf(text, sizeof text, "dword:%08x", number);
      contents += text;
    } else {
      contents += "string:" + Escape(value.bytes);
    }
    contents += '\n';
  }
  changed_ = !ReplaceFile(path_.c_str(), contents);
  return !changed_;
}

}  // namespace kwo::platform
