#include "platform/desktop_request.h"

#include <mutex>
#include <utility>

#include "platform/headless/headless.h"
#include "platform/launch.h"
#include "platform/media_controls.h"
#include "platform/messages.h"
#include "platform/posix/dropped_songs.h"
#include "platform/posix/waiting_requests.h"

namespace kwo {
namespace {

std::mutex lock;
platform::WaitingRequests waiting;
headless::MediaControls media;
std::optional<platform::DesktopRequest> handedOn;

}  // namespace

namespace platform {

std::optional<DesktopRequest> TakeDesktopRequest(int number) {
  std::lock_guard guard(lock);
  std::optional<DesktopRequest> request = waiting.Take(number);
  if (request) request->paths = DroppedSongs(std::move(request->paths));
  return request;
}

void OpenLaunch() {
  std::lock_guard guard(lock);
  waiting = {};
  handedOn.reset();
}

void CloseLaunch(bool handOn) {
  std::lock_guard guard(lock);
  if (handOn) handedOn = waiting.TakeBringUp();
}

void OpenMediaControls(double (*position)()) {
  std::lock_guard guard(lock);
  media = {};
  media.position = position;
}

void ShowMediaState(const MediaState& state) {
  std::lock_guard guard(lock);
  if (media.told > 0 && state == media.state) return;
  media.state = state;
  ++media.told;
}

void CloseMediaControls() {
  std::lock_guard guard(lock);
  media.position = nullptr;
}

}  // namespace platform

namespace headless {

void AskOfPlayer(platform::DesktopRequest request) {
  const unsigned keys = platform::KeysOf(request.ask);
  int number;
  {
    std::lock_guard guard(lock);
    number = waiting.Keep(std::move(request));
  }
  if (number != 0) platform::PostMessage({platform::kMessageDesktop, number, 0, keys});
}

MediaControls Media() {
  std::lock_guard guard(lock);
  return media;
}

std::optional<platform::DesktopRequest> HandedOn() {
  std::lock_guard guard(lock);
  return handedOn;
}

}  // namespace headless
}  // namespace kwo
