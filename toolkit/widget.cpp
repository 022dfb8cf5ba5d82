#include "toolkit/widget.h"

#include <algorithm>

#include "toolkit/skin_host.h"
#include "toolkit/slider.h"

namespace kwo {
namespace {

constexpr int kCheckFrames = 2;

struct ClipRange {
  int start, size;
};

// What the root's stretch leaves of a group's along one axis.
ClipRange ClipToRoot(int start, int size, int rootStart, int rootSize) {
  ClipRange clip{start, size};
  if (rootStart + rootSize < size + start) clip.size = std::max(0, rootStart + rootSize - start);
  if (rootStart > start) {
    clip.size = std::max(0, size + start - rootStart);
    clip.start = rootStart;
  }
  return clip;
}

}  // namespace

void WidgetGroup::PlaceGroup(WidgetGroup* newParent, int newX, int newY, int newLayer, int newWidth,
                             int newHeight, int newOriginX, int newOriginY) {
  parent = newParent;
  x = newX;
  y = newY;
  layer = newLayer;
  width = newWidth;
  height = newHeight;
  originX = newOriginX;
  originY = newOriginY;
  Recalculate();
}

void WidgetGroup::Recalculate() {
  int left = x, top = y;
  const WidgetGroup* root = nullptr;
  for (const WidgetGroup* ancestor = parent; ancestor; ancestor = ancestor->parent) {
    left += ancestor->x;
    top += ancestor->y;
    root = ancestor;
  }
  rawX = left;
  rawY = top;
  ClipRange across{left, width}, down{top, height};
  if (root) {
    across = ClipToRoot(left, width, root->absX, root->clipWidth);
    down = ClipToRoot(top, height, root->absY, root->clipHeight);
  }
  absX = across.start;
  clipWidth = across.size;
  absY = down.start;
  clipHeight = down.size;
}

bool WidgetGroup::Contains(int pointX, int pointY) const {
  return Shown().Contains({pointX, pointY});
}

void WidgetGroup::StepMotion() {
  for (Shared<int>& slot : slots) {
    const int program = slot.Acquire();
    if (program < 0 || !IsPath(programs[program])) continue;
    const PathStep step = StepPath(programs[program]);
    x = step.x;
    y = step.y;
    if (step.ended) slot.Replace(program, -1);
    Recalculate();
  }
}

platform::Point WidgetGroup::RestCorner() const {
  const WidgetGroup* above = parent;
  const platform::Point corner = above ? above->RestCorner() : platform::Point{0, 0};
  const platform::Point own = EntranceEnd({x, y});
  return {corner.x + own.x, corner.y + own.y};
}

bool WidgetGroup::OnScreen() const {
  const WidgetGroup* above = parent;
  if (!visible || Underway() == Way::kOut || (above && !above->OnScreen())) return false;
  return Underway() == Way::kIn || (clipWidth > 0 && clipHeight > 0);
}

bool Widget::SetRole(SkinHost* newHost, int newKind, int newGroup) {
  if (!newHost || !newHost->GetGroup(newGroup)) return false;
  host = newHost;
  kind = newKind;
  group = newGroup;
  if (!image) image = std::make_unique<SkinBitmap>();
  if (!cap) cap = std::make_unique<SkinBitmap>();
  return true;
}

int Widget::InitCanvas(SkinHost* newHost, std::uint32_t fillColor, int newWidth, int newHeight,
                       int newKind, int newGroup) {
  if (!SetRole(newHost, newKind, newGroup)) return 0;
  if (!image->CreateBlank(newWidth, newHeight, fillColor)) return 0;
  image->key = host->colorKey;
  width = newWidth;
  height = newHeight;
  return 1;
}

int Widget::LoadPicture(SkinBitmap& bitmap, const char* fileName) {
  const int from = LoadSkinPicture(*host, bitmap, fileName);
  if (from == 0) return 0;
  bitmap.SetKey(from == 1 ? host->colorKey : host->defaultColorKey);
  return 1;
}

int Widget::LoadImage(SkinHost* newHost, const char* fileName, int newWidth, int newHeight,
                      int newKind, int newGroup) {
  if (!SetRole(newHost, newKind, newGroup)) return 0;
  const bool whole = newKind == BUTTON_WIDGET && newWidth == 0 && newHeight == 0;
  if (newKind == IMAGE_WIDGET || whole) {
    if (!LoadPicture(*image, fileName)) return 0;
    width = image->width;
    height = image->height;
    return 1;
  }
  if (!LoadPicture(*cap, fileName)) return 0;
  if (newKind == VERTICAL_SLIDER)
    return InitCanvas(newHost, 0, cap->width, newHeight, newKind, newGroup);
  if (newKind == HORIZONTAL_SLIDER)
    return InitCanvas(newHost, 0, newWidth, cap->height, newKind, newGroup);
  if (!InitCanvas(newHost, 0, newWidth - cap->width, newHeight, newKind, newGroup)) return 0;
  width = image->width + cap->width;
  height = cap->height;
  if (newKind == CHECK_WIDGET) SetFrameCount(0, kCheckFrames);
  return 1;
}

void Widget::SetFrameCount(int newFrame, int count) {
  SetFrame(newFrame);
  if (count < 0) return;
  frameCount = count;
  if (kind == IMAGE_WIDGET && image && count > 0) height = image->height / count;
}

void Widget::SetFrame(int n) {
  if (n >= 0 && n < frameCount) frame = n;
}

void Widget::SetLabel(const char* text) {
  if (host) SetLabelAt(text, host->fontColor, host->colorKey, 0, 0);
}

void Widget::SetLabelOn(const char* text, std::uint32_t fillColor) {
  if (host) SetLabelAt(text, host->fontColor, fillColor, 0, 0);
}

void Widget::SetLabelAt(const char* text, std::uint32_t textColor, std::uint32_t fillColor,
                        int textX, int textY) {
  if (host && image) image->FillAndText(text, host->font, textColor, fillColor, textX, textY);
}

bool Widget::PointInWidget(int pointX, int pointY) const {
  if (!host) return false;
  const WidgetGroup& area = *host->GetGroup(group);
  const int left = x - area.originX - offsetX + area.absX;
  const int top = y - area.originY - offsetY + area.absY;
  return area.Contains(pointX, pointY) && left < pointX && pointX < left + width && top < pointY &&
         pointY < top + height;
}

platform::Rectangle Widget::RestPlace() const {
  if (!host) return {0, 0, 0, 0};
  const WidgetGroup& area = *host->GetGroup(group);
  const platform::Point corner = area.RestCorner(), own = EntranceEnd({homeX, homeY});
  return platform::Rectangle{corner.x + own.x - area.originX - offsetX,
                             corner.y + own.y - area.originY - offsetY, width, height}
      .Intersected(host->GetGroup(0)->Shown());
}

bool Widget::OnScreen() const {
  if (!host || !visible || Underway() == Way::kOut) return false;
  const WidgetGroup& area = *host->GetGroup(group);
  if (!area.OnScreen()) return false;
  return Underway() == Way::kIn ||
         (x < area.width && y < area.height && x + width > 0 && y + height > 0);
}

void Widget::SetRamp(int program, int start, int end, float step, int mode) {
  if (program < 0 || program >= kPrograms) return;
  WriteRamp(programs[program], start, end, step, mode);
}

int Widget::ProgramInSlot(int slot) const {
  if (slot < 0 || slot >= kSlots) return -1;
  return slots[slot];
}

void Widget::SetPlace(int newX, int newY) {
  x = homeX = newX;
  y = homeY = newY;
}

void Widget::SetFlyIn(int restX, int restY) {
  if (!host) return;
  constexpr int kSteps = 100;
  constexpr float kAcceleration = 4.0f;
  const platform::Point outside{host->groups[0].clipWidth, host->groups[0].clipHeight};
  const platform::Point rest{restX, restY};
  SetPlace(outside.x, outside.y);
  layer = LAYER_CONTROLS;
  SetWays({outside, rest, outside}, kSteps, kAcceleration, kAcceleration);
  SetNudge(kNudgeProgram, rest);
  SetRamp(kPulseProgram, -200, 100, 50.0f, MOTION_TO_AND_FRO);
  blendMode = BLEND_ADD;
  visible = 1;
}

float Widget::ApplyValue(float part, float newValue) {
  if (!image || !cap) return 0.0f;
  float result = 0.0f;
  if (IsSlider() && part <= 0 && heldPart != PART_REST) part = static_cast<float>(int{heldPart});
  switch (kind) {
    case BUTTON_WIDGET:
      RunProgram(kNudgeSlot, kNudgeProgram);
      break;
    case CHECK_WIDGET:
      result = ApplyCheck(part < 0 ? static_cast<float>(value) : part, newValue);
      break;
    case VERTICAL_SLIDER:
    case HORIZONTAL_SLIDER:
      result = PaintSlider(*this, part, newValue < 0 ? static_cast<float>(value) : newValue);
      break;
    default:
      break;
  }
  value = result;
  return result;
}

float Widget::ApplyCheck(float part, float newValue) {
  if (newValue != 0.0f) RunProgram(kNudgeSlot, kNudgeProgram);
  if (IsPart(part, CHECK_FLIP)) part = frame != 0 ? 0.0f : 1.0f;
  if (!IsPart(part, CHECK_OFF) && !IsPart(part, CHECK_ON)) return CHECK_OFF;
  SetFrame(static_cast<int>(part));
  return part;
}

void Widget::StepMotion() {
  for (Shared<int>& slot : slots) {
    const int number = slot.Acquire();
    if (number < 0) continue;
    MotionProgram& program = programs[number];
    bool ended = false;
    if (IsPath(program)) {
      const PathStep step = StepPath(program);
      x = step.x;
      y = step.y;
      ended = step.ended;
    } else if (IsRamp(program)) {
      const RampStep step = StepRamp(program);
      brightness = step.brightness;
      if (step.hide) visible = 0;
      ended = step.ended;
    }
    // A program that the main thread has put there in the meantime stays.
    if (ended) slot.Replace(number, -1);
  }
}

void Widget::DrawTiled(int left, int top, const Tiling& tiling) {
  if (!visible || !host) return;
  if (kind == CHECK_WIDGET) {
    DrawImage(cap.get(), left, top, frame, frameCount, tiling);
    DrawImage(image.get(), left + cap->width, top + (cap->height / 2 - host->fontHeight) / 2, 0, 0,
              tiling);
  } else if (kind == BUTTON_WIDGET && cap->width > 0) {
    DrawImage(cap.get(), left, top, 0, 0, tiling);
    DrawImage(image.get(), left + cap->width, top + (cap->height - host->fontHeight) / 2, 0, 0,
              tiling);
  } else {
    DrawImage(image.get(), left, top, frame, frameCount, tiling);
  }
}

void Widget::DrawImage(const SkinBitmap* bitmap, int left, int top, int shownFrame, int frames,
                       const Tiling& tiling) {
  if (!bitmap || !bitmap->bits) return;
  const WidgetGroup& area = *host->GetGroup(group);
  const int frameHeight = frames > 0 ? bitmap->height / frames : bitmap->height;
  const int firstRow = frames > 0 ? (frames - shownFrame - 1) * frameHeight : 0;
  const platform::Rectangle place{area.rawX - offsetX - area.originX + left,
                                  area.rawY - offsetY - area.originY + top, bitmap->width,
                                  frameHeight};
  const platform::Rectangle clip{area.absX - area.originX, area.absY - area.originY, area.clipWidth,
                                 area.clipHeight};
  if (place.Intersected(clip).Empty() && tiling == kOnce) return;
  host->compositor.Add({bitmap, bitmap->Version(), firstRow, place, clip, tiling, brightness,
                        blendMode, bitmap->DrawnKey()});
}

}  // namespace kwo
