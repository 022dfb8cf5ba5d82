#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/text.h"
#include "platform/threads.h"
#include "platform/window.h"
#include "toolkit/compositor.h"
#include "toolkit/pcm_ring.h"
#include "toolkit/widget.h"

namespace kwo {

class SkinHost;

/// Gets every message of the window, after the host's own handling, on the main thread; and kTick
/// on the redraw thread.
using HostCallback = void (*)(SkinHost& host, std::uint32_t message, int wParam, int lParam);

/// Sent after each frame while `InputActiveTick` is set.
constexpr std::uint32_t kTick = 0xF0F0F0F0;

/// Paints a bitmap from the samples last played: interleaved 16-bit values, more than 0 of them.
/// Redraw thread.
using VisualiserFunction = int (*)(SkinBitmap& bitmap, const std::int16_t* samples, int count);

/// How the visualiser runs.
enum VisualiserState : int {
  VISUALISER_OFF = 0,
  VISUALISER_ON_PAGE = 1,
  VISUALISER_EVERYWHERE = 2
};

/// The window with the flat table of widgets in it, and the thread that draws them.
///
/// Two threads meet here without a lock.  The main thread makes the widgets, moves them by programs
/// and slots, and writes their fields at any time; the redraw thread steps the programs and
/// composes the frames.  A widget is replaced only during a `RedrawPause`.  All
/// operations belong to the main thread, but for `GetWidget`, `GetGroup` and `RedrawFrame`.
class SkinHost {
 public:
  static constexpr int kWidgets = 512;
  static constexpr int kGroups = 32;

  SkinHost();
  ~SkinHost();
  SkinHost(const SkinHost&) = delete;
  SkinHost& operator=(const SkinHost&) = delete;

  /// Makes the window and takes the skin's folders beside the program; `rate` is in frames a
  /// second. 1, or 0 if there is no window or, for a size of 0, no canvas yet.
  int CreateMainWindow(const char* skinName, HostCallback newCallback, int x, int y, int width,
                       int height, int rate);
  /// Stops the redraw thread and gives up all widgets and the window.
  void DestroyHost();

  /// Sizes the window to the picture and shapes it to the pixels that are not `transparentColor`
  /// (0x00RRGGBB).  0, with nothing changed, if neither skin has the picture.
  int LoadBackground(const char* fileName, std::uint32_t transparentColor);
  void SetSkinFont(const char* face, int height, std::uint32_t color);
  void MoveHostWindow(int x, int y, int width, int height);
  void BringToFront();

  /// Make a widget from a file or as a blank canvas, in place of any at the same index.  0 if the
  /// index is bad or the picture can't be had; the empty widget then stays in the table.
  int CreateImageWidget(int index, const char* fileName, int width, int height, int kind,
                        int group);
  int CreateCanvasWidget(int index, std::uint32_t fillColor, int width, int height, int kind,
                         int group);
  void RemoveWidget(int index);
  void RemoveAllWidgets();

  /// Null outside the table or where there is no widget.  Any thread.
  Widget* GetWidget(int index) const;
  /// Null outside the groups.  Any thread.
  WidgetGroup* GetGroup(int index);
  /// The topmost widget under a point of the window, or null.
  Widget* HitTest(int x, int y);
  /// No entrance or exit is under way.  Any thread.
  bool AtRest() const;

  /// The window itself is dragged by its frame.  Main thread.
  bool WindowDragged() const { return windowDrag; }

  /// False if there can be no thread.
  bool StartRedraw();
  /// Lets the thread finish its frame and waits for its end.
  void StopRedraw();
  /// First call: holds the redraw thread between two frames, and returns once it is; second: lets
  /// it go on.  Not from the redraw thread.
  void PauseRedraw();
  /// Makes a widget the tiled background, cross-fading from the one before, whose index it gives;
  /// an index outside the table shows the bare background.
  int ShowTile(int index, int pulse);

  /// One step of all motion and one frame.  Redraw thread, or any while that doesn't run; never
  /// allocates, locks or waits.
  void RedrawFrame();

  HostCallback callback = nullptr;
  platform::Font* font = nullptr;
  int fontHeight = 0;
  std::uint32_t fontColor = 0;
  std::uint32_t colorKey = 0;         ///< key of pictures from the skin's own folder
  std::uint32_t defaultColorKey = 0;  ///< key of pictures from the default skin
  std::string skinPath, defaultSkinPath;
  int windowWidth = 0, windowHeight = 0;
  int frameRate = 0;
  Shared<int> threadRun;                 ///< the redraw thread is asked to run
  Shared<int> threadAlive;               ///< it is inside its loop
  Shared<int> active;                    ///< the window is on the screen: 0 leaves out all painting
  std::atomic<int> InputActiveTick = 0;  ///< kTick is sent
  WidgetGroup groups[kGroups];
  std::unique_ptr<SkinBitmap> background, canvas;
  Compositor compositor;
  Shared<int> currentTile = -1, previousTile = -1;
  PcmRing ring;
  Shared<int> VisualiserMode;
  Shared<Widget*> VisualiserWidget;
  std::atomic<VisualiserFunction> VisualiserCallback = nullptr;

 private:
  static void HostWindowProc(void* host, const platform::Message& message);
  void HostDefaultHandler(const platform::Message& message);
  static void RunRedraw(void* host);
  void EndWindowDrag();
  void PaintWhole();
  void PaintVisualiser();
  void StepAll();
  void PresentFrame();
  void DrawTiles();
  void DrawTile(int index);
  void DrawWidgets();
  void DriftTile(Widget& tile);
  void HideTile(int index);
  bool FillsInterface(const Widget& tile);
  platform::Rectangle Interface() const;
  Widget* NewWidget(int index);

  Shared<Widget*> widgets[kWidgets];
  platform::Thread* threadHandle = nullptr;
  std::atomic<int> drawing = 0,
                   paused = 0;  // a hand-shake: the redraw thread's turns are the frames
  // The main thread has presented the canvas, and maybe an older pixel over a newer frame's.
  std::atomic<bool> paintedBeside = false;
  bool windowDrag = false;
  platform::Point pressPlace{0, 0};
};

/// The single toolkit object; null before start-up and after shutdown.  It stands before the other
/// threads start, and until they have ended.
extern SkinHost* TheSkinHost;

/// While it lives, no frame is drawn.  Main thread.
class RedrawPause {
 public:
  explicit RedrawPause(SkinHost& host) : host_(host) { host_.PauseRedraw(); }
  ~RedrawPause() { host_.PauseRedraw(); }
  RedrawPause(const RedrawPause&) = delete;
  RedrawPause& operator=(const RedrawPause&) = delete;

 private:
  SkinHost& host_;
};

/// Loads a picture of the skin: from `skinPath`, else by the same name from `defaultSkinPath`.
/// Gives 1, 2 for the default skin's, or 0.
int LoadSkinPicture(const SkinHost& host, SkinBitmap& bitmap, const char* fileName);

}  // namespace kwo
