#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "platform/messages.h"

/// The program's one window: top-level, borderless, of any shape.  All sizes and positions are in
/// the window's own pixels, also where the screen is so dense that each is drawn as a square of
/// several.  Main thread, but for what says otherwise.
namespace kwo::platform {

struct Point {
  int x, y;
  bool operator==(const Point&) const = default;
};
struct Size {
  int width, height;
};
struct Rectangle {
  int x, y, width, height;
  bool operator==(const Rectangle&) const = default;
  int Bottom() const { return y + height; }
  bool Empty() const { return width < 1 || height < 1; }
  bool Contains(Point point) const {
    return x <= point.x && point.x < x + width && y <= point.y && point.y < y + height;
  }
  /// What both have in common; all zero for nothing.
  Rectangle Intersected(const Rectangle& other) const {
    const auto end = [](int start, int size) { return std::int64_t{start} + size; };
    const int left = std::max(x, other.x), top = std::max(y, other.y);
    const std::int64_t right = std::min(end(x, width), end(other.x, other.width));
    const std::int64_t bottom = std::min(end(y, height), end(other.y, other.height));
    if (right <= left || bottom <= top) return {0, 0, 0, 0};
    return {left, top, static_cast<int>(right - left), static_cast<int>(bottom - top)};
  }
};

/// A place of the window as the mouse's messages carry it, and back.
constexpr int PackPlace(Point place) {
  constexpr int kMost = 0x7FFF;
  return std::clamp(place.x, 0, kMost) | std::clamp(place.y, 0, kMost) << 16;
}
constexpr Point UnpackPlace(int lParam) {
  return {lParam & 0xFFFF, static_cast<int>(static_cast<unsigned>(lParam) >> 16)};
}

/// Gets every message of the window.  `ShowWindow` calls it before it returns, with what its change
/// means; all else comes from `DispatchMessage`.
using WindowProcedure = void (*)(void* owner, const Message& message);

/// Makes the window, not yet shown; false where there is no desktop to show it on.
bool CreateMainWindow(WindowProcedure procedure, void* owner);
/// Also undoes capture, timers and a hidden pointer.
void DestroyMainWindow();
bool MainWindowExists();
/// Gives a message from the queue to the window's procedure.
void DispatchMessage(const Message& message);

/// Place and size on the screen.
Rectangle WindowRectangle();
void MoveWindow(Point place);
void ResizeWindow(Size size);
/// The window is the union of `runs`; with none it is its whole rectangle.
void SetWindowShape(const std::vector<Rectangle>& runs);
void SetTopmost(bool topmost);

enum class WindowShow { kHide, kShow, kMinimise, kRestore };
void ShowWindow(WindowShow show);
bool WindowMinimised();
/// Puts the window before all others and makes it active.
void ActivateWindow();

/// Any thread.
void SetCaption(const char* text);

/// Copies a rectangle of 24-bit, bottom-up pixels of the window's size to the window's picture. Any
/// thread; never waits.  The rectangle lies within the picture, its rows count from the top.
struct Picture {
  const std::uint8_t* bits;
  int stride, width, height;
};
void Present(const Picture& picture, const Rectangle& area);
/// Brings what was presented to the screen.  Any thread; speaks with the display, and never waits
/// for the main thread.
void ShowPresented();

/// While captured, the mouse is followed outside the window too, as long as a button is held.
void SetCapture();
void ReleaseCapture();
/// Counts, as the hiding and showing of nested callers must.
void ShowPointer(bool show);
Point PointerPosition();  ///< on the screen
void SetPointerPosition(Point place);
/// All screens with their places on the desktop, at least one: the first is the main one.  A last
/// pixel that lies on a screen in part counts.
std::vector<Rectangle> Screens();
/// Whether the screens or their density are others than in the last run, and notes them for the
/// next: to be asked once, at the start.  While the program runs, kMessageDisplayChange tells.
bool ScreensAreNew();

/// Sends kMessageTimer every `milliseconds` until it is killed.
void SetTimer(int id, int milliseconds);
void KillTimer(int id);

/// A single line of text that takes the user's typing while it has the focus, and is never seen;
/// assistive programs know it by `name`.
/// It sends kMessageCommand with kEditChanged or kEditLostFocus in the high word.
void CreateInputEdit(const char* name);
/// Also puts the caret behind the text.
void SetEditText(const char* text);
/// Copies at most `size` - 1 bytes, and closes them by NUL.
void GetEditText(char* text, int size);
void FocusEdit();
void FocusWindow();
bool EditHasFocus();
/// Bytes of the text before the caret.  Any thread; never waits.
int EditCaret();

}  // namespace kwo::platform
