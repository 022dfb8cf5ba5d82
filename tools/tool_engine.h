#pragma once

#include <functional>
#include <string>

/// The engine as the developer programs run it: the whole of it, without a window.
namespace kwo::tools {

/// Makes the mixer with its three voices, without its thread; false if there is no memory.
bool MakeEngine();

/// The same, with the thread running.
bool StartEngine();

/// Stops the music at once, and the engine.
void StopEngine();

/// Adds a song, folder or playlist file that the command line names; false if it added nothing.
bool AddArgument(const std::string& path);

/// What sets one of the saved settings that the engine reads, by its name: "SliderVol", "ModeDJ",
/// ...  Empty if the engine has no such setting.
std::function<void(int value)> FindSetting(const std::string& name);

}  // namespace kwo::tools
