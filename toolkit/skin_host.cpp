#include "toolkit/skin_host.h"

#include <algorithm>
#include <iterator>
#include <new>

#include "base/handshake.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "toolkit/window_shape.h"

namespace kwo {

using platform::Message;

SkinHost* TheSkinHost = nullptr;

namespace {

bool Loads(SkinBitmap& bitmap, const std::string& folder, const char* fileName) {
  return bitmap.LoadFromFile((folder + fileName).c_str()) != 0;
}

}  // namespace

SkinHost::SkinHost() = default;

SkinHost::~SkinHost() {
  DestroyHost();
}

int SkinHost::CreateMainWindow(const char* skinName, HostCallback newCallback, int x, int y,
                               int width, int height, int rate) {
  DestroyHost();
  callback = newCallback;
  frameRate = rate;
  windowWidth = width;
  windowHeight = height;
  std::string folder = platform::ExecutablePath();
  folder.erase(folder.rfind('\\') + 1);
  skinPath = folder + "skin\\" + skinName + "\\";
  defaultSkinPath = folder + "skin\\default\\";
  if (!platform::CreateMainWindow(HostWindowProc, this)) return 0;
  platform::MoveWindow({x, y});
  canvas = std::make_unique<SkinBitmap>();
  if (!canvas->CreateBlank(width, height, 0)) return 0;
  platform::ResizeWindow({width, height});
  groups[0].PlaceGroup(nullptr, 0, 0, 0, width, height, 0, 0);
  return 1;
}

void SkinHost::DestroyHost() {
  StopRedraw();
  drawing = paused = 0;
  RemoveAllWidgets();
  background.reset();
  canvas.reset();
  platform::DeleteFont(font);
  font = nullptr;
  currentTile = previousTile = -1;
  VisualiserMode = VISUALISER_OFF;
  VisualiserWidget = nullptr;
  VisualiserCallback = nullptr;
  InputActiveTick = 0;
  active = 0;
  callback = nullptr;
  windowDrag = false;
  platform::DestroyMainWindow();
}

void SkinHost::SetSkinFont(const char* face, int height, std::uint32_t color) {
  platform::DeleteFont(font);
  font = platform::CreateFont(face, height);
  fontHeight = height;
  fontColor = color;
}

void SkinHost::MoveHostWindow(int x, int y, int width, int height) {
  windowWidth = width;
  windowHeight = height;
  platform::MoveWindow({x, y});
  platform::ResizeWindow({width, height});
}

void SkinHost::BringToFront() {
  platform::ShowWindow(platform::WindowMinimised() ? platform::WindowShow::kRestore
                                                   : platform::WindowShow::kShow);
  platform::ActivateWindow();
  // The main thread may not take the paint message for long: start-up sleeps through the entrance.
  PaintWhole();
}

void SkinHost::PaintWhole() {
  if (!canvas) return;
  canvas->PresentToWindow(0, 0, windowWidth, windowHeight);
  paintedBeside = true;
  platform::ShowPresented();
}

Widget* SkinHost::NewWidget(int index) {
  if (index < 0 || index >= kWidgets) return nullptr;
  RemoveWidget(index);
  Widget* widget = new (std::nothrow) Widget;
  widgets[index].Publish(widget);
  return widget;
}

int SkinHost::CreateImageWidget(int index, const char* fileName, int width, int height, int kind,
                                int group) {
  Widget* widget = NewWidget(index);
  return widget ? widget->LoadImage(this, fileName, width, height, kind, group) : 0;
}

int SkinHost::CreateCanvasWidget(int index, std::uint32_t fillColor, int width, int height,
                                 int kind, int group) {
  Widget* widget = NewWidget(index);
  return widget ? widget->InitCanvas(this, fillColor, width, height, kind, group) : 0;
}

void SkinHost::RemoveWidget(int index) {
  delete GetWidget(index);
  if (index >= 0 && index < kWidgets) widgets[index] = nullptr;
}

void SkinHost::RemoveAllWidgets() {
  for (int index = 0; index < kWidgets; ++index) RemoveWidget(index);
}

Widget* SkinHost::GetWidget(int index) const {
  return index >= 0 && index < kWidgets ? widgets[index].Acquire() : nullptr;
}

WidgetGroup* SkinHost::GetGroup(int index) {
  return index >= 0 && index < kGroups ? &groups[index] : nullptr;
}

Widget* SkinHost::HitTest(int x, int y) {
  for (int groupLayer = LAYER_COUNT - 1; groupLayer >= 0; --groupLayer) {
    for (int group = kGroups - 1; group >= 0; --group) {
      if (!groups[group].visible || groups[group].layer != groupLayer) continue;
      for (int layer = LAYER_COUNT - 1; layer >= 0; --layer) {
        for (int index = kWidgets - 1; index >= 0; --index) {
          Widget* widget = GetWidget(index);
          if (widget && widget->visible && widget->group == group && widget->layer == layer &&
              widget->PointInWidget(x, y))
            return widget;
        }
      }
    }
  }
  return nullptr;
}

bool SkinHost::AtRest() const {
  const auto rests = [](const MotionOwner& owner) {
    return owner.Underway() == MotionOwner::Way::kNone;
  };
  return std::all_of(std::begin(groups), std::end(groups), rests) &&
         std::all_of(std::begin(widgets), std::end(widgets),
                     [rests](Widget* widget) { return !widget || rests(*widget); });
}

void SkinHost::HostWindowProc(void* host, const Message& message) {
  auto& self = *static_cast<SkinHost*>(host);
  self.HostDefaultHandler(message);
  if (self.callback)
    self.callback(self, static_cast<std::uint32_t>(message.id), message.wParam, message.lParam);
}

void SkinHost::EndWindowDrag() {
  if (!windowDrag) return;
  windowDrag = false;
  platform::ReleaseCapture();
}

void SkinHost::HostDefaultHandler(const Message& message) {
  switch (message.id) {
    case platform::kMessageSize:
      active = message.wParam == platform::kSizeRestored;
      if (!active) EndWindowDrag();
      break;
    case platform::kMessageShowWindow:
      active = message.wParam;
      if (!active) EndWindowDrag();
      break;
    case platform::kMessagePaint:
      PaintWhole();
      break;
    case platform::kMessageSysCommand:
      if (message.wParam == platform::kSystemMinimise) active = 0;
      if (message.wParam == platform::kSystemRestore) active = 1;
      break;
    case platform::kMessageLeftDown:
      pressPlace = platform::UnpackPlace(message.lParam);
      if (groups[0].Contains(pressPlace.x, pressPlace.y)) break;
      platform::SetCapture();
      windowDrag = true;
      break;
    case platform::kMessageMouseMove:
      // The pointer itself, since a place left of the window is told as the window's edge.
      if (windowDrag) {
        const platform::Point pointer = platform::PointerPosition();
        platform::MoveWindow({pointer.x - pressPlace.x, pointer.y - pressPlace.y});
      }
      break;
    case platform::kMessageLeftUp:
      EndWindowDrag();
      break;
    default:
      break;
  }
}

bool SkinHost::StartRedraw() {
  if (threadRun) return true;
  threadRun = 1;
  threadHandle = platform::StartThread(RunRedraw, this, "kwo redraw");
  if (!threadHandle) threadRun = 0;
  return threadHandle != nullptr;
}

void SkinHost::StopRedraw() {
  if (!threadRun) return;
  threadRun = 0;
  platform::JoinThread(threadHandle);
  threadHandle = nullptr;
}

void SkinHost::PauseRedraw() {
  constexpr int kPauseMilliseconds = 20;
  if (paused) {
    paused = 0;
    return;
  }
  paused = 1;
  AwaitTurnsEnd(drawing, [] { platform::Sleep(kPauseMilliseconds); });
}

int LoadSkinPicture(const SkinHost& host, SkinBitmap& bitmap, const char* fileName) {
  if (Loads(bitmap, host.skinPath, fileName)) return 1;
  return Loads(bitmap, host.defaultSkinPath, fileName) ? 2 : 0;
}

int SkinHost::LoadBackground(const char* fileName, std::uint32_t transparentColor) {
  auto picture = std::make_unique<SkinBitmap>();
  if (!LoadSkinPicture(*this, *picture, fileName)) return 0;
  auto blank = std::make_unique<SkinBitmap>();
  if (!blank->CreateBlank(picture->width, picture->height, 0)) return 0;
  background = std::move(picture);
  canvas = std::move(blank);
  background->key = kNoKey;
  windowWidth = background->width;
  windowHeight = background->height;
  platform::ResizeWindow({windowWidth, windowHeight});
  groups[0].PlaceGroup(nullptr, 0, 0, 0, windowWidth, windowHeight, 0, 0);
  platform::SetWindowShape(FindShape(*background, transparentColor));
  canvas->CopyFrom(background.get(), 0, 0, windowWidth, windowHeight);
  return 1;
}

}  // namespace kwo
