#pragma once

#include <string>

#include "platform/kept_file.h"

/// The running copy: list, presets and settings as they stand, in a file beside the program for as
/// long as it runs.  They are saved in their own places at the end; a program that is killed before
/// leaves its copy, and the next start goes on from there.  Main thread.
namespace kwo {

/// Looks for copies whose programs have died, and takes the newest: its settings are those of this
/// run from now on.
void FindDeadCopy();
struct RunningCopy {
  std::string settings;      // NAME=value, a line each
  std::string presets;       // as their file
  std::string list;          // as a playlist file
  std::string notedHistory;  // of the files that its program had read
  std::string notedPresets;
};
/// The copy that was found; null without one.
const RunningCopy* DeadCopy();

/// The history's file, as it was when it was read.
extern platform::KeptFile HistoryKept;

/// Begins this run's copy and writes it.  Those of dead programs go once it has been written.
void BeginRunningCopy();
/// Composes the copy anew; a thread of its own writes it if anything has changed.
void RefreshRunningCopy();
/// Waits until what is being written has been, for so long at most.  Any thread.
void AwaitRunningCopy(int milliseconds);
/// Everything has been saved in its own places; or not, and then the next start finds the copy.
void EndRunningCopy(bool saved);

constexpr int kRunningCopyTimer = 1;

}  // namespace kwo
