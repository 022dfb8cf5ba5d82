#include "app/application.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "app/desktop_requests.h"
#include "app/main_events.h"
#include "app/running_copy.h"
#include "app/saved_state.h"
#include "app/shell_services.h"
#include "app/window_place.h"
#include "base/hooks.h"
#include "engine/shuffle_master.h"
#include "engine/transport.h"
#include "panels/application_state.h"
#include "panels/equaliser_presets.h"
#include "panels/main_page.h"
#include "panels/mixer_page.h"
#include "panels/pages.h"
#include "panels/panel_tools.h"
#include "panels/playlist_page.h"
#include "panels/top_bar.h"
#include "panels/visualisers.h"
#include "panels/window_page.h"
#include "platform/accessibility.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/launch.h"
#include "platform/media_controls.h"
#include "platform/messages.h"
#include "playlist/playlist.h"
#include "playlist/playlist_files.h"
#include "playlist/tag_reader.h"
#include "settings/settings.h"
#include "toolkit/menu_colors.h"
#include "toolkit/skin_description.h"

namespace kwo {
namespace {

constexpr int kFrameRate = 20;
constexpr int kFontHeight = 12;
constexpr char kFontFace[] = "굴림체";
constexpr std::size_t kMaxDescription = 1 << 20;
constexpr int kFadeLimitMilliseconds = 3000;
constexpr int kFadePollMilliseconds = 50;
constexpr int kTagsMilliseconds = 100;
constexpr int kCopyLimitMilliseconds = 1500;

// What this run has to save and has not saved for good.
bool settingsDue = false, historyDue = false;
// Of a saved list, what has to be walked.
std::string restOfList;

void SetHooks() {
  hooks.stateChanged = platform::PostStateChanged;
  hooks.refreshSongLine = RefreshSongLine;
  hooks.refreshPlaylistPage = RefreshPlaylistPage;
  hooks.followSong = FollowSong;
  hooks.beforeChoice = RefreshRunningCopy;
  hooks.showSongTime = ShowSongTime;
  hooks.pushSamples = PushSamples;
  hooks.transportStop = TransportStop;
}

bool NoThread() {
  std::fputs("kwo: the system gives no further thread\n", stderr);
  return false;
}

bool StartEngine() {
  TheMixer = new (std::nothrow) Mixer;
  if (!TheMixer) return false;
  if (!TheMixer->Prepare(OnMixerEvent)) return false;
  return TheMixer->StartThread() || NoThread();
}

// The folder of the executable; empty, the current folder, for one whose path is too long.
bool FindAppDir() {
  std::string folder = platform::ExecutablePath();
  folder.erase(folder.rfind('\\') + 1);
  if (folder.size() >= sizeof AppDir) {
    std::fputs("kwo: the path of the program's folder is too long\n", stderr);
    return false;
  }
  std::memcpy(AppDir, folder.c_str(), folder.size() + 1);
  return true;
}

bool ReadSkinDescription(platform::Rectangle& window) {
  std::string text;
  const std::string skins = std::string(AppDir) + "skin\\";
  if (!platform::ReadWholeFile((skins + SkinName + "\\ui.txt").c_str(), text, kMaxDescription) &&
      !platform::ReadWholeFile((skins + "default\\ui.txt").c_str(), text, kMaxDescription))
    return false;
  ParseSkinDescription(text, window);
  return true;
}

// The part of `window` that lies within the background; all of that where no part does.
platform::Rectangle Within(const platform::Rectangle& window, int width, int height) {
  const int left = std::clamp(window.x, 0, width), top = std::clamp(window.y, 0, height);
  const int right = std::clamp(window.width, 0, width - left) + left;
  const int bottom = std::clamp(window.height, 0, height - top) + top;
  if (right == left || bottom == top) return {0, 0, width, height};
  return {left, top, right - left, bottom - top};
}

platform::Point CentredPlace() {
  const platform::Rectangle screen = FirstScreen();
  return {screen.x + (screen.width - TheSkinHost->windowWidth) / 2,
          screen.y + (screen.height - TheSkinHost->windowHeight) / 2};
}

bool OpenWindow(const platform::Rectangle& described) {
  SkinHost& host = *TheSkinHost;
  // Gives 0 here, since the canvas comes with the background.
  host.CreateMainWindow(SkinName, MainCallback, 0, 0, 0, 0, kFrameRate);
  if (!platform::MainWindowExists()) return false;
  if (!host.LoadBackground("background.bmp", skin.TransparentColor)) return false;
  host.SetSkinFont(kFontFace, kFontHeight, skin.FontColor);
  platform::SetMenuColors(SkinMenuColors());
  host.colorKey = host.defaultColorKey = skin.TransparentColor;
  const platform::Rectangle window = Within(described, host.windowWidth, host.windowHeight);
  host.groups[GROUP_INTERFACE].PlaceGroup(nullptr, window.x, window.y, 0, window.width,
                                          window.height, 0, 0);
  const platform::Point place = CentredPlace();
  SetSettingInt("Y", place.y);
  SetSettingInt("X", place.x);
  host.MoveHostWindow(place.x, place.y, host.windowWidth, host.windowHeight);
  host.groups[GROUP_INTERFACE].visible = 1;
  return true;
}

void BuildInterface() {
  BuildPages();
  CurrentPage = PAGE_MAIN;
  MixerSubPage = 0;
  TheSkinHost->VisualiserWidget = Find(WIDGET_VISUALISER);
  TheSkinHost->VisualiserCallback = kVisualiserTable[0];
  TheSkinHost->VisualiserMode = VISUALISER_ON_PAGE;
}

void RestoreWindow() {
  platform::Point saved = CentredPlace();
  ReadWindowSettings(saved);
  WindowFlags &= 7;
  if (CurrentAutoMode() > AUTO_MINIMISE) WindowFlags &= ~3;
  const platform::Size size{TheSkinHost->windowWidth, TheSkinHost->windowHeight};
  platform::Point place = SeenPlace(saved, size);
  if (platform::ScreensAreNew()) place = PlaceOnScreen({place.x, place.y, size.width, size.height});
  platform::MoveWindow(place);
  ApplyWindowFlags();
}

std::string HistoryFile() {
  return std::string(AppDir) + "HISTORY.PLA";
}

bool SaveHistory() {
  return SavePlaylistFile(HistoryFile().c_str(), &HistoryKept);
}

bool SaveSettings() {
  const bool presets = WriteSettings();
  return FlushSettings() && presets;
}

// A first run finds the demo song beside the program, so that Play makes music at once.  False
// where the list is not known to the end: then nothing may be saved in its place.
bool RestoreList() {
  const std::string history = HistoryFile();
  HistoryKept.Note(history.c_str());
  restOfList.clear();
  std::string list;
  if (const RunningCopy* copy = DeadCopy()) {
    HistoryKept.GoOnFrom(copy->notedHistory);
    restOfList = RestorePlaylist(copy->list);
  } else {
    const PlaylistFile found = ReadPlaylistFile(history.c_str(), list);
    if (found == PlaylistFile::kSilent) return false;
    if (found == PlaylistFile::kRead) restOfList = RestorePlaylist(list);
    if (found == PlaylistFile::kAbsent) AddPath((std::string(AppDir) + "music").c_str());
  }
  RefreshPlaylistPage();
  return !platform::EndAsked();
}

void RestoreCurrentSong(int saved) {
  playlist.currentSong = playlist.count > saved ? std::max(saved - 1, -1) : -1;
  if (AdvanceSong() >= 0 && SongAnswers(playlist.currentSong)) {
    TransportLoad();
  } else {
    SongChanged();
  }
}

// The walk may be long; the window is up.  False as for `RestoreList`.
bool AddRestOfList(int savedSong) {
  if (restOfList.empty()) return true;
  AddPlaylistText(std::exchange(restOfList, {}));
  if (transport.shuffleOn) BuildShuffleTable();
  if (playlist.currentSong < 0) RestoreCurrentSong(savedSong);
  RefreshPlaylistPage();
  return !platform::EndAsked();
}

int NoList() {
  std::fputs("kwo: the list could not be read to its end\n", stderr);
  return 0;
}

// The stop's fade-outs end here, or would have ended: without a device nothing moves them on.
void WaitForFades() {
  for (int waited = 0; waited < kFadeLimitMilliseconds; waited += kFadePollMilliseconds) {
    bool fading = false;
    for (int slot = 0; slot < kVoices; ++slot) {
      const Voice* voice = TheMixer->Slot(slot);
      fading = fading || (voice && !voice->ramps[0].Idle());
    }
    if (!fading) return;
    platform::Sleep(kFadePollMilliseconds);
  }
}

void RunMessageLoop() {
  platform::Message message;
  for (;;) {
    if (!platform::PeekMessage(message)) platform::WaitMessage();
    if (!platform::GetMessage(message)) return;
    platform::DispatchMessage(message);
  }
}

}  // namespace

int StartUp() {
  std::srand(platform::GetTickCount());
  ResetMainEvents();
  TheSkinHost = new (std::nothrow) SkinHost;
  if (!TheSkinHost) return 0;
  SetHooks();
  if (!StartEngine()) return 0;
  if (!FindAppDir()) return 0;
  std::snprintf(SkinName, sizeof SkinName, "default");
  platform::RemoveAbandonedFiles(AppDir);
  FindDeadCopy();
  SetSettingString("Skin", SkinName);
  platform::Rectangle window{0, 0, 0, 0};
  if (!ReadSkinDescription(window)) {
    std::fputs("kwo: there is no skin/default/ui.txt beside the program\n", stderr);
    return 0;
  }
  if (!OpenWindow(window)) {
    std::fputs(platform::MainWindowExists() ? "kwo: skin/default/background.bmp can't be read\n"
                                            : "kwo: there is no desktop to open the window on\n",
               stderr);
    return 0;
  }
  platform::OpenLaunch();
  BuildInterface();
  AddTrayIcon();
  platform::CreateInputEdit("Preset name");
  InputText.Store("");
  ReadDisplaySettings();
  SetMainDisplayMode(MainDisplayMode);
  SetMainSAMode(MainSAMode);
  const int savedSong = ReadPlaylistSettings();
  LoadEqPresets();
  if (const RunningCopy* copy = DeadCopy()) {
    EqPresetFile.GoOnFrom(copy->notedPresets);
    LoadPresetBytes(copy->presets);
  }
  ReadMixerSettings();
  ApplyMixerPage();
  if (!DjSetMode(transport.djMode)) return NoThread();
  RestoreWindow();
  if (!RestoreList()) return NoList();
  if (transport.shuffleOn) BuildShuffleTable();
  RestoreCurrentSong(savedSong);
  FlushSettings();
  TheSkinHost->BringToFront();
  if (!TheSkinHost->StartRedraw()) return NoThread();
  if (!VisualiserFillsWindow()) TheSkinHost->ShowTile(PAGE_MAIN, skin.BackgroundEffect);
  ShowMainPage(0);
  ShowTopBar(1);
  if (!AddRestOfList(savedSong)) return NoList();
  settingsDue = historyDue = true;
  BeginRunningCopy();
  BeginReadingTags();
  platform::SetTimer(kTagsTimer, kTagsMilliseconds);
  AppReady = 1;
  OpenToDesktop();
  platform::OpenAccessibility(ListControls);
  return 1;
}

void SaveState() {
  if (!settingsDue && !historyDue) return;
  const bool settings = !settingsDue || SaveSettings();
  const bool history = !historyDue || SaveHistory();
  if (settings && history) EndRunningCopy(true);
}

int ShutDown() {
  const bool wasUp = AppReady != 0;
  AppReady = 0;
  platform::CloseAccessibility();
  platform::CloseMediaControls();
  EndReadingTags();
  DjEnd();
  if (wasUp) {
    TransportStop();
    HideCurrentPage(0);
    HideTopBar(1);
    WaitForFades();
    AwaitRunningCopy(kCopyLimitMilliseconds);
    RefreshRunningCopy();
    settingsDue = !SaveSettings();
    RemoveTrayIcon();
    TheSkinHost->StopRedraw();
  }
  // A render thread that hangs in a read keeps what it works on, and shows, until the process ends
  // around it.
  if (!TheMixer || TheMixer->StopThread()) {
    delete TheMixer;
    TheMixer = nullptr;
    delete TheSkinHost;
    TheSkinHost = nullptr;
  }
  if (wasUp) EndRunningCopy(SaveHistory() && !settingsDue);
  settingsDue = historyDue = false;
  return 1;
}

int RunApplication() {
  const int up = StartUp();
  if (up) RunMessageLoop();
  ShutDown();
  platform::CloseLaunch(up != 0);
  return up ? 0 : 1;
}

}  // namespace kwo
