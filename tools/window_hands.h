#pragma once

#include <string>
#include <vector>

#include "platform/headless/headless.h"

/// A user before the headless window: hands with a sense of time, and eyes.  On a thread of its own
/// beside the program's main thread.
namespace kwo::tools {

/// Places are of the window.
class Hands {
 public:
  using Button = headless::Button;

  void Wait(int milliseconds) const;
  void Move(int x, int y) const;
  void Down(Button button = Button::kLeft) const;
  void Up(Button button = Button::kLeft) const;
  void Press(int x, int y, Button button = Button::kLeft) const;
  void DoublePress(int x, int y) const;
  /// In ten even steps.
  void Drag(int fromX, int fromY, int toX, int toY, Button button = Button::kLeft) const;
  void Drop(const std::vector<std::string>& paths, bool shift = false) const;
  /// Presses, and chooses an item of the menu that comes.
  void Choose(int x, int y, const std::string& text) const;
};

/// Writes what the window shows as a PNG file with an alpha channel; false if that fails.
bool SaveWindow(const std::string& path);

}  // namespace kwo::tools
