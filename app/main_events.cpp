#include "app/main_events.h"

#include <cstdlib>

#include "app/desktop_requests.h"
#include "app/running_copy.h"
#include "app/shell_services.h"
#include "app/window_place.h"
#include "panels/equaliser_curve.h"
#include "panels/main_page.h"
#include "panels/menus.h"
#include "panels/pages.h"
#include "panels/panel_tools.h"
#include "panels/playlist_page.h"
#include "panels/top_bar.h"
#include "panels/window_page.h"
#include "platform/shell.h"
#include "playlist/tag_reader.h"
#include "toolkit/slider.h"

namespace kwo {
namespace {

using platform::Point;
using platform::Rectangle;

enum Press : int { PRESS_NONE = 0, PRESS_HELD = 1, PRESS_CAP = 2 };

int PressState;
Widget* PressedWidget;
int PressX, PressY;
bool pointerHidden;  // by the drag of a thumb
int wheelWay;        // turned since the last whole notch
Point CursorNow, CursorBefore;
// The window has been brought up away from the pointer, which has not been in it since.
bool awaitsPointer;

Point WidgetPlace(const Widget& widget) {
  const WidgetGroup& group = Group(widget.group);
  return {group.absX + widget.x, group.absY + widget.y};
}

void DispatchLocal(int message, Widget& widget, Point place) {
  const Point corner = WidgetPlace(widget);
  DispatchEvent(static_cast<unsigned>(message), &widget, static_cast<float>(place.x - corner.x),
                static_cast<float>(place.y - corner.y));
}

// Once for each drag: a second button that is pressed in the middle of one begins another.
void HidePointer(bool hide) {
  if (pointerHidden == hide) return;
  pointerHidden = hide;
  platform::ShowPointer(!hide);
}

// A slider's way, in whichever direction it lies.
struct SliderView {
  explicit SliderView(const Widget& slider)
      : upright(slider.kind == VERTICAL_SLIDER),
        cell(CellSize(slider)),
        length(upright ? slider.height : slider.width),
        start(Along(WidgetPlace(slider))) {}
  int Along(Point place) const { return upright ? place.y : place.x; }
  // A point at `along` on the slider's axis, and at `place` on the other.
  Point At(int along, Point place) const {
    return upright ? Point{place.x, along} : Point{along, place.y};
  }
  unsigned Event(EventNumber horizontal) const {
    return upright ? horizontal - EVENT_HORIZONTAL_LEFT + EVENT_VERTICAL_TOP
                   : static_cast<unsigned>(horizontal);
  }
  bool upright;
  int cell, length, start;
};

void MoveThumb(Widget& slider, const SliderView& view, int position) {
  slider.heldPart = PART_THUMB;
  const float value = slider.ApplyValue(PART_THUMB, ThumbValue(slider, position));
  DispatchEvent(view.Event(EVENT_HORIZONTAL_THUMB), &slider, value, 0);
}

void PressCap(Widget& slider, const SliderView& view, SliderPart part) {
  slider.heldPart = part;
  slider.ApplyValue(static_cast<float>(part), kSamePosition);
  DispatchEvent(view.Event(part == PART_FIRST_CAP ? EVENT_HORIZONTAL_LEFT : EVENT_HORIZONTAL_RIGHT),
                &slider, 0, 0);
}

// Shows a slider that is not held any more.
void Rest(Widget& slider) {
  slider.heldPart = PART_REST;
  slider.ApplyValue(PART_REST, kSamePosition);
}

void LetSliderGo() {
  if (!PressedWidget || !PressedWidget->IsSlider()) return;
  Rest(*PressedWidget);
  if (PressState == PRESS_HELD) platform::ReleaseCapture();
}

// What the pages drag by themselves.
void EndPageDrags() {
  CancelSeek();
  EndCurveDrag();
}

// There is no release to come for what is held: the window has gone from under the hand, or another
// button has been pressed on nothing.
void LetGo() {
  LetSliderGo();
  if (!TheSkinHost->WindowDragged()) platform::ReleaseCapture();
  PressState = PRESS_NONE;
  PressedWidget = nullptr;
  HidePointer(false);
  EndPageDrags();
}

void PressSlider(Widget& slider, Point place) {
  const SliderView view(slider);
  const int position = view.Along(place) - view.start;
  const SliderPart part = HitSlider(slider, position);
  if (part == PART_THUMB) {
    HidePointer(true);
    platform::SetCapture();
    MoveThumb(slider, view, position);
  } else {
    PressCap(slider, view, part);
    PressState = PRESS_CAP;
  }
}

void PressByKind(Widget& widget, int message) {
  switch (widget.kind) {
    case BUTTON_WIDGET:
      widget.ApplyValue(0, 0);
      DispatchEvent(EVENT_BUTTON, &widget, static_cast<float>(message), 0);
      break;
    case CHECK_WIDGET:
      DispatchEvent(EVENT_CHECK, &widget, widget.ApplyValue(CHECK_FLIP, 1.0f), 0);
      break;
    default:
      DispatchEvent(EVENT_IMAGE, &widget, 0, 0);
      break;
  }
}

void PressRow(Widget& row) {
  const Point place = WidgetPlace(row);
  DispatchLocal(platform::kMessageLeftDown, row, place);
  PressByKind(row, platform::kMessageLeftDown);
  DispatchLocal(platform::kMessageLeftUp, row, place);
  if (!platform::KeyDown(platform::Key::kControl))
    DispatchLocal(platform::kMessageLeftDouble, row, place);
}

void OnPress(int message, Point place) {
  HidePointer(false);
  LetSliderGo();
  PressedWidget = TheSkinHost->HitTest(place.x, place.y);
  PressX = place.x;
  PressY = place.y;
  if (!PressedWidget) {
    if (PressState == PRESS_HELD) LetGo();
    return;
  }
  Widget& widget = *PressedWidget;
  const int page = CurrentPage, subPage = MixerSubPage;
  PressState = PRESS_HELD;
  DispatchLocal(message, widget, place);
  if (widget.IsSlider()) {
    PressSlider(widget, place);
  } else {
    PressByKind(widget, message);
  }
  if (CurrentPage != page || MixerSubPage != subPage) {
    EndPageDrags();
    platform::ReleaseCapture();
  }
}

void DragThumb(Widget& slider, Point place) {
  const SliderView view(slider);
  int position = view.Along(place) - view.start;
  if (position < view.cell) {
    position = view.cell;
    SetClientPointer(view.At(position + view.start, place));
  } else if (position >= view.length + view.cell) {
    position = view.length + view.cell - 1;
    SetClientPointer(view.At(view.length - view.cell + view.start, place));
  }
  MoveThumb(slider, view, position);
}

void OnMove(Point place) {
  if (PressState != PRESS_HELD || !PressedWidget) return;
  if (PressedWidget->IsSlider()) {
    DragThumb(*PressedWidget, place);
  } else {
    DispatchLocal(platform::kMessageMouseMove, *PressedWidget, place);
  }
}

void OnRelease(int message, Point place) {
  if (PressState == PRESS_HELD && PressedWidget && !PressedWidget->IsSlider()) {
    DispatchLocal(message, *PressedWidget, place);
    PressState = PRESS_NONE;
    PressedWidget = nullptr;
  }
  if (PressState == PRESS_NONE || !PressedWidget || !PressedWidget->IsSlider()) return;
  Rest(*PressedWidget);
  if (PressState == PRESS_CAP) return;
  const SliderView view(*PressedWidget);
  // The pointer comes back beside the slider where it was taken, and along it where it was left.
  SetClientPointer(view.At(view.Along(place), {PressX, PressY}));
  PressState = PRESS_NONE;
  PressedWidget = nullptr;
  platform::ReleaseCapture();
  HidePointer(false);
}

bool AnythingHeld() {
  return PressState == PRESS_HELD || (PressedWidget && PressedWidget->heldPart != PART_REST);
}

// A notch is so many presses and releases of a cap.
void TurnNotch(Point place, bool away) {
  constexpr int kSliderPresses = 5, kRowPresses = 3;
  Widget* widget = TheSkinHost->HitTest(place.x, place.y);
  if (!widget) return;
  const bool row = RowOf(widget) >= 0;
  Widget& slider = row ? *Find(WIDGET_SCROLL_BAR) : *widget;
  if (!slider.IsSlider()) return;
  const SliderView view(slider);
  const bool first = view.upright == away;  // upwards is more volume, and an earlier song
  for (int press = view.upright ? kRowPresses : kSliderPresses; press > 0; --press) {
    PressCap(slider, view, first ? PART_FIRST_CAP : PART_SECOND_CAP);
    Rest(slider);
  }
}

void OnWheel(int way, Point place) {
  if (way == 0) return;  // sideways
  if (AnythingHeld() || (way > 0) != (wheelWay > 0)) wheelWay = 0;
  if (AnythingHeld()) return;
  // Fine wheels take many steps to a notch.
  wheelWay += way;
  for (; std::abs(wheelWay) >= platform::kWheelNotch;
       wheelWay -= way > 0 ? platform::kWheelNotch : -platform::kWheelNotch)
    TurnNotch(place, way > 0);
}

void OnDoublePress(SkinHost& host, int message, int lParam) {
  const Point place = platform::UnpackPlace(lParam);
  Widget* widget = host.HitTest(place.x, place.y);
  if (!widget) return;
  if (RowOf(widget) >= 0) {
    DispatchLocal(message, *widget, place);
    return;
  }
  const bool left = message == platform::kMessageLeftDouble;
  MainCallback(host, left ? platform::kMessageLeftDown : platform::kMessageRightDown, 0, lParam);
}

void OnDrop(int drop) {
  // One that has waited for the end of a walk, which the program's end has cut short.
  if (platform::EndAsked()) return;
  TakeSongs(platform::TakeDroppedFiles(drop), platform::KeyDown(platform::Key::kShift));
}

void Slide(bool in) {
  if (in) {
    ShowTopBar(0);
    ShowCurrentPage(0);
  } else {
    HideTopBar(0);
    HideCurrentPage(0);
  }
}

Point CornerOf(const Rectangle& screen, const Rectangle& window, bool right, bool bottom) {
  return {screen.x + (right ? screen.width - window.width : 0),
          screen.y + (bottom ? screen.height - window.height : 0)};
}

// Where the pointer rests in one of the screen's corner pixels, the window's place in that corner.
bool CornerAt(Point pointer, Point& place) {
  const Rectangle screen = FirstScreen(), window = platform::WindowRectangle();
  const int x = pointer.x - screen.x, y = pointer.y - screen.y;
  const bool right = x == screen.width - 1, bottom = y == screen.height - 1;
  if ((x != 0 && !right) || (y != 0 && !bottom)) return false;
  place = CornerOf(screen, window, right, bottom);
  return true;
}

void OnAutoHideTimer(const SkinHost& host) {
  CursorNow = platform::PointerPosition();
  const Rectangle window = platform::WindowRectangle();
  Point corner;
  if (window.Contains(CursorNow)) awaitsPointer = false;
  if (host.active) {
    if (!awaitsPointer && !window.Contains(CursorNow) && !window.Contains(CursorBefore))
      platform::ShowWindow(platform::WindowShow::kHide);
  } else if (CursorNow == CursorBefore && CornerAt(CursorNow, corner)) {
    platform::MoveWindow(corner);
    platform::ShowWindow(platform::WindowShow::kShow);
  }
  CursorBefore = CursorNow;
}

// Shows the window in the corner of the quarter of the screen that holds the pointer.
void ShowCornerPopup() {
  const Point pointer = platform::PointerPosition();
  const Rectangle screen = FirstScreen(), window = platform::WindowRectangle();
  const int middleX = screen.x + screen.width / 2, middleY = screen.y + screen.height / 2;
  if (pointer.x == middleX || pointer.y == middleY) return;
  platform::SetTopmost(true);
  platform::MoveWindow(CornerOf(screen, window, pointer.x > middleX, pointer.y > middleY));
  platform::ShowWindow(platform::WindowShow::kShow);
}

void OnTray(SkinHost& host, int message) {
  if (message == platform::kMessageLeftDown) {
    if (CurrentAutoMode() == AUTO_HIDE) {
      ShowCornerPopup();
    } else {
      host.BringToFront();
    }
  }
  if (message == platform::kMessageRightDown) ShowPopupMenu(MENU_TRAY, platform::PointerPosition());
}

void OnCommand(int wParam) {
  const int notice = static_cast<int>(static_cast<unsigned>(wParam) >> 16);
  const int command = wParam & 0xFFFF;
  if (notice == platform::kEditChanged) {
    char text[kInputTextSize];
    platform::GetEditText(text, sizeof text);
    InputText.Store(text);
    DispatchEvent(platform::kMessageCommand, nullptr, platform::kEditChanged, 0);
  } else if (notice == platform::kEditLostFocus) {
    DispatchEvent(platform::kMessageCommand, nullptr, platform::kEditLostFocus, 0);
  } else if (command == COMMAND_HELP) {
    OpenHelp();
  } else if (command == COMMAND_HOME_PAGE) {
    OpenHomePage();
  } else if (command == COMMAND_EXIT) {
    platform::PostQuitMessage(0);
  } else {
    DispatchEvent(platform::kMessageCommand, nullptr, 0, static_cast<float>(command));
  }
}

void OnTimer(const SkinHost& host, int timer) {
  if (timer == kRunningCopyTimer) {
    RefreshRunningCopy();
  } else if (timer == kTagsTimer) {
    if (!GoOnReadingTags()) platform::KillTimer(kTagsTimer);
  } else {
    OnAutoHideTimer(host);
  }
}

void OnSysCommand(int command) {
  if (!AppReady) return;
  if (command == platform::kSystemClose) platform::PostQuitMessage(0);
  if (command == platform::kSystemRestore) Slide(true);
}

// The window has come or gone.
void OnShown(bool shown) {
  if (!shown) LetGo();
  if (AppReady) Slide(shown);
}

}  // namespace

void ResetMainEvents() {
  PressState = PRESS_NONE;
  PressedWidget = nullptr;
  pointerHidden = false;
  wheelWay = 0;
  awaitsPointer = false;
}

void PressControl(int id) {
  const platform::ControlList list = ListControls();
  const platform::Control* control = list.Find(id);
  Widget* widget = control ? Find(id) : nullptr;
  if (!widget) return;
  if (AnythingHeld()) LetGo();
  if (control->role == platform::Role::kListItem) {
    PressRow(*widget);
  } else if (widget == Find(WIDGET_VISUALISER)) {
    PressVisualiser();
  } else if (control->role == platform::Role::kButton ||
             control->role == platform::Role::kCheckBox) {
    PressByKind(*widget, platform::kMessageLeftDown);
  }
}

void BringUp() {
  awaitsPointer = true;
  TheSkinHost->BringToFront();
}

void MainCallback(SkinHost& host, std::uint32_t message, int wParam, int lParam) {
  switch (message) {
    case kTick:
      DispatchEvent(kTick, nullptr, 0, 0);
      return;
    case platform::kMessageSize:
      OnShown(wParam != platform::kSizeMinimised);
      break;
    case platform::kMessageActivate:
      if (CurrentAutoMode() == AUTO_MINIMISE && (wParam & 0xFFFF) == 0)
        platform::ShowWindow(platform::WindowShow::kMinimise);
      break;
    case platform::kMessageShowWindow:
      OnShown(wParam != 0);
      break;
    case platform::kMessageCommand:
      OnCommand(wParam);
      break;
    case platform::kMessageSysCommand:
      OnSysCommand(wParam);
      break;
    case platform::kMessageTimer:
      OnTimer(host, wParam);
      break;
    case platform::kMessageMouseMove:
      OnMove(platform::UnpackPlace(lParam));
      break;
    case platform::kMessageLeftDown:
    case platform::kMessageRightDown:
      OnPress(static_cast<int>(message), platform::UnpackPlace(lParam));
      break;
    case platform::kMessageLeftUp:
    case platform::kMessageRightUp:
      OnRelease(static_cast<int>(message), platform::UnpackPlace(lParam));
      break;
    case platform::kMessageLeftDouble:
    case platform::kMessageRightDouble:
      OnDoublePress(host, static_cast<int>(message), lParam);
      break;
    case platform::kMessageDisplayChange:
      platform::MoveWindow(PlaceOnScreen(platform::WindowRectangle()));
      break;
    case platform::kMessageWheel:
      OnWheel(wParam, platform::UnpackPlace(lParam));
      break;
    case platform::kMessageDropFiles:
      OnDrop(wParam);
      break;
    case platform::kMessageTray:
      OnTray(host, lParam);
      break;
    case platform::kMessageDesktop:
      OnDesktopRequest(wParam);
      break;
    default:
      break;
  }
  ShowStateToDesktop();
  platform::ControlsChanged();
}

}  // namespace kwo
