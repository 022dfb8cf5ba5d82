#include "platform/posix/waiting_requests.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/posix/dropped_songs.h"

namespace kwo::platform {
namespace {

using Waiting = std::map<int, DesktopRequest>;

// What must be looked into to tell whether it is songs takes nobody's place.
bool BearsSongs(const DesktopRequest& request) {
  return std::any_of(request.paths.begin(), request.paths.end(), BearsSong);
}

Waiting::iterator LastOf(Waiting& waiting, Ask ask) {
  const auto found = std::find_if(waiting.rbegin(), waiting.rend(),
                                  [ask](const auto& row) { return row.second.ask == ask; });
  return found == waiting.rend() ? waiting.end() : std::prev(found.base());
}

std::size_t CountOf(const Waiting& waiting, Ask ask) {
  return static_cast<std::size_t>(std::count_if(
      waiting.begin(), waiting.end(), [ask](const auto& row) { return row.second.ask == ask; }));
}

}  // namespace

int WaitingRequests::Keep(DesktopRequest request) {
  const auto open = LastOf(waiting_, Ask::kOpen);
  if (request.ask == Ask::kRaise) {
    if (open != waiting_.end() || LastOf(waiting_, Ask::kRaise) != waiting_.end()) return 0;
  } else if (request.ask == Ask::kOpen) {
    if (open != waiting_.end() && BearsSongs(request)) {
      open->second = std::move(request);
      return 0;
    }
    if (CountOf(waiting_, Ask::kOpen) >= kMostOpens) return 0;
  } else if (waiting_.size() >= kMost) {
    return 0;
  }
  // Round the numbers' end to the first again.
  last_ = last_ < INT32_MAX ? last_ + 1 : 1;
  waiting_.emplace(last_, std::move(request));
  return last_;
}

std::optional<DesktopRequest> WaitingRequests::Take(int number) {
  auto found = waiting_.extract(number);
  if (!found) return std::nullopt;
  return std::move(found.mapped());
}

std::optional<DesktopRequest> WaitingRequests::TakeBringUp() {
  auto found = LastOf(waiting_, Ask::kOpen);
  if (found == waiting_.end()) found = LastOf(waiting_, Ask::kRaise);
  return found == waiting_.end() ? std::nullopt : Take(found->first);
}

}  // namespace kwo::platform
