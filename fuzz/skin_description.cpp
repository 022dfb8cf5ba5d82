#include "toolkit/skin_description.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kwo::platform::Rectangle window{0, 0, 0, 0};
  kwo::ParseSkinDescription({reinterpret_cast<const char*>(data), size}, window);
  return 0;
}
