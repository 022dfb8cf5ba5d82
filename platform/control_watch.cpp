#include "platform/control_watch.h"

#include <utility>

namespace kwo::platform {
namespace {

bool SameState(const Control& a, const Control& b) {
  return a.pressed == b.pressed && a.checked == b.checked && a.selected == b.selected &&
         a.current == b.current;
}

}  // namespace

void ControlWatch::AddNews(const Control& before, const Control& now,
                           std::vector<ControlChange>& changes) const {
  if (now.busy && now.id != focus_) return;
  if (before.name != now.name) changes.push_back({ControlNews::kName, now.id});
  if (!SameState(before, now)) changes.push_back({ControlNews::kState, now.id});
  if (before.value != now.value) changes.push_back({ControlNews::kValue, now.id});
}

std::vector<ControlChange> ControlWatch::Look(ControlList now) {
  std::vector<ControlChange> changes;
  due_ = !now.atRest;
  if (due_) return changes;
  for (const Control& before : told_.controls)
    if (!now.Find(before.id)) changes.push_back({ControlNews::kGone, before.id});
  for (const Control& control : now.controls) {
    if (const Control* before = told_.Find(control.id)) {
      AddNews(*before, control, changes);
    } else {
      changes.push_back({ControlNews::kAppeared, control.id});
    }
  }
  if (!now.Find(focus_)) focus_ = 0;
  const Control* focused = now.Find(focus_);
  focusBusy_ = focused && focused->busy;
  told_ = std::move(now);
  return changes;
}

}  // namespace kwo::platform
