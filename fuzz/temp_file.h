#pragma once

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>

#include "platform/files.h"

namespace kwo::fuzz {

/// A file of its own for each process, for readers that want one; removed with the object.
class TempFile {
 public:
  explicit TempFile(const char* ending) {
    std::random_device random;
    path_ =
        (std::filesystem::temp_directory_path() / ("kwo-fuzz-" + std::to_string(random()) + ending))
            .string();
  }
  ~TempFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;

  const char* Fill(const std::uint8_t* data, std::size_t size) {
    const int file = platform::OpenFile(path_.c_str(), platform::FileAccess::kWrite,
                                        platform::FileCreate::kTruncate);
    platform::WriteFile(file, data, static_cast<int>(size));
    platform::CloseFile(file);
    return path_.c_str();
  }

 private:
  std::string path_;
};

}  // namespace kwo::fuzz
