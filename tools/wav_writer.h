#pragma once

#include <cstdint>
#include <cstdio>
#include <vector>

namespace kwo::tools {

/// Writes a 16-bit WAV file piece by piece.
class WavWriter {
 public:
  WavWriter(const char* path, int rate, int channels);
  ~WavWriter();
  WavWriter(const WavWriter&) = delete;
  WavWriter& operator=(const WavWriter&) = delete;

  bool IsOpen() const { return file_ != nullptr; }
  void Write(const std::vector<std::int16_t>& samples);
  /// Completes the header; false if the file could not be written whole, or is too long.
  bool Close();
  /// Whether there is more sound than a header can tell of, 4 GiB.
  bool IsTooLong() const { return bytes_ > kMostBytes; }

 private:
  static constexpr std::uint64_t kHeaderBytes = 36, kMostBytes = UINT32_MAX - kHeaderBytes;

  void WriteHeader();

  std::FILE* file_;
  int rate_, channels_;
  std::uint64_t bytes_ = 0;
  bool whole_;
};

}  // namespace kwo::tools
