#pragma once

#include <string>
#include <string_view>

namespace kwo::platform {

/// A file that tells whether the program that wrote it still lives: it is locked for as long as it
/// is held, and the lock goes with the process, however that ends.  One thread at a time.
class OwnedFile {
 public:
  OwnedFile() = default;
  ~OwnedFile();
  OwnedFile(const OwnedFile&) = delete;
  OwnedFile& operator=(const OwnedFile&) = delete;

  /// The path of a file that is still to be written.
  void Begin(const std::string& path);
  /// Writes the whole file in one step, locked from its first moment on; false leaves the old one.
  bool Replace(std::string_view contents);

  /// Takes a file whose owner has died; false if he lives, or if there is no such file.
  bool Adopt(const std::string& path);

  /// Gives up the lock, and the file to whoever adopts it.
  void Release();
  /// Removes the file and gives up the lock.
  void Remove();

 private:
  std::string path_;
  int file_ = -1;
};

}  // namespace kwo::platform
