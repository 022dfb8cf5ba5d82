#pragma once

#include <cstddef>
#include <string>

/// Named values under a key, per user.  Main thread only.
namespace kwo::platform {

enum class RegistryType { kString, kDword };

/// Gives the bytes of a value, whatever its type: 4 for a number, the characters for a string.
/// False if there is no such value.
bool ReadRegistry(const char* key, const char* name, std::string& bytes);

/// Sets a value.  It lasts for this run at once, and beyond it from the next `FlushRegistry` on.
/// False if the registry can't hold it.
bool WriteRegistry(const char* key, const char* name, RegistryType type, const void* data,
                   std::size_t size);

/// Carries all values set so far to where they last, in one step: what is found after a crash is
/// the values of the last flush, whole.  False where that can't be written.
bool FlushRegistry();

}  // namespace kwo::platform
