#pragma once

#include <cstdint>

#include "platform/window.h"
#include "toolkit/skin_bitmap.h"

namespace kwo {

/// How often a picture is drawn, from its place to the right and downwards.
struct Tiling {
  int stepX, stepY;
  int columns, rows;
  bool operator==(const Tiling&) const = default;
};
constexpr Tiling kOnce{0, 0, 1, 1};

/// A picture of a frame: which pixels it is made of, where they go, and how.
struct DisplayItem {
  const SkinBitmap* bitmap;
  std::uint32_t version;      ///< of the bitmap's pixels
  int firstRow;               ///< of the pixels drawn, from the bottom
  platform::Rectangle place;  ///< on the canvas, of the first of a tiling
  platform::Rectangle clip;   ///< what may be seen of it
  Tiling tiling;
  int brightness, blendMode;
  std::uint32_t key;
  bool operator==(const DisplayItem&) const = default;
};

/// What of a canvas is to be composed anew, as a few rectangles that may overlap.
class Damage {
 public:
  void Clear() { count_ = 0; }
  void Add(platform::Rectangle area);
  const platform::Rectangle* begin() const { return areas_; }
  const platform::Rectangle* end() const { return areas_ + count_; }
  /// The least rectangle around all of it.
  platform::Rectangle Bounds() const;

 private:
  static constexpr int kMost = 12;
  platform::Rectangle areas_[kMost];
  int count_ = 0;
};

/// Composes frames from lists of pictures, and of each only what the last one's list tells to have
/// changed: the canvas comes out as if all had been drawn.  Redraw thread; nothing here allocates
/// or waits.
class Compositor {
 public:
  static constexpr int kMostItems = 1025;

  /// Begins a frame.
  void Begin() { current_ ^= 1, Current().count = 0; }
  /// Lays a picture on the others of the frame; one too many is left out.
  void Add(const DisplayItem& item);
  /// Composes the frame on a canvas whose pixels nobody else has painted since the last one, or has
  /// told so.  Gives the rectangle beyond which nothing has changed.
  platform::Rectangle Compose(SkinBitmap& canvas);
  /// Draws all of the last frame's pictures.
  void ComposeWhole(SkinBitmap& canvas) const;

 private:
  struct DisplayList {
    DisplayItem items[kMostItems];  // left as they come: what is not used takes no memory
    int count = 0;
    const DisplayItem* begin() const { return items; }
    const DisplayItem* end() const { return items + count; }
  };
  DisplayList& Current() { return lists_[current_]; }
  bool HasGround(const platform::Rectangle& canvas) const;
  void FindDamage(const platform::Rectangle& canvas);

  DisplayList lists_[2];  // of this frame and of the last one
  int current_ = 0;
  std::uint32_t canvasVersion_ = 0;
  Damage damage_;
};

}  // namespace kwo
