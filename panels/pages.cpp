#include "panels/pages.h"

#include <algorithm>
#include <cmath>

#include "panels/empty_pages.h"
#include "panels/main_page.h"
#include "panels/mixer_page.h"
#include "panels/panel_tools.h"
#include "panels/playlist_page.h"
#include "panels/top_bar.h"
#include "panels/window_page.h"
#include "toolkit/skin_description.h"

namespace kwo {

EventWatcher eventWatcher = nullptr;

namespace {

constexpr struct {
  void (*build)();
  void (*show)(int wait);
  void (*hide)(int wait);
  void (*handle)(unsigned event, Widget* widget, float a, float b);
  void (*list)(platform::ControlList& list) = [](platform::ControlList&) {};
  void (*set)(int control, double value) = [](int, double) {};
} kPages[PAGE_COUNT] = {
    {BuildMainPage, ShowMainPage, HideMainPage, MainPageHandler, ListMainPage, SetOnMainPage},
    {BuildPlaylistPage, ShowPlaylistPage, HidePlaylistPage, PlaylistPageHandler, ListPlaylistPage,
     SetOnPlaylistPage},
    {BuildMixerPage, ShowMixerPage, HideMixerPage, MixerPageHandler, ListMixerPage, SetOnMixerPage},
    {BuildInfoPage, ShowInfoPage, HideInfoPage, EmptyPageHandler},
    {BuildConfigPage, ShowConfigPage, HideConfigPage, EmptyPageHandler},
    {BuildWindowPage, ShowWindowPage, HideWindowPage, WindowPageHandler, ListWindowPage},
};

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
  host.ShowTile(page, skin.BackgroundEffect);
}

template <typename Value>
void ChangeValue(int id, Value valueOf) {
  const platform::ControlList list = ListControls();
  const platform::Control* control = list.Find(id);
  if (!control || !control->HasValue()) return;
  const double value = valueOf(*control);
  if (std::isnan(value)) return;
  kPages[CurrentPage].set(id, std::clamp(value, control->least, control->most));
}

}  // namespace

void BuildPages() {
  BuildTopBar();
  for (const auto& page : kPages) page.build();
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

platform::ControlList ListControls() {
  platform::ControlList list;
  if (!TheSkinHost->active) return list;
  ListTopBar(list);
  kPages[CurrentPage].list(list);
  list.atRest = TheSkinHost->AtRest();
  return list;
}

void SetControl(int id, double value) {
  ChangeValue(id, [value](const platform::Control&) { return value; });
}

void StepControl(int id, double steps) {
  ChangeValue(id, [steps](const platform::Control& control) {
    return control.value + steps * control.step;
  });
}

int TopBarHandler(unsigned event, Widget* widget, float, float) {
  if (event != EVENT_IMAGE) return 0;
  if (PressTransport(widget)) return 1;
  for (int page = 0; page < PAGE_COUNT; ++page) {
    if (widget != Find(PageButton(page))) continue;
    if (page != CurrentPage) ChangePage(page);
    return 1;
  }
  return 0;
}

}  // namespace kwo
