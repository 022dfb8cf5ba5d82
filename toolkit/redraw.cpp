#include <algorithm>
#include <span>

#include "base/handshake.h"
#include "platform/clock.h"
#include "toolkit/skin_host.h"

namespace kwo {
namespace {

constexpr int kFadeProgram = 0;
constexpr int kDriftProgram = 2;
constexpr int kFadeSlot = 0;
constexpr int kDriftSlot = 1;
constexpr int kDark = -260;

// Where a repetition comes in view: a tile that is still to be placed lies far outside, and may be
// as small as a pixel.
int FirstInView(int place, int size) {
  return place < 0 ? place % size : place;
}

int TilesInView(int first, int size, int window) {
  return first < window ? (window - first - 1) / size + 1 : 0;
}

}  // namespace

void SkinHost::RunRedraw(void* host) {
  auto& self = *static_cast<SkinHost*>(host);
  platform::SetThreadPriority(platform::ThreadPriority::kTimeCritical);
  self.threadAlive = 1;
  while (self.threadRun) {
    self.RedrawFrame();
    platform::ShowPresented();
    platform::Sleep(1000 / self.frameRate);
    if (self.InputActiveTick && self.callback) self.callback(self, kTick, 0, 0);
  }
  self.threadAlive = 0;
}

void SkinHost::RedrawFrame() {
  if (!EnterTurn(drawing, paused, 0)) return;
  PaintVisualiser();
  StepAll();
  if (active && canvas) {
    compositor.Begin();
    DrawTiles();
    DrawWidgets();
    PresentFrame();
  }
  LeaveTurn(drawing);
}

void SkinHost::PaintVisualiser() {
  const VisualiserFunction paint = VisualiserCallback;
  Widget* widget = VisualiserWidget;
  if (!VisualiserMode || !active || !paint || !widget || !widget->image || !widget->image->bits)
    return;
  std::int16_t samples[PcmRing::kValues];
  paint(*widget->image, samples, ring.Read(samples));
  widget->image->Touch();
}

void SkinHost::StepAll() {
  for (WidgetGroup& group : groups) group.StepMotion();
  for (WidgetGroup& group : groups) group.Recalculate();
  for (int index = 0; index < kWidgets; ++index)
    if (Widget* widget = GetWidget(index)) widget->StepMotion();
}

platform::Rectangle SkinHost::Interface() const {
  return {groups[0].absX, groups[0].absY, groups[0].clipWidth, groups[0].clipHeight};
}

void SkinHost::PresentFrame() {
  const platform::Rectangle changed = compositor.Compose(*canvas);
  const platform::Rectangle shown =
      paintedBeside.exchange(false) ? Interface() : changed.Intersected(Interface());
  canvas->PresentToWindow(shown.x, shown.y, shown.width, shown.height);
}

void SkinHost::DrawTiles() {
  const int current = currentTile, previous = previousTile;
  if (current < 0 || current >= kWidgets) {
    if (background)
      compositor.Add({background.get(),
                      background->Version(),
                      0,
                      {0, 0, background->width, background->height},
                      Interface(),
                      kOnce,
                      0,
                      BLEND_COPY,
                      background->DrawnKey()});
    return;
  }
  DrawTile(current);
  if (previous != current) DrawTile(previous);
}

void SkinHost::DrawTile(int index) {
  Widget* tile = GetWidget(index);
  // A tile without its picture has no size, and could be repeated for ever.
  if (!tile || tile->width < 1 || tile->height < 1) return;
  const int width = tile->width, height = tile->height;
  const int left = FirstInView(tile->x, width), top = FirstInView(tile->y, height);
  const Tiling tiling{width, height, TilesInView(left, width, windowWidth),
                      TilesInView(top, height, windowHeight)};
  if (tiling.columns > 0 && tiling.rows > 0) tile->DrawTiled(left, top, tiling);
}

void SkinHost::DrawWidgets() {
  // Of the table few are seen; these are looked through for each layer, in the table's order.
  Widget* seen[kWidgets];
  int count = 0;
  for (int index = 0; index < kWidgets; ++index) {
    Widget* widget = GetWidget(index);
    if (widget && widget->visible && index != currentTile && index != previousTile)
      seen[count++] = widget;
  }
  for (int groupLayer = 0; groupLayer < LAYER_COUNT; ++groupLayer) {
    for (int group = 0; group < kGroups; ++group) {
      if (!groups[group].visible || groups[group].layer != groupLayer) continue;
      for (int layer = 0; layer < LAYER_COUNT; ++layer) {
        for (Widget* widget : std::span(seen, count))
          if (widget->group == group && widget->layer == layer) widget->DrawWidget();
      }
    }
  }
}

bool SkinHost::FillsInterface(const Widget& tile) {
  return tile.width == groups[0].clipWidth && tile.height == groups[0].clipHeight;
}

// A tile of the interface's size stands still; any other drifts by its own size, over and over.
void SkinHost::DriftTile(Widget& tile) {
  if (FillsInterface(tile)) {
    tile.SetPlace(0, 0);
    tile.layer = LAYER_GROUND;
    return;
  }
  if (tile.width < 1) return;
  tile.SetPath(kDriftProgram, 0, 0, -tile.width, -tile.height, tile.width, 0, MOTION_LOOP);
  tile.RunProgram(kDriftSlot, kDriftProgram);
}

void SkinHost::HideTile(int index) {
  if (Widget* tile = GetWidget(index)) tile->visible = 0;
}

int SkinHost::ShowTile(int index, int pulse) {
  if (index < 0 || index >= kWidgets) {
    HideTile(currentTile);
    HideTile(previousTile);
    currentTile = previousTile = -1;
    return -1;
  }
  previousTile = currentTile;
  currentTile = index;
  Widget* tile = GetWidget(index);
  if (!tile) return previousTile;
  DriftTile(*tile);
  if (pulse) {
    tile->SetRamp(kFadeProgram, -80, 0, 4.0f, MOTION_TO_AND_FRO);
  } else {
    tile->SetRamp(kFadeProgram, kDark, 0, 20.0f, MOTION_ONCE);
  }
  tile->RunProgram(kFadeSlot, kFadeProgram);
  tile->blendMode = BLEND_COPY;
  tile->visible = 1;

  Widget* old = GetWidget(previousTile);
  if (currentTile == previousTile || !old) return previousTile;
  if (FillsInterface(*old) || old->ProgramInSlot(kDriftSlot) != kDriftProgram) DriftTile(*old);
  old->SetRamp(kFadeProgram, 0, kDark, -20.0f, MOTION_FADE_AND_HIDE);
  old->RunProgram(kFadeSlot, kFadeProgram);
  old->blendMode = BLEND_ADD;
  old->visible = 1;
  return previousTile;
}

}  // namespace kwo
