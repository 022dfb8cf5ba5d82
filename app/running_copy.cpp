#include "app/running_copy.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
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

platform::KeptFile HistoryKept;

namespace {

constexpr char kFront[] = "RUNNING-", kEnding[] = ".KWO";
constexpr char kFirstLine[] = "KWO";
constexpr std::size_t kLargestCopy = 16 << 20;
constexpr int kRefreshMilliseconds = 4000;

std::unique_ptr<RunningCopy> dead;
std::vector<std::unique_ptr<platform::OwnedFile>> deadFiles;

// This run's.  While `writing` is set the thread has `text` and the file for itself.
platform::OwnedFile file;
std::string text;
platform::Thread* writer = nullptr;
Shared<int> writing;
bool written = false;  // `text` stands in the file

// The first line tells the lengths of the parts that follow it.
template <typename Copy>
auto PartsOf(Copy& copy) {
  return std::array{&copy.settings, &copy.presets, &copy.list, &copy.notedHistory,
                    &copy.notedPresets};
}

std::string Compose() {
  RunningCopy copy;
  for (const Setting& setting : CurrentSettings())
    copy.settings += std::string(setting.name) + '=' + std::to_string(setting.value) + '\n';
  copy.presets = PresetBytes();
  copy.list = PlaylistText();
  copy.notedHistory = HistoryKept.Noted();
  copy.notedPresets = EqPresetFile.Noted();
  std::string head = kFirstLine, body;
  for (const std::string* part : PartsOf(copy)) {
    head += ' ' + std::to_string(part->size());
    body += *part;
  }
  return head + '\n' + body;
}

bool Parse(const std::string& bytes, RunningCopy& copy) {
  std::size_t at = bytes.find('\n') + 1;
  std::istringstream head(bytes.substr(0, at));
  std::string word;
  if (at == 0 || !(head >> word) || word != kFirstLine) return false;
  for (std::string* part : PartsOf(copy)) {
    std::size_t size;
    if (!(head >> size) || size > bytes.size() - at) return false;
    *part = bytes.substr(at, size);
    at += size;
  }
  return at == bytes.size();
}

void StoreSettings(const std::string& lines) {
  for (std::size_t at = 0; at < lines.size();) {
    const std::size_t end = std::min(lines.find('\n', at), lines.size());
    const std::size_t equals = lines.find('=', at);
    if (equals < end)
      SetSettingInt(lines.substr(at, equals - at).c_str(), std::atoi(lines.c_str() + equals + 1));
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
  written = file.Replace(text);
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
    RunningCopy copy;
    const std::int64_t when = platform::FileTime(path.c_str());
    if (when > newest && platform::ReadWholeFile(path.c_str(), bytes, kLargestCopy) &&
        Parse(bytes, copy)) {
      newest = when;
      dead = std::make_unique<RunningCopy>(std::move(copy));
    }
    deadFiles.push_back(std::move(found));
  }
  if (dead) StoreSettings(dead->settings);
}

const RunningCopy* DeadCopy() {
  return dead.get();
}

void BeginRunningCopy() {
  file.Begin(AppDir + std::string(kFront) + platform::RandomName() + kEnding);
  dead.reset();
  text = Compose();
  written = file.Replace(text);
  if (written) RemoveDead();
  platform::SetTimer(kRunningCopyTimer, kRefreshMilliseconds);
}

void RefreshRunningCopy() {
  if (writing.Acquire()) return;
  JoinWriter();
  if (written) RemoveDead();
  std::string now = Compose();
  if (written && now == text) return;
  text = std::move(now);
  writing = 1;
  writer = platform::StartThread(Write, nullptr, "kwo copy");
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
