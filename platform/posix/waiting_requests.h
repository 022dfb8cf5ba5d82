#pragma once

#include <map>
#include <optional>

#include "platform/desktop_request.h"

namespace kwo::platform {

/// Requests of the desktop between their call and the logic: as many at most as hands could leave
/// behind, since a program on the bus can call without end.  One thread.
class WaitingRequests {
 public:
  static constexpr std::size_t kMost = 256;

  /// Gives the number under which the request waits, or 0 for one that is dropped.  Of those that
  /// bring the window up one at most waits: a later Open takes the place of an earlier one, whose
  /// songs it would clear away, and a Raise is part of an Open.
  int Keep(DesktopRequest request);
  std::optional<DesktopRequest> Take(int number);
  /// The Open or Raise that still waits.
  std::optional<DesktopRequest> TakeBringUp();

 private:
  std::map<int, DesktopRequest> waiting_;
  int last_ = 0;
};

}  // namespace kwo::platform
