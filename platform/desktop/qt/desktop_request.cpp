#include "platform/desktop/qt/desktop_request.h"

#include <deque>
#include <utility>

#include "platform/desktop/main_loop.h"
#include "platform/desktop/qt/main_window.h"
#include "platform/desktop/qt/song_uris.h"
#include "platform/posix/waiting_requests.h"

namespace kwo::platform {
namespace {

WaitingRequests waiting;
bool dropped = false;
// The message loop waits for the user's choice meanwhile.
std::deque<int> besideDialog;
bool serving = false;

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
  if (openDialogs == 0 || IsPress(ask)) {
    PostMessage({kMessageDesktop, number, 0, KeysOf(ask)});
    return;
  }
  besideDialog.push_back(number);
  // Once the call has been answered.
  if (mainLoop.wake) mainLoop.wake();
}

// One behind the other: while one is carried out, the main thread may sleep and get here again.
void ServeBesideDialog() {
  if (serving) return;
  serving = true;
  while (!besideDialog.empty()) {
    const Message message{kMessageDesktop, besideDialog.front(), 0};
    besideDialog.pop_front();
    if (openDialogs > 0) {
      DispatchMessage(message);
    } else {
      PostMessage(message);
    }
  }
  serving = false;
}

std::optional<DesktopRequest> TakeWaitingBringUp() {
  return waiting.TakeBringUp();
}

void DropDesktopRequests() {
  dropped = true;
  waiting = {};
}

}  // namespace kwo::platform
