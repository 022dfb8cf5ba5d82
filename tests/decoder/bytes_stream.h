#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "decoder/input_stream.h"

namespace kwo::test {

/// A readable stream over bytes in memory, which stay the caller's.
class BytesStream : public InputStream {
 public:
  BytesStream(const void* data, std::size_t size, bool seekable = true)
      : data_(static_cast<const unsigned char*>(data)), size_(static_cast<std::int64_t>(size)) {
    BeginStream(STREAM_READABLE | (seekable ? STREAM_SEEKABLE : 0), 0, size_);
  }
  ~BytesStream() override { Shutdown(); }
  int RawRead(void* buffer, int count) override {
    const int got = static_cast<int>(std::min<std::int64_t>(count, size_ - at_));
    if (got > 0) std::memcpy(buffer, data_ + at_, static_cast<std::size_t>(got));
    at_ += got;
    bytesRead += got;
    return got;
  }
  std::int64_t RawSeek(std::int64_t target) override { return at_ = std::min(target, size_); }

  std::int64_t bytesRead = 0;

 private:
  const unsigned char* data_;
  std::int64_t size_;
  std::int64_t at_ = 0;
};

}  // namespace kwo::test
