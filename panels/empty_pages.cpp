#include "panels/empty_pages.h"

#include "panels/panel_tools.h"
#include "platform/clock.h"

namespace kwo {
namespace {

constexpr int kEmptyPageMilliseconds = 1000;

void RunEmptyPage(Page page, int program, int wait) {
  PulsePageButton(page, program);
  if (wait) platform::Sleep(kEmptyPageMilliseconds);
}

}  // namespace

void BuildInfoPage() {
  MakeImage(TileOf(PAGE_INFO), "tile-in.bmp", GROUP_INTERFACE);
}

void ShowInfoPage(int wait) {
  RunEmptyPage(PAGE_INFO, kEnterProgram, wait);
}

void HideInfoPage(int wait) {
  RunEmptyPage(PAGE_INFO, kLeaveProgram, wait);
}

void BuildConfigPage() {
  MakeImage(TileOf(PAGE_CONFIG), "tile-co.bmp", GROUP_INTERFACE);
}

void ShowConfigPage(int wait) {
  RunEmptyPage(PAGE_CONFIG, kEnterProgram, wait);
}

void HideConfigPage(int wait) {
  RunEmptyPage(PAGE_CONFIG, kLeaveProgram, wait);
}

void EmptyPageHandler(unsigned, Widget*, float, float) {}

}  // namespace kwo
