#include "panels/panel_tools.h"

#include <utility>

namespace kwo {

Layout::Layout() {
  SkinHost& host = *TheSkinHost;
  const WidgetGroup& interface = host.groups[GROUP_INTERFACE];
  width = interface.clipWidth;
  height = interface.clipHeight;
  fontHeight = host.fontHeight;
  margin = fontHeight / 2;
  const Widget* band = Find(WIDGET_TOP_BOX);
  bandHeight = band ? int{band->height} : 0;
}

Widget* Find(int index) {
  return TheSkinHost->GetWidget(index);
}

WidgetGroup& Group(int index) {
  return TheSkinHost->groups[index];
}

Widget* MakeImage(int index, const char* fileName, int group) {
  TheSkinHost->CreateImageWidget(index, fileName, 0, 0, IMAGE_WIDGET, group);
  return Find(index);
}

Widget* MakeGroupBox(int index, const char* fileName, int effect) {
  Widget* box = MakeImage(index, fileName, GROUP_INTERFACE);
  const int width = Layout().width;
  const int rest = (width - box->width) / 2;
  box->SetWays({{width, 0}, {rest, 0}, {-box->width, 0}}, 100, 2.0f, 4.0f);
  box->blendMode = effect;
  box->visible = 1;
  return box;
}

void PutBack(int index) {
  Widget& button = *Find(index);
  button.SetPlace(button.homeX, button.homeY);
  button.brightness = 0;
}

int MakeStripButton(int index, const char* fileName, int group, int x) {
  TheSkinHost->CreateImageWidget(index, fileName, 0, 0, BUTTON_WIDGET, group);
  Widget& button = *Find(index);
  button.SetPlace(x, 0);
  button.SetNudge(kNudgeProgram, {x, 0});
  button.visible = 1;
  return button.width;
}

void PlaceStrip(int group, int layer, int width, int height, int restX) {
  constexpr int kSteps = 400;
  constexpr float kAcceleration = 9.0f;
  WidgetGroup& strip = Group(group);
  const int outside = Layout().width;
  strip.PlaceGroup(&Group(GROUP_INTERFACE), outside, 0, layer, width, height, 0, 0);
  strip.SetWays({{-outside, 0}, {restX, 0}, {outside, 0}}, kSteps, kAcceleration, kAcceleration);
  strip.visible = 1;
}

void SetPulse(Widget& button, int reach, float step) {
  button.SetRamp(kEnterProgram, reach, -reach, step, MOTION_TO_AND_FRO);
}

void PulsePageButton(Page page, int program) {
  Move(PageButton(page), program == kEnterProgram ? kEnterProgram : kNoProgram);
}

void Move(int index, int program) {
  if (Widget* widget = Find(index)) widget->RunProgram(kMoveSlot, program);
}

void MoveGroup(int index, int program) {
  Group(index).RunProgram(kMoveSlot, program);
}

platform::Point ClientPointer() {
  const platform::Point pointer = platform::PointerPosition();
  const platform::Rectangle window = platform::WindowRectangle();
  return {pointer.x - window.x, pointer.y - window.y};
}

void SetClientPointer(platform::Point place) {
  const platform::Rectangle window = platform::WindowRectangle();
  platform::SetPointerPosition({window.x + place.x, window.y + place.y});
}

void Label(int index, const char* text) {
  if (Widget* widget = Find(index)) widget->SetLabelOn(text, kLabelFill);
}

platform::Control* ListWidget(platform::ControlList& list, int index, std::string name,
                              Named named) {
  const Widget* widget = Find(index);
  if (!widget || !widget->OnScreen()) return nullptr;
  platform::Control& control = list.controls.emplace_back();
  control.id = index;
  control.role = widget->IsSlider()             ? platform::Role::kSlider
                 : widget->kind == CHECK_WIDGET ? platform::Role::kCheckBox
                                                : platform::Role::kButton;
  control.name = std::move(name);
  control.place = widget->RestPlace();
  control.labelled = named == Named::kByLabel;
  control.checked = widget->kind == CHECK_WIDGET && widget->value != 0;
  return &control;
}

}  // namespace kwo
