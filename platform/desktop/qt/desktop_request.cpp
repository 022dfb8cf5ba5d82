#include "platform/desktop/qt/desktop_request.h"

#include <utility>

#include "platform/desktop/qt/main_window.h"
#include "platform/desktop/qt/song_uris.h"
#include "platform/posix/waiting_requests.h"

namespace kwo::platform {
namespace {

WaitingRequests waiting;
bool dropped = false;

}  // namespace

std::optional<DesktopRequest> TakeDesktopRequest(int number) {
  std::optional<DesktopRequest> request = waiting.Take(number);
  if (request && !request->paths.empty()) request->paths = SongsInTime(request->paths);
  return request;
}

void PostDesktopRequest(DesktopRequest request) {
  if (dropped) return;
  const Ask ask = request.ask;
  const int number = waiting.Keep(std::move(request));
  if (number == 0) return;
  const Message message{kMessageDesktop, number, 0};
  if (openDialogs > 0 && ask != Ask::kOpen) {
    DispatchMessage(message);
  } else {
    PostMessage(message);
  }
  if (ask == Ask::kQuit) CloseDialogs();
}

std::optional<DesktopRequest> TakeWaitingBringUp() {
  return waiting.TakeBringUp();
}

void DropDesktopRequests() {
  dropped = true;
  waiting = {};
}

}  // namespace kwo::platform
