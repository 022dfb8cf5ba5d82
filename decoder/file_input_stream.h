#pragma once

#include "decoder/input_stream.h"

namespace kwo {

/// The bytes of a file.  The owner calls `Shutdown` before the object goes.
class FileInputStream : public InputStream {
 public:
  /// Opens a file; 0, or -1 when the system refuses.  Bits 0-1 of `mode`: 0 read, 1 write (at the
  /// end), 2 read and seek, 3 read, write and seek.  Bits 2-3: 0 the file must exist, 1 create if
  /// missing, 2 create or truncate, 3 create and fail if it exists.
  int Open(const char* fileName, int mode);

  int Close() override;
  int RawRead(void* buffer, int count) override;
  int RawPeek(void* buffer, int count) override;
  int RawWrite(const void* buffer, int count) override;
  std::int64_t RawSeek(std::int64_t target) override;
  std::int64_t Control(int code, void* pointer = nullptr, int value = 0) override;

 private:
  int fileHandle = -1;
  int truncateOnClose = 0;
};

}  // namespace kwo
