#include "platform/posix/passed_over.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>

#include "platform/files.h"

namespace kwo::platform {
namespace {

constexpr char kWaste[] = ".Trash";

bool IsWaste(const std::string& name) {
  if (!name.starts_with(kWaste)) return false;
  const std::string rest = name.substr(sizeof kWaste - 1);
  return rest.empty() ||
         (rest.size() > 1 && rest.front() == '-' &&
          std::all_of(rest.begin() + 1, rest.end(), [](char c) { return c >= '0' && c <= '9'; }));
}

bool IsHome(const std::string& folder) {
  const char* home = std::getenv("HOME");
  struct stat first, second;
  return home && stat(home, &first) == 0 &&
         stat(ToMachinePath(folder.c_str()).c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

}  // namespace

bool IsPassedOver(const std::string& folder, const std::string& name) {
  if (!name.starts_with('.')) return false;
  return IsWaste(name) || (IsHome(folder) && FolderExists((folder + '\\' + name).c_str()));
}

}  // namespace kwo::platform
