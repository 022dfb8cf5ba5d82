#include "panels/top_bar.h"

#include "engine/transport.h"
#include "panels/main_page.h"
#include "panels/mixer_page.h"
#include "panels/panel_tools.h"
#include "panels/playlist_page.h"
#include "panels/window_page.h"
#include "platform/clock.h"
#include "toolkit/skin_description.h"

namespace kwo {

EventWatcher eventWatcher = nullptr;

namespace {

constexpr int kEmptyPageMilliseconds = 1000;
constexpr int kSlideSteps = 60;
constexpr float kSlideAcceleration = 1.0f;

// The info and config pages have nothing but their tile and the pulse of their button.
void RunEmptyPage(Page page, int program, int wait) {
  Move(PageButton(page), program);
  if (wait) platform::Sleep(kEmptyPageMilliseconds);
}

void ShowInfoPage(int wait) {
  RunEmptyPage(PAGE_INFO, kEnterProgram, wait);
}
void HideInfoPage(int wait) {
  RunEmptyPage(PAGE_INFO, kNoProgram, wait);
}
void ShowConfigPage(int wait) {
  RunEmptyPage(PAGE_CONFIG, kEnterProgram, wait);
}
void HideConfigPage(int wait) {
  RunEmptyPage(PAGE_CONFIG, kNoProgram, wait);
}
void EmptyPageHandler(unsigned, Widget*, float, float) {}

struct PageRow {
  const char* buttonFile;
  void (*show)(int wait);
  void (*hide)(int wait);
  void (*handle)(unsigned event, Widget* widget, float a, float b);
};

constexpr PageRow kPages[PAGE_COUNT] = {
    {"to-page-ma.bmp", ShowMainPage, HideMainPage, MainPageHandler},
    {"to-page-pl.bmp", ShowPlaylistPage, HidePlaylistPage, PlaylistPageHandler},
    {"to-page-mi.bmp", ShowMixerPage, HideMixerPage, MixerPageHandler},
    {"to-page-in.bmp", ShowInfoPage, HideInfoPage, EmptyPageHandler},
    {"to-page-co.bmp", ShowConfigPage, HideConfigPage, EmptyPageHandler},
    {"to-page-wi.bmp", ShowWindowPage, HideWindowPage, WindowPageHandler},
};

// From left to right.
constexpr struct {
  int index;
  const char* file;
  void (*press)();
} kTransport[] = {
    {WIDGET_PREVIOUS, "to-bt-prev.bmp", TransportPrevious},
    {WIDGET_STOP, "to-bt-stop.bmp", TransportStop},
    {WIDGET_PLAY, "to-bt-play.bmp", TransportPlay},
    {WIDGET_NEXT, "to-bt-next.bmp", TransportNext},
};

void PlaceSlide(MotionOwner& owner, int outX, int outY, int restX, int restY) {
  owner.SetPath(kEnterProgram, outX, outY, restX, restY, kSlideSteps, kSlideAcceleration,
                MOTION_ONCE);
  owner.SetPath(kLeaveProgram, restX, restY, outX, outY, kSlideSteps, kSlideAcceleration,
                MOTION_ONCE);
}

void RunTopBar(int program, int wait) {
  MoveGroup(GROUP_TRANSPORT, program);
  MoveGroup(GROUP_PAGES, program);
  Move(WIDGET_TOP_BOX, program);
  if (wait) Group(GROUP_PAGES).WaitSlot(kMoveSlot);
}

// The pulse of a page's button: the first one's is quicker and larger.
void SetPagePulse(Widget& button, int page) {
  if (page == PAGE_MAIN) {
    button.SetRamp(kEnterProgram, 150, -150, 30.0f, MOTION_TO_AND_FRO);
  } else {
    button.SetRamp(kEnterProgram, 100, -100, 25.0f, MOTION_TO_AND_FRO);
  }
}

void ChangePage(int page) {
  HideCurrentPage(0);
  for (int i = 0; i < PAGE_COUNT; ++i) PutBack(PageButton(i));
  kPages[page].show(0);
  CurrentPage = page;
  SkinHost& host = *TheSkinHost;
  if (VisualiserFillsWindow()) {
    host.VisualiserMode = VISUALISER_EVERYWHERE;
    return;
  }
  host.VisualiserMode = page == PAGE_MAIN ? VISUALISER_ON_PAGE : VISUALISER_OFF;
  host.ShowTile(page, BackgroundEffect);
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
    button.layer = 3;
    SetNudge(button, kEnterProgram, x, 0);
    button.visible = 1;
    x += buttonWidth;
  }
  const int top = height - buttonHeight;
  const int stripWidth = 5 * buttonWidth;
  WidgetGroup& transport = Group(GROUP_TRANSPORT);
  transport.PlaceGroup(&Group(GROUP_INTERFACE), -stripWidth, top, 3, stripWidth, buttonHeight, 0,
                       0);
  PlaceSlide(transport, -stripWidth, top, 0, top);
  transport.visible = 1;

  int pageWidth = 0;
  for (int page = 0; page < PAGE_COUNT; ++page) {
    Widget& button = *MakeImage(PageButton(page), kPages[page].buttonFile, GROUP_PAGES);
    if (page == PAGE_MAIN) pageWidth = button.width;
    button.SetPlace(page * pageWidth, 0);
    button.layer = 3;
    SetPagePulse(button, page);
    button.visible = 1;
  }
  WidgetGroup& pages = Group(GROUP_PAGES);
  const int pagesWidth = PAGE_COUNT * pageWidth;
  pages.PlaceGroup(&Group(GROUP_INTERFACE), width, top, 3, pagesWidth, buttonHeight, 0, 0);
  PlaceSlide(pages, width, top, width - pagesWidth, top);
  pages.visible = 1;

  Widget& box = *MakeImage(WIDGET_TOP_BOX, "to-groupbox.bmp", GROUP_INTERFACE);
  box.SetPlace(0, height);
  box.layer = 3;
  PlaceSlide(box, 0, height, 0, height - box.height);
  box.visible = 1;
  box.blendMode = TopEffect;
}

void ShowTopBar(int wait) {
  RunTopBar(kEnterProgram, wait);
}

void HideTopBar(int wait) {
  RunTopBar(kLeaveProgram, wait);
}

void ShowCurrentPage(int wait) {
  kPages[CurrentPage].show(wait);
}

void HideCurrentPage(int wait) {
  kPages[CurrentPage].hide(wait);
}

void DispatchEvent(unsigned event, Widget* widget, float a, float b) {
  if (eventWatcher) eventWatcher(event, widget, a, b);
  if (!TopBarHandler(event, widget, a, b)) kPages[CurrentPage].handle(event, widget, a, b);
}

int TopBarHandler(unsigned event, Widget* widget, float, float) {
  if (event != EVENT_IMAGE) return 0;
  for (const auto& row : kTransport) {
    if (widget != Find(row.index)) continue;
    Move(row.index, kEnterProgram);
    row.press();
    return 1;
  }
  for (int page = 0; page < PAGE_COUNT; ++page) {
    if (widget != Find(PageButton(page))) continue;
    if (page != CurrentPage) ChangePage(page);
    return 1;
  }
  return 0;
}

void BuildInfoPage() {
  MakeImage(TileOf(PAGE_INFO), "tile-in.bmp", GROUP_INTERFACE);
}

void BuildConfigPage() {
  MakeImage(TileOf(PAGE_CONFIG), "tile-co.bmp", GROUP_INTERFACE);
}

}  // namespace kwo
