#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/accessibility.h"
#include "platform/control_watch.h"
#include "platform/desktop_request.h"
#include "platform/media_controls.h"
#include "platform/shell.h"
#include "platform/song_tag.h"
#include "platform/window.h"

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
/// Whether an open device holds on to its buffers and plays none, as one does that was unplugged.
void SetWaveDeviceStanding(bool standing);

/// What the wave device has played so far, as 16-bit values, and how often it was opened.
std::vector<std::int16_t> PlayedSound();
/// The same, and forgets it.
std::vector<std::int16_t> TakePlayedSound();
int WaveOpenCount();

/// Microseconds in which an open device had nothing to play between two buffers.
std::int64_t WaveGap();

/// Forgets what was played, and starts the counts anew.
void ClearPlayedSound();

/// Empties the message queue, as a process that begins finds it: for one that runs a program more
/// than once.
void ForgetMessages();

/// Keeps the registry in a file; an empty path keeps it in memory alone, and starts it empty.
void UseRegistryFile(const std::string& path);

/// Where the program believes its executable to lie, as the machine writes paths; empty for the
/// truth.
void SetExecutablePath(const std::string& path);

/// What the user does in the next file or folder dialog: chooses `paths` while it shows `folder`,
/// or cancels if there are none.  Without an answer a dialog is cancelled.
struct DialogAnswer {
  std::string folder;
  std::vector<std::string> paths;
};
void AnswerDialog(const DialogAnswer& answer);

/// The folder in which the last file dialog opened.
std::string LastDialogFolder();

/// Looks at files below this folder get no answer, as on a server that has gone, until another one
/// is named; empty for none.
void SetStandingFolder(const std::string& path);

/// The tag in front of a song that the desktop knows.
void SetLongTag(const std::string& path, const platform::SongTag& tag);

// The user's hands.  Any thread.  Places are of the screen.

enum class Button { kLeft, kRight };
void MovePointer(platform::Point place);
void PressButton(Button button);
void ReleaseButton(Button button);
/// platform::kWheelNotch for each notch, above 0 away from the user.
void TurnWheel(int way);
void SetKey(platform::Key key, bool down);
unsigned HeldKeys();  ///< of `platform::KeyBit`
/// Types into the edit, if it has the focus; 8 deletes the byte before the caret, and `MoveCaret`
/// puts the caret elsewhere.
void TypeText(const std::string& text);
void MoveCaret(int position);
void DropFiles(const std::vector<std::string>& paths);
void PressTray(Button button);
/// The user makes another window active, or this one again.
void SetWindowActive(bool active);
/// The desktop's own minimise, restore and close buttons.
void MinimiseByUser();
void RestoreByUser();
void CloseByUser();
/// The desktop's other hands: media keys, its panel, its file manager.
void AskOfPlayer(platform::DesktopRequest request);
/// The item chosen in the next menu, by its text; an empty one dismisses it, as no answer does.
void AnswerMenu(const std::string& text);
/// How many answers named no item of their menu, or met no menu, since the last call.
int LostMenuAnswers();

// What the user sees.  Any thread.

struct WindowState {
  platform::Rectangle place;
  bool exists, visible, minimised, topmost, captured, pointerShown, editFocused;
  std::string caption;
  int presented;                      ///< how often pixels were presented
  platform::Rectangle lastPresented;  ///< which, the last time
};
WindowState Window();
/// What the media controls show.
struct MediaControls {
  double (*position)() = nullptr;  ///< null while they are not offered; main thread
  platform::MediaState state;
  int told = 0;  ///< how often the state was another
};
MediaControls Media();
/// What an assistive program reads of the window: nothing while that is not offered.  While the
/// main thread waits.
platform::ControlList Controls();
/// What such a program has been told since the last call.
std::vector<platform::ControlChange> TakeControlNews();
/// It puts its focus on a control.
void FocusControl(int id);
/// What the tool tip says at a place of the window; empty for none.
std::string TipAt(platform::Point place);
/// What the last player left to the next one.
std::optional<platform::DesktopRequest> HandedOn();
struct TrayState {
  bool shown;
  std::string tip;
};
TrayState Tray();
/// Red, green, blue and opacity of each pixel, from the top; what lies outside the shape is clear.
std::vector<std::uint8_t> WindowPixels();
std::vector<platform::Rectangle> WindowShape();
/// A line of text as it was last drawn at its place on a canvas.
struct TextLine {
  std::string text;
  platform::Point place;
  std::uint32_t color;
};
/// The lines on the canvas with these pixels, from the top.  What has been painted over them since
/// is not told.
std::vector<TextLine> TextOn(const std::uint8_t* pixels);
platform::Point PointerPlace();
/// The texts of the last menu, the marked one behind a "*".
std::vector<std::string> LastMenu();
platform::MenuColors MenuColors();
/// The command lines run so far.
std::vector<std::string> CommandLines();

void SetScreenSize(platform::Size size);
/// Several screens, of which the first is the main one.  A program that runs is told.
void SetScreens(const std::vector<platform::Rectangle>& screens);
void SetWindowPossible(bool possible);
/// What `ReadClassRegistry` finds; an empty value removes the key.
void SetClassRegistry(const std::string& key, const std::string& value);

}  // namespace kwo::headless
