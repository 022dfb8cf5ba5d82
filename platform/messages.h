#pragma once

/// The main thread's message queue, and the numbers of the messages.  A message is what the desktop
/// or another thread tells the logic; it waits until the main thread asks for it.
namespace kwo::platform {

enum MessageId : int {
  kMessageSize = 5,      ///< `wParam`: kSizeRestored or kSizeMinimised
  kMessageActivate = 6,  ///< low word of `wParam` 0: another program's window is active now
  kMessagePaint = 15,    ///< the whole window is to be presented
  kMessageQuit = 18,
  kMessageShowWindow = 24,      ///< `wParam`: 1 shown, 0 hidden
  kMessageDisplayChange = 126,  ///< the screens or their density are others now
  kMessageCommand = 273,  ///< low word of `wParam` a menu command, or high word an edit's notice
  kMessageSysCommand = 274,
  kMessageTimer = 275,  ///< `wParam`: the timer's id; one at most waits in the queue
  kMessageMouseMove = 512,
  kMessageLeftDown = 513,
  kMessageLeftUp = 514,
  kMessageLeftDouble = 515,  ///< in place of the second of two quick presses
  kMessageRightDown = 516,
  kMessageRightUp = 517,
  kMessageRightDouble = 518,
  kMessageWheel = 522,       ///< `wParam`: kWheelNotch for each notch, above 0 away from the user
  kMessageDropFiles = 563,   ///< `wParam`: what `TakeDroppedFiles` takes
  kMessageTray = 0x8064,     ///< `lParam`: kMessageLeftDown or kMessageRightDown on the tray icon
  kMessageDesktop = 0x8065,  ///< `wParam`: what `TakeDesktopRequest` takes
  kMessageStateChanged = 0x8066,
};

constexpr int kWheelNotch = 120;
constexpr int kSizeRestored = 0;
constexpr int kSizeMinimised = 1;
constexpr int kSystemMinimise = 0xF020;
constexpr int kSystemClose = 0xF060;
constexpr int kSystemRestore = 0xF120;
constexpr int kEditLostFocus = 0x200;
constexpr int kEditChanged = 0x300;

enum class Key { kShift, kControl };

constexpr unsigned KeyBit(Key key) {
  return 1u << static_cast<unsigned>(key);
}

struct Message {
  int id;
  int wParam;
  /// For the mouse: x in the low and y in the high 16 bits, in the window's pixels.  A place left
  /// of or above the window counts as its edge.
  int lParam;
  unsigned keys = 0;  ///< of `KeyBit`: what was held at a press or drop
};

/// Ends the message loop: `GetMessage` gives false once the messages before have been taken.  Any
/// thread.
void PostQuitMessage(int exitCode);

constexpr bool IsEnd(const Message& message) {
  return message.id == kMessageQuit ||
         (message.id == kMessageSysCommand && message.wParam == kSystemClose);
}

/// Appends a message.  Any thread.
void PostMessage(const Message& message);

/// Has the window's procedure told of kMessageStateChanged soon, on the main thread: once for all
/// calls until then, and also while that sleeps or shows a menu or a dialog.  Any thread; never
/// waits.
void PostStateChanged();

/// Whether the program is asked to end: the quit message or the desktop's close waits.  Any thread.
bool EndAsked();

/// Looks for a message without taking it; false if there is none.  Main thread.
bool PeekMessage(Message& message);

/// Waits for a message and takes it; false when it is the quit message.  Main thread.
bool GetMessage(Message& message);

/// Whether a key was held when the message that has been taken last was sent.  Main thread.
bool KeyDown(Key key);

/// Waits until there is a message.  Main thread.
void WaitMessage();

}  // namespace kwo::platform
