#include "app/application.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "platform/files.h"
#include "platform/messages.h"
#include "settings/settings.h"

namespace kwo {

char AppDir[256];
char SkinName[256];
char InputText[256];
int CurrentPage = 0;
int MixerSubPage = 0;
int WindowFlags = 0;
Shared<int> AppReady;

namespace {

constexpr int kBlockSize = 4608;
constexpr int kSampleRate = 44100;
constexpr int kChannels = 2;
constexpr int kVoices = 3;

// The folder of the executable; empty, the current folder, for one whose path is too long.
void FindAppDir() {
  std::string folder = platform::ExecutablePath();
  folder.erase(folder.rfind('\\') + 1);
  AppDir[0] = 0;
  if (folder.size() < sizeof AppDir) std::memcpy(AppDir, folder.c_str(), folder.size() + 1);
}

void RunMessageLoop() {
  platform::Message message;
  do {
    if (!platform::PeekMessage(message)) platform::WaitMessage();
  } while (platform::GetMessage(message));
}

}  // namespace

int StartUp() {
  TheMixer = new (std::nothrow) Mixer;
  if (!TheMixer) return 0;
  TheMixer->Init(kBlockSize, kSampleRate, kChannels, OnMixerEvent);
  for (int slot = 0; slot < kVoices; ++slot)
    if (!TheMixer->CreateVoice(slot, kBlockSize)) return 0;
  TheMixer->StartThread();
  FindAppDir();
  std::snprintf(SkinName, sizeof SkinName, "default");
  GetSettingString("Skin", SkinName, 1);
  CurrentPage = MixerSubPage = 0;
  FlushSettings();
  AppReady = 1;
  return 1;
}

int ShutDown() {
  AppReady = 0;
  FlushSettings();
  if (TheMixer) TheMixer->StopThread();
  delete TheMixer;
  TheMixer = nullptr;
  return 1;
}

int RunApplication() {
  StartUp();
  RunMessageLoop();
  return ShutDown();
}

}  // namespace kwo
