#pragma once

#include <string>

/// The running copy: list, presets and settings as they stand, in a file beside the program for as
/// long as it runs.  They are saved in their own places at the end; a program that is killed before
/// leaves its copy, and the next start goes on from there.  Main thread.
namespace kwo {

/// Looks for copies whose programs have died, and takes the newest: its settings are those of this
/// run from now on.
void FindDeadCopy();
/// The presets' file and the list's text out of the copy that was found; null without one.
const std::string* DeadCopyPresets();
const std::string* DeadCopyList();

/// Begins this run's copy, writes it, and removes those of dead programs.
void BeginRunningCopy();
/// Composes the copy anew if anything has changed; a thread of its own writes it.
void RefreshRunningCopy();
/// Waits until what is being written has been, for so long at most.  Any thread.
void AwaitRunningCopy(int milliseconds);
/// Everything has been saved in its own places; or not, and then the next start finds the copy.
void EndRunningCopy(bool saved);

constexpr int kRunningCopyTimer = 1;

}  // namespace kwo
