#pragma once

#include <cstdint>
#include <memory>

#include "toolkit/compositor.h"
#include "toolkit/motion.h"
#include "toolkit/skin_bitmap.h"

namespace kwo {

class SkinHost;

enum WidgetKind : int {
  IMAGE_WIDGET = 0,
  BUTTON_WIDGET = 1,
  CHECK_WIDGET = 2,
  VERTICAL_SLIDER = 3,
  HORIZONTAL_SLIDER = 4,
};

/// What lies before what, of groups and of the widgets of a group.
enum Layer : int { LAYER_GROUND, LAYER_TEXT, LAYER_BOXES, LAYER_CONTROLS, LAYER_COUNT };

/// What `Widget::ApplyValue` is told of a check box and of a slider.
enum CheckPart : int { CHECK_AS_IT_IS = -1, CHECK_OFF = 0, CHECK_ON = 1, CHECK_FLIP = 2 };
enum SliderPart : int {
  PART_KEEP_CAPS = -1,  ///< they stay as they are
  PART_REST = 0,
  PART_FIRST_CAP = 1,  ///< the left or the upper one
  PART_SECOND_CAP = 2,
  PART_THUMB = 3,
};
constexpr bool IsPart(float part, int which) {
  return part == static_cast<float>(which);
}
/// A position that leaves a slider's as it is.
constexpr float kSamePosition = -1.0f;

constexpr int kUnplaced = -99999;

/// A frame of the interface that its widgets move with and are cut to.  Written by the main thread
/// and, while motion drives it, by the redraw thread.
struct WidgetGroup : MotionOwner {
  /// Sets place, size and scroll origin, and recalculates.
  void PlaceGroup(WidgetGroup* newParent, int newX, int newY, int newLayer, int newWidth,
                  int newHeight, int newOriginX, int newOriginY);
  /// Reckons the absolute place, and what the root leaves of the size.
  void Recalculate();
  void StepMotion();
  bool Contains(int pointX, int pointY) const;
  /// What the root leaves of it.
  platform::Rectangle Shown() const { return {absX, absY, clipWidth, clipHeight}; }
  /// The corner at rest, absolute and without clipping, whatever moves it now.
  platform::Point RestCorner() const;
  /// It is in view, or on its way in.  Any thread.
  bool OnScreen() const;

  Shared<WidgetGroup*> parent;  ///< gives the position; null for group 0
  Shared<int> x, absX, rawX;    ///< within the parent; absolute, with and without clipping
  Shared<int> y, absY, rawY;
  Shared<int> layer;
  Shared<int> width, clipWidth;
  Shared<int> height, clipHeight;
  Shared<int> originX, originY;
  Shared<int> visible;
};

/// One control of the interface: a record in the SkinHost's table, painted by the redraw thread and
/// changed by the panels, mostly on the main thread.  Its pictures never change while the redraw
/// thread runs unpaused; their pixels may.
class Widget : public MotionOwner {
 public:
  /// Makes the canvas of a widget; 0 without a host, with a bad group or without a size.
  int InitCanvas(SkinHost* newHost, std::uint32_t fillColor, int newWidth, int newHeight,
                 int newKind, int newGroup);
  /// Loads the widget's picture, from the skin or else the default skin, and makes its canvas; 0 if
  /// it can't be had, which leaves a widget that draws nothing and can't be hit.
  int LoadImage(SkinHost* newHost, const char* fileName, int newWidth, int newHeight, int newKind,
                int newGroup);

  /// Shows `newFrame` of the frames that there are; then, unless `count` is below 0, makes the
  /// widget a strip of so many, one above the other.
  void SetFrameCount(int newFrame, int count);
  /// Shows frame `n`; a number outside the strip is ignored.  Any thread.
  void SetFrame(int n);

  // Text on the canvas, in the host's font.  Any thread.

  /// Only the letters show.
  void SetLabel(const char* text);
  void SetLabelOn(const char* text, std::uint32_t fillColor);
  /// A fill above 0xFFFFFF writes over what is there.
  void SetLabelAt(const char* text, std::uint32_t textColor, std::uint32_t fillColor, int textX,
                  int textY);

  /// Changes what the widget shows and stores and gives its value.  Button: starts the nudge. Check
  /// box: `part` is a CheckPart; with a `newValue` other than 0, nudges.  Slider: `part` is a
  /// SliderPart, which is shown pressed; repaints the canvas for the position `newValue`, 0 to 1,
  /// or as it was if below 0.
  float ApplyValue(float part, float newValue);

  bool PointInWidget(int pointX, int pointY) const;

  /// Its place at rest, cut to the interface, whatever moves it now.  Any thread.
  platform::Rectangle RestPlace() const;
  /// It is in view, or on its way in.  Any thread.
  bool OnScreen() const;

  /// A change of brightness by whole steps.
  void SetRamp(int program, int start, int end, float step, int mode);
  int ProgramInSlot(int slot) const;
  /// The usual entrance (program 0) and exit (1) of a control between the interface's bottom right
  /// corner and (restX, restY), with the press nudge (2) and a pulse (3).
  void SetFlyIn(int restX, int restY);
  void SetPlace(int newX, int newY);

  /// Redraw thread.
  void StepMotion();
  /// Give the widget's pictures to the host's compositor, if it is visible.
  void DrawWidget() { DrawTiled(x, y, kOnce); }
  void DrawTiled(int left, int top, const Tiling& tiling);

  bool IsSlider() const { return kind == VERTICAL_SLIDER || kind == HORIZONTAL_SLIDER; }

  SkinHost* host = nullptr;
  std::unique_ptr<SkinBitmap> image;  ///< the picture of an image, or the canvas of the others
  std::unique_ptr<SkinBitmap> cap;    ///< button cap, check box strip, slider cells
  Shared<int> group;
  Shared<int> kind;
  Shared<float> value;
  /// The piece of a slider under the user's hand, PART_REST for none.  It is shown pressed whoever
  /// repaints the slider.
  Shared<int> heldPart;
  Shared<int> x = kUnplaced, homeX = kUnplaced, y = kUnplaced, homeY = kUnplaced;
  Shared<int> layer;
  Shared<int> offsetX, offsetY;
  Shared<int> width, height;
  Shared<int> frame, frameCount;
  Shared<int> visible;
  Shared<int> brightness;
  Shared<int> blendMode;

 private:
  bool SetRole(SkinHost* newHost, int newKind, int newGroup);
  int LoadPicture(SkinBitmap& bitmap, const char* fileName);
  float ApplyCheck(float part, float newValue);
  void DrawImage(const SkinBitmap* bitmap, int left, int top, int shownFrame, int frames,
                 const Tiling& tiling);
};

/// Fill of all labels with a visible ground.
constexpr std::uint32_t kLabelFill = 0x323232;

}  // namespace kwo
