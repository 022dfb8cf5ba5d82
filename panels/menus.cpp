#include "panels/menus.h"

#include <span>
#include <vector>

#include "base/hooks.h"
#include "engine/transport.h"
#include "platform/shell.h"
#include "playlist/file_dialogs.h"
#include "playlist/playlist.h"
#include "playlist/tag_reader.h"

namespace kwo {
namespace {

struct MenuRow {
  int command;  ///< 0: a separator
  const char* text;
  void (*action)();
  int displayMode = -1;  ///< of the list, for the rows that choose one
};

template <int mode>
void ShowNamesAs() {
  playlist.displayMode = mode;
  hooks.refreshPlaylistPage();
  hooks.refreshSongLine();
}

template <int mode>
constexpr MenuRow NamesRow(int command, const char* text) {
  return {command, text, ShowNamesAs<mode>, mode};
}

template <void (*change)()>
void AndRefresh() {
  change();
  hooks.refreshPlaylistPage();
}

// The order of songs to come is made anew before the list changes, and once more for what has come.
template <void (*dialog)(int), int clearFirst>
void AddByDialog() {
  if (transport.shuffleOn) BuildShuffleTable();
  const int before = playlist.count;
  dialog(clearFirst);
  if (transport.shuffleOn && playlist.count != before) BuildShuffleTable();
  hooks.refreshPlaylistPage();
}

constexpr MenuRow kFunctionMenu[] = {
    {40015, "Select All", AndRefresh<SelectAll>},
    {40016, "Deselect All", AndRefresh<DeselectAll>},
    {0, "", nullptr},
    {40024, "Sort", AndRefresh<SortList>},
    {40023, "Read Tag Information", AndRefresh<ReadAllTags>},
    {0, "", nullptr},
    NamesRow<0>(40020, "Show : Filename"),
    NamesRow<1>(40019, "Show : Title"),
    NamesRow<2>(40018, "Show : Title - Artist"),
    NamesRow<3>(40021, "Show : Artist - Title"),
    NamesRow<4>(40022, "Show : Artist - Album - Title"),
};

constexpr MenuRow kAddMenu[] = {
    {40001, "Open Files", AddByDialog<OpenFilesDialog, 1>},
    {40002, "Open Directory", AddByDialog<OpenDirectoryDialog, 1>},
    {0, "", nullptr},
    {40004, "Add Files", AddByDialog<OpenFilesDialog, 0>},
    {40005, "Add Directory", AddByDialog<OpenDirectoryDialog, 0>},
};

constexpr MenuRow kRemoveMenu[] = {
    {40007, "Remove Selected", RemoveSelected},
    {40009, "Remove Unselected", RemoveUnselected},
    {0, "", nullptr},
    {40006, "Remove All", RemoveAll},
    {40008, "Remove Dead Links", RemoveDeadLinks},
};

// Its commands are the main window's own.
constexpr MenuRow kTrayMenu[] = {
    {COMMAND_HOME_PAGE, "Tavarine", nullptr},
    {COMMAND_HELP, "Help", nullptr},
    {0, "", nullptr},
    {COMMAND_EXIT, "Exit", nullptr},
};

constexpr std::span<const MenuRow> kMenus[] = {kFunctionMenu, kAddMenu, kRemoveMenu, kTrayMenu};

}  // namespace

std::vector<platform::MenuItem> MenuItems(SubMenu menu) {
  std::vector<platform::MenuItem> items;
  for (const MenuRow& row : kMenus[menu]) {
    const bool chosen = row.displayMode == playlist.displayMode;
    items.push_back({row.command, row.text,
                     row.displayMode < 0 ? platform::MenuMark::kNone
                     : chosen            ? platform::MenuMark::kChosen
                                         : platform::MenuMark::kChoice});
  }
  return items;
}

void ShowPopupMenu(SubMenu menu, platform::Point place) {
  hooks.beforeChoice();
  platform::TrackPopupMenu(MenuItems(menu), place);
}

void RunPlaylistCommand(int command) {
  for (const auto& menu : kMenus)
    for (const MenuRow& row : menu)
      if (row.command == command && row.action) row.action();
}

}  // namespace kwo
