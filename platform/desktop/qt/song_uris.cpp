#include "platform/desktop/qt/song_uris.h"

#include <pthread.h>

#include <chrono>
#include <future>
#include <memory>
#include <system_error>
#include <thread>

#include "platform/posix/dropped_songs.h"
#include "platform/posix/file_uri.h"

namespace kwo::platform {

namespace {

// More than any song's can be, and more than any list takes: what a program sends has no end.
constexpr qsizetype kLongestUri = 4096;
constexpr std::size_t kMostPaths = 10000;

}  // namespace

std::vector<std::string> PathsOf(const QByteArrayList& uris) {
  std::vector<std::string> paths;
  for (const QByteArray& uri : uris) {
    if (uri.size() > kLongestUri || paths.size() >= kMostPaths) continue;
    std::string path = PathOfFileUri({uri.constData(), static_cast<std::size_t>(uri.size())});
    if (!path.empty()) paths.push_back(std::move(path));
  }
  return paths;
}

// A look on a thread of its own: a file system that does not answer is taken as one with songs.
std::vector<std::string> SongsInTime(const std::vector<std::string>& paths) {
  constexpr auto kPatience = std::chrono::milliseconds(300);
  const auto told = std::make_shared<std::promise<std::vector<std::string>>>();
  std::future<std::vector<std::string>> songs = told->get_future();
  try {
    std::thread look([told, paths] { told->set_value(DroppedSongs(paths)); });
    pthread_setname_np(look.native_handle(), "kwo drag");
    look.detach();
  } catch (const std::system_error&) {
    return paths;
  }
  return songs.wait_for(kPatience) == std::future_status::ready ? songs.get() : paths;
}

}  // namespace kwo::platform
