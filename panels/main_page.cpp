#include "panels/main_page.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "engine/transport.h"
#include "panels/panel_tools.h"
#include "panels/top_bar.h"
#include "panels/visualisers.h"
#include "playlist/playlist.h"
#include "toolkit/skin_description.h"

namespace kwo {

Shared<int> MainDisplayMode;
Shared<int> MainSAMode;

namespace {

constexpr int kDisplayModes = 4;
constexpr int kSwingProgram = 2;
constexpr int kDigitFrames = 10;
constexpr char kProductName[] = "Brightwater Music Deck";
constexpr char kNotice[] = "Made with care by Tavarine";

// The display modes.
enum DisplayMode : int { DISPLAY_ADDED, DISPLAY_OPAQUE, DISPLAY_TILED, DISPLAY_FULL };

// The buttons beside the time, each of which goes on to the next mode.
struct ModeButton {
  int index;
  const char *file, *name;
};
constexpr ModeButton kDisplayButton{WIDGET_DISPLAY_MODE, "ma-mode.bmp", "Next display mode"};
constexpr ModeButton kVisualiserButton{WIDGET_VISUALISER_MODE, "ma-wave.bmp", "Next visualiser"};

float SeekStartSeconds;
int SeekStartX, SeekStartY;
int BarsHidden;

// Widget 59's place is that of BuildMainPage, whatever has been in its stead since.
platform::Rectangle visualiserPlace;

void MakeVisualiser() {
  const platform::Rectangle& place = visualiserPlace;
  TheSkinHost->CreateCanvasWidget(WIDGET_VISUALISER, kLabelFill, place.width, place.height,
                                  IMAGE_WIDGET, GROUP_INTERFACE);
  Widget& canvas = *Find(WIDGET_VISUALISER);
  canvas.SetWays({{Layout().width, place.y}, {place.x, place.y}, {-place.width, place.y}}, 100,
                 3.0f, 6.0f);
  canvas.blendMode = BLEND_ADD;
  canvas.visible = 1;
}

void MakeWindowVisualiser() {
  const Layout layout;
  TheSkinHost->CreateCanvasWidget(WIDGET_VISUALISER, 0, layout.width, layout.height, IMAGE_WIDGET,
                                  GROUP_INTERFACE);
  Find(WIDGET_VISUALISER)->visible = 1;
}

// Replaces widget 59; neither the redraw thread nor the wave output may touch it meanwhile.
void ReplaceVisualiser(void (*make)(), int state) {
  TheSkinHost->VisualiserMode = VISUALISER_OFF;
  make();
  TheSkinHost->VisualiserWidget = Find(WIDGET_VISUALISER);
  TheSkinHost->VisualiserMode = state;
}

// Digits stand in pairs with a third of a digit between.
int DigitX(int digit, int width) {
  const int gaps[] = {0, width / 3, width / 3 * 2};
  return width * digit + gaps[digit / 2];
}

void BuildStrip() {
  const auto make = [](const ModeButton& row, int x) {
    return MakeStripButton(row.index, row.file, GROUP_MAIN_STRIP, x);
  };
  const int left = make(kDisplayButton, 0) + 10;
  for (int i = 0; i < kDigits; ++i) {
    Widget& digit = *MakeImage(WIDGET_DIGIT + i, "ma-time.bmp", GROUP_DIGITS);
    digit.SetFrameCount(0, kDigitFrames);
    digit.SetPlace(DigitX(i, digit.width), 0);
    digit.visible = 1;
  }
  const Widget& digit = *Find(WIDGET_DIGIT);
  const int half = 3 * digit.width + digit.width / 3;
  const int right = left + 2 * half + 10;
  const int buttonWidth = make(kVisualiserButton, right);
  PlaceStrip(GROUP_MAIN_STRIP, LAYER_CONTROLS, right + buttonWidth, 100,
             (Layout().width - 2 * (half + left)) / 2);
  Group(GROUP_DIGITS)
      .PlaceGroup(&Group(GROUP_MAIN_STRIP), left, digit.height / 3, LAYER_CONTROLS, 2 * half,
                  digit.height, 0, 0);
  Group(GROUP_DIGITS).visible = 1;
}

void RunMainPage(int program, int wait) {
  if (!VisualiserFillsWindow()) Move(WIDGET_VISUALISER, program);
  Move(WIDGET_SONG_TEXT, program);
  MoveGroup(GROUP_MAIN_STRIP, program);
  PulsePageButton(PAGE_MAIN, program);
  Move(WIDGET_MAIN_BOX, program);
  for (int i = 0; i < kDigits; ++i) Move(WIDGET_DIGIT + i, program);
  if (wait) Find(WIDGET_MAIN_BOX)->WaitSlot(kMoveSlot);
}

void BeginSeek(platform::Point place) {
  // A second button may be pressed before the first one is released.
  if (!transport.SeekActive) platform::ShowPointer(false);
  transport.SeekActive = 1;
  platform::SetCapture();
  SeekStartSeconds = TheMixer->Slot(0)->position;
  SeekStartX = place.x;
  SeekStartY = place.y;
}

// One pixel is one second.
float DraggedSeconds(int x) {
  return std::max(0.0f, static_cast<float>(x - SeekStartX) + SeekStartSeconds);
}

void ShowDraggedTime(float seconds) {
  constexpr float kLongest = 2e7f;  // whose hundredths are still an int
  OnMixerEvent(TheMixer, EVENT_POSITION, TheMixer->Slot(0),
               static_cast<int>(std::min(seconds, kLongest) * 100), 1, 0);
}

void LetGoOfTime() {
  transport.SeekActive = 0;
  platform::ReleaseCapture();
  platform::ShowPointer(true);
}

void EndSeek(int x) {
  SetClientPointer({SeekStartX, SeekStartY});
  LetGoOfTime();
  SeekSong(DraggedSeconds(x), TheMixer->Slot(0)->active != 0);
}

void ToggleBars() {
  if (BarsHidden) {
    ShowTopBar(0);
    ShowMainPage(0);
  } else {
    HideTopBar(0);
    HideMainPage(0);
  }
  BarsHidden = !BarsHidden;
}

bool VisualiserTakesPresses() {
  return MainDisplayMode == DISPLAY_FULL && playlist.count > 0;
}

void OnPress() {
  if (playlist.count == 0) return;
  const platform::Point place = ClientPointer();
  if (Group(GROUP_DIGITS).Contains(place.x, place.y)) BeginSeek(place);
  if (TheSkinHost->HitTest(place.x, place.y) == Find(WIDGET_VISUALISER)) PressVisualiser();
}

void OnDrag() {
  const AudioSource* source = TheMixer->Slot(0)->Source();
  if (!source) return;
  const auto end = static_cast<float>(source->info[INFO_SECONDS]);
  ShowDraggedTime(std::min(DraggedSeconds(ClientPointer().x), end));
}

// "[MP3]-[192K]-[STEREO]-[04:37]" of the song on voice 0.
void WriteFacts(char* text, std::size_t size) {
  const AudioSource* source = TheMixer->Slot(0)->Source();
  text[0] = 0;
  if (!source) return;
  const auto kind = static_cast<SourceKind>(int{source->info[INFO_KIND]});
  const char* kindText = kind == SourceKind::kMpeg  ? "[MP3]-"
                         : kind == SourceKind::kWav ? "[WAV]-"
                                                    : "";
  const int seconds = source->info[INFO_SECONDS];
  const int minutes = seconds / 60;
  std::snprintf(text, size, "%s[%dK]-%s[%d%d:%d%d]", kindText, source->info[INFO_BIT_RATE] / 1000,
                source->info[INFO_CHANNELS] == 1 ? "[MONO]-" : "[STEREO]-", minutes / 10,
                minutes % 10, seconds % 60 / 10, seconds % 60 % 10);
}

// The two lines of the song's text.
struct SongText {
  SongText() {
    {
      PlaylistReader reader;
      const int song = playlist.currentSong;
      const PlaylistEntry* entry = song < playlist.count ? reader.Entry(song) : nullptr;
      if (entry) entry->displayName.Load(name);
      known = entry != nullptr;
    }
    WriteFacts(facts, sizeof facts);
  }
  const char* First() const { return known ? name : kProductName; }
  const char* Second() const { return known ? facts : kNotice; }

  char name[kPathSize], facts[64];
  bool known = false;  ///< there is a current song
};

// The time that the digits show: a label whose value can be set, which seeks.
void ListTime(platform::ControlList& list) {
  platform::Control* time = ListWidget(list, WIDGET_DIGIT, "", Named::kByLabel);
  if (!time) return;
  const auto digit = [](int n) { return int{Find(WIDGET_DIGIT + n)->frame}; };
  const int minutes = 10 * digit(0) + digit(1), seconds = 10 * digit(2) + digit(3);
  time->role = platform::Role::kLabel;
  char name[32];
  std::snprintf(name, sizeof name, "Time %d:%02d", minutes, seconds);
  time->name = name;
  const Widget& last = *Find(WIDGET_DIGIT + kDigits - 1);
  time->place.width = last.RestPlace().x + last.width - time->place.x;
  time->busy = true;
  time->value = 60 * minutes + seconds;
  if (const AudioSource* source = TheMixer->Slot(0)->Source())
    time->most = source->info[INFO_SECONDS];
}

void ListVisualiser(platform::ControlList& list) {
  platform::Control* visualiser =
      ListWidget(list, WIDGET_VISUALISER, "Visualiser", Named::kByLabel);
  if (!visualiser) return;
  if (!VisualiserTakesPresses()) visualiser->role = platform::Role::kPicture;
  if (VisualiserFillsWindow()) visualiser->place = Group(GROUP_INTERFACE).Shown();
}

}  // namespace

void PressVisualiser() {
  if (VisualiserTakesPresses()) ToggleBars();
}

bool VisualiserFillsWindow() {
  return MainDisplayMode == DISPLAY_TILED || MainDisplayMode == DISPLAY_FULL;
}

void BuildMainPage() {
  const Layout layout;
  MakeImage(TileOf(PAGE_MAIN), "tile-ma.bmp", GROUP_INTERFACE);
  const Widget* box = MakeGroupBox(WIDGET_MAIN_BOX, "ma-groupbox.bmp", skin.MainEffect);
  Find(WIDGET_MAIN_BOX)->layer = LAYER_BOXES;
  BuildStrip();

  const int textY = box->height + layout.margin;
  const int textWidth = layout.width - layout.fontHeight;
  TheSkinHost->CreateCanvasWidget(WIDGET_SONG_TEXT, kLabelFill, textWidth,
                                  2 * layout.fontHeight + 2, IMAGE_WIDGET, GROUP_INTERFACE);
  Widget& text = *Find(WIDGET_SONG_TEXT);
  text.layer = LAYER_TEXT;
  text.SetWays({{layout.width, textY}, {layout.margin, textY}, {-text.width, textY}}, 100, 2.5f,
               10.0f);
  text.SetRamp(kSwingProgram, -80, 40, 10.0f, MOTION_TO_AND_FRO);
  text.RunProgram(kNudgeSlot, kSwingProgram);
  text.blendMode = BLEND_ADD;
  text.visible = 1;

  const int canvasY = textY + text.height;
  visualiserPlace = {layout.margin, canvasY, textWidth, layout.Bottom() - canvasY};
  MakeVisualiser();
}

void ShowMainPage(int wait) {
  RunMainPage(kEnterProgram, wait);
}

void HideMainPage(int wait) {
  RunMainPage(kLeaveProgram, wait);
}

void ShowSongTime(int hundredths) {
  if (!TheSkinHost) return;
  const int seconds = hundredths / 100;
  const int minutes = seconds / 60;
  const int frames[kDigits] = {minutes / 10,      minutes % 10,         seconds % 60 / 10,
                               seconds % 60 % 10, hundredths / 10 % 10, hundredths % 10};
  for (int i = 0; i < kDigits; ++i)
    if (Widget* digit = Find(WIDGET_DIGIT + i)) digit->SetFrame(frames[i]);
}

void RefreshSongLine() {
  Widget* text = TheSkinHost ? Find(WIDGET_SONG_TEXT) : nullptr;
  if (!text) return;
  const SongText song;
  const std::uint32_t color = TheSkinHost->fontColor;
  text->SetLabelAt(song.First(), color, kLabelFill, 0, 0);
  text->SetLabelAt(song.Second(), color, kNoKey, 0, TheSkinHost->fontHeight + 1);
  platform::SetCaption(song.known ? song.name : "KWO");
}

void PushSamples(const std::int16_t* samples, int count) {
  SkinHost* host = TheSkinHost;
  if (host && host->VisualiserMode && host->active) host->ring.Write(samples, count);
}

void SeekSong(float seconds, bool sounding) {
  ShowDraggedTime(seconds);
  TransportSeek(seconds, sounding);
}

void CancelSeek() {
  if (!transport.SeekActive) return;
  LetGoOfTime();
  // What the drag has shown: the song's own time again.
  ShowDraggedTime(TheMixer->Slot(0)->position);
}

void ListMainPage(platform::ControlList& list) {
  const SongText song;
  platform::Control* text = ListWidget(
      list, WIDGET_SONG_TEXT, std::string(song.First()) + "\n" + song.Second(), Named::kByLabel);
  if (text) text->role = platform::Role::kLabel;
  ListTime(list);
  for (const ModeButton& row : {kDisplayButton, kVisualiserButton})
    ListWidget(list, row.index, row.name, Named::kByTip);
  ListVisualiser(list);
}

void SetOnMainPage(int control, double value) {
  if (control == WIDGET_DIGIT) SeekSong(static_cast<float>(value), TheMixer->Slot(0)->active != 0);
}

void SetMainDisplayMode(int mode) {
  SkinHost& host = *TheSkinHost;
  if (mode < 0 || mode >= kDisplayModes) mode = DISPLAY_ADDED;
  MainDisplayMode = mode;
  if (mode == DISPLAY_OPAQUE) {
    Find(WIDGET_VISUALISER)->blendMode = BLEND_COPY;
    return;
  }
  const RedrawPause pause(host);
  switch (mode) {
    case DISPLAY_ADDED:
      host.ShowTile(-1, skin.BackgroundEffect);
      host.ShowTile(CurrentPage, skin.BackgroundEffect);
      ReplaceVisualiser(MakeVisualiser, VISUALISER_ON_PAGE);
      Move(WIDGET_VISUALISER, kEnterProgram);
      break;
    case DISPLAY_TILED:
      host.VisualiserMode = VISUALISER_EVERYWHERE;
      host.ShowTile(WIDGET_VISUALISER, 0);
      break;
    default:
      ReplaceVisualiser(MakeWindowVisualiser, VISUALISER_EVERYWHERE);
      host.ShowTile(WIDGET_VISUALISER, 0);
      break;
  }
}

void SetMainSAMode(int mode) {
  if (mode < 0 || mode >= static_cast<int>(kVisualiserTable.size())) mode = 0;
  MainSAMode = mode;
  TheSkinHost->VisualiserCallback = kVisualiserTable[static_cast<std::size_t>(mode)];
}

void MainPageHandler(unsigned event, Widget* widget, float, float) {
  switch (event) {
    case platform::kMessageLeftDown:
    case platform::kMessageRightDown:
      OnPress();
      break;
    case platform::kMessageMouseMove:
      if (transport.SeekActive) OnDrag();
      break;
    case platform::kMessageLeftUp:
    case platform::kMessageRightUp:
      if (transport.SeekActive) EndSeek(ClientPointer().x);
      break;
    case EVENT_BUTTON:
      if (widget == Find(WIDGET_DISPLAY_MODE)) SetMainDisplayMode(MainDisplayMode + 1);
      if (widget == Find(WIDGET_VISUALISER_MODE)) SetMainSAMode(MainSAMode + 1);
      break;
    default:
      break;
  }
}

}  // namespace kwo
