#include "app/shell_services.h"

#include "panels/application_state.h"
#include "panels/menus.h"
#include "platform/shell.h"

namespace kwo {
namespace {

constexpr char kTitle[] = "KWO";
constexpr std::size_t kClassLimit = 260, kBrowserLimit = 520;  // with the closing NUL
constexpr int kMoreData = 234;
constexpr int kCannotStart = static_cast<int>(0x80004005);

int ErrorCode(int registryError) {
  return static_cast<int>(0x80070000u | (static_cast<unsigned>(registryError) & 0xFFFFu));
}

// Gives the registry's error code; a value that does not fit is one, since a command that was cut
// would be another.
int ReadClass(const std::string& key, std::string& value, std::size_t limit) {
  const int error = platform::ReadClassRegistry(key.c_str(), value);
  return !error && value.size() >= limit ? kMoreData : error;
}

}  // namespace

void AddTrayIcon() {
  platform::ShowTrayIcon(kTitle, MenuItems(MENU_TRAY));
}

void RemoveTrayIcon() {
  platform::HideTrayIcon();
}

int FindBrowser(std::string& command) {
  std::string fileClass;
  int error = ReadClass(".html", fileClass, kClassLimit);
  if (!error) error = ReadClass(fileClass + "\\shell\\open\\command", command, kBrowserLimit);
  if (error) error = ReadClass("http\\shell\\open\\command", command, kBrowserLimit);
  return error ? ErrorCode(error) : 0;
}

int OpenInBrowser(const std::string& target) {
  std::string line;
  const int error = FindBrowser(line);
  if (error) return error;
  std::size_t place = line.find("\"%1\"");
  if (place == std::string::npos) place = line.find("\"%*\"");
  if (place == std::string::npos) {
    line += ' ' + target;
  } else {
    line.replace(place, 4, target);
  }
  return platform::RunCommandLine(line.c_str()) ? 0 : kCannotStart;
}

void OpenHelp() {
  OpenInBrowser(std::string(AppDir) + "help\\index.htm");
}

void OpenHomePage() {
  OpenInBrowser(std::string(AppDir) + "help\\tavarine.htm");
}

}  // namespace kwo
