#include "toolkit/compositor.h"

#include <algorithm>
#include <cstdint>

namespace kwo {
namespace {

using platform::Rectangle;

bool IsKeyed(const DisplayItem& item) {
  return item.key <= 0xFFFFFF;
}

bool Contains(const Rectangle& outer, const Rectangle& inner) {
  return inner.Empty() || outer.Intersected(inner) == inner;
}

Rectangle United(const Rectangle& a, const Rectangle& b) {
  if (a.Empty()) return b;
  if (b.Empty()) return a;
  const int left = std::min(a.x, b.x), top = std::min(a.y, b.y);
  return {left, top, std::max(a.x + a.width, b.x + b.width) - left,
          std::max(a.Bottom(), b.Bottom()) - top};
}

// Which of a tiling's columns or rows reach into a stretch: from `first` on, `end` no longer.
struct Reach {
  Reach(int start, int size, int step, int count, int from, int length) : first(0), end(count) {
    if (step < 1) return;
    // Places of widgets may be anything that a word holds.
    const std::int64_t before = std::int64_t{from} - start - size;
    const std::int64_t behind = std::int64_t{from} + length - start;
    if (before >= 0) first = static_cast<int>(std::min<std::int64_t>(before / step + 1, count));
    end = static_cast<int>(std::clamp<std::int64_t>((behind + step - 1) / step, first, count));
  }
  int first, end;
};

// All that can be seen of a picture on the canvas.
Rectangle BoundsOf(const DisplayItem& item, const Rectangle& canvas) {
  Rectangle all = item.place;
  all.width += (item.tiling.columns - 1) * item.tiling.stepX;
  all.height += (item.tiling.rows - 1) * item.tiling.stepY;
  return all.Intersected(item.clip).Intersected(canvas);
}

// Whether nothing shows through within a picture's bounds.
bool IsOpaque(const DisplayItem& item) {
  return !IsKeyed(item) && item.blendMode == BLEND_COPY && item.place.width >= item.tiling.stepX &&
         item.place.height >= item.tiling.stepY;
}

void DrawOnce(const DisplayItem& item, const Rectangle& place, const Rectangle& area,
              SkinBitmap& canvas) {
  const Rectangle shown = place.Intersected(item.clip).Intersected(area);
  if (shown.Empty()) return;
  // Rows count from the bottom.
  const BlitSource source =
      item.bitmap->Source(shown.x - place.x, item.firstRow + place.Bottom() - shown.Bottom());
  const BlitTarget target = canvas.Target(shown.x, canvas.height - shown.Bottom());
  const int width = shown.width, height = shown.height;
  if (item.blendMode != BLEND_COPY || (item.brightness != 0 && IsKeyed(item))) {
    BlitBlend(source, width, height, target, item.brightness, item.blendMode, item.key);
  } else if (item.brightness != 0) {
    BlitBright(source, width, height, target, item.brightness);
  } else if (IsKeyed(item)) {
    BlitKeyed(source, width, height, target, item.key);
  } else {
    BlitCopy(source, width, height, target);
  }
}

// Draws what of a picture lies in an area of the canvas.
void Draw(const DisplayItem& item, const Rectangle& area, SkinBitmap& canvas) {
  const Tiling& tiling = item.tiling;
  const Reach across(item.place.x, item.place.width, tiling.stepX, tiling.columns, area.x,
                     area.width);
  const Reach down(item.place.y, item.place.height, tiling.stepY, tiling.rows, area.y, area.height);
  for (int row = down.first; row < down.end; ++row) {
    for (int column = across.first; column < across.end; ++column) {
      Rectangle place = item.place;
      place.x += column * tiling.stepX;
      place.y += row * tiling.stepY;
      DrawOnce(item, place, area, canvas);
    }
  }
}

}  // namespace

void Damage::Add(Rectangle area) {
  if (area.Empty()) return;
  for (int i = 0; i < count_;) {
    if (areas_[i].Intersected(area).Empty() && count_ < kMost) {
      ++i;
      continue;
    }
    area = United(areas_[i], area);
    areas_[i] = areas_[--count_];
  }
  areas_[count_++] = area;
}

Rectangle Damage::Bounds() const {
  Rectangle bounds{0, 0, 0, 0};
  for (const Rectangle& area : *this) bounds = United(bounds, area);
  return bounds;
}

void Compositor::Add(const DisplayItem& item) {
  DisplayList& list = Current();
  if (list.count < kMostItems) list.items[list.count++] = item;
}

// A frame that stands on an opaque picture depends on nothing that was on the canvas before.
bool Compositor::HasGround(const Rectangle& canvas) const {
  const DisplayList& list = lists_[current_];
  if (list.count == 0 || !IsOpaque(list.items[0])) return false;
  const Rectangle ground = BoundsOf(list.items[0], canvas);
  return std::all_of(list.begin(), list.end(), [&](const DisplayItem& item) {
    return Contains(ground, BoundsOf(item, canvas));
  });
}

void Compositor::FindDamage(const Rectangle& canvas) {
  const DisplayList &now = lists_[current_], &before = lists_[current_ ^ 1];
  for (int i = 0; i < std::max(now.count, before.count); ++i) {
    const DisplayItem* item = i < now.count ? &now.items[i] : nullptr;
    const DisplayItem* old = i < before.count ? &before.items[i] : nullptr;
    if (item && old && *item == *old) continue;
    if (item) damage_.Add(BoundsOf(*item, canvas));
    if (old) damage_.Add(BoundsOf(*old, canvas));
  }
}

Rectangle Compositor::Compose(SkinBitmap& canvas) {
  const Rectangle whole{0, 0, canvas.width, canvas.height};
  damage_.Clear();
  if (canvas.Version() == canvasVersion_ && HasGround(whole)) {
    FindDamage(whole);
  } else {
    damage_.Add(whole);
  }
  canvasVersion_ = canvas.Version();
  for (const Rectangle& area : damage_)
    for (const DisplayItem& item : Current()) Draw(item, area, canvas);
  return damage_.Bounds();
}

void Compositor::ComposeWhole(SkinBitmap& canvas) const {
  for (const DisplayItem& item : lists_[current_])
    Draw(item, {0, 0, canvas.width, canvas.height}, canvas);
}

}  // namespace kwo
