#include "platform/registry.h"

#include <cstdlib>

#include "platform/desktop/config_folder.h"
#include "platform/files.h"
#include "platform/posix/registry_store.h"

namespace kwo::platform {

std::string ConfigFolder() {
  const char* config = std::getenv("XDG_CONFIG_HOME");
  const char* home = std::getenv("HOME");
  std::string folder;
  if (config && *config == '/') {
    folder = config;
  } else if (home && *home == '/') {
    folder = std::string(home) + "/.config";
  } else {
    return {};
  }
  MakeFolder(folder.c_str());
  folder += "/kwo";
  MakeFolder(folder.c_str());
  return folder;
}

namespace {

// Empty, which keeps the values in memory, where there is no folder.
std::string StorePath() {
  std::string folder = ConfigFolder();
  if (folder.empty()) return folder;
  RemoveAbandonedFiles((folder + '/').c_str());
  return folder + "/settings";
}

RegistryStore& Store() {
  // Never destroyed: what is saved as the process exits goes through it too.
  static RegistryStore& store = *[] {
    auto* loaded = new RegistryStore;
    loaded->Load(StorePath());
    return loaded;
  }();
  return store;
}

}  // namespace

bool ReadRegistry(const char* key, const char* name, std::string& bytes) {
  return Store().Read(key, name, bytes);
}

bool WriteRegistry(const char* key, const char* name, RegistryType type, const void* data,
                   std::size_t size) {
  Store().Write(key, name, type, std::string(static_cast<const char*>(data), size));
  return true;
}

bool FlushRegistry() {
  return Store().Flush();
}

}  // namespace kwo::platform
