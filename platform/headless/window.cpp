#include "platform/window.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "base/shared.h"
#include "platform/headless/headless.h"
#include "platform/headless/scheduler.h"
#include "platform/headless/timers.h"
#include "platform/show_state.h"

namespace kwo {
namespace {

using platform::Message;
using platform::Point;
using platform::Rectangle;

constexpr std::int64_t kDoublePressMicroseconds = 500'000;
constexpr int kDoublePressSlop = 4;
constexpr int kBytesPerPixel = 4;

struct Timer {
  int milliseconds;
  std::int64_t due;
};

struct Press {
  headless::Button button;
  Point place;
  std::int64_t time;
};

// The desktop with the one window on it.  Guarded by `lock`, which is never held over a call to
// the logic.
struct Desktop {
  platform::WindowProcedure procedure = nullptr;
  void* owner = nullptr;
  headless::WindowState window{};
  platform::ShowState show;
  std::vector<Rectangle> shape;
  std::vector<std::uint8_t> presented, pixels;  // the latter on the screen
  std::map<int, Timer> timers;
  std::vector<Rectangle> screens{{0, 0, 1280, 800}};
  Point pointer{640, 400};
  int pointerHides = 0;
  int buttonsHeld = 0;
  Press lastPress{headless::Button::kLeft, {0, 0}, INT64_MIN / 2};
  bool active = false;
  bool possible = true;
  std::string edit;
  int caret = 0;
  bool editExists = false;
};

std::mutex lock;
Desktop desktop;

bool InShape(Point local) {
  const Rectangle whole{0, 0, desktop.window.place.width, desktop.window.place.height};
  if (desktop.shape.empty()) return whole.Contains(local);
  return std::any_of(desktop.shape.begin(), desktop.shape.end(),
                     [local](const Rectangle& run) { return run.Contains(local); });
}

bool OnScreen() {
  return desktop.window.exists && desktop.show.OnScreen();
}

Point LocalPointer() {
  return {desktop.pointer.x - desktop.window.place.x, desktop.pointer.y - desktop.window.place.y};
}

// The place itself, or the nearest on the main screen.
Point OnAScreen(Point place) {
  for (const Rectangle& screen : desktop.screens)
    if (screen.Contains(place)) return place;
  const Rectangle& first = desktop.screens[0];
  return {std::clamp(place.x, first.x, first.x + first.width - 1),
          std::clamp(place.y, first.y, first.y + first.height - 1)};
}

// The composing thread may be at work on the next frame.
KWO_MAY_TEAR void CopyPixels(const std::uint8_t* from, std::uint8_t* to, int count) {
  for (int x = 0; x < count; ++x, from += 3, to += kBytesPerPixel) {
    to[0] = from[2];
    to[1] = from[1];
    to[2] = from[0];
    to[3] = 255;
  }
}

void PostEditNotice(int notice) {
  platform::PostMessage({platform::kMessageCommand, notice << 16, 0});
}

void GiveFocusToEdit(bool focused) {
  const bool lost = desktop.window.editFocused && !focused;
  desktop.window.editFocused = focused && desktop.editExists;
  if (lost) PostEditNotice(platform::kEditLostFocus);
}

}  // namespace

namespace platform {

bool CreateMainWindow(WindowProcedure procedure, void* owner) {
  std::lock_guard guard(lock);
  if (!desktop.possible) return false;
  desktop.procedure = procedure;
  desktop.owner = owner;
  desktop.window = {};
  desktop.show = {};
  desktop.window.exists = true;
  desktop.shape.clear();
  desktop.presented.clear();
  desktop.pixels.clear();
  desktop.timers.clear();
  desktop.pointerHides = 0;
  desktop.edit.clear();
  desktop.caret = 0;
  desktop.editExists = false;
  desktop.active = true;
  return true;
}

void DestroyMainWindow() {
  std::lock_guard guard(lock);
  desktop.procedure = nullptr;
  desktop.window.exists = desktop.window.captured = false;
  desktop.show = {};
  desktop.timers.clear();
  desktop.pointerHides = 0;
}

bool MainWindowExists() {
  std::lock_guard guard(lock);
  return desktop.window.exists;
}

void DispatchMessage(const Message& message) {
  platform::WindowProcedure procedure;
  void* owner;
  {
    std::lock_guard guard(lock);
    procedure = desktop.procedure;
    owner = desktop.owner;
  }
  if (procedure) procedure(owner, message);
}

Rectangle WindowRectangle() {
  std::lock_guard guard(lock);
  return desktop.window.place;
}

void MoveWindow(Point place) {
  std::lock_guard guard(lock);
  desktop.window.place.x = place.x;
  desktop.window.place.y = place.y;
}

void ResizeWindow(Size size) {
  std::lock_guard guard(lock);
  Rectangle& place = desktop.window.place;
  if (place.width == size.width && place.height == size.height) return;
  place.width = size.width;
  place.height = size.height;
  desktop.presented.assign(
      static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * kBytesPerPixel,
      0);
  desktop.pixels = desktop.presented;
}

void SetWindowShape(const std::vector<Rectangle>& runs) {
  std::lock_guard guard(lock);
  desktop.shape = runs;
}

void SetTopmost(bool topmost) {
  std::lock_guard guard(lock);
  desktop.window.topmost = topmost;
}

void ShowWindow(WindowShow show) {
  ShowState::Change change;
  WindowProcedure procedure;
  void* owner;
  {
    std::lock_guard guard(lock);
    if (!desktop.window.exists) return;
    change = desktop.show.Apply(show);
    procedure = desktop.procedure;
    owner = desktop.owner;
    if (!desktop.show.OnScreen()) GiveFocusToEdit(false);
    if (change.shown || change.restored) PostMessage({kMessagePaint, 0, 0});
  }
  SendChange(change, procedure, owner);
}

bool WindowMinimised() {
  std::lock_guard guard(lock);
  return desktop.show.minimised;
}

void ActivateWindow() {
  std::lock_guard guard(lock);
  desktop.active = true;
}

void SetCaption(const char* text) {
  std::lock_guard guard(lock);
  desktop.window.caption = text;
}

void Present(const Picture& picture, const Rectangle& area) {
  std::lock_guard guard(lock);
  const Rectangle& place = desktop.window.place;
  if (!desktop.window.exists || picture.width != place.width || picture.height != place.height)
    return;
  for (int y = area.y; y < area.y + area.height; ++y) {
    const std::ptrdiff_t row = picture.height - 1 - y;
    CopyPixels(
        picture.bits + row * picture.stride + 3 * area.x,
        desktop.presented.data() + (std::ptrdiff_t{y} * place.width + area.x) * kBytesPerPixel,
        area.width);
  }
  ++desktop.window.presented;
  desktop.window.lastPresented = area;
}

void ShowPresented() {
  std::lock_guard guard(lock);
  desktop.pixels = desktop.presented;
}

void SetCapture() {
  std::lock_guard guard(lock);
  desktop.window.captured = true;
}

void ReleaseCapture() {
  std::lock_guard guard(lock);
  desktop.window.captured = false;
}

void ShowPointer(bool show) {
  std::lock_guard guard(lock);
  desktop.pointerHides = std::max(0, desktop.pointerHides + (show ? -1 : 1));
}

Point PointerPosition() {
  std::lock_guard guard(lock);
  return desktop.pointer;
}

void SetPointerPosition(Point place) {
  headless::MovePointer(place);
}

std::vector<Rectangle> Screens() {
  std::lock_guard guard(lock);
  return desktop.screens;
}

void SetTimer(int id, int milliseconds) {
  std::lock_guard guard(lock);
  desktop.timers[id] = {milliseconds, headless::Now() + std::int64_t{1000} * milliseconds};
}

void KillTimer(int id) {
  std::lock_guard guard(lock);
  desktop.timers.erase(id);
}

void CreateInputEdit(const char*) {
  std::lock_guard guard(lock);
  desktop.editExists = true;
}

void SetEditText(const char* text) {
  std::lock_guard guard(lock);
  desktop.edit = text;
  desktop.caret = static_cast<int>(desktop.edit.size());
  PostEditNotice(kEditChanged);
}

void GetEditText(char* text, int size) {
  std::lock_guard guard(lock);
  const auto length = desktop.edit.copy(text, static_cast<std::size_t>(size - 1));
  text[length] = 0;
}

void FocusEdit() {
  std::lock_guard guard(lock);
  GiveFocusToEdit(true);
}

void FocusWindow() {
  std::lock_guard guard(lock);
  GiveFocusToEdit(false);
}

bool EditHasFocus() {
  std::lock_guard guard(lock);
  return desktop.window.editFocused;
}

int EditCaret() {
  std::lock_guard guard(lock);
  return desktop.caret;
}

}  // namespace platform

namespace headless {

std::int64_t NextTimer() {
  std::lock_guard guard(lock);
  std::int64_t due = kForever;
  for (const auto& [id, timer] : desktop.timers) due = std::min(due, timer.due);
  return due;
}

void CollectTimers(std::vector<int>& ids) {
  const std::int64_t now = Now();
  std::lock_guard guard(lock);
  for (auto& [id, timer] : desktop.timers) {
    if (timer.due > now) continue;
    timer.due = now + std::int64_t{1000} * timer.milliseconds;
    ids.push_back(id);
  }
}

void MovePointer(Point place) {
  std::lock_guard guard(lock);
  desktop.pointer = OnAScreen(place);
  if (!OnScreen()) return;
  const bool followed = desktop.window.captured && desktop.buttonsHeld > 0;
  if (followed || InShape(LocalPointer()))
    platform::PostMessage({platform::kMessageMouseMove, 0, platform::PackPlace(LocalPointer())});
}

void PressButton(Button button) {
  const std::int64_t now = Now();
  std::lock_guard guard(lock);
  // The window that has taken one button gets the others, too.
  const bool grabbed = desktop.window.captured && desktop.buttonsHeld > 0;
  ++desktop.buttonsHeld;
  if (!OnScreen() || !(grabbed || InShape(LocalPointer()))) {
    if (desktop.active) {
      desktop.active = false;
      GiveFocusToEdit(false);
      platform::PostMessage({platform::kMessageActivate, 0, 0});
    }
    return;
  }
  desktop.active = true;
  Press& last = desktop.lastPress;
  const bool again = last.button == button && now - last.time <= kDoublePressMicroseconds &&
                     std::abs(last.place.x - desktop.pointer.x) <= kDoublePressSlop &&
                     std::abs(last.place.y - desktop.pointer.y) <= kDoublePressSlop;
  // A third quick press begins anew.
  last = {button, desktop.pointer, again ? INT64_MIN / 2 : now};
  const int first =
      button == Button::kLeft ? platform::kMessageLeftDown : platform::kMessageRightDown;
  const int second =
      button == Button::kLeft ? platform::kMessageLeftDouble : platform::kMessageRightDouble;
  platform::PostMessage(
      {again ? second : first, 0, platform::PackPlace(LocalPointer()), HeldKeys()});
}

void ReleaseButton(Button button) {
  std::lock_guard guard(lock);
  desktop.buttonsHeld = std::max(0, desktop.buttonsHeld - 1);
  if (!OnScreen()) return;
  if (!desktop.window.captured && !InShape(LocalPointer())) return;
  platform::PostMessage(
      {button == Button::kLeft ? platform::kMessageLeftUp : platform::kMessageRightUp, 0,
       platform::PackPlace(LocalPointer())});
}

void TurnWheel(int way) {
  std::lock_guard guard(lock);
  if (OnScreen() && InShape(LocalPointer()))
    platform::PostMessage({platform::kMessageWheel, way, platform::PackPlace(LocalPointer())});
}

void TypeText(const std::string& text) {
  std::lock_guard guard(lock);
  if (!desktop.window.editFocused) return;
  for (char letter : text) {
    if (letter != '\b') {
      desktop.edit.insert(static_cast<std::size_t>(desktop.caret++), 1, letter);
    } else if (desktop.caret > 0) {
      desktop.edit.erase(static_cast<std::size_t>(--desktop.caret), 1);
    }
    PostEditNotice(platform::kEditChanged);
  }
}

void MoveCaret(int position) {
  std::lock_guard guard(lock);
  desktop.caret = std::clamp(position, 0, static_cast<int>(desktop.edit.size()));
}

void SetWindowActive(bool active) {
  std::lock_guard guard(lock);
  if (desktop.active == active) return;
  desktop.active = active;
  if (!active) GiveFocusToEdit(false);
  platform::PostMessage({platform::kMessageActivate, active, 0});
}

void MinimiseByUser() {
  std::lock_guard guard(lock);
  if (!OnScreen()) return;
  desktop.show.minimised = true;
  platform::PostMessage({platform::kMessageSize, platform::kSizeMinimised, 0});
}

void RestoreByUser() {
  std::lock_guard guard(lock);
  if (!desktop.show.visible || !desktop.show.minimised) return;
  desktop.show.minimised = false;
  platform::PostMessage({platform::kMessageSize, platform::kSizeRestored, 0});
}

void CloseByUser() {
  platform::PostMessage({platform::kMessageSysCommand, platform::kSystemClose, 0});
}

WindowState Window() {
  std::lock_guard guard(lock);
  WindowState state = desktop.window;
  state.visible = desktop.show.visible;
  state.minimised = desktop.show.minimised;
  state.pointerShown = desktop.pointerHides == 0;
  return state;
}

std::vector<std::uint8_t> WindowPixels() {
  std::lock_guard guard(lock);
  std::vector<std::uint8_t> pixels = desktop.pixels;
  const int width = desktop.window.place.width;
  for (std::size_t i = 0; i * kBytesPerPixel < pixels.size(); ++i) {
    const Point place{static_cast<int>(i) % width, static_cast<int>(i) / width};
    if (!InShape(place)) pixels[i * kBytesPerPixel + 3] = 0;
  }
  return pixels;
}

std::vector<Rectangle> WindowShape() {
  std::lock_guard guard(lock);
  return desktop.shape;
}

Point PointerPlace() {
  return platform::PointerPosition();
}

void SetScreenSize(platform::Size size) {
  SetScreens({{0, 0, size.width, size.height}});
}

void SetScreens(const std::vector<Rectangle>& screens) {
  std::lock_guard guard(lock);
  desktop.screens = screens;
  if (desktop.window.exists) platform::PostMessage({platform::kMessageDisplayChange, 0, 0});
}

void SetWindowPossible(bool possible) {
  std::lock_guard guard(lock);
  desktop.possible = possible;
}

}  // namespace headless
}  // namespace kwo
