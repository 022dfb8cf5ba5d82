#include "engine/wav_reader.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "platform/files.h"

namespace kwo {
namespace {

constexpr int kDataTries = 101;

std::uint32_t LittleEndian32(const unsigned char* bytes) {
  return static_cast<std::uint32_t>(bytes[0] | bytes[1] << 8 | bytes[2] << 16) |
         static_cast<std::uint32_t>(bytes[3]) << 24;
}

}  // namespace

int WavReader::Open(const char* path, int* rate, int* channelCount) {
  Close();
  if (!readBuffer) readBuffer.reset(new (std::nothrow) unsigned char[kBufferBytes]);
  if (!readBuffer) return 0;
  file = platform::OpenFile(path, platform::FileAccess::kRead, platform::FileCreate::kNever);
  if (file < 0) return 0;
  if (!ReadHeader() || !FindData()) {
    Close();
    return 0;
  }
  *rate = sampleRate;
  *channelCount = channels;
  return 1;
}

// The format chunk must come first, and is read as a fixed sequence whatever size it declares.
int WavReader::ReadHeader() {
  unsigned char header[36];
  if (platform::ReadFile(file, header, sizeof header) != sizeof header) return 0;
  if (std::memcmp(header, "RIFF", 4) != 0 || std::memcmp(header + 8, "WAVEfmt ", 8) != 0) return 0;
  channels = header[22];
  sampleRate = header[24] | header[25] << 8;
  bitsPerSample = header[34];
  return channels > 0 && sampleRate > 0 && (bitsPerSample == 8 || bitsPerSample == 16);
}

// Slides byte by byte over what may stand in front of the data chunk.
int WavReader::FindData() {
  constexpr int kWindow = kDataTries + 7;
  unsigned char bytes[kWindow];
  const std::int64_t start = platform::SeekFileBy(file, 0);
  const int available = platform::ReadFile(file, bytes, kWindow);
  for (int at = 0; at < kDataTries && at + 8 <= available; ++at) {
    if (std::memcmp(bytes + at, "data", 4) != 0) continue;
    dataSize = LittleEndian32(bytes + at + 4);
    dataStart = start + at + 8;
    position = 0;
    return platform::SeekFile(file, dataStart) == dataStart;
  }
  return 0;
}

int WavReader::Read(float* samples, int size) {
  const int width = bitsPerSample / 8;
  const int wanted = size / 4 * width;
  int delivered = 0;
  while (file >= 0 && delivered < wanted) {
    const int piece = std::min(wanted - delivered, kBufferBytes);
    const int got = platform::ReadFile(file, readBuffer.get(), piece);
    const int count = got / width;
    for (int i = 0; i < count; ++i) {
      const unsigned char* raw = readBuffer.get() + i * width;
      *samples++ = width == 2 ? static_cast<float>(static_cast<std::int16_t>(raw[0] | raw[1] << 8))
                              : static_cast<float>((raw[0] - 128) * 256);
    }
    position += count * width;
    delivered += count * width;
    if (got < piece) break;
  }
  return delivered * Scale();
}

std::int64_t WavReader::Seek(std::int64_t decodedPosition) {
  const std::int64_t raw = decodedPosition / Scale();
  if (platform::SeekFile(file, dataStart + raw) >= 0) position = raw;
  return raw;
}

void WavReader::Close() {
  if (file >= 0) platform::CloseFile(file);
  file = -1;
}

}  // namespace kwo
