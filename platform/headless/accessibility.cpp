#include "platform/accessibility.h"

#include "platform/headless/headless.h"

// One thread runs at a time, and those who look do it while the main thread waits.

namespace kwo {
namespace {

platform::ControlList (*list)() = nullptr;
platform::ControlWatch watch;

}  // namespace

namespace platform {

void OpenAccessibility(ControlList (*newList)()) {
  list = newList;
  watch = {};
}

void CloseAccessibility() {
  list = nullptr;
}

void ControlsChanged() {
  watch.Changed();
}

}  // namespace platform

namespace headless {

platform::ControlList Controls() {
  return list ? list() : platform::ControlList{};
}

std::vector<platform::ControlChange> TakeControlNews() {
  return watch.Due() ? watch.Look(Controls()) : std::vector<platform::ControlChange>{};
}

void FocusControl(int id) {
  watch.Focus(id);
}

std::string TipAt(platform::Point place) {
  return Controls().Tip(place);
}

}  // namespace headless
}  // namespace kwo
