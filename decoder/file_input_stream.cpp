#include "decoder/file_input_stream.h"

#include "platform/files.h"

namespace kwo {

int FileInputStream::Open(const char* fileName, int mode) {
  using platform::FileAccess;
  using platform::FileCreate;
  static constexpr struct {
    int flags;
    FileAccess access;
  } kModes[] = {
      {STREAM_READABLE, FileAccess::kRead},
      {STREAM_WRITABLE, FileAccess::kWrite},
      {STREAM_READABLE | STREAM_SEEKABLE, FileAccess::kRead},
      {STREAM_READABLE | STREAM_WRITABLE | STREAM_SEEKABLE | STREAM_RESIZABLE,
       FileAccess::kReadWrite},
  };
  static constexpr FileCreate kCreates[] = {FileCreate::kNever, FileCreate::kIfAbsent,
                                            FileCreate::kTruncate, FileCreate::kExclusive};
  if (Shutdown() < 0) return -1;
  const auto& opening = kModes[mode & 3];
  const int file = platform::OpenFile(fileName, opening.access, kCreates[mode >> 2 & 3]);
  if (file < 0) return -1;
  const std::int64_t size = platform::FileSize(file);
  const bool writeOnly = opening.access == FileAccess::kWrite;
  if (writeOnly) platform::SeekFile(file, size);
  fileHandle = file;
  truncateOnClose = 0;
  BeginStream(opening.flags, 0, writeOnly ? 0 : size);
  return 0;
}

int FileInputStream::Close() {
  CloseBase();
  if (truncateOnClose) platform::TruncateFile(fileHandle, platform::SeekFileBy(fileHandle, 0));
  platform::CloseFile(fileHandle);
  fileHandle = -1;
  return 0;
}

int FileInputStream::RawRead(void* buffer, int count) {
  return platform::ReadFile(fileHandle, buffer, count);
}

int FileInputStream::RawPeek(void* buffer, int count) {
  const int delivered = platform::ReadFile(fileHandle, buffer, count);
  platform::SeekFileBy(fileHandle, -delivered);
  return delivered;
}

int FileInputStream::RawWrite(const void* buffer, int count) {
  return platform::WriteFile(fileHandle, buffer, count);
}

std::int64_t FileInputStream::RawSeek(std::int64_t target) {
  const std::int64_t reached = platform::SeekFile(fileHandle, target);
  return reached < 0 ? position : reached;
}

std::int64_t FileInputStream::Control(int code, void* pointer, int value) {
  switch (code) {
    case CTL_SET_TRUNCATE_ON_CLOSE: {
      const int old = truncateOnClose;
      truncateOnClose = value != 0 && (Flags() & STREAM_RESIZABLE);
      return old;
    }
    case CTL_TRUNCATE_ON_CLOSE:
      return truncateOnClose;
    default:
      return InputStream::Control(code, pointer, value);
  }
}

}  // namespace kwo
