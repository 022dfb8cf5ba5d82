#pragma once

#include "panels/application_state.h"
#include "panels/widget_indices.h"
#include "platform/accessibility.h"

/// What the panels' builders and handlers share.  The SkinHost exists.
namespace kwo {

/// Events that the window's messages are turned into.  The mouse's own messages are events by the
/// same numbers: platform::kMessageLeftDown and its kin.
enum EventNumber : unsigned {
  EVENT_BUTTON = 10,
  EVENT_CHECK = 20,
  EVENT_VERTICAL_TOP = 30,
  EVENT_VERTICAL_BOTTOM = 31,
  EVENT_VERTICAL_THUMB = 32,
  EVENT_HORIZONTAL_LEFT = 40,
  EVENT_HORIZONTAL_RIGHT = 41,
  EVENT_HORIZONTAL_THUMB = 42,
  EVENT_IMAGE = 100,
};

/// The measures that every page's layout is reckoned from, in pixels.  The bar is built first:
/// until then its band has no height.
struct Layout {
  Layout();
  int width, height;  ///< what the window leaves of the interface
  int fontHeight;
  int margin;
  int bandHeight;  ///< of the top bar's group box, along the lower edge
  /// Height of the page's part above the margin over the band.
  int Bottom() const { return height - bandHeight - margin; }
};

constexpr int TileOf(int page) {
  return WIDGET_TILE_MAIN + page;
}
constexpr int PageButton(int page) {
  return WIDGET_PAGE_MAIN + page;
}

/// The widget at an index.  Only for widgets that their builder has made, or where null is tested.
Widget* Find(int index);
WidgetGroup& Group(int index);

/// The image of a page's tile or group box.
Widget* MakeImage(int index, const char* fileName, int group);
/// A group box that comes in from the right along the upper edge, and leaves to the left.
Widget* MakeGroupBox(int index, const char* fileName, int effect);
/// A button that is its whole picture, in a strip at (x, 0), with its press nudge; gives its width.
int MakeStripButton(int index, const char* fileName, int group, int x);
/// Places a strip of buttons right of the interface, to come in from the left and end at `restX`.
void PlaceStrip(int group, int layer, int width, int height, int restX);
/// Puts the button of a page that goes back to rest: a stopped pulse leaves its last brightness.
void PutBack(int index);

/// The pulse of a page's or sub-page's button while its page is in front.
void SetPulse(Widget& button, int reach, float step);
/// Pulses the button of a page that enters, and stops that of one that leaves.
void PulsePageButton(Page page, int program);

/// Runs a program in the slot of entrances and exits.
void Move(int index, int program);
void MoveGroup(int index, int program);

/// The pointer's place in the window, and the moving of it.
platform::Point ClientPointer();
void SetClientPointer(platform::Point place);

/// Shows text in the labels' colours.
void Label(int index, const char* text);

enum class Named { kByLabel, kByTip };

/// Lists a widget by its kind, with a check box's state, if it is in view or on its way in; else
/// gives null.  The result holds until the next one is listed.
platform::Control* ListWidget(platform::ControlList& list, int index, std::string name,
                              Named named);

}  // namespace kwo
