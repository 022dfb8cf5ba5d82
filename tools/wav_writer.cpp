#include "tools/wav_writer.h"

#include <algorithm>

namespace kwo::tools {

WavWriter::WavWriter(const char* path, int rate, int channels)
    : file_(std::fopen(path, "wb")), rate_(rate), channels_(channels), whole_(file_ != nullptr) {
  WriteHeader();
}

WavWriter::~WavWriter() {
  Close();
}

void WavWriter::WriteHeader() {
  if (!file_) return;
  std::vector<unsigned char> header;
  auto tag = [&](const char* name) { header.insert(header.end(), name, name + 4); };
  auto put = [&](std::uint32_t value, int size) {
    for (int i = 0; i < size; ++i) header.push_back(static_cast<unsigned char>(value >> 8 * i));
  };
  const auto rate = static_cast<std::uint32_t>(rate_);
  const auto channels = static_cast<std::uint32_t>(channels_);
  const auto bytes = static_cast<std::uint32_t>(std::min(bytes_, kMostBytes));
  tag("RIFF");
  put(kHeaderBytes + bytes, 4);
  tag("WAVE");
  tag("fmt ");
  put(16, 4);
  put(1, 2);
  put(channels, 2);
  put(rate, 4);
  put(rate * channels * 2, 4);
  put(channels * 2, 2);
  put(16, 2);
  tag("data");
  put(bytes, 4);
  whole_ = std::fwrite(header.data(), 1, header.size(), file_) == header.size() && whole_;
}

void WavWriter::Write(const std::vector<std::int16_t>& samples) {
  if (!file_) return;
  whole_ = std::fwrite(samples.data(), 2, samples.size(), file_) == samples.size() && whole_;
  bytes_ += samples.size() * 2;
}

bool WavWriter::Close() {
  if (!file_) return whole_ && !IsTooLong();
  whole_ = std::fseek(file_, 0, SEEK_SET) == 0 && whole_;
  WriteHeader();
  whole_ = std::fclose(file_) == 0 && whole_;
  file_ = nullptr;
  return whole_ && !IsTooLong();
}

}  // namespace kwo::tools
