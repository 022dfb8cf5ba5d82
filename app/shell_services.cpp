#include "app/shell_services.h"

#include <algorithm>

#include "panels/application_state.h"
#include "platform/shell.h"

namespace kwo {
namespace {

constexpr char kTitle[] = "KWO";
constexpr std::size_t kBrowserLimit = 520;  // with the closing NUL
constexpr int kCannotStart = static_cast<int>(0x80004005);

int ErrorCode(int registryError) {
  return static_cast<int>(0x80070000u | (static_cast<unsigned>(registryError) & 0xFFFFu));
}

}  // namespace

void AddTrayIcon() {
  platform::ShowTrayIcon(kTitle);
}

void RemoveTrayIcon() {
  platform::HideTrayIcon();
}

int FindBrowser(std::string& command) {
  std::string fileClass;
  int error = platform::ReadClassRegistry(".html", fileClass);
  if (!error)
    error = platform::ReadClassRegistry((fileClass + "\\shell\\open\\command").c_str(), command);
  if (error) error = platform::ReadClassRegistry("http\\shell\\open\\command", command);
  return error ? ErrorCode(error) : 0;
}

int OpenInBrowser(const std::string& target) {
  std::string line;
  const int error = FindBrowser(line);
  if (error) return error;
  line.resize(std::min(line.size(), kBrowserLimit - 1));
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
