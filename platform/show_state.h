#pragma once

#include "platform/window.h"

namespace kwo::platform {

/// Whether the window is there for the user to see, and what a call of `ShowWindow` changes in
/// that: both backends tell the logic of the same changes.
struct ShowState {
  struct Change {
    bool shown, hidden, minimised, restored;
  };

  Change Apply(WindowShow show) {
    Change change{};
    if (show == WindowShow::kHide) {
      change.hidden = visible;
      visible = false;
      return change;
    }
    change.shown = !visible;
    visible = true;
    change.minimised = show == WindowShow::kMinimise && !minimised;
    change.restored = show == WindowShow::kRestore && minimised;
    if (change.minimised || change.restored) minimised = change.minimised;
    return change;
  }

  bool OnScreen() const { return visible && !minimised; }

  bool visible = false;
  bool minimised = false;
};

/// Tells the window's procedure of a change, by the messages that it means.
inline void SendChange(const ShowState::Change& change, WindowProcedure procedure, void* owner) {
  if (!procedure) return;
  if (change.shown) procedure(owner, {kMessageShowWindow, 1, 0});
  if (change.hidden) procedure(owner, {kMessageShowWindow, 0, 0});
  if (change.minimised) procedure(owner, {kMessageSize, kSizeMinimised, 0});
  if (change.restored) procedure(owner, {kMessageSize, kSizeRestored, 0});
}

}  // namespace kwo::platform
