#pragma once

/// The per-user settings: named strings and 32-bit values that double as their own defaults.  Names
/// are folded to upper case.  Main thread only.
namespace kwo {

/// Gives the stored value; without one, or with `force` 1, stores `fallback` and gives that.
int GetSettingInt(const char* name, int fallback, int force);

/// The same for text.  The result is `fallback` itself, or lies in a buffer that holds until the
/// next call.  A stored text of more than 263 characters counts as absent.
const char* GetSettingString(const char* name, const char* fallback, int force);

/// Store a value.
void SetSettingInt(const char* name, int value);
void SetSettingString(const char* name, const char* value);

/// Carries all settings to where they last, in one step; false where they can't be written.
bool FlushSettings();

}  // namespace kwo
