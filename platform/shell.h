#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/window.h"

/// What the desktop around the window offers.  Main thread.
namespace kwo::platform {

/// Lets the user choose files.  `filter` is pairs of a name and its patterns, each closed by NUL,
/// with one more NUL behind the last.  The dialog opens in `folder`; when the user has chosen, the
/// folder that it then shows is the current one.  False if nothing was chosen.
bool ChooseFiles(const char* filter, const char* folder, std::vector<std::string>& paths);

/// Lets the user choose a folder; false if none was chosen.
bool ChooseFolder(const char* title, std::string& folder);

/// Of the choices of a menu, which exclude each other, one is the chosen one.
enum class MenuMark { kNone, kChoice, kChosen };

struct MenuItem {
  int command;  ///< 0: a separator
  const char* text;
  MenuMark mark;
};

/// 0x00BBGGRR.
struct MenuColors {
  std::uint32_t text = 0, ground = 0xFFFFFF;
  std::uint32_t pointedText = 0xFFFFFF, pointedGround = 0;  ///< of the item under the pointer
  std::uint32_t mark = 0;                                   ///< kChosen's
};

/// Colours of the menus and tool tips from now on, but for a menu that the desktop shows.
void SetMenuColors(const MenuColors& colors);

/// Shows a menu at a place of the screen until the user has chosen or dismissed it.  The choice is
/// posted as kMessageCommand.
void TrackPopupMenu(std::span<const MenuItem> items, Point place);

/// The files and folders of a drop, once.
std::vector<std::string> TakeDroppedFiles(int drop);

/// The tray icon with its tip, from now on or once the desktop has a tray.  Presses are posted as
/// kMessageTray; a desktop that shows an icon's menu by itself is given `items`, and posts the
/// choice as kMessageCommand.
void ShowTrayIcon(const char* tip, std::span<const MenuItem> items);
void HideTrayIcon();

/// The default value of a key of the desktop's file classes, such as ".html" or
/// "http\shell\open\command".  Gives 0, or the registry's error code.
int ReadClassRegistry(const char* key, std::string& value);

/// Starts a program without waiting for it; false if it can't be started.
bool RunCommandLine(const char* line);

}  // namespace kwo::platform
