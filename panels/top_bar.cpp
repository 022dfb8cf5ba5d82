#include "panels/top_bar.h"

#include "engine/transport.h"
#include "panels/panel_tools.h"
#include "toolkit/skin_description.h"

namespace kwo {
namespace {

constexpr int kSlideSteps = 60;
constexpr float kSlideAcceleration = 1.0f;

constexpr struct {
  const char *file, *name;
} kPageButtons[PAGE_COUNT] = {
    {"to-page-ma.bmp", "Main page"},   {"to-page-pl.bmp", "Playlist page"},
    {"to-page-mi.bmp", "Mixer page"},  {"to-page-in.bmp", "Info page"},
    {"to-page-co.bmp", "Config page"}, {"to-page-wi.bmp", "Window page"},
};

// From left to right.
constexpr struct {
  int index;
  const char *file, *name;
  void (*press)();
} kTransport[] = {
    {WIDGET_PREVIOUS, "to-bt-prev.bmp", "Previous", TransportPrevious},
    {WIDGET_STOP, "to-bt-stop.bmp", "Stop", TransportStop},
    {WIDGET_PLAY, "to-bt-play.bmp", "Play", TransportPlay},
    {WIDGET_NEXT, "to-bt-next.bmp", "Next", TransportNext},
};

void SetSlide(MotionOwner& owner, platform::Point outside, platform::Point rest) {
  owner.SetWays({outside, rest, outside}, kSlideSteps, kSlideAcceleration, kSlideAcceleration);
}

void RunTopBar(int program, int wait) {
  MoveGroup(GROUP_TRANSPORT, program);
  MoveGroup(GROUP_PAGES, program);
  Move(WIDGET_TOP_BOX, program);
  if (wait) Group(GROUP_PAGES).WaitSlot(kMoveSlot);
}

}  // namespace

void BuildTopBar() {
  const int width = Group(GROUP_INTERFACE).clipWidth, height = Group(GROUP_INTERFACE).clipHeight;
  int buttonWidth = 0, buttonHeight = 0, x = 0;
  for (const auto& row : kTransport) {
    Widget& button = *MakeImage(row.index, row.file, GROUP_TRANSPORT);
    if (row.index == WIDGET_PREVIOUS) {
      buttonWidth = button.width;
      buttonHeight = button.height;
    }
    button.SetPlace(x, 0);
    button.layer = LAYER_CONTROLS;
    button.SetNudge(kEnterProgram, {x, 0});
    button.visible = 1;
    x += buttonWidth;
  }
  const int top = height - buttonHeight;
  const int stripWidth = 5 * buttonWidth;
  WidgetGroup& strip = Group(GROUP_TRANSPORT);
  strip.PlaceGroup(&Group(GROUP_INTERFACE), -stripWidth, top, LAYER_CONTROLS, stripWidth,
                   buttonHeight, 0, 0);
  SetSlide(strip, {-stripWidth, top}, {0, top});
  strip.visible = 1;

  int pageWidth = 0;
  for (int page = 0; page < PAGE_COUNT; ++page) {
    Widget& button = *MakeImage(PageButton(page), kPageButtons[page].file, GROUP_PAGES);
    if (page == PAGE_MAIN) pageWidth = button.width;
    button.SetPlace(page * pageWidth, 0);
    button.layer = LAYER_CONTROLS;
    // The first one's pulse is quicker and larger.
    if (page == PAGE_MAIN) {
      SetPulse(button, 150, 30.0f);
    } else {
      SetPulse(button, 100, 25.0f);
    }
    button.visible = 1;
  }
  WidgetGroup& pages = Group(GROUP_PAGES);
  const int pagesWidth = PAGE_COUNT * pageWidth;
  pages.PlaceGroup(&Group(GROUP_INTERFACE), width, top, LAYER_CONTROLS, pagesWidth, buttonHeight, 0,
                   0);
  SetSlide(pages, {width, top}, {width - pagesWidth, top});
  pages.visible = 1;

  Widget& box = *MakeImage(WIDGET_TOP_BOX, "to-groupbox.bmp", GROUP_INTERFACE);
  box.SetPlace(0, height);
  box.layer = LAYER_CONTROLS;
  SetSlide(box, {0, height}, {0, height - box.height});
  box.visible = 1;
  box.blendMode = skin.TopEffect;
}

void ShowTopBar(int wait) {
  RunTopBar(kEnterProgram, wait);
}

void HideTopBar(int wait) {
  RunTopBar(kLeaveProgram, wait);
}

bool PressTransport(const Widget* widget) {
  for (const auto& row : kTransport) {
    if (widget != Find(row.index)) continue;
    Move(row.index, kEnterProgram);
    row.press();
    return true;
  }
  return false;
}

void ListTopBar(platform::ControlList& list) {
  for (const auto& row : kTransport) {
    platform::Control* button = ListWidget(list, row.index, row.name, Named::kByTip);
    if (button && row.index == WIDGET_PLAY) button->pressed = transport.playing && !IsPaused();
  }
  for (int page = 0; page < PAGE_COUNT; ++page) {
    platform::Control* button =
        ListWidget(list, PageButton(page), kPageButtons[page].name, Named::kByTip);
    if (button) button->pressed = page == CurrentPage;
  }
}

}  // namespace kwo
