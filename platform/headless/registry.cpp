#include "platform/registry.h"

#include "platform/headless/headless.h"
#include "platform/posix/registry_store.h"

namespace kwo::platform {
namespace {

RegistryStore store;

}  // namespace

bool ReadRegistry(const char* key, const char* name, std::string& bytes) {
  return store.Read(key, name, bytes);
}

bool WriteRegistry(const char* key, const char* name, RegistryType type, const void* data,
                   std::size_t size) {
  store.Write(key, name, type, std::string(static_cast<const char*>(data), size));
  return true;
}

void FlushRegistry() {
  store.Flush();
}

}  // namespace kwo::platform

namespace kwo::headless {

void UseRegistryFile(const std::string& path) {
  platform::store.Load(path);
}

}  // namespace kwo::headless
