#include "tools/window_hands.h"

#include "platform/clock.h"
#include "tools/png_writer.h"

namespace kwo::tools {
namespace {

// Long enough for the main thread to take the message, and no double press.
constexpr int kTouchMilliseconds = 30;
constexpr int kRestMilliseconds = 600;
constexpr int kDragSteps = 10;

platform::Point OnScreen(int x, int y) {
  const platform::Rectangle place = headless::Window().place;
  return {place.x + x, place.y + y};
}

}  // namespace

void Hands::Wait(int milliseconds) const {
  platform::Sleep(milliseconds);
}

void Hands::Move(int x, int y) const {
  headless::MovePointer(OnScreen(x, y));
  Wait(kTouchMilliseconds);
}

void Hands::Down(Button button) const {
  headless::PressButton(button);
  Wait(kTouchMilliseconds);
}

void Hands::Up(Button button) const {
  headless::ReleaseButton(button);
  Wait(kTouchMilliseconds);
}

void Hands::Press(int x, int y, Button button) const {
  Move(x, y);
  Down(button);
  Up(button);
  Wait(kRestMilliseconds);
}

void Hands::DoublePress(int x, int y) const {
  Move(x, y);
  for (int i = 0; i < 2; ++i) {
    Down();
    Up();
  }
  Wait(kRestMilliseconds);
}

void Hands::Drag(int fromX, int fromY, int toX, int toY, Button button) const {
  Move(fromX, fromY);
  Down(button);
  // Where the window follows, its place at the press is what the way is measured from.
  const platform::Rectangle start = headless::Window().place;
  for (int i = 1; i <= kDragSteps; ++i) {
    headless::MovePointer({start.x + fromX + (toX - fromX) * i / kDragSteps,
                           start.y + fromY + (toY - fromY) * i / kDragSteps});
    Wait(kTouchMilliseconds);
  }
  Up(button);
  Wait(kRestMilliseconds);
}

void Hands::Drop(const std::vector<std::string>& paths, bool shift) const {
  headless::SetKey(platform::Key::kShift, shift);
  headless::DropFiles(paths);
  Wait(kRestMilliseconds);
  headless::SetKey(platform::Key::kShift, false);
}

void Hands::Choose(int x, int y, const std::string& text) const {
  headless::AnswerMenu(text);
  Press(x, y);
}

bool SaveWindow(const std::string& path) {
  const platform::Rectangle place = headless::Window().place;
  return WritePng(path, place.width, place.height, headless::WindowPixels());
}

}  // namespace kwo::tools
