#pragma once

#include <cstdint>
#include <string>

#include "tests/support.h"

namespace kwo::fuzz {

/// A file in a folder of its own for each process, for readers that want one.
struct TempFile {
  explicit TempFile(const char* name) : path(folder.File(name)) {}
  const char* Fill(const std::uint8_t* data, std::size_t size) const {
    test::WriteBytes(path, {reinterpret_cast<const char*>(data), size});
    return path.c_str();
  }

  test::TempFolder folder;
  std::string path;
};

}  // namespace kwo::fuzz
