#include "platform/posix/waiting_requests.h"

#include <algorithm>
#include <utility>

namespace kwo::platform {
namespace {

bool BringsUp(const std::pair<const int, DesktopRequest>& waiting) {
  return waiting.second.ask == Ask::kOpen || waiting.second.ask == Ask::kRaise;
}

}  // namespace

int WaitingRequests::Keep(DesktopRequest request) {
  const bool open = request.ask == Ask::kOpen;
  if (open || request.ask == Ask::kRaise) {
    const auto earlier = std::find_if(waiting_.begin(), waiting_.end(), BringsUp);
    if (earlier != waiting_.end()) {
      if (!open || request.paths.empty()) return 0;
      waiting_.erase(earlier);
    }
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
  const auto found = std::find_if(waiting_.begin(), waiting_.end(), BringsUp);
  return found == waiting_.end() ? std::nullopt : Take(found->first);
}

}  // namespace kwo::platform
