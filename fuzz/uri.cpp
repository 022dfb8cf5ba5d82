// The reader of file: URIs; a path that it gives is written as a URI again and must come back.

#include <cstdint>
#include <cstdlib>

#include "platform/posix/file_uri.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using kwo::platform::PathOfFileUri;
  const std::string path = PathOfFileUri({reinterpret_cast<const char*>(data), size});
  if (path.empty()) return 0;
  if (path[0] != '\\' || path.find('\0') != std::string::npos || path.size() > size) std::abort();
  if (PathOfFileUri(kwo::platform::FileUriOf(path)) != path) std::abort();
  return 0;
}
