#pragma once

#include <string>
#include <vector>

#include "platform/window.h"

/// What assistive programs, as a screen reader, read of the window; the window's tool tips say the
/// same names.  What they ask of a control comes as kMessageDesktop.  Main thread.
namespace kwo::platform {

enum class Role { kButton, kCheckBox, kSlider, kList, kListItem, kLabel, kPicture };

/// A control on the screen, in words.  Texts are bytes of no told encoding.
struct Control {
  int id = 0;  ///< its own for good; a list item's is that of its row
  Role role = Role::kButton;
  std::string name;
  Rectangle place{0, 0, 0, 0};  ///< at rest, within the window
  bool labelled = false;        ///< the name stands on it or beside it
  bool pressed = false;         ///< of a button that stays down
  bool checked = false;
  bool selected = false, current = false;  ///< of a list item; of the one that is played
  /// Nothing to be set where `most` is not above `least`.
  double value = 0, least = 0, most = 0, step = 1;
  bool busy = false;  ///< changes all the time: told of only while a client has the focus on it

  bool HasValue() const { return most > least; }
  bool operator==(const Control&) const = default;
};

/// All of them; the items of a list stand behind it.
struct ControlList {
  std::vector<Control> controls;
  bool atRest = true;  ///< nothing is on its way in or out

  /// Null where it is not on the screen.
  const Control* Find(int id) const;
  /// The first that lies under a point of the window, or null.
  const Control* At(Point place) const;
  /// The name of what lies there and bears no label; empty for none.
  std::string Tip(Point place) const;
};

/// Offers the controls.  `list` is asked only when somebody wants to know, also while the main
/// thread sleeps.
void OpenAccessibility(ControlList (*list)());
void CloseAccessibility();
/// Something on the screen may have changed.  Nothing is done where nobody listens.
void ControlsChanged();

}  // namespace kwo::platform
