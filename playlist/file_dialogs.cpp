#include "playlist/file_dialogs.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "base/hooks.h"
#include "platform/files.h"
#include "platform/shell.h"
#include "playlist/playlist.h"
#include "playlist/playlist_files.h"
#include "settings/settings.h"

namespace kwo {
namespace {

constexpr char kFilter[] =
    "All Music Files (MP3,MP2,PLA,M3U)|*.MP3;*.MP2;*.PLA;*.M3U|MP3 Files (MP3)|*.MP3|"
    "MP2 Files (MP2)|*.MP2|Playlist - PLA Files (PLA)|*.PLA|Playlist - M3U Files (M3U)|*.M3U|";

}  // namespace

void OpenFilesDialog(int clearFirst) {
  std::string filter(kFilter);
  std::replace(filter.begin(), filter.end(), '|', '\0');
  const std::string here = platform::CurrentFolder();
  const std::string folder = GetSettingString("DirOpen", here.c_str(), 0);
  std::vector<std::string> paths;
  hooks.beforeChoice();
  if (!platform::ChooseFiles(filter.c_str(), folder.c_str(), paths)) return;
  if (clearFirst) ClearList();
  AddPaths(std::move(paths), [](int) {});
  // The dialog has made the user's folder current, and this is how the next one finds it.
  SetSettingString("DirOpen", platform::CurrentFolder().c_str());
  FlushSettings();
}

void OpenDirectoryDialog(int clearFirst) {
  std::string folder;
  hooks.beforeChoice();
  if (!platform::ChooseFolder("Choose a Directory", folder)) return;
  if (clearFirst) ClearList();
  AddPath(folder.c_str());
}

}  // namespace kwo
