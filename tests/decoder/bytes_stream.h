#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

#include "decoder/input_stream.h"

namespace kwo::test {

constexpr int kReader = STREAM_READABLE | STREAM_SEEKABLE;
constexpr int kEditor = kReader | STREAM_WRITABLE | STREAM_RESIZABLE;

/// A stream over bytes in memory, which counts what is read of them.
class BytesStream : public InputStream {
 public:
  explicit BytesStream(const std::string& contents, int streamFlags = kReader) : bytes(contents) {
    BeginStream(streamFlags, 0, static_cast<std::int64_t>(bytes.size()));
  }
  BytesStream(const unsigned char* data, std::size_t size, bool seekable = true)
      : BytesStream(std::string(data, data + size), seekable ? kReader : int{STREAM_READABLE}) {}
  ~BytesStream() override { Shutdown(); }

  int RawRead(void* buffer, int count) override {
    const std::size_t from = std::min(at_, bytes.size());
    const auto got = static_cast<int>(bytes.copy(static_cast<char*>(buffer), count, from));
    at_ += got;
    bytesRead += got;
    return got;
  }
  int RawWrite(const void* buffer, int count) override {
    const int taken = std::min(count, writeLimit);
    bytes.replace(at_, taken, static_cast<const char*>(buffer), taken);
    at_ += taken;
    return taken;
  }
  std::int64_t RawSeek(std::int64_t target) override { return at_ = target; }

  std::string bytes;
  std::int64_t bytesRead = 0;
  int writeLimit = 1 << 20;

 private:
  std::size_t at_ = 0;
};

/// The rest of a stream, or its next `most` values; `piece` values a read.
template <typename Values = std::string>
Values ReadAll(InputStream& stream, std::size_t piece = 30000, std::size_t most = 1 << 24) {
  constexpr int kValueBytes = sizeof(typename Values::value_type);
  Values all;
  for (int got = 1; got > 0;) {
    const std::size_t end = all.size();
    all.resize(std::min(end + piece, most));
    const int wanted = static_cast<int>(all.size() - end) * kValueBytes;
    got = stream.Read(all.data() + end, wanted) / kValueBytes;
    all.resize(end + got);
  }
  return all;
}

}  // namespace kwo::test
