#include "panels/playlist_page.h"

#include <algorithm>
#include <cstdio>

#include "base/hooks.h"
#include "engine/transport.h"
#include "panels/menus.h"
#include "panels/panel_tools.h"
#include "platform/clock.h"
#include "playlist/playlist.h"
#include "toolkit/skin_description.h"

namespace kwo {
namespace {

constexpr struct {
  int index;
  const char *file, *name;
} kStripButtons[] = {
    {WIDGET_FUNCTION, "pl-function.bmp", "List functions"},
    {WIDGET_ADD, "pl-add.bmp", "Add songs"},
    {WIDGET_REMOVE, "pl-remove.bmp", "Remove songs"},
    {WIDGET_ITEM_UP, "pl-itemup.bmp", "Move selected up"},
    {WIDGET_ITEM_DOWN, "pl-itemdown.bmp", "Move selected down"},
};

constexpr struct {
  int index;
  SubMenu menu;
} kMenuButtons[] = {
    {WIDGET_FUNCTION, MENU_FUNCTION}, {WIDGET_ADD, MENU_ADD}, {WIDGET_REMOVE, MENU_REMOVE}};

constexpr int kMenuDrop = 3;
constexpr unsigned kHandsMilliseconds = 30000;

// When the user's hands were on the list last: written by the main thread, read by those that step
// to another song.
Shared<unsigned> lastTouch;
constexpr float kLeftButton = platform::kMessageLeftDown;

void BuildRows(const Layout& layout, int top, int area) {
  const int fit = area / (layout.fontHeight + 1);
  SkinHost& host = *TheSkinHost;
  host.CreateImageWidget(WIDGET_SCROLL_BAR, "cc-sliderv.bmp", 0, area, VERTICAL_SLIDER,
                         GROUP_INTERFACE);
  Widget& bar = *Find(WIDGET_SCROLL_BAR);
  bar.SetFlyIn(layout.width - bar.width - layout.margin, top);
  bar.ApplyValue(PART_REST, 0);
  playlist.visibleRows = std::clamp(fit, 0, kMaxRows);
  for (int i = 0; i < playlist.visibleRows; ++i) {
    host.CreateImageWidget(WIDGET_ROW + i, "cc-button.bmp",
                           layout.width - 3 * layout.margin - bar.width, layout.fontHeight,
                           BUTTON_WIDGET, GROUP_INTERFACE);
    Find(WIDGET_ROW + i)->SetLabel("- - - - - -");
    Find(WIDGET_ROW + i)->SetFlyIn(layout.margin, top + i * (area / fit));
  }
}

void RunPlaylistPage(int program, int wait) {
  MoveGroup(GROUP_PLAYLIST_BUTTONS, program);
  PulsePageButton(PAGE_PLAYLIST, program);
  for (int i = 0; i < playlist.visibleRows; ++i) Move(WIDGET_ROW + i, program);
  Move(WIDGET_SCROLL_BAR, program);
  Move(WIDGET_PLAYLIST_BOX, program);
  if (wait) Find(WIDGET_PLAYLIST_BOX)->WaitSlot(kMoveSlot);
}

// How far the list can be scrolled; below 0 when it is shorter than the page.
int ScrollRange() {
  return playlist.count - playlist.visibleRows;
}

float ScrollPosition() {
  const int range = ScrollRange();
  return range > 0 ? static_cast<float>(playlist.topIndex) / static_cast<float>(range) : 0.0f;
}

// What a row shows.
struct Row {
  Row(int row, const PlaylistReader& reader) {
    const int song = playlist.topIndex + row;
    const PlaylistEntry* entry = song < playlist.count ? reader.Entry(song) : nullptr;
    char name[kPathSize] = "------";
    if (entry) entry->displayName.Load(name);
    std::snprintf(text, sizeof text, "%d. %s", song + 1, name);
    bearsSong = entry != nullptr;
    selected = entry && entry->selected;
    current = entry && song == playlist.currentSong;
  }

  char text[kPathSize + 16];
  bool bearsSong, selected, current;
};

void RefreshRow(int row, const PlaylistReader& reader) {
  Widget* widget = Find(WIDGET_ROW + row);
  if (!widget) return;
  const Row shown(row, reader);
  widget->SetLabelOn(shown.text, shown.selected ? skin.SelectedSongColor : skin.TransparentColor);
  if (shown.current) {
    widget->RunProgram(kPulseSlot, kPulseProgram);
  } else {
    widget->RunProgram(kPulseSlot, kNoProgram);
    widget->brightness = 0;
  }
}

void Scroll(int top) {
  playlist.topIndex = std::max(0, top);
  Find(WIDGET_SCROLL_BAR)->ApplyValue(PART_KEEP_CAPS, ScrollPosition());
  RefreshPlaylistPage();
}

// The list as a whole, and the rows that bear a song.
void ListRows(platform::ControlList& list) {
  platform::Control songs;
  songs.id = WIDGET_PLAYLIST_BOX;
  songs.role = platform::Role::kList;
  songs.name = "Songs";
  songs.labelled = true;
  for (int row = 0; row < playlist.visibleRows; ++row) {
    const platform::Rectangle place = Find(WIDGET_ROW + row)->RestPlace();
    if (row == 0) songs.place = place;
    songs.place.height = place.Bottom() - songs.place.y;
  }
  list.controls.push_back(songs);
  const PlaylistReader reader;
  for (int row = 0; row < playlist.visibleRows; ++row) {
    const Row shown(row, reader);
    if (!shown.bearsSong) continue;
    platform::Control* item = ListWidget(list, WIDGET_ROW + row, shown.text, Named::kByLabel);
    if (!item) continue;
    item->role = platform::Role::kListItem;
    item->selected = shown.selected;
    item->current = shown.current;
  }
}

void PressButton(const Widget* widget, bool left) {
  if (!left) {
    if (widget == Find(WIDGET_ITEM_UP)) MoveSelectedPageUp();
    if (widget == Find(WIDGET_ITEM_DOWN)) MoveSelectedPageDown();
    return;
  }
  if (widget == Find(WIDGET_ITEM_UP)) MoveSelectedUp();
  if (widget == Find(WIDGET_ITEM_DOWN)) MoveSelectedDown();
  const platform::Point pointer = platform::PointerPosition();
  for (const auto& button : kMenuButtons)
    if (widget == Find(button.index))
      ShowPopupMenu(button.menu, {pointer.x, pointer.y + kMenuDrop});
}

bool OfList(const Widget* widget) {
  for (int index = WIDGET_ROW; index <= WIDGET_ITEM_DOWN; ++index)
    if (widget && widget == Find(index)) return true;
  return false;
}

// The song that a row stands for, or -1.
int SongOf(const Widget* widget) {
  const int row = RowOf(widget);
  const int song = row < 0 ? -1 : playlist.topIndex + row;
  return song < playlist.count ? song : -1;
}

void PressRow(const Widget* widget) {
  const int song = SongOf(widget);
  if (song < 0) return;
  platform::SetCapture();
  ClickSong(song, platform::KeyDown(platform::Key::kShift),
            platform::KeyDown(platform::Key::kControl));
  RefreshPlaylistPage();
}

void PlayRow(Widget* widget) {
  const int song = SongOf(widget);
  if (song < 0) return;
  widget->RunProgram(kNudgeSlot, kNudgeProgram);
  PlaySong(song);
}

}  // namespace

int RowOf(const Widget* widget) {
  for (int row = 0; row < playlist.visibleRows; ++row)
    if (widget && widget == Find(WIDGET_ROW + row)) return row;
  return -1;
}

void BuildPlaylistPage() {
  lastTouch = platform::GetTickCount() - kHandsMilliseconds;
  const Layout layout;
  MakeImage(TileOf(PAGE_PLAYLIST), "tile-pl.bmp", GROUP_INTERFACE);
  const Widget* box = MakeGroupBox(WIDGET_PLAYLIST_BOX, "pl-groupbox.bmp", skin.PlaylistEffect);
  const int top = box->height + layout.margin;
  BuildRows(layout, top, layout.Bottom() - top);
  int x = 0;
  for (const auto& button : kStripButtons)
    x += MakeStripButton(button.index, button.file, GROUP_PLAYLIST_BUTTONS, x);
  PlaceStrip(GROUP_PLAYLIST_BUTTONS, LAYER_BOXES, x, layout.height / 2, (layout.width - x) / 2);
}

void ShowPlaylistPage(int wait) {
  RunPlaylistPage(kEnterProgram, wait);
}

void HidePlaylistPage(int wait) {
  RunPlaylistPage(kLeaveProgram, wait);
}

void ListPlaylistPage(platform::ControlList& list) {
  for (const auto& row : kStripButtons) ListWidget(list, row.index, row.name, Named::kByTip);
  ListRows(list);
  platform::Control* bar = ListWidget(list, WIDGET_SCROLL_BAR, "First song shown", Named::kByTip);
  if (!bar) return;
  bar->value = playlist.topIndex + 1;
  bar->least = 1;
  bar->most = std::max(0, ScrollRange()) + 1;
}

void SetOnPlaylistPage(int control, double value) {
  if (control != WIDGET_SCROLL_BAR) return;
  TouchList();
  Scroll(static_cast<int>(value) - 1);
}

void PlaySong(int song) {
  playlist.currentSong = song;
  TransportStop();
  TransportPlay();
  RefreshDisplays();
}

void TouchList() {
  lastTouch = platform::GetTickCount();
}

void FollowSong() {
  if (!AppReady || platform::GetTickCount() - lastTouch < kHandsMilliseconds) return;
  const int song = playlist.currentSong, rows = playlist.visibleRows;
  if (song < 0 || song >= playlist.count || rows < 1) return;
  playlist.topIndex = std::clamp<int>(playlist.topIndex, song - rows + 1, song);
}

void RefreshPlaylistPage() {
  playlist.topIndex = std::max(0, std::min<int>(playlist.topIndex, ScrollRange()));
  BuildDisplayNames();
  Widget* bar = TheSkinHost ? Find(WIDGET_SCROLL_BAR) : nullptr;
  if (!bar) return;
  {
    PlaylistReader reader;
    for (int row = 0; row < playlist.visibleRows; ++row) RefreshRow(row, reader);
  }
  bar->ApplyValue(PART_REST, ScrollPosition());
}

void PlaylistPageHandler(unsigned event, Widget* widget, float a, float b) {
  if (event == platform::kMessageCommand || OfList(widget)) TouchList();
  switch (event) {
    case EVENT_VERTICAL_TOP:
      Scroll(playlist.topIndex - 1);
      break;
    case EVENT_VERTICAL_BOTTOM:
      Scroll(std::min(playlist.topIndex + 1, ScrollRange()));
      break;
    case EVENT_VERTICAL_THUMB:
      playlist.topIndex = static_cast<int>(static_cast<float>(ScrollRange()) * a);
      RefreshPlaylistPage();
      break;
    case EVENT_BUTTON:
      PressButton(widget, a == kLeftButton);
      break;
    case platform::kMessageCommand:
      RunPlaylistCommand(static_cast<int>(b));
      break;
    case platform::kMessageLeftDown:
      PressRow(widget);
      break;
    case platform::kMessageLeftUp:
      platform::ReleaseCapture();
      break;
    case platform::kMessageLeftDouble:
      PlayRow(widget);
      break;
    default:
      break;
  }
}

}  // namespace kwo
