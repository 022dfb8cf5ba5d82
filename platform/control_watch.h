#pragma once

#include <vector>

#include "platform/accessibility.h"

namespace kwo::platform {

/// What an assistive program is told of a control.
enum class ControlNews { kAppeared, kGone, kName, kState, kValue };

struct ControlChange {
  ControlNews news;
  int id;
  bool operator==(const ControlChange&) const = default;
};

/// What has been told, and what is to be told next.  Main thread.
class ControlWatch {
 public:
  void Changed() { due_ = true; }
  /// A look is due: something may have changed, or had not yet come to rest, or the focus is on
  /// what changes all the time.
  bool Due() const { return due_ || focusBusy_; }
  /// What has changed since the last look, those that have gone first.  Of a list with something
  /// under way nothing is told yet.
  std::vector<ControlChange> Look(ControlList now);
  /// 0 for none.
  void Focus(int id) { focus_ = id, due_ = true; }
  int Focused() const { return focus_; }

 private:
  void AddNews(const Control& before, const Control& now,
               std::vector<ControlChange>& changes) const;

  ControlList told_;
  int focus_ = 0;
  bool due_ = false, focusBusy_ = false;
};

}  // namespace kwo::platform
