#pragma once

#include <map>
#include <string>

#include "platform/registry.h"

namespace kwo::platform {

/// The registry's values, in memory and in a text file of one line a value:
/// `KEY\NAME=dword:0000002a` or `KEY\NAME=string:text`, with control bytes and percent signs of
/// names and text written as %hh.
class RegistryStore {
 public:
  /// Takes the values of `path`; lines that make no sense are passed over.  An empty path keeps
  /// the values in memory.
  void Load(const std::string& path);

  bool Read(const char* key, const char* name, std::string& bytes) const;
  void Write(const char* key, const char* name, RegistryType type, std::string bytes);

  /// Replaces the file in one step if a value has changed; false if that fails.
  bool Flush();

 private:
  struct Value {
    RegistryType type;
    std::string bytes;
    bool operator==(const Value&) const = default;
  };

  void TakeLine(const std::string& line);

  std::string path_;
  std::map<std::string, Value> values_;
  bool changed_ = false;
};

}  // namespace kwo::platform
