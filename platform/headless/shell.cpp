#include "platform/shell.h"

#include <algorithm>
#include <deque>
#include <map>
#include <mutex>
#include <utility>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/headless/headless.h"
#include "platform/posix/dropped_songs.h"
#include "platform/posix/executable.h"
#include "platform/posix/file_worker_probe.h"

namespace kwo {
namespace {

std::mutex lock;
std::deque<headless::DialogAnswer> answers;
std::deque<std::string> menuAnswers;
int lostAnswers = 0;
std::string standingFolder;
std::vector<std::string> lastMenu;
platform::MenuColors menuColors;
std::string lastFolder;
std::map<std::string, platform::SongTag> longTags;
std::map<int, std::vector<std::string>> drops;
int lastDrop = 0;
std::map<std::string, std::string> classes;
std::vector<std::string> commandLines;
bool trayShown = false;
std::string trayTip;

constexpr int kErrorFileNotFound = 2;

bool TakeAnswer(headless::DialogAnswer& answer) {
  std::lock_guard guard(lock);
  if (answers.empty()) return false;
  answer = answers.front();
  answers.pop_front();
  return !answer.paths.empty();
}

}  // namespace

namespace platform {

bool ChooseFiles(const char*, const char* folder, std::vector<std::string>& paths) {
  {
    std::lock_guard guard(lock);
    lastFolder = folder;
  }
  headless::DialogAnswer answer;
  if (!TakeAnswer(answer)) return false;
  paths = answer.paths;
  SetCurrentFolder(answer.folder.c_str());
  return true;
}

bool ChooseFolder(const char*, std::string& folder) {
  headless::DialogAnswer answer;
  if (!TakeAnswer(answer)) return false;
  folder = answer.paths[0];
  return true;
}

SongTag ReadLongTag(const char* path) {
  std::lock_guard guard(lock);
  const auto found = longTags.find(path);
  return found == longTags.end() ? SongTag() : found->second;
}

void SetMenuColors(const MenuColors& colors) {
  std::lock_guard guard(lock);
  menuColors = colors;
}

void TrackPopupMenu(std::span<const MenuItem> items, Point) {
  std::lock_guard guard(lock);
  lastMenu.clear();
  for (const MenuItem& item : items) {
    std::string text(item.mark == MenuMark::kChosen ? "*" : "");
    text += item.command ? item.text : "-";
    lastMenu.push_back(text);
  }
  if (menuAnswers.empty()) return;
  const std::string answer = menuAnswers.front();
  menuAnswers.pop_front();
  const auto chosen = std::ranges::find_if(
      items, [&answer](const MenuItem& item) { return item.command && item.text == answer; });
  if (chosen != items.end()) {
    PostMessage({kMessageCommand, chosen->command, 0});
  } else {
    lostAnswers += !answer.empty();
  }
}

std::vector<std::string> TakeDroppedFiles(int drop) {
  std::lock_guard guard(lock);
  auto found = drops.extract(drop);
  return found ? found.mapped() : std::vector<std::string>();
}

void ShowTrayIcon(const char* tip, std::span<const MenuItem>) {
  std::lock_guard guard(lock);
  trayShown = true;
  trayTip = tip;
}

void HideTrayIcon() {
  std::lock_guard guard(lock);
  trayShown = false;
}

int ReadClassRegistry(const char* key, std::string& value) {
  std::lock_guard guard(lock);
  auto found = classes.find(key);
  if (found == classes.end()) return kErrorFileNotFound;
  value = found->second;
  return 0;
}

bool RunCommandLine(const char* line) {
  std::lock_guard guard(lock);
  commandLines.push_back(line);
  return true;
}

}  // namespace platform

namespace headless {

void AnswerDialog(const DialogAnswer& answer) {
  std::lock_guard guard(lock);
  answers.push_back(answer);
}

std::string LastDialogFolder() {
  std::lock_guard guard(lock);
  return lastFolder;
}

void SetExecutablePath(const std::string& path) {
  platform::TellExecutablePath(platform::FromMachinePath(path.c_str()));
}

void AnswerMenu(const std::string& text) {
  std::lock_guard guard(lock);
  menuAnswers.push_back(text);
}

int LostMenuAnswers() {
  std::lock_guard guard(lock);
  const int lost = std::exchange(lostAnswers, 0) + static_cast<int>(menuAnswers.size());
  menuAnswers.clear();
  return lost;
}

platform::MenuColors MenuColors() {
  std::lock_guard guard(lock);
  return menuColors;
}

std::vector<std::string> LastMenu() {
  std::lock_guard guard(lock);
  return lastMenu;
}

void SetStandingFolder(const std::string& path) {
  {
    std::lock_guard guard(lock);
    standingFolder = path;
  }
  platform::beforeLook = [](const std::string& looked) {
    for (;;) {
      {
        std::lock_guard guard(lock);
        if (standingFolder.empty() || !looked.starts_with(standingFolder)) return;
      }
      platform::Sleep(100);
    }
  };
}

void SetLongTag(const std::string& path, const platform::SongTag& tag) {
  std::lock_guard guard(lock);
  longTags[path] = tag;
}

void DropFiles(const std::vector<std::string>& paths) {
  std::vector<std::string> songs = platform::DroppedSongs(paths);
  if (songs.empty()) return;
  std::lock_guard guard(lock);
  drops[++lastDrop] = std::move(songs);
  platform::PostMessage({platform::kMessageDropFiles, lastDrop, 0, HeldKeys()});
}

void PressTray(Button button) {
  std::lock_guard guard(lock);
  if (!trayShown) return;
  platform::PostMessage(
      {platform::kMessageTray, 0,
       button == Button::kLeft ? platform::kMessageLeftDown : platform::kMessageRightDown});
}

TrayState Tray() {
  std::lock_guard guard(lock);
  return {trayShown, trayTip};
}

void SetClassRegistry(const std::string& key, const std::string& value) {
  std::lock_guard guard(lock);
  if (value.empty()) {
    classes.erase(key);
  } else {
    classes[key] = value;
  }
}

std::vector<std::string> CommandLines() {
  std::lock_guard guard(lock);
  return commandLines;
}

}  // namespace headless
}  // namespace kwo
