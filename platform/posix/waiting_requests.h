#pragma once

#include <map>
#include <optional>

#include "platform/desktop_request.h"

namespace kwo::platform {

/// Requests of the desktop between their call and the logic: as many at most as hands could leave
/// behind, since a program on the bus can call without end.  One thread.
class WaitingRequests {
 public:
  static constexpr std::size_t kMost = 256, kMostOpens = 8;

  /// Gives the number under which the request waits, or 0 for one that does not: it is dropped, or
  /// has taken the place of one whose number is known.  Songs that are opened would clear those
  /// away that are still to be opened, and a Raise is part of an Open.
  int Keep(DesktopRequest request);
  std::optional<DesktopRequest> Take(int number);
  /// The last Open that still waits, else the Raise.
  std::optional<DesktopRequest> TakeBringUp();

 private:
  std::map<int, DesktopRequest> waiting_;
  int last_ = 0;
};

}  // namespace kwo::platform
