#pragma once

#include <vector>

#include "platform/shell.h"
#include "platform/window.h"

/// The popup menus and what their commands do.  Main thread.
namespace kwo {

enum SubMenu : int { MENU_FUNCTION, MENU_ADD, MENU_REMOVE, MENU_TRAY };

enum MenuCommand : int {
  COMMAND_EXIT = 40025,
  COMMAND_HOME_PAGE = 40026,
  COMMAND_HELP = 40028,
};

/// A menu's rows as they stand now.
std::vector<platform::MenuItem> MenuItems(SubMenu menu);

/// Shows a menu at a place of the screen; the choice comes back as a message.
void ShowPopupMenu(SubMenu menu, platform::Point place);

/// Carries out a command of the playlist page's three menus; others do nothing.
void RunPlaylistCommand(int command);

}  // namespace kwo
