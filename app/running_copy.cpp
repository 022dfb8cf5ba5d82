#include "app/running_copy.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "app/saved_state.h"
#include "panels/application_state.h"
#include "panels/equaliser_presets.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/owned_file.h"
#include "platform/threads.h"
#include "platform/window.h"
#include "playlist/playlist_files.h"
#include "settings/settings.h"

namespace kwo {
namespace {

constexpr char kFront[] = "RUNNING-", kEnding[] = ".KWO";
constexpr char kForm[] = "KWO %zu %zu %zu\n";
constexpr std::size_t kLargestCopy = 16 << 20;
constexpr int kRefreshMilliseconds = 4000;

struct Copy {
  std::string settings;  // NAME=value, a line each
  std::string presets;   // as their file
  std::string list;      // as a playlist file
};

std::unique_ptr<Copy> dead;
std::vector<std::unique_ptr<platform::OwnedFile>> deadFiles;

// This run's.  While `writing` is set the thread has `text` and the file for itself.
platform::OwnedFile file;
std::string text;
platform::Thread* writer = nullptr;
Shared<int> writing;

std::string Compose() {
  Copy copy;
  for (const Setting& setting : CurrentSettings())
    copy.settings += std::string(setting.name) + '=' + std::to_string(setting.value) + '\n';
  copy.presets = PresetBytes();
  copy.list = PlaylistText();
  char head[96];
  std::snprintf(head, sizeof head, kForm, copy.settings.size(), copy.presets.size(),
                copy.list.size());
  return head + copy.settings + copy.presets + copy.list;
}

bool Parse(const std::string& bytes, Copy& copy) {
  std::size_t settings, presets, list;
  const std::size_t head = bytes.find('\n') + 1;
  if (head == 0 || std::sscanf(bytes.c_str(), kForm, &settings, &presets, &list) != 3) return false;
  const std::size_t room = bytes.size() - head;
  if (settings > room || presets > room || list > room || settings + presets + list != room)
    return false;
  copy = {bytes.substr(head, settings), bytes.substr(head + settings, presets),
          bytes.substr(head + settings + presets)};
  return true;
}

void TakeSettings(const std::string& lines) {
  for (std::size_t at = 0; at < lines.size();) {
    const std::size_t end = std::min(lines.find('\n', at), lines.size());
    const std::size_t equals = lines.find('=', at);
    if (equals < end)
      GetSettingInt(lines.substr(at, equals - at).c_str(), std::atoi(lines.c_str() + equals + 1),
                    1);
    at = end + 1;
  }
}

// What the dead have left goes once it lasts elsewhere.
void RemoveDead() {
  for (auto& found : deadFiles) found->Remove();
  deadFiles.clear();
}

void JoinWriter() {
  platform::JoinThread(writer);
  writer = nullptr;
}

void Write(void*) {
  file.Replace(text);
  writing.Publish(0);
}

}  // namespace

void FindDeadCopy() {
  dead.reset();
  deadFiles.clear();
  std::int64_t newest = -1;
  for (const std::string& name : platform::ListFolder(AppDir)) {
    if (!name.starts_with(kFront) || !name.ends_with(kEnding)) continue;
    const std::string path = AppDir + name;
    auto found = std::make_unique<platform::OwnedFile>();
    if (!found->Adopt(path)) continue;
    std::string bytes;
    Copy copy;
    const std::int64_t written = platform::FileTime(path.c_str());
    if (written > newest && platform::ReadWholeFile(path.c_str(), bytes, kLargestCopy) &&
        Parse(bytes, copy)) {
      newest = written;
      dead = std::make_unique<Copy>(std::move(copy));
    }
    deadFiles.push_back(std::move(found));
  }
  if (dead) TakeSettings(dead->settings);
}

const std::string* DeadCopyPresets() {
  return dead ? &dead->presets : nullptr;
}

const std::string* DeadCopyList() {
  return dead ? &dead->list : nullptr;
}

void BeginRunningCopy() {
  file.Begin(AppDir + std::string(kFront) + platform::RandomName() + kEnding);
  dead.reset();
  text = Compose();
  if (file.Replace(text)) RemoveDead();
  platform::SetTimer(kRunningCopyTimer, kRefreshMilliseconds);
}

void RefreshRunningCopy() {
  if (writing.Acquire()) return;
  JoinWriter();
  std::string now = Compose();
  if (now == text) return;
  text = std::move(now);
  writing = 1;
  writer = platform::StartThread(Write, nullptr);
  if (!writer) Write(nullptr);
}

void AwaitRunningCopy(int milliseconds) {
  constexpr int kPollMilliseconds = 10;
  for (; writing.Acquire() && milliseconds > 0; milliseconds -= kPollMilliseconds)
    platform::Sleep(kPollMilliseconds);
}

void EndRunningCopy(bool saved) {
  JoinWriter();
  if (saved) {
    RemoveDead();
    file.Remove();
  } else {
    file.Release();
  }
}

}  // namespace kwo
