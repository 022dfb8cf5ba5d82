#include "platform/registry.h"

#include <utility>

#include "platform/headless/headless.h"
#include "platform/posix/registry_store.h"
#include "platform/posix/screens_note.h"

namespace kwo::platform {
namespace {

RegistryStore store;
std::string screensFile;
std::vector<Rectangle> lastScreens;  // where there is no file

}  // namespace

bool ReadRegistry(const char* key, const char* name, std::string& bytes) {
  return store.Read(key, name, bytes);
}

bool WriteRegistry(const char* key, const char* name, RegistryType type, const void* data,
                   std::size_t size) {
  store.Write(key, name, type, std::string(static_cast<const char*>(data), size));
  return true;
}

bool FlushRegistry() {
  return store.Flush();
}

bool ScreensAreNew() {
  const std::vector<Rectangle> screens = Screens();
  if (!screensFile.empty()) return NoteScreens(screensFile, screens);
  const bool noted = !lastScreens.empty();
  return std::exchange(lastScreens, screens) != screens && noted;
}

}  // namespace kwo::platform

namespace kwo::headless {

void UseRegistryFile(const std::string& path) {
  platform::store.Load(path);
  platform::screensFile = path.empty() ? "" : path + ".screens";
  platform::lastScreens.clear();
}

}  // namespace kwo::headless
