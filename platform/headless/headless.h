#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What tests and developer programs set and see of the headless backend.
namespace kwo::headless {

/// By default time stands still while a thread works and jumps to the next sleeper's end when all
/// threads sleep.  One thread runs at a time, so that a run is the same each time.
///
/// This lets time run by the machine's clock instead, `speed` times as fast, with threads side by
/// side.  Call it before the first thread is started, on the main thread.
void UseRunningClock(double speed);

/// Microseconds of the backend's time.
std::int64_t Now();

/// Whether a wave device can be opened from now on; an open one plays on.
void SetWaveDevicePresent(bool present);

/// What the wave device has played so far, as 16-bit values, and how often it was opened.
std::vector<std::int16_t> PlayedSound();
/// The same, and forgets it.
std::vector<std::int16_t> TakePlayedSound();
int WaveOpenCount();

/// Microseconds in which an open device had nothing to play between two buffers.
std::int64_t WaveGap();

/// Forgets what was played, and starts the counts anew.
void ClearPlayedSound();

/// Keeps the registry in a file; an empty path keeps it in memory alone, and starts it empty.
void UseRegistryFile(const std::string& path);

/// What the user does in the next file or folder dialog: chooses `paths` while it shows `folder`,
/// or cancels if there are none.  Without an answer a dialog is cancelled.
struct DialogAnswer {
  std::string folder;
  std::vector<std::string> paths;
};
void AnswerDialog(const DialogAnswer& answer);

/// The folder in which the last file dialog opened.
std::string LastDialogFolder();

}  // namespace kwo::headless
