#pragma once

#include <cstdint>
#include <memory>

namespace kwo {

/// Reads RIFF WAVE files of 8 or 16 bits as float samples.  Sizes and positions are decoded bytes:
/// 4 for each sample of each channel.
class WavReader {
 public:
  WavReader() = default;
  ~WavReader() { Close(); }
  WavReader(const WavReader&) = delete;
  WavReader& operator=(const WavReader&) = delete;

  /// Opens a file; 0 if it can't be read, is not of this form, or has no channels, no rate, or a
  /// sample width other than 8 and 16 bits.
  int Open(const char* path, int* rate, int* channelCount);

  /// Reads up to `size` decoded bytes and gives the bytes delivered, whole samples only.  Goes on
  /// to the end of the file, whatever the data chunk says.
  int Read(float* samples, int size);

  /// Moves to a position in decoded bytes; gives the offset in the file's own bytes.
  std::int64_t Seek(std::int64_t decodedPosition);
  std::int64_t Length() const { return std::int64_t{dataSize} * Scale(); }
  std::int64_t Position() const { return position * Scale(); }
  void Close();

 private:
  int ReadHeader();
  int FindData();
  int Scale() const { return bitsPerSample == 16 ? 2 : 4; }

  static constexpr int kBufferBytes = 65536;
  int file = -1;
  std::int64_t dataStart = 0;
  std::int64_t position = 0;  // raw bytes from `dataStart`
  std::uint32_t dataSize = 0;
  int sampleRate = 0;
  int channels = 0;
  int bitsPerSample = 16;
  std::unique_ptr<unsigned char[]> readBuffer;
};

}  // namespace kwo
