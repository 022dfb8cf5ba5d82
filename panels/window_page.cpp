#include "panels/window_page.h"

#include "panels/panel_tools.h"
#include "panels/top_bar.h"

namespace kwo {
namespace {

constexpr int kOnTopBit = 4;
constexpr int kAutoBits = 3;
constexpr int kAutoHideMilliseconds = 300;

bool OnTop() {
  return WindowFlags & kOnTopBit;
}

constexpr const char* kAutoTexts[] = {"AUTO [OFF]", "AUTO [HIDE]", "AUTO [MINIMIZE]"};

constexpr struct {
  int index;
  const char* (*text)();
} kButtons[] = {
    {WIDGET_ON_TOP, [] { return OnTop() ? "ALWAYS ON TOP [ON]" : "ALWAYS ON TOP [OFF]"; }},
    {WIDGET_AUTO, [] { return kAutoTexts[CurrentAutoMode()]; }},
    {WIDGET_MINIMISE, [] { return "MINIMIZE"; }},
    {WIDGET_QUIT, [] { return "QUIT"; }},
};

void MinimiseAfterNudge(Widget& button) {
  button.WaitSlot(kNudgeSlot);
  if (CurrentAutoMode() == AUTO_HIDE) {
    platform::ShowWindow(platform::WindowShow::kHide);
    return;
  }
  HideWindowPage(0);
  HideTopBar(1);
  platform::ShowWindow(platform::WindowShow::kMinimise);
}

}  // namespace

void BuildWindowPage() {
  const Layout layout;
  MakeImage(TileOf(PAGE_WINDOW), "tile-wi.bmp", GROUP_INTERFACE);
  const int pitch = (layout.height - layout.bandHeight) / 6;
  int n = 0;
  for (const auto& row : kButtons) {
    TheSkinHost->CreateImageWidget(row.index, "cc-button.bmp", layout.width / 3 * 2,
                                   layout.fontHeight, BUTTON_WIDGET, GROUP_INTERFACE);
    Label(row.index, row.text());
    Find(row.index)->SetFlyIn(layout.width / 6, pitch * ++n);
  }
}

void ShowWindowPage(int wait) {
  PulsePageButton(PAGE_WINDOW, kEnterProgram);
  for (const auto& row : kButtons) Move(row.index, kEnterProgram);
  if (wait) Find(WIDGET_QUIT)->WaitSlot(kMoveSlot);
}

void HideWindowPage(int wait) {
  PulsePageButton(PAGE_WINDOW, kLeaveProgram);
  for (const auto& row : kButtons) Move(row.index, kLeaveProgram);
  if (wait) Find(WIDGET_QUIT)->WaitSlot(kMoveSlot);
}

void WindowPageHandler(unsigned event, Widget* widget, float, float) {
  if (event != EVENT_BUTTON) return;
  if (widget == Find(WIDGET_ON_TOP) && CurrentAutoMode() != AUTO_HIDE) {
    WindowFlags ^= kOnTopBit;
    ApplyWindowFlags();
  }
  if (widget == Find(WIDGET_AUTO)) {
    ++WindowFlags;
    if ((WindowFlags & kAutoBits) > AUTO_MINIMISE) WindowFlags &= ~kAutoBits;
    ApplyWindowFlags();
  }
  if (widget == Find(WIDGET_MINIMISE)) MinimiseAfterNudge(*widget);
  if (widget == Find(WIDGET_QUIT)) {
    widget->WaitSlot(kNudgeSlot);
    platform::PostQuitMessage(0);
  }
}

void ListWindowPage(platform::ControlList& list) {
  for (const auto& row : kButtons) ListWidget(list, row.index, row.text(), Named::kByLabel);
}

void ApplyWindowFlags() {
  const int mode = CurrentAutoMode();
  for (const auto& row : kButtons) Label(row.index, row.text());
  platform::SetTopmost(OnTop() || mode != AUTO_OFF);
  if (mode == AUTO_HIDE) platform::SetTimer(kAutoHideTimer, kAutoHideMilliseconds);
  if (mode == AUTO_MINIMISE) platform::KillTimer(kAutoHideTimer);
}

}  // namespace kwo
